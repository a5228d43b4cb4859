// The shell's command line: where its commands come from and how it runs
// them.
#ifndef WEX_SHELL_OPTIONS_H
#define WEX_SHELL_OPTIONS_H

#include <optional>
#include <string>
#include <vector>

namespace wex_shell
{

enum class Source {
    command_line,  // -nRc TEXT, -c TEXT: commands separated by " ; "
    script,        // -nRf FILE, -f FILE: one command per line, from exec mode
    configuration, // -nRr FILE, or standard input: configuration lines, from configuration mode
    terminal,      // none of them, with a terminal on standard input: a session typed at the prompt
    completion     // --complete TEXT: the words that may end TEXT, for the shell's completion
};

enum class Output { standard_output, standard_error, discarded };

struct Options {
    Source source = Source::configuration;
    std::string text; // the command line, or the file ("-" or empty: standard input)
    bool stop_on_error = false;
    bool quiet = false;
    Output output = Output::standard_output;
};

extern const char *const kUsage;

// The options of args (the program's arguments after its name), or nothing
// with why set.
std::optional<Options> parse_options(const std::vector<std::string> &args, std::string &why);

} // namespace wex_shell

#endif
