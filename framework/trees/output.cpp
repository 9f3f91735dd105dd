#include "trees/output.h"

namespace tqm
{

// ---- What others see of a node ----

OutputNode::Iterator &OutputNode::Iterator::operator++()
{
    node_ = OutputRecord::present(record_of(*node_).next);
    return *this;
}

const char *OutputNode::tag() const
{
    return record_of(*this).record.tag;
}

const char *OutputNode::ns() const
{
    return record_of(*this).record.ns;
}

const char *OutputNode::value() const
{
    return record_of(*this).record.value;
}

std::optional<uint32_t> OutputNode::operation() const
{
    return record_of(*this).operation();
}

const rdl_tqm_datatree *OutputNode::origin() const
{
    return record_of(*this).origin_node;
}

const OutputNode *OutputNode::parent() const
{
    const OutputRecord *const outer = record_of(*this).outer;
    return outer == nullptr || outer->info == nullptr ? nullptr : outer;
}

OutputNode::Children OutputNode::children() const
{
    return {Iterator(OutputRecord::present(record_of(*this).first_child))};
}

bool OutputNode::is_list_entry() const
{
    return record_of(*this).list_entry;
}

bool OutputNode::is_key() const
{
    return record_of(*this).record.is_key != 0;
}

const OutputNode &OutputNode::joined() const
{
    const OutputRecord *record = &record_of(*this);
    while (record->merged_into != nullptr) {
        record = record->merged_into;
    }
    return *record;
}

std::string_view OutputNode::path() const
{
    const PathInfo *const info = record_of(*this).info;
    return info == nullptr ? std::string_view("/") : info->text;
}

// ---- Making and finding nodes ----

Output::Output(Arena &arena) : arena_(arena), base_(arena.make<OutputRecord>())
{
    base_->record.tag = "";
    base_->record.ns = "";
    base_->record.present = output_present;
    base_->record.role_present = output_role;
}

OutputRecord *Output::find_named(const OutputRecord &parent, const PathInfo &info)
{
    OutputRecord *node = parent.first_named;
    while (node != nullptr && node->info != &info) {
        node = node->next_named;
    }
    return node;
}

ListSlot *Output::find_slot(const OutputRecord &parent, const PathInfo &info)
{
    ListSlot *slot = parent.slots;
    while (slot != nullptr && slot->info != &info) {
        slot = slot->next;
    }
    return slot;
}

ListSlot &Output::slot(OutputRecord &parent, PathInfo &info)
{
    if (ListSlot *found = find_slot(parent, info)) {
        return *found;
    }
    auto *slot = arena_.make<ListSlot>();
    slot->info = &info;
    slot->next = parent.slots;
    parent.slots = slot;
    return *slot;
}

OutputRecord *Output::append(OutputRecord &parent, const PathInfo &info, const char *ns)
{
    auto *node = arena_.make<OutputRecord>();
    node->record.tag = info.tag;
    node->record.ns = ns;
    node->record.present = output_present;
    node->record.role_present = output_role;
    node->info = &info;
    node->outer = &parent;
    if (info.is_key) {
        node->record.is_key = 1;
        node->record.present |= TQM_PRESENT_IS_KEY;
    }
    if (parent.last_child == nullptr) {
        parent.first_child = node;
    } else {
        parent.last_child->next = node;
    }
    parent.last_child = node;
    return node;
}

OutputRecord *Output::add_named(OutputRecord &parent, const PathInfo &info, const char *ns)
{
    OutputRecord *node = append(parent, info, ns);
    node->next_named = parent.first_named;
    parent.first_named = node;
    return node;
}

OutputRecord *Output::add_entry(OutputRecord &parent, PathInfo &info, const char *ns)
{
    OutputRecord *node = append(parent, info, ns);
    node->list_entry = true;
    slot(parent, info).last = node;
    return node;
}

OutputRecord *Output::add_value(OutputRecord &parent, PathInfo &info, const char *ns, const char *value)
{
    ListSlot &values = slot(parent, info);
    const Key key{&values, value == nullptr ? "" : "=", value == nullptr ? "" : value};
    const auto [position, added] = index_.try_emplace(key, nullptr);
    if (added) {
        position->second = append(parent, info, ns);
    }
    values.last = position->second;
    return values.last;
}

OutputRecord *Output::replace_last_value(OutputRecord &parent, PathInfo &info, const char *ns, const char *value)
{
    ListSlot &values = slot(parent, info);
    OutputRecord *last = values.last;
    if (last == nullptr || value == nullptr) {
        return add_value(parent, info, ns, value);
    }
    const char *old = last->record.value;
    if (OutputRecord *same = find_value(&values, value)) {
        if (same != last) {
            last->dropped = true;
        }
        if (same != last && old != nullptr) {
            index_.erase(Key{&values, "=", old});
        }
        values.last = same;
        return same;
    }
    index_.erase(Key{&values, old == nullptr ? "" : "=", old == nullptr ? "" : old});
    index_.emplace(Key{&values, "=", value}, last);
    return last;
}

OutputRecord *Output::find_by_key(const ListSlot *slot, std::string_view key, std::string_view value) const
{
    if (slot == nullptr) {
        return nullptr;
    }
    const auto found = index_.find(Key{slot, key, value});
    return found == index_.end() ? nullptr : found->second;
}

OutputRecord *Output::find_value(const ListSlot *slot, std::string_view value) const
{
    return find_by_key(slot, "=", value);
}

OutputRecord *Output::index_by_key(OutputRecord &entry, std::string_view key, std::string_view value)
{
    const auto [position, added] = index_.try_emplace(Key{find_slot(*entry.outer, *entry.info), key, value}, &entry);
    return added || position->second == &entry ? nullptr : position->second;
}

void Output::forget_key(OutputRecord &entry, std::string_view key, std::string_view value)
{
    const auto found = index_.find(Key{find_slot(*entry.outer, *entry.info), key, value});
    if (found != index_.end() && found->second == &entry) {
        index_.erase(found);
    }
}

void Output::absorb(OutputRecord &into, OutputRecord &from)
{
    OutputRecord *next = nullptr;
    for (OutputRecord *child = from.first_child; child != nullptr; child = next) {
        next = child->next;
        if (child->dropped) {
            continue;
        }
        OutputRecord *there = child->list_entry ? nullptr : find_named(into, *child->info);
        if (there == nullptr) {
            child->outer = &into;
            child->next = nullptr;
            (into.last_child == nullptr ? into.first_child : into.last_child->next) = child;
            into.last_child = child;
            if (!child->list_entry && !child->info->is_leaf_list()) {
                child->next_named = into.first_named;
                into.first_named = child;
            }
            continue;
        }
        if (child->record.value != nullptr) {
            there->record.value = child->record.value;
            there->record.present |= TQM_PRESENT_VALUE;
        }
        absorb(*there, *child);
    }
    if (into.slots == nullptr) {
        into.slots = from.slots;
    }
    from.first_child = from.last_child = from.first_named = nullptr;
    from.slots = nullptr;
    from.dropped = true;
    from.merged_into = &into;
}

} // namespace tqm
