// The output of a request while it grows: makes nodes and finds them again. Which instance of a list an add belongs to
// is decided by its users (walk/placing.h).
#pragma once

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

struct ListSlot;

/// What the framework keeps of an output node. `record`, which plug-ins get, comes first: its address is its node's.
struct OutputRecord final : OutputNode {
    OutputRecord() = default; // no aggregate: its base is not to be made alone

    rdl_tqm_datatree record{};
    const PathInfo *info = nullptr; ///< null of the base, which all top nodes stand in
    const rdl_tqm_datatree *origin_node = nullptr;
    OutputRecord *outer = nullptr; ///< the node around; null of the base
    OutputRecord *first_child = nullptr;
    OutputRecord *last_child = nullptr;
    OutputRecord *next = nullptr;
    OutputRecord *next_named = nullptr;  ///< chain of the outer node's children that are no list entries or values
    OutputRecord *first_named = nullptr; ///< head of that chain among this node's children
    ListSlot *slots = nullptr;           ///< the lists and leaf-lists among this node's children
    OutputRecord *merged_into = nullptr; ///< the entry that took over this one's children
    bool list_entry = false;
    bool pending = false; ///< the operation is yet to be read from the context
    bool dropped = false; ///< no longer part of the tree
    uint8_t kept = 0;     ///< a filter selects: 1 the node on the way to others, 2 all below it

    std::optional<uint32_t> operation() const
    {
        const bool given = (record.present & TQM_PRESENT_OPERATION) != 0;
        return given ? std::optional<uint32_t>(record.operation) : std::nullopt;
    }
    /// `node`, or the first of its later siblings that is part of the tree.
    static const OutputRecord *present(const OutputRecord *node)
    {
        while (node != nullptr && node->dropped) {
            node = node->next;
        }
        return node;
    }
};
static_assert(std::is_standard_layout_v<OutputRecord>);

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

/// One list or leaf-list among the children of one node.
struct ListSlot {
    PathInfo *info = nullptr;
    ListSlot *next = nullptr;
    OutputRecord *last = nullptr; ///< the entry or value that was added last
};

/// Marks on a record that say that it is the first member of an OutputRecord. Neither is a bit of the plug-in surface.
inline constexpr uint16_t output_present = 0x8000u;
inline constexpr uint8_t output_role = 0x80u;

inline OutputRecord *as_output(rdl_tqm_datatree *record)
{
    if ((record->present & output_present) == 0 || (record->role_present & output_role) == 0) {
        return nullptr;
    }
    return reinterpret_cast<OutputRecord *>(record);
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

class Output
{
public:
    Output(Arena &arena);

    OutputRecord &base() { return *base_; }

    static OutputRecord *find_named(const OutputRecord &parent, const PathInfo &info);
    static ListSlot *find_slot(const OutputRecord &parent, const PathInfo &info);

    /// Each makes a node and puts it behind the parent's children.
    OutputRecord *add_named(OutputRecord &parent, const PathInfo &info, const char *ns);
    OutputRecord *add_entry(OutputRecord &parent, PathInfo &info, const char *ns);
    /// A value of a leaf-list; one that is there already is given back instead. `value` must be kept text or null.
    OutputRecord *add_value(OutputRecord &parent, PathInfo &info, const char *ns, const char *value);
    /// Replaces the value that was added last, or adds it.
    OutputRecord *replace_last_value(OutputRecord &parent, PathInfo &info, const char *ns, const char *value);

    /// The entry of `slot` whose leaf `key` has `value`; null if there is none.
    OutputRecord *find_by_key(const ListSlot *slot, std::string_view key, std::string_view value) const;
    /// Makes `entry` known by its key. Gives the entry that already was, or null.
    OutputRecord *index_by_key(OutputRecord &entry, std::string_view key, std::string_view value);
    void forget_key(OutputRecord &entry, std::string_view key, std::string_view value);
    OutputRecord *find_value(const ListSlot *slot, std::string_view value) const;

    /// Moves what `from` holds into `into`; `from` is no longer part of the tree.
    void absorb(OutputRecord &into, OutputRecord &from);

private:
    struct Key {
        const ListSlot *slot;
        std::string_view leaf;
        std::string_view value;
        bool operator==(const Key &) const = default;
    };
    struct KeyHash {
        std::size_t operator()(const Key &key) const
        {
            const std::hash<std::string_view> text;
            return std::hash<const void *>{}(key.slot) * 31 + text(key.leaf) * 7 + text(key.value);
        }
    };

    OutputRecord *append(OutputRecord &parent, const PathInfo &info, const char *ns);
    ListSlot &slot(OutputRecord &parent, PathInfo &info);

    Arena &arena_;
    OutputRecord *base_;
    std::unordered_map<Key, OutputRecord *, KeyHash> index_;
};

} // namespace tqm
