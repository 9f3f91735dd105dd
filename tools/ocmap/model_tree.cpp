#include "model_tree.h"

#include <algorithm>
#include <array>
#include <map>
#include <string_view>
#include <unordered_set>
#include <utility>
#include <vector>

#include "model_queries.h"
#include "native_store.h"
#include "openconfig.h"

namespace ocmap
{
namespace
{

// What the summary counts. Each node is of one kind.
enum class Kind { native, differing, operational, entry_only, unsupported, container };

constexpr std::array kind_texts = {
    "with one native path for reads and edits",
    "with native paths that differ between reads and edits",
    "in the operational model",
    "without a native node of their own",
    "not supported",
    "containers that only lead to the others",
};

Kind kind_of(const ProbedNode &node)
{
    if (!node.supported) {
        return Kind::unsupported;
    }
    if (node.read.empty() && node.edit.empty()) {
        return node.info.kind == router::NodeKind::container ? Kind::container : Kind::entry_only;
    }
    if (!node.info.config) {
        return Kind::operational;
    }
    return node.read == node.edit ? Kind::native : Kind::differing;
}

// Paths of the native modules' nodes.
using NativePaths = std::unordered_set<std::string>;

NativePaths native_paths(const router::Models &models)
{
    NativePaths paths;
    for (router::SchemaNode &node : models.nodes()) {
        if (node.ns != openconfig_ns) {
            paths.insert(std::move(node.path));
        }
    }
    return paths;
}

// Leaves of one container together: /a/b/{c,d}.
std::string joined(const Paths &paths, const NativePaths &known)
{
    std::map<std::string, std::vector<std::string>> by_parent;
    for (const std::string &path : paths) {
        const std::size_t slash = path.rfind('/');
        by_parent[path.substr(0, slash)].push_back(path.substr(slash + 1) +
                                                   (known.contains(path) ? "" : " (in no model)"));
    }
    std::string text;
    for (const auto &[parent, tags] : by_parent) {
        text += (text.empty() ? "" : ", ") + parent + "/";
        std::string list;
        for (const std::string &tag : tags) {
            list += (list.empty() ? "" : ",") + tag;
        }
        text += tags.size() == 1 ? list : "{" + list + "}";
    }
    return text;
}

std::string native_text(const ProbedNode &node, const NativePaths &known)
{
    switch (kind_of(node)) {
    case Kind::native:
        return joined(node.read, known);
    case Kind::differing:
        return (node.read.empty() ? "" : "get: " + joined(node.read, known) + "; ") +
               (node.edit.empty() ? "edit: nothing" : "edit: " + joined(node.edit, known));
    case Kind::operational:
        return "oper: " + joined(node.read, known);
    case Kind::entry_only:
        return "no native node of its own";
    case Kind::unsupported:
        return "not supported";
    case Kind::container:
        break;
    }
    return "";
}

std::string summary(const std::vector<ProbedNode> &nodes)
{
    std::array<std::size_t, kind_texts.size()> counts{};
    for (const ProbedNode &node : nodes) {
        ++counts[static_cast<std::size_t>(kind_of(node))];
    }
    std::string text = std::to_string(nodes.size()) + " nodes:\n";
    for (std::size_t kind = 0; kind < counts.size(); ++kind) {
        const std::string number = std::to_string(counts[kind]);
        text += std::string(6 - std::min<std::size_t>(number.size(), 6), ' ') + number + " " + kind_texts[kind] + "\n";
    }
    return text;
}

} // namespace

tqm::Expected<std::string> model_tree(const Environment &environment)
{
    const auto nodes = probe_model(environment);
    return nodes ? tree_of(environment, *nodes) : tl::unexpected(nodes.error());
}

tqm::Expected<std::string> tree_of(const Environment &environment, const std::vector<ProbedNode> &nodes)
{
    const auto lines = tree_lines(environment.models(), openconfig_ns);
    if (!lines) {
        return tl::unexpected(from_router(lines.error()));
    }
    const NativePaths known = native_paths(environment.models());
    std::size_t column = 0;
    for (const std::string &line : *lines) {
        column = std::max(column, line.size() + 2);
    }
    std::string text = "module: openconfig-macsec\n";
    for (std::size_t i = 0; i < nodes.size(); ++i) {
        std::string line = (*lines)[i];
        const std::string native = native_text(nodes[i], known);
        if (!native.empty()) {
            line.resize(column, ' ');
            line += native;
        }
        text += line + "\n";
    }
    return text + "\n" + summary(nodes);
}

} // namespace ocmap
