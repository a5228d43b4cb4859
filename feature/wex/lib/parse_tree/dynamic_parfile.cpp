// Numbered names of the main tree's files, "main_tree<n>.par", the number
// found again in the directory at start.
#include "common/format.h"
#include "file_store.h"

#include <wex/parse_tree.h>

#include <cstdio>
#include <cstring>
#include <dirent.h>
#include <limits>
#include <memory>
#include <unistd.h>

namespace
{

uint32_t g_sequence = 0;

struct DirectoryCloser {
    void operator()(DIR *directory) const noexcept { closedir(directory); }
};

// The number between "main_tree" and the first "." after it: its leading
// digits, 0 without any. A number too large for 32 bits is not one this
// library wrote, so it counts as 0.
uint32_t number_in(const char *entry) noexcept
{
    constexpr char kStem[] = "main_tree";
    const char *start = std::strstr(entry, kStem);
    if (!start)
        return 0;
    start += sizeof kStem - 1;
    const char *dot = std::strchr(start, '.');
    if (!dot)
        return 0;
    uint64_t number = 0;
    for (const char *p = start; p < dot && *p >= '0' && *p <= '9'; ++p) {
        number = number * 10 + static_cast<uint64_t>(*p - '0');
        if (number > std::numeric_limits<uint32_t>::max())
            return 0;
    }
    return static_cast<uint32_t>(number);
}

void name_file(char (&field)[WEX_FILE_NAME_SIZE], uint32_t number) noexcept
{
    std::snprintf(field, sizeof field, "main_tree%u.par", number);
}

// Removes "<directory>/main_tree<n>.par"; a path over 255 characters is not
// cut into another file's path, so nothing is removed.
void remove_tree_file(const char *directory, uint32_t number) noexcept
{
    char path[256];
    if (directory && wex::format_whole(path, sizeof path, "%s/main_tree%u.par", directory, number))
        unlink(path);
}

} // namespace

extern "C" {

WEX_API char current_dynamic_par_file[WEX_FILE_NAME_SIZE] = "";
WEX_API char new_dynamic_par_file[WEX_FILE_NAME_SIZE] = "";

WEX_API uint32_t wexd_init_sequence_no(const char *directory) noexcept
{
    uint32_t highest = 1;
    std::unique_ptr<DIR, DirectoryCloser> entries(directory ? opendir(directory) : nullptr);
    if (!entries)
        return highest;
    while (const dirent *entry = readdir(entries.get())) {
        if (std::strcmp(entry->d_name, ".") != 0 && std::strcmp(entry->d_name, "..") != 0)
            highest = std::max(highest, number_in(entry->d_name));
    }
    return highest;
}

WEX_API char *wexd_dynamic_parfile_init(const char *directory) noexcept
{
    wex::tree::store_directory = directory;
    g_sequence = wexd_init_sequence_no(directory);
    remove_tree_file(directory, g_sequence);
    ++g_sequence;
    name_file(current_dynamic_par_file, g_sequence);
    std::memcpy(new_dynamic_par_file, current_dynamic_par_file, sizeof new_dynamic_par_file);
    return current_dynamic_par_file;
}

WEX_API char *wexd_get_new_dynamic_parfile_name(void) noexcept
{
    name_file(new_dynamic_par_file, ++g_sequence);
    return new_dynamic_par_file;
}

WEX_API char *wexd_update_current_dynamic_parfile_name(void) noexcept
{
    std::memcpy(current_dynamic_par_file, new_dynamic_par_file, sizeof current_dynamic_par_file);
    return current_dynamic_par_file;
}

WEX_API char *wexd_get_current_dynamic_parfile_name(void) noexcept
{
    return current_dynamic_par_file;
}

} // extern "C"
