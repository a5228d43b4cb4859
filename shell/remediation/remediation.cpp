#include "remediation.h"

#include "config_text.h"
#include "pairing.h"

#include <algorithm>
#include <unordered_map>
#include <unordered_set>

namespace wex_remediation
{
namespace
{

using Side = Problem::Side;

// One thing done for one line of a block: its commands, and where they
// stand among the others.
struct Step {
    uint16_t priority = 0;   // of the top-level line it belongs to
    uint32_t order = 0;      // the line's index in its text
    bool change = false;     // gives a single-valued command its new value
    bool deferrable = false; // a line removed whole, which may wait for changes above it
    std::vector<std::string> commands;
};

struct BlockSteps {
    std::vector<Step> removals;  // lines of the running text
    std::vector<Step> additions; // lines of the wanted text
    bool change = false;
};

struct Range {
    uint32_t first, end;
};

Range block_under(const ConfigText &text, uint32_t line)
{
    return {line + 1, text[line].end};
}

// Commands inside a submode are indented under the command that enters it,
// so that the shell skips them when that command fails.
constexpr const char *kIndent = "  ";
constexpr const char *kExit = "  exit";

// The commands of a block's steps, inside its parent's submode: removals
// last line first, so that what a later line needs goes before it;
// additions in the wanted order.
void flatten(BlockSteps &steps, std::vector<std::string> &into)
{
    std::sort(steps.removals.begin(), steps.removals.end(),
              [](const Step &x, const Step &y) { return x.order > y.order; });
    std::sort(steps.additions.begin(), steps.additions.end(),
              [](const Step &x, const Step &y) { return x.order < y.order; });
    for (std::vector<Step> *list : {&steps.removals, &steps.additions})
        for (Step &step : *list)
            for (std::string &command : step.commands)
                into.push_back(kIndent + std::move(command));
}

class Engine
{
  public:
    Engine(const CommandGrammar &grammar, std::string_view running, std::string_view wanted)
        : grammar_(grammar), a_(running, LastLine::counts), b_(wanted, LastLine::counts)
    {
    }

    Remediation run(OnProblem on_problem);

  private:
    struct Item {
        uint32_t line;
        const CommandInfo *info = nullptr; // once classified
    };
    // The lines of one block that make one ordered list.
    struct OrderedList {
        std::vector<Item> running, wanted;
    };

    const ConfigText &text(Side side) const { return side == Side::running ? a_ : b_; }
    std::string_view command(Side side, uint32_t line) const { return command_of(text(side).text(line)); }

    const CommandInfo *classify(Side side, std::size_t mode, uint32_t line);
    void problem(Side side, uint32_t line, std::string why);
    bool same_blocks(uint32_t i, uint32_t j) const;

    BlockSteps diff_block(std::size_t mode, Range running, Range wanted);
    void sort_out(std::size_t mode, Side side, const std::vector<uint32_t> &lines, std::vector<Item> &plain,
                  std::unordered_map<std::size_t, OrderedList> &lists, std::vector<std::size_t> &list_order);
    void pair_plain(std::size_t mode, std::vector<Item> &running, std::vector<Item> &wanted, BlockSteps &out);
    void pair_ordered(std::size_t mode, OrderedList &list, BlockSteps &out);
    void paired(std::size_t mode, Item running, Item wanted, bool change, BlockSteps &out);
    void removed(std::size_t mode, Item item, const std::unordered_set<std::string> &added, bool deferrable,
                 BlockSteps &out);
    void added(Item item, BlockSteps &out);
    bool added_block(uint32_t line, const CommandInfo &info, const std::string &indent,
                     std::vector<std::string> &commands);

    const CommandGrammar &grammar_;
    ConfigText a_, b_;
    // Each classified line's command, by side and line index; lines are
    // matched only where a difference needs them.
    std::unordered_map<uint64_t, std::unique_ptr<CommandInfo>> classified_;
    std::vector<Problem> problems_;
};

const CommandInfo *Engine::classify(Side side, std::size_t mode, uint32_t line)
{
    const uint64_t key = uint64_t{line} << 1 | (side == Side::wanted ? 1u : 0u);
    if (const auto found = classified_.find(key); found != classified_.end())
        return found->second.get();
    Classified result = grammar_.classify(mode, command(side, line));
    std::unique_ptr<CommandInfo> &info = classified_[key];
    if (auto *known = std::get_if<CommandInfo>(&result))
        info = std::make_unique<CommandInfo>(std::move(*known));
    else
        problem(side, line, "no command matches it: " + std::get<std::string>(result));
    return info.get();
}

void Engine::problem(Side side, uint32_t line, std::string why)
{
    problems_.push_back({side, text(side)[line].number, std::string(command(side, line)), std::move(why)});
}

// Whether two lines have the same lines under them, in the same order.
bool Engine::same_blocks(uint32_t i, uint32_t j) const
{
    const uint32_t count = a_[i].end - i;
    if (count != b_[j].end - j)
        return false;
    for (uint32_t k = 1; k < count; ++k)
        if (a_.text(i + k) != b_.text(j + k))
            return false;
    return true;
}

BlockSteps Engine::diff_block(std::size_t mode, Range running, Range wanted)
{
    std::vector<Item> plain_running, plain_wanted;
    std::unordered_map<std::size_t, OrderedList> lists;
    std::vector<std::size_t> list_order;
    sort_out(mode, Side::running, a_.block(running.first, running.end), plain_running, lists, list_order);
    sort_out(mode, Side::wanted, b_.block(wanted.first, wanted.end), plain_wanted, lists, list_order);
    BlockSteps out;
    pair_plain(mode, plain_running, plain_wanted, out);
    for (const std::size_t terminal : list_order)
        pair_ordered(mode, lists[terminal], out);
    return out;
}

// Splits a block's lines into the lines of ordered lists, by the command
// that makes each list, and the rest.
void Engine::sort_out(std::size_t mode, Side side, const std::vector<uint32_t> &lines,
                      std::vector<Item> &plain, std::unordered_map<std::size_t, OrderedList> &lists,
                      std::vector<std::size_t> &list_order)
{
    for (const uint32_t line : lines) {
        if (grammar_.may_be_ordered(mode, command(side, line))) {
            const CommandInfo *info = classify(side, mode, line);
            if (info && info->ordered) {
                auto [list, added] = lists.try_emplace(info->terminal);
                if (added)
                    list_order.push_back(info->terminal);
                (side == Side::running ? list->second.running : list->second.wanted).push_back({line, info});
                continue;
            }
            if (!info)
                continue; // said already; no command of it is made
        }
        plain.push_back({line, nullptr});
    }
}

// Lines paired by their text, then by their command in full words, then
// as two values of one setting; the rest are removed or added.
void Engine::pair_plain(std::size_t mode, std::vector<Item> &running, std::vector<Item> &wanted,
                        BlockSteps &out)
{
    const auto count = [](const std::vector<Item> &v) { return static_cast<uint32_t>(v.size()); };
    // Each line's words found once, not at each look of the pairing.
    const auto commands_of = [&](Side side, const std::vector<Item> &items) {
        std::vector<std::string_view> commands;
        commands.reserve(items.size());
        for (const Item &item : items)
            commands.push_back(command(side, item.line));
        return commands;
    };
    const std::vector<std::string_view> running_commands = commands_of(Side::running, running),
                                        wanted_commands = commands_of(Side::wanted, wanted);
    std::vector<uint32_t> pairs = pair_in_order(
        count(running), [&](uint32_t k) { return running_commands[k]; }, count(wanted),
        [&](uint32_t k) { return wanted_commands[k]; });
    std::vector<uint32_t> partners = partners_of_second(pairs, count(wanted));
    std::vector<Item> left_running, left_wanted;
    for (uint32_t k = 0; k < running.size(); ++k) {
        if (pairs[k] != kUnpaired)
            paired(mode, running[k], wanted[pairs[k]], false, out);
        else if ((running[k].info = classify(Side::running, mode, running[k].line)))
            left_running.push_back(running[k]);
    }
    for (uint32_t k = 0; k < wanted.size(); ++k)
        if (partners[k] == kUnpaired && (wanted[k].info = classify(Side::wanted, mode, wanted[k].line)))
            left_wanted.push_back(wanted[k]);

    using Key = std::string CommandInfo::*;
    for (const Key key : {&CommandInfo::canonical, &CommandInfo::setting}) {
        pairs = pair_in_order(
            count(left_running), [&](uint32_t k) { return std::string_view(left_running[k].info->*key); },
            count(left_wanted), [&](uint32_t k) { return std::string_view(left_wanted[k].info->*key); });
        partners = partners_of_second(pairs, count(left_wanted));
        std::vector<Item> still_running, still_wanted;
        for (uint32_t k = 0; k < left_running.size(); ++k) {
            if (pairs[k] != kUnpaired)
                paired(mode, left_running[k], left_wanted[pairs[k]], key == &CommandInfo::setting, out);
            else
                still_running.push_back(left_running[k]);
        }
        for (uint32_t k = 0; k < left_wanted.size(); ++k)
            if (partners[k] == kUnpaired)
                still_wanted.push_back(left_wanted[k]);
        left_running = std::move(still_running);
        left_wanted = std::move(still_wanted);
    }
    // A removal that the wanted text itself states ("no shutdown" for a
    // removed "shutdown") is made once, as the addition.
    std::unordered_set<std::string> added_commands;
    for (const Item &item : left_wanted)
        added_commands.insert(item.info->canonical);
    for (const Item &item : left_running)
        removed(mode, item, added_commands, true, out);
    for (const Item &item : left_wanted)
        added(item, out);
}

// An ordered list keeps the longest run at its head that is already in the
// wanted order; from there on its lines are removed and given again in the
// wanted order, since a line given is added at the end.
void Engine::pair_ordered(std::size_t mode, OrderedList &list, BlockSteps &out)
{
    const auto count = [](const std::vector<Item> &v) { return static_cast<uint32_t>(v.size()); };
    const std::vector<uint32_t> pairs = pair_in_order(
        count(list.running), [&](uint32_t k) { return std::string_view(list.running[k].info->canonical); },
        count(list.wanted), [&](uint32_t k) { return std::string_view(list.wanted[k].info->canonical); });
    std::vector<uint32_t> kept; // positions in list.running whose line is wanted
    for (uint32_t k = 0; k < list.running.size(); ++k) {
        if (pairs[k] == kUnpaired)
            removed(mode, list.running[k], {}, false, out);
        else
            kept.push_back(k);
    }
    uint32_t head = 0;
    while (head < kept.size() && pairs[kept[head]] == head)
        ++head;
    for (uint32_t t = 0; t < head; ++t)
        paired(mode, list.running[kept[t]], list.wanted[t], false, out);
    for (uint32_t t = head; t < kept.size(); ++t)
        removed(mode, list.running[kept[t]], {}, false, out);
    for (uint32_t t = head; t < list.wanted.size(); ++t)
        added(list.wanted[t], out);
}

// Two lines that stand for each other: the blocks under them are compared,
// and a new value of a setting is given.
void Engine::paired(std::size_t mode, Item running, Item wanted, bool change, BlockSteps &out)
{
    if (!change && same_blocks(running.line, wanted.line))
        return;
    if (!running.info && !(running.info = classify(Side::running, mode, running.line)))
        return;
    const CommandInfo &info = change ? *wanted.info : *running.info;
    const bool has_block = a_[running.line].end > running.line + 1 || b_[wanted.line].end > wanted.line + 1;
    if (has_block && !info.submode) {
        problem(Side::wanted, wanted.line, "lines stand under it, but its command enters no mode");
        return;
    }
    BlockSteps below;
    if (has_block)
        below = diff_block(*info.submode, block_under(a_, running.line), block_under(b_, wanted.line));
    const auto step = [&](uint32_t order, bool changes) {
        return Step{info.priority, order, changes, false, {info.canonical}};
    };
    if (change) {
        Step given = step(wanted.line, true);
        flatten(below, given.commands);
        if (info.submode)
            given.commands.push_back(kExit);
        out.additions.push_back(std::move(given));
        out.change = true;
        return;
    }
    out.change |= below.change;
    if (!below.removals.empty()) {
        Step inside = step(running.line, false);
        BlockSteps removals{std::move(below.removals), {}, false};
        flatten(removals, inside.commands);
        inside.commands.push_back(kExit);
        out.removals.push_back(std::move(inside));
    }
    if (!below.additions.empty()) {
        Step inside = step(wanted.line, below.change);
        BlockSteps additions{{}, std::move(below.additions), false};
        flatten(additions, inside.commands);
        inside.commands.push_back(kExit);
        out.additions.push_back(std::move(inside));
    }
}

// A running line that is not wanted is undone once, with whatever stands
// under it.
void Engine::removed(std::size_t mode, Item item, const std::unordered_set<std::string> &added,
                     bool deferrable, BlockSteps &out)
{
    std::string undo = grammar_.negation(mode, *item.info);
    if (undo.empty()) {
        problem(Side::running, item.line, "it cannot be removed: its command has no negation");
        return;
    }
    if (added.count(undo))
        return;
    out.removals.push_back({item.info->priority, item.line, false, deferrable, {std::move(undo)}});
}

void Engine::added(Item item, BlockSteps &out)
{
    Step step{item.info->priority, item.line, false, false, {}};
    if (added_block(item.line, *item.info, "", step.commands))
        out.additions.push_back(std::move(step));
}

// A wanted line and the block under it, entered and left; false when the
// line itself has a problem, said already. A line under it that has one is
// left out, with what stands under that line.
bool Engine::added_block(uint32_t line, const CommandInfo &info, const std::string &indent,
                         std::vector<std::string> &commands)
{
    if (b_[line].end > line + 1 && !info.submode) {
        problem(Side::wanted, line, "lines stand under it, but its command enters no mode");
        return false;
    }
    commands.push_back(indent + info.canonical);
    b_.each_block(line + 1, b_[line].end, [&](uint32_t child) {
        if (const CommandInfo *below = classify(Side::wanted, *info.submode, child))
            added_block(child, *below, indent + kIndent, commands);
    });
    if (info.submode)
        commands.push_back(indent + kExit);
    return true;
}

Remediation Engine::run(OnProblem on_problem)
{
    Remediation result;
    const std::optional<std::size_t> config = grammar_.config_mode();
    if (!config) {
        result.refused = true;
        result.problems.push_back({Side::running, 0, "", "the main tree has no configuration mode"});
        return result;
    }
    BlockSteps top = diff_block(*config, {0, a_.size()}, {0, b_.size()});
    result.problems = std::move(problems_);
    if (!result.problems.empty() && on_problem == OnProblem::refuse) {
        result.refused = true;
        return result;
    }
    // What others depend on is made first and removed last. A line removed
    // whole waits until the lines above it have their new values, which
    // may still name it.
    uint16_t highest_change = 0;
    for (const Step &step : top.additions)
        if (step.change)
            highest_change = std::max(highest_change, step.priority);
    std::vector<Step> early, late;
    for (Step &step : top.removals)
        (step.deferrable && step.priority < highest_change ? late : early).push_back(std::move(step));
    const auto by_removal = [](const Step &x, const Step &y) {
        return x.priority != y.priority ? x.priority > y.priority : x.order > y.order;
    };
    const auto by_addition = [](const Step &x, const Step &y) {
        return x.priority != y.priority ? x.priority < y.priority : x.order < y.order;
    };
    std::sort(early.begin(), early.end(), by_removal);
    std::sort(top.additions.begin(), top.additions.end(), by_addition);
    std::sort(late.begin(), late.end(), by_removal);
    for (std::vector<Step> *list : {&early, &top.additions, &late})
        for (Step &step : *list)
            std::move(step.commands.begin(), step.commands.end(), std::back_inserter(result.commands));
    return result;
}

} // namespace

Remediation remediate(const CommandGrammar &grammar, std::string_view running, std::string_view wanted,
                      OnProblem on_problem)
{
    return Engine(grammar, running, wanted).run(on_problem);
}

std::string describe(const Problem &problem, std::string_view running_name, std::string_view wanted_name)
{
    const std::string_view name = problem.side == Problem::Side::running ? running_name : wanted_name;
    return std::string(name) + ":" + std::to_string(problem.line) + ": \"" + problem.text +
           "\": " + problem.why;
}

} // namespace wex_remediation
