// The trees that the router is given: edits, and filters of reads. Plain non-owning records, so that a caller can lay
// them over a tree of its own in one pass; all of it must live until the call returns.
#pragma once

namespace router
{

// NOLINTNEXTLINE(readability-identifier-naming): the language has the word itself
enum class Operation { none, merge, replace, create, delete_, remove };

/// One node. In an edit operations are those of RFC 6241, section 7.2, and:
/// - A list entry is matched by the key leaves among its children. All keys name one entry. Some keys mean every entry
///   that agrees with them, none every entry that is shown; neither of these creates an entry. Operations on key
///   leaves mean nothing: a key only names its entry.
/// - An entry without all keys that goes away spares the entries of its list that the same edit names to set something:
///   of these it takes what its children take away, down to where the named entry says otherwise.
/// - `none` on a list entry or a container only leads to the children. An entry that is not there is data-missing,
///   unless all that it leads to is to be removed. `none` on a leaf sets it if it has a value, and otherwise does
///   nothing.
/// - `delete_` and `remove` of an entry or a container take all of it, whatever the children say.
/// - The cases of a choice are one setting: what is set in one takes the others' place, and what is taken away of one
///   is taken away of all, unless the edit sets another.
/// - An entry that is not shown (router/setup.h) is missing to what deletes it. Where its list says why it may not be
///   changed, it is missing to what leads to it, too, and refused to what would change it.
/// - What siblings take away goes first; else they are applied in their order.
/// In a filter, key leaves with a value choose entries, all other leaves only choose what is fetched (their value means
/// nothing), and a node without children chooses all below it. Operations mean nothing there.
struct EditNode {
    const char *ns = nullptr;    ///< namespace URI; null: that of the parent
    const char *name = nullptr;  ///< never null
    const char *value = nullptr; ///< null: none
    Operation operation = Operation::none;
    const EditNode *first_child = nullptr;
    const EditNode *next = nullptr;
    /// Given back in the error that is about this node; else not looked at.
    const void *origin = nullptr;
};

} // namespace router
