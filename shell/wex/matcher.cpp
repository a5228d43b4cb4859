#include "matcher.h"

#include <cstring>

namespace wex_shell
{
namespace
{

// Candidates named in an error at most; past that the help lists them.
constexpr std::size_t kMaxNamed = 8;

// What ends a word: a blank, or a line end left on the line.
constexpr std::string_view kSeparators = " \t\r\n";

bool separates(char c)
{
    return kSeparators.find(c) != std::string_view::npos;
}

// Where the typed text ends, before any trailing separators.
std::size_t text_end(std::string_view line)
{
    return line.find_last_not_of(kSeparators) + 1;
}

std::vector<std::size_t> children_of(const parse_tree_node &node)
{
    return {node.children, node.children + node.child_count};
}

std::string_view token_of(const parse_tree_node &node)
{
    return {node.Token, strnlen(node.Token, sizeof node.Token)};
}

// A word written so that split_words reads it back as it is.
std::string written(const std::string &word)
{
    if (!word.empty() && word.find_first_of(" \t\"") == std::string::npos)
        return word;
    std::string quoted = "\"";
    for (const char c : word)
        quoted += c == '"' ? '\'' : c;
    return quoted + '"';
}

class LineMatcher
{
  public:
    LineMatcher(const MainTree &tree, std::string_view line)
        : tree_(tree), line_(line), words_(split_words(line))
    {
    }

    MatchResult run(std::size_t mode_node);
    WalkResult walk(std::size_t mode_node);

  private:
    struct Candidates {
        std::vector<std::size_t> exact, prefix, params;
    };

    Candidates candidates(const parse_tree_node &node, const std::string &word) const;
    std::optional<MatchError> step(const parse_tree_node &node);
    std::optional<MatchError> take_parameter(const std::vector<std::size_t> &params);
    std::optional<MatchedNode> read_parameter(std::size_t node, std::string &why);
    void take(std::size_t node, std::vector<TypedValue> values, std::size_t words);
    std::string listed(const std::vector<std::size_t> &nodes) const;
    MatchError incomplete(const parse_tree_node &node) const;

    const MainTree &tree_;
    std::string_view line_;
    std::vector<Word> words_;
    std::size_t next_ = 0; // the next word to match
    Match match_;
};

WalkResult LineMatcher::walk(std::size_t mode_node)
{
    std::size_t at = mode_node;
    while (next_ < words_.size()) {
        if (auto error = step(tree_.node(at)))
            return std::move(*error);
        at = match_.path.back().node;
    }
    return at;
}

MatchResult LineMatcher::run(std::size_t mode_node)
{
    const WalkResult walked = walk(mode_node);
    if (const auto *error = std::get_if<MatchError>(&walked))
        return *error;
    const std::size_t at = std::get<std::size_t>(walked);
    if (match_.path.empty())
        return MatchError{0, "Empty command"};
    const parse_tree_node &last = tree_.node(at);
    if (!(last.action & WEX_ACTION_TERMINAL))
        return incomplete(last);
    const parse_tree_node &first = tree_.node(match_.path.front().node);
    match_.negated = first.param_count == 0 && token_of(first) == "no";
    return std::move(match_);
}

LineMatcher::Candidates LineMatcher::candidates(const parse_tree_node &node, const std::string &word) const
{
    Candidates found;
    const bool keyword_like = word.size() < sizeof node.Token && word.find('\0') == std::string::npos;
    for (std::size_t i = 0; i < node.child_count; ++i) {
        const std::size_t child = node.children[i];
        const parse_tree_node &candidate = tree_.node(child);
        if (candidate.param_count) {
            found.params.push_back(child);
            continue;
        }
        // Compared in place: a word longer than the field, or holding a NUL,
        // is no keyword's prefix.
        if (!keyword_like || std::memcmp(candidate.Token, word.data(), word.size()) != 0)
            continue;
        if (candidate.Token[word.size()] == '\0')
            found.exact.push_back(child);
        else
            found.prefix.push_back(child);
    }
    return found;
}

// A keyword before a parameter, an exact keyword before an abbreviation.
std::optional<MatchError> LineMatcher::step(const parse_tree_node &node)
{
    const Word &word = words_[next_];
    const Candidates found = candidates(node, word.text);
    if (!found.exact.empty() || found.prefix.size() == 1) {
        take(found.exact.empty() ? found.prefix.front() : found.exact.front(), {}, 1);
        return std::nullopt;
    }
    if (found.prefix.size() > 1)
        return MatchError{word.column,
                          "Ambiguous word \"" + word.text + "\": it may be " + listed(found.prefix)};
    if (!found.params.empty())
        return take_parameter(found.params);
    const std::vector<std::size_t> children = children_of(node);
    std::string message = "Unknown word \"" + word.text + "\"";
    if (children.empty())
        message += ": the command is complete before it";
    else if (children.size() <= kMaxNamed)
        message += ": expected " + listed(children);
    return MatchError{word.column, message};
}

std::optional<MatchError> LineMatcher::take_parameter(const std::vector<std::size_t> &params)
{
    std::string why;
    for (const std::size_t param : params) {
        if (auto matched = read_parameter(param, why)) {
            take(param, std::move(matched->values), tree_.node(param).param_count);
            return std::nullopt;
        }
    }
    const Word &word = words_[next_];
    std::string expected;
    for (const std::size_t param : params) {
        std::string form;
        const parse_tree_node &node = tree_.node(param);
        for (std::size_t i = 0; i < node.param_count && i < 2; ++i)
            form += (i ? " then " : "") + expected_form(node.params[i]);
        expected += (expected.empty() ? "" : ", or ") + name_of(node) + ": " + form;
    }
    return MatchError{word.column, "Bad value \"" + word.text + "\" for " + expected};
}

// The values of a parameter node, one word per descriptor; a text that
// takes the rest of the line takes it as typed.
std::optional<MatchedNode> LineMatcher::read_parameter(std::size_t node_index, std::string &why)
{
    const parse_tree_node &node = tree_.node(node_index);
    MatchedNode matched{node_index, {}, {}};
    for (std::size_t i = 0; i < node.param_count && i < 2; ++i) {
        if (next_ + i >= words_.size()) {
            why = "a second value";
            return std::nullopt;
        }
        std::string word = words_[next_ + i].text;
        if (takes_rest_of_line(node.params[i].type)) {
            const std::size_t from = words_[next_ + i].column;
            word = std::string(line_.substr(from, text_end(line_) - from));
        }
        auto value = read_value(node.params[i], word, why);
        if (!value)
            return std::nullopt;
        matched.values.push_back(std::move(*value));
    }
    return matched;
}

void LineMatcher::take(std::size_t node, std::vector<TypedValue> values, std::size_t words)
{
    const parse_tree_node &taken = tree_.node(node);
    std::string text;
    if (taken.param_count && takes_rest_of_line(taken.params[0].type)) {
        text = reinterpret_cast<const char *>(values.front().bytes.data());
        words = words_.size() - next_;
    } else if (taken.param_count) {
        for (std::size_t i = 0; i < words; ++i)
            text += (i ? " " : "") + written(words_[next_ + i].text);
    } else {
        text = token_of(taken);
    }
    match_.full_text += (match_.full_text.empty() ? "" : " ") + text;
    match_.path.push_back({node, std::move(values), std::move(text)});
    next_ += words;
}

std::string LineMatcher::listed(const std::vector<std::size_t> &nodes) const
{
    std::string names;
    for (const std::size_t node : nodes)
        names += (names.empty() ? "" : ", ") + name_of(tree_.node(node));
    return names;
}

MatchError LineMatcher::incomplete(const parse_tree_node &node) const
{
    const std::vector<std::size_t> children = children_of(node);
    std::string message = "Incomplete command";
    if (!children.empty() && children.size() <= kMaxNamed)
        message += ": it goes on with " + listed(children);
    return MatchError{text_end(line_), message};
}

} // namespace

std::vector<Word> split_words(std::string_view line)
{
    std::vector<Word> words;
    std::size_t at = 0;
    while (at < line.size()) {
        if (separates(line[at])) {
            ++at;
            continue;
        }
        Word word{at, {}};
        if (line[at] == '"') {
            const std::size_t close = line.find('"', at + 1);
            const std::size_t end = close == std::string_view::npos ? line.size() : close;
            word.text = std::string(line.substr(at + 1, end - at - 1));
            at = end + 1;
        } else {
            while (at < line.size() && !separates(line[at]))
                word.text += line[at++];
        }
        words.push_back(std::move(word));
    }
    return words;
}

MatchResult match_line(const MainTree &tree, std::size_t mode_node, std::string_view line)
{
    return LineMatcher(tree, line).run(mode_node);
}

WalkResult walk_words(const MainTree &tree, std::size_t mode_node, std::string_view words)
{
    return LineMatcher(tree, words).walk(mode_node);
}

std::string name_of(const parse_tree_node &node)
{
    return node.param_count ? field_text(node.NodeName) : std::string(token_of(node));
}

std::string describe_error(std::string_view line, const MatchError &error)
{
    // Tabs keep their width in the caret's line, so the caret stays under its word.
    std::string caret;
    for (std::size_t i = 0; i < error.column && i < line.size(); ++i)
        caret += line[i] == '\t' ? '\t' : ' ';
    std::string shown(line.substr(0, line.find_first_of("\r\n")));
    return shown + "\n" + caret + "^\n% " + error.message + "\n";
}

} // namespace wex_shell
