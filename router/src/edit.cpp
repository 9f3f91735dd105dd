// NETCONF's edit operations over a libyang tree. Containers are made late, when data come below them; one that an edit
// empties libyang marks as a mere default by itself, and then it counts as not there.
#include "edit.h"

#include "document.h"
#include "report.h"

#include <algorithm>
#include <cstring>
#include <vector>

namespace router
{

namespace
{

constexpr const char *not_xml_text = "the text has characters that XML cannot carry";
constexpr const char *nothing_to_delete = "there is nothing to delete";

bool takes_away(Operation operation)
{
    return operation == Operation::delete_ || operation == Operation::remove;
}

// Whether a node only leads to others, all of which are to be removed, if they are there.
bool only_removes(const ly_ctx *context, const EditNode &node, const lysc_node *schema)
{
    bool removes = false;
    for (const EditNode *child = node.first_child; child && node.operation == Operation::none; child = child->next) {
        const lysc_node *below = find_schema(context, schema, *child);
        const bool is_key = below && lysc_is_key(below);
        const bool removed = child->operation == Operation::remove || (below && only_removes(context, *child, below));
        if (!is_key && !removed) {
            return false;
        }
        removes |= !is_key;
    }
    return removes;
}

bool is_presence_container(const lysc_node *schema)
{
    return schema->nodetype == LYS_CONTAINER && (schema->flags & LYS_PRESENCE);
}

std::string step_of_entry(const lysc_node *list, const Keys &keys)
{
    std::string step = list->name;
    const lysc_node *key = lysc_node_child(list);
    for (size_t i = 0; i < keys.wanted; ++i, key = key->next) {
        if (keys.values[i]) {
            step += std::string("[") + key->name + "='" + keys.values[i] + "']";
        }
    }
    return step;
}

LY_DATA_TYPE type_of(const lysc_node *leaf)
{
    return reinterpret_cast<const lysc_node_leaf *>(leaf)->type->basetype;
}

bool value_fits(const lysc_node *leaf, const char *value)
{
    return lyd_value_validate(leaf->module->ctx, leaf, value, std::strlen(value), nullptr, nullptr, nullptr) ==
           LY_SUCCESS;
}

// What stands for a null value: nothing but for leaves that need none.
const char *value_or_empty(const lysc_node *leaf, const char *value)
{
    return !value && type_of(leaf) != LY_TYPE_STRING && value_fits(leaf, "") ? "" : value;
}

tl::unexpected<Error> failed(const EditNode &node, const std::string &path)
{
    return refuse(Fault::failed, path, "libyang cannot make the node", node.origin);
}

// The choice that a node is a case of; null if it is none's.
const lysc_node *choice_of(const lysc_node *schema)
{
    const bool in_case = schema->parent && schema->parent->nodetype == LYS_CASE;
    return in_case ? schema->parent->parent : nullptr;
}

const EditNode *find_child(const EditNode *siblings, const EditNode &like)
{
    for (const EditNode *child = siblings; child; child = child->next) {
        if (std::strcmp(child->name, like.name) == 0 && (!child->ns || !like.ns || !std::strcmp(child->ns, like.ns))) {
            return child;
        }
    }
    return nullptr;
}

} // namespace

Expected<void> Editor::apply(const EditNode *trees)
{
    for (const EditNode *tree = trees; tree; tree = tree->next) {
        if (auto applied = apply_node(*tree, trees, nullptr); !applied) {
            return applied;
        }
    }
    return {};
}

std::string Editor::path_of_child(const Place *parent, const std::string &name) const
{
    std::string path;
    if (parent) {
        path = parent->node ? path_of(parent->node) : path_of_child(parent->parent, parent->schema->name);
    }
    return path + "/" + name;
}

Expected<void> Editor::apply_node(const EditNode &node, const EditNode *siblings, Place *parent)
{
    const lysc_node *schema = find_schema(context_, parent ? parent->schema : nullptr, node);
    if (!schema) {
        return refuse(Fault::unknown_node, path_of_child(parent, node.name), "the router has no such node",
                      node.origin);
    }
    if (!is_native_configuration(schema)) {
        return refuse(Fault::not_supported, path_of_child(parent, node.name), "not configuration of the router",
                      node.origin);
    }
    if (schema->nodetype == LYS_CONTAINER) {
        return apply_container(node, parent, schema);
    }
    if (!parent) { // only containers stand at the top of the router's modules
        return refuse(Fault::not_supported, path_of_child(parent, node.name), "not a container", node.origin);
    }
    return schema->nodetype == LYS_LIST ? apply_list(node, siblings, *parent, schema)
                                        : apply_leaf(node, *parent, schema);
}

// Leaves that go are gone before others are set: those of a choice may take one another's place.
Expected<void> Editor::apply_children(const EditNode &node, Place &place)
{
    const auto goes_first = [](const EditNode &child) { return takes_away(child.operation) && !child.first_child; };
    for (const bool first : {true, false}) {
        for (const EditNode *child = node.first_child; child; child = child->next) {
            if (goes_first(*child) != first) {
                continue;
            }
            if (auto applied = apply_node(*child, node.first_child, &place); !applied) {
                return applied;
            }
        }
    }
    return {};
}

Expected<void> Editor::apply_leaf(const EditNode &node, Place &parent, const lysc_node *schema)
{
    if (lysc_is_key(schema)) {
        return {};
    }
    lyd_node *leaf = parent.node ? find_single(parent.node, nullptr, schema) : nullptr;
    switch (node.operation) {
    case Operation::none:
        return node.value ? set_leaf(node, parent, schema, leaf) : Expected<void>();
    case Operation::create:
        if (leaf) {
            return refuse(Fault::exists, path_of(leaf), "the leaf is there already", node.origin);
        }
        return set_leaf(node, parent, schema, leaf);
    case Operation::merge:
    case Operation::replace:
        return set_leaf(node, parent, schema, leaf);
    case Operation::delete_:
    case Operation::remove:
        if (!(parent.node && remove_setting(parent.node, schema)) && node.operation == Operation::delete_) {
            return refuse(Fault::missing, path_of_child(&parent, node.name), nothing_to_delete, node.origin);
        }
        return {};
    }
    return {};
}

Expected<void> Editor::set_leaf(const EditNode &node, Place &parent, const lysc_node *schema, lyd_node *leaf)
{
    const char *value = value_or_empty(schema, node.value);
    if (value && !is_xml_text(value)) {
        return refuse(Fault::bad_value, path_of_child(&parent, node.name), not_xml_text, node.origin);
    }
    LY_ERR code = LY_EVALID;
    if (value && leaf) {
        code = lyd_change_term(leaf, value);
    } else if (value) {
        if (!make(parent)) {
            return failed(node, path_of_child(&parent, node.name));
        }
        code = lyd_new_term(parent.node, schema->module, schema->name, value, 0, nullptr);
        remove_other_cases(parent.node, schema);
    }
    const bool was_set_already = code == LY_EEXIST || code == LY_ENOT;
    if (code && !was_set_already) {
        return refuse(Fault::bad_value, path_of_child(&parent, node.name), value_refused(schema, value), node.origin);
    }
    changed_ |= !was_set_already;
    return {};
}

Expected<void> Editor::apply_container(const EditNode &node, Place *parent, const lysc_node *schema)
{
    const bool reachable = !parent || parent->node;
    Place place{parent, schema, reachable ? find_single(parent ? parent->node : nullptr, top(), schema) : nullptr};
    if (takes_away(node.operation)) {
        if (place.node) {
            remove(place.node);
        } else if (node.operation == Operation::delete_) {
            return refuse(Fault::missing, path_of_child(parent, node.name), nothing_to_delete, node.origin);
        }
        return {};
    }
    if (node.operation == Operation::create && place.node) {
        return refuse(Fault::exists, path_of(place.node), "the container is there already", node.origin);
    }
    if (node.operation == Operation::replace && place.node) {
        remove_contents(place.node);
    }
    if (node.operation != Operation::none && is_presence_container(schema) && !make(place)) {
        return failed(node, path_of_child(parent, node.name));
    }
    return apply_children(node, place);
}

Expected<void> Editor::apply_list(const EditNode &node, const EditNode *siblings, Place &parent,
                                  const lysc_node *schema)
{
    const Keys keys = keys_of(schema, node);
    if (!keys.all()) {
        return apply_entries(node, siblings, parent, schema, keys);
    }
    const lysc_node *key = lysc_node_child(schema);
    for (size_t i = 0; i < keys.wanted; ++i, key = key->next) {
        const bool is_text = is_xml_text(keys.values[i]);
        if (!is_text || !value_fits(key, keys.values[i])) {
            return refuse(Fault::bad_value, path_of_child(&parent, schema->name) + "/" + key->name,
                          is_text ? value_refused(key, keys.values[i]) : not_xml_text, node.origin);
        }
    }
    return apply_entry(node, parent, schema, keys);
}

Expected<void> Editor::apply_entry(const EditNode &node, Place &parent, const lysc_node *schema, const Keys &keys)
{
    lyd_node *found = finder_.find(parent.node, schema, keys);
    const bool shown = found && shown_entries_.shown(found);
    const std::string *refusal = found && !shown ? shown_entries_.refusal(schema) : nullptr;
    const auto path = [&] { return path_of_child(&parent, step_of_entry(schema, keys)); };

    if (takes_away(node.operation)) {
        if (shown) {
            remove(found);
        } else if (node.operation == Operation::delete_) {
            return refuse(Fault::missing, path(), nothing_to_delete, node.origin);
        }
        return {};
    }
    if (node.operation == Operation::none && (!found || refusal)) {
        return only_removes(context_, node, schema)
                   ? Expected<void>()
                   : refuse(Fault::missing, path(), "there is no such entry", node.origin);
    }
    if (refusal) {
        return refuse(Fault::denied, path(), *refusal, node.origin);
    }
    if (node.operation == Operation::create && found) {
        return refuse(Fault::exists, path(), "the entry is there already", node.origin);
    }
    if (node.operation == Operation::replace && found) {
        remove_contents(found);
    }
    Place entry{&parent, schema, found};
    if (!make_entry(entry, keys)) {
        return failed(node, path());
    }
    return apply_children(node, entry);
}

Expected<void> Editor::apply_entries(const EditNode &node, const EditNode *siblings, Place &parent,
                                     const lysc_node *schema, const Keys &keys)
{
    const auto path = [&] { return path_of_child(&parent, step_of_entry(schema, keys)); };
    if (node.operation == Operation::create) {
        return refuse(Fault::missing_key, path(), "an entry is made with all its keys", node.origin);
    }
    const std::vector<lyd_node *> entries = matching_entries(parent.node, schema, keys, shown_entries_, finder_);
    if (takes_away(node.operation) || only_removes(context_, node, schema)) {
        const auto shown = [&](const lyd_node *entry) { return shown_entries_.shown(entry); };
        if (node.operation == Operation::delete_ && std::none_of(entries.begin(), entries.end(), shown)) {
            return refuse(Fault::missing, path(), nothing_to_delete, node.origin);
        }
        if (parent.node) {
            sweep_entries(node, schema, parent.node, siblings);
        }
        return {};
    }
    for (lyd_node *found : entries) {
        if (node.operation == Operation::replace) {
            remove_contents(found);
        }
        Place entry{&parent, schema, found};
        if (auto applied = apply_children(node, entry); !applied) {
            return applied;
        }
    }
    return {};
}

lyd_node *Editor::make(Place &place)
{
    if (place.node || (place.parent && !make(*place.parent))) {
        return place.node;
    }
    lyd_node *parent = place.parent ? place.parent->node : nullptr;
    const lyd_node *siblings = parent ? lyd_child(parent) : top();
    // An empty container that libyang supposes is taken over: its first child makes it a real one.
    if (siblings && !lyd_find_sibling_val(siblings, place.schema, nullptr, 0, &place.node)) {
        return place.node;
    }
    if (lyd_new_inner(parent, place.schema->module, place.schema->name, 0, &place.node)) {
        return nullptr;
    }
    if (!parent) {
        lyd_node *first = nullptr;
        lyd_insert_sibling(tree_.release(), place.node, &first);
        tree_.reset(first);
    }
    changed_ = true;
    return place.node;
}

bool Editor::make_entry(Place &entry, const Keys &keys)
{
    if (!entry.node) {
        entry.node = make(*entry.parent) ? new_entry(entry.parent->node, entry.schema, keys) : nullptr;
        if (!entry.node) {
            return false;
        }
        finder_.added(entry.node);
        changed_ = true;
    }
    return true;
}

void Editor::remove(lyd_node *node)
{
    finder_.removing(node);
    if (node == tree_.get()) {
        static_cast<void>(tree_.release());
        tree_.reset(node->next);
    }
    lyd_free_tree(node);
    changed_ = true;
}

void Editor::remove_contents(lyd_node *node)
{
    lyd_node *child = lyd_child_no_keys(node);
    while (child) {
        lyd_node *next = child->next;
        remove(child);
        child = next;
    }
}

bool Editor::remove_other_cases(lyd_node *parent, const lysc_node *schema)
{
    const lysc_node *const choice = choice_of(schema);
    bool removed = false;
    lyd_node *next = choice ? lyd_child_no_keys(parent) : nullptr;
    while (lyd_node *node = next) {
        next = node->next;
        if (choice_of(node->schema) == choice && node->schema->parent != schema->parent) {
            remove(node);
            removed = true;
        }
    }
    return removed;
}

bool Editor::remove_setting(lyd_node *parent, const lysc_node *schema)
{
    lyd_node *leaf = find_single(parent, nullptr, schema);
    const bool others = remove_other_cases(parent, schema);
    if (leaf) {
        remove(leaf);
    }
    return leaf || others;
}

const Editor::Named &Editor::named_entries(const EditNode *siblings, const lysc_node *list)
{
    const auto [place, is_new] = named_.try_emplace({siblings, list});
    for (const EditNode *node = is_new ? siblings : nullptr; node; node = node->next) {
        if (takes_away(node->operation) || std::strcmp(node->name, list->name) != 0) {
            continue;
        }
        if (const Keys keys = keys_of(list, *node); keys.all()) {
            place->second.emplace(text_of(keys), node);
        }
    }
    return place->second;
}

void Editor::sweep(const EditNode *removals, lyd_node *data, const EditNode *named)
{
    for (const EditNode *removal = removals; removal; removal = removal->next) {
        const lysc_node *schema = find_schema(context_, data->schema, *removal);
        if (!schema || lysc_is_key(schema)) {
            continue;
        }
        if (schema->nodetype == LYS_LIST) {
            sweep_entries(*removal, schema, data, named);
        } else if (schema->nodetype == LYS_CONTAINER) {
            sweep_container(*removal, schema, data, named);
        } else if (takes_away(removal->operation)) {
            remove_setting(data, schema);
        }
    }
}

void Editor::sweep_container(const EditNode &removal, const lysc_node *schema, lyd_node *data, const EditNode *named)
{
    lyd_node *container = find_single(data, nullptr, schema);
    const EditNode *same = find_child(named, removal);
    const bool goes = takes_away(removal.operation) && (!same || takes_away(same->operation));
    if (container && goes) {
        remove(container);
    } else if (container) {
        sweep(removal.first_child, container, same ? same->first_child : nullptr);
    }
}

void Editor::sweep_entries(const EditNode &removal, const lysc_node *schema, lyd_node *data, const EditNode *named)
{
    const Named &kept = named_entries(named, schema);
    for (lyd_node *entry : matching_entries(data, schema, keys_of(schema, removal), shown_entries_, finder_)) {
        if (!shown_entries_.shown(entry)) {
            continue;
        }
        const auto found = kept.empty() ? kept.end() : kept.find(text_of_keys(entry));
        if (found != kept.end()) {
            sweep(removal.first_child, entry, found->second->first_child);
        } else if (takes_away(removal.operation)) {
            remove(entry);
        } else {
            sweep(removal.first_child, entry, nullptr);
        }
    }
}

} // namespace router
