#include "trees/output.h"

#include <cstring>
#include <utility>

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
    return record_of(*this).tag();
}

const char *OutputNode::ns() const
{
    return record_of(*this).ns();
}

const char *OutputNode::value() const
{
    return record_of(*this).value;
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
    return outer == nullptr || outer->info() == nullptr ? nullptr : outer;
}

OutputNode::Children OutputNode::children() const
{
    return {Iterator(OutputRecord::present(record_of(*this).first_child()))};
}

bool OutputNode::is_list_entry() const
{
    return record_of(*this).list_entry;
}

bool OutputNode::is_key() const
{
    return record_of(*this).is_key();
}

const OutputNode &OutputNode::joined() const
{
    return *survivor(const_cast<OutputRecord *>(&record_of(*this)));
}

std::string_view OutputNode::path() const
{
    const PathInfo *const info = record_of(*this).info();
    return info == nullptr ? std::string_view("/") : info->text;
}

// ---- Making and finding nodes ----

namespace
{

/// One that is no entry of a list, and no value of a leaf-list.
bool is_named(const OutputRecord &node)
{
    return !node.list_entry && !node.info()->is_leaf_list();
}

} // namespace

OutputRecord *survivor_of_dropped(OutputRecord &node)
{
    if (OutputParent *parent = node.parent_part()) {
        while (parent->merged_into != nullptr) {
            parent = parent->merged_into;
        }
        return parent;
    }
    OutputRecord *const outer = survivor(node.outer);
    return outer == node.outer ? &node : Output::find_named(*outer, *node.info());
}

Output::Output(Arena &arena) : arena_(arena), base_(arena.make<OutputParent>())
{
    base_->name = arena.make<NodeName>();
}

rdl_tqm_datatree *Output::handle_of(OutputRecord &node)
{
    OutputParent *const parent = node.parent_part();
    OutputHandle *handle = parent == nullptr ? nullptr : parent->handle;
    if (handle == nullptr) {
        handle = arena_.make<OutputHandle>();
        handle->node = &node;
        handle->record.tag = node.tag();
        handle->record.ns = node.ns();
        handle->record.role_present = output_role;
    }
    if (parent != nullptr) {
        parent->handle = handle;
    }
    rdl_tqm_datatree &record = handle->record;
    record.value = node.value;
    record.operation = node.operation().value_or(0);
    record.is_key = node.is_key() ? 1 : 0;
    record.present = static_cast<uint16_t>(output_present | (node.value == nullptr ? 0 : TQM_PRESENT_VALUE) |
                                           (node.operation() ? TQM_PRESENT_OPERATION : 0) |
                                           (node.is_key() ? TQM_PRESENT_IS_KEY : 0));
    return &record;
}

OutputRecord *Output::find_named(const OutputRecord &outer, const PathInfo &info)
{
    const OutputParent *const parent = outer.parent_part();
    if (parent == nullptr) {
        return nullptr;
    }
    if (parent->slots == nullptr) {
        OutputRecord *node = parent->first_one;
        while (node != nullptr && node->info() != &info) {
            node = node->next;
        }
        return node;
    }
    const NamedChild *child = parent->named;
    while (child != nullptr && child->node->info() != &info) {
        child = child->next;
    }
    return child == nullptr ? nullptr : child->node;
}

ListSlot *Output::find_slot(const OutputRecord &outer, const PathInfo &info)
{
    const OutputParent *const parent = outer.parent_part();
    ListSlot *slot = parent == nullptr ? nullptr : parent->slots;
    while (slot != nullptr && slot->info != &info) {
        slot = slot->next;
    }
    return slot;
}

/// From the first slot on a node's other children are found through a chain of their own, as there may be many entries.
ListSlot &Output::slot(OutputParent &outer, const PathInfo &info)
{
    if (ListSlot *found = find_slot(outer, info)) {
        return *found;
    }
    auto *slot = arena_.make<ListSlot>();
    slot->info = &info;
    slot->next = outer.slots;
    const bool is_first = std::exchange(outer.slots, slot) == nullptr;
    for (OutputRecord *child = is_first ? outer.first_one : nullptr; child != nullptr; child = child->next) {
        note_named(outer, *child);
    }
    return *slot;
}

void Output::note_named(OutputParent &outer, OutputRecord &node)
{
    if (outer.slots != nullptr) {
        auto *child = arena_.make<NamedChild>();
        child->node = &node;
        child->next = std::exchange(outer.named, child);
    }
}

const NodeName *Output::name_of(const PathInfo &info, const char *ns)
{
    if (info.usual.ns == ns) {
        return &info.usual;
    }
    const NodeName name{&info, ns};
    const auto known = std::ranges::find(other_names_, name);
    return known != other_names_.end() ? &*known : &other_names_.emplace_back(name);
}

OutputRecord *Output::append(OutputParent &outer, const PathInfo &info, const char *ns)
{
    const bool holds_value = info.is_leaf() || info.is_leaf_list();
    OutputRecord *const node = holds_value ? arena_.make<OutputRecord>() : arena_.make<OutputParent>();
    node->name = name_of(info, ns);
    link(outer, *node);
    return node;
}

void Output::link(OutputParent &outer, OutputRecord &node)
{
    node.outer = &outer;
    node.next = nullptr;
    (outer.last_one == nullptr ? outer.first_one : outer.last_one->next) = &node;
    outer.last_one = &node;
}

OutputRecord *Output::add_named(OutputRecord &outer, const PathInfo &info, const char *ns)
{
    OutputParent &parent = *outer.parent_part();
    OutputRecord *node = append(parent, info, ns);
    note_named(parent, *node);
    return node;
}

OutputRecord *Output::add_entry(OutputRecord &outer, const PathInfo &info, const char *ns)
{
    OutputParent &parent = *outer.parent_part();
    ListSlot &entries = slot(parent, info);
    OutputRecord *const entry = append(parent, info, ns);
    entry->list_entry = true;
    note_added(entries, *entry);
    return entry;
}

OutputRecord *Output::add_value(OutputRecord &outer, const PathInfo &info, const char *ns, const char *value)
{
    OutputParent &parent = *outer.parent_part();
    ListSlot &values = slot(parent, info);
    OutputRecord *node = find_value(values, value);
    if (node == nullptr) {
        node = append(parent, info, ns);
        note_added(values, *node);
        if (!values.has_few()) {
            index_.emplace(value_key(values, value), node);
        }
    }
    values.last = node;
    return node;
}

OutputRecord *Output::replace_last_value(OutputRecord &outer, const PathInfo &info, const char *ns, const char *value)
{
    ListSlot &values = slot(*outer.parent_part(), info);
    OutputRecord *const last = values.last;
    if (last == nullptr || value == nullptr) {
        return add_value(outer, info, ns, value);
    }
    OutputRecord *const same = find_value(values, value);
    if (same == last) {
        return last;
    }
    if (!values.has_few()) {
        index_.erase(value_key(values, last->value));
    }
    if (same != nullptr) {
        last->dropped = true;
        values.last = same;
        return same;
    }
    if (!values.has_few()) {
        index_.emplace(value_key(values, value), last);
    }
    return last;
}

/// The first ones need no index; the one that is too many brings it.
void Output::note_added(ListSlot &slot, OutputRecord &node)
{
    slot.last = &node;
    if (++slot.count <= slot.few.size()) {
        slot.few[slot.count - 1] = &node;
        return;
    }
    if (slot.count > slot.few.size() + 1) {
        return;
    }
    for (OutputRecord *one : slot.few) {
        if (!one->list_entry && !one->dropped) {
            index_.emplace(value_key(slot, one->value), one);
        }
        for (OutputRecord *leaf = one->first_child(); leaf != nullptr; leaf = leaf->next) {
            if (leaf->is_key() && leaf->value != nullptr) {
                index_.emplace(Key{&slot, leaf->info(), leaf->value}, one);
            }
        }
    }
}

OutputRecord *Output::find_value(const ListSlot &slot, const char *value) const
{
    if (!slot.has_few()) {
        const auto found = index_.find(value_key(slot, value));
        return found == index_.end() ? nullptr : found->second;
    }
    for (std::size_t i = 0; i < slot.count; ++i) {
        const OutputRecord &one = *slot.few[i];
        const bool same =
            one.value == value || (value != nullptr && one.value != nullptr && std::strcmp(one.value, value) == 0);
        if (same && !one.dropped) {
            return slot.few[i];
        }
    }
    return nullptr;
}

OutputRecord *Output::find_by_key(const ListSlot *slot, const PathInfo &key, std::string_view value) const
{
    if (slot == nullptr) {
        return nullptr;
    }
    if (!slot->has_few()) {
        const auto found = index_.find(Key{slot, &key, value});
        return found == index_.end() ? nullptr : found->second;
    }
    for (std::size_t i = 0; i < slot->count; ++i) {
        const OutputRecord *const leaf = find_named(*slot->few[i], key);
        if (leaf != nullptr && leaf->value != nullptr && value == leaf->value) {
            return slot->few[i];
        }
    }
    return nullptr;
}

OutputRecord *Output::index_by_key(const OutputRecord &key)
{
    OutputRecord &entry = *key.outer;
    const ListSlot *const slot = find_slot(*entry.outer, *entry.info());
    if (!slot->has_few()) {
        const auto [position, added] = index_.try_emplace(Key{slot, key.info(), key.value}, &entry);
        return added || position->second == &entry ? nullptr : position->second;
    }
    OutputRecord *const known = find_by_key(slot, *key.info(), key.value);
    return known == &entry ? nullptr : known;
}

void Output::forget_key(const OutputRecord &key, std::string_view value)
{
    const OutputRecord &entry = *key.outer;
    const auto found = index_.find(Key{find_slot(*entry.outer, *entry.info()), key.info(), value});
    if (found != index_.end() && found->second == &entry) {
        index_.erase(found);
    }
}

void Output::absorb(OutputParent &into, OutputParent &from)
{
    OutputRecord *next = nullptr;
    for (OutputRecord *child = from.first_one; child != nullptr; child = next) {
        next = child->next;
        if (child->dropped) {
            continue;
        }
        OutputRecord *there = child->list_entry ? nullptr : find_named(into, *child->info());
        if (there == nullptr) {
            link(into, *child);
            if (is_named(*child)) {
                note_named(into, *child);
            }
            continue;
        }
        if (child->value != nullptr) {
            there->value = child->value;
        }
        if (OutputParent *const parent = there->parent_part()) {
            absorb(*parent, *child->parent_part());
        } else {
            child->dropped = true;
        }
    }
    if (into.slots == nullptr && from.slots != nullptr) {
        into.slots = from.slots;
        for (OutputRecord *child = into.first_one; child != nullptr; child = child->next) {
            if (is_named(*child)) {
                note_named(into, *child);
            }
        }
    }
    from.first_one = from.last_one = nullptr;
    from.named = nullptr;
    from.slots = nullptr;
    from.dropped = true;
    from.merged_into = &into;
}

} // namespace tqm
