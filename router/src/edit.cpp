// NETCONF's edit operations over a libyang tree. Containers are made late, when data come below them; one that an edit
// empties libyang marks as a mere default by itself, and then it counts as not there.
#include "edit.h"

#include "document.h"
#include "report.h"

#include <cstring>
#include <utility>

namespace router
{

namespace
{

constexpr const char *not_xml_text = "the text has characters that XML cannot carry";

bool takes_away(Operation operation)
{
    return operation == Operation::delete_ || operation == Operation::remove;
}

// Whether a node below sets something in so many words.
bool sets_below(const EditNode &node)
{
    for (const EditNode *child = node.first_child; child; child = child->next) {
        const bool sets = child->operation != Operation::none && !takes_away(child->operation);
        if (sets || sets_below(*child)) {
            return true;
        }
    }
    return false;
}

bool is_presence_container(const lysc_node *schema)
{
    return schema->nodetype == LYS_CONTAINER && (schema->flags & LYS_PRESENCE);
}

// An entry goes with its key leaf.
Operation operation_of_entry(const lysc_node *list, const EditNode &entry)
{
    if (takes_away(entry.operation)) {
        return entry.operation;
    }
    for (const EditNode *child = entry.first_child; child; child = child->next) {
        if (!takes_away(child->operation)) {
            continue;
        }
        for (const lysc_node *key = lysc_node_child(list); key && lysc_is_key(key); key = key->next) {
            if (std::strcmp(child->name, key->name) == 0) {
                return child->operation;
            }
        }
    }
    return entry.operation;
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

tl::unexpected<Error> failed(const std::string &path)
{
    return refuse("operation-failed", path, "libyang cannot make the node");
}

} // namespace

template <typename Path>
void Editor::take_away(const EditNode &node, Operation operation, lyd_node *data, Path path)
{
    if (data) {
        remove(data);
    }
    if (operation != Operation::delete_) {
        return;
    }
    if (data || swept_) {
        deletion(node).found = true;
    } else {
        note_missing(node, path());
    }
}

Expected<void> Editor::apply(const EditNode *trees)
{
    for (const EditNode *tree = trees; tree; tree = tree->next) {
        if (auto applied = apply_node(*tree, nullptr); !applied) {
            return applied;
        }
    }
    for (const Deletion &deletion : deletions_) {
        if (!deletion.found) {
            return refuse("data-missing", deletion.path, "there is nothing to delete");
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

Expected<void> Editor::apply_node(const EditNode &node, Place *parent)
{
    const lysc_node *schema = find_schema(context_, parent ? parent->schema : nullptr, node);
    if (!schema) {
        return refuse("unknown-element", path_of_child(parent, node.name), "the router has no such node");
    }
    if (!is_native_configuration(schema)) {
        return refuse("operation-not-supported", path_of_child(parent, node.name), "not configuration of the router");
    }
    if (schema->nodetype == LYS_CONTAINER) {
        return apply_container(node, parent, schema);
    }
    if (!parent) { // only containers stand at the top of the router's modules
        return refuse("operation-not-supported", path_of_child(parent, node.name), "not a container");
    }
    return schema->nodetype == LYS_LIST ? apply_list(node, *parent, schema) : apply_leaf(node, *parent, schema);
}

Expected<void> Editor::apply_children(const EditNode &node, Place &place)
{
    for (const EditNode *child = node.first_child; child; child = child->next) {
        if (auto applied = apply_node(*child, &place); !applied) {
            return applied;
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
        if (!node.value && type_of(schema) != LY_TYPE_EMPTY) {
            return {};
        }
        return set_leaf(node, parent, schema, leaf);
    case Operation::create:
        if (leaf) {
            return refuse("data-exists", path_of(leaf), "the leaf is there already");
        }
        return set_leaf(node, parent, schema, leaf);
    case Operation::merge:
    case Operation::replace:
        return set_leaf(node, parent, schema, leaf);
    case Operation::delete_:
    case Operation::remove:
        take_away(node, node.operation, leaf, [&] { return path_of_child(&parent, node.name); });
        return {};
    }
    return {};
}

Expected<void> Editor::set_leaf(const EditNode &node, Place &parent, const lysc_node *schema, lyd_node *leaf)
{
    const char *value = value_or_empty(schema, node.value);
    if (value && !is_xml_text(value)) {
        return refuse("invalid-value", path_of_child(&parent, node.name), not_xml_text);
    }
    LY_ERR code = LY_EVALID;
    if (value && leaf) {
        code = lyd_change_term(leaf, value);
    } else if (value) {
        if (!make(parent)) {
            return failed(path_of_child(&parent, node.name));
        }
        code = lyd_new_term(parent.node, schema->module, schema->name, value, 0, nullptr);
    }
    const bool was_set_already = code == LY_EEXIST || code == LY_ENOT;
    if (code && !was_set_already) {
        return refuse("invalid-value", path_of_child(&parent, node.name), value_refused(schema, value));
    }
    changed_ |= !was_set_already;
    return {};
}

Expected<void> Editor::apply_container(const EditNode &node, Place *parent, const lysc_node *schema)
{
    const bool reachable = !parent || parent->node;
    Place place{parent, schema, reachable ? find_single(parent ? parent->node : nullptr, top(), schema) : nullptr};
    if (takes_away(node.operation)) {
        take_away(node, node.operation, place.node, [&] { return path_of_child(parent, node.name); });
        place.node = nullptr;
        return set_anew(node, place);
    }
    if (node.operation == Operation::create && place.node) {
        return refuse("data-exists", path_of(place.node), "the container is there already");
    }
    if (node.operation == Operation::replace && place.node) {
        remove_contents(place.node);
    }
    if (node.operation != Operation::none && is_presence_container(schema) && !make(place)) {
        return failed(path_of_child(parent, node.name));
    }
    return apply_children(node, place);
}

Expected<void> Editor::set_anew(const EditNode &node, Place &place)
{
    if (!sets_below(node)) {
        return {};
    }
    const bool outer = std::exchange(swept_, true);
    auto applied = apply_children(node, place);
    swept_ = outer;
    return applied;
}

Expected<void> Editor::apply_list(const EditNode &node, Place &parent, const lysc_node *schema)
{
    const Keys keys = keys_of(schema, node);
    const Operation operation = operation_of_entry(schema, node);
    if (!keys.all()) {
        return apply_entries(node, operation, parent, schema, keys);
    }
    const lysc_node *key = lysc_node_child(schema);
    for (size_t i = 0; i < keys.wanted; ++i, key = key->next) {
        if (!is_xml_text(keys.values[i])) {
            return refuse("invalid-value", path_of_child(&parent, schema->name) + "/" + key->name, not_xml_text);
        }
        if (!value_fits(key, keys.values[i])) {
            return refuse("invalid-value", path_of_child(&parent, schema->name) + "/" + key->name,
                          value_refused(key, keys.values[i]));
        }
    }
    return apply_entry(node, operation, parent, schema, keys);
}

Expected<void> Editor::apply_entry(const EditNode &node, Operation operation, Place &parent, const lysc_node *schema,
                                   const Keys &keys)
{
    lyd_node *found = finder_.find(parent.node, schema, keys);
    const bool shown = found && visibility_.shown(found);
    const bool foreign_chain = found && !shown && visibility_.is_key_chain(schema);
    const auto path = [&] { return path_of_child(&parent, step_of_entry(schema, keys)); };

    if (takes_away(operation)) {
        take_away(node, operation, shown ? found : nullptr, path);
        return {};
    }
    if (operation == Operation::none && (!found || foreign_chain)) {
        return refuse("data-missing", path(), "there is no such entry");
    }
    if (foreign_chain) {
        return refuse("access-denied", path(), "the key chain belongs to the router, and is not one of MACsec");
    }
    if (operation == Operation::create && shown) {
        return refuse("data-exists", path(), "the entry is there already");
    }
    if (operation == Operation::replace && found) {
        remove_contents(found);
    }
    Place entry{&parent, schema, found};
    if (!make_entry(entry, keys)) {
        return failed(path());
    }
    return apply_children(node, entry);
}

Expected<void> Editor::apply_entries(const EditNode &node, Operation operation, Place &parent, const lysc_node *schema,
                                     const Keys &keys)
{
    const auto path = [&] { return path_of_child(&parent, step_of_entry(schema, keys)); };
    if (operation == Operation::create) {
        return refuse("missing-element", path(), "an entry is made with all its keys");
    }
    const std::vector<lyd_node *> entries = matching_entries(parent.node, schema, keys, visibility_, finder_);
    if (takes_away(operation)) {
        for (lyd_node *entry : entries) {
            take_away(node, operation, visibility_.shown(entry) ? entry : nullptr, path);
        }
        if (entries.empty()) {
            take_away(node, operation, nullptr, path);
        }
        return {};
    }
    if (entries.empty()) {
        missing_below(node, path());
    }
    for (lyd_node *found : entries) {
        if (operation == Operation::replace) {
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
    // A chain without this is the router's own and out of OpenConfig's sight; one that is made here is not.
    if (visibility_.is_key_chain(entry.schema)) {
        Place macsec_keychain{&entry, visibility_.macsec_keychain(), nullptr};
        return make(macsec_keychain) != nullptr;
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

Editor::Deletion &Editor::deletion(const EditNode &node)
{
    const void *group = node.group ? node.group : &node;
    const auto [place, is_new] = deletion_of_.try_emplace(group, deletions_.size());
    if (is_new) {
        deletions_.emplace_back();
    }
    return deletions_[place->second];
}

void Editor::note_missing(const EditNode &node, const std::string &path)
{
    Deletion &noted = deletion(node);
    if (noted.path.empty()) {
        noted.path = path;
    }
}

void Editor::missing_below(const EditNode &node, const std::string &path)
{
    for (const EditNode *child = node.first_child; child; child = child->next) {
        const std::string child_path = path + "/" + child->name;
        if (child->operation == Operation::delete_) {
            note_missing(*child, child_path);
        } else {
            missing_below(*child, child_path);
        }
    }
}

} // namespace router
