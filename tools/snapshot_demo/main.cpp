// snapshot-demo: the last steps of a command's road, as a program linked
// with the library walks them. It snapshots the running configuration,
// configures a zone through the shell, shows it, snapshots again and prints
// the difference. The library it links is rooted in the road sandbox, where
// "/tarn/bin/wex" is the real shell.
#include <wex/wex.h>

#include "program.h"

#include <cstdio>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

namespace
{

constexpr const char *kProgram = "snapshot-demo";
constexpr const char *kZoneCommands =
    "configure terminal ; zone name Z1 vsan 10 ; member wwn 10:00:00:00:c9:12:34:56 ; end";

void heading(int step, const std::string &what)
{
    std::printf("\n== Step %d: %s ==\n", step, what.c_str());
    std::fflush(stdout);
}

void result(const std::string &call, long long value)
{
    std::printf("   %s -> %lld\n", call.c_str(), value);
    std::fflush(stdout);
}

std::string read_text(const std::string &path)
{
    std::ifstream file(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(file), {});
}

// The running configuration, as the rollback machinery takes it: the
// shell's "show running-config" redirected to a file.
std::string snapshot(const std::string &directory, const char *name)
{
    wex_cfg_gen_params_t params{};
    std::snprintf(params.out_file, sizeof params.out_file, "%s/%s", directory.c_str(), name);
    result(std::string("wex_generate_running_cfg_rollback(") + name + ")",
           wex_generate_running_cfg_rollback(&params));
    return read_text(params.out_file);
}

} // namespace

int main(int argc, char **argv)
{
    const std::vector<std::string> args(argv + 1, argv + argc);
    if (wex_tools::print_version_if_asked(kProgram, args))
        return wex_tools::finish_output(kProgram, 0);
    if (args.size() != 1)
        return wex_tools::usage_error(kProgram, "one directory for the snapshots",
                                      "usage: snapshot-demo DIR\n"
                                      "Snapshots the running configuration into DIR around a change made\n"
                                      "through the shell, and prints their difference.\n");
    const std::string &directory = args[0];

    heading(1, "a snapshot of the running configuration");
    const std::string before = snapshot(directory, "before.cfg");
    std::fputs(before.c_str(), stdout);

    heading(2, "a zone configured through the shell, as \"wex -nRc\"");
    result(std::string("wex_system(\"") + kZoneCommands + "\")", wex_system(kZoneCommands));
    result("wex_system(\"show zone vsan 10\")", wex_system("show zone vsan 10"));

    heading(3, "a second snapshot, and the difference between the two");
    const std::string after = snapshot(directory, "after.cfg");
    std::printf("   wex_diff(before, after):\n");
    std::fflush(stdout);
    wex_diff(before.c_str(), after.c_str());
    result("wex_is_diff_same(before, after)", wex_is_diff_same(before.c_str(), after.c_str()));
    return wex_tools::finish_output(kProgram, 0);
}
