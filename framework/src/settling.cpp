// What an add does to the node that it means: its value, its operation, and what that says of the entry around it.
#include <cstring>
#include <optional>

#include "request_impl.h"

namespace tqm
{

namespace
{

bool takes_away(std::optional<uint32_t> operation)
{
    return operation && tqm::takes_away(*operation);
}

} // namespace

void Request::Impl::set_value(OutputNode &node, const char *value)
{
    const char *old = node.record.value;
    // A key is what its entry is known by. The leaf that repeats it under config may be deleted or asked for without
    // its value; that must not turn one entry into all of them.
    if (value == nullptr && node.info->is_key && old != nullptr) {
        return;
    }
    node.record.value = value;
    if (value == nullptr) {
        node.record.present &= static_cast<uint16_t>(~TQM_PRESENT_VALUE);
    } else {
        node.record.present |= TQM_PRESENT_VALUE;
    }
    if (direction == Direction::reverse && node.info->is_key) {
        index_key(node, old);
    }
}

bool Request::Impl::is_leaf_list_value(const rdl_tqm_datatree &source)
{
    if (in_fill() || hierarchy.empty() || hierarchy.top().path == nullptr) {
        return false;
    }
    const PathInfo *const info = hierarchy.top().path->child(source.tag);
    return info != nullptr && info->is_leaf_list();
}

/// Values of one leaf-list of the client's may meet in one native leaf. A removal of one then takes nothing of another
/// that is set, in whatever order they come. False if the add changes nothing.
bool Request::Impl::takes_value(OutputNode &node, const AddArguments &arguments)
{
    const rdl_tqm_datatree *const source = arguments.source;
    if (source == nullptr || !node.info->is_leaf() || !is_leaf_list_value(*source)) {
        return true;
    }
    const rdl_tqm_datatree *const before = node.origin_node;
    const bool set_before = before != nullptr && before != source && std::strcmp(before->tag, source->tag) == 0 &&
                            !takes_away(node.operation());
    if (takes_away(*source)) {
        return !set_before;
    }
    if (one_too_many == nullptr && (set_before || beside_stored.contains(source))) {
        one_too_many = source;
    }
    return true;
}

/// An add that gives neither source nor value sets nothing where the walk stands in a removal: it is part of that.
uint32_t Request::Impl::operation_without_source(const OutputNode &node, const rdl_tqm_datatree *walked) const
{
    const bool removal = direction == Direction::forward && node.info->is_leaf() && node.record.value == nullptr &&
                         walked != nullptr && takes_away(*walked);
    return removal ? walked->operation : uint32_t{TQM_OP_MERGE};
}

void Request::Impl::set_operation(OutputNode &node, const rdl_tqm_datatree *source)
{
    if (is_read() && !node.info->schema->secret) {
        return;
    }
    const rdl_tqm_datatree *const origin = source == nullptr ? walked_node() : source;
    node.origin_node = origin;
    if (is_read()) {
        return;
    }
    const bool given = source != nullptr && (source->present & TQM_PRESENT_OPERATION) != 0;
    node.record.operation = given               ? source->operation
                            : source == nullptr ? operation_without_source(node, origin)
                                                : uint32_t{TQM_OP_MERGE};
    // The leaf that repeats the key goes with its container: that takes no entry away which the request names.
    const bool names_entry = direction == Direction::forward && node.info->is_key && node.record.value != nullptr;
    if (names_entry && takes_away(node.record.operation)) {
        node.record.operation = TQM_OP_MERGE;
    }
    node.record.present |= TQM_PRESENT_OPERATION;
}

void Request::Impl::settle_entry_operation(OutputNode &node, const AddArguments &arguments)
{
    if (!is_forward_edit()) {
        return;
    }
    OutputNode *entry = nearest_entry(node);
    if (entry == nullptr) {
        return;
    }
    Frame *const frame = hierarchy.innermost_list();
    entry->origin_node = frame == nullptr ? arguments.source : frame->node;
    const auto give = [entry](uint32_t operation) {
        entry->record.operation = operation;
        entry->record.present |= TQM_PRESENT_OPERATION;
        entry->pending = false;
    };
    if (arguments.list_entry == 1 && arguments.source != nullptr) {
        const bool given = (arguments.source->present & TQM_PRESENT_OPERATION) != 0;
        // A key that is named in a removal whose list mapper adds nothing: the native entry stays, and is led through.
        const bool led_through = !given && takes_away(context.record.list_operation);
        give(given ? arguments.source->operation : led_through ? operation_none : uint32_t{TQM_OP_MERGE});
    } else if (arguments.list_entry == 1) {
        if (!entry->pending) {
            pending.push_back(entry);
        }
        entry->pending = true;
    } else if (node.info->is_key && (entry->record.present & TQM_PRESENT_OPERATION) == 0) {
        give(context.record.list_operation);
    }
}

/// What makes an entry the client's goes with the entry, and with nothing below it.
void Request::Impl::settle_marker(OutputNode &entry)
{
    const uint32_t operation = entry.operation().value_or(operation_none);
    if (takes_away(operation)) {
        return;
    }
    PathInfo *const info = paths.intern(entry.info->schema->marker);
    if (operation == operation_none) {
        OutputNode *marker = find_below(entry, *info);
        if (marker != nullptr && takes_away(marker->operation()) && marker->origin_node != entry.origin_node) {
            marker->record.operation = operation_none;
        }
        return;
    }
    OutputNode *const marker = below(
        entry, *info, {info->schema->ns.empty() ? entry.record.ns : intern_ns(info->schema->ns.c_str()), nullptr});
    if (!marker->operation() || takes_away(marker->operation())) {
        marker->record.operation = operation;
        marker->record.present |= TQM_PRESENT_OPERATION;
    }
}

void Request::Impl::settle_markers()
{
    settle();
    for (OutputNode *entry : marked) {
        settle_marker(*entry);
    }
}

void Request::Impl::settle()
{
    for (OutputNode *entry : pending) {
        if (!entry->pending) {
            continue;
        }
        entry->pending = false;
        entry->record.operation = context.record.list_operation;
        entry->record.present |= TQM_PRESENT_OPERATION;
    }
    pending.clear();
}

} // namespace tqm
