// The HA file set: caller-given names in one directory, written in rotation.
// A file counts as complete only while its marker "<name>_done" exists; the
// writer removes the marker before rewriting a file and creates it after, so
// a reader never chooses a file in the middle of being written.
#include "common/format.h"
#include "file_store.h"

#include <wex/parse_tree.h>

#include <cstdio>
#include <cstring>
#include <sys/stat.h>
#include <unistd.h>

namespace wex::tree
{
const char *store_directory = nullptr;
}

namespace
{

constexpr std::size_t kMarkerPathSize = 128;

const char (*g_names)[WEX_FILE_NAME_SIZE] = nullptr;
int32_t g_count = 0;
int32_t g_next_writable = 0;
int32_t g_commit_number = 1;

// "<directory>/<name>_done". A path that does not fit is refused, never cut
// into the path of another file, and so is a name without its terminator.
bool marker_path(const char *name, std::size_t name_capacity, char (&path)[kMarkerPathSize]) noexcept
{
    if (!wex::tree::store_directory || !name || strnlen(name, name_capacity) == name_capacity)
        return false;
    return wex::format_whole(path, sizeof path, "%s/%.*s_done", wex::tree::store_directory,
                             static_cast<int>(name_capacity), name);
}

// The commit number a marker holds; -1 when it cannot be read.
int32_t read_marker(const char *path) noexcept
{
    std::FILE *marker = std::fopen(path, "re");
    if (!marker)
        return -1;
    int32_t number = -1;
    if (std::fscanf(marker, "%d", &number) != 1)
        number = -1;
    std::fclose(marker);
    return number;
}

bool names_configured() noexcept
{
    return g_names && g_count > 0;
}

} // namespace

extern "C" {

WEX_API int32_t file_ha_init(const char *directory, const char (*names)[WEX_FILE_NAME_SIZE],
                             int32_t count) noexcept
{
    wex::tree::store_directory = directory;
    g_names = names;
    g_count = count;
    return 0;
}

WEX_API const char *file_ha_current_writable_filename(void) noexcept
{
    if (!names_configured())
        return nullptr;
    // A table set again with fewer names may leave the index past its end.
    const int32_t index = g_next_writable >= 0 ? g_next_writable % g_count : 0;
    g_next_writable = (index + 1) % g_count;
    const char *name = g_names[index];
    char path[kMarkerPathSize];
    if (!marker_path(name, WEX_FILE_NAME_SIZE, path))
        return nullptr;
    unlink(path);
    return name;
}

WEX_API int32_t file_ha_commit(const char *name) noexcept
{
    char path[kMarkerPathSize];
    if (!marker_path(name, kMarkerPathSize, path))
        return -1;
    std::FILE *marker = std::fopen(path, "we");
    if (!marker)
        return -1;
    const bool written = std::fprintf(marker, "%d", g_commit_number) > 0;
    if (std::fclose(marker) != 0 || !written)
        return -1;
    ++g_commit_number;
    return 0;
}

WEX_API const char *file_ha_current_readable_filename(void) noexcept
{
    if (!names_configured())
        return nullptr;
    const char *chosen = nullptr;
    time_t best_time = 0;
    int32_t best_number = 0;
    for (int32_t i = 0; i < g_count; ++i) {
        char path[kMarkerPathSize];
        struct stat st;
        if (!marker_path(g_names[i], WEX_FILE_NAME_SIZE, path) || stat(path, &st) != 0)
            continue;
        if (st.st_mtime > best_time) {
            chosen = g_names[i];
            best_time = st.st_mtime;
            best_number = read_marker(path);
        } else if (st.st_mtime == best_time) {
            const int32_t number = read_marker(path);
            if (number > best_number) {
                chosen = g_names[i];
                best_number = number;
            }
        }
    }
    return chosen;
}

} // extern "C"
