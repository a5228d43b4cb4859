// An image written back in the command layer: one declaration for each
// command, with the help, attributes and modes its nodes carry, ordered so
// that compiling the text makes the same nodes in the same places.
#ifndef WEX_GRAMMAR_COMMAND_WRITER_H
#define WEX_GRAMMAR_COMMAND_WRITER_H

#include <cstdint>
#include <optional>
#include <span>
#include <string>

namespace wex_grammar
{

// The command-layer text of a network-order image, only when it compiles
// back to exactly these bytes; nothing for an image that declarations
// cannot make (the node layer can always write it).
std::optional<std::string> write_command_layer(std::span<const uint8_t> image);

} // namespace wex_grammar

#endif
