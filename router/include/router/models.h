// The YANG modules, loaded once and only read afterwards. What a module means is libyang's business; this tells others
// what they need of each node.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "router/error.h"

struct ly_ctx;

namespace router
{

/// Namespace URIs of the modules.
namespace ns
{
inline constexpr const char *policies = "http://tarvex.example/ns/yang/Tarvex-crypto-macsec-mka-cfg";
inline constexpr const char *keychains = "http://tarvex.example/ns/yang/Tarvex-lib-keychain-cfg";
inline constexpr const char *interfaces = "http://tarvex.example/ns/yang/Tarvex-ifmgr-cfg";
inline constexpr const char *interface_macsec = "http://tarvex.example/ns/yang/Tarvex-crypto-macsec-mka-if-cfg";
inline constexpr const char *operational = "http://tarvex.example/ns/yang/Tarvex-PRIVATE-oc-macsec-oper";
} // namespace ns

enum class NodeKind { container, list, leaf, leaf_list };

/// How JSON documents show the values of a leaf or leaf-list (RFC 7951, section 6): numbers of 32 bits at most,
/// booleans and the type empty have forms of their own. A union's values are texts.
enum class ValueForm { text, number, boolean, empty };

/// All that a module says of one data node. Choices and cases are none.
struct SchemaNode {
    std::string ns;   ///< of the node itself
    std::string path; ///< absolute, without prefixes, as "/macsec/policy-names/policy-name"
    NodeKind kind = NodeKind::container;
    std::vector<std::string> keys; ///< of a list: its key leaves, in schema order
    ValueForm form = ValueForm::text;
    bool config = true; ///< false for state data
    bool is_key = false;
    bool unspaced = false; ///< white space around its values is no part of them: it holds no texts
    bool secret = false;   ///< by the extension `secret` of tarvex-extensions
    std::string leafref;   ///< path of the leaf that its values refer to, or empty
};

struct ModuleInfo {
    std::string name;
    std::string ns;
    std::string prefix;
};

/// Movable handle; copies share the context.
class Models
{
public:
    /// Loads `client_modules`, which clients speak, and the native modules from the directory. Fails, naming the module
    /// and libyang's reason, if one is missing or does not parse; and if a list has more than two keys, naming it.
    static Expected<Models> load(const std::string &yang_directory,
                                 const std::vector<std::string> &client_modules = {});

    /// In the order in which they were loaded.
    std::vector<ModuleInfo> modules() const;
    /// All nodes of all modules, or of the module with the namespace `module_ns`: parents before their children, in
    /// schema order.
    std::vector<SchemaNode> nodes() const;
    std::vector<SchemaNode> nodes(const char *module_ns) const;

    /// libyang's context; lives as long as any copy of this handle.
    const ly_ctx *context() const { return context_.get(); }

private:
    Models(std::shared_ptr<ly_ctx> context, std::vector<std::string> names)
        : context_(std::move(context)), names_(std::move(names))
    {
    }

    std::shared_ptr<ly_ctx> context_;
    std::vector<std::string> names_; // of the modules, as they were loaded
};

} // namespace router
