#include "options.h"

namespace wex_shell
{

const char *const kUsage =
    "usage: wex [-nRc TEXT | -c TEXT | -nRf FILE | -f FILE | -nRr FILE] [-e N] [-q N] [-o N]\n"
    "Runs commands against the switch's features, as registered with wexd on the transport\n"
    "under $IPCQ_RUNTIME_DIR:\n"
    "  -nRc TEXT, -c TEXT  the commands of TEXT, separated by \" ; \", from exec mode\n"
    "  -nRf FILE, -f FILE  a script: one command per line, from exec mode\n"
    "  -nRr FILE           a configuration: one line per command, from configuration mode\n"
    "  (none of them)      a configuration on standard input\n"
    "  -e N                1: stop at the first command that fails; 0 (default): go on\n"
    "  -q N                1: print only errors; 0 (default): print every command's output\n"
    "  -o N                where output goes: 1 standard output (default), 2 standard error,\n"
    "                      0 nowhere\n"
    "A line \"COMMAND > FILE\" writes the command's output to FILE.\n"
    "Exit status: 0 when every command succeeded, 1 when one failed, 2 for a usage error\n"
    "or a shell that cannot start (no wexd, no usable main tree).\n";

namespace
{

std::optional<int> flag_value(const std::string &word, int highest)
{
    if (word.size() != 1 || word[0] < '0' || word[0] > '0' + highest)
        return std::nullopt;
    return word[0] - '0';
}

} // namespace

std::optional<Options> parse_options(const std::vector<std::string> &args, std::string &why)
{
    Options options;
    bool source_given = false;
    for (std::size_t i = 0; i < args.size(); ++i) {
        const std::string &option = args[i];
        if (i + 1 >= args.size()) {
            why = option.rfind('-', 0) == 0 ? option + " needs a value" : "unknown argument '" + option + "'";
            return std::nullopt;
        }
        const std::string &value = args[++i];
        if (option == "-nRc" || option == "-c" || option == "-nRf" || option == "-f" || option == "-nRr") {
            if (source_given) {
                why = "one of -nRc, -c, -nRf, -f and -nRr at most";
                return std::nullopt;
            }
            source_given = true;
            options.text = value;
            options.source = option == "-nRc" || option == "-c"   ? Source::command_line
                             : option == "-nRf" || option == "-f" ? Source::script
                                                                  : Source::configuration;
        } else if (option == "-e" && flag_value(value, 1)) {
            options.stop_on_error = *flag_value(value, 1) == 1;
        } else if (option == "-q" && flag_value(value, 1)) {
            options.quiet = *flag_value(value, 1) == 1;
        } else if (option == "-o" && flag_value(value, 2)) {
            const int where = *flag_value(value, 2);
            options.output = where == 0   ? Output::discarded
                             : where == 2 ? Output::standard_error
                                          : Output::standard_output;
        } else {
            why = option == "-e" || option == "-q" || option == "-o"
                      ? option + " takes " + (option == "-o" ? "0, 1 or 2" : "0 or 1")
                      : "unknown argument '" + option + "'";
            return std::nullopt;
        }
    }
    return options;
}

} // namespace wex_shell
