// Reads. The filters that choose one node are put together first, so that each node is visited once however many of
// them name it; a container in which nothing was chosen does not show.
#include "read.h"

#include <algorithm>
#include <cstring>
#include <unordered_map>

namespace router
{

namespace
{

// A flag's off state may be written "False"; readers get the spelling that is a boolean's.
const char *value_of(const lyd_node *node)
{
    const char *value = lyd_get_value(node);
    const bool is_flag = reinterpret_cast<const lyd_node_term *>(node)->value.realtype->basetype == LY_TYPE_UNION;
    return is_flag && std::strcmp(value, "False") == 0 ? "false" : value;
}

} // namespace

class Reader::Selection
{
public:
    void add(const lyd_node *node, const EditNode *filter)
    {
        const auto [place, is_new] = place_of_.try_emplace(node, chosen_.size());
        if (is_new) {
            chosen_.emplace_back(node, Filters());
        }
        chosen_[place->second].second.push_back(filter);
    }

    const std::vector<std::pair<const lyd_node *, Filters>> &chosen() const { return chosen_; }

private:
    std::vector<std::pair<const lyd_node *, Filters>> chosen_;
    std::unordered_map<const lyd_node *, size_t> place_of_;
};

void Reader::read(const EditNode &filter, const lyd_node *top)
{
    const lysc_node *schema = find_schema(context_, nullptr, filter);
    if (const lyd_node *root = schema && top ? find_single(nullptr, top, schema) : nullptr) {
        walk(root, {&filter});
    }
}

void Reader::walk(const lyd_node *node, const Filters &filters)
{
    if (node->schema->nodetype & LYD_NODE_TERM) {
        leaf(node);
        return;
    }
    const bool whole =
        std::any_of(filters.begin(), filters.end(), [](const EditNode *filter) { return !filter->first_child; });
    if (whole) {
        walk_all(node);
    } else {
        walk_chosen(node, filters);
    }
}

void Reader::walk_all(const lyd_node *node)
{
    if (node->flags & LYD_DEFAULT || !visibility_.shown(node)) {
        return;
    }
    if (node->schema->nodetype & LYD_NODE_TERM) {
        leaf(node);
        return;
    }
    open(node);
    for (const lyd_node *child = lyd_child(node); child; child = child->next) {
        walk_all(child);
    }
    close();
}

void Reader::walk_chosen(const lyd_node *node, const Filters &filters)
{
    Selection selection;
    for (const EditNode *filter : filters) {
        for (const EditNode *child = filter->first_child; child; child = child->next) {
            select(*child, node, selection);
        }
    }
    if (const EditNode *marker = visibility_.marker(node->schema)) {
        select(*marker, node, selection);
    }
    open(node);
    for (const lyd_node *key = lyd_child(node); key && lysc_is_key(key->schema); key = key->next) {
        leaf(key);
    }
    for (const auto &[child, child_filters] : selection.chosen()) {
        if (!lysc_is_key(child->schema)) {
            walk(child, child_filters);
        }
    }
    close();
}

void Reader::select(const EditNode &filter, const lyd_node *parent, Selection &selection)
{
    const lysc_node *schema = find_schema(context_, parent->schema, filter);
    if (!schema) {
        return;
    }
    if (schema->nodetype == LYS_LEAFLIST) {
        lyd_node *first = nullptr;
        lyd_find_sibling_val(lyd_child(parent), schema, nullptr, 0, &first);
        for (const lyd_node *node = first; node && node->schema == schema; node = node->next) {
            selection.add(node, &filter);
        }
        return;
    }
    if (schema->nodetype != LYS_LIST) {
        if (const lyd_node *child = find_single(parent, nullptr, schema)) {
            selection.add(child, &filter);
        }
        return;
    }
    const Keys keys = keys_of(schema, filter);
    if (keys.all()) {
        const lyd_node *entry = finder_.find(parent, schema, keys);
        if (entry && visibility_.shown(entry)) {
            selection.add(entry, &filter);
        }
        return;
    }
    for (const lyd_node *entry : matching_entries(parent, schema, keys, visibility_, finder_)) {
        if (visibility_.shown(entry)) {
            selection.add(entry, &filter);
        }
    }
}

void Reader::open(const lyd_node *node)
{
    pending_.push_back(node);
    const bool may_be_empty = node->schema->nodetype == LYS_CONTAINER && !(node->schema->flags & LYS_PRESENCE);
    if (!may_be_empty) {
        flush();
    }
}

void Reader::close()
{
    if (!pending_.empty()) {
        pending_.pop_back();
        return;
    }
    sink_.close();
}

void Reader::leaf(const lyd_node *node)
{
    flush();
    sink_.leaf(node->schema->module->ns, LYD_NAME(node), value_of(node));
}

void Reader::flush()
{
    for (const lyd_node *node : pending_) {
        sink_.open(node->schema->module->ns, LYD_NAME(node));
    }
    pending_.clear();
}

} // namespace router
