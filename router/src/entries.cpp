// Search of schema nodes and data. An exact search builds the entry that it looks for and asks libyang's hash; a
// search by some keys goes through an index that the first one builds.
#include "entries.h"

#include "router/memory.h"
#include "router/models.h"

#include <algorithm>
#include <cstring>

namespace router
{

namespace
{

bool same(const char *left, const char *right)
{
    return std::strcmp(left, right) == 0;
}

// Nodes of cases count as children of what is around their choice.
const lysc_node *find_by_name(const lysc_node *parent, const lysc_module *module, const char *ns, const char *name)
{
    const lysc_node *node = nullptr;
    while ((node = lys_getnext(node, parent, module, 0)) != nullptr) {
        if (same(node->name, name) && same(node->module->ns, ns)) {
            return node;
        }
    }
    return nullptr;
}

bool holds_partial_lists(const lysc_node *node)
{
    if (node->nodetype == LYS_LIST && lysc_node_child(node)->next && lysc_is_key(lysc_node_child(node)->next)) {
        return true;
    }
    for (const lysc_node *child = lysc_node_child(node); child; child = child->next) {
        if (holds_partial_lists(child)) {
            return true;
        }
    }
    return false;
}

unsigned mask_of(const Keys &keys)
{
    unsigned mask = 0;
    for (size_t i = 0; i < keys.wanted; ++i) {
        mask |= keys.values[i] ? 1U << i : 0U;
    }
    return mask;
}

void append_part(std::string &text, const char *value)
{
    text += value;
    text += '\0';
}

} // namespace

std::string text_of(const Keys &keys)
{
    std::string text;
    for (size_t i = 0; i < keys.wanted; ++i) {
        if (keys.values[i]) {
            append_part(text, keys.values[i]);
        }
    }
    return text;
}

namespace
{

std::string index_text(const lyd_node *entry, unsigned mask)
{
    std::string text;
    unsigned bit = 1;
    for (const lyd_node *key = lyd_child(entry); key && lysc_is_key(key->schema); key = key->next, bit <<= 1U) {
        if (mask & bit) {
            append_part(text, lyd_get_value(key));
        }
    }
    return text;
}

template <typename Visit>
void for_each_entry(const lyd_node *parent, const lysc_node *list, Visit visit)
{
    lyd_node *node = nullptr;
    if (!lyd_child(parent) || !found(lyd_find_sibling_val(lyd_child(parent), list, nullptr, 0, &node))) {
        return;
    }
    for (; node && node->schema == list; node = node->next) {
        visit(node);
    }
}

} // namespace

const lysc_node *find_schema(const ly_ctx *context, const lysc_node *parent, const EditNode &node)
{
    if (parent) {
        return find_by_name(parent, nullptr, node.ns ? node.ns : parent->module->ns, node.name);
    }
    const lys_module *module = node.ns ? ly_ctx_get_module_implemented_ns(context, node.ns) : nullptr;
    return module && module->compiled ? find_by_name(nullptr, module->compiled, node.ns, node.name) : nullptr;
}

bool is_native_configuration(const lysc_node *node)
{
    const char *uri = node->module->ns;
    return same(uri, ns::policies) || same(uri, ns::keychains) || same(uri, ns::interfaces) ||
           same(uri, ns::interface_macsec);
}

bool is_state(const lysc_node *node)
{
    return (node->flags & LYS_CONFIG_R) != 0;
}

lyd_node *find_single(const lyd_node *parent, const lyd_node *top, const lysc_node *schema)
{
    lyd_node *match = nullptr;
    const lyd_node *siblings = parent ? lyd_child(parent) : top;
    if (!siblings || !found(lyd_find_sibling_val(siblings, schema, nullptr, 0, &match))) {
        return nullptr;
    }
    return match->flags & LYD_DEFAULT ? nullptr : match;
}

std::string text_of_keys(const lyd_node *entry)
{
    return index_text(entry, ~0U);
}

Keys keys_of(const lysc_node *list, const EditNode &entry)
{
    Keys keys;
    for (const lysc_node *key = lysc_node_child(list); key && lysc_is_key(key); key = key->next) {
        for (const EditNode *child = entry.first_child; child; child = child->next) {
            if (child->value && same(child->name, key->name)) {
                keys.values[keys.wanted] = child->value;
                ++keys.given;
                break;
            }
        }
        ++keys.wanted;
    }
    return keys;
}

lyd_node *new_entry(lyd_node *parent, const lysc_node *list, const Keys &keys)
{
    lyd_node *entry = nullptr;
    // libyang takes as many of the values as the list has keys.
    lyd_new_list(parent, list->module, list->name, 0, &entry, keys.values[0], keys.values[1]);
    return entry;
}

lyd_node *EntryFinder::find(const lyd_node *parent, const lysc_node *list, const Keys &keys)
{
    if (!parent) {
        return nullptr;
    }
    Detached &scratch = scratch_[list];
    if (!scratch) {
        lyd_node *copy = nullptr;
        if (lyd_dup_single(parent, nullptr, 0, &copy)) {
            throw std::bad_alloc();
        }
        scratch.reset(copy);
    }
    const MemoryWatch watch;
    const Detached target(new_entry(scratch.get(), list, keys));
    watch.check();
    lyd_node *match = nullptr;
    // Keys that the list cannot have are no entry's.
    if (!target || !lyd_child(parent) || !found(lyd_find_sibling_first(lyd_child(parent), target.get(), &match))) {
        return nullptr;
    }
    return match;
}

std::vector<lyd_node *> EntryFinder::matching(const lyd_node *parent, const lysc_node *list, const Keys &keys)
{
    const unsigned mask = mask_of(keys);
    const auto [place, is_new] = indexes_.try_emplace(Place(parent, list, mask));
    Index &index = place->second;
    if (is_new) {
        for_each_entry(parent, list, [&](lyd_node *entry) { index[index_text(entry, mask)].push_back(entry); });
    }
    const auto found = index.find(text_of(keys));
    return found == index.end() ? std::vector<lyd_node *>() : found->second;
}

void EntryFinder::added(lyd_node *entry)
{
    for (auto &[place, index] : indexes_) {
        const auto &[parent, list, mask] = place;
        if (parent == lyd_parent(entry) && list == entry->schema) {
            index[index_text(entry, mask)].push_back(entry);
        }
    }
}

void EntryFinder::removing(lyd_node *node)
{
    if (indexes_.empty() || !holds_partial_lists(node->schema)) {
        return;
    }
    if (node->schema->nodetype != LYS_LIST) {
        indexes_.clear();
        return;
    }
    for (auto &[place, index] : indexes_) {
        const auto &[parent, list, mask] = place;
        if (parent == lyd_parent(node) && list == node->schema) {
            std::erase(index[index_text(node, mask)], node);
        }
    }
}

std::vector<lyd_node *> matching_entries(const lyd_node *parent, const lysc_node *list, const Keys &keys,
                                         const ShownEntries &shown_entries, EntryFinder &finder)
{
    if (!parent) {
        return {};
    }
    if (!keys.none()) {
        return finder.matching(parent, list, keys);
    }
    std::vector<lyd_node *> entries;
    for_each_entry(parent, list, [&](lyd_node *entry) {
        if (shown_entries.shown(entry)) {
            entries.push_back(entry);
        }
    });
    return entries;
}

} // namespace router
