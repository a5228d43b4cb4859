#include "session.h"

#include "complaints.h"
#include "daemon_queries.h"
#include "output_file.h"
#include "program.h"

#include <wex/diag.h>
#include <wex/wexd_client.h>

#include "bcp.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>
#include <sstream>
#include <unistd.h>

namespace wex_shell
{
namespace
{

// Commands sent to a feature in one request at most: a batch's answers
// stay far inside one reply.
constexpr std::size_t kMaxBatch = 256;
// A command written in full fills the record's text field; a typed line
// longer than that cannot be one, abbreviated or not.
constexpr std::size_t kMaxCommandBytes = sizeof(pinfo::ascii_cmd) - 1;

bool is_control(char byte)
{
    const auto value = static_cast<unsigned char>(byte);
    return (value < 0x20 && byte != '\t') || value == 0x7f;
}

// Why a line cannot be a command before any word is matched: bytes that
// would drive the terminal the complaint goes to, or more bytes than a
// command holds. Empty when it may be one.
std::string unreadable(std::string_view line)
{
    const auto control = std::find_if(line.begin(), line.end(), is_control);
    char why[128] = "";
    if (control != line.end())
        std::snprintf(why, sizeof why, "%% Control byte 0x%02x at column %zu: not part of any command",
                      static_cast<unsigned char>(*control),
                      static_cast<std::size_t>(control - line.begin()) + 1);
    else if (line.size() > kMaxCommandBytes)
        std::snprintf(why, sizeof why, "%% Line of %zu bytes: a command holds at most %zu", line.size(),
                      kMaxCommandBytes);
    return why;
}

// A line as a complaint echoes it, safe to print: control bytes shown as
// '?', and no more of it than a command may hold.
std::string echo_of(std::string_view line)
{
    std::string echo(line.substr(0, kMaxCommandBytes));
    std::replace_if(echo.begin(), echo.end(), is_control, '?');
    return line.size() > kMaxCommandBytes ? echo + "..." : echo;
}

} // namespace

Session::Session(ShellSetup setup) : setup_(std::move(setup))
{
    modes_.push_back({0, ""});
    if (setup_.options.source == Source::configuration && !enter_configuration())
        ++failures_;
}

bool Session::report(std::size_t number, std::string_view line, const std::string &message)
{
    ++failures_;
    FILE *err = complaints();
    if (number > 0)
        std::fprintf(err, "line %zu: %s\n", number, echo_of(line).c_str());
    // A built-in command that failed has said why already: its message is empty.
    std::fputs(message.c_str(), err);
    if (!message.empty() && message.back() != '\n')
        std::fputc('\n', err);
    return !setup_.options.stop_on_error;
}

void Session::enter(std::size_t node)
{
    modes_.push_back({node, field_text(setup_.tree->node(node).SubMode_Prompt)});
}

// At a terminal the session takes the CLI lock for as long as it stays in
// configuration mode; a run from a file or a command line only checks that
// no one holds it.
bool Session::enter_configuration()
{
    const auto requester = static_cast<uint32_t>(getpid());
    if (setup_.terminal && !holds_lock_ && wexd_cli_lock(setup_.q, requester) == 0)
        holds_lock_ = true;
    if (!holds_lock_) {
        // Asked only when the lock is not this session's: who holds it.
        const std::optional<wex_tools::SimLockHolder> holder = wex_tools::lock_holder(setup_.q);
        if (setup_.terminal || (holder && holder->locked)) {
            std::fprintf(complaints(), "%% Configuration mode is locked: %s\n",
                         lock_holder_text(holder).c_str());
            return false;
        }
    }
    // Configuration mode is the node "configure terminal" reaches.
    const MatchResult result = match_line(*setup_.tree, 0, "configure terminal");
    const auto *match = std::get_if<Match>(&result);
    if (!match)
        return false;
    enter(match->path.back().node);
    return true;
}

// The holder as the sessions wexd knows name it: user, terminal, process.
std::string Session::lock_holder_text(const std::optional<wex_tools::SimLockHolder> &holder) const
{
    if (holder && holder->locked) {
        for (const wex_tools::SimSession &session :
             wex_tools::sessions(setup_.q).value_or(std::vector<wex_tools::SimSession>{}))
            if (session.pid == holder->requester)
                return "held by " + field_text(session.user) + " on " + field_text(session.terminal) +
                       " (process " + std::to_string(session.pid) + ")";
    }
    return wex_tools::holder_text(holder);
}

void Session::leave_to(std::size_t depth)
{
    modes_.resize(std::min(depth, modes_.size()));
    if (modes_.size() == 1)
        release_lock();
}

bool Session::leave_mode()
{
    if (modes_.size() == 1)
        return false;
    leave_to(modes_.size() - 1);
    return true;
}

void Session::release_lock()
{
    if (holds_lock_)
        wexd_cli_unlock(setup_.q, static_cast<uint32_t>(getpid()));
    holds_lock_ = false;
}

bool Session::run_line(std::string_view line, std::size_t number)
{
    while (!line.empty() && (line.back() == '\r' || line.back() == ' ' || line.back() == '\t'))
        line.remove_suffix(1);
    const std::size_t start = line.find_first_not_of(" \t");
    if (start == std::string_view::npos || line[start] == '!' || line[start] == '#')
        return true;
    line.remove_prefix(start);
    // The lines under a configuration command that failed belong to it:
    // applied, they would change whatever the submode held before.
    if (skip_under_ && start > *skip_under_)
        return report(number, line, "% skipped: it belongs to the failed command above");
    skip_under_.reset();
    const std::size_t failures_before = failures_;
    const bool go_on = run_indented(line, number);
    if (failures_ > failures_before)
        skip_under_ = start;
    return go_on;
}

bool Session::run_indented(std::string_view line, std::size_t number)
{
    if (const std::string why = unreadable(line); !why.empty())
        return report(number, line, why);
    const CommandLine parts = split_command_line(line);
    // A line that is not a command of the current submode may be one of a
    // mode above it: a configuration's indentation is not needed.
    MatchResult result = match_line(*setup_.tree, modes_.back().node, parts.command);
    for (std::size_t depth = modes_.size() - 1; std::holds_alternative<MatchError>(result) && depth > 1;) {
        MatchResult above = match_line(*setup_.tree, modes_[--depth].node, parts.command);
        if (std::holds_alternative<Match>(above))
            modes_.resize(depth + 1);
        // Of two errors, the one further along the line says more.
        if (std::holds_alternative<Match>(above) ||
            std::get<MatchError>(above).column > std::get<MatchError>(result).column)
            result = std::move(above);
    }
    // What waits for its feature goes first, so that errors come in line order.
    if (const auto *error = std::get_if<MatchError>(&result))
        return flush() && report(number, line, describe_error(line, *error));
    std::string why;
    std::optional<OutputFilter> filter;
    if (!parts.filters.empty() && !(filter = OutputFilter::parse(parts.filters, why)))
        return flush() && report(number, line, "% " + why);
    if (parts.target.empty() && !filter && !setup_.terminal)
        return run_match(std::get<Match>(result), parts.command, number, nullptr);
    return run_captured(std::get<Match>(result), parts, filter, number);
}

// The output in full, then filtered, then written whole to its file or
// handed to the terminal's pager.
bool Session::run_captured(const Match &match, const CommandLine &parts,
                           const std::optional<OutputFilter> &filter, std::size_t number)
{
    char *buffer = nullptr;
    std::size_t size = 0;
    FILE *captured = open_memstream(&buffer, &size);
    if (!captured)
        return report(number, parts.command, "% no memory to hold the command's output");
    const bool go_on = flush() && run_match(match, parts.command, number, captured);
    std::fclose(captured);
    std::string output = filter ? filter->apply({buffer, size}) : std::string(buffer, size);
    std::free(buffer);
    if (parts.target.empty()) {
        if (setup_.terminal)
            setup_.terminal->deliver(output);
        else
            std::fwrite(output.data(), 1, output.size(), stdout);
        return go_on;
    }
    const std::string target(parts.target);
    const bool written = wex_tools::write_file_whole(
        "wex", target, {reinterpret_cast<const uint8_t *>(output.data()), output.size()});
    if (!written)
        ++failures_; // the file was named on standard error by the write
    return go_on && (written || !setup_.options.stop_on_error);
}

bool Session::run_match(const Match &match, std::string_view line, std::size_t number, FILE *out)
{
    const parse_tree_node &last = setup_.tree->node(match.path.back().node);
    const std::string module = field_text(last.module_id);
    const std::string first = field_text(setup_.tree->node(match.path.front().node).Token);
    if (const auto refusal = setup_.authorization.refusal(command_class(first, modes_.size() > 1), module))
        return report(number, line, "% " + *refusal);
    const std::string function = field_text(last.Func_ID);
    if (setup_.features.count(module) == 0 && function.rfind("wex_", 0) == 0) {
        if (!flush())
            return false;
        if (!run_built_in(function, match, out ? out : stdout))
            return report(number, line, "");
        return true;
    }
    return dispatch(match, line, number, out);
}

bool Session::dispatch(const Match &match, std::string_view line, std::size_t number, FILE *out)
{
    const std::size_t node = match.path.back().node;
    const parse_tree_node &last = setup_.tree->node(node);
    const std::string module = field_text(last.module_id);
    if (setup_.features.count(module) == 0)
        return report(number, line, "% No feature serves this command (" + module + " is not registered)");
    if (match.full_text.size() > kMaxCommandBytes)
        return report(number, line,
                      "% Written in full, the command has " + std::to_string(match.full_text.size()) +
                          " bytes: a command holds at most " + std::to_string(kMaxCommandBytes));
    CommandRecord record =
        CommandRecord::build(*setup_.tree, match, setup_.context, static_cast<int32_t>(modes_.size() - 1));
    const bool enters = (last.action & WEX_ACTION_SUBMODE) != 0 && !match.negated;
    const auto flatten = [&record](Bytes &wire) { record.flatten_into(wire); };
    if (!batching() || out) {
        BatchWriter one;
        one.start(setup_.options.stop_on_error ? kStopOnError : 0);
        one.add(flatten);
        const std::size_t failures_before = failures_;
        const bool applied = send_batch(module, one, {{number, std::string(line)}}, out);
        if (applied && failures_ == failures_before && enters)
            enter(node);
        return applied;
    }
    if (pending_module_ != module && !flush())
        return false;
    if (pending_.size() == 0) {
        pending_module_ = module;
        pending_.start(setup_.options.stop_on_error ? kStopOnError : 0);
    }
    pending_.add(flatten);
    pending_lines_.push_back({number, std::string(line)});
    // The submode is entered at once: the feature keeps what the session
    // works on, and refuses the lines after an entry it refused.
    if (enters)
        enter(node);
    return pending_.size() < kMaxBatch || flush();
}

bool Session::flush()
{
    if (pending_.size() == 0)
        return true;
    std::vector<Pending> lines = std::move(pending_lines_);
    pending_lines_.clear();
    const bool sent = send_batch(pending_module_, pending_, std::move(lines), nullptr);
    pending_.start(0); // empty again, its memory kept for the next batch
    return sent;
}

bool Session::send_batch(const std::string &module, const BatchWriter &batch, std::vector<Pending> lines,
                         FILE *out)
{
    const std::span<const uint8_t> request = batch.bytes();
    void *reply = nullptr;
    uint32_t len = static_cast<uint32_t>(request.size());
    const int result = bcp_req_resp(kOpcExecute, WEX_MSG_TYPE_WRITE, request.data(), &reply, &len, "", "",
                                    setup_.features[module], setup_.q, kFeatureTimeout);
    const int error = errno;
    std::optional<std::vector<CommandOutcome>> outcomes;
    if (result == 0 && reply)
        outcomes = decode_outcomes({static_cast<const uint8_t *>(reply), len});
    std::free(reply);
    if (!outcomes || outcomes->size() > lines.size()) {
        if (result < 0)
            print_exchange_failure(error);
        return report(lines.front().number, lines.front().line,
                      "% " + module + (result < 0 ? " did not take the command" : " answered out of turn"));
    }
    FILE *shown = out ? out : stdout;
    for (std::size_t i = 0; i < outcomes->size(); ++i) {
        const CommandOutcome &outcome = (*outcomes)[i];
        if (outcome.status != 0) {
            if (!report(lines[i].number, lines[i].line, outcome.text))
                return false;
        } else if (!setup_.options.quiet || out) {
            std::fwrite(outcome.text.data(), 1, outcome.text.size(), shown);
        }
    }
    return outcomes->size() == lines.size();
}

} // namespace wex_shell
