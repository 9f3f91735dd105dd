// See filter.h. Selected nodes are marked first, so that several filters add up; what is unmarked is dropped then.
#include "filter.h"

#include <cstring>

#include "hierarchy.h"

namespace tqm
{

namespace
{

constexpr uint8_t kOnTheWay = 1;
constexpr uint8_t kWhole = 2;

struct FilterNodes {
    const rdl_tqm_datatree *nodes;
    uint32_t count;
    const rdl_tqm_datatree *begin() const { return nodes; }
    const rdl_tqm_datatree *end() const { return nodes + count; }
};

FilterNodes children_of(const rdl_tqm_datatree &filter)
{
    const bool given = (filter.present & TQM_PRESENT_SUBTREE) != 0 && filter.subtree != nullptr;
    return {given ? filter.subtree : nullptr, given ? filter.subtree_count : 0};
}

bool names(const rdl_tqm_datatree &filter, const OutputNode &data)
{
    return filter.tag != nullptr && std::strcmp(filter.tag, data.tag()) == 0 &&
           (filter.ns == nullptr || *filter.ns == '\0' || std::strcmp(filter.ns, data.ns()) == 0);
}

class Selection
{
public:
    explicit Selection(const Output &output) : output_(output) {}

    /// Marks what the sibling set `filters` selects among the children of `data`. False if that is nothing.
    bool select(FilterNodes filters, OutputNode &data) const
    {
        if (data.kept == kWhole)
            return true;
        bool only_matches = true;
        for (const rdl_tqm_datatree &filter : filters) {
            const bool is_match = given_value(&filter) != nullptr;
            if (is_match && !matches(filter, data))
                return false;
            only_matches = only_matches && is_match;
        }
        if (only_matches) {
            data.kept = kWhole;
            return true;
        }
        bool selected = false;
        for (const rdl_tqm_datatree &filter : filters)
            selected = select_children(filter, data) || selected;
        if (!selected)
            return false;
        data.kept = kOnTheWay;
        for (OutputNode *child = data.first_child; data.list_entry && child != nullptr; child = child->next)
            if (child->is_key())
                child->kept = kWhole;
        return true;
    }

private:
    /// Calls `visit` with each list entry, value or node among the children of `data` that `filter` names.
    template <class Visit>
    static bool for_each_named(const rdl_tqm_datatree &filter, OutputNode &data, Visit visit)
    {
        for (OutputNode *child = data.first_named; child != nullptr; child = child->next_named)
            if (!child->dropped && names(filter, *child))
                return visit(*child);
        bool any = false;
        for (const ListSlot *slot = data.slots; slot != nullptr; slot = slot->next) {
            if (filter.tag == nullptr || std::strcmp(filter.tag, slot->info->tag) != 0)
                continue;
            for (OutputNode *child = data.first_child; child != nullptr; child = child->next)
                if (!child->dropped && child->info == slot->info && names(filter, *child))
                    any = visit(*child) || any;
        }
        return any;
    }

    static const ListSlot *slot_named(const rdl_tqm_datatree &filter, const OutputNode &data)
    {
        const ListSlot *slot = data.slots;
        while (slot != nullptr && (filter.tag == nullptr || std::strcmp(filter.tag, slot->info->tag) != 0))
            slot = slot->next;
        return slot;
    }

    bool matches(const rdl_tqm_datatree &filter, OutputNode &data) const
    {
        const ListSlot *values = slot_named(filter, data);
        if (values != nullptr && values->info->is_leaf_list) {
            const OutputNode *value = output_.find_value(values, filter.value);
            return value != nullptr && !value->dropped && names(filter, *value);
        }
        return for_each_named(filter, data, [&](OutputNode &leaf) {
            return leaf.value() != nullptr && std::strcmp(leaf.value(), filter.value) == 0;
        });
    }

    /// True if the filter names one entry of `slot` by its key: `entry` is that then, or null.
    bool entry_by_key(FilterNodes filters, const ListSlot *slot, OutputNode *&entry) const
    {
        if (slot == nullptr || !slot->info->is_list || slot->info->keys->size() != 1)
            return false;
        const std::string &key = slot->info->keys->front();
        const char *value = given_value(find_child(filters.nodes, filters.count, key));
        if (value == nullptr)
            return false;
        entry = output_.find_by_key(slot, key, value);
        return true;
    }

    bool select_children(const rdl_tqm_datatree &filter, OutputNode &data) const
    {
        if (const char *value = given_value(&filter)) {
            const ListSlot *values = slot_named(filter, data);
            if (values != nullptr && values->info->is_leaf_list) {
                output_.find_value(values, value)->kept = kWhole;
                return true;
            }
        }
        const FilterNodes below = children_of(filter);
        OutputNode *entry = nullptr;
        if (entry_by_key(below, slot_named(filter, data), entry))
            return entry != nullptr && !entry->dropped && names(filter, *entry) && select(below, *entry);
        return for_each_named(filter, data, [&](OutputNode &child) { return select(below, child); });
    }

    const Output &output_;
};

void drop_unmarked(OutputNode &parent)
{
    for (OutputNode *child = parent.first_child; child != nullptr; child = child->next) {
        if (child->kept == 0)
            child->dropped = true;
        else if (child->kept == kOnTheWay)
            drop_unmarked(*child);
    }
}

} // namespace

void apply_filter(Output &output, TreeBuilder::Roots filters)
{
    const Selection selection(output);
    for (uint32_t i = 0; i < filters.count; ++i)
        for (OutputNode *root = output.base().first_child; root != nullptr; root = root->next)
            if (!root->dropped && names(filters.nodes[i], *root))
                selection.select(children_of(filters.nodes[i]), *root);
    drop_unmarked(output.base());
}

} // namespace tqm
