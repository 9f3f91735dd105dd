// Schema paths, each made once: what is known of a path hangs off its record, so that an add costs one look-up of its
// path and no reading of it. Those of a schema are made with it and shared by all requests; a request has others of its
// own, where a plug-in or a document names what no schema has.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <deque>
#include <string>
#include <string_view>
#include <vector>

#include "tqm/schema.h"
#include "trees/arena.h"

namespace tqm
{

struct PathInfo;

/// What nodes alike are called. Namespaces are told by their addresses.
struct NodeName {
    const PathInfo *info = nullptr; ///< null of what all top nodes stand in
    const char *ns = "";
    bool operator==(const NodeName &) const = default;
};

struct PathInfo {
    std::string_view text;            ///< with the leading "/"; null-terminated
    const char *tag = nullptr;        ///< last component, within text
    uint32_t tag_length = 0;          ///< of tag, in bytes
    const PathInfo *parent = nullptr; ///< null above the top component
    PathInfo *first_child = nullptr;
    PathInfo *next_sibling = nullptr;
    const SchemaNode *schema = nullptr; ///< what is known of it; never null: one of an unknown kind where nothing is
    const PathInfo *list = nullptr;     ///< innermost list at or above this path
    uint32_t depth = 0;                 ///< number of components
    NodeName usual;                     ///< of its nodes, in the namespace that the schema has them in
    bool is_key = false;                ///< key leaf of the list that is its parent
    bool below_value = false;           ///< below a leaf or leaf-list, where no node can be

    bool is_list() const { return schema->is_list(); }
    bool is_leaf() const { return schema->is_leaf(); }
    bool is_leaf_list() const { return schema->is_leaf_list(); }
    bool is_container() const { return schema->is_container(); }
    /// Key leaves of a list; none of what is no list.
    const std::vector<std::string> &keys() const { return schema->keys; }
    bool has_key(std::string_view name) const { return std::find(keys().begin(), keys().end(), name) != keys().end(); }
    std::string_view name() const { return {tag, tag_length}; }

    /// The leaf that repeats a key of the entry around it, as OpenConfig's lists have it: "policy/config/name".
    bool repeats_key() const
    {
        const PathInfo *const entry = parent == nullptr ? nullptr : parent->parent;
        return is_leaf() && schema->config && entry != nullptr && !parent->is_list() && entry->has_key(tag);
    }

    /// The schema's child of this name, or of a path that no schema has the request's; null if there is none.
    const PathInfo *child(std::string_view child_tag) const
    {
        const PathInfo *info = first_child;
        while (info != nullptr && info->name() != child_tag) {
            info = info->next_sibling;
        }
        return info;
    }
};

/// Finds paths by their texts, which all are without the leading "/" here.
class PathIndex
{
public:
    /// Null if it is not there.
    PathInfo *find(std::string_view path) const;
    /// `info` must not be there yet.
    void insert(PathInfo &info);
    std::size_t size() const { return count_; }

private:
    PathInfo *&slot_for(std::string_view path);

    std::vector<PathInfo *> slots_;
    std::size_t count_ = 0;
};

/// All paths of one schema: what SchemaNode::path says of its nodes, and what is above them.
class SchemaPaths
{
public:
    /// `node` stays where it is. False if its path is none, or has a node already.
    bool add(const SchemaNode &node);
    /// The record of `path`, which may lack its leading "/"; null if there is none.
    const PathInfo *find(std::string_view path) const;
    /// The text of a namespace that nodes are in; null if none is.
    const char *find_namespace(std::string_view ns) const;

private:
    PathInfo &insert(std::string_view path);

    std::deque<PathInfo> infos_;
    std::deque<std::string> texts_;
    std::deque<std::string> namespaces_;
    PathIndex index_;
};

class PathTable
{
public:
    PathTable(const Schema &schema, Arena &arena);

    /// The record of `path`, which may lack its leading "/"; null if that is no path.
    const PathInfo *intern(std::string_view path);
    /// The same of a text that is likely to come again from the same address: those that mappers name their nodes by.
    const PathInfo *intern_literal(const char *path);
    /// `info`, one of this table's (null: null), as a list, which `key` alone is the key of if no schema knows better.
    /// Null for what a schema knows as something else.
    const PathInfo *as_list(const PathInfo *info, std::string_view key);
    /// The record without making one.
    const PathInfo *find(std::string_view path) const;
    /// The child `tag` of `parent` (null: a top path), made if it is not there.
    const PathInfo *intern_child(const PathInfo *parent, std::string_view tag);
    /// The same without making one.
    const PathInfo *find_child(const PathInfo &parent, std::string_view tag) const;

private:
    /// A path by the address of its text; none where that is null.
    struct Literal {
        const char *address = nullptr;
        const PathInfo *info = nullptr;
    };

    Literal &literal_at(const char *path);
    const PathInfo *note_literal(const char *path);
    PathInfo *intern_own(std::string_view path);

    const SchemaPaths &known_;
    Arena &arena_;
    PathIndex own_;                                    ///< what no schema has
    std::deque<SchemaNode> made_lists_;                ///< the same
    static constexpr std::size_t most_literals = 1024; ///< slots: texts that are no literals do not fill it for ever

    std::vector<Literal> literals_ = std::vector<Literal>(64);
    std::size_t literal_count_ = 0;
};

} // namespace tqm
