#include "earlier_forms.h"

#include <cstring>
#include <unordered_map>

namespace router
{

namespace
{

const lysc_node *case_of(const lyd_node *node)
{
    const lysc_node *parent = node->schema ? node->schema->parent : nullptr;
    return parent && parent->nodetype == LYS_CASE ? parent : nullptr;
}

bool says_something(const lyd_node *node)
{
    const char *value = node->schema->nodetype & LYD_NODE_TERM ? lyd_get_value(node) : nullptr;
    return !value || (std::strcmp(value, "false") != 0 && std::strcmp(value, "0") != 0);
}

bool comes_after(const lysc_node *later, const lysc_node *earlier)
{
    for (const lysc_node *node = earlier->next; node; node = node->next) {
        if (node == later) {
            return true;
        }
    }
    return false;
}

void admit_below(lyd_node *parent)
{
    std::unordered_map<const lysc_node *, const lysc_node *> kept; // choice to case
    for (const lyd_node *child = lyd_child_no_keys(parent); child; child = child->next) {
        const lysc_node *const own = case_of(child);
        if (own && says_something(child)) {
            const auto [place, is_new] = kept.try_emplace(own->parent, own);
            place->second = is_new || comes_after(own, place->second) ? own : place->second;
        }
    }
    lyd_node *next = lyd_child_no_keys(parent);
    while (lyd_node *child = next) {
        next = child->next;
        const lysc_node *const own = case_of(child);
        const auto found = own ? kept.find(own->parent) : kept.end();
        if (found != kept.end() && found->second != own) {
            lyd_free_tree(child);
            continue;
        }
        if (lysc_has_when(child->schema)) {
            child->flags |= LYD_WHEN_TRUE; // libyang drops what a condition has allowed before
        }
        admit_below(child);
    }
}

} // namespace

void admit_earlier_forms(Tree &tree)
{
    for (lyd_node *node = tree.get(); node; node = node->next) {
        admit_below(node);
    }
}

} // namespace router
