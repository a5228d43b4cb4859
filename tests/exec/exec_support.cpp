#include "exec/exec_support.h"
#include "support/sandbox.h"

#include <cstdlib>
#include <dlfcn.h>
#include <sys/stat.h>
#include <unistd.h>

namespace wex_test
{

namespace
{

constexpr const char *kStubVariables[] = {"WEX_STUB_LOG",      "WEX_STUB_EXIT",  "WEX_STUB_SAY",
                                          "WEX_STUB_SLEEP_MS", "WEX_STUB_STDIN", "WEX_STUB_WATCH",
                                          "WEX_STUB_SIGNAL"};

void clear_stub_environment()
{
    for (const char *name : kStubVariables)
        unsetenv(name);
}

} // namespace

StubShell::StubShell() : log_path_(sandbox_path("/stub_shell.log"))
{
    clear_stub_environment();
    unlink(log_path_.c_str());
    set("WEX_STUB_LOG", log_path_);
    interpreter_lines().clear();
}

StubShell::~StubShell()
{
    clear_stub_environment();
}

void StubShell::exit_with(int code) const
{
    set("WEX_STUB_EXIT", std::to_string(code));
}

void StubShell::set(const char *name, const std::string &value) const
{
    setenv(name, value.c_str(), 1);
}

std::string StubShell::log() const
{
    const std::string content = file_content(log_path_);
    return content == "<absent>" ? "" : content;
}

std::vector<std::string> &interpreter_lines()
{
    static std::vector<std::string> lines;
    return lines;
}

bool file_exists(const std::string &path)
{
    struct stat st;
    return lstat(path.c_str(), &st) == 0;
}

std::string main_shell()
{
    return sandbox_path("/tarn/bin/wex");
}

} // namespace wex_test

// The library's system() calls land here first: the line is recorded, then
// the C library runs it as usual.
extern "C" int system(const char *line)
{
    using system_fn = int (*)(const char *);
    static const auto real_system = reinterpret_cast<system_fn>(dlsym(RTLD_NEXT, "system"));
    if (line)
        wex_test::interpreter_lines().emplace_back(line);
    return real_system(line);
}
