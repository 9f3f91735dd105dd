// Both trees are walked side by side, each node found in the other by libyang's hash.
#include "changes.h"

#include "report.h"

namespace router
{

namespace
{

bool is_leaf(const lyd_node *node)
{
    return (node->schema->nodetype & LYD_NODE_TERM) != 0;
}

// A container that is nothing but a place for others: there with its content, and not told itself.
bool is_place(const lyd_node *node)
{
    return node->schema->nodetype == LYS_CONTAINER && (node->schema->flags & LYS_PRESENCE) == 0;
}

// Containers that libyang supposes everywhere.
bool is_supposed(const lyd_node *node)
{
    return (node->flags & LYD_DEFAULT) != 0;
}

class Comparison
{
public:
    explicit Comparison(std::vector<Change> &changes) : changes_(changes) {}

    // False for want of memory.
    bool compare(const lyd_node *before, const lyd_node *after)
    {
        for (const lyd_node *node = before; node; node = node->next) {
            lyd_node *same = nullptr;
            if (is_supposed(node)) {
                continue;
            }
            if (!find(node, after, same)) {
                return false;
            }
            if (!same || is_supposed(same)) {
                tell_removed(node);
            } else if (is_leaf(node)) {
                tell_changed(node, same);
            } else if (!compare(lyd_child_no_keys(node), lyd_child_no_keys(same))) {
                return false;
            }
        }
        for (const lyd_node *node = after; node; node = node->next) {
            lyd_node *same = nullptr;
            if (is_supposed(node)) {
                continue;
            }
            if (!find(node, before, same)) {
                return false;
            }
            if (!same || is_supposed(same)) {
                tell_set(node);
            }
        }
        return true;
    }

private:
    // Of leaves the one of the same name, of entries the one with the same keys.
    static bool find(const lyd_node *node, const lyd_node *siblings, lyd_node *&same)
    {
        if (!siblings) {
            return true;
        }
        const bool by_name = (node->schema->nodetype & (LYS_LEAF | LYS_CONTAINER)) != 0;
        const LY_ERR code = by_name ? lyd_find_sibling_val(siblings, node->schema, nullptr, 0, &same)
                                    : lyd_find_sibling_first(siblings, node, &same);
        return code == LY_SUCCESS || code == LY_ENOTFOUND;
    }

    void add(Change::Kind kind, const lyd_node *node, const char *before, const char *after)
    {
        const bool has_value = is_leaf(node) && !is_secret(node->schema);
        changes_.push_back({kind, path_of(node), has_value ? before : "", has_value ? after : "", has_value});
    }

    void tell_removed(const lyd_node *node)
    {
        if (!is_place(node)) {
            add(Change::Kind::removed, node, "", "");
            return;
        }
        for (const lyd_node *child = lyd_child(node); child; child = child->next) {
            if (!is_supposed(child)) {
                tell_removed(child);
            }
        }
    }

    void tell_changed(const lyd_node *before, const lyd_node *after)
    {
        if (lyd_compare_single(before, after, 0) != LY_SUCCESS) {
            add(Change::Kind::changed, after, lyd_get_value(before), lyd_get_value(after));
        }
    }

    // An entry by what is in it, or by itself if there is nothing.
    void tell_set(const lyd_node *node)
    {
        bool told = is_place(node);
        if (is_leaf(node)) {
            add(Change::Kind::set, node, "", lyd_get_value(node));
            told = true;
        }
        for (const lyd_node *child = is_leaf(node) ? nullptr : lyd_child_no_keys(node); child; child = child->next) {
            if (!is_supposed(child)) {
                tell_set(child);
                told = true;
            }
        }
        if (!told) {
            add(Change::Kind::set, node, "", "");
        }
    }

    std::vector<Change> &changes_;
};

} // namespace

Expected<std::vector<Change>> changes_between(const lyd_node *before, const lyd_node *after)
{
    std::vector<Change> changes;
    if (!Comparison(changes).compare(lyd_first_sibling(before), lyd_first_sibling(after))) {
        return refuse(Fault::no_memory, "", "out of memory");
    }
    return changes;
}

} // namespace router
