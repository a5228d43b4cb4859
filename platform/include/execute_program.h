/* Running a program as a child process, a utility of the switch's platform. */
#ifndef WEX_PLATFORM_EXECUTE_PROGRAM_H
#define WEX_PLATFORM_EXECUTE_PROGRAM_H

#ifdef __cplusplus
extern "C" {
#endif

/* The most arguments execute_program_and_wait passes, the program's path not
 * counted. */
#define EXECUTE_PROGRAM_MAX_ARGS 30

/* Runs the program at path with the arguments that follow, up to a NULL, as
 * a child process (argv[0] is path) and waits for it. Returns the wait status
 * as waitpid stores it (0 when the program exited with 0; 127 * 256 when it
 * could not be executed), or -1 when no child could be started or waited for,
 * or when there are more than EXECUTE_PROGRAM_MAX_ARGS arguments. */
int execute_program_and_wait(const char *path, ...);

#ifdef __cplusplus
}
#endif

#endif /* WEX_PLATFORM_EXECUTE_PROGRAM_H */
