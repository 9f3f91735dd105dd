#include "walk/placing.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace tqm
{

namespace
{

bool is_at_or_below(const PathInfo &info, const PathInfo &ancestor)
{
    const PathInfo *at = &info;
    while (at != nullptr && at != &ancestor) {
        at = at->parent;
    }
    return at != nullptr;
}

} // namespace

OutputRecord *Placing::base_of(rdl_tqm_datatree *tree) const
{
    return survivor(as_output(tree));
}

/// The path of the only key of `list`.
const char *Placing::key_path(const PathInfo &list)
{
    return around_.paths.intern_child(&list, list.keys().front())->text.data();
}

/// A leaf of another module brings its namespace along below the list around it only.
Placing::Naming Placing::naming_for(const AddArguments &arguments, const PathInfo &info)
{
    Naming naming{around_.namespaces.intern(arguments.ns), nullptr};
    if (arguments.flags == TQM_ADD_OTHER_MODULE && info.list != nullptr) {
        naming.split = info.list->depth;
        naming.above = naming.below;
        const PathInfo *top = &info;
        while (top->parent != nullptr) {
            top = top->parent;
        }
        for (const tqm_map_reg_info &registration : around_.registrations) {
            if (std::strcmp(registration.native_top, top->tag) == 0) {
                naming.above = around_.namespaces.intern(registration.native_ns);
            }
        }
    }
    return naming;
}

rcode Placing::add(const AddArguments &arguments)
{
    const rcode rc = place(arguments);
    if (rc != 0 && around_.observation) {
        tell(arguments, nullptr, rc);
    }
    return rc;
}

void Placing::tell(const AddArguments &arguments, const OutputRecord *node, rcode code) const
{
    const bool settled = node != nullptr && !node->pending;
    around_.observation.added(
        {arguments.path, arguments.value, settled ? node->operation() : std::nullopt, node, code});
}

rcode Placing::place(const AddArguments &arguments)
{
    if (arguments.tree == nullptr || arguments.path == nullptr || arguments.list_entry > 1) {
        return TQM_ERR_BAD_ARGS;
    }
    if (arguments.flags != TQM_ADD_PLAIN && arguments.flags != TQM_ADD_OTHER_MODULE &&
        arguments.flags != TQM_ADD_ENTRY_NAME) {
        return TQM_ERR_BAD_ARGS;
    }
    OutputRecord *base = base_of(arguments.tree);
    if (base == nullptr) {
        return add_to_request_node(arguments);
    }
    const PathInfo *info = around_.paths.intern_literal(arguments.path);
    if (info == nullptr || info->below_value) {
        return TQM_ERR_BAD_ARGS;
    }
    if (!ignored_.empty() && ignored_.contains(arguments.source)) {
        return 0;
    }
    if (arguments.list_entry == 0) {
        settle();
    }

    const Naming naming = naming_for(arguments, *info);
    const bool addressed = arguments.list_entry == 1 && info->is_list();
    const bool inside = base->info() != nullptr && is_at_or_below(*info, *base->info());
    const char *value = around_.arena.keep(arguments.value);
    OutputRecord *node = nullptr;
    if (info->is_leaf_list()) {
        node = leaf_list_value(*base, *info, naming, inside, value, arguments.out_node != nullptr);
    } else {
        node = inside ? below(*base, *info, naming) : node_for(*info, naming, addressed);
    }

    if (may_be_contested(*node, arguments) && !takes_value(*node, arguments)) {
        return 0;
    }
    if (!info->is_list()) {
        set_value(*node, value);
    }
    if (!(addressed && around_.kind.is_forward())) {
        set_operation(*node, arguments.source);
    }
    if (OutputRecord *const entry = around_.kind.is_forward_edit() ? nearest_entry(*node) : nullptr) {
        const Frame *const frame = around_.hierarchy.innermost_list();
        entry->origin_node = frame == nullptr ? arguments.source : frame->node;
        if (arguments.list_entry == 1 || node->info()->is_key) {
            settle_entry_operation(*node, *entry, arguments);
        }
    }
    if (around_.observation) {
        tell(arguments, node, 0);
    }
    if (addressed && !around_.kind.is_forward() && !around_.kind.is_read() && value == nullptr) {
        give_key_of_deleted(*node, arguments);
    }
    if (!info->schema->companions.empty() && around_.kind.is_widened()) {
        for (const std::string &companion : info->schema->companions) {
            read_beside(*node->outer, companion, naming);
        }
    }
    if (info->is_list() && value != nullptr && info->keys().size() == 1) {
        AddArguments key = arguments;
        key.path = key_path(*info);
        key.out_node = nullptr;
        key.list_entry = arguments.list_entry;
        if (const rcode rc = add(key); rc != 0) {
            return rc;
        }
    }
    node = survivor(node);
    if (arguments.out_node != nullptr) {
        *arguments.out_node = around_.output.handle_of(*node);
    }
    return 0;
}

/// Who asks for the node means the one value that the leaf-list has: it takes the last one's place.
OutputRecord *Placing::leaf_list_value(OutputRecord &base, const PathInfo &info, const Naming &naming, bool inside,
                                       const char *value, bool replaces)
{
    Output &output = around_.output;
    OutputRecord *parent = &output.base();
    if (info.parent != nullptr) {
        parent = inside ? below(base, *info.parent, naming) : node_for(*info.parent, naming, false);
    }
    return replaces ? output.replace_last_value(*parent, info, naming.ns_of(info), value)
                    : output.add_value(*parent, info, naming.ns_of(info), value);
}

void Placing::read_beside(OutputRecord &parent, const std::string &path, const Naming &naming)
{
    const PathInfo *const info = around_.paths.intern(path);
    if (info != nullptr && info->parent == parent.info() && Output::find_named(parent, *info) == nullptr) {
        around_.output.add_named(parent, *info, naming.ns_of(*info));
    }
}

rcode Placing::add_to_request_node(const AddArguments &arguments)
{
    const char *tag = arguments.path[0] == '/' ? arguments.path + 1 : arguments.path;
    if (tag[0] == '\0' || std::strchr(tag, '/') != nullptr) {
        return TQM_ERR_BAD_ARGS;
    }
    rdl_tqm_datatree &node = *arguments.tree;
    const std::span<const rdl_tqm_datatree> given = children_of(node);
    auto *children = around_.arena.make_array<rdl_tqm_datatree>(given.size() + 1);
    rdl_tqm_datatree &leaf = *std::ranges::copy(given, children).out;
    leaf.tag = around_.arena.keep(tag);
    leaf.ns = around_.namespaces.intern(arguments.ns);
    leaf.value = around_.arena.keep(arguments.value);
    if (leaf.value != nullptr) {
        leaf.present |= TQM_PRESENT_VALUE;
    }
    if (arguments.source != nullptr && (arguments.source->present & TQM_PRESENT_OPERATION) != 0) {
        leaf.operation = arguments.source->operation;
        leaf.present |= TQM_PRESENT_OPERATION;
    }
    node.subtree = children;
    node.subtree_count = static_cast<uint32_t>(given.size()) + 1;
    node.present |= TQM_PRESENT_SUBTREE;
    around_.hierarchy.children_moved(node);
    if (arguments.out_node != nullptr) {
        *arguments.out_node = &leaf;
    }
    return 0;
}

rcode Placing::add_read_leaf(rdl_tqm_datatree *tree, std::string_view path, const char *ns)
{
    OutputRecord *base = base_of(tree);
    const PathInfo *info = around_.paths.intern(path);
    if (base == nullptr || info == nullptr || info->below_value) {
        return TQM_ERR_BAD_ARGS;
    }
    const Naming naming{around_.namespaces.intern(ns), nullptr};
    const OutputRecord *node = nullptr;
    if (info->is_leaf_list()) {
        OutputRecord *parent =
            info->parent == nullptr ? &around_.output.base() : node_for(*info->parent, naming, false);
        node = around_.output.add_value(*parent, *info, naming.below, nullptr);
    } else {
        node = node_for(*info, naming, false);
    }
    AddArguments arguments;
    arguments.path = info->text.data();
    if (around_.observation) {
        tell(arguments, node, 0);
    }
    return 0;
}

OutputRecord *Placing::node_for(const PathInfo &info, const Naming &naming, bool addressed)
{
    if (info.is_list()) {
        return around_.kind.is_forward() ? forward_entry(info, naming, addressed)
                                         : reverse_entry(info, naming, addressed);
    }
    OutputRecord *parent = &around_.output.base();
    if (info.parent != nullptr && info.parent == last_parent_.info) {
        parent = last_parent_.node;
    } else if (info.parent != nullptr) {
        parent = node_for(*info.parent, naming, false);
        last_parent_ = {info.parent, parent};
    }
    if (OutputRecord *node = Output::find_named(*parent, info)) {
        return node;
    }
    return around_.output.add_named(*parent, info, naming.ns_of(info));
}

OutputRecord *Placing::below(OutputRecord &entry, const PathInfo &info, const Naming &naming)
{
    if (&info == entry.info()) {
        return &entry;
    }
    OutputRecord *parent = below(entry, *info.parent, naming);
    if (info.is_list()) {
        if (OutputRecord *current = current_entry(info); current != nullptr && current->outer == parent) {
            return current;
        }
        return around_.output.add_entry(*parent, info, naming.ns_of(info));
    }
    if (OutputRecord *node = Output::find_named(*parent, info)) {
        return node;
    }
    return around_.output.add_named(*parent, info, naming.ns_of(info));
}

// ---- Forward: one entry of the request is one instance in each native list that it leads to ----

OutputRecord *Placing::forward_entry(const PathInfo &list, const Naming &naming, bool addressed)
{
    Frame *innermost = around_.hierarchy.innermost_list();
    if (innermost == nullptr) {
        if (OutputRecord *entry = request_instances_.find(list)) {
            return entry;
        }
    }
    for (Frame *frame = innermost; frame != nullptr;
         frame = addressed ? nullptr : around_.hierarchy.outer_list(*frame)) {
        if (OutputRecord *entry = frame->instances.find(list)) {
            return entry;
        }
    }

    Frame *owner_frame = nullptr;
    Instances &owner = addressed && innermost != nullptr ? (owner_frame = innermost)->instances
                                                         : owner_of_new_entry(list, owner_frame);
    OutputRecord *parent = list.parent == nullptr ? &around_.output.base() : node_for(*list.parent, naming, false);
    OutputRecord *entry = around_.output.add_entry(*parent, list, naming.ns_of(list));
    last_parent_ = {};
    owner.add(list, *entry);
    if (around_.kind.is_read()) {
        give_key_from_walk(*entry, owner_frame);
    } else if (!list.schema->marker.empty() && &owner != &request_instances_) {
        marked_.push_back(entry);
    }
    return entry;
}

/// The innermost entry of the around_.hierarchy. In a read a list of the same name comes first: models that mirror each
/// other name their lists alike, and such an entry knows the key.
Instances &Placing::owner_of_new_entry(const PathInfo &list, Frame *&owner_frame)
{
    owner_frame = around_.hierarchy.innermost_list();
    if (owner_frame == nullptr) {
        return request_instances_;
    }
    for (Frame *frame = owner_frame; around_.kind.is_read() && frame != nullptr;
         frame = around_.hierarchy.outer_list(*frame)) {
        if (frame->path == nullptr || std::strcmp(frame->path->tag, list.tag) != 0) {
            continue;
        }
        owner_frame = frame;
        break;
    }
    return owner_frame->instances;
}

void Placing::give_key_from_walk(OutputRecord &entry, Frame *owner)
{
    const PathInfo &list = *entry.info();
    if (owner == nullptr || owner->path == nullptr || list.keys().size() != 1 ||
        std::strcmp(owner->path->tag, list.tag) != 0) {
        return;
    }
    const char *value = given_value(owner->child(list.keys().front()));
    if (value == nullptr) {
        return;
    }
    const PathInfo *key = around_.paths.intern_child(&list, list.keys().front());
    set_value(*around_.output.add_named(entry, *key, entry.ns()), around_.arena.keep(value));
}

/// Mappers add a deleted entry without its key: it is that of the native entry. Of several native keys it is the one
/// that the mapper has asked for.
void Placing::give_key_of_deleted(OutputRecord &entry, const AddArguments &arguments)
{
    const rdl_tqm_datatree *const source = arguments.source;
    Frame *const frame = around_.hierarchy.empty() ? nullptr : &around_.hierarchy.top();
    if (source == nullptr || frame == nullptr || frame->node != source || !takes_away(*source) ||
        frame->path == nullptr || !frame->path->is_list() || entry.info()->keys().size() != 1) {
        return;
    }
    const std::vector<std::string> &native_keys = frame->path->keys();
    const rdl_tqm_datatree *const native =
        native_keys.size() == 1 ? frame->child(native_keys.front()) : around_.hierarchy.looked_up_in(*source);
    const char *const key = given_value(native);
    if (key == nullptr) {
        return;
    }
    AddArguments leaf;
    leaf.tree = around_.output.handle_of(entry);
    leaf.path = key_path(*entry.info());
    leaf.ns = arguments.ns;
    leaf.value = key;
    add(leaf);
}

// ---- Reverse: bare paths go to the entries that list mappers made, found or stitched ----

OutputRecord *Placing::current_entry(const PathInfo &list) const
{
    const ListState *const state = find_state(list);
    OutputRecord *entry = state == nullptr ? nullptr : survivor(state->current);
    const PathInfo *outer = list.parent == nullptr ? nullptr : list.parent->list;
    if (entry == nullptr || outer == nullptr) {
        return entry;
    }
    return nearest_entry(*entry->outer) == current_entry(*outer) ? entry : nullptr;
}

OutputRecord *Placing::reverse_entry(const PathInfo &list, const Naming &naming, bool addressed)
{
    if (!addressed) {
        if (OutputRecord *current = current_entry(list)) {
            return current;
        }
    }
    OutputRecord *parent = list.parent == nullptr ? &around_.output.base() : node_for(*list.parent, naming, false);
    OutputRecord *entry = around_.output.add_entry(*parent, list, naming.ns_of(list));
    make_current(list, *entry);
    return entry;
}

void Placing::undo_to(std::size_t made_current)
{
    last_parent_ = {};
    for (; undo_.size() > made_current; undo_.pop_back()) {
        state_of(*undo_.back().list).current = undo_.back().previous;
    }
}

void Placing::make_current(const PathInfo &list, OutputRecord &entry)
{
    last_parent_ = {};
    undo_.push_back({&list, std::exchange(state_of(list).current, &entry)});
}

const Placing::ListState *Placing::find_state(const PathInfo &list) const
{
    const auto found = std::ranges::find(lists_, &list, &ListState::list);
    return found == lists_.end() ? nullptr : &*found;
}

Placing::ListState &Placing::state_of(const PathInfo &list)
{
    const auto found = std::ranges::find(lists_, &list, &ListState::list);
    return found == lists_.end() ? lists_.emplace_back(ListState{&list}) : *found;
}

OutputRecord *Placing::existing(const PathInfo *info) const
{
    if (info == nullptr) {
        return &around_.output.base();
    }
    if (info->is_list()) {
        return current_entry(*info);
    }
    OutputRecord *parent = existing(info->parent);
    return parent == nullptr ? nullptr : Output::find_named(*parent, *info);
}

OutputRecord *Placing::search(rdl_tqm_datatree *tree, const PathInfo &list, std::string_view key,
                              std::string_view value)
{
    OutputRecord *base = base_of(tree);
    OutputRecord *parent = nullptr;
    if (base != nullptr && base->info() != nullptr && list.parent != nullptr &&
        is_at_or_below(*list.parent, *base->info())) {
        std::vector<const PathInfo *> way;
        for (const PathInfo *at = list.parent; at != base->info(); at = at->parent) {
            way.push_back(at);
        }
        parent = base;
        while (parent != nullptr && !way.empty()) {
            parent = Output::find_named(*parent, *way.back());
            way.pop_back();
        }
    } else if (base != nullptr) {
        parent = existing(list.parent);
    }
    if (parent == nullptr) {
        return nullptr;
    }
    const PathInfo *const leaf =
        around_.paths.find_child(list, list.keys().size() == 1 ? std::string_view(list.keys().front()) : key);
    if (leaf == nullptr) {
        return nullptr;
    }
    OutputRecord *found = survivor(around_.output.find_by_key(*parent, *leaf, value));
    if (found != nullptr) {
        state_of(list).last_found = found;
    }
    return found;
}

OutputRecord *Placing::add_keyed_entry(rdl_tqm_datatree *tree, const PathInfo &list, const char *ns, const char *key,
                                       const char *value)
{
    AddArguments entry;
    rdl_tqm_datatree *added = nullptr;
    entry.tree = tree;
    entry.path = list.text.data();
    entry.ns = ns;
    entry.out_node = &added;
    entry.list_entry = 1;
    if (list.keys().size() == 1) {
        entry.value = value;
    }
    if (add(entry) != 0) {
        return nullptr;
    }
    if (list.keys().size() != 1) {
        AddArguments leaf;
        leaf.tree = added;
        leaf.path = around_.paths.intern_child(&list, key)->text.data();
        leaf.ns = ns;
        leaf.value = value;
        if (add(leaf) != 0) {
            return nullptr;
        }
    }
    return survivor(as_output(added));
}

} // namespace tqm
