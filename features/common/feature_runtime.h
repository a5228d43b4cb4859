// What every feature process does the same way: open its queue, register
// its types and its grammar with wexd, apply the commands the shell sends,
// answer for its part of the running configuration, and leave cleanly on
// SIGTERM. A feature supplies only what is its own.
#ifndef WEX_FEATURES_FEATURE_RUNTIME_H
#define WEX_FEATURES_FEATURE_RUNTIME_H

#include "feature_protocol.h"

#include <wex/wex.h>

#include <cstdint>
#include <string>
#include <vector>

namespace wex_feature
{

// What a feature made of one command.
struct Applied {
    int32_t status = 0;   // 0 applied; anything else refused, with the state as it was
    std::string text;     // printed for the user: a show command's output, or why it was refused
    bool changed = false; // the running configuration changed: announced to wexd
};

inline Applied refused(std::string why)
{
    return {1, "% " + why + "\n", false};
}

class Feature
{
  public:
    virtual ~Feature() = default;
    // The module its grammar registers as (<par dir>/<module>.par).
    virtual const char *module() const = 0;
    virtual uint32_t default_queue() const = 0;
    // Registers the interface types and subtype ranges the grammar needs,
    // once the queue is open; false stops the feature.
    virtual bool register_types(int q) = 0;
    virtual Applied apply(const pinfo &command) = 0;
    virtual std::vector<wex_shell::ConfigBlock> running_config() const = 0;
};

// Serves the shell's requests on queue q until SIGTERM or SIGINT: 0 when it
// stopped so, 1 when the queue failed.
int serve(Feature &feature, int q);

// The feature's main: arguments, registration, serving until SIGTERM or
// SIGINT. Returns the process's exit status.
int run(Feature &feature, int argc, char **argv);

// The text of a library formatter's malloc'd result, released.
std::string taken(char *text);

// The arguments of a command, in the order typed.
const param_arg *argument(const pinfo &command, int index);
std::string text_argument(const pinfo &command, int index);
int32_t number_argument(const pinfo &command, int index);

// The ranges of a multi-range argument, empty when there is none.
std::vector<integer_range> range_list_argument(const pinfo &command, int index);

// The last word of a command's full text: the keyword chosen among several.
std::string last_word(const pinfo &command);

} // namespace wex_feature

#endif
