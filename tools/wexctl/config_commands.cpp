#include "config_commands.h"

#include "input_file.h"
#include "line_set_diff.h"
#include "main_tree.h"
#include "printed_bytes.h"
#include "program.h"
#include "remediation.h"

#include <wex/output.h>

#include <cstdio>

namespace wexctl
{
namespace
{

using Args = std::vector<std::string>;

constexpr const char *kUsage =
    "usage: wexctl config diff RUNNING WANTED [--json]\n"
    "       wexctl config remediate RUNNING WANTED --tree MAIN.par [--skip-problems]\n"
    "diff prints the lines only in RUNNING (-) and only in WANTED (+) under their parents, or with\n"
    "--json one array of {mark, first, second, text, children}, first and second being the line's\n"
    "number in each text (0 where it is not); exit 0 when the two hold the same lines, 1 otherwise.\n"
    "remediate prints the commands, from configuration mode, that turn RUNNING into WANTED, as the\n"
    "grammar of MAIN.par reads their lines. A line no command matches, or that cannot be undone, is\n"
    "named with its line number and nothing is printed (exit 1); with --skip-problems the rest is\n"
    "printed and each line left out is named (exit 0).\n";

int usage_error(const std::string &why)
{
    return wex_tools::usage_error("wexctl", why, kUsage);
}

// A configuration text: its bytes, or nothing when it is none (said why).
std::optional<wex_tools::InputText> read_text(const std::string &path, wex_remediation::LastLine last)
{
    std::optional<wex_tools::InputText> text =
        wex_tools::read_text_input("wexctl", path, wex_tools::kMaxConfigTextBytes);
    if (!text)
        return std::nullopt;
    if (const std::optional<std::string> why = wex_tools::not_text(text->view())) {
        std::fprintf(stderr, "wexctl: %s: %s\n", path.c_str(), why->c_str());
        return std::nullopt;
    }
    if (last == wex_remediation::LastLine::ignored && !text->view().empty() && text->view().back() != '\n')
        std::fprintf(stderr, "wexctl: %s: warning: the last line has no line end and takes no part\n",
                     path.c_str());
    return text;
}

int diff(const Args &args)
{
    if (args.size() != 2 && !(args.size() == 3 && args[2] == "--json"))
        return usage_error("config diff needs RUNNING and WANTED, and at most --json");
    return diff_configs(args);
}

int remediate(const Args &args)
{
    Args files;
    std::string tree_path;
    bool skip = false;
    for (std::size_t i = 0; i < args.size(); ++i) {
        if (args[i] == "--tree" && i + 1 < args.size())
            tree_path = args[++i];
        else if (args[i] == "--skip-problems")
            skip = true;
        else
            files.push_back(args[i]);
    }
    if (files.size() != 2 || tree_path.empty())
        return usage_error("config remediate needs RUNNING, WANTED and --tree MAIN.par");
    std::string why;
    const std::optional<wex_shell::MainTree> tree = wex_shell::MainTree::load(tree_path, why);
    if (!tree) {
        std::fprintf(stderr, "wexctl: %s\n", why.c_str());
        return 2;
    }
    using wex_remediation::LastLine;
    const std::optional<wex_tools::InputText> running = read_text(files[0], LastLine::counts),
                                              wanted = read_text(files[1], LastLine::counts);
    if (!running || !wanted)
        return 2;
    const wex_remediation::CommandGrammar grammar(*tree);
    const wex_remediation::Remediation result = wex_remediation::remediate(
        grammar, running->view(), wanted->view(),
        skip ? wex_remediation::OnProblem::skip : wex_remediation::OnProblem::refuse);
    for (const wex_remediation::Problem &problem : result.problems)
        std::fprintf(stderr, "wexctl: %s%s\n", result.refused ? "" : "skipped ",
                     wex_remediation::describe(problem, files[0], files[1]).c_str());
    if (result.refused) {
        std::fprintf(stderr, "wexctl: no commands: %zu line(s) cannot be turned into commands\n",
                     result.problems.size());
        return 1;
    }
    for (const std::string &command : result.commands)
        std::printf("%s\n", command.c_str());
    return 0;
}

} // namespace

int diff_configs(const Args &args)
{
    using wex_remediation::ConfigText, wex_remediation::LastLine;
    const std::optional<wex_tools::InputText> old_text = read_text(args[0], LastLine::ignored),
                                              new_text = read_text(args[1], LastLine::ignored);
    if (!old_text || !new_text)
        return 2;
    if (args.size() == 3) {
        const auto entries = wex_remediation::line_set_diff(ConfigText(old_text->view(), LastLine::ignored),
                                                            ConfigText(new_text->view(), LastLine::ignored));
        const std::string text = wex_remediation::diff_json(entries);
        std::fwrite(text.data(), 1, text.size(), stdout);
        return entries.empty() ? 0 : 1;
    }
    // The comparison prints nothing exactly when the two are the same; only
    // when its output cannot be counted is equality asked separately.
    const std::optional<std::size_t> printed =
        printed_bytes([&] { wex_diff(old_text->c_str(), new_text->c_str()); });
    if (printed)
        return *printed == 0 ? 0 : 1;
    wex_diff(old_text->c_str(), new_text->c_str());
    return wex_is_diff_same(old_text->c_str(), new_text->c_str()) ? 0 : 1;
}

std::optional<int> run_config_command(const Args &args)
{
    if (args.empty() || (args[0] != "diff" && args[0] != "remediate"))
        return std::nullopt;
    if (wex_tools::wants_help(args)) {
        std::fputs(kUsage, stdout);
        return 0;
    }
    const Args rest(args.begin() + 1, args.end());
    return args[0] == "diff" ? diff(rest) : remediate(rest);
}

} // namespace wexctl
