// Placing: which node of the output an add means. Mappers give schema paths without keys; the instances of the lists on
// the way follow from where the walk stands. What an add then does to its node is in settling.cpp.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

#include "schema/paths.h"
#include "tqm/request.h"
#include "trees/arena.h"
#include "trees/namespaces.h"
#include "trees/output.h"
#include "walk/hierarchy.h"
#include "walk/observation.h"
#include "walk/walk_kind.h"

namespace tqm
{

/// Arguments of an add, as tqm_map_datatree_add_path_flagged has them.
struct AddArguments {
    rdl_tqm_datatree *tree = nullptr;
    const char *path = nullptr;
    const char *ns = nullptr;
    const char *value = nullptr;
    const rdl_tqm_datatree *source = nullptr;
    rdl_tqm_datatree **out_node = nullptr;
    uint32_t list_entry = 0;
    uint32_t flags = TQM_ADD_PLAIN;
};

class Placing
{
public:
    /// What placing looks at, and builds. All of it outlives this.
    struct Around {
        const WalkKind &kind;
        const tqm_map_ctx_record &context; ///< for the operation that a list walker leaves there
        std::span<const tqm_map_reg_info> registrations;
        Observation &observation;
        Arena &arena;
        Namespaces &namespaces;
        PathTable &paths;
        Hierarchy &hierarchy;
        Output &output;
    };
    explicit Placing(const Around &around) : around_(around) {}

    // ---- Adds ----

    /// TQM_ERR_BAD_ARGS for what is no add: arguments out of their range, a path below a leaf.
    rcode add(const AddArguments &arguments);
    /// A read of one leaf: keys on the way come from the hierarchy. TQM_ERR_BAD_ARGS where there can be no such node.
    rcode add_read_leaf(rdl_tqm_datatree *tree, std::string_view path, const char *ns);

    /// Gives entries that wait for it the operation that the list walker has left in the context.
    void settle();
    /// The walker is about to enter or leave a node.
    void move()
    {
        settle();
        last_parent_ = {};
    }
    /// After the walk of an edit: entries that stay keep what makes them the client's (SchemaNode::marker).
    void settle_markers();

    // ---- Finding and joining entries (reverse) ----

    /// The entry of `list` whose leaf `key`, or only key, has `value`; null if there is none. `tree` is the output or
    /// one of its nodes.
    OutputRecord *search(rdl_tqm_datatree *tree, const PathInfo &list, std::string_view key, std::string_view value);
    /// Adds an entry with its key leaf and makes it current; null where it cannot be added.
    OutputRecord *add_keyed_entry(rdl_tqm_datatree *tree, const PathInfo &list, const char *ns, const char *key,
                                  const char *value);
    /// What the last successful search of `list` found; null if none did.
    OutputRecord *last_found(const PathInfo &list) { return state_of(list).last_found; }
    /// From now on bare paths below `list` lead to `entry`.
    void make_current(const PathInfo &list, OutputRecord &entry);
    /// How many entries have been made current. What has been since is undone by undo_to().
    std::size_t made_current() const { return undo_.size(); }
    void undo_to(std::size_t made_current);

    // ---- Edits: what the walk is to mind of the data that are there ----

    /// The removal `node` would find nothing, and must take nothing else.
    void ignore(const rdl_tqm_datatree &node) { ignored_.insert(&node); }
    /// Beside the value `node` of a leaf-list another one stays.
    void keep_beside(const rdl_tqm_datatree &node) { beside_stored_.insert(&node); }
    /// The first value of a leaf-list that is one too many, as the native side keeps them in one leaf; null if none is.
    const rdl_tqm_datatree *one_too_many() const { return one_too_many_; }

private:
    /// Namespaces of the nodes that an add makes on its way.
    struct Naming {
        const char *below;           ///< of nodes deeper than `split`
        const char *above = nullptr; ///< of nodes down to `split`
        uint32_t split = 0;          ///< depth of the innermost list, where the two differ

        const char *ns_of(const PathInfo &info) const { return info.depth <= split ? above : below; }
    };
    /// Of a list of the output, in the reverse direction.
    struct ListState {
        const PathInfo *list = nullptr;
        OutputRecord *current = nullptr;    ///< the entry that bare paths below the list lead to
        OutputRecord *last_found = nullptr; ///< what the last successful search of the list found
    };
    struct Undo {
        const PathInfo *list;
        OutputRecord *previous;
    };

    rcode place(const AddArguments &arguments);
    OutputRecord *leaf_list_value(OutputRecord &base, const PathInfo &info, const Naming &naming, bool inside,
                                  const char *value, bool replaces);
    void tell(const AddArguments &arguments, const OutputRecord *node, rcode code) const;
    Naming naming_for(const AddArguments &arguments, const PathInfo &info);
    void read_beside(OutputRecord &outer, const std::string &path, const Naming &naming);
    rcode add_to_request_node(const AddArguments &arguments);
    OutputRecord *node_for(const PathInfo &info, const Naming &naming, bool addressed);
    OutputRecord *forward_entry(const PathInfo &list, const Naming &naming, bool addressed);
    Instances &owner_of_new_entry(const PathInfo &list, Frame *&owner_frame);
    OutputRecord *reverse_entry(const PathInfo &list, const Naming &naming, bool addressed);
    OutputRecord *current_entry(const PathInfo &list) const;
    OutputRecord *below(OutputRecord &entry, const PathInfo &info, const Naming &naming);
    OutputRecord *existing(const PathInfo *info) const;
    void give_key_from_walk(OutputRecord &entry, Frame *owner);
    void give_key_of_deleted(OutputRecord &entry, const AddArguments &arguments);
    OutputRecord *base_of(rdl_tqm_datatree *tree) const;
    const char *key_path(const PathInfo &list);
    const ListState *find_state(const PathInfo &list) const;
    ListState &state_of(const PathInfo &list);

    // Settling: the value and operation of a placed node, and of the entry around it.
    bool in_fill() const { return around_.context.request->fill_mode == 1; }
    void set_value(OutputRecord &node, const char *value);
    void set_operation(OutputRecord &node, const rdl_tqm_datatree *source);
    /// Of an add that says something of `entry`, which `node` is or is in.
    void settle_entry_operation(OutputRecord &node, OutputRecord &entry, const AddArguments &arguments);
    uint32_t operation_without_source(const OutputRecord &node, const rdl_tqm_datatree *walked) const;
    bool is_leaf_list_value(const rdl_tqm_datatree &source);
    /// False where takes_value() needs not be asked.
    bool may_be_contested(const OutputRecord &node, const AddArguments &arguments) const
    {
        const bool is_alone = node.origin_node == nullptr || node.origin_node == arguments.source;
        return around_.kind.is_forward_edit() && !(is_alone && beside_stored_.empty());
    }
    bool takes_value(OutputRecord &node, const AddArguments &arguments);
    void settle_marker(OutputRecord &entry);
    void index_key(OutputRecord &leaf, const char *old_value);

    Around around_;
    /// The node around the one that was placed last: leaves come in groups. Forgotten where the walk moves and where an
    /// entry is made or found, as paths then lead elsewhere.
    struct {
        const PathInfo *info = nullptr;
        OutputRecord *node = nullptr;
    } last_parent_;
    Instances request_instances_; ///< entries that stand for all: made where the walk stood in no entry
    std::vector<OutputRecord *> pending_;
    std::vector<OutputRecord *> marked_; ///< entries of the request in lists with a marker
    std::vector<ListState> lists_;       ///< few: those that the walk has come to
    std::vector<Undo> undo_;             ///< what the entries that were made current had in their place
    std::unordered_set<const rdl_tqm_datatree *> ignored_;
    std::unordered_set<const rdl_tqm_datatree *> beside_stored_;
    const rdl_tqm_datatree *one_too_many_ = nullptr;
};

} // namespace tqm
