#include "execute_program.h"

#include <cerrno>
#include <cstdarg>
#include <sys/wait.h>
#include <unistd.h>

extern "C" int execute_program_and_wait(const char *path, ...)
{
    if (!path) {
        errno = EINVAL;
        return -1;
    }
    char *argv[EXECUTE_PROGRAM_MAX_ARGS + 2] = {const_cast<char *>(path)};
    std::va_list args;
    va_start(args, path);
    int count = 1;
    for (const char *arg; (arg = va_arg(args, const char *)) != nullptr; ++count) {
        if (count > EXECUTE_PROGRAM_MAX_ARGS) {
            va_end(args);
            errno = E2BIG;
            return -1;
        }
        argv[count] = const_cast<char *>(arg);
    }
    va_end(args);

    const pid_t pid = fork();
    if (pid < 0)
        return -1;
    if (pid == 0) {
        execv(path, argv);
        _exit(127);
    }
    int status = 0;
    while (waitpid(pid, &status, 0) < 0) {
        if (errno != EINTR)
            return -1;
    }
    return status;
}
