// The commands the shell runs itself: modes, the running and startup
// configurations, and what a session knows of itself.
#include "session.h"

#include "checkpoints.h"

#include "complaints.h"
#include "output_file.h"
#include "program.h"

#include <wex/wexd_client.h>

#include "bcp.h"

#include <algorithm>
#include <fstream>
#include <iterator>
#include <sstream>
#include <unistd.h>

namespace wex_shell
{
namespace
{

// A feature's blocks, each first line at the left and the lines of its
// submode under it, indented by two blanks.
std::string render(std::vector<ConfigBlock> blocks)
{
    std::stable_sort(blocks.begin(), blocks.end(),
                     [](const ConfigBlock &a, const ConfigBlock &b) { return a.priority < b.priority; });
    std::string text;
    for (const ConfigBlock &block : blocks) {
        std::istringstream lines(block.text);
        std::string line;
        for (bool first = true; std::getline(lines, line); first = false)
            text += (first ? "" : "  ") + line + "\n";
    }
    return text;
}

} // namespace

std::optional<std::string> Session::running_config(const std::string &excluded)
{
    std::vector<ConfigBlock> blocks;
    for (const auto &[module, queue] : setup_.features) {
        if (module == excluded)
            continue;
        uint32_t start = 0;
        do {
            const Bytes request = encode_page_request(start);
            void *reply = nullptr;
            uint32_t len = static_cast<uint32_t>(request.size());
            const int result = bcp_req_resp(kOpcRunningConfig, WEX_MSG_TYPE_READ, request.data(), &reply,
                                            &len, "", "", queue, setup_.q, kFeatureTimeout);
            const int error = errno;
            std::optional<ConfigPage> page;
            if (result == 0 && reply)
                page = decode_page({static_cast<const uint8_t *>(reply), len});
            std::free(reply);
            // A configuration missing a feature's part is never shown as
            // the whole: a snapshot taken from it would lose that part.
            if (!page || (page->next != 0 && page->next <= start)) {
                if (result < 0)
                    print_exchange_failure(error);
                std::fprintf(complaints(), "%% %s did not give its running configuration\n", module.c_str());
                return std::nullopt;
            }
            std::move(page->blocks.begin(), page->blocks.end(), std::back_inserter(blocks));
            start = page->next;
        } while (start != 0);
    }
    return render(std::move(blocks));
}

bool Session::show_running(const std::string &excluded, FILE *out)
{
    const std::optional<std::string> text = running_config(excluded);
    if (!text)
        return false;
    if (!setup_.options.quiet || out != stdout)
        std::fwrite(text->data(), 1, text->size(), out);
    return true;
}

// The saved configuration is kept beside the main trees.
std::string Session::startup_path() const
{
    return setup_.tree_path.substr(0, setup_.tree_path.rfind('/') + 1) + "startup-config";
}

bool Session::show_users(FILE *out) const
{
    const auto known = wex_tools::sessions(setup_.q);
    if (!known) {
        std::fputs("% wexd did not list the sessions\n", complaints());
        return false;
    }
    std::fprintf(out, "  %-16s %-20s %s\n", "USER", "TERMINAL", "SINCE (UTC)");
    for (const wex_tools::SimSession &session : *known) {
        const bool mine = session.pid == static_cast<uint32_t>(getpid());
        std::fprintf(out, "%c %-16s %-20s %s\n", mine ? '*' : ' ', field_text(session.user).c_str(),
                     field_text(session.terminal).c_str(), wex_tools::utc_time_text(session.since).c_str());
    }
    return true;
}

// "checkpoint ACTION [NAME [MODE]]": the name is the command's one value,
// a restore's mode its last keyword.
bool Session::run_checkpoint(const std::string &action, const Match &match, FILE *out)
{
    std::string name;
    for (const MatchedNode &node : match.path)
        if (!node.values.empty())
            name = reinterpret_cast<const char *>(node.values.front().bytes.data());
    Checkpoints checkpoints(setup_.tree_path.substr(0, setup_.tree_path.rfind('/') + 1) + "checkpoints",
                            *setup_.tree, [this] { return running_config(""); });
    if (action == "save")
        return checkpoints.save(name);
    if (action == "list")
        return checkpoints.list(out);
    if (action == "show")
        return checkpoints.show(name, out);
    if (action == "delete")
        return checkpoints.remove(name);
    if (action == "diff")
        return checkpoints.diff(name, out);
    const std::optional<RestoreMode> mode = restore_mode(match.path.back().text);
    return checkpoints.restore(name, mode.value_or(RestoreMode::all_or_nothing));
}

bool Session::run_built_in(const std::string &function, const Match &match, FILE *out)
{
    constexpr std::string_view kCheckpoint = "wex_checkpoint_";
    if (function.rfind(kCheckpoint, 0) == 0)
        return run_checkpoint(function.substr(kCheckpoint.size()), match, out);
    const auto &values = match.path.back().values;
    const auto text_value = [&values] {
        return values.empty() ? std::string()
                              : std::string(reinterpret_cast<const char *>(values.front().bytes.data()));
    };
    if (function == "wex_configure")
        return enter_configuration();
    if (function == "wex_end") {
        leave_to(1);
        return true;
    }
    if (function == "wex_exit") {
        ended_ = modes_.size() == 1;
        leave_mode();
        return true;
    }
    if (function == "wex_show_running")
        return show_running(text_value(), out);
    if (function == "wex_show_startup") {
        std::ifstream file(startup_path(), std::ios::binary);
        if (!file) {
            std::fputs("% No startup configuration is saved\n", complaints());
            return false;
        }
        const std::string text(std::istreambuf_iterator<char>(file), {});
        std::fwrite(text.data(), 1, text.size(), out);
        return true;
    }
    if (function == "wex_copy_running" && match.full_text == "copy running-config startup-config") {
        const std::optional<std::string> text = running_config("");
        return text &&
               wex_tools::write_file_whole("wex", startup_path(),
                                           {reinterpret_cast<const uint8_t *>(text->data()), text->size()});
    }
    if (function == "wex_show_version") {
        std::fprintf(out, "%s %s\n", setup_.context.program.c_str(), wex_tools::project_version());
        return true;
    }
    if (function == "wex_terminal_length") {
        uint32_t lines = 0;
        if (values.empty())
            return false;
        std::memcpy(&lines, values.front().bytes.data(), sizeof lines);
        if (setup_.terminal)
            setup_.terminal->set_page_length(lines);
        return true; // a run without a terminal never pages
    }
    if (function == "wex_show_users")
        return show_users(out);
    if (function == "wex_show_history") {
        if (!setup_.terminal) {
            std::fputs("% A history is kept for a session at a terminal only\n", complaints());
            return false;
        }
        const std::string text = setup_.terminal->history_text();
        std::fwrite(text.data(), 1, text.size(), out);
        return true;
    }
    std::fprintf(complaints(), "%% %s is not available off the switch\n", match.full_text.c_str());
    return false;
}

} // namespace wex_shell
