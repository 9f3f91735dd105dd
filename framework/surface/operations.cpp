// The operations that build output trees and find their way in them.
#include <algorithm>
#include <cstring>

#include "surface/operation.h"

namespace
{

using namespace tqm;

constexpr uint32_t most_components = 64;

std::string joined(const char *const *components, uint32_t count)
{
    std::string path;
    if (components == nullptr || count == 0 || count > most_components) {
        return path;
    }
    for (uint32_t i = 0; i < count; ++i) {
        if (components[i] == nullptr) {
            return {};
        }
        path += components[i];
    }
    return path;
}

bool begins_with_component(std::string_view path, std::string_view root)
{
    return path.starts_with(root) && (path.size() == root.size() || path[root.size()] == '/');
}

rcode add_path(const char *operation, tqm_map_ctx ctx, const AddArguments &arguments)
{
    return run_operation(
        Request::Impl::of(ctx), operation, [&](Request::Impl &request) { return request.placing().add(arguments); },
        [&](JournalLine &line) {
            const bool secret = hides_value(Request::Impl::of(ctx), arguments.path == nullptr ? "" : arguments.path);
            line.text("", arguments.path).ns(arguments.ns).text("value", arguments.value, secret);
            line.source(arguments.source).number("list_entry", arguments.list_entry).number("flags", arguments.flags);
            if (arguments.tree != nullptr && ctx != nullptr && arguments.tree->tag != nullptr &&
                *arguments.tree->tag != '\0') {
                line.node("tree", arguments.tree);
            }
            if (arguments.out_node != nullptr) {
                line.number("out_node", 1);
            }
        });
}

/// The key text of a stitch path, "<list path>[x=key]/"; null if `path` does not have that form (or was cut off).
bool keyed_path_key(std::string_view path, std::string_view list_path, std::string_view &key)
{
    constexpr std::string_view end = "]/";
    if (!path.starts_with(list_path) || !path.ends_with(end)) {
        return false;
    }
    path.remove_prefix(list_path.size());
    const std::size_t equals = path.find('=');
    if (path.empty() || path.front() != '[' || equals == std::string_view::npos ||
        equals + 1 + end.size() > path.size()) {
        return false;
    }
    key = path.substr(equals + 1, path.size() - equals - 1 - end.size());
    return true;
}

/// A text in an array that may lack its terminator.
template <std::size_t N>
std::string_view bounded(const char (&text)[N])
{
    return {text, strnlen(text, N)};
}

rcode stitch(Request::Impl &request, tqm_map_xpath_ops *ops)
{
    if (ops == nullptr || ops->tree == nullptr || ops->operation != TQM_XPATH_OP_STITCH ||
        ops->mode != TQM_XPATH_MODE_STITCH) {
        return TQM_ERR_BAD_ARGS;
    }
    const std::string_view list_path = bounded(ops->list_path);
    const std::string_view path = bounded(ops->path);
    const PathInfo *list = request.paths().intern(list_path);
    if (list == nullptr) {
        return TQM_ERR_BAD_ARGS;
    }
    std::string_view key;
    OutputRecord *entry = nullptr;
    if (keyed_path_key(path, list_path, key)) {
        if (list->is_list()) {
            entry = request.placing().search(ops->tree, *list, "", key);
        }
    } else if (path.size() >= sizeof ops->path - 1) {
        // The key did not fit: the mapper has just searched for it.
        entry = request.placing().last_found(*list);
    }
    if (entry == nullptr) {
        return TQM_ERR_SKIP_NODE;
    }
    request.placing().make_current(*list, *entry);
    return 0;
}

rcode auto_stitch(Request::Impl &request, const rdl_tqm_datatree *node, rdl_tqm_datatree *out, const char *ns,
                  const std::string &path)
{
    if (node == nullptr || out == nullptr || path.empty()) {
        return TQM_ERR_BAD_ARGS;
    }
    const std::span<const rdl_tqm_datatree> children = children_of(*node);
    const auto key = std::ranges::find_if(children, [](const rdl_tqm_datatree &child) {
        return (child.present & TQM_PRESENT_IS_KEY) != 0 && child.is_key == 1;
    });
    if (key == children.end() || key->tag == nullptr || key->value == nullptr) {
        return TQM_ERR_SKIP_NODE;
    }
    if (request.observation()) {
        request.observation().read(*key);
    }
    const PathInfo *list = request.paths().as_list(request.paths().intern(path), key->tag);
    if (list == nullptr) {
        return TQM_ERR_BAD_ARGS;
    }
    if (OutputRecord *entry = request.placing().search(out, *list, key->tag, key->value)) {
        request.placing().make_current(*list, *entry);
        return 0;
    }
    return request.placing().add_keyed_entry(out, *list, ns, key->tag, key->value) == nullptr ? TQM_ERR_BAD_ARGS : 0;
}

rcode look_up(Request::Impl &request, tqm_map_xpath_ops *ops)
{
    if (ops == nullptr || ops->tree == nullptr || ops->operation != TQM_XPATH_OP_LOOKUP) {
        return TQM_ERR_BAD_ARGS;
    }
    const rdl_tqm_datatree *node = ops->tree;
    std::string_view path = bounded(ops->path);
    if (path.empty()) {
        return TQM_ERR_BAD_ARGS;
    }
    while (node != nullptr && !path.empty()) {
        const std::size_t slash = std::min(path.find('/'), path.size());
        node = find_child(*node, path.substr(0, slash));
        path.remove_prefix(std::min(slash + 1, path.size()));
    }
    if (node == nullptr) {
        return TQM_ERR_NOT_FOUND;
    }
    if (request.observation()) {
        request.observation().read(*node);
    }
    const std::string_view text = node->value == nullptr ? "" : node->value;
    const std::size_t length = std::min(text.size(), sizeof ops->data - 1);
    std::memcpy(ops->data, text.data(), length);
    ops->data[length] = '\0';
    return 0;
}

rcode search_list(Request::Impl &request, rdl_tqm_datatree *tree, rdl_tqm_datatree **found, const char *path,
                  const char *key_value, const char *key_leaf, const char *ns, bool add_missing)
{
    if (tree == nullptr || found == nullptr || path == nullptr || key_value == nullptr || key_leaf == nullptr) {
        return TQM_ERR_BAD_ARGS;
    }
    const PathInfo *list = request.paths().as_list(request.paths().intern_literal(path), key_leaf);
    if (list == nullptr) {
        return TQM_ERR_BAD_ARGS;
    }
    OutputRecord *entry = request.placing().search(tree, *list, key_leaf, key_value);
    if (entry != nullptr && add_missing) {
        request.placing().make_current(*list, *entry);
    }
    if (entry == nullptr && add_missing) {
        entry = request.placing().add_keyed_entry(tree, *list, ns, key_leaf, key_value);
    }
    if (entry == nullptr) {
        return add_missing ? TQM_ERR_BAD_ARGS : TQM_ERR_NOT_FOUND;
    }
    *found = request.output().handle_of(*entry);
    return 0;
}

} // namespace

extern "C" {

TQM_EXPORT rcode tqm_map_datatree_add_path_flagged(tqm_map_ctx ctx, rdl_tqm_datatree *tree, const char *path,
                                                   const char *ns, const char *value,
                                                   const rdl_tqm_datatree *source_node, rdl_tqm_datatree **out_node,
                                                   uint32_t list_entry, uint32_t flags)
{
    return add_path("tqm_map_datatree_add_path_flagged", ctx,
                    {tree, path, ns, value, source_node, out_node, list_entry, flags});
}

TQM_EXPORT rcode tqm_map_datatree_add_path(tqm_map_ctx ctx, rdl_tqm_datatree *tree, const char *path, const char *ns,
                                           const char *value, const rdl_tqm_datatree *source_node,
                                           rdl_tqm_datatree **out_node, uint32_t list_entry)
{
    return add_path("tqm_map_datatree_add_path", ctx,
                    {tree, path, ns, value, source_node, out_node, list_entry, TQM_ADD_PLAIN});
}

TQM_EXPORT rcode tqm_map_add_leaf_from_xpath(tqm_map_ctx ctx, const rdl_tqm_datatree *node, rdl_tqm_datatree *out,
                                             const char *root, const char *ns, const char *const *components,
                                             uint32_t count)
{
    std::string path;
    return run_operation(
        Request::Impl::of(ctx), "tqm_map_add_leaf_from_xpath",
        [&](Request::Impl &request) -> rcode {
            path = joined(components, count);
            if (node == nullptr || out == nullptr || root == nullptr || path.empty() ||
                !begins_with_component(path, root)) {
                return TQM_ERR_BAD_ARGS;
            }
            return request.placing().add_read_leaf(out, path, ns);
        },
        [&](JournalLine &line) { line.text("", path.c_str()).ns(ns).node("node", node); });
}

TQM_EXPORT rcode tqm_map_search_list(tqm_map_ctx ctx, rdl_tqm_datatree *tree, rdl_tqm_datatree **found,
                                     const char *path, const char *key_value, const char *key_leaf, const char *ns)
{
    return run_operation(
        Request::Impl::of(ctx), "tqm_map_search_list",
        [&](Request::Impl &request) { return search_list(request, tree, found, path, key_value, key_leaf, ns, false); },
        [&](JournalLine &line) { line.text("", path).text("key", key_value).text("key_leaf", key_leaf).ns(ns); });
}

TQM_EXPORT rcode tqm_map_search_or_add_list(tqm_map_ctx ctx, rdl_tqm_datatree *tree, rdl_tqm_datatree **found,
                                            const char *path, const char *key_value, const char *key_leaf,
                                            const char *ns)
{
    return run_operation(
        Request::Impl::of(ctx), "tqm_map_search_or_add_list",
        [&](Request::Impl &request) { return search_list(request, tree, found, path, key_value, key_leaf, ns, true); },
        [&](JournalLine &line) { line.text("", path).text("key", key_value).text("key_leaf", key_leaf).ns(ns); });
}

TQM_EXPORT rcode tqm_map_stitch_list_to_list(tqm_map_ctx ctx, tqm_map_xpath_ops *ops)
{
    return run_operation(
        Request::Impl::of(ctx), "tqm_map_stitch_list_to_list",
        [&](Request::Impl &request) { return stitch(request, ops); },
        [&](JournalLine &line) {
            line.text("path", ops == nullptr ? nullptr : std::string(bounded(ops->path)).c_str());
            line.text("list_path", ops == nullptr ? nullptr : std::string(bounded(ops->list_path)).c_str());
        });
}

TQM_EXPORT rcode tqm_map_auto_stitch_list_to_list(tqm_map_ctx ctx, const rdl_tqm_datatree *node, rdl_tqm_datatree *out,
                                                  const char *ns, const char *const *components, uint32_t count)
{
    std::string path;
    return run_operation(
        Request::Impl::of(ctx), "tqm_map_auto_stitch_list_to_list",
        [&](Request::Impl &request) {
            path = joined(components, count);
            return auto_stitch(request, node, out, ns, path);
        },
        [&](JournalLine &line) { line.text("", path.c_str()).ns(ns).node("node", node); });
}

TQM_EXPORT rcode tqm_map_tree_xpath_operations(tqm_map_ctx ctx, tqm_map_xpath_ops *ops)
{
    const std::string_view path = ops == nullptr ? std::string_view() : bounded(ops->path);
    return run_operation(
        Request::Impl::of(ctx), "tqm_map_tree_xpath_operations",
        [&](Request::Impl &request) { return look_up(request, ops); },
        [&](JournalLine &line) {
            line.text("path", std::string(path).c_str()).node("tree", ops == nullptr ? nullptr : ops->tree);
        },
        [&](JournalLine &line) { line.found("data", ops->data, hides_value_below(Request::Impl::of(ctx), path)); });
}

TQM_EXPORT rcode tqm_map_copy_trim_path_list_ctx(tqm_map_ctx ctx, const char *path)
{
    return run_operation(
        Request::Impl::of(ctx), "tqm_map_copy_trim_path_list_ctx",
        [&](Request::Impl &) -> rcode { return path == nullptr ? rcode{TQM_ERR_BAD_ARGS} : 0; },
        [&](JournalLine &line) { line.text("", path); });
}

} // extern "C"
