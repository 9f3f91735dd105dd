// What the framework's tests share: small models, request trees written as expressions, outputs as one-line texts, and
// a walker that calls the operations in the order in which a plug-in's list walkers do.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tqm/framework.h"

namespace test
{

inline constexpr const char *oc_ns = "http://example.org/oc";
inline constexpr const char *native_ns = "http://example.org/native";
inline constexpr const char *other_ns = "http://example.org/other";

/// OpenConfig: /oc/policy[name]/config/..., /oc/chain[name]/keys/key[id], /oc/interface[name]; native: /pol/p[name],
/// /kc/c[chain-name]/m/k[key-id], /ifs/if[active][interface-name]; the operational model /op mirrors /oc.
tqm::Schema schema();
/// One registration for each native top; their roots do nothing.
std::vector<tqm_map_reg_info> registrations();

struct Node {
    std::string tag;
    std::optional<std::string> value = {};
    std::vector<Node> children = {};
    std::optional<uint32_t> operation = {};
};
inline Node leaf(std::string tag, std::string value)
{
    return {std::move(tag), std::move(value)};
}
inline Node node(std::string tag, std::vector<Node> children, std::optional<uint32_t> operation = {})
{
    return {std::move(tag), {}, std::move(children), operation};
}
/// Makes `tree` the request's tree.
rdl_tqm_datatree &load(tqm::Request &request, const Node &tree, const char *ns = oc_ns);

/// As "pol{p:create{name=P1:merge created:merge}}": children in braces, operations behind colons.
std::string dump(tqm::Request &request);

/// An add with everything that most adds leave out.
struct Add {
    const char *value = nullptr;
    const rdl_tqm_datatree *source = nullptr;
    uint32_t list_entry = 0;
    uint32_t flags = 0;
    const char *ns = native_ns;
    rdl_tqm_datatree **out_node = nullptr;
};
rcode add(tqm::Request &request, const char *path, const Add &rest = {});

/// One list as its forward walker and mappers see it.
struct ListModel {
    const char *path;
    const char *key;
    std::function<void(const rdl_tqm_datatree &)> list_function;
    std::function<void(const rdl_tqm_datatree &)> key_function;
    std::function<void(const rdl_tqm_datatree &)> fill; ///< what lies below, all from one node
    std::function<void(const rdl_tqm_datatree &child)> other_child = {};
};
/// An entry in an edit: both passes of a replace, the key fill of a delete.
void walk_entry(tqm::Request &request, rdl_tqm_datatree &entry, const ListModel &model);
/// All children of `list_holder`, which is pushed as a container around them.
void walk_container(tqm::Request &request, rdl_tqm_datatree &container,
                    const std::function<void(rdl_tqm_datatree &child)> &child);

rdl_tqm_datatree &child(rdl_tqm_datatree &node, std::string_view tag);

} // namespace test
