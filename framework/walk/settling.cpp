// What an add does to the node that it means: its value, its operation, and what that says of the entry around it.
#include "walk/placing.h"

#include <cstring>
#include <optional>

namespace tqm
{

namespace
{

bool takes_away(std::optional<uint32_t> operation)
{
    return operation && tqm::takes_away(*operation);
}

OutputRecord *find_below(OutputRecord &entry, const PathInfo &info)
{
    if (&info == entry.info()) {
        return &entry;
    }
    OutputRecord *const parent = find_below(entry, *info.parent);
    return parent == nullptr ? nullptr : Output::find_named(*parent, info);
}

} // namespace

void Placing::index_key(OutputRecord &leaf, const char *old_value)
{
    OutputRecord &entry = *leaf.outer;
    if (!entry.list_entry) {
        return;
    }
    if (old_value != nullptr) {
        around_.output.forget_key(leaf, old_value);
    }
    if (leaf.value == nullptr) {
        return;
    }
    OutputRecord *known = around_.output.index_by_key(leaf);
    if (known != nullptr && entry.info()->keys().size() == 1) {
        last_parent_ = {};
        around_.output.absorb(*known->parent_part(), *entry.parent_part());
    }
}

void Placing::set_value(OutputRecord &node, const char *value)
{
    const char *old = node.value;
    // A key is what its entry is known by. The leaf that repeats it under config may be deleted or asked for without
    // its value; that must not turn one entry into all of them.
    if (value == nullptr && node.info()->is_key && old != nullptr) {
        return;
    }
    node.value = value;
    if (!around_.kind.is_forward() && node.info()->is_key) {
        index_key(node, old);
    }
}

bool Placing::is_leaf_list_value(const rdl_tqm_datatree &source)
{
    if (in_fill() || around_.hierarchy.empty() || around_.hierarchy.top().path == nullptr) {
        return false;
    }
    const PathInfo *const info = around_.hierarchy.top().path->child(source.tag);
    return info != nullptr && info->is_leaf_list();
}

/// Values of one leaf-list of the client's may meet in one native leaf. A removal of one then takes nothing of another
/// that is set, in whatever order they come. False if the add changes nothing.
bool Placing::takes_value(OutputRecord &node, const AddArguments &arguments)
{
    const rdl_tqm_datatree *const source = arguments.source;
    const rdl_tqm_datatree *const before = node.origin_node;
    if (source == nullptr || !node.info()->is_leaf() || !is_leaf_list_value(*source)) {
        return true;
    }
    const bool set_before = before != nullptr && before != source && std::strcmp(before->tag, source->tag) == 0 &&
                            !takes_away(node.operation());
    if (takes_away(*source)) {
        return !set_before;
    }
    if (one_too_many_ == nullptr && (set_before || beside_stored_.contains(source))) {
        one_too_many_ = source;
    }
    return true;
}

/// An add that gives neither source nor value sets nothing where the walk stands in a removal: it is part of that.
uint32_t Placing::operation_without_source(const OutputRecord &node, const rdl_tqm_datatree *walked) const
{
    const bool removal = around_.kind.is_forward() && node.info()->is_leaf() && node.value == nullptr &&
                         walked != nullptr && takes_away(*walked);
    return removal ? walked->operation : uint32_t{TQM_OP_MERGE};
}

void Placing::set_operation(OutputRecord &node, const rdl_tqm_datatree *source)
{
    if (around_.kind.is_read() && !node.info()->schema->secret) {
        return;
    }
    const rdl_tqm_datatree *const origin = source == nullptr ? around_.hierarchy.walked_node(in_fill()) : source;
    node.origin_node = origin;
    if (around_.kind.is_read()) {
        return;
    }
    const bool given = source != nullptr && (source->present & TQM_PRESENT_OPERATION) != 0;
    const uint32_t operation = given               ? source->operation
                               : source == nullptr ? operation_without_source(node, origin)
                                                   : uint32_t{TQM_OP_MERGE};
    // The leaf that repeats the key goes with its container: that takes no entry away which the request names.
    const bool names_entry = around_.kind.is_forward() && node.info()->is_key && node.value != nullptr;
    node.set_operation(names_entry && tqm::takes_away(operation) ? uint32_t{TQM_OP_MERGE} : operation);
}

void Placing::settle_entry_operation(OutputRecord &node, OutputRecord &entry, const AddArguments &arguments)
{
    const auto give = [&entry](uint32_t operation) {
        entry.set_operation(operation);
        entry.pending = false;
    };
    if (arguments.list_entry == 1 && arguments.source != nullptr) {
        const bool given = (arguments.source->present & TQM_PRESENT_OPERATION) != 0;
        // A key that is named in a removal whose list mapper adds nothing: the native entry stays, and is led through.
        const bool led_through = !given && takes_away(around_.context.list_operation);
        give(given ? arguments.source->operation : led_through ? operation_none : uint32_t{TQM_OP_MERGE});
    } else if (arguments.list_entry == 1) {
        if (!entry.pending) {
            pending_.push_back(&entry);
        }
        entry.pending = true;
    } else if (node.info()->is_key && !entry.operation()) {
        give(around_.context.list_operation);
    }
}

/// What makes an entry the client's goes with the entry, and with nothing below it.
void Placing::settle_marker(OutputRecord &entry)
{
    const uint32_t operation = entry.operation().value_or(operation_none);
    if (takes_away(operation)) {
        return;
    }
    const PathInfo *const info = around_.paths.intern(entry.info()->schema->marker);
    if (operation == operation_none) {
        OutputRecord *marker = find_below(entry, *info);
        if (marker != nullptr && takes_away(marker->operation()) && marker->origin_node != entry.origin_node) {
            marker->set_operation(operation_none);
        }
        return;
    }
    OutputRecord *const marker =
        below(entry, *info,
              {info->schema->ns.empty() ? entry.ns() : around_.namespaces.intern(info->schema->ns.c_str()), nullptr});
    if (!marker->operation() || takes_away(marker->operation())) {
        marker->set_operation(operation);
    }
}

void Placing::settle_markers()
{
    settle();
    for (OutputRecord *entry : marked_) {
        settle_marker(*entry);
    }
}

void Placing::settle()
{
    for (OutputRecord *entry : pending_) {
        if (!entry->pending) {
            continue;
        }
        entry->pending = false;
        entry->set_operation(around_.context.list_operation);
    }
    pending_.clear();
}

} // namespace tqm
