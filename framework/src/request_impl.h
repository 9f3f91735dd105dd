// A request's inner state, shared by the operations: the records that plug-ins see, the hierarchy, the trees. Placing,
// the rule by which an add finds its node, is here too.
#pragma once

#include <cstdint>
#include <deque>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "arena.h"
#include "hierarchy.h"
#include "observation.h"
#include "output.h"
#include "paths.h"
#include "tqm/request.h"

namespace tqm
{

/// What a `tqm_map_ctx` points at. The record comes first, so that the context leads back to its request.
struct ContextBlock {
    tqm_map_ctx_record record{};
    Request::Impl *request = nullptr;
};

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

struct Request::Impl {
    Impl(const Schema &schema_in, std::span<const tqm_map_reg_info> registrations_in, uint32_t kind,
         Direction direction_in, Watch watch_in);
    ~Impl();
    Impl(const Impl &) = delete;
    Impl &operator=(const Impl &) = delete;

    static Impl *of(tqm_map_ctx ctx)
    {
        return ctx == nullptr ? nullptr : reinterpret_cast<ContextBlock *>(ctx)->request;
    }

    bool is_read() const { return header.kind == TQM_REQ_GET_CONFIG || header.kind == TQM_REQ_GET; }
    bool is_forward_edit() const { return direction == Direction::forward && !is_read(); }
    bool in_fill() const { return record.fill_mode == 1; }

    // ---- Building the output ----
    rcode add(const AddArguments &arguments);
    /// A read of one leaf: keys on the way come from the hierarchy.
    rcode add_read_leaf(rdl_tqm_datatree *tree, std::string_view path, const char *ns);
    /// Gives entries that wait for it the operation that the list walker has left in the context.
    void settle();
    /// After the walk of an edit: entries that stay keep what makes them the client's (Schema::add_marker).
    void settle_markers();

    // ---- Finding and joining entries (reverse) ----
    OutputNode *search(rdl_tqm_datatree *tree, PathInfo &list, std::string_view key, std::string_view value);
    /// Adds an entry with its key leaf and makes it current.
    OutputNode *add_keyed_entry(rdl_tqm_datatree *tree, PathInfo &list, const char *ns, const char *key,
                                const char *value);
    void make_current(PathInfo &list, OutputNode &entry);

    // ---- Hierarchy ----
    void push(const rdl_tqm_datatree &node, bool is_list);
    bool pop(const rdl_tqm_datatree *node);
    void note_error_path();
    void note_place_of_message();
    /// The request node that the walk has come to: in a fill the one that is filled, else the leaf that was matched
    /// last, or the node on top of the hierarchy. Null if the walk stands nowhere.
    const rdl_tqm_datatree *walked_node();
    /// Ready for the walk of another tree.
    void start_walk();

    // ---- Texts ----
    char *duplicate(const char *text);
    void free_text(void *text);
    /// True for a text that a mapper made while a walker was filling: it says nothing about a failure.
    bool made_in_fill(const char *text) const { return text != nullptr && fill_texts.contains(text); }
    const char *intern_ns(const char *ns);

    const Schema &schema;
    std::span<const tqm_map_reg_info> registrations;
    Direction direction;
    Watch watch;
    Observation observation;

    Arena arena;
    PathTable paths;
    Output output;
    Hierarchy hierarchy;
    Instances request_instances; ///< entries that stand for all: made where the walk stood in no entry
    std::vector<OutputNode *> pending;
    std::vector<OutputNode *> marked; ///< entries of the request in lists with a marker
    struct Undo {
        PathInfo *list;
        OutputNode *previous;
    };
    std::vector<Undo> undo; ///< what the entries that frames made current had in their place
    std::deque<tqm_map_itree> itree_stack;

    tqm_map_request_hdr header{};
    tqm_map_request record{};
    ContextBlock context;

    std::vector<std::shared_ptr<void>> buffers; ///< documents that the trees point into
    TreeBuilder::Roots trees;
    std::vector<LeftOut> left_out;
    /// Edits: texts of deleted nodes, which the walkers do not get.
    std::unordered_map<const rdl_tqm_datatree *, const char *> deleted_texts;
    /// Edits, by what is there: nodes whose removal would find nothing and must take nothing else, and values of
    /// leaf-lists beside which a stored one stays.
    std::unordered_set<const rdl_tqm_datatree *> without_effect;
    std::unordered_set<const rdl_tqm_datatree *> beside_stored;
    /// Edits: the first value of a leaf-list that is one too many, as the native side keeps them in one leaf.
    const rdl_tqm_datatree *one_too_many = nullptr;
    std::string error_path;
    TreeBuilder::Roots filter; ///< forward reads: the client's, as it came
    bool widened = false;      ///< forward reads: the walk is to lead to all that matching the answer needs
    /// Edits: the first element of another namespace. The plug-in refuses those whose tag it does not know; the request
    /// is not good with one whose tag it does.
    std::optional<Error> foreign;
    const char *foreign_tag = nullptr;
    // What was noted outside fills. A walk that has failed may fill yet, and the fill then notes paths and replaces the
    // tag.
    std::string refused_path;
    const PathInfo *refused_at = nullptr; ///< the schema node of refused_path
    const char *matched_tag = nullptr;    ///< the tag of the request that was found to be another last
    std::string refused_tag;
    /// The child of a walked node whose value a mapper has looked up last.
    struct {
        const rdl_tqm_datatree *parent = nullptr;
        const rdl_tqm_datatree *child = nullptr;
        const rdl_tqm_datatree *child_of(const rdl_tqm_datatree &node) const
        {
            return parent == &node ? child : nullptr;
        }
    } asked_for;
    std::unordered_set<const char *> fill_texts;
    std::unordered_set<std::string_view> namespaces;
    const char *last_ns = nullptr;
    std::string list_context_path; ///< as tqm_map_copy_trim_path_list_ctx left it
    uint32_t trace_index = 0;      ///< number of the last trace line
    /// An operation could not get memory. It has not told its caller, which may be a mapper that knows no exceptions.
    bool out_of_memory = false;

private:
    /// Namespaces of the nodes that an add makes on its way.
    struct Naming {
        const char *below;           ///< of nodes deeper than `split`
        const char *above = nullptr; ///< of nodes down to `split`
        uint32_t split = 0;          ///< depth of the innermost list, where the two differ

        const char *ns_of(const PathInfo &info) const { return info.depth <= split ? above : below; }
    };

    rcode place(const AddArguments &arguments);
    void tell(const AddArguments &arguments, const OutputNode *node, rcode code);
    Naming naming_for(const AddArguments &arguments, const PathInfo &info);
    void read_beside(OutputNode &parent, const std::string &path, const Naming &naming);
    rcode add_to_request_node(const AddArguments &arguments);
    OutputNode *node_for(PathInfo &info, const Naming &naming, bool addressed);
    OutputNode *forward_entry(PathInfo &list, const Naming &naming, bool addressed);
    Instances &owner_of_new_entry(const PathInfo &list, Frame *&owner_frame);
    OutputNode *reverse_entry(PathInfo &list, const Naming &naming, bool addressed);
    OutputNode *current_entry(const PathInfo &list) const;
    OutputNode *below(OutputNode &entry, PathInfo &info, const Naming &naming);
    OutputNode *existing(PathInfo *info);
    void give_key_from_walk(OutputNode &entry, Frame *owner);
    void give_key_of_deleted(OutputNode &entry, const AddArguments &arguments);
    void set_value(OutputNode &node, const char *value);
    void set_operation(OutputNode &node, const rdl_tqm_datatree *source);
    void settle_entry_operation(OutputNode &node, const AddArguments &arguments);
    uint32_t operation_without_source(const OutputNode &node, const rdl_tqm_datatree *walked) const;
    bool is_leaf_list_value(const rdl_tqm_datatree &source);
    bool takes_value(OutputNode &node, const AddArguments &arguments);
    void settle_marker(OutputNode &entry);
    static OutputNode *find_below(OutputNode &entry, const PathInfo &info);
    void index_key(OutputNode &leaf, const char *old_value);
    OutputNode *base_of(rdl_tqm_datatree *tree) const;
};

// The library is linked to its program, so that the fast way to a thread's variable is open.
extern constinit thread_local Request::Impl *serving_request [[gnu::tls_model("initial-exec")]];

/// The request that operations without a context serve on this thread; null if there is none.
inline Request::Impl *&serving()
{
    return serving_request;
}

} // namespace tqm
