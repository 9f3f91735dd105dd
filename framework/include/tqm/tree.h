// The two kinds of trees: output trees, which grow node by node while mappers add paths, and walked trees, whose
// children lie in arrays as the walkers want them. All nodes and texts live in the arena of one request.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

#include "tqm_map.h"

namespace tqm
{

class Arena;
struct PathInfo;

/// Operation of nodes under the default-operation "none" that say nothing themselves: they lead to other nodes, must
/// exist and are not changed. The others are TQM_OP_*.
inline constexpr uint32_t operation_none = 5;

/// The values of the attribute "operation" (RFC 6241, section 7.2), in the order of TQM_OP_*.
inline constexpr std::array operation_names = {"merge", "replace", "create", "delete", "remove"};

/// The name of an operation; "none" for operation_none and "?" for what is no operation.
inline const char *operation_name(uint32_t operation)
{
    return operation < operation_names.size() ? operation_names[operation] : operation == operation_none ? "none" : "?";
}

/// The operation of a request node; merge where it has none of its own.
inline uint32_t operation_of(const rdl_tqm_datatree &node)
{
    return (node.present & TQM_PRESENT_OPERATION) != 0 ? node.operation : uint32_t{TQM_OP_MERGE};
}

/// True for delete and remove. What plug-ins ask (tqm_map_is_request_delete) is the same question, and is journalled.
inline bool takes_away(uint32_t operation)
{
    return operation == TQM_OP_DELETE || operation == TQM_OP_REMOVE;
}
inline bool takes_away(const rdl_tqm_datatree &node)
{
    return takes_away(operation_of(node));
}

/// Appends a key to the step of its list entry, as "[name='P1']" (RFC 7950, section 9.13). A text with a single quote
/// stands in double ones, where double quotes and backslashes have a backslash before them, as in strings of YANG.
void append_key(std::string &path, std::string_view key, std::string_view value);
/// Appends those of the keys that `entry` has as children with a value.
void append_keys(std::string &path, const rdl_tqm_datatree &entry, const std::vector<std::string> &keys);

/// One node of an output tree. Its address, and that of the record in it, stays the same until the request ends.
class OutputNode
{
public:
    class Iterator
    {
    public:
        using iterator_category = std::forward_iterator_tag;
        using value_type = const OutputNode;
        using difference_type = std::ptrdiff_t;
        using pointer = const OutputNode *;
        using reference = const OutputNode &;

        Iterator() = default;
        explicit Iterator(const OutputNode *node) : node_(skip_dropped(node)) {}
        reference operator*() const { return *node_; }
        pointer operator->() const { return node_; }
        Iterator &operator++()
        {
            node_ = skip_dropped(node_->next);
            return *this;
        }
        Iterator operator++(int)
        {
            Iterator before = *this;
            ++*this;
            return before;
        }
        friend bool operator==(const Iterator &a, const Iterator &b) { return a.node_ == b.node_; }

    private:
        static const OutputNode *skip_dropped(const OutputNode *node)
        {
            while (node != nullptr && node->dropped) {
                node = node->next;
            }
            return node;
        }
        const OutputNode *node_ = nullptr;
    };
    struct Children {
        Iterator first;
        Iterator begin() const { return first; }
        Iterator end() const { return {}; }
        bool empty() const { return first == Iterator(); }
    };

    const char *tag() const { return record.tag; }
    const char *ns() const { return record.ns; }
    /// Null when the node has none: a container, a list entry, or a leaf without a value (which differs from "").
    const char *value() const { return record.value; }
    /// The node's own edit operation (TQM_OP_* or operation_none); none on nodes that were only made on the way to
    /// others, which have that of the node around them, and on all nodes of a read.
    std::optional<uint32_t> operation() const
    {
        if ((record.present & TQM_PRESENT_OPERATION) == 0) {
            return std::nullopt;
        }
        return record.operation;
    }
    /// The client's node that an edit's node comes from: the source of the add, or, where an add gave none, the node
    /// that the walk had matched last. Null on nodes that were only made on the way to others, and in reads.
    const rdl_tqm_datatree *origin() const { return origin_node; }
    /// In the order in which the walk made them; a list's entries stand among the other children.
    Children children() const { return {Iterator(first_child)}; }
    bool is_list_entry() const { return list_entry; }
    /// True on the key leaves of a list entry.
    bool is_key() const { return record.is_key != 0; }
    /// Path of the node without keys, as "/macsec/policy-names/policy-name/name".
    std::string_view path() const;

    // What follows belongs to the framework. `record` comes first, so that a record's address is its node's.
    rdl_tqm_datatree record{};
    const PathInfo *info = nullptr;
    const rdl_tqm_datatree *origin_node = nullptr;
    OutputNode *parent = nullptr;
    OutputNode *first_child = nullptr;
    OutputNode *last_child = nullptr;
    OutputNode *next = nullptr;
    OutputNode *next_named = nullptr;  ///< chain of the parent's children that are no list entries or values
    OutputNode *first_named = nullptr; ///< head of that chain among this node's children
    struct ListSlot *slots = nullptr;  ///< the lists and leaf-lists among this node's children
    OutputNode *merged_into = nullptr; ///< the entry that took over this one's children
    bool list_entry = false;
    bool pending = false; ///< the operation is yet to be read from the context
    bool dropped = false; ///< no longer part of the tree
    uint8_t kept = 0;     ///< a filter selects: 1 the node on the way to others, 2 all below it
};

/// What a document says of a node's operation.
struct WrittenOperation {
    const char *name;   ///< null: nothing is written
    uint32_t effective; ///< what nodes below that say nothing have
};

/// An operation is written where it is not the one that the node has from the nodes around it. Merge is not written on
/// keys, which only name their entry, nor in an entry that goes away as a whole.
WrittenOperation written_operation(const OutputNode &node, uint32_t outer_operation);

/// The roots of an output: one tree for each top tag.
class OutputForest
{
public:
    OutputNode::Children roots() const { return base_->children(); }
    explicit OutputForest(OutputNode *base) : base_(base) {}
    OutputNode *base() const { return base_; }

private:
    OutputNode *base_;
};

/// Builds walked trees. Texts are copied into the arena. Calls must be balanced; leaves and nodes may come in any
/// order, and all nodes opened at the outermost level are roots.
class TreeBuilder
{
public:
    struct Roots {
        rdl_tqm_datatree *nodes = nullptr;
        uint32_t count = 0;
    };

    explicit TreeBuilder(Arena &arena) : arena_(arena) {}

    /// `value` may be null. `ns` and `tag` must not be.
    void open(std::string_view ns, std::string_view tag);
    void leaf(std::string_view ns, std::string_view tag, std::optional<std::string_view> value);
    void close();
    /// Sets the operation (TQM_OP_*) of the node opened or leaf added last.
    void operation(uint32_t operation);

    /// The closed roots, in one array that lives as long as the arena. The builder is empty afterwards.
    Roots finish();

private:
    rdl_tqm_datatree *append(std::string_view ns, std::string_view tag);
    const char *shared(std::string_view text);
    static Roots array_of(Arena &arena, const rdl_tqm_datatree *nodes, std::size_t count);

    Arena &arena_;
    std::vector<rdl_tqm_datatree> nodes_;        ///< finished children of all open nodes, innermost last
    std::vector<std::size_t> open_;              ///< positions in nodes_ of the open nodes
    std::unordered_set<std::string_view> texts_; ///< namespaces and tags met so far
};

} // namespace tqm
