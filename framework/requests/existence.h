// What an edit asks of the data that are there before it: a create wants nothing at its place, a delete something
// (RFC 6241, section 7.2). Whether a node exists is a question about the client's own tree, so just those nodes are
// read through the mapping, as a client would read them; the native side need not guess.
#pragma once

#include <cstddef>
#include <string>
#include <unordered_map>
#include <vector>

#include "requests/edit_tree.h"
#include "walk/request_state.h"

namespace tqm
{

class Existence
{
public:
    /// Collects what `edit` asks, which has a tree and is not walked yet.
    explicit Existence(Request::Impl &edit);

    /// False where nothing has to be read for the verdict.
    bool reads() const { return reads_; }
    /// The trees of a get-config that asks for just those nodes.
    TreeBuilder::Roots filter(TreeBuilder &builder) const;

    // What the reading has brought. Leaves that hold secrets do not come back through the mapping: they exist where a
    // native leaf that they are read from does.
    /// `filter` as the walk gets it.
    void note_filter(const TreeBuilder::Roots &filter);
    /// A native filter that the walk has made of it, and what the native side answered.
    void note_native(const OutputNode &filter, const TreeBuilder::Roots &answer);
    /// The answer in the client's terms.
    void note_answer(Request::Impl &answer);

    /// The first question, in document order, that is not fulfilled, as an error. Else tells the edit what its removals
    /// and its values of leaf-lists meet.
    Expected<void> judge();

private:
    enum class Question {
        none,    ///< only on the way to others
        present, ///< it must be there
        absent,  ///< it must not
        value,   ///< of a leaf-list: judged with the others in it
        secret,  ///< a removal of a secret, which the mapping cannot carry out
    };
    struct Asked {
        const rdl_tqm_datatree *node;
        const PathInfo *info;
        std::size_t parent; ///< npos: a top element
        Question question = Question::none;
        bool is_read = false; ///< its answer, or one below it, is to be read; else nothing is there
        bool exists = false;
        uint32_t stored = 0; ///< how many values its leaf-list has
        std::vector<std::size_t> children = {};
    };
    /// A node on the way to where the collection stands.
    struct Step {
        const rdl_tqm_datatree *node;
        const PathInfo *info;
        std::size_t asked; ///< npos: not asked so far
    };

    void visit(const rdl_tqm_datatree &node, const PathInfo &info, bool is_emptied);
    void visit_children(const rdl_tqm_datatree &node, const PathInfo &info, bool is_emptied);
    std::size_t ask(std::size_t depth, bool by_reading);
    void build(TreeBuilder &builder, const std::vector<std::size_t> &siblings) const;
    void build_one(TreeBuilder &builder, const Asked &asked) const;
    static void build_probe(TreeBuilder &builder, const char *ns, const PathInfo &container);
    void pair(const rdl_tqm_datatree *nodes, uint32_t count, const std::vector<std::size_t> &siblings);
    void find(Request::Impl &answer, const OutputRecord &outer, std::size_t position);
    Expected<void> judge_one(std::size_t position);
    Expected<void> judge_values(const std::vector<std::size_t> &values);
    tl::unexpected<Error> refuse(ErrorTag tag, std::size_t position, const std::string &reason) const;
    InstancePath place_of(std::size_t position) const;

    Request::Impl &edit_;
    LoadedEdit tree_;
    bool reads_ = false;
    std::vector<Asked> asked_; ///< in document order
    std::vector<std::size_t> tops_;
    std::vector<Step> way_;
    std::vector<std::vector<std::size_t>> value_sets_; ///< values of one leaf-list, where one of them asks
    std::unordered_map<const rdl_tqm_datatree *, std::size_t> by_filter_; ///< leaves of the filter that hold secrets
};

} // namespace tqm
