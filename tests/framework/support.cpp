#include "support.h"

#include <cstring>

namespace test
{

tqm::Schema schema()
{
    tqm::Schema schema;
    const auto list = [&](const char *path, std::vector<std::string> keys) {
        schema.add({.path = path, .kind = tqm::NodeKind::list, .keys = std::move(keys)});
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

void set_operation(rdl_tqm_datatree &node, uint32_t operation)
{
    node.operation = operation;
    node.present |= TQM_PRESENT_OPERATION;
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

void walk_entry(tqm::Request &request, rdl_tqm_datatree &entry, const ListModel &model)
{
    tqm_map_ctx ctx = request.ctx();
    tqm_map_request &record = request.record();
    tqm_map_add_to_node_hierarchy(ctx, &entry, TQM_HIER_LIST);
    tqm_map_update_current_list_node(ctx, model.path);
    const bool replacing = (entry.present & TQM_PRESENT_OPERATION) != 0 && entry.operation == TQM_OP_REPLACE;
    if (replacing) {
        set_operation(entry, TQM_OP_REMOVE);
        record.walk_flags |= TQM_WALK_REPLACE_REMOVE;
    }
    for (int pass = 0; pass < (replacing ? 2 : 1); ++pass) {
        const bool removing = (record.walk_flags & TQM_WALK_REPLACE_REMOVE) != 0;
        model.list_function(entry);
        ctx->list_operation = (entry.present & TQM_PRESENT_OPERATION) != 0 ? entry.operation : 0;
        bool other_child = false;
        for (uint32_t i = 0; i < entry.subtree_count; ++i) {
            rdl_tqm_datatree &named = entry.subtree[i];
            if (std::strcmp(named.tag, model.key) == 0) {
                model.key_function(named);
            } else if (!removing) {
                other_child = true;
                model.other_child(named);
            }
        }
        if (!other_child && tqm_map_is_request_delete(&entry) != 0) {
            record.fill_mode = 1;
            set_operation(entry, TQM_OP_REMOVE);
            rdl_tqm_datatree *children = entry.subtree;
            const uint32_t count = entry.subtree_count;
            tqm_map_util_itree_stack_push(ctx, children, count, nullptr);
            entry.subtree = nullptr;
            entry.subtree_count = 0;
            entry.present &= static_cast<uint16_t>(~TQM_PRESENT_SUBTREE);
            model.fill(entry);
            record.fill_mode = 0;
            entry.subtree = children;
            entry.subtree_count = count;
            entry.present |= TQM_PRESENT_SUBTREE;
            tqm_map_util_itree_stack_pop(ctx);
        }
        if (replacing) {
            set_operation(entry, TQM_OP_MERGE);
            record.walk_flags &= ~TQM_WALK_REPLACE_REMOVE;
        }
    }
    tqm_map_remove_from_node_hierarchy(ctx, &entry);
}

void walk_container(tqm::Request &request, rdl_tqm_datatree &container,
                    const std::function<void(rdl_tqm_datatree &child)> &child)
{
    tqm_map_add_to_node_hierarchy(request.ctx(), &container, TQM_HIER_CONTAINER);
    for (uint32_t i = 0; i < container.subtree_count; ++i) {
        child(container.subtree[i]);
    }
    tqm_map_remove_from_node_hierarchy(request.ctx(), &container);
}

} // namespace test
