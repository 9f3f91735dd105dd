// The trees that the router is given: edits, and filters of reads. Plain non-owning records, so that a caller can lay
// them over a tree of its own in one pass; all of it must live until the call returns.
#ifndef ROUTER_EDIT_NODE_H
#define ROUTER_EDIT_NODE_H

namespace router
{

enum class Operation { none, merge, replace, create, delete_, remove };

// One node. In an edit:
// - A list entry is matched by the key leaves among its children. All keys name one entry. Some keys mean every entry
//   that agrees with them, none every entry that OpenConfig shows; neither of these creates an entry.
// - `none` on a list entry or a container only leads to the children; an entry that is not there is data-missing.
//   `none` on a leaf sets it if it has a value (or is of type empty), and otherwise does nothing.
// - `delete_` and `remove` on an entry take all of it, whatever the children say; on the key leaf of an entry they take
//   the entry. Other operations on key leaves mean nothing: a key only names its entry. On a container they take all
//   of it, and what children set with an operation of their own is set after that.
// - A key chain that is made is MACsec's. One of the router's own is data-missing to what leads to it or deletes it,
//   and refused to what would change it. So is an interface without a key chain to its own delete; but it can be
//   given one, which a create does as well.
// - Siblings are applied in their order.
// In a filter, key leaves with a value choose entries, all other leaves only choose what is fetched (their value means
// nothing), and a node without children chooses all below it. Operations mean nothing there.
struct EditNode {
    const char *ns = nullptr;    // namespace URI; null: that of the parent
    const char *name = nullptr;  // never null
    const char *value = nullptr; // null: none
    Operation operation = Operation::none;
    const EditNode *first_child = nullptr;
    const EditNode *next = nullptr;
    // Deletes with the same group are one deletion of the caller's: data-missing only if none of them found its node.
    // Null: the delete stands alone. The router only compares the address.
    const void *group = nullptr;
};

} // namespace router

#endif
