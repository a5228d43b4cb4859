#include "field_print.h"
#include "common/text_field.h"
#include "walk_limits.h"

#include <wex/parse_tree.h>

#include <cstdio>
#include <cstring>

namespace
{

const char kBanner[] = "=======================================";
const char kRule[] = "---------------------------------------";

void print_name_list(const generator_name *names) noexcept
{
    for (const generator_name *n = names; n; n = n->next)
        std::printf(":%.*s:", static_cast<int>(strnlen(n->name, sizeof n->name)), n->name);
}

} // namespace

extern "C" {

WEX_API void display_ptr_tree(const generator_node *node, int32_t depth) noexcept
{
    using namespace wex::tree;
    depth = start_depth(depth);
    if (past_max_depth(depth))
        end_walk(stdout, "Error: Cycle in parse tree or exceeded maximum depth\n");
    if (!node)
        return;
    print_indent(2 * depth);
    print_str("nodename", node->nodename);
    print_str("Token", node->Token);
    print_str("Help", node->Help);
    print_str("funcID", node->funcID);
    print_str("modID", node->modID);
    print_int("array_index", node->array_index);
    print_name_list(node->name_list);
    std::putchar('\n');
    for (const generator_child *c = node->child_list; c; c = c->next)
        display_ptr_tree(c->child, depth + 1);
}

WEX_API void displayChildren(const generator_node *node) noexcept
{
    if (!node)
        return;
    for (const generator_child *c = node->child_list; c; c = c->next) {
        // A child without a token prints as an empty one.
        const char *token = c->child && c->child->Token ? c->child->Token : "";
        std::printf("Child: %s ", token);
    }
}

WEX_API void displayPath(const subtree_path *p) noexcept
{
    if (!p)
        return;
    print_int("Path type", static_cast<int32_t>(p->type));
    wex::print_text_field("Location", p->location, sizeof p->location);
    std::putchar('\n');
}

WEX_API void show_tree_table_entry(const tree_table_entry *e) noexcept
{
    if (!e)
        return;
    wex::print_text_field(" module_id", e->module_id, sizeof e->module_id);
    wex::print_text_field(" par file name", e->par_file_name, sizeof e->par_file_name);
    std::putchar('\n');
}

WEX_API void show_tree_table(const tree_table_entry *entries, uint32_t n) noexcept
{
    std::printf("\n\n%s\nDisplaying Tree Table\n%s\n", kBanner, kBanner);
    for (uint32_t i = 0; entries && i < n; ++i) {
        std::printf("%s\n", kRule);
        show_tree_table_entry(&entries[i]);
        std::putchar('\n');
    }
    std::printf("%s\n\n\n", kBanner);
}

} // extern "C"
