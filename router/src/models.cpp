// Loading the modules, and the few questions about the schema that others ask.
#include "router/models.h"

#include "entries.h"
#include "report.h"
#include "router/memory.h"
#include "tree.h"
#include "yang_files.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <optional>

namespace router
{

namespace
{

constexpr std::array native_modules = {
    "Tarvex-crypto-macsec-mka-cfg",    "Tarvex-lib-keychain-cfg",       "Tarvex-ifmgr-cfg",
    "Tarvex-crypto-macsec-mka-if-cfg", "Tarvex-PRIVATE-oc-macsec-oper",
};

std::vector<std::string> key_names(const lysc_node *list)
{
    std::vector<std::string> keys;
    for (const lysc_node *child = lysc_node_child(list); child && lysc_is_key(child); child = child->next) {
        keys.emplace_back(child->name);
    }
    return keys;
}

// Calls `visit` with each node of a module, or below `parent`, and its path; parents before their children. Choices and
// cases are no nodes of data.
template <typename Visit>
void for_each_node(const lysc_module *module, const lysc_node *parent, const std::string &outer, Visit visit)
{
    const lysc_node *node = nullptr;
    while ((node = lys_getnext(node, parent, module, 0)) != nullptr) {
        const std::string path = outer + "/" + node->name;
        visit(*node, path);
        for_each_node(nullptr, node, path, visit);
    }
}

NodeKind kind_of(const lysc_node *node)
{
    switch (node->nodetype) {
    case LYS_LIST:
        return NodeKind::list;
    case LYS_LEAF:
        return NodeKind::leaf;
    case LYS_LEAFLIST:
        return NodeKind::leaf_list;
    default:
        return NodeKind::container;
    }
}

const lysc_type *type_of(const lysc_node &node)
{
    switch (node.nodetype) {
    case LYS_LEAF:
        return reinterpret_cast<const lysc_node_leaf &>(node).type;
    case LYS_LEAFLIST:
        return reinterpret_cast<const lysc_node_leaflist &>(node).type;
    default:
        return nullptr;
    }
}

// Texts are what they are, with the white space around them; a union of none is none. So are values that are named by
// a pattern alone, which no type of these modules lets begin or end with white space in a union.
bool is_unspaced(const lysc_type *type)
{
    while (type && type->basetype == LY_TYPE_LEAFREF) {
        type = reinterpret_cast<const lysc_type_leafref *>(type)->realtype;
    }
    return type && type->basetype != LY_TYPE_STRING && type->basetype != LY_TYPE_BINARY;
}

ValueForm form_of(const lysc_type *type)
{
    if (type == nullptr) {
        return ValueForm::text;
    }
    while (type->basetype == LY_TYPE_LEAFREF) {
        type = reinterpret_cast<const lysc_type_leafref *>(type)->realtype;
    }
    switch (type->basetype) {
    case LY_TYPE_INT8:
    case LY_TYPE_INT16:
    case LY_TYPE_INT32:
    case LY_TYPE_UINT8:
    case LY_TYPE_UINT16:
    case LY_TYPE_UINT32:
        return ValueForm::number;
    case LY_TYPE_BOOL:
        return ValueForm::boolean;
    case LY_TYPE_EMPTY:
        return ValueForm::empty;
    default:
        return ValueForm::text;
    }
}

std::string path_of(const lysc_node *node)
{
    std::string path;
    for (; node != nullptr; node = lysc_data_parent(node)) {
        path.insert(0, std::string("/") + node->name);
    }
    return path;
}

// Path of the leaf that a leafref refers to; empty for other types.
std::string target_of(const lysc_node &node, const lysc_type *type)
{
    if (type == nullptr || type->basetype != LY_TYPE_LEAFREF) {
        return {};
    }
    const auto *const leafref = reinterpret_cast<const lysc_type_leafref *>(type);
    const MemoryWatch watch;
    ly_set *way = nullptr; // the nodes that the path leads through, the target last
    lys_find_expr_atoms(&node, node.module, leafref->path, leafref->prefixes, 0, &way);
    watch.check();
    std::string target = way == nullptr || way->count == 0 ? "" : path_of(way->snodes[way->count - 1]);
    ly_set_free(way, nullptr);
    return target;
}

SchemaNode described(const lysc_node &node, std::string path)
{
    const lysc_type *const type = type_of(node);
    return {.ns = node.module->ns,
            .path = std::move(path),
            .kind = kind_of(&node),
            .keys = node.nodetype == LYS_LIST ? key_names(&node) : std::vector<std::string>(),
            .form = form_of(type),
            .config = (node.flags & LYS_CONFIG_W) != 0,
            .is_key = node.nodetype == LYS_LEAF && (node.flags & LYS_KEY) != 0,
            .unspaced = is_unspaced(type),
            .secret = is_secret(&node),
            .leafref = target_of(node, type)};
}

// Entries are addressed by so many keys at most.
Expected<void> check_keys(const Models &models)
{
    for (const ModuleInfo &module : models.modules()) {
        for (const SchemaNode &node : models.nodes(module.ns.c_str())) {
            if (node.keys.size() > Keys::most) {
                return tl::unexpected(Error{"the list " + node.path + " of the YANG module " + module.name + " has " +
                                                std::to_string(node.keys.size()) + " keys; two are the most",
                                            node.path});
            }
        }
    }
    return {};
}

} // namespace

Expected<Models> Models::load(const std::string &yang_directory, const std::vector<std::string> &client_modules)
{
    std::vector<std::string> names = client_modules;
    names.insert(names.end(), native_modules.begin(), native_modules.end());
    const MemoryWatch watch;
    // With its parsed nodes at hand libyang's tree printer shows the data nodes, and groupings where they are used.
    Expected<std::shared_ptr<ly_ctx>> context = make_context(yang_directory, LY_CTX_SET_PRIV_PARSED);
    if (!context) {
        return tl::unexpected(context.error());
    }
    for (const std::string &name : names) {
        if (!ly_ctx_load_module(context->get(), name.c_str(), nullptr, nullptr)) {
            std::string message = "cannot load the YANG module ";
            message.append(name).append(" from ").append(yang_directory).append(": ");
            message += watch.reason(context->get());
            return tl::unexpected(Error{std::move(message), ""});
        }
    }
    watch.check();
    Models models(std::move(*context), std::move(names));
    if (auto good = check_keys(models); !good) {
        return tl::unexpected(good.error());
    }
    return models;
}

std::vector<ModuleInfo> Models::modules() const
{
    std::vector<ModuleInfo> found;
    for (const std::string &name : names_) {
        if (const lys_module *module = ly_ctx_get_module_implemented(context_.get(), name.c_str())) {
            found.push_back({module->name, module->ns, module->prefix});
        }
    }
    return found;
}

std::vector<SchemaNode> Models::nodes() const
{
    std::vector<SchemaNode> found;
    for (const ModuleInfo &module : modules()) {
        std::ranges::move(nodes(module.ns.c_str()), std::back_inserter(found));
    }
    return found;
}

std::vector<SchemaNode> Models::nodes(const char *module_ns) const
{
    std::vector<SchemaNode> found;
    if (const lys_module *module = ly_ctx_get_module_implemented_ns(context_.get(), module_ns)) {
        for_each_node(module->compiled, nullptr, "",
                      [&](const lysc_node &node, const std::string &path) { found.push_back(described(node, path)); });
    }
    return found;
}

} // namespace router
