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
    if (parent != nullptr && parent->has_many()) {
        const NamedChild *child = parent->named;
        while (child != nullptr && child->node->info() != &info) {
            child = child->next;
        }
        return child == nullptr ? nullptr : child->node;
    }
    OutputRecord *node = parent == nullptr ? nullptr : parent->first_one;
    while (node != nullptr && node->info() != &info) {
        node = node->next;
    }
    return node;
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

ListSlot &Output::slot(OutputParent &outer, const PathInfo &info)
{
    if (ListSlot *found = find_slot(outer, info)) {
        return *found;
    }
    auto *slot = arena_.make<ListSlot>();
    slot->info = &info;
    slot->next = std::exchange(outer.slots, slot);
    return *slot;
}

void Output::note_named(OutputParent &outer, OutputRecord &node)
{
    if (outer.has_many()) {
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
    note_repeated(parent, entries, *entry);
    return entry;
}

OutputRecord *Output::add_value(OutputRecord &outer, const PathInfo &info, const char *ns, const char *value)
{
    OutputParent &parent = *outer.parent_part();
    ListSlot &values = slot(parent, info);
    OutputRecord *const known = find_value(parent, info, value);
    if (known != nullptr) {
        values.last = known;
        return known;
    }
    OutputRecord *const node = append(parent, info, ns);
    node->value = value;
    note_repeated(parent, values, *node);
    index_child(parent, *node);
    return node;
}

OutputRecord *Output::replace_last_value(OutputRecord &outer, const PathInfo &info, const char *ns, const char *value)
{
    OutputParent &parent = *outer.parent_part();
    ListSlot &values = slot(parent, info);
    OutputRecord *const last = values.last;
    if (last == nullptr || value == nullptr) {
        return add_value(outer, info, ns, value);
    }
    OutputRecord *const same = find_value(parent, info, value);
    if (same == last) {
        return last;
    }
    if (parent.has_many()) {
        index_.erase(value_key(values, last->value));
    }
    if (same != nullptr) {
        last->dropped = true;
        values.last = same;
        return same;
    }
    if (parent.has_many()) {
        index_.emplace(value_key(values, value), last);
    }
    return last;
}

void Output::note_repeated(OutputParent &outer, ListSlot &slot, OutputRecord &node)
{
    slot.last = &node;
    const bool had_many = outer.has_many();
    ++outer.repeated;
    if (outer.has_many() && !had_many) {
        index_children(outer);
    }
}

void Output::index_children(OutputParent &outer)
{
    for (OutputRecord *child = outer.first_one; child != nullptr; child = child->next) {
        if (is_named(*child)) {
            note_named(outer, *child);
        } else {
            index_child(outer, *child);
        }
    }
}

/// An entry, by its keys, or a value of `outer`.
void Output::index_child(OutputParent &outer, OutputRecord &child)
{
    if (!outer.has_many()) {
        return;
    }
    const ListSlot &slot = *find_slot(outer, *child.info());
    if (!child.list_entry && !child.dropped) {
        index_.emplace(value_key(slot, child.value), &child);
    }
    for (OutputRecord *leaf = child.first_child(); leaf != nullptr; leaf = leaf->next) {
        if (leaf->is_key() && leaf->value != nullptr) {
            index_.emplace(Key{&slot, leaf->info(), leaf->value}, &child);
        }
    }
}

OutputRecord *Output::find_value(const OutputRecord &outer, const PathInfo &info, const char *value) const
{
    const OutputParent *const parent = outer.parent_part();
    if (parent == nullptr || parent->slots == nullptr) {
        return nullptr;
    }
    if (parent->has_many()) {
        const ListSlot *const slot = find_slot(outer, info);
        const auto found = slot == nullptr ? index_.end() : index_.find(value_key(*slot, value));
        return found == index_.end() ? nullptr : found->second;
    }
    const auto is_it = [&](const OutputRecord &one) {
        const bool alike =
            value == nullptr || one.value == nullptr ? one.value == value : std::strcmp(one.value, value) == 0;
        return one.info() == &info && alike && !one.dropped;
    };
    OutputRecord *one = parent->first_one;
    while (one != nullptr && !is_it(*one)) {
        one = one->next;
    }
    return one;
}

OutputRecord *Output::find_by_key(const OutputRecord &outer, const PathInfo &key, std::string_view value) const
{
    const OutputParent *const parent = outer.parent_part();
    if (parent == nullptr || parent->slots == nullptr) {
        return nullptr;
    }
    if (parent->has_many()) {
        const ListSlot *const slot = find_slot(outer, *key.parent);
        const auto found = slot == nullptr ? index_.end() : index_.find(Key{slot, &key, value});
        return found == index_.end() ? nullptr : found->second;
    }
    const auto is_it = [&](const OutputRecord &one) {
        const OutputRecord *const leaf = one.info() == key.parent ? find_named(one, key) : nullptr;
        return leaf != nullptr && leaf->value != nullptr && value == leaf->value;
    };
    OutputRecord *one = parent->first_one;
    while (one != nullptr && !is_it(*one)) {
        one = one->next;
    }
    return one;
}

OutputRecord *Output::index_by_key(const OutputRecord &key)
{
    OutputRecord &entry = *key.outer;
    OutputRecord *known = nullptr;
    if (entry.outer->has_many()) {
        const ListSlot *const slot = find_slot(*entry.outer, *entry.info());
        known = index_.try_emplace(Key{slot, key.info(), key.value}, &entry).first->second;
    } else {
        known = find_by_key(*entry.outer, *key.info(), key.value);
    }
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
        OutputRecord *const there = is_named(*child) ? find_named(into, *child->info()) : nullptr;
        if (there == nullptr) {
            link(into, *child);
            if (is_named(*child)) {
                note_named(into, *child);
            } else {
                note_repeated(into, slot(into, *child->info()), *child);
                index_child(into, *child);
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
    from.first_one = from.last_one = nullptr;
    from.named = nullptr;
    from.slots = nullptr;
    from.dropped = true;
    from.merged_into = &into;
}

} // namespace tqm
