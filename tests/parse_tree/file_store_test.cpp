#include "support/sandbox.h"

#include <wex/parse_tree.h>

#include <chrono>
#include <csignal>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <random>
#include <sstream>
#include <string>
#include <sys/stat.h>
#include <sys/time.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace wex_test;
namespace fs = std::filesystem;

namespace
{

const char kNames[3][WEX_FILE_NAME_SIZE] = {"a", "b", "c"};

std::string fresh_folder(const std::string &name)
{
    const std::string path = sandbox_path("/store/" + name);
    fs::remove_all(path);
    fs::create_directories(path);
    return path;
}

void set_mtime(const std::string &path, time_t seconds)
{
    const timeval times[2] = {{seconds, 0}, {seconds, 0}};
    ASSERT_EQ(utimes(path.c_str(), times), 0) << path;
}

// The index of the next writable name is never reset; a table of one name
// brings it back to 0.
void init_rotation(const std::string &folder, const char (*names)[WEX_FILE_NAME_SIZE], int32_t count)
{
    file_ha_init(folder.c_str(), kNames, 1);
    file_ha_current_writable_filename();
    file_ha_init(folder.c_str(), names, count);
}

TEST(FileHa, RotatesAndReadsTheNewestCompleteFile)
{
    const std::string dir = fresh_folder("ha");
    init_rotation(dir, kNames, 3);
    EXPECT_EQ(file_ha_current_readable_filename(), nullptr);
    EXPECT_STREQ(file_ha_current_writable_filename(), "a");
    ASSERT_EQ(file_ha_commit("a"), 0);
    EXPECT_STREQ(file_ha_current_writable_filename(), "b");
    ASSERT_EQ(file_ha_commit("b"), 0);
    const int first = std::stoi(file_content(dir + "/a_done"));
    EXPECT_EQ(std::stoi(file_content(dir + "/b_done")), first + 1);
    set_mtime(dir + "/a_done", 1000);
    set_mtime(dir + "/b_done", 1001);
    EXPECT_STREQ(file_ha_current_readable_filename(), "b");
    // Handing out a name again removes its marker.
    EXPECT_STREQ(file_ha_current_writable_filename(), "c");
    EXPECT_STREQ(file_ha_current_writable_filename(), "a");
    EXPECT_FALSE(fs::exists(dir + "/a_done"));
    EXPECT_STREQ(file_ha_current_writable_filename(), "b");

    // Equal times: the larger number wins, in whichever order the names come.
    std::ofstream(dir + "/a_done") << "3";
    std::ofstream(dir + "/b_done") << "-1";
    std::ofstream(dir + "/c_done") << "4";
    for (const char *name : {"a_done", "b_done", "c_done"})
        set_mtime(dir + "/" + name, 2000);
    EXPECT_STREQ(file_ha_current_readable_filename(), "c");

    // Set again with fewer names, the index wraps within the new count.
    file_ha_init(dir.c_str(), kNames, 2);
    EXPECT_STREQ(file_ha_current_writable_filename(), "a");
    // A marker that cannot be created: -1, and the number is not used up.
    const std::string missing = dir + "/missing"; // held by pointer: it must outlive its use
    file_ha_init(missing.c_str(), kNames, 3);
    EXPECT_EQ(file_ha_commit("a"), -1);
    file_ha_init(dir.c_str(), kNames, 3);
    ASSERT_EQ(file_ha_commit("b"), 0);
    EXPECT_EQ(std::stoi(file_content(dir + "/b_done")), first + 2);
    file_ha_init(nullptr, kNames, 3);
    EXPECT_EQ(file_ha_commit("a"), -1);
}

TEST(FileHa, RefusesWhatItCannotNameWhole)
{
    const std::string dir = fresh_folder(std::string(100 - sandbox_path("/store/").size(), 'd'));
    init_rotation(dir, kNames, 0);
    EXPECT_EQ(file_ha_current_writable_filename(), nullptr);
    EXPECT_EQ(file_ha_current_readable_filename(), nullptr);

    // "<dir>/<name>_done" at 127 characters fits, at 128 it does not; a name
    // that fills its field has no terminator and is never read past.
    char names[3][WEX_FILE_NAME_SIZE] = {};
    const std::size_t fitting = 127 - dir.size() - 1 - 5;
    std::memset(names[0], 'n', fitting);
    std::memset(names[1], 'm', fitting + 1);
    std::memset(names[2], 'z', sizeof names[2]);
    init_rotation(dir, names, 3);
    EXPECT_EQ(file_ha_current_writable_filename(), names[0]);
    EXPECT_EQ(file_ha_commit(names[0]), 0);
    EXPECT_EQ(file_ha_current_writable_filename(), nullptr);
    EXPECT_EQ(file_ha_commit(names[1]), -1);
    EXPECT_EQ(file_ha_current_writable_filename(), nullptr);
    EXPECT_EQ(file_ha_current_readable_filename(), names[0]);
}

// The writer's loop: each file holds kLines copies of its version and a last
// line "end", written in pieces, then committed. After its first commit it
// says so on ready, so that the kill lands in the loop, not in start-up.
[[noreturn]] void write_forever(const std::string &dir, int ready)
{
    constexpr int kLines = 200;
    file_ha_init(dir.c_str(), kNames, 3);
    for (long long version = getpid() * 1000LL;; ++version) {
        const char *name = file_ha_current_writable_filename();
        std::FILE *file = std::fopen((dir + "/" + name).c_str(), "w");
        for (int i = 0; i < kLines; ++i) {
            std::fprintf(file, "%lld\n", version);
            if (i % 50 == 0)
                std::fflush(file);
        }
        std::fputs("end\n", file);
        std::fclose(file);
        file_ha_commit(name);
        if (ready >= 0 && write(ready, "r", 1) == 1) {
            close(ready);
            ready = -1;
        }
    }
}

// A file is complete when all its lines but the last are one version and the
// last is "end".
bool complete(const std::string &text)
{
    std::istringstream lines(text);
    std::string first, line, last;
    std::getline(lines, first);
    int count = 1;
    while (std::getline(lines, line)) {
        last = line;
        if (line != first && line != "end")
            return false;
        ++count;
    }
    return last == "end" && count == 201;
}

TEST(FileHa, AReaderNeverChoosesAFileCutShortByAKilledWriter)
{
    const std::string dir = fresh_folder("ha_crash");
    file_ha_init(dir.c_str(), kNames, 3);
    std::mt19937 random(7);
    int checked = 0;
    for (int kill_count = 0; kill_count < 300; ++kill_count) {
        int ready[2];
        ASSERT_EQ(pipe(ready), 0);
        const pid_t writer = fork();
        if (writer == 0)
            write_forever(dir, ready[1]);
        close(ready[1]);
        pollfd started = {ready[0], POLLIN, 0};
        char byte;
        ASSERT_TRUE(poll(&started, 1, 30000) == 1 && read(ready[0], &byte, 1) == 1)
            << "the writer did not start";
        close(ready[0]);
        const auto stop_at = std::chrono::steady_clock::now() + std::chrono::microseconds(random() % 4000);
        while (std::chrono::steady_clock::now() < stop_at) {
            const char *name = file_ha_current_readable_filename();
            if (!name)
                continue;
            // Only a read that the marker vouched for throughout counts: the
            // writer may take the name again while it is being read. Holding
            // the marker open keeps its inode from being reused, so a marker
            // removed and made anew is always seen, even with the same number.
            const std::string marker = dir + "/" + name + "_done";
            const int held = open(marker.c_str(), O_RDONLY);
            if (held < 0)
                continue;
            const std::string text = file_content(dir + "/" + name);
            struct stat before, after;
            const bool vouched = fstat(held, &before) == 0 && stat(marker.c_str(), &after) == 0 &&
                                 before.st_ino == after.st_ino && before.st_dev == after.st_dev;
            close(held);
            if (!vouched)
                continue;
            EXPECT_TRUE(complete(text)) << name << " after " << kill_count << " kills";
            ++checked;
        }
        kill(writer, SIGKILL);
        int status = 0;
        waitpid(writer, &status, 0);
        ASSERT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL) << "the writer ended on its own";
    }
    EXPECT_GT(checked, 300);
}

TEST(DynamicParfile, FindsTheHighestNumberAndNamesTheNext)
{
    const std::string dir = fresh_folder("par");
    EXPECT_EQ(wexd_init_sequence_no((dir + "/missing").c_str()), 1u);
    EXPECT_EQ(wexd_init_sequence_no(nullptr), 1u);
    for (const char *file :
         {"main_tree7.par", "main_tree12.par.gz", "main_tree.par", "main_tree99999999999.par", "main_tree40",
          "old_main_tree3x.par", "main_tree12.par"})
        std::ofstream(dir + "/" + file) << "x";
    EXPECT_STREQ(wexd_dynamic_parfile_init(dir.c_str()), "main_tree13.par");
    EXPECT_FALSE(fs::exists(dir + "/main_tree12.par"));
    EXPECT_TRUE(fs::exists(dir + "/main_tree12.par.gz"));
    EXPECT_STREQ(new_dynamic_par_file, "main_tree13.par");
    EXPECT_STREQ(wexd_get_new_dynamic_parfile_name(), "main_tree14.par");
    EXPECT_STREQ(wexd_get_current_dynamic_parfile_name(), "main_tree13.par");
    EXPECT_EQ(wexd_update_current_dynamic_parfile_name(), current_dynamic_par_file);
    EXPECT_STREQ(current_dynamic_par_file, "main_tree14.par");
}

TEST(DefaultTree, CompressesAndRestoresThroughGzip)
{
    const std::string log = sandbox_path("/store/gzip.log");
    fs::remove(log);
    write_sandbox_file("/bin/gzip", "#!/bin/sh\necho \"$*\" >> " + log + "\nexec /bin/gzip \"$@\"\n", 0755);
    fs::remove_all(sandbox_path("/tarn/etc/par/default"));
    const std::string tree = sandbox_path("/tarn/etc/par/default/main_tree.par");

    EXPECT_EQ(wex_default_parse_tree_zip(), -1);
    EXPECT_EQ(wex_default_parse_tree_unzip(), -1);
    write_sandbox_file("/tarn/etc/par/default/main_tree.par", "tree bytes", 0600);
    EXPECT_EQ(wex_default_parse_tree_unzip(), 0);
    EXPECT_EQ(wex_default_parse_tree_zip(), 0);
    EXPECT_FALSE(fs::exists(tree));
    EXPECT_EQ(wex_default_parse_tree_unzip(), 0);
    EXPECT_EQ(file_content(tree), "tree bytes");
    struct stat st;
    ASSERT_EQ(stat(tree.c_str(), &st), 0);
    EXPECT_EQ(st.st_mode & 0777, 0666u);
    EXPECT_EQ(file_content(log), "-df " + tree + ".gz\n-f " + tree + "\n-df " + tree + ".gz\n");
}

} // namespace
