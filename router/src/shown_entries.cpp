#include "shown_entries.h"

#include "entries.h"
#include "report.h"

#include <algorithm>
#include <memory>
#include <string_view>

namespace router
{

namespace
{

// Names no node: with it below, a container comes alone.
constexpr EditNode nothing{.name = ""};

// The nodes that a path without prefixes leads through from `parent`, or from the top of `module`; none if there is no
// such path.
std::vector<const lysc_node *> nodes_of(const lysc_node *parent, const lysc_module *module, std::string_view path)
{
    std::vector<const lysc_node *> nodes;
    while (!path.empty()) {
        const size_t end = std::min(path.find('/'), path.size());
        const lysc_node *node = nullptr;
        do {
            node = lys_getnext(node, parent, parent ? nullptr : module, 0);
        } while (node && path.substr(0, end) != node->name);
        if (!node) {
            return {};
        }
        nodes.push_back(node);
        parent = node;
        path.remove_prefix(std::min(end + 1, path.size()));
    }
    return nodes;
}

tl::unexpected<Error> no_such_node(const std::string &path)
{
    return refuse(Fault::unknown_node, path, "the router has no such node");
}

} // namespace

Expected<ShownEntries> ShownEntries::make(const ly_ctx *context, const std::vector<Visibility> &visible)
{
    ShownEntries entries;
    for (const Visibility &record : visible) {
        const lys_module *module = ly_ctx_get_module_implemented_ns(context, record.ns.c_str());
        const auto way = module && record.list.starts_with('/')
                             ? nodes_of(nullptr, module->compiled, std::string_view(record.list).substr(1))
                             : std::vector<const lysc_node *>();
        if (way.empty() || way.back()->nodetype != LYS_LIST) {
            return no_such_node(record.list);
        }
        Rule &rule = entries.rules_.emplace_back();
        rule.list = way.back();
        rule.refusal = record.refusal;
        rule.marker = nodes_of(rule.list, nullptr, record.marker);
        if (rule.marker.empty()) {
            return no_such_node(record.list + "/" + record.marker);
        }
        for (const Visibility::Key &key : record.keys) {
            const auto node = nodes_of(rule.list, nullptr, key.name);
            if (node.size() != 1 || !lysc_is_key(node.front())) {
                return no_such_node(record.list + "/" + key.name);
            }
            rule.keys.emplace_back(node.front(), key.value);
        }
        for (const lysc_node *node : rule.marker) {
            rule.filter.push_back({.ns = node->module->ns, .name = node->name, .first_child = &nothing});
        }
        for (size_t i = 1; i < rule.filter.size(); ++i) {
            rule.filter[i - 1].first_child = &rule.filter[i];
        }
    }
    return entries;
}

bool ShownEntries::shown(const lyd_node *node) const
{
    const Rule *rule = rule_of(node->schema);
    if (!rule) {
        return true;
    }
    const bool keys_agree = std::all_of(rule->keys.begin(), rule->keys.end(), [&](const auto &key) {
        const lyd_node *leaf = find_single(node, nullptr, key.first);
        return leaf && key.second == lyd_get_value(leaf);
    });
    if (!keys_agree) {
        return false;
    }
    for (const lysc_node *step : rule->marker) {
        node = node ? find_single(node, nullptr, step) : nullptr;
    }
    return node != nullptr;
}

const std::string *ShownEntries::refusal(const lysc_node *list) const
{
    const Rule *rule = rule_of(list);
    return rule && !rule->refusal.empty() ? &rule->refusal : nullptr;
}

const EditNode *ShownEntries::marker(const lysc_node *list) const
{
    const Rule *rule = rule_of(list);
    return rule ? &rule->filter.front() : nullptr;
}

const ShownEntries::Rule *ShownEntries::rule_of(const lysc_node *list) const
{
    const auto found = std::find_if(rules_.begin(), rules_.end(), [&](const Rule &rule) { return rule.list == list; });
    return found == rules_.end() ? nullptr : &*found;
}

Expected<Setup> Setup::make(Models models, const std::vector<Visibility> &visible, OperationalSource source)
{
    auto entries = ShownEntries::make(models.context(), visible);
    if (!entries) {
        return tl::unexpected(entries.error());
    }
    return Setup(std::move(models), std::make_shared<const ShownEntries>(std::move(*entries)), std::move(source));
}

} // namespace router
