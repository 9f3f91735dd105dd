#include "support.h"

#include <cstring>

namespace test
{

tqm::Schema schema()
{
    tqm::Schema schema;
    const auto list = [&](const char *path, std::vector<std::string> keys) {
        const char *const ns = std::string_view(path).starts_with("/oc") ? oc_ns : native_ns;
        schema.add({.path = path, .ns = ns, .kind = tqm::NodeKind::list, .keys = std::move(keys)});
    };
    list("/oc/policy", {"name"});
    list("/oc/chain", {"name"});
    list("/oc/chain/keys/key", {"id"});
    list("/oc/interface", {"name"});
    list("/pol/p", {"name"});
    list("/kc/c", {"chain-name"});
    list("/kc/c/m/k", {"key-id"});
    list("/ifs/if", {"active", "interface-name"});
    list("/op/oc/chain", {"name"});
    list("/op/oc/chain/keys/key", {"id"});
    for (const char *path : {"/oc/policy/config/suite", "/pol/p/suite"}) {
        schema.add({.path = path, .kind = tqm::NodeKind::leaf_list});
    }
    for (const char *path : {"/oc/chain/keys/key/config/key-clear-text", "/kc/c/m/k/s/string"}) {
        schema.add({.path = path, .secret = true});
    }
    schema.add_module({"example-oc", oc_ns, "oc"});
    schema.add_module({"example-native", native_ns, "n"});
    return schema;
}

std::vector<tqm_map_reg_info> registrations()
{
    const auto nothing = [](tqm_map_ctx, const rdl_tqm_datatree *, rdl_tqm_datatree *) -> rcode { return 0; };
    std::vector<tqm_map_reg_info> registrations;
    for (const char *top : {"pol", "kc", "ifs", "op"}) {
        tqm_map_reg_info &registration = registrations.emplace_back();
        std::strcpy(registration.tree_name, top);
        std::strcpy(registration.native_ns, native_ns);
        std::strcpy(registration.oc_ns, oc_ns);
        std::strcpy(registration.native_top, top);
        std::strcpy(registration.oc_top, std::strcmp(top, "op") == 0 ? "op" : "oc");
        registration.forward_root = nothing;
        registration.reverse_root = nothing;
    }
    return registrations;
}

namespace
{

void build(tqm::TreeBuilder &builder, const Node &tree, const char *ns)
{
    if (tree.value) {
        builder.leaf(ns, tree.tag, *tree.value);
    } else {
        builder.open(ns, tree.tag);
    }
    if (tree.operation) {
        builder.operation(*tree.operation);
    }
    for (const Node &child : tree.children) {
        build(builder, child, ns);
    }
    if (!tree.value) {
        builder.close();
    }
}

void dump_node(std::string &text, const tqm::OutputNode &node)
{
    constexpr const char *names[] = {"merge", "replace", "create", "delete", "remove", "none"};
    text += node.tag();
    if (node.value() != nullptr) {
        text.append("=").append(node.value());
    }
    if (node.operation()) {
        text.append(":").append(names[*node.operation()]);
    }
    if (node.children().empty()) {
        return;
    }
    text += "{";
    for (const tqm::OutputNode &child : node.children()) {
        dump_node(text, child);
        text += " ";
    }
    text.back() = '}';
}

} // namespace

rdl_tqm_datatree &load(tqm::Request &request, const Node &tree, const char *ns)
{
    tqm::TreeBuilder builder = request.builder();
    build(builder, tree, ns);
    request.adopt(builder.finish());
    return *request.tree();
}

std::string dump(tqm::Request &request)
{
    std::string text;
    for (const tqm::OutputNode *root : request.roots()) {
        if (!text.empty()) {
            text += " ";
        }
        dump_node(text, *root);
    }
    return text;
}

rcode add(tqm::Request &request, const char *path, const Add &rest)
{
    return tqm_map_datatree_add_path_flagged(request.ctx(), request.out(), path, rest.ns, rest.value, rest.source,
                                             rest.out_node, rest.list_entry, rest.flags);
}

rdl_tqm_datatree &child(rdl_tqm_datatree &node, std::string_view tag)
{
    for (uint32_t i = 0; i < node.subtree_count; ++i) {
        if (tag == node.subtree[i].tag) {
            return node.subtree[i];
        }
    }
    std::abort();
}

namespace
{

const tqm::OutputNode *find(const tqm::OutputNode &node, const std::string &path)
{
    const tqm::OutputNode *found = node.path() == path ? &node : nullptr;
    for (const tqm::OutputNode &child : node.children()) {
        const tqm::OutputNode *const below = find(child, path);
        found = below == nullptr ? found : below;
    }
    return found;
}

} // namespace

tl::expected<void, tqm::NativeError> MemorySide::edit(std::span<const tqm::OutputNode *const> trees)
{
    for (const tqm::OutputNode *tree : trees) {
        edited += std::string(tree->tag()) + " ";
        if (!refusing && !refused_path.empty()) {
            refusing.error().node = find(*tree, refused_path);
        }
    }
    return refusing;
}

tqm::Expected<void> MemorySide::read(const tqm::OutputNode &, tqm::TreeBuilder &answer)
{
    answer.open(native_ns, data.tag);
    for (const Node &child : data.children) {
        build(answer, child, oc_ns);
    }
    answer.close();
    return failing;
}

} // namespace test
