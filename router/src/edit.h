// Application of an edit to a data tree. Knows the operations; copies, validation and files are the datastore's.
#pragma once

#include "entries.h"
#include "router/edit_node.h"
#include "router/error.h"
#include "tree.h"

#include <map>
#include <string>
#include <unordered_map>
#include <utility>

namespace router
{

class Editor
{
public:
    /// Works on `tree`, which the caller throws away if an edit fails.
    Editor(const ly_ctx *context, const ShownEntries &shown_entries, Tree &tree)
        : context_(context), shown_entries_(shown_entries), tree_(tree)
    {
    }

    Expected<void> apply(const EditNode *trees);

    /// Whether the tree is another than before.
    bool changed() const { return changed_; }

private:
    /// A place for data: a container or entry that is there, or one that is made when data come below it.
    struct Place {
        Place *parent;
        const lysc_node *schema;
        lyd_node *node;
    };
    /// The entries that an edit names with all keys, to set something, in one list among the children of one node.
    using Named = std::unordered_map<std::string, const EditNode *>;

    Expected<void> apply_node(const EditNode &node, const EditNode *siblings, Place *parent);
    Expected<void> apply_children(const EditNode &node, Place &place);
    Expected<void> apply_leaf(const EditNode &node, Place &parent, const lysc_node *schema);
    Expected<void> apply_container(const EditNode &node, Place *parent, const lysc_node *schema);
    Expected<void> apply_list(const EditNode &node, const EditNode *siblings, Place &parent, const lysc_node *schema);
    Expected<void> apply_entry(const EditNode &node, Place &parent, const lysc_node *schema, const Keys &keys);
    Expected<void> apply_entries(const EditNode &node, const EditNode *siblings, Place &parent, const lysc_node *schema,
                                 const Keys &keys);
    Expected<void> set_leaf(const EditNode &node, Place &parent, const lysc_node *schema, lyd_node *leaf);

    /// What a removal of all entries takes of those that the edit names: `removals` are the children of the entry that
    /// stands for all, `named` those of the one that is named (null: nothing is), `data` the parent of both's data.
    void sweep(const EditNode *removals, lyd_node *data, const EditNode *named);
    void sweep_container(const EditNode &removal, const lysc_node *schema, lyd_node *data, const EditNode *named);
    void sweep_entries(const EditNode &removal, const lysc_node *schema, lyd_node *data, const EditNode *named);
    const Named &named_entries(const EditNode *siblings, const lysc_node *list);

    lyd_node *top() const { return tree_.get(); }
    std::string path_of_child(const Place *parent, const std::string &name) const;
    lyd_node *make(Place &place);
    bool make_entry(Place &entry, const Keys &keys);
    void remove(lyd_node *node);
    void remove_contents(lyd_node *node);
    /// Takes away a leaf and, if it is in a case, what there is of the other cases. False if there was nothing.
    bool remove_setting(lyd_node *parent, const lysc_node *schema);
    bool remove_other_cases(lyd_node *parent, const lysc_node *schema);

    const ly_ctx *context_;
    const ShownEntries &shown_entries_;
    Tree &tree_;
    EntryFinder finder_;
    bool changed_ = false;
    std::map<std::pair<const EditNode *, const lysc_node *>, Named> named_;
};

} // namespace router
