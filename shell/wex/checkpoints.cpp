#include "checkpoints.h"

#include "complaints.h"
#include "input_file.h"
#include "output_file.h"
#include "program.h"
#include "remediation.h"

#include <wex/exec.h>
#include <wex/output.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <dirent.h>
#include <sys/stat.h>
#include <unistd.h>

namespace wex_shell
{
namespace
{

// Checkpoints kept at most: each is a whole configuration, and saving one
// more is refused rather than dropping an old one unasked.
constexpr std::size_t kMaxCheckpoints = 64;
constexpr std::size_t kMaxNameBytes = 31;

// A checkpoint's name is its file's name: letters, digits, '.', '_' and
// '-', not beginning with '.', so that it names nothing outside the folder.
bool valid_name(const std::string &name)
{
    return !name.empty() && name.size() <= kMaxNameBytes && name[0] != '.' &&
           std::all_of(name.begin(), name.end(), [](char c) {
               return std::isalnum(static_cast<unsigned char>(c)) || std::strchr("._-", c);
           });
}

bool named_well(const std::string &name)
{
    if (valid_name(name))
        return true;
    std::fprintf(
        complaints(),
        "%% A checkpoint's name is 1 to %zu letters, digits, '.', '_' or '-', not beginning with '.'\n",
        kMaxNameBytes);
    return false;
}

bool copy_text(const std::string &text, FILE *out)
{
    return std::fwrite(text.data(), 1, text.size(), out) == text.size();
}

// A private folder for the files of one child shell run, removed with
// them whatever happens.
class Scratch
{
  public:
    Scratch()
    {
        const char *base = std::getenv("TMPDIR");
        std::string pattern = std::string(base && *base ? base : "/tmp") + "/wex-XXXXXX";
        if (mkdtemp(pattern.data()))
            path_ = pattern;
    }
    Scratch(const Scratch &) = delete;
    Scratch &operator=(const Scratch &) = delete;
    ~Scratch()
    {
        if (path_.empty())
            return;
        for (const char *name : {"script", "out", "err"})
            unlink(file(name).c_str());
        rmdir(path_.c_str());
    }

    bool made() const { return !path_.empty(); }
    std::string file(const char *name) const { return path_ + "/" + name; }

  private:
    std::string path_;
};

std::optional<std::string> read_config(const std::string &path)
{
    const std::optional<wex_tools::InputText> text =
        wex_tools::read_text_input("wex", path, wex_tools::kMaxConfigTextBytes);
    return text ? std::optional<std::string>(text->view()) : std::nullopt;
}

// What a child shell wrote to one of its files, or nothing.
std::string read_whole(const std::string &path)
{
    return read_config(path).value_or("");
}

// Fills a child shell run's record: this very program, its output and
// complaints into the scratch folder. False when a path does not fit.
bool child_record(const Scratch &scratch, bool errors_apart, wex_system_params_t &record)
{
    record = {};
    char self[PATH_MAX] = "";
    const ssize_t length = readlink("/proc/self/exe", self, sizeof self - 1);
    const std::string out = scratch.file("out"), err = errors_apart ? scratch.file("err") : "";
    if (length <= 0 || static_cast<std::size_t>(length) >= sizeof record.shell_path ||
        out.size() >= sizeof record.out_file || err.size() >= sizeof record.err_file) {
        std::fputs("% The shell's path or the temporary folder's is too long for a child shell\n",
                   complaints());
        return false;
    }
    std::memcpy(record.shell_path, self, static_cast<std::size_t>(length));
    std::memcpy(record.out_file, out.c_str(), out.size() + 1);
    std::memcpy(record.err_file, err.c_str(), err.size() + 1);
    return true;
}

} // namespace

std::optional<RestoreMode> restore_mode(const std::string &keyword)
{
    if (keyword == "stop-on-error")
        return RestoreMode::stop_on_error;
    if (keyword == "continue-on-error")
        return RestoreMode::continue_on_error;
    if (keyword == "all-or-nothing")
        return RestoreMode::all_or_nothing;
    return std::nullopt;
}

Checkpoints::Checkpoints(std::string directory, const MainTree &tree, RunningConfig running)
    : directory_(std::move(directory)), tree_(tree), running_(std::move(running))
{
}

std::vector<std::string> Checkpoints::names() const
{
    std::vector<std::string> found;
    if (DIR *folder = opendir(directory_.c_str())) {
        while (const dirent *entry = readdir(folder))
            if (valid_name(entry->d_name))
                found.emplace_back(entry->d_name);
        closedir(folder);
    }
    std::sort(found.begin(), found.end());
    return found;
}

// The running configuration as a child shell shows it, as any program
// that takes a snapshot sees it.
bool Checkpoints::save(const std::string &name)
{
    if (!named_well(name))
        return false;
    if (access(path_of(name).c_str(), F_OK) == 0) {
        std::fprintf(complaints(), "%% Checkpoint %s exists: delete it first\n", name.c_str());
        return false;
    }
    if (names().size() >= kMaxCheckpoints) {
        std::fprintf(complaints(), "%% %zu checkpoints are kept at most: delete one first\n",
                     kMaxCheckpoints);
        return false;
    }
    Scratch scratch;
    wex_system_params_t record;
    if (!scratch.made() || !child_record(scratch, true, record))
        return false;
    std::snprintf(record.cmd_str, sizeof record.cmd_str, "show running-config");
    record.e_val = 1;
    if (wex_system2(&record) != 0) {
        copy_text(read_whole(scratch.file("err")), complaints());
        std::fprintf(complaints(), "%% Checkpoint %s not saved: no running configuration was shown\n",
                     name.c_str());
        return false;
    }
    const std::string text = read_whole(scratch.file("out"));
    if (mkdir(directory_.c_str(), 0700) != 0 && errno != EEXIST) {
        std::fprintf(complaints(), "%% %s: %s\n", directory_.c_str(), std::strerror(errno));
        return false;
    }
    return wex_tools::write_file_whole("wex", path_of(name),
                                       {reinterpret_cast<const uint8_t *>(text.data()), text.size()});
}

bool Checkpoints::list(FILE *out) const
{
    const std::vector<std::string> found = names();
    if (found.empty()) {
        std::fputs("No checkpoints are saved\n", out);
        return true;
    }
    std::fprintf(out, "%-31s %7s  %s\n", "NAME", "LINES", "SAVED (UTC)");
    for (const std::string &name : found) {
        struct stat status {
        };
        const std::optional<std::string> text = read(name);
        if (!text || stat(path_of(name).c_str(), &status) != 0)
            continue; // deleted meanwhile
        std::fprintf(out, "%-31s %7zu  %s\n", name.c_str(),
                     static_cast<std::size_t>(std::count(text->begin(), text->end(), '\n')),
                     wex_tools::utc_time_text(status.st_mtime).c_str());
    }
    return true;
}

std::optional<std::string> Checkpoints::read(const std::string &name) const
{
    if (access(path_of(name).c_str(), F_OK) != 0)
        return std::nullopt;
    return read_config(path_of(name));
}

std::optional<std::string> Checkpoints::text_of(const std::string &name) const
{
    std::optional<std::string> text = named_well(name) ? read(name) : std::nullopt;
    if (!text)
        std::fprintf(complaints(), "%% No checkpoint %s\n", name.c_str());
    return text;
}

bool Checkpoints::show(const std::string &name, FILE *out) const
{
    const std::optional<std::string> text = text_of(name);
    return text && copy_text(*text, out);
}

bool Checkpoints::remove(const std::string &name)
{
    if (!named_well(name))
        return false;
    if (unlink(path_of(name).c_str()) != 0) {
        std::fprintf(complaints(), "%% No checkpoint %s\n", name.c_str());
        return false;
    }
    return true;
}

// The commands from running to wanted; nothing when a line of either
// cannot be turned into commands, each such line said.
std::optional<std::vector<std::string>>
Checkpoints::plan(const std::string &running, const std::string &wanted, const std::string &wanted_name) const
{
    const wex_remediation::CommandGrammar grammar(tree_);
    wex_remediation::Remediation result =
        wex_remediation::remediate(grammar, running, wanted, wex_remediation::OnProblem::refuse);
    for (const wex_remediation::Problem &problem : result.problems)
        std::fprintf(complaints(), "%% %s\n",
                     wex_remediation::describe(problem, "running-config", wanted_name).c_str());
    if (result.refused)
        return std::nullopt;
    return std::move(result.commands);
}

// The running configuration and the commands from it to checkpoint name;
// nothing when either is missing or a line cannot be turned into commands.
std::optional<Checkpoints::Restoration> Checkpoints::restoration(const std::string &name) const
{
    const std::optional<std::string> wanted = text_of(name);
    if (!wanted)
        return std::nullopt;
    std::optional<std::string> running = running_();
    std::optional<std::vector<std::string>> commands = running ? plan(*running, *wanted, name) : std::nullopt;
    if (!commands)
        return std::nullopt;
    return Restoration{std::move(*running), std::move(*commands)};
}

bool Checkpoints::diff(const std::string &name, FILE *out) const
{
    const std::optional<Restoration> restoring = restoration(name);
    if (!restoring)
        return false;
    for (const std::string &command : restoring->commands)
        std::fprintf(out, "%s\n", command.c_str());
    return true;
}

// Runs commands from configuration mode through a child shell; its
// complaints are passed on. True when every command succeeded.
bool Checkpoints::apply(const std::vector<std::string> &commands, bool stop_on_error) const
{
    Scratch scratch;
    wex_system_params_t record;
    if (!scratch.made() || !child_record(scratch, false, record))
        return false;
    std::string script = "configure terminal\n";
    for (const std::string &command : commands)
        script += command + "\n";
    script += "end\n";
    const std::string script_path = scratch.file("script");
    if (script_path.size() >= sizeof record.file_name ||
        !wex_tools::write_file_whole("wex", script_path,
                                     {reinterpret_cast<const uint8_t *>(script.data()), script.size()}))
        return false;
    std::memcpy(record.file_name, script_path.c_str(), script_path.size() + 1);
    record.e_val = stop_on_error ? 1 : 0;
    record.q_val = 1;
    const uint32_t status = wex_execute_script_file2(&record);
    copy_text(read_whole(scratch.file("out")), complaints());
    return status == 0;
}

// After a failed restore: the commands back to the configuration before
// it, run whatever fails, then a look at whether it is there again.
bool Checkpoints::put_back(const std::string &before) const
{
    const std::optional<std::string> now = running_();
    const auto commands = now ? plan(*now, before, "running-config before the restore") : std::nullopt;
    if (!commands)
        return false;
    apply(*commands, false);
    const std::optional<std::string> after = running_();
    return after && wex_is_diff_same(after->c_str(), before.c_str());
}

bool Checkpoints::restore(const std::string &name, RestoreMode mode)
{
    const std::optional<Restoration> restoring = restoration(name);
    if (!restoring)
        return false;
    if (restoring->commands.empty() || apply(restoring->commands, mode != RestoreMode::continue_on_error))
        return true;
    if (mode != RestoreMode::all_or_nothing) {
        std::fprintf(complaints(), "%% Checkpoint %s is restored in part: a command failed\n", name.c_str());
        return false;
    }
    std::fprintf(complaints(),
                 "%% Checkpoint %s is not restored: a command failed, and the running configuration %s\n",
                 name.c_str(),
                 put_back(restoring->before) ? "is back as it was" : "could not be put back as it was");
    return false;
}

} // namespace wex_shell
