// See changes.h. libyang finds the differences; what goes as a whole is told as a whole.
#include "changes.h"

#include "report.h"
#include "tree.h"

#include <string_view>

namespace router
{

namespace
{

class Teller
{
public:
    explicit Teller(std::vector<Change> &changes) : changes_(changes) {}

    // `outer` is the operation of the node around, which a node without one of its own shares.
    void tell(const lyd_node *node, std::string_view outer)
    {
        const lyd_meta *const meta = lyd_find_meta(node->meta, nullptr, "yang:operation");
        const std::string_view operation = meta ? lyd_get_meta_value(meta) : outer;
        const bool is_leaf = (node->schema->nodetype & LYD_NODE_TERM) != 0;
        if (operation == "delete") {
            add(Change::Kind::removed, node);
            return;
        }
        if (is_leaf && operation == "create" && !lysc_is_key(node->schema)) {
            add(Change::Kind::set, node);
        } else if (is_leaf && operation == "replace") {
            add(Change::Kind::changed, node);
        } else if (!is_leaf && operation == "create" && !lyd_child_no_keys(node)) {
            add(Change::Kind::set, node);
        }
        for (const lyd_node *child = is_leaf ? nullptr : lyd_child(node); child; child = child->next) {
            tell(child, operation);
        }
    }

private:
    void add(Change::Kind kind, const lyd_node *node)
    {
        const bool is_leaf = (node->schema->nodetype & LYD_NODE_TERM) != 0;
        Change change{kind, path_of(node), "", "", is_leaf && !is_secret(node->schema)};
        const lyd_meta *const original = lyd_find_meta(node->meta, nullptr, "yang:orig-value");
        if (change.has_value && kind != Change::Kind::removed) {
            change.before = original ? lyd_get_meta_value(original) : "";
            change.after = lyd_get_value(node);
        }
        changes_.push_back(std::move(change));
    }

    std::vector<Change> &changes_;
};

} // namespace

Expected<std::vector<Change>> changes_between(const lyd_node *before, const lyd_node *after)
{
    lyd_node *found = nullptr;
    const LY_ERR code = lyd_diff_siblings(before, after, 0, &found);
    const Tree diff(found);
    if (code) {
        return refuse(Fault::failed, "", "libyang cannot compare the configurations");
    }
    std::vector<Change> changes;
    Teller teller(changes);
    for (const lyd_node *node = diff.get(); node; node = node->next) {
        teller.tell(node, "");
    }
    return changes;
}

} // namespace router
