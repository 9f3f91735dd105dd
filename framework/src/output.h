// The output of a request while it grows: makes nodes and finds them again. Which instance of a list an add belongs to
// is decided by its users (placing in request_impl.h).
#pragma once

#include <functional>
#include <string_view>
#include <unordered_map>

#include "arena.h"
#include "paths.h"
#include "tqm/tree.h"

namespace tqm
{

/// One list or leaf-list among the children of one node.
struct ListSlot {
    PathInfo *info = nullptr;
    ListSlot *next = nullptr;
    OutputNode *last = nullptr; ///< the entry or value that was added last
};

/// Marks on a record that say that it is the first member of an OutputNode. Neither is a bit of the plug-in surface.
inline constexpr uint16_t output_present = 0x8000u;
inline constexpr uint8_t output_role = 0x80u;

inline OutputNode *as_output_node(rdl_tqm_datatree *record)
{
    if ((record->present & output_present) == 0 || (record->role_present & output_role) == 0) {
        return nullptr;
    }
    return reinterpret_cast<OutputNode *>(record);
}

/// The list entry that `node` is, or is in; null outside all.
inline OutputNode *nearest_entry(OutputNode &node)
{
    OutputNode *at = &node;
    while (at != nullptr && !at->list_entry) {
        at = at->parent;
    }
    return at;
}

class Output
{
public:
    Output(Arena &arena);

    OutputNode &base() { return *base_; }

    static OutputNode *find_named(const OutputNode &parent, const PathInfo &info);
    static ListSlot *find_slot(const OutputNode &parent, const PathInfo &info);

    /// Each makes a node and puts it behind the parent's children.
    OutputNode *add_named(OutputNode &parent, const PathInfo &info, const char *ns);
    OutputNode *add_entry(OutputNode &parent, PathInfo &info, const char *ns);
    /// A value of a leaf-list; one that is there already is given back instead. `value` must be kept text or null.
    OutputNode *add_value(OutputNode &parent, PathInfo &info, const char *ns, const char *value);
    /// Replaces the value that was added last, or adds it.
    OutputNode *replace_last_value(OutputNode &parent, PathInfo &info, const char *ns, const char *value);

    /// The entry of `slot` whose leaf `key` has `value`; null if there is none.
    OutputNode *find_by_key(const ListSlot *slot, std::string_view key, std::string_view value) const;
    /// Makes `entry` known by its key. Gives the entry that already was, or null.
    OutputNode *index_by_key(OutputNode &entry, std::string_view key, std::string_view value);
    void forget_key(OutputNode &entry, std::string_view key, std::string_view value);
    OutputNode *find_value(const ListSlot *slot, std::string_view value) const;

    /// Moves what `from` holds into `into`; `from` is no longer part of the tree.
    void absorb(OutputNode &into, OutputNode &from);

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

    OutputNode *append(OutputNode &parent, const PathInfo &info, const char *ns);
    ListSlot &slot(OutputNode &parent, PathInfo &info);

    Arena &arena_;
    OutputNode *base_;
    std::unordered_map<Key, OutputNode *, KeyHash> index_;
};

} // namespace tqm
