// Application of an edit to a data tree. Knows the operations; copies, validation and files are the datastore's.
#ifndef ROUTER_EDIT_H
#define ROUTER_EDIT_H

#include "entries.h"
#include "router/edit_node.h"
#include "router/error.h"
#include "tree.h"

#include <string>
#include <unordered_map>
#include <vector>

namespace router
{

class Editor
{
public:
    // Works on `tree`, which the caller throws away if an edit fails.
    Editor(const ly_ctx *context, const Visibility &visibility, Tree &tree)
        : context_(context), visibility_(visibility), tree_(tree)
    {
    }

    Expected<void> apply(const EditNode *trees);

    // Whether the tree is another than before.
    bool changed() const { return changed_; }

private:
    // A place for data: a container or entry that is there, or one that is made when data come below it.
    struct Place {
        Place *parent;
        const lysc_node *schema;
        lyd_node *node;
    };
    // One deletion of the caller's: the nodes of one group.
    struct Deletion {
        bool found = false;
        std::string path; // of the first node that was not there
    };
    Expected<void> apply_node(const EditNode &node, Place *parent);
    Expected<void> apply_children(const EditNode &node, Place &place);
    Expected<void> apply_leaf(const EditNode &node, Place &parent, const lysc_node *schema);
    Expected<void> apply_container(const EditNode &node, Place *parent, const lysc_node *schema);
    // The children of a container that has just been taken away which set something all the same: a replace that
    // was taken apart into its removal and its new content looks like that.
    Expected<void> set_anew(const EditNode &node, Place &place);
    Expected<void> apply_list(const EditNode &node, Place &parent, const lysc_node *schema);
    Expected<void> apply_entry(const EditNode &node, Operation operation, Place &parent, const lysc_node *schema,
                               const Keys &keys);
    Expected<void> apply_entries(const EditNode &node, Operation operation, Place &parent, const lysc_node *schema,
                                 const Keys &keys);
    Expected<void> set_leaf(const EditNode &node, Place &parent, const lysc_node *schema, lyd_node *leaf);

    lyd_node *top() const { return tree_.get(); }
    std::string path_of_child(const Place *parent, const std::string &name) const;
    lyd_node *make(Place &place);
    bool make_entry(Place &entry, const Keys &keys);
    void remove(lyd_node *node);
    void remove_contents(lyd_node *node);

    // Delete or remove of `data`, which is null where there is none; `path` makes its path for that case.
    template <typename Path>
    void take_away(const EditNode &node, Operation operation, lyd_node *data, Path path);
    Deletion &deletion(const EditNode &node);
    void note_missing(const EditNode &node, const std::string &path);
    void missing_below(const EditNode &node, const std::string &path);

    const ly_ctx *context_;
    const Visibility &visibility_;
    Tree &tree_;
    EntryFinder finder_;
    bool changed_ = false;
    bool swept_ = false; // below a container that is gone: what is to be deleted there has been found

    std::vector<Deletion> deletions_;
    std::unordered_map<const void *, size_t> deletion_of_;
};

} // namespace router

#endif
