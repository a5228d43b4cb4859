// The parse tree that a set of command files describes: the exec root,
// each mode's commands under the node that enters it, leading words
// shared, and commands of several modes (and their "no" forms) reached
// through link children instead of copies.
#ifndef WEX_GRAMMAR_TREE_BUILDER_H
#define WEX_GRAMMAR_TREE_BUILDER_H

#include "command_layer.h"
#include "diagnostics.h"
#include "node_layer.h"

#include <memory>
#include <optional>
#include <vector>

namespace wex_grammar
{

class TreeBuilder
{
  public:
    explicit TreeBuilder(Diagnostics &diagnostics);
    ~TreeBuilder();
    TreeBuilder(const TreeBuilder &) = delete;
    TreeBuilder &operator=(const TreeBuilder &) = delete;

    // Builds the command now when its modes are known, else once they are;
    // file must outlive the builder.
    void add(const CommandFile &file, CommandDecl &&command);

    // The image once every command is in, or nothing when diagnostics
    // received errors.
    std::optional<CompiledImage> finish();

  private:
    class Impl;
    std::unique_ptr<Impl> impl_;
};

} // namespace wex_grammar

#endif
