#include "diagnostics.h"

namespace wex_grammar
{

void Diagnostics::error(const std::string &file, Position at, const std::string &message)
{
    error(file + ":" + std::to_string(at.line) + ":" + std::to_string(at.column), message);
}

void Diagnostics::error(const std::string &file, const std::string &message)
{
    if (++count_ <= kListed)
        listed_.push_back(file + ": " + message);
}

std::string Diagnostics::report() const
{
    std::string text;
    for (const std::string &line : listed_)
        text += line + "\n";
    if (count_ > listed_.size())
        text += std::to_string(count_ - listed_.size()) + " more errors not shown\n";
    return text;
}

} // namespace wex_grammar
