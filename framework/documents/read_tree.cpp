// Every difference between filter and walked tree fetches the same or more, never less.
#include "documents/read_tree.h"

#include <algorithm>
#include <cstring>

#include "walk/hierarchy.h"

namespace tqm
{

namespace
{

bool is_match(const rdl_tqm_datatree &node)
{
    return given_value(&node) != nullptr;
}

/// Content matches alone select what is beside them.
bool selects_all(const rdl_tqm_datatree &node)
{
    return std::all_of(node.subtree, node.subtree + node.subtree_count, is_match);
}

class ReadTree
{
public:
    ReadTree(const LoadRules &rules, const LoadTarget &target) : rules_(rules), target_(target) {}

    /// The tree of several filters for one top node: each selects for itself, so together they select the union.
    void merge(TreeBuilder::Roots tops, rdl_tqm_datatree &tree) const
    {
        const PathInfo *info = target_.paths.find(tops.nodes[0].tag);
        tree = tops.nodes[0];
        std::size_t count = 0;
        bool all = false;
        for (uint32_t i = 0; i < tops.count; ++i) {
            count += count_of_children(tops.nodes[i], info);
            all = all || selects_all(tops.nodes[i]);
        }
        begin_children(tree, count);
        for (uint32_t i = 0; i < tops.count; ++i) {
            copy_children(tops.nodes[i], tree, info, {Keys::trimmed, true});
        }
        end_children(tree, all && tops.count > 1);
    }

private:
    enum class Keys { trimmed, exact };

    struct Way {
        Keys keys;  ///< how the node, a list entry, names its keys
        bool alone; ///< no filter node up to the innermost entry has a sibling
    };

    /// Nodes are copied to where they stay: what is noted of them is known by their addresses.
    void copy(const rdl_tqm_datatree &node, rdl_tqm_datatree &made, const PathInfo *info, Way way) const
    {
        made = node;
        if (node.subtree_count == 0) {
            return;
        }
        begin_children(made, count_of_children(node, info));
        copy_children(node, made, info, way);
        end_children(made, rules_.kind.is_widened() && matches_leaf_lists_alone(made, info));
    }

    /// `only_matches`: there are no other nodes beside the leaf.
    void copy_match(const rdl_tqm_datatree &node, rdl_tqm_datatree &parent, const PathInfo *info, Way way,
                    bool only_matches) const
    {
        const std::string_view text = without_blanks(node.value);
        const bool has_blanks = text.size() != std::strlen(node.value);
        const bool chooses_too_few = rules_.kind.is_widened() && repeats_key(info) && (!way.alone || has_blanks);
        if (chooses_too_few && only_matches) {
            return;
        }
        rdl_tqm_datatree &made = parent.subtree[parent.subtree_count++];
        made = node;
        if (chooses_too_few) {
            made.value = nullptr;
            made.present &= static_cast<uint16_t>(~TQM_PRESENT_VALUE);
        } else if (has_blanks && (info == nullptr || !info->is_key || way.keys == Keys::trimmed)) {
            made.value = target_.arena.copy(text);
        }
    }

    /// True for a leaf that has the name of its entry's key, and its value: it is mapped to the native key, which keeps
    /// other entries from the siblings of the filter node that it stands in.
    static bool repeats_key(const PathInfo *info)
    {
        const PathInfo *list = info == nullptr || info->parent == nullptr ? nullptr : info->parent->parent;
        return list != nullptr && list->is_list() && list->has_key(info->tag);
    }

    std::size_t count_of_children(const rdl_tqm_datatree &node, const PathInfo *info) const
    {
        std::size_t count = node.subtree_count;
        for (uint32_t i = 0; rules_.kind.is_widened() && info != nullptr && i < node.subtree_count; ++i) {
            if (has_blank_key(node.subtree[i], info->child(node.subtree[i].tag))) {
                ++count;
            }
        }
        return asks_for_existence(node, info) ? count + 1 : count;
    }

    void begin_children(rdl_tqm_datatree &made, std::size_t at_most) const
    {
        made.subtree = target_.arena.make_array<rdl_tqm_datatree>(at_most);
        made.subtree_count = 0;
    }

    void copy_children(const rdl_tqm_datatree &node, rdl_tqm_datatree &made, const PathInfo *info, Way way) const
    {
        const bool alone = (way.alone || (info != nullptr && info->is_list())) && node.subtree_count == 1;
        const bool only_matches = selects_all(node);
        for (uint32_t i = 0; i < node.subtree_count; ++i) {
            const rdl_tqm_datatree &child = node.subtree[i];
            const PathInfo *child_info = info == nullptr ? nullptr : info->child(child.tag);
            if (const char *reason = left_out(node, child, info, child_info)) {
                if (rules_.keeps_left_out) {
                    target_.tree.leave_out({&made, made.subtree_count, child, reason});
                }
            } else if (is_match(child)) {
                copy_match(child, made, child_info, way, only_matches);
            } else {
                copy(child, made.subtree[made.subtree_count++], child_info, {Keys::trimmed, alone});
                if (rules_.kind.is_widened() && has_blank_key(child, child_info)) {
                    copy(child, made.subtree[made.subtree_count++], child_info, {Keys::exact, alone});
                }
            }
        }
        if (made.subtree_count != 0 && asks_for_existence(node, info)) {
            add_key_of_state(made.subtree[made.subtree_count++], node, *info);
        }
    }

    /// True for a filter for entries that names a key beside other nodes: it is answered with the keys of entries that
    /// have none of those, too, also where they are known in the state alone. (One that names nothing but keys is
    /// walked through all that there is.)
    bool asks_for_existence(const rdl_tqm_datatree &entry, const PathInfo *list) const
    {
        if (!rules_.kind.is_widened() || !rules_.kind.is_get() || list == nullptr || !list->is_list()) {
            return false;
        }
        const auto is_key = [&](const rdl_tqm_datatree &child) { return list->has_key(child.tag); };
        return key_of_state(*list) != nullptr && !selects_all(entry) &&
               std::any_of(entry.subtree, entry.subtree + entry.subtree_count, is_key);
    }

    /// The leaf that repeats the key in a container of state; null if there is none.
    static const PathInfo *key_of_state(const PathInfo &list)
    {
        for (const PathInfo *child = list.first_child; child != nullptr; child = child->next_sibling) {
            if (child->is_container() && !child->schema->config && !list.keys().empty()) {
                if (const PathInfo *key = child->child(list.keys().front())) {
                    return key;
                }
            }
        }
        return nullptr;
    }

    void add_key_of_state(rdl_tqm_datatree &made, const rdl_tqm_datatree &entry, const PathInfo &list) const
    {
        const PathInfo *key = key_of_state(list);
        made.tag = key->parent->tag;
        made.ns = entry.ns;
        begin_children(made, 1);
        made.subtree_count = 1;
        made.present = TQM_PRESENT_SUBTREE;
        made.subtree->tag = key->tag;
        made.subtree->ns = entry.ns;
    }

    /// A node without children selects all below it.
    static void end_children(rdl_tqm_datatree &made, bool all)
    {
        if (!all && made.subtree_count != 0) {
            return;
        }
        made.subtree = nullptr;
        made.subtree_count = 0;
        made.present &= static_cast<uint16_t>(~TQM_PRESENT_SUBTREE);
    }

    /// Why `child` is not walked; null if it is.
    const char *left_out(const rdl_tqm_datatree &parent, const rdl_tqm_datatree &child, const PathInfo *info,
                         const PathInfo *child_info) const
    {
        if (child_info == nullptr) {
            return nullptr;
        }
        // The walkers compare tags.
        if (*child.ns != '\0' && *parent.ns != '\0' && std::strcmp(child.ns, parent.ns) != 0) {
            return "it is of another module, and selects nothing";
        }
        // Which entries of state there are is known when they are answered.
        if (info->is_list() && !info->schema->config && child_info->is_key) {
            return "the key of a list of state is matched in the answer";
        }
        return nullptr;
    }

    /// The entry may be called by the text with its blanks, too.
    static bool has_blank_key(const rdl_tqm_datatree &entry, const PathInfo *list)
    {
        if (list == nullptr || !list->is_list()) {
            return false;
        }
        return std::any_of(entry.subtree, entry.subtree + entry.subtree_count, [&](const rdl_tqm_datatree &key) {
            return is_match(key) && without_blanks(key.value).size() != std::strlen(key.value) &&
                   list->has_key(key.tag);
        });
    }

    /// Content matches alone select all their siblings. The walkers see that for leaves, but not for leaf-lists: a node
    /// with no other children is walked without them, as one that selects all below it.
    static bool matches_leaf_lists_alone(const rdl_tqm_datatree &node, const PathInfo *info)
    {
        return std::all_of(node.subtree, node.subtree + node.subtree_count, [&](const rdl_tqm_datatree &child) {
            const PathInfo *child_info = info == nullptr ? nullptr : info->child(child.tag);
            return child_info != nullptr && child_info->is_leaf_list() && is_match(child);
        });
    }

    const LoadRules &rules_;
    const LoadTarget &target_;
};

} // namespace

std::string_view without_blanks(std::string_view text)
{
    constexpr std::string_view blanks = " \t\r\n";
    text.remove_prefix(std::min(text.find_first_not_of(blanks), text.size()));
    text.remove_suffix(text.size() - text.find_last_not_of(blanks) - 1);
    return text;
}

void make_read_tree(const LoadRules &rules, const LoadTarget &target)
{
    const RequestTree::Roots filter = target.tree.filter();
    target.tree.adopt({});
    if (filter.count == 0) {
        return;
    }
    auto *tree = target.arena.make<rdl_tqm_datatree>();
    ReadTree(rules, target).merge(filter, *tree);
    target.tree.adopt({tree, 1});
}

} // namespace tqm
