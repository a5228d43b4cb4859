#include "completion.h"

#include "output_filter.h"
#include "typed_value.h"

#include <algorithm>

namespace wex_shell
{
namespace
{

// Help names no more of a long keyword's width than this.
constexpr std::size_t kMaxWordColumn = 24;

bool ends_a_word(std::string_view typed)
{
    return typed.empty() || typed.back() == ' ' || typed.back() == '\t';
}

std::string parameter_help(const parse_tree_node &node)
{
    std::string help = field_text(node.params[0].help);
    std::string forms;
    for (std::size_t i = 0; i < node.param_count && i < 2; ++i)
        forms += (i ? " then " : "") + expected_form(node.params[i]);
    return help.empty() ? forms : help + " (" + forms + ")";
}

constexpr std::string_view kPipe = " | ";
const Choice kComplete{"<cr>", "The command is complete"};
const Choice kAnotherFilter{"|", "Filter the output"};

// What may come in the filters after a command's " | ": after is the text
// past the last one, which starts at column from of the line.
Choices filter_choices(std::string_view after, std::size_t from)
{
    Choices result;
    const std::vector<Word> words = split_words(after);
    const bool partial = !ends_a_word(after);
    if (words.size() <= 1 && (words.empty() || partial)) {
        result.partial = words.empty() ? "" : words.front().text;
        for (const FilterForm &form : filter_forms())
            if (form.name.starts_with(result.partial))
                result.choices.push_back({std::string(form.name), std::string(form.help)});
        return result;
    }
    const auto forms = filter_forms();
    const auto form = std::find_if(forms.begin(), forms.end(), [&](const FilterForm &f) {
        return f.name.starts_with(words.front().text);
    });
    if (form == forms.end()) {
        result.error =
            MatchError{from + words.front().column, "Unknown filter \"" + words.front().text + "\""};
        return result;
    }
    const bool argument_next = !form->argument.empty() && words.size() == 1;
    if (argument_next)
        result.choices.push_back({std::string(form->argument), std::string(form->argument_help)});
    else if (!partial)
        result.choices = {kComplete, kAnotherFilter};
    return result;
}

} // namespace

Choices choices_at(const MainTree &tree, std::size_t mode_node, std::string_view typed)
{
    if (const std::size_t pipe = typed.rfind(kPipe); pipe != std::string_view::npos)
        return filter_choices(typed.substr(pipe + kPipe.size()), pipe + kPipe.size());
    Choices result;
    std::string_view before = typed;
    if (!ends_a_word(typed)) {
        const std::vector<Word> words = split_words(typed);
        result.partial = words.back().text;
        before = typed.substr(0, words.back().column);
    }
    const WalkResult walked = walk_words(tree, mode_node, before);
    if (const auto *error = std::get_if<MatchError>(&walked)) {
        result.error = *error;
        return result;
    }
    const std::size_t at = std::get<std::size_t>(walked);
    const parse_tree_node &node = tree.node(at);
    // The children of a node that enters a submode are the submode's
    // commands, typed after it on lines of their own.
    const bool enters = at != mode_node && (node.action & WEX_ACTION_SUBMODE);
    std::vector<Choice> keywords, parameters;
    for (std::size_t i = 0; i < node.child_count && !enters; ++i) {
        const parse_tree_node &child = tree.node(node.children[i]);
        if (child.param_count)
            parameters.push_back({name_of(child), parameter_help(child)});
        else if (std::string token = name_of(child); token.starts_with(result.partial))
            keywords.push_back({std::move(token), field_text(child.Help)});
    }
    std::sort(keywords.begin(), keywords.end(),
              [](const Choice &a, const Choice &b) { return a.word < b.word; });
    result.choices = std::move(keywords);
    result.choices.insert(result.choices.end(), parameters.begin(), parameters.end());
    // A command of exec mode may have its output filtered.
    if (result.partial.empty() && at != mode_node && (node.action & WEX_ACTION_TERMINAL)) {
        result.choices.push_back(kComplete);
        if (mode_node == 0)
            result.choices.push_back(kAnotherFilter);
    }
    return result;
}

std::string describe_choices(std::string_view typed, const Choices &choices)
{
    if (choices.error)
        return describe_error(typed, *choices.error);
    if (choices.choices.empty())
        return "% Nothing may come here\n";
    std::size_t width = 0;
    for (const Choice &choice : choices.choices)
        width = std::max(width, std::min(choice.word.size(), kMaxWordColumn));
    std::string text;
    for (const Choice &choice : choices.choices) {
        text += "  " + choice.word;
        if (!choice.help.empty())
            text += std::string(width + 2 - std::min(choice.word.size(), width), ' ') + choice.help;
        text += "\n";
    }
    return text;
}

Completion complete_at(const MainTree &tree, std::size_t mode_node, std::string_view typed)
{
    const Choices found = choices_at(tree, mode_node, typed);
    Completion completion;
    std::vector<std::string> keywords;
    for (const Choice &choice : found.choices) {
        completion.candidates.push_back(choice.word);
        if (choice.word.front() != '<')
            keywords.push_back(choice.word);
    }
    // A keyword that alone can come next is written out; a parameter's
    // value is the user's to type, so with one beside it nothing is.
    if (keywords.size() == 1 && completion.candidates.size() == 1) {
        completion.insert = keywords.front().substr(found.partial.size()) + " ";
        completion.candidates.clear();
        return completion;
    }
    if (keywords.size() == completion.candidates.size() && !keywords.empty() && !found.partial.empty()) {
        const std::string &first = keywords.front();
        std::size_t shared = first.size();
        for (const std::string &keyword : keywords) {
            const auto differ = std::mismatch(keyword.begin(), keyword.end(), first.begin(), first.end());
            shared = std::min<std::size_t>(shared, static_cast<std::size_t>(differ.first - keyword.begin()));
        }
        completion.insert = first.substr(found.partial.size(), shared - found.partial.size());
    }
    return completion;
}

namespace
{

// The modes after one command of a line: entered, left, or as they were.
void follow_modes(const MainTree &tree, std::string_view command, std::vector<std::size_t> &modes)
{
    for (std::size_t depth = modes.size(); depth > 0; --depth) {
        const MatchResult result = match_line(tree, modes[depth - 1], command);
        const auto *match = std::get_if<Match>(&result);
        if (!match)
            continue;
        modes.resize(depth); // a command of a mode above leaves the ones below it
        const parse_tree_node &last = tree.node(match->path.back().node);
        const std::string function = field_text(last.Func_ID);
        if (function == "wex_end")
            modes.resize(1);
        else if (function == "wex_exit" && modes.size() > 1)
            modes.pop_back();
        else if ((last.action & WEX_ACTION_SUBMODE) && !match->negated)
            modes.push_back(match->path.back().node);
        return;
    }
}

} // namespace

std::vector<std::string> command_line_completions(const MainTree &tree, std::string_view line,
                                                  std::string_view separator)
{
    std::vector<std::size_t> modes{0};
    for (std::size_t end; (end = line.find(separator)) != std::string_view::npos;
         line.remove_prefix(end + separator.size()))
        follow_modes(tree, line.substr(0, end), modes);
    std::vector<std::string> words;
    for (const Choice &choice : choices_at(tree, modes.back(), line).choices)
        if (choice.word.front() != '<')
            words.push_back(choice.word);
    return words;
}

} // namespace wex_shell
