// The command layer of the grammar text, as feature authors write it: one
// declaration per command, its words as a user types them, and the node
// attributes the command's last word carries.
#ifndef WEX_GRAMMAR_COMMAND_LAYER_H
#define WEX_GRAMMAR_COMMAND_LAYER_H

#include "diagnostics.h"
#include "node_record.h"

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace wex_grammar
{

// The help of the "no" keyword that a negatable command's modes get.
inline constexpr const char *kNegationHelp = "Negate a command or set its defaults";

// One node of a command: a keyword, or one or two parameters.
struct Word {
    std::string keyword;             // empty for parameters
    std::vector<ParamFields> params; // with their names in names
    std::vector<std::string> names;  // how the help lines name each parameter
    bool optional = false;           // the first word of an optional part
    Position at;
};

struct Submode {
    std::string mode, prompt, help;
};

// What a command's declaration says; attributes left unset are not given.
struct CommandDecl {
    std::vector<std::string> modes;
    std::vector<std::vector<Word>> forms;                  // alternatives and optional parts spelt out
    std::vector<std::pair<std::string, std::string>> help; // word or parameter name, text
    std::optional<std::string> function, generator;
    std::optional<uint32_t> command_id;
    std::optional<uint16_t> bcp_msg_type, internal_function, priority;
    std::optional<uint64_t> interface_mask;
    std::optional<std::array<uint8_t, 16>> permissions;
    std::optional<Submode> enters;
    bool negatable = false;
    bool ordered = false;
    // single-valued: the name of the parameter that holds the value, or
    // empty for the command's last word.
    std::optional<std::string> single_valued;
    std::string module; // the module_id of the nodes it makes
    Position at;
    Position enters_at;
};

// A file's statements that hold for the commands after them.
struct CommandFile {
    std::string name;                                    // for messages
    std::unordered_map<std::string, std::string> help;   // file-wide help by word
    std::unordered_map<std::string, uint32_t> token_ids; // by keyword
};

using CommandSink = std::function<void(const CommandFile &, CommandDecl &&)>;

// Whether text is written in the node layer (its first statement is "node").
bool is_node_layer(std::string_view text);

// Reads a command-layer text into file, handing each command to each_command
// once its attribute lines are read; errors go to diagnostics. A help or
// token line holds for the commands after it.
void read_command_layer(std::string_view text, CommandFile &file, Diagnostics &diagnostics,
                        const CommandSink &each_command);

} // namespace wex_grammar

#endif
