#include "requests/existence.h"

#include <algorithm>
#include <cstring>
#include <unordered_set>

namespace tqm
{

namespace
{

constexpr std::size_t npos = static_cast<std::size_t>(-1);

bool names_all_keys(const rdl_tqm_datatree &entry, const PathInfo &list)
{
    return std::ranges::all_of(list.keys(),
                               [&](const std::string &key) { return given_value(find_child(entry, key)); });
}

bool holds_lists(const PathInfo &info)
{
    for (const PathInfo *child = info.first_child; child != nullptr; child = child->next_sibling) {
        if (child->schema->config && (child->is_list() || holds_lists(*child))) {
            return true;
        }
    }
    return false;
}

/// The leaf that repeats the key of an entry: a read that names it asks for the entry and for nothing else in it.
const PathInfo *leaf_that_repeats(const PathInfo &list, const std::string &key)
{
    for (const PathInfo *child = list.first_child; child != nullptr; child = child->next_sibling) {
        const PathInfo *const leaf = child->is_container() ? child->child(key) : nullptr;
        if (leaf != nullptr && leaf->repeats_key()) {
            return leaf;
        }
    }
    return nullptr;
}

/// Calls `visit(path, node)` with all nodes of a native answer and their paths with keys.
template <class Visit>
void for_each_path(const rdl_tqm_datatree &node, const std::string &outer_schema_path, const std::string &outer,
                   const Schema &schema, const Visit &visit)
{
    const std::string schema_path = outer_schema_path + "/" + node.tag;
    InstancePath step;
    step.enter(node.tag);
    if (const SchemaNode *const known = schema.find(schema_path)) {
        step.keys(node, known->keys);
    }
    const std::string path = outer + step.text();
    visit(path, node);
    for (const rdl_tqm_datatree &child : children_of(node)) {
        for_each_path(child, schema_path, path, schema, visit);
    }
}

/// The same of a native filter, whose nodes of interest hold secrets: those are given with the node they come from.
template <class Visit>
void for_each_secret(const OutputNode &node, const std::string &outer, const Visit &visit)
{
    std::string path = outer + "/" + node.tag();
    for (const OutputNode &child : node.children()) {
        if (node.is_list_entry() && child.is_key() && child.value() != nullptr) {
            append_key(path, child.tag(), child.value());
        }
    }
    if (record_of(node).info()->schema->secret && node.origin() != nullptr) {
        visit(path, *node.origin());
    }
    for (const OutputNode &child : node.children()) {
        for_each_secret(child, path, visit);
    }
}

} // namespace

// ---- What is asked ----

Existence::Existence(Request::Impl &edit) : edit_(edit), tree_(edit.tree())
{
    const rdl_tqm_datatree &top = tree_.top();
    if (const PathInfo *const info = edit_.paths().find(top.tag)) {
        visit(top, *info, false);
    }
}

/// Makes the node at `depth` of the way, and those above it, part of what is asked.
std::size_t Existence::ask(std::size_t depth, bool by_reading)
{
    std::size_t parent = npos;
    for (std::size_t at = 0; at <= depth; ++at) {
        Step &step = way_[at];
        if (step.asked == npos) {
            step.asked = asked_.size();
            asked_.push_back({step.node, step.info, parent});
            (parent == npos ? tops_ : asked_[parent].children).push_back(step.asked);
        }
        asked_[step.asked].is_read |= by_reading;
        parent = step.asked;
    }
    reads_ |= by_reading;
    return parent;
}

void Existence::visit(const rdl_tqm_datatree &node, const PathInfo &info, bool is_emptied)
{
    if (info.is_key || !info.schema->config || (info.is_list() && !names_all_keys(node, info))) {
        return; // the walkers judge these
    }
    const uint32_t operation = operation_of(node);
    Question question = Question::none;
    if (info.is_leaf_list()) {
        question = Question::value;
    } else if (info.schema->secret && takes_away(node)) {
        question = Question::secret;
    } else if (operation == TQM_OP_CREATE) {
        question = Question::absent;
    } else if (operation == TQM_OP_DELETE || (operation == operation_none && !info.is_container())) {
        question = Question::present;
    }

    way_.push_back({&node, &info, npos});
    if (question != Question::none) {
        const std::size_t asked = ask(way_.size() - 1, !is_emptied);
        asked_[asked].question = question;
    }
    visit_children(node, info, is_emptied || operation == TQM_OP_CREATE || operation == TQM_OP_REPLACE);
    way_.pop_back();
}

/// Values of one leaf-list are judged together, where the first of them stands.
void Existence::visit_children(const rdl_tqm_datatree &node, const PathInfo &info, bool is_emptied)
{
    std::vector<std::pair<const PathInfo *, std::vector<const rdl_tqm_datatree *>>> leaf_lists;
    tree_.for_each_child(node, [&](const rdl_tqm_datatree &child) {
        const PathInfo *const child_info = info.child(child.tag);
        if (child_info == nullptr || child.ns != node.ns) {
            return true;
        }
        if (!child_info->is_leaf_list()) {
            visit(child, *child_info, is_emptied);
            return true;
        }
        auto found = std::ranges::find(leaf_lists, child_info, [](const auto &list) { return list.first; });
        if (found == leaf_lists.end()) {
            found = leaf_lists.insert(leaf_lists.end(), {child_info, {}});
        }
        found->second.push_back(&child);
        return true;
    });
    for (const auto &[leaf_list, values] : leaf_lists) {
        const bool asks = std::ranges::any_of(values, [](const rdl_tqm_datatree *value) {
            return operation_of(*value) != TQM_OP_MERGE && operation_of(*value) != TQM_OP_REPLACE;
        });
        if (!asks) {
            continue;
        }
        const std::size_t first = asked_.size();
        for (const rdl_tqm_datatree *value : values) {
            visit(*value, *leaf_list, is_emptied);
        }
        std::vector<std::size_t> set;
        for (std::size_t i = first; i < asked_.size(); ++i) {
            if (asked_[i].info == leaf_list) {
                set.push_back(i);
            }
        }
        if (!set.empty()) {
            value_sets_.push_back(std::move(set));
        }
    }
}

// ---- Reading it ----

TreeBuilder::Roots Existence::filter(TreeBuilder &builder) const
{
    build(builder, tops_);
    return builder.finish();
}

void Existence::build(TreeBuilder &builder, const std::vector<std::size_t> &siblings) const
{
    const Asked *last = nullptr;
    for (const std::size_t position : siblings) {
        const Asked &asked = asked_[position];
        if (!asked.is_read) {
            continue;
        }
        const bool is_next_value = last != nullptr && asked.info->is_leaf_list() && asked.info == last->info;
        if (!is_next_value) { // one question for all values of a leaf-list
            build_one(builder, asked);
        }
        last = &asked;
    }
}

void Existence::build_one(TreeBuilder &builder, const Asked &asked) const
{
    const char *const ns = asked.node->ns;
    const PathInfo &info = *asked.info;
    if (!info.is_list() && !info.is_container()) {
        builder.leaf(ns, info.tag, std::nullopt);
        return;
    }
    const bool leads = std::ranges::any_of(asked.children, [&](std::size_t child) { return asked_[child].is_read; });
    builder.open(ns, info.tag);
    if (info.is_list()) {
        for (const std::string &key : info.keys()) {
            builder.leaf(ns, key, given_value(find_child(*asked.node, key)));
        }
        const PathInfo *const probe = leads ? nullptr : leaf_that_repeats(info, info.keys().front());
        if (probe != nullptr) {
            builder.open(ns, probe->parent->tag);
            builder.leaf(ns, probe->tag, std::nullopt);
            builder.close();
        }
    } else if (!leads) {
        build_probe(builder, ns, info);
    }
    build(builder, asked.children);
    builder.close();
}

/// Asks whether there is anything in a container: of lists for the keys alone.
void Existence::build_probe(TreeBuilder &builder, const char *ns, const PathInfo &container)
{
    if (!holds_lists(container)) {
        return; // selects all of it
    }
    for (const PathInfo *child = container.first_child; child != nullptr; child = child->next_sibling) {
        if (!child->schema->config) {
            continue;
        }
        if (child->is_leaf() || child->is_leaf_list()) {
            builder.leaf(ns, child->tag, std::nullopt);
            continue;
        }
        builder.open(ns, child->tag);
        if (child->is_list()) {
            for (const std::string &key : child->keys()) {
                builder.leaf(ns, key, std::nullopt);
            }
        } else {
            build_probe(builder, ns, *child);
        }
        builder.close();
    }
}

/// Finds the nodes of the filter again, which were built in the order of what is asked.
void Existence::pair(const rdl_tqm_datatree *nodes, uint32_t count, const std::vector<std::size_t> &siblings)
{
    const rdl_tqm_datatree *const end = nodes + count;
    for (const std::size_t position : siblings) {
        const Asked &asked = asked_[position];
        if (!asked.is_read || asked.info->is_leaf_list()) {
            continue;
        }
        while (nodes != end && std::strcmp(nodes->tag, asked.info->tag) != 0) {
            ++nodes;
        }
        if (nodes == end) {
            return;
        }
        if (asked.info->schema->secret) {
            by_filter_.emplace(nodes, position);
        }
        pair(nodes->subtree, nodes->subtree_count, asked.children);
        ++nodes;
    }
}

void Existence::note_filter(const TreeBuilder::Roots &filter)
{
    pair(filter.nodes, filter.count, tops_);
}

void Existence::note_native(const OutputNode &filter, const TreeBuilder::Roots &answer)
{
    if (by_filter_.empty()) {
        return;
    }
    std::unordered_map<std::string, std::size_t> secrets;
    for_each_secret(filter, "", [&](const std::string &path, const rdl_tqm_datatree &origin) {
        if (const auto found = by_filter_.find(&origin); found != by_filter_.end()) {
            secrets.emplace(path, found->second);
        }
    });
    for (uint32_t i = 0; !secrets.empty() && i < answer.count; ++i) {
        for_each_path(answer.nodes[i], "", "", edit_.schema(), [&](const std::string &path, const rdl_tqm_datatree &) {
            if (const auto found = secrets.find(path); found != secrets.end()) {
                asked_[found->second].exists = true;
            }
        });
    }
}

void Existence::note_answer(Request::Impl &answer)
{
    for (const std::size_t top : tops_) {
        find(answer, answer.output().base(), top);
    }
}

void Existence::find(Request::Impl &answer, const OutputRecord &outer, std::size_t position)
{
    Asked &asked = asked_[position];
    const PathInfo *const info = answer.paths().find(asked.info->text);
    if (!asked.is_read || info == nullptr) {
        return;
    }
    if (info->is_leaf_list()) {
        const char *const text = tree_.text(*asked.node);
        const OutputRecord *const value = text == nullptr ? nullptr : answer.output().find_value(outer, *info, text);
        asked.exists = value != nullptr && !value->dropped;
        for (const OutputNode &sibling : outer.children()) {
            asked.stored += record_of(sibling).info() == info ? 1 : 0;
        }
        return;
    }
    const OutputRecord *node = nullptr;
    if (info->is_list() && info->keys().size() == 1) {
        const PathInfo *const key = answer.paths().find_child(*info, info->keys().front());
        const char *const value = given_value(find_child(*asked.node, info->keys().front()));
        if (key != nullptr && value != nullptr) {
            node = answer.output().find_by_key(outer, *key, value);
        }
    } else if (!info->is_list()) {
        node = Output::find_named(outer, *info);
    }
    if (node == nullptr || node->dropped) {
        return;
    }
    asked.exists = true;
    for (const std::size_t child : asked_[position].children) {
        find(answer, *node, child);
    }
}

// ---- The verdict ----

Expected<void> Existence::judge()
{
    auto values = value_sets_.begin();
    for (std::size_t position = 0; position < asked_.size(); ++position) {
        Expected<void> good;
        if (values != value_sets_.end() && values->front() == position) {
            good = judge_values(*values++);
        } else {
            good = judge_one(position);
        }
        if (!good) {
            return good;
        }
    }
    return {};
}

Expected<void> Existence::judge_one(std::size_t position)
{
    const Asked &asked = asked_[position];
    switch (asked.question) {
    case Question::absent:
        if (asked.exists) {
            return refuse(ErrorTag::data_exists, position, "it is there already");
        }
        return {};
    case Question::present:
        if (!asked.exists) {
            return refuse(ErrorTag::data_missing, position,
                          takes_away(*asked.node) ? "there is nothing to delete" : "there is no such node");
        }
        return {};
    case Question::secret:
        if (asked.exists) {
            return refuse(ErrorTag::operation_not_supported, position,
                          "a secret is not taken away alone: replace its entry, or delete it");
        }
        if (operation_of(*asked.node) == TQM_OP_DELETE) {
            return refuse(ErrorTag::data_missing, position, "there is nothing to delete");
        }
        edit_.placing().ignore(*asked.node);
        return {};
    case Question::value:
    case Question::none:
        return {};
    }
    return {};
}

Expected<void> Existence::judge_values(const std::vector<std::size_t> &values)
{
    std::unordered_set<std::string_view> taken;
    for (const std::size_t position : values) {
        const Asked &asked = asked_[position];
        const uint32_t operation = operation_of(*asked.node);
        if (operation == TQM_OP_CREATE && asked.exists) {
            return refuse(ErrorTag::data_exists, position, "it is there already");
        }
        if ((operation == TQM_OP_DELETE || operation == operation_none) && !asked.exists) {
            return refuse(ErrorTag::data_missing, position,
                          operation == TQM_OP_DELETE ? "there is nothing to delete" : "there is no such value");
        }
        if (operation == TQM_OP_REMOVE && !asked.exists) {
            edit_.placing().ignore(*asked.node);
        }
        if (takes_away(*asked.node) && asked.exists) {
            taken.insert(tree_.text(*asked.node));
        }
    }
    for (const std::size_t position : values) {
        const Asked &asked = asked_[position];
        if (operation_of(*asked.node) == TQM_OP_CREATE && asked.stored > taken.size()) {
            edit_.placing().keep_beside(*asked.node);
        }
    }
    return {};
}

tl::unexpected<Error> Existence::refuse(ErrorTag tag, std::size_t position, const std::string &reason) const
{
    const InstancePath place = place_of(position);
    Error error{place.text() + ": " + reason};
    error.at(place).error_tag = tag;
    return tl::unexpected(std::move(error));
}

InstancePath Existence::place_of(std::size_t position) const
{
    const Asked &asked = asked_[position];
    InstancePath place = asked.parent == npos ? InstancePath() : place_of(asked.parent);
    place.enter(asked.info->tag).keys(*asked.node, asked.info->keys());
    const char *const value = asked.info->is_leaf_list() ? tree_.text(*asked.node) : nullptr;
    if (value != nullptr) {
        place.key(".", value);
    }
    return place;
}

} // namespace tqm
