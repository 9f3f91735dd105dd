// The YANG modules, loaded once and only read afterwards. What a module means is libyang's business; this offers the
// little of the schema that others need: which paths are lists, and which leaves are leaf-lists.
#pragma once

#include "router/error.h"

#include <memory>
#include <string>
#include <vector>

struct ly_ctx;

namespace router
{

// Namespace URIs of the modules.
namespace ns
{
inline constexpr const char *openconfig = "http://openconfig.net/yang/macsec";
inline constexpr const char *policies = "http://tarvex.example/ns/yang/Tarvex-crypto-macsec-mka-cfg";
inline constexpr const char *keychains = "http://tarvex.example/ns/yang/Tarvex-lib-keychain-cfg";
inline constexpr const char *interfaces = "http://tarvex.example/ns/yang/Tarvex-ifmgr-cfg";
inline constexpr const char *interface_macsec = "http://tarvex.example/ns/yang/Tarvex-crypto-macsec-mka-if-cfg";
inline constexpr const char *operational = "http://tarvex.example/ns/yang/Tarvex-PRIVATE-oc-macsec-oper";
} // namespace ns

// A list, or a leaf-list (which has no keys). Paths are absolute schema paths without prefixes, e.g.
// "/macsec/policy-names/policy-name"; the namespace is that of the node itself.
struct ListInfo {
    std::string ns;
    std::string path;
    std::vector<std::string> keys; // in schema order
};

enum class NodeKind { container, list, leaf, leaf_list };

// A node of a module's schema.
struct NodeInfo {
    std::string path; // absolute, without prefixes
    NodeKind kind;
    bool config; // false for state data
    bool is_key;
    bool unspaced;  // white space around its values is no part of them: it holds no texts
    std::string ns; // of the node itself
};

// A leaf or leaf-list whose values are numbers of 32 bits at most, booleans or of type empty: JSON documents show those
// in forms of their own (RFC 7951, section 6).
enum class ValueForm { number, boolean, empty };
struct LeafForm {
    std::string path;
    ValueForm form;
};

struct ModuleInfo {
    std::string name;
    std::string ns;
    std::string prefix;
};

// Movable handle; copies share the context.
class Models
{
public:
    // Loads the six modules from the directory. Fails, naming the module and libyang's reason, if one is missing or
    // does not parse; and if a list has more than two keys, naming it.
    static Expected<Models> load(const std::string &yang_directory);

    // Lists and leaf-lists of all six modules, in schema order.
    std::vector<ListInfo> lists() const;
    std::vector<ListInfo> leaf_lists() const;
    // Paths of the leaves and of the containers of all six modules.
    std::vector<std::string> leaves() const;
    std::vector<std::string> containers() const;
    // Paths of the leaves that the modules mark as secrets, by the extension `secret` of tarvex-extensions.
    std::vector<std::string> secrets() const;

    std::vector<ModuleInfo> modules() const;
    // Leaves of all six modules whose values are no texts in JSON. A union's are texts.
    std::vector<LeafForm> leaf_forms() const;

    // All nodes of the module with this namespace, parents before their children, in schema order.
    std::vector<NodeInfo> nodes(const char *module_ns) const;
    // Values of the type of the leaf at `path`: each of an enumeration, both booleans, the ends of each range, and of a
    // text one, or dates where it holds dates. Empty if there is no such leaf.
    std::vector<std::string> sample_values(const std::string &path) const;
    // The same nodes in the tree notation of RFC 8340, one line each, without the module's own line.
    Expected<std::vector<std::string>> tree_lines(const char *module_ns) const;

    // The context, for the router's own use; lives as long as any copy of this handle.
    const ly_ctx *context() const { return context_.get(); }

private:
    explicit Models(std::shared_ptr<ly_ctx> context) : context_(std::move(context)) {}

    std::shared_ptr<ly_ctx> context_;
};

} // namespace router
