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
    "  --complete TEXT     the words that may end TEXT, a -nRc line, one a line\n"
    "  -e N                1: stop at the first command that fails; 0 (default): go on\n"
    "  -q N                1: print only errors; 2: the same, for a script the caller has\n"
    "                      already filtered through its command list; 0 (default): print\n"
    "                      every command's output\n"
    "  -o N                where output goes: 0 (default) or 1 standard output, 2 standard\n"
    "                      error, 3 nowhere\n"
    "A line \"COMMAND > FILE\" writes the command's output to FILE.\n"
    "Exit status: 0 when every command succeeded, 1 when one failed, 2 for a usage error\n"
    "or a shell that cannot start (no wexd, no usable main tree).\n";

namespace
{

// The options that take a single digit, and the highest each takes.
constexpr struct {
    const char *option;
    char highest;
} kDigitOptions[] = {{"-e", '1'}, {"-q", '2'}, {"-o", '3'}};

Source source_of(const std::string &option)
{
    if (option == "--complete")
        return Source::completion;
    if (option == "-nRc" || option == "-c")
        return Source::command_line;
    return option == "-nRf" || option == "-f" ? Source::script : Source::configuration;
}

void set_digit_option(Options &options, char option_letter, int value)
{
    if (option_letter == 'e') {
        options.stop_on_error = value == 1;
    } else if (option_letter == 'q') {
        options.quiet = value != 0; // 2 comes from a caller that filtered its script first
    } else {
        // 0 is standard output: callers fill their records from zero, and
        // a snapshot taken with them must not come out empty.
        options.output = value == 3   ? Output::discarded
                         : value == 2 ? Output::standard_error
                                      : Output::standard_output;
    }
}

// True when option is one of the digit options, with why set when its
// value is not one it takes.
bool digit_option(Options &options, const std::string &option, const std::string &value, std::string &why)
{
    for (const auto &digit : kDigitOptions) {
        if (option != digit.option)
            continue;
        if (value.size() == 1 && value[0] >= '0' && value[0] <= digit.highest)
            set_digit_option(options, option[1], value[0] - '0');
        else
            why =
                option + " takes " + (digit.highest == '1' ? "0 or 1" : std::string("0 to ") + digit.highest);
        return true;
    }
    return false;
}

} // namespace

std::optional<Options> parse_options(const std::vector<std::string> &args, std::string &why)
{
    why.clear();
    Options options;
    bool source_given = false;
    for (std::size_t i = 0; i < args.size(); ++i) {
        const std::string &option = args[i];
        if (i + 1 >= args.size()) {
            why = option.rfind('-', 0) == 0 ? option + " needs a value" : "unknown argument '" + option + "'";
            return std::nullopt;
        }
        const std::string &value = args[++i];
        if (option == "-nRc" || option == "-c" || option == "-nRf" || option == "-f" || option == "-nRr" ||
            option == "--complete") {
            if (source_given) {
                why = "one of -nRc, -c, -nRf, -f, -nRr and --complete at most";
                return std::nullopt;
            }
            source_given = true;
            options.text = value;
            options.source = source_of(option);
        } else if (!digit_option(options, option, value, why)) {
            why = "unknown argument '" + option + "'";
        }
        if (!why.empty())
            return std::nullopt;
    }
    return options;
}

} // namespace wex_shell
