#include "output_filter.h"

#include <algorithm>
#include <charconv>
#include <regex.h>

namespace wex_shell
{
namespace
{

constexpr std::string_view kPipe = " | ";
constexpr std::string_view kRedirection = " > ";
// A "last" filter keeps at most this many lines: far past any screen.
constexpr std::size_t kMaxLast = 1000000;

std::string_view trimmed(std::string_view text)
{
    const std::size_t start = text.find_first_not_of(" \t");
    if (start == std::string_view::npos)
        return {};
    return text.substr(start, text.find_last_not_of(" \t") - start + 1);
}

// In the order of OutputFilter::Kind.
constexpr FilterForm kForms[] = {
    {"include", "<REGEX>", "Only the lines that match an expression", "A POSIX extended regular expression"},
    {"exclude", "<REGEX>", "Only the lines that do not match an expression",
     "A POSIX extended regular expression"},
    {"begin", "<REGEX>", "From the first line that matches an expression on",
     "A POSIX extended regular expression"},
    {"count", "", "How many lines there are", ""},
    {"last", "<LINES>", "The last lines only", "A number of lines"},
};

} // namespace

std::span<const FilterForm> filter_forms()
{
    return kForms;
}

struct OutputFilter::Step {
    Kind kind;
    std::size_t lines = 0; // last N
    regex_t expression{};
    bool compiled = false;

    ~Step()
    {
        if (compiled)
            regfree(&expression);
    }
    bool matches(std::string_view line) const
    {
        const std::string text(line.substr(0, line.find('\n')));
        return regexec(&expression, text.c_str(), 0, nullptr, 0) == 0;
    }
};

std::vector<std::string_view> lines_of(std::string_view text)
{
    std::vector<std::string_view> lines;
    while (!text.empty()) {
        const std::size_t end = text.find('\n');
        const std::size_t length = end == std::string_view::npos ? text.size() : end + 1;
        lines.push_back(text.substr(0, length));
        text.remove_prefix(length);
    }
    return lines;
}

CommandLine split_command_line(std::string_view line)
{
    CommandLine parts{line, {}, {}};
    if (const std::size_t at = parts.command.rfind(kRedirection); at != std::string_view::npos) {
        parts.target = trimmed(parts.command.substr(at + kRedirection.size()));
        parts.command = parts.command.substr(0, at);
    }
    if (const std::size_t at = parts.command.find(kPipe); at != std::string_view::npos) {
        parts.filters = parts.command.substr(at + kPipe.size());
        parts.command = parts.command.substr(0, at);
    }
    return parts;
}

std::shared_ptr<const OutputFilter::Step> OutputFilter::make_step(std::string_view part, std::string &why)
{
    const std::string_view word = part.substr(0, part.find_first_of(" \t"));
    const std::string_view argument = trimmed(part.substr(word.size()));
    const auto named = std::find_if(std::begin(kForms), std::end(kForms), [&](const FilterForm &f) {
        return !word.empty() && f.name.starts_with(word);
    });
    if (named == std::end(kForms)) {
        why = "Unknown filter \"" + std::string(word) + "\": expected include, exclude, begin, count or last";
        return nullptr;
    }
    auto step = std::make_shared<Step>();
    step->kind = static_cast<Kind>(named - std::begin(kForms));
    if (step->kind == Kind::count) {
        if (argument.empty())
            return step;
        why = "count takes nothing after it";
        return nullptr;
    }
    if (step->kind == Kind::last) {
        const auto [rest, error] =
            std::from_chars(argument.data(), argument.data() + argument.size(), step->lines);
        if (error == std::errc() && rest == argument.data() + argument.size() && step->lines > 0 &&
            step->lines <= kMaxLast)
            return step;
        why = "last takes a number of lines from 1 to " + std::to_string(kMaxLast);
        return nullptr;
    }
    const std::string pattern(argument);
    const int error =
        pattern.empty() ? REG_BADPAT : regcomp(&step->expression, pattern.c_str(), REG_EXTENDED | REG_NOSUB);
    if (error == 0) {
        step->compiled = true;
        return step;
    }
    char message[128] = "an expression is needed";
    if (!pattern.empty())
        regerror(error, &step->expression, message, sizeof message);
    why = std::string(named->name) + " \"" + pattern + "\": " + message;
    return nullptr;
}

std::optional<OutputFilter> OutputFilter::parse(std::string_view text, std::string &why)
{
    OutputFilter filter;
    while (true) {
        const std::size_t end = text.find(kPipe);
        auto step = make_step(trimmed(text.substr(0, end)), why);
        if (!step)
            return std::nullopt;
        filter.steps_.push_back(std::move(step));
        if (end == std::string_view::npos)
            return filter;
        text.remove_prefix(end + kPipe.size());
    }
}

std::string OutputFilter::apply(std::string_view output) const
{
    std::string text(output);
    for (const auto &step : steps_) {
        const std::vector<std::string_view> lines = lines_of(text);
        std::string kept;
        switch (step->kind) {
        case Kind::include:
        case Kind::exclude:
            for (const std::string_view line : lines)
                if (step->matches(line) == (step->kind == Kind::include))
                    kept += line;
            break;
        case Kind::begin: {
            auto first = std::find_if(lines.begin(), lines.end(),
                                      [&](std::string_view l) { return step->matches(l); });
            for (; first != lines.end(); ++first)
                kept += *first;
            break;
        }
        case Kind::count:
            kept = std::to_string(lines.size()) + "\n";
            break;
        case Kind::last:
            for (std::size_t i = lines.size() > step->lines ? lines.size() - step->lines : 0;
                 i < lines.size(); ++i)
                kept += lines[i];
            break;
        }
        text = std::move(kept);
    }
    return text;
}

} // namespace wex_shell
