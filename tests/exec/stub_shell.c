/* Stand-in for the switch's shell binaries in the test sandbox. It is a
 * native program, not a script, so that the argv[0] it was given can be
 * seen. It appends one record of how it was started to $WEX_STUB_LOG, in a
 * single write so that concurrent shells never interleave:
 *
 *   argv: [arg0] [arg1] ...
 *   [script]            the file after "-f", when there is one
 *   ...contents...
 *   [end]
 *   [stdin]             standard input, when $WEX_STUB_STDIN is set
 *   ...contents...
 *   [end]
 *   [watched open]      when a descriptor is open on $WEX_STUB_WATCH
 *
 * then writes $WEX_STUB_SAY to standard output, sleeps $WEX_STUB_SLEEP_MS
 * milliseconds and exits with $WEX_STUB_EXIT (default 0), or ends by the
 * signal $WEX_STUB_SIGNAL. */
#define _GNU_SOURCE
#include <dirent.h>
#include <fcntl.h>
#include <signal.h>
#include <limits.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <time.h>
#include <unistd.h>

static char record[1 << 20];
static size_t used;

static void add(const char *data, size_t length)
{
    if (length > sizeof record - used)
        length = sizeof record - used;
    memcpy(record + used, data, length);
    used += length;
}

static void add_text(const char *text)
{
    add(text, strlen(text));
}

static void add_stream(const char *title, int fd)
{
    char chunk[4096];
    ssize_t n;
    add_text(title);
    while ((n = read(fd, chunk, sizeof chunk)) > 0)
        add(chunk, (size_t)n);
    add_text("[end]\n");
}

static int watched_file_open(const char *watched)
{
    char wanted[PATH_MAX], target[PATH_MAX], link[300];
    DIR *fds = opendir("/proc/self/fd");
    struct dirent *entry;
    int found = 0;
    if (!fds || !realpath(watched, wanted))
        return 0;
    while (!found && (entry = readdir(fds)) != NULL) {
        ssize_t n;
        snprintf(link, sizeof link, "/proc/self/fd/%s", entry->d_name);
        n = readlink(link, target, sizeof target - 1);
        if (n > 0) {
            target[n] = '\0';
            found = strcmp(target, wanted) == 0;
        }
    }
    closedir(fds);
    return found;
}

int main(int argc, char **argv)
{
    const char *log = getenv("WEX_STUB_LOG");
    const char *say = getenv("WEX_STUB_SAY");
    const char *sleep_ms = getenv("WEX_STUB_SLEEP_MS");
    const char *code = getenv("WEX_STUB_EXIT");
    const char *watched = getenv("WEX_STUB_WATCH");
    int i;

    add_text("argv:");
    for (i = 0; i < argc; ++i) {
        add_text(" [");
        add_text(argv[i]);
        add_text("]");
    }
    add_text("\n");
    for (i = 1; i + 1 < argc; ++i) {
        if (strcmp(argv[i], "-f") == 0) {
            int fd = open(argv[i + 1], O_RDONLY);
            if (fd < 0) {
                add_text("[script missing]\n");
            } else {
                add_stream("[script]\n", fd);
                close(fd);
            }
        }
    }
    if (getenv("WEX_STUB_STDIN"))
        add_stream("[stdin]\n", 0);
    if (watched && watched_file_open(watched))
        add_text("[watched open]\n");
    if (log) {
        int fd = open(log, O_WRONLY | O_APPEND | O_CREAT, 0644);
        if (fd >= 0) {
            if (write(fd, record, used) < 0)
                perror("stub shell log");
            close(fd);
        }
    }
    if (say) {
        fputs(say, stdout);
        fflush(stdout);
    }
    if (sleep_ms) {
        long ms = atol(sleep_ms);
        struct timespec pause = {ms / 1000, (ms % 1000) * 1000000L};
        nanosleep(&pause, NULL);
    }
    if (getenv("WEX_STUB_SIGNAL")) {
        signal(atoi(getenv("WEX_STUB_SIGNAL")), SIG_DFL);
        raise(atoi(getenv("WEX_STUB_SIGNAL")));
    }
    return code ? atoi(code) : 0;
}
