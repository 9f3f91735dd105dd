// The two kinds of trees: output trees, which grow node by node while mappers add paths, and walked trees, whose
// children lie in arrays as the walkers want them. All nodes and texts live in the arena of one request.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

#include "tqm/export.h"
#include "tqm_map.h"

namespace tqm
{

class Arena;

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

/// The children of a walked node as a range; empty where none are given.
inline std::span<const rdl_tqm_datatree> children_of(const rdl_tqm_datatree &node)
{
    const bool given = (node.present & TQM_PRESENT_SUBTREE) != 0 && node.subtree != nullptr;
    return given ? std::span<const rdl_tqm_datatree>(node.subtree, node.subtree_count)
                 : std::span<const rdl_tqm_datatree>();
}

/// Appends a key to the step of its list entry, as "[name='P1']" (RFC 7950, section 9.13). A text with a single quote
/// stands in double ones, where double quotes and backslashes have a backslash before them, as in strings of YANG.
TQM_EXPORT void append_key(std::string &path, std::string_view key, std::string_view value);

/// One node of an output tree, made by a request and read by whoever takes the trees. It lives as long as the request,
/// at one address; reading it needs no lock once the walk is over.
class TQM_EXPORT OutputNode
{
public:
    /// Over siblings, in the order in which the walk made them.
    class TQM_EXPORT Iterator
    {
    public:
        using iterator_category = std::forward_iterator_tag;
        using value_type = const OutputNode;
        using difference_type = std::ptrdiff_t;
        using pointer = const OutputNode *;
        using reference = const OutputNode &;

        Iterator() = default;
        explicit Iterator(const OutputNode *node) : node_(node) {}
        reference operator*() const { return *node_; }
        pointer operator->() const { return node_; }
        Iterator &operator++();
        Iterator operator++(int)
        {
            Iterator before = *this;
            ++*this;
            return before;
        }
        friend bool operator==(const Iterator &a, const Iterator &b) { return a.node_ == b.node_; }

    private:
        const OutputNode *node_ = nullptr;
    };
    struct Children {
        Iterator first;
        Iterator begin() const { return first; }
        Iterator end() const { return {}; }
        bool empty() const { return first == Iterator(); }
    };

    const char *tag() const;
    /// Namespace URI.
    const char *ns() const;
    /// Null when the node has none: a container, a list entry, or a leaf without a value (which differs from "").
    const char *value() const;
    /// The node's own edit operation (TQM_OP_* or operation_none); none on nodes that were only made on the way to
    /// others, which have that of the node around them, and on all nodes of a read.
    std::optional<uint32_t> operation() const;
    /// The client's node that an edit's node comes from: the source of the add, or, where an add gave none, the node
    /// that the walk had matched last. Null on nodes that were only made on the way to others, and in reads.
    const rdl_tqm_datatree *origin() const;
    /// The node around this one; null at the top.
    const OutputNode *parent() const;
    /// A list's entries stand among the other children.
    Children children() const;
    bool is_list_entry() const;
    /// True on the key leaves of a list entry.
    bool is_key() const;
    /// The entry that has taken over this one's children, as both turned out to be the same one; else the node itself.
    const OutputNode &joined() const;
    /// Path of the node without keys, as "/macsec/policy-names/policy-name/name".
    std::string_view path() const;

protected:
    OutputNode() = default;
    ~OutputNode() = default;
};

/// What a document says of a node's operation.
struct WrittenOperation {
    const char *name;   ///< null: nothing is written
    uint32_t effective; ///< what nodes below that say nothing have
};

/// An operation is written where it is not the one that the node has from the nodes around it. Merge is not written on
/// keys, which only name their entry, nor in an entry that goes away as a whole.
TQM_EXPORT WrittenOperation written_operation(const OutputNode &node, uint32_t outer_operation);

/// Builds walked trees. Texts are copied into the memory of the request that the builder comes from (Request::builder),
/// which must outlive it, and is used on that one's thread. Calls must be balanced; leaves and nodes may come in any
/// order, and all nodes opened at the outermost level are roots.
class TQM_EXPORT TreeBuilder
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

    /// The closed roots, in one array that lives as long as the request. The builder is empty afterwards.
    Roots finish();

private:
    rdl_tqm_datatree *append(std::string_view ns, std::string_view tag);
    const char *shared(std::string_view text);
    static Roots array_of(Arena &arena, const rdl_tqm_datatree *nodes, std::size_t count);

    Arena &arena_;
    std::vector<rdl_tqm_datatree> nodes_;              ///< finished children of all open nodes, innermost last
    std::vector<std::size_t> open_;                    ///< positions in nodes_ of the open nodes
    std::unordered_set<std::string_view> texts_;       ///< namespaces and tags met so far
    std::array<std::string_view, 64> by_address_ = {}; ///< some of them, by where they came from
};

} // namespace tqm
