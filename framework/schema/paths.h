// Schema paths that a request has met, each made once: what is known of a path hangs off its record, so that an add
// costs one look-up of its path and no reading of it.
#pragma once

#include <algorithm>
#include <cstdint>
#include <deque>
#include <string>
#include <string_view>
#include <vector>

#include "tqm/schema.h"
#include "tqm/tree.h"
#include "trees/arena.h"

namespace tqm
{

struct OutputRecord;

struct PathInfo {
    std::string_view text;      ///< with the leading "/"; null-terminated
    const char *tag = nullptr;  ///< last component, within text
    PathInfo *parent = nullptr; ///< null above the top component
    PathInfo *first_child = nullptr;
    PathInfo *next_sibling = nullptr;
    const SchemaNode *schema = nullptr; ///< what is known of it; never null: one of an unknown kind where nothing is
    PathInfo *list = nullptr;           ///< innermost list at or above this path
    uint32_t depth = 0;                 ///< number of components
    bool is_key = false;                ///< key leaf of the list that is its parent
    bool below_value = false;           ///< below a leaf or leaf-list, where no node can be

    struct Place {
        const void *parent = nullptr;
        const char *ns = nullptr;
        friend bool operator==(const Place &, const Place &) = default;
    };
    Place last_seen; ///< loading: the node that had a child of this path last, and the child's namespace

    OutputRecord *current = nullptr;    ///< reverse: the entry that bare paths below this list lead to
    OutputRecord *last_found = nullptr; ///< reverse: what the last successful search of this list found

    bool is_list() const { return schema->is_list(); }
    bool is_leaf() const { return schema->is_leaf(); }
    bool is_leaf_list() const { return schema->is_leaf_list(); }
    bool is_container() const { return schema->is_container(); }
    /// Key leaves of a list; none of what is no list.
    const std::vector<std::string> &keys() const { return schema->keys; }
    bool has_key(std::string_view name) const { return std::find(keys().begin(), keys().end(), name) != keys().end(); }

    /// The leaf that repeats a key of the entry around it, as OpenConfig's lists have it: "policy/config/name".
    bool repeats_key() const
    {
        const PathInfo *const entry = parent == nullptr ? nullptr : parent->parent;
        return is_leaf() && schema->config && entry != nullptr && !parent->is_list() && entry->has_key(tag);
    }

    PathInfo *child(std::string_view child_tag) const
    {
        for (PathInfo *info = first_child; info != nullptr; info = info->next_sibling) {
            if (child_tag == info->tag) {
                return info;
            }
        }
        return nullptr;
    }
};

class PathTable
{
public:
    PathTable(const Schema &schema, Arena &arena) : schema_(schema), arena_(arena) {}

    /// The record of `path`, which may lack its leading "/"; null if that is no path.
    PathInfo *intern(std::string_view path);
    /// The same without making one.
    PathInfo *find(std::string_view path) const;
    /// The record of the child `tag` of `parent` (null: a top path).
    PathInfo *intern_child(PathInfo *parent, std::string_view tag);
    /// Records that `info` is a list, keyed by `key` if the schema does not know it.
    void make_list(PathInfo &info, std::string_view key);

private:
    PathInfo *insert(std::string_view path);
    void rehash();

    const Schema &schema_;
    Arena &arena_;
    std::vector<PathInfo *> slots_ = std::vector<PathInfo *>(256);
    std::size_t count_ = 0;
    PathInfo *first_top_ = nullptr;
    std::deque<SchemaNode> made_lists_; ///< that no schema knows
};

} // namespace tqm
