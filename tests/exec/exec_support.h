// What the command-execution tests share: control of the stand-in shells
// and the record of every line handed to the command interpreter.
#ifndef WEX_TEST_EXEC_SUPPORT_H
#define WEX_TEST_EXEC_SUPPORT_H

#include <string>
#include <vector>

namespace wex_test
{

// Sets the stand-in shells' environment for one test and reads what they
// recorded; the environment is cleared again when the object goes.
class StubShell
{
  public:
    StubShell();
    ~StubShell();
    StubShell(const StubShell &) = delete;
    StubShell &operator=(const StubShell &) = delete;

    void exit_with(int code) const;
    void set(const char *name, const std::string &value) const;
    std::string log() const;

  private:
    std::string log_path_;
};

// The lines system() was given in this process, oldest first.
std::vector<std::string> &interpreter_lines();

bool file_exists(const std::string &path);

// The sandbox path of the main shell binary.
std::string main_shell();

} // namespace wex_test

#endif
