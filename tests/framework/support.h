// What the framework's tests share: small models, request trees written as expressions, outputs as one-line texts, and
// a native side in memory.
#pragma once

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

/// The child with this tag, which must be there.
rdl_tqm_datatree &child(rdl_tqm_datatree &node, std::string_view tag);

/// Answers each read with the same tree; of edits it keeps the tags of the trees.
class MemorySide : public tqm::NativeSide
{
public:
    tl::expected<void, tqm::NativeError> edit(std::span<const tqm::OutputNode *const> trees) override;
    tqm::Expected<void> read(const tqm::OutputNode &filter, tqm::TreeBuilder &answer) override;

    std::string edited;
    Node data; ///< in native_ns, all below the top in oc_ns
    tqm::Expected<void> failing;
    tl::expected<void, tqm::NativeError> refusing;
    std::string refused_path; ///< the node that `refusing` is about: the last one with this path
};

} // namespace test
