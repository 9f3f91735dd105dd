// Placing: which node of the output an add means. Mappers give schema paths without keys; the instances of the lists on
// the way follow from where the walk stands.
#include <algorithm>
#include <cstring>

#include "request_impl.h"

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

OutputNode *survivor(OutputNode *node)
{
    while (node != nullptr && node->merged_into != nullptr) {
        node = node->merged_into;
    }
    return node;
}

} // namespace

OutputNode *Request::Impl::base_of(rdl_tqm_datatree *tree) const
{
    return survivor(as_output_node(tree));
}

/// A leaf of another module brings its namespace along below the list around it only.
Request::Impl::Naming Request::Impl::naming_for(const AddArguments &arguments, const PathInfo &info)
{
    Naming naming{intern_ns(arguments.ns), nullptr};
    if (arguments.flags == TQM_ADD_OTHER_MODULE && info.list != nullptr) {
        naming.split = info.list->depth;
        naming.above = naming.below;
        const PathInfo *top = &info;
        while (top->parent != nullptr) {
            top = top->parent;
        }
        for (const tqm_map_reg_info &registration : registrations) {
            if (std::strcmp(registration.native_top, top->tag) == 0) {
                naming.above = intern_ns(registration.native_ns);
            }
        }
    }
    return naming;
}

rcode Request::Impl::add(const AddArguments &arguments)
{
    const rcode rc = place(arguments);
    if (rc != 0) {
        tell(arguments, nullptr, rc);
    }
    return rc;
}

void Request::Impl::tell(const AddArguments &arguments, const OutputNode *node, rcode code)
{
    if (!observation) {
        return;
    }
    const bool settled = node != nullptr && !node->pending;
    observation.added({arguments.path, arguments.value, settled ? node->operation() : std::nullopt, node, code});
}

rcode Request::Impl::place(const AddArguments &arguments)
{
    if (arguments.tree == nullptr || arguments.path == nullptr || arguments.list_entry > 1) {
        return TQM_ERR_BAD_ARGS;
    }
    if (arguments.flags != TQM_ADD_PLAIN && arguments.flags != TQM_ADD_OTHER_MODULE &&
        arguments.flags != TQM_ADD_ENTRY_NAME) {
        return TQM_ERR_BAD_ARGS;
    }
    OutputNode *base = base_of(arguments.tree);
    if (base == nullptr) {
        return add_to_request_node(arguments);
    }
    PathInfo *info = paths.intern(arguments.path);
    if (info == nullptr || info->below_value) {
        return TQM_ERR_BAD_ARGS;
    }
    if (arguments.source != nullptr && without_effect.contains(arguments.source)) {
        return 0;
    }
    if (arguments.list_entry == 0) {
        settle();
    }

    const Naming naming = naming_for(arguments, *info);
    const bool addressed = arguments.list_entry == 1 && info->is_list;
    const bool inside = base->info != nullptr && is_at_or_below(*info, *base->info);
    const char *value = arena.keep(arguments.value);
    OutputNode *node = nullptr;
    if (info->is_leaf_list) {
        OutputNode *parent = &output.base();
        if (info->parent != nullptr) {
            parent = inside ? below(*base, *info->parent, naming) : node_for(*info->parent, naming, false);
        }
        node = arguments.out_node == nullptr ? output.add_value(*parent, *info, naming.ns_of(*info), value)
                                             : output.replace_last_value(*parent, *info, naming.ns_of(*info), value);
    } else {
        node = inside ? below(*base, *info, naming) : node_for(*info, naming, addressed);
    }

    if (is_forward_edit() && !takes_value(*node, arguments)) {
        return 0;
    }
    if (!info->is_list) {
        set_value(*node, value);
    }
    if (!(addressed && direction == Direction::forward)) {
        set_operation(*node, arguments.source);
    }
    settle_entry_operation(*node, arguments);
    tell(arguments, node, 0);
    if (addressed && direction == Direction::reverse && !is_read() && value == nullptr) {
        give_key_of_deleted(*node, arguments);
    }
    if (info->companions != nullptr && widened) {
        for (const std::string &companion : *info->companions) {
            read_beside(*node->parent, companion, naming);
        }
    }
    if (info->is_list && value != nullptr && info->keys->size() == 1) {
        AddArguments key = arguments;
        const std::string path = std::string(info->text) + '/' + info->keys->front();
        key.path = path.c_str();
        key.out_node = nullptr;
        key.list_entry = arguments.list_entry;
        if (const rcode rc = add(key); rc != 0) {
            return rc;
        }
    }
    node = survivor(node);
    if (node->dropped && node->parent->merged_into != nullptr) {
        node = Output::find_named(*survivor(node->parent), *info);
    }
    if (arguments.out_node != nullptr) {
        *arguments.out_node = &node->record;
    }
    return 0;
}

void Request::Impl::read_beside(OutputNode &parent, const std::string &path, const Naming &naming)
{
    PathInfo *const info = paths.intern(path);
    if (info != nullptr && info->parent == parent.info && Output::find_named(parent, *info) == nullptr) {
        output.add_named(parent, *info, naming.ns_of(*info));
    }
}

rcode Request::Impl::add_to_request_node(const AddArguments &arguments)
{
    const char *tag = arguments.path[0] == '/' ? arguments.path + 1 : arguments.path;
    if (tag[0] == '\0' || std::strchr(tag, '/') != nullptr) {
        return TQM_ERR_BAD_ARGS;
    }
    rdl_tqm_datatree &node = *arguments.tree;
    const bool has_children = (node.present & TQM_PRESENT_SUBTREE) != 0 && node.subtree != nullptr;
    const uint32_t count = has_children ? node.subtree_count : 0;
    auto *children = arena.make_array<rdl_tqm_datatree>(count + std::size_t{1});
    std::copy_n(node.subtree, count, children);

    rdl_tqm_datatree &leaf = children[count];
    leaf.tag = arena.keep(tag);
    leaf.ns = intern_ns(arguments.ns);
    leaf.value = arena.keep(arguments.value);
    if (leaf.value != nullptr) {
        leaf.present |= TQM_PRESENT_VALUE;
    }
    if (arguments.source != nullptr && (arguments.source->present & TQM_PRESENT_OPERATION) != 0) {
        leaf.operation = arguments.source->operation;
        leaf.present |= TQM_PRESENT_OPERATION;
    }
    node.subtree = children;
    node.subtree_count = count + 1;
    node.present |= TQM_PRESENT_SUBTREE;
    hierarchy.children_moved(node);
    if (arguments.out_node != nullptr) {
        *arguments.out_node = &leaf;
    }
    return 0;
}

rcode Request::Impl::add_read_leaf(rdl_tqm_datatree *tree, std::string_view path, const char *ns)
{
    OutputNode *base = base_of(tree);
    PathInfo *info = paths.intern(path);
    if (base == nullptr || info == nullptr || info->below_value) {
        return TQM_ERR_BAD_ARGS;
    }
    const Naming naming{intern_ns(ns), nullptr};
    const OutputNode *node = nullptr;
    if (info->is_leaf_list) {
        OutputNode *parent = info->parent == nullptr ? &output.base() : node_for(*info->parent, naming, false);
        node = output.add_value(*parent, *info, naming.below, nullptr);
    } else {
        node = node_for(*info, naming, false);
    }
    AddArguments arguments;
    arguments.path = info->text.data();
    tell(arguments, node, 0);
    return 0;
}

OutputNode *Request::Impl::node_for(PathInfo &info, const Naming &naming, bool addressed)
{
    if (info.is_list) {
        return direction == Direction::forward ? forward_entry(info, naming, addressed)
                                               : reverse_entry(info, naming, addressed);
    }
    OutputNode *parent = info.parent == nullptr ? &output.base() : node_for(*info.parent, naming, false);
    if (OutputNode *node = Output::find_named(*parent, info)) {
        return node;
    }
    return output.add_named(*parent, info, naming.ns_of(info));
}

OutputNode *Request::Impl::below(OutputNode &entry, PathInfo &info, const Naming &naming)
{
    if (&info == entry.info) {
        return &entry;
    }
    OutputNode *parent = below(entry, *info.parent, naming);
    if (info.is_list) {
        if (OutputNode *current = current_entry(info); current != nullptr && current->parent == parent) {
            return current;
        }
        return output.add_entry(*parent, info, naming.ns_of(info));
    }
    if (OutputNode *node = Output::find_named(*parent, info)) {
        return node;
    }
    return output.add_named(*parent, info, naming.ns_of(info));
}

OutputNode *Request::Impl::find_below(OutputNode &entry, const PathInfo &info)
{
    if (&info == entry.info) {
        return &entry;
    }
    OutputNode *const parent = find_below(entry, *info.parent);
    return parent == nullptr ? nullptr : Output::find_named(*parent, info);
}

// ---- Forward: one entry of the request is one instance in each native list that it leads to ----

OutputNode *Request::Impl::forward_entry(PathInfo &list, const Naming &naming, bool addressed)
{
    Frame *innermost = hierarchy.innermost_list();
    if (innermost == nullptr) {
        if (OutputNode *entry = request_instances.find(list)) {
            return entry;
        }
    }
    for (Frame *frame = innermost; frame != nullptr; frame = addressed ? nullptr : hierarchy.outer_list(*frame)) {
        if (OutputNode *entry = frame->instances.find(list)) {
            return entry;
        }
    }

    Frame *owner_frame = nullptr;
    Instances &owner = addressed && innermost != nullptr ? (owner_frame = innermost)->instances
                                                         : owner_of_new_entry(list, owner_frame);
    OutputNode *parent = list.parent == nullptr ? &output.base() : node_for(*list.parent, naming, false);
    OutputNode *entry = output.add_entry(*parent, list, naming.ns_of(list));
    owner.add(list, *entry);
    if (is_read()) {
        give_key_from_walk(*entry, owner_frame);
    } else if (list.marker != nullptr && &owner != &request_instances) {
        marked.push_back(entry);
    }
    return entry;
}

/// The innermost entry of the hierarchy. In a read a list of the same name comes first: models that mirror each other
/// name their lists alike, and such an entry knows the key.
Instances &Request::Impl::owner_of_new_entry(const PathInfo &list, Frame *&owner_frame)
{
    owner_frame = hierarchy.innermost_list();
    if (owner_frame == nullptr) {
        return request_instances;
    }
    for (Frame *frame = owner_frame; is_read() && frame != nullptr; frame = hierarchy.outer_list(*frame)) {
        if (frame->path == nullptr || std::strcmp(frame->path->tag, list.tag) != 0) {
            continue;
        }
        owner_frame = frame;
        break;
    }
    return owner_frame->instances;
}

void Request::Impl::give_key_from_walk(OutputNode &entry, Frame *owner)
{
    const PathInfo &list = *entry.info;
    if (owner == nullptr || owner->path == nullptr || list.keys->size() != 1 ||
        std::strcmp(owner->path->tag, list.tag) != 0) {
        return;
    }
    const char *value = given_value(owner->child(list.keys->front()));
    if (value == nullptr) {
        return;
    }
    PathInfo *key = paths.intern(std::string(list.text) + '/' + list.keys->front());
    set_value(*output.add_named(entry, *key, entry.record.ns), arena.keep(value));
}

/// Mappers add a deleted entry without its key: it is that of the native entry. Of several native keys it is the one
/// that the mapper has asked for.
void Request::Impl::give_key_of_deleted(OutputNode &entry, const AddArguments &arguments)
{
    const rdl_tqm_datatree *const source = arguments.source;
    Frame *const frame = hierarchy.empty() ? nullptr : &hierarchy.top();
    if (source == nullptr || frame == nullptr || frame->node != source || !takes_away(*source) ||
        frame->path == nullptr || frame->path->keys == nullptr || entry.info->keys->size() != 1) {
        return;
    }
    const std::vector<std::string> &native_keys = *frame->path->keys;
    const rdl_tqm_datatree *const native =
        native_keys.size() == 1 ? frame->child(native_keys.front()) : asked_for.child_of(*source);
    const char *const key = given_value(native);
    if (key == nullptr) {
        return;
    }
    const std::string path = std::string(entry.info->text) + '/' + entry.info->keys->front();
    AddArguments leaf;
    leaf.tree = &entry.record;
    leaf.path = path.c_str();
    leaf.ns = arguments.ns;
    leaf.value = key;
    add(leaf);
}

// ---- Reverse: bare paths go to the entries that list mappers made, found or stitched ----

OutputNode *Request::Impl::current_entry(const PathInfo &list) const
{
    OutputNode *entry = survivor(list.current);
    const PathInfo *outer = list.parent == nullptr ? nullptr : list.parent->list;
    if (entry == nullptr || outer == nullptr) {
        return entry;
    }
    return nearest_entry(*entry->parent) == current_entry(*outer) ? entry : nullptr;
}

OutputNode *Request::Impl::reverse_entry(PathInfo &list, const Naming &naming, bool addressed)
{
    if (!addressed) {
        if (OutputNode *current = current_entry(list)) {
            return current;
        }
    }
    OutputNode *parent = list.parent == nullptr ? &output.base() : node_for(*list.parent, naming, false);
    OutputNode *entry = output.add_entry(*parent, list, naming.ns_of(list));
    make_current(list, *entry);
    return entry;
}

void Request::Impl::make_current(PathInfo &list, OutputNode &entry)
{
    undo.push_back({&list, list.current});
    list.current = &entry;
}

OutputNode *Request::Impl::existing(PathInfo *info)
{
    if (info == nullptr) {
        return &output.base();
    }
    if (info->is_list) {
        return current_entry(*info);
    }
    OutputNode *parent = existing(info->parent);
    return parent == nullptr ? nullptr : Output::find_named(*parent, *info);
}

OutputNode *Request::Impl::search(rdl_tqm_datatree *tree, PathInfo &list, std::string_view key, std::string_view value)
{
    OutputNode *base = base_of(tree);
    OutputNode *parent = nullptr;
    if (base != nullptr && base->info != nullptr && list.parent != nullptr &&
        is_at_or_below(*list.parent, *base->info)) {
        std::vector<PathInfo *> way;
        for (PathInfo *at = list.parent; at != base->info; at = at->parent) {
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
    const std::string_view leaf = list.keys->size() == 1 ? std::string_view(list.keys->front()) : key;
    OutputNode *found = survivor(output.find_by_key(Output::find_slot(*parent, list), leaf, value));
    if (found != nullptr) {
        list.last_found = found;
    }
    return found;
}

OutputNode *Request::Impl::add_keyed_entry(rdl_tqm_datatree *tree, PathInfo &list, const char *ns, const char *key,
                                           const char *value)
{
    AddArguments entry;
    rdl_tqm_datatree *added = nullptr;
    entry.tree = tree;
    entry.path = list.text.data();
    entry.ns = ns;
    entry.out_node = &added;
    entry.list_entry = 1;
    if (list.keys->size() == 1) {
        entry.value = value;
    }
    if (add(entry) != 0) {
        return nullptr;
    }
    if (list.keys->size() != 1) {
        const std::string path = std::string(list.text) + '/' + key;
        AddArguments leaf;
        leaf.tree = added;
        leaf.path = path.c_str();
        leaf.ns = ns;
        leaf.value = value;
        if (add(leaf) != 0) {
            return nullptr;
        }
    }
    return survivor(as_output_node(added));
}

void Request::Impl::index_key(OutputNode &leaf, const char *old_value)
{
    OutputNode &entry = *leaf.parent;
    if (!entry.list_entry) {
        return;
    }
    if (old_value != nullptr) {
        output.forget_key(entry, leaf.record.tag, old_value);
    }
    if (leaf.record.value == nullptr) {
        return;
    }
    OutputNode *known = output.index_by_key(entry, leaf.record.tag, leaf.record.value);
    if (known != nullptr && entry.info->keys->size() == 1) {
        output.absorb(*known, entry);
    }
}

} // namespace tqm
