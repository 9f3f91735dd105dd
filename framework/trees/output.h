// The output of a request while it grows: makes nodes and finds them again. Which instance of a list an add belongs to
// is decided by its users (walk/placing.h).
#pragma once

#include <algorithm>
#include <bit>
#include <cstdint>
#include <deque>
#include <functional>
#include <optional>
#include <string_view>
#include <type_traits>
#include <unordered_map>

#include "schema/paths.h"
#include "tqm/tree.h"
#include "trees/arena.h"

namespace tqm
{

struct OutputParent;

/// What the framework keeps of an output node. A large request has millions of them, most of them leaves: what only
/// other nodes need is in OutputParent, and what a plug-in gets to see of a node is made when it asks (OutputHandle).
struct OutputRecord : OutputNode {
    OutputRecord() = default; // no aggregate: its base is not to be made alone

    const NodeName *name = nullptr;
    const char *value = nullptr;
    const rdl_tqm_datatree *origin_node = nullptr;
    OutputParent *outer = nullptr; ///< the node around; null of the base
    OutputRecord *next = nullptr;
    bool is_parent = false; ///< it is an OutputParent
    bool list_entry = false;
    bool pending = false; ///< the operation is yet to be read from the context
    bool dropped = false; ///< no longer part of the tree
    uint8_t kept = 0;     ///< a filter selects: 1 the node on the way to others, 2 all below it

    const PathInfo *info() const { return name->info; }
    const char *tag() const { return name->info == nullptr ? "" : name->info->tag; }
    const char *ns() const { return name->ns; }
    bool is_key() const { return name->info != nullptr && name->info->is_key; }
    std::optional<uint32_t> operation() const
    {
        return has_operation_ ? std::optional<uint32_t>(operation_) : std::nullopt;
    }
    /// What is no operation stays none: they are below 256.
    void set_operation(uint32_t operation)
    {
        operation_ = static_cast<uint8_t>(std::min<uint32_t>(operation, UINT8_MAX));
        has_operation_ = true;
    }
    /// The node with its children; null of a leaf.
    OutputParent *parent_part();
    const OutputParent *parent_part() const;
    OutputRecord *first_child();
    const OutputRecord *first_child() const;
    /// `node`, or the first of its later siblings that is part of the tree.
    static const OutputRecord *present(const OutputRecord *node)
    {
        while (node != nullptr && node->dropped) {
            node = node->next;
        }
        return node;
    }

private:
    bool has_operation_ = false;
    uint8_t operation_ = 0;
};

/// One list or leaf-list among the children of one node.
struct ListSlot {
    const PathInfo *info = nullptr;
    ListSlot *next = nullptr;
    OutputRecord *last = nullptr; ///< the entry or value that was added last
};

/// Of a node that has many entries or values among its children: one of the others.
struct NamedChild {
    OutputRecord *node = nullptr;
    NamedChild *next = nullptr;
};

/// A node as plug-ins know it. The address of `record` is this one's.
struct OutputHandle {
    rdl_tqm_datatree record{};
    OutputRecord *node = nullptr;
};
static_assert(std::is_standard_layout_v<OutputHandle>);

/// A node that is no leaf, nor a leaf-list's value.
struct OutputParent final : OutputRecord {
    OutputParent() { is_parent = true; }

    OutputRecord *first_one = nullptr;
    OutputRecord *last_one = nullptr;
    ListSlot *slots = nullptr;           ///< the lists and leaf-lists among the children
    NamedChild *named = nullptr;         ///< the children that are in none of those, where those have many
    uint32_t repeated = 0;               ///< how many entries and values were added
    OutputParent *merged_into = nullptr; ///< the entry that took over this one's children
    OutputHandle *handle = nullptr;      ///< null until a plug-in asks

    /// Then they are found by an index, and the other children by a chain of their own.
    bool has_many() const { return repeated > 6; }
};
static_assert(std::is_trivially_destructible_v<OutputParent>);

inline OutputParent *OutputRecord::parent_part()
{
    return is_parent ? static_cast<OutputParent *>(this) : nullptr;
}
inline const OutputParent *OutputRecord::parent_part() const
{
    return is_parent ? static_cast<const OutputParent *>(this) : nullptr;
}
inline OutputRecord *OutputRecord::first_child()
{
    return is_parent ? static_cast<OutputParent *>(this)->first_one : nullptr;
}
inline const OutputRecord *OutputRecord::first_child() const
{
    return is_parent ? static_cast<const OutputParent *>(this)->first_one : nullptr;
}

inline const OutputRecord &record_of(const OutputNode &node)
{
    return static_cast<const OutputRecord &>(node);
}

/// The children of a node that are part of the tree.
class Records
{
public:
    class Iterator
    {
    public:
        explicit Iterator(const OutputRecord *record) : record_(record) {}
        const OutputRecord &operator*() const { return *record_; }
        Iterator &operator++()
        {
            record_ = OutputRecord::present(record_->next);
            return *this;
        }
        friend bool operator==(const Iterator &, const Iterator &) = default;

    private:
        const OutputRecord *record_;
    };

    /// `first` and its later siblings.
    explicit Records(const OutputRecord *first) : first_(OutputRecord::present(first)) {}
    Iterator begin() const { return Iterator(first_); }
    Iterator end() const { return Iterator(nullptr); }
    bool empty() const { return first_ == nullptr; }

private:
    const OutputRecord *first_;
};

/// Marks on a record that say that it is that of an OutputHandle. Neither is a bit of the plug-in surface.
inline constexpr uint16_t output_present = 0x8000u;
inline constexpr uint8_t output_role = 0x80u;

/// The node that a plug-in's record stands for; null if it is one of the request.
inline OutputRecord *as_output(rdl_tqm_datatree *record)
{
    if ((record->present & output_present) == 0 || (record->role_present & output_role) == 0) {
        return nullptr;
    }
    return reinterpret_cast<OutputHandle *>(record)->node;
}

/// The list entry that `node` is, or is in; null outside all.
inline OutputRecord *nearest_entry(OutputRecord &node)
{
    OutputRecord *at = &node;
    while (at != nullptr && !at->list_entry) {
        at = at->outer;
    }
    return at;
}

/// What stands in the tree for `node`, which is no longer part of it: where two entries turned out to be the same one,
/// the node of the one that was there first; else itself.
OutputRecord *survivor_of_dropped(OutputRecord &node);

/// The same for any node; null for null.
inline OutputRecord *survivor(OutputRecord *node)
{
    return node == nullptr || !node->dropped ? node : survivor_of_dropped(*node);
}

class Output
{
public:
    Output(Arena &arena);

    OutputParent &base() { return *base_; }
    /// `node` as plug-ins get it, with its value and operation of now.
    rdl_tqm_datatree *handle_of(OutputRecord &node);

    static OutputRecord *find_named(const OutputRecord &outer, const PathInfo &info);
    static ListSlot *find_slot(const OutputRecord &outer, const PathInfo &info);

    /// Each makes a node and puts it behind the others in `outer`, which is no leaf. `ns` is one of the request's
    /// namespaces, told from others by its address.
    OutputRecord *add_named(OutputRecord &outer, const PathInfo &info, const char *ns);
    OutputRecord *add_entry(OutputRecord &outer, const PathInfo &info, const char *ns);
    /// A value of a leaf-list; one that is there already is given back instead. `value` must be kept text or null.
    OutputRecord *add_value(OutputRecord &outer, const PathInfo &info, const char *ns, const char *value);
    /// Replaces the value that was added last, or adds it.
    OutputRecord *replace_last_value(OutputRecord &outer, const PathInfo &info, const char *ns, const char *value);

    /// The value `value`, or the one without a text, of the leaf-list `info` in `outer`; null if it is not there.
    OutputRecord *find_value(const OutputRecord &outer, const PathInfo &info, const char *value) const;
    /// The entry in `outer` whose leaf `key` has `value`; null if there is none.
    OutputRecord *find_by_key(const OutputRecord &outer, const PathInfo &key, std::string_view value) const;
    /// `key`, a leaf of an entry, has a value now. Gives the entry that had the same before, or null.
    OutputRecord *index_by_key(const OutputRecord &key);
    /// And it will no longer have `value`.
    void forget_key(const OutputRecord &key, std::string_view value);

    /// Moves what `from` holds into `into`; `from` is no longer part of the tree.
    void absorb(OutputParent &into, OutputParent &from);

private:
    /// Of a list the entry whose leaf is `leaf`, of a leaf-list, which is `leaf` itself, the value.
    struct Key {
        const ListSlot *slot;
        const PathInfo *leaf;
        std::optional<std::string_view> value;
        bool operator==(const Key &) const = default;
    };
    struct KeyHash {
        std::size_t operator()(const Key &key) const
        {
            const std::size_t places = std::bit_cast<std::size_t>(key.slot) * 31 + std::bit_cast<std::size_t>(key.leaf);
            return places + std::hash<std::string_view>{}(key.value.value_or(""));
        }
    };

    static Key value_key(const ListSlot &slot, const char *value)
    {
        return {&slot, slot.info, value == nullptr ? std::nullopt : std::optional<std::string_view>(value)};
    }
    void note_repeated(OutputParent &outer, ListSlot &slot, OutputRecord &node);
    void index_children(OutputParent &outer);
    void index_child(OutputParent &outer, OutputRecord &child);
    const NodeName *name_of(const PathInfo &info, const char *ns);
    OutputRecord *append(OutputParent &outer, const PathInfo &info, const char *ns);
    static void link(OutputParent &outer, OutputRecord &node);
    void note_named(OutputParent &outer, OutputRecord &node);
    ListSlot &slot(OutputParent &outer, const PathInfo &info);

    Arena &arena_;
    OutputParent *base_;
    std::deque<NodeName> other_names_; ///< of nodes that are not in their usual namespace
    std::unordered_map<Key, OutputRecord *, KeyHash> index_;
};

} // namespace tqm
