// Reads. Filters that choose the same nodes are put together first, and each node is visited once however many of them
// name it; a container in which nothing was chosen does not show.
#include "read.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <utility>

namespace router
{

namespace
{

// A flag's off state may be written "False"; readers get the spelling that is a boolean's.
const char *value_of(const lyd_node *node)
{
    const char *value = lyd_get_value(node);
    const bool is_flag = reinterpret_cast<const lyd_node_term *>(node)->value.realtype->basetype == LY_TYPE_UNION;
    return is_flag && std::strcmp(value, "False") == 0 ? "false" : value;
}

} // namespace

// Children that filters cannot tell apart: of one schema node, and of a list with the same keys.
struct Reader::ChosenChild {
    const lysc_node *schema;
    Keys keys; // of a list's entries
    std::unique_ptr<Choice> choice;
};

struct Reader::Choice {
    // The child of this schema node and with these keys, made if it is not there.
    Choice &child(const lysc_node *schema, const Keys &keys)
    {
        const auto [place, is_new] = place_of.try_emplace(text_of(schema, keys), children.size());
        if (is_new) {
            children.push_back({schema, keys, std::make_unique<Choice>()});
        }
        return *children[place->second].choice;
    }

    static std::string text_of(const lysc_node *schema, const Keys &keys)
    {
        std::string text = std::to_string(reinterpret_cast<std::uintptr_t>(schema));
        for (const char *value : keys.values) {
            text += value ? '=' : '-';
            text.append(value ? value : "").push_back('\0');
        }
        return text;
    }
    // The child with all keys that chooses `entry`; null if none does.
    const ChosenChild *choosing(const lyd_node *entry) const
    {
        Keys keys;
        for (const lyd_node *key = lyd_child(entry); key && lysc_is_key(key->schema); key = key->next) {
            keys.values[keys.wanted++] = lyd_get_value(key);
        }
        const auto found = place_of.find(text_of(entry->schema, keys));
        return found == place_of.end() ? nullptr : &children[found->second];
    }

    bool whole = false;                // all that is below the node
    std::vector<ChosenChild> children; // in the order in which they were first named
    std::unordered_map<std::string, size_t> place_of;
};

class Reader::Selection
{
public:
    void add(const lyd_node *node, const Choice *choice)
    {
        const auto [place, is_new] = place_of_.try_emplace(node, chosen_.size());
        if (is_new) {
            chosen_.emplace_back(node, Choices());
        }
        chosen_[place->second].second.push_back(choice);
    }

    const std::vector<std::pair<const lyd_node *, Choices>> &chosen() const { return chosen_; }

private:
    std::vector<std::pair<const lyd_node *, Choices>> chosen_;
    std::unordered_map<const lyd_node *, size_t> place_of_;
};

Reader::Reader(const ly_ctx *context, const ShownEntries &shown_entries, Sink &sink)
    : context_(context), shown_entries_(shown_entries), sink_(sink)
{
}

Reader::~Reader() = default;

void Reader::read(const EditNode &filter, const lyd_node *top)
{
    const lysc_node *schema = find_schema(context_, nullptr, filter);
    if (const lyd_node *root = schema && top ? find_single(nullptr, top, schema) : nullptr) {
        Choice choice;
        add(filter, schema, choice);
        walk(root, {&choice});
    }
}

// Adds what `filter`, a filter for nodes of `schema`, chooses of each.
void Reader::add(const EditNode &filter, const lysc_node *schema, Choice &choice) const
{
    choice.whole = choice.whole || !filter.first_child;
    for (const EditNode *child = filter.first_child; child && !choice.whole; child = child->next) {
        const lysc_node *child_schema = find_schema(context_, schema, *child);
        if (child_schema && !lysc_is_key(child_schema)) { // keys come with their entry
            const Keys keys = child_schema->nodetype == LYS_LIST ? keys_of(child_schema, *child) : Keys();
            add(*child, child_schema, choice.child(child_schema, keys));
        }
    }
}

const Reader::Choice *Reader::marker(const lysc_node *list)
{
    const auto [place, is_new] = markers_.try_emplace(list);
    const EditNode *filter = is_new ? shown_entries_.marker(list) : nullptr;
    if (filter) {
        const EditNode entry{.name = list->name, .first_child = filter};
        place->second = std::make_unique<Choice>();
        add(entry, list, *place->second);
    }
    return place->second.get();
}

void Reader::walk(const lyd_node *node, const Choices &choices)
{
    if (node->schema->nodetype & LYD_NODE_TERM) {
        leaf(node);
        return;
    }
    if (std::any_of(choices.begin(), choices.end(), [](const Choice *choice) { return choice->whole; })) {
        walk_all(node);
    } else {
        walk_chosen(node, choices);
    }
}

void Reader::walk_all(const lyd_node *node)
{
    if (node->flags & LYD_DEFAULT || !shown_entries_.shown(node)) {
        return;
    }
    if (node->schema->nodetype & LYD_NODE_TERM) {
        leaf(node);
        return;
    }
    open(node);
    for (const lyd_node *child = lyd_child(node); child; child = child->next) {
        walk_all(child);
    }
    close();
}

void Reader::walk_chosen(const lyd_node *node, const Choices &choices)
{
    Selection selection;
    for (const Choice *choice : choices) {
        select(*choice, node, selection);
    }
    if (const Choice *shown_by = node->schema->nodetype == LYS_LIST ? marker(node->schema) : nullptr) {
        select(*shown_by, node, selection);
    }
    open(node);
    for (const lyd_node *key = lyd_child(node); key && lysc_is_key(key->schema); key = key->next) {
        leaf(key);
    }
    for (const auto &[child, child_choices] : selection.chosen()) {
        walk(child, child_choices);
    }
    close();
}

void Reader::select(const Choice &choice, const lyd_node *parent, Selection &selection)
{
    std::unordered_set<const lysc_node *> done;
    for (const ChosenChild &child : choice.children) {
        if (done.contains(child.schema)) {
            continue;
        }
        if (!child.keys.all() || child.schema->nodetype != LYS_LIST ||
            !select_by_entry(choice, child.schema, parent, selection)) {
            select(child, parent, selection);
        } else {
            done.insert(child.schema);
        }
    }
}

// Where a list has fewer entries than keys were named of it, the entries are looked up among the keys. False where it
// is the other way round, and nothing is done.
bool Reader::select_by_entry(const Choice &choice, const lysc_node *list, const lyd_node *parent, Selection &selection)
{
    std::vector<const lyd_node *> entries;
    lyd_node *first = nullptr;
    lyd_find_sibling_val(lyd_child(parent), list, nullptr, 0, &first);
    for (const lyd_node *node = first; node && node->schema == list; node = node->next) {
        entries.push_back(node);
        if (entries.size() >= choice.children.size()) {
            return false;
        }
    }
    for (const lyd_node *entry : entries) {
        const ChosenChild *chosen = shown_entries_.shown(entry) ? choice.choosing(entry) : nullptr;
        if (chosen) {
            selection.add(entry, chosen->choice.get());
        }
    }
    for (const ChosenChild &child : choice.children) {
        if (child.schema == list && !child.keys.all()) {
            select(child, parent, selection);
        }
    }
    return true;
}

void Reader::select(const ChosenChild &chosen, const lyd_node *parent, Selection &selection)
{
    const lysc_node *schema = chosen.schema;
    if (schema->nodetype == LYS_LEAFLIST) {
        lyd_node *first = nullptr;
        lyd_find_sibling_val(lyd_child(parent), schema, nullptr, 0, &first);
        for (const lyd_node *node = first; node && node->schema == schema; node = node->next) {
            selection.add(node, chosen.choice.get());
        }
        return;
    }
    if (schema->nodetype != LYS_LIST) {
        if (const lyd_node *child = find_single(parent, nullptr, schema)) {
            selection.add(child, chosen.choice.get());
        }
        return;
    }
    if (chosen.keys.all()) {
        const lyd_node *entry = finder_.find(parent, schema, chosen.keys);
        if (entry && shown_entries_.shown(entry)) {
            selection.add(entry, chosen.choice.get());
        }
        return;
    }
    for (const lyd_node *entry : matching_entries(parent, schema, chosen.keys, shown_entries_, finder_)) {
        if (shown_entries_.shown(entry)) {
            selection.add(entry, chosen.choice.get());
        }
    }
}

void Reader::open(const lyd_node *node)
{
    pending_.push_back(node);
    const bool may_be_empty = node->schema->nodetype == LYS_CONTAINER && !(node->schema->flags & LYS_PRESENCE);
    if (!may_be_empty) {
        flush();
    }
}

void Reader::close()
{
    if (!pending_.empty()) {
        pending_.pop_back();
        return;
    }
    sink_.close();
}

void Reader::leaf(const lyd_node *node)
{
    flush();
    sink_.leaf(node->schema->module->ns, LYD_NAME(node), value_of(node));
}

void Reader::flush()
{
    for (const lyd_node *node : pending_) {
        sink_.open(node->schema->module->ns, LYD_NAME(node));
    }
    pending_.clear();
}

} // namespace router
