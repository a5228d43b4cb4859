// The filters a command's output passes through after "|": include,
// exclude and begin with a POSIX extended expression, count, last N; as
// many as the line names, in its order.
#ifndef WEX_SHELL_OUTPUT_FILTER_H
#define WEX_SHELL_OUTPUT_FILTER_H

#include <cstddef>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace wex_shell
{

// A command line taken apart: the command, the filters after its first
// " | ", the file after its last " > ".
struct CommandLine {
    std::string_view command;
    std::string_view filters; // empty: none
    std::string_view target;  // empty: no redirection
};

CommandLine split_command_line(std::string_view line);

// The lines of text, each with its line end; a last line without one counts.
std::vector<std::string_view> lines_of(std::string_view text);

// A filter as help names it: its word, what it takes ("" for nothing), and
// what it keeps.
struct FilterForm {
    std::string_view name;
    std::string_view argument;
    std::string_view help;
    std::string_view argument_help;
};

// Every filter, in the order help lists them.
std::span<const FilterForm> filter_forms();

class OutputFilter
{
  public:
    // The filters of text ("include zone | count"), or nothing with why set.
    static std::optional<OutputFilter> parse(std::string_view text, std::string &why);

    // The output as the filters leave it.
    std::string apply(std::string_view output) const;

  private:
    enum class Kind { include, exclude, begin, count, last };
    struct Step;

    OutputFilter() = default;
    static std::shared_ptr<const Step> make_step(std::string_view part, std::string &why);
    std::vector<std::shared_ptr<const Step>> steps_;
};

} // namespace wex_shell

#endif
