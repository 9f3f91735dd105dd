// Loading the modules, and the few questions about the schema that others ask.
#include "router/models.h"

#include "entries.h"
#include "memory.h"
#include "report.h"
#include "tree.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <optional>

namespace router
{

namespace
{

constexpr std::array<const char *, 6> module_names = {
    "openconfig-macsec", "Tarvex-crypto-macsec-mka-cfg",    "Tarvex-lib-keychain-cfg",
    "Tarvex-ifmgr-cfg",  "Tarvex-crypto-macsec-mka-if-cfg", "Tarvex-PRIVATE-oc-macsec-oper",
};

std::string libyang_reason(const ly_ctx *context)
{
    const char *reason = context ? ly_errmsg(context) : nullptr;
    return reason ? reason : "libyang gives no reason";
}

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

template <typename Visit>
void for_each_node(const ly_ctx *context, const char *module_name, Visit visit)
{
    if (const lys_module *module = ly_ctx_get_module_implemented(context, module_name)) {
        for_each_node(module->compiled, nullptr, "", visit);
    }
}

std::vector<ListInfo> collect_all(const ly_ctx *context, uint16_t kind)
{
    std::vector<ListInfo> found;
    for (const char *name : module_names) {
        for_each_node(context, name, [&](const lysc_node &node, const std::string &path) {
            if (node.nodetype == kind) {
                found.push_back({node.module->ns, path, key_names(&node)});
            }
        });
    }
    return found;
}

// Entries are addressed by so many keys at most.
Expected<void> check_keys(const ly_ctx *context)
{
    for (const ListInfo &list : collect_all(context, LYS_LIST)) {
        if (list.keys.size() > Keys::most) {
            const lys_module *module = ly_ctx_get_module_implemented_ns(context, list.ns.c_str());
            return tl::unexpected(Error{"the list " + list.path + " of the YANG module " + module->name + " has " +
                                            std::to_string(list.keys.size()) + " keys; two are the most",
                                        list.path});
        }
    }
    return {};
}

std::vector<std::string> paths_of_all(const ly_ctx *context, uint16_t kind)
{
    std::vector<std::string> paths;
    for (ListInfo &node : collect_all(context, kind)) {
        paths.push_back(std::move(node.path));
    }
    return paths;
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

std::optional<ValueForm> form_of(const lysc_type *type)
{
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
        return std::nullopt;
    }
}

} // namespace

Expected<Models> Models::load(const std::string &yang_directory)
{
    // Errors are taken from the context by whoever made the call; libyang itself is to print nothing.
    ly_log_options(LY_LOSTORE_LAST);

    const MemoryWatch watch;
    ly_ctx *created = nullptr;
    // With its parsed nodes at hand libyang's tree printer shows the data nodes, and groupings where they are used.
    constexpr uint16_t options = LY_CTX_NO_YANGLIBRARY | LY_CTX_DISABLE_SEARCHDIR_CWD | LY_CTX_SET_PRIV_PARSED;
    if (ly_ctx_new(yang_directory.c_str(), options, &created)) {
        watch.check();
        return tl::unexpected(Error{"cannot use the YANG directory " + yang_directory, ""});
    }
    std::shared_ptr<ly_ctx> context(created, ly_ctx_destroy);
    for (const char *name : module_names) {
        if (!ly_ctx_load_module(created, name, nullptr, nullptr)) {
            watch.check();
            return tl::unexpected(Error{"cannot load the YANG module " + std::string(name) + " from " + yang_directory +
                                            ": " + libyang_reason(created),
                                        ""});
        }
    }
    watch.check();
    if (auto good = check_keys(created); !good) {
        return tl::unexpected(good.error());
    }
    return Models(std::move(context));
}

std::vector<ListInfo> Models::lists() const
{
    return collect_all(context_.get(), LYS_LIST);
}

std::vector<ListInfo> Models::leaf_lists() const
{
    return collect_all(context_.get(), LYS_LEAFLIST);
}

std::vector<std::string> Models::leaves() const
{
    return paths_of_all(context_.get(), LYS_LEAF);
}

std::vector<std::string> Models::containers() const
{
    return paths_of_all(context_.get(), LYS_CONTAINER);
}

std::vector<std::string> Models::secrets() const
{
    std::vector<std::string> found;
    for (const char *name : module_names) {
        for_each_node(context_.get(), name, [&](const lysc_node &node, const std::string &path) {
            if (is_secret(&node)) {
                found.push_back(path);
            }
        });
    }
    return found;
}

std::vector<ModuleInfo> Models::modules() const
{
    std::vector<ModuleInfo> found;
    for (const char *name : module_names) {
        if (const lys_module *module = ly_ctx_get_module_implemented(context_.get(), name)) {
            found.push_back({module->name, module->ns, module->prefix});
        }
    }
    return found;
}

std::vector<LeafForm> Models::leaf_forms() const
{
    std::vector<LeafForm> found;
    for (const char *name : module_names) {
        for_each_node(context_.get(), name, [&](const lysc_node &node, const std::string &path) {
            const lysc_type *const type = type_of(node);
            if (const auto form = type != nullptr ? form_of(type) : std::nullopt) {
                found.push_back({path, *form});
            }
        });
    }
    return found;
}

std::vector<NodeInfo> Models::nodes(const char *module_ns) const
{
    std::vector<NodeInfo> found;
    if (const lys_module *module = ly_ctx_get_module_implemented_ns(context_.get(), module_ns)) {
        for_each_node(module->compiled, nullptr, "", [&](const lysc_node &node, const std::string &path) {
            found.push_back({path, kind_of(&node), (node.flags & LYS_CONFIG_W) != 0,
                             node.nodetype == LYS_LEAF && (node.flags & LYS_KEY) != 0, is_unspaced(type_of(node)),
                             node.module->ns});
        });
    }
    return found;
}

namespace
{

// A leafref's path needs no prefixes within its own module.
std::string without_prefix(std::string line, const std::string &prefix)
{
    for (size_t at = line.find(prefix); at != std::string::npos; at = line.find(prefix, at)) {
        line.erase(at, prefix.size());
    }
    return line;
}

} // namespace

Expected<std::vector<std::string>> Models::tree_lines(const char *module_ns) const
{
    const lys_module *module = ly_ctx_get_module_implemented_ns(context_.get(), module_ns);
    const MemoryWatch watch;
    char *allocated = nullptr;
    const bool failed = module == nullptr || lys_print_mem(&allocated, module, LYS_OUT_TREE, 0);
    const Text printed(allocated);
    watch.check();
    if (failed) {
        return tl::unexpected(Error{"libyang cannot print the tree of " + std::string(module_ns), ""});
    }
    const std::string text(printed.get());
    std::vector<std::string> lines;
    for (size_t begin = text.find('\n') + 1; begin < text.size();) {
        const size_t end = std::min(text.find('\n', begin), text.size());
        if (end > begin) {
            lines.push_back(without_prefix(text.substr(begin, end - begin), std::string(module->prefix) + ":"));
        }
        begin = end + 1;
    }
    if (lines.size() != nodes(module_ns).size()) {
        return tl::unexpected(
            Error{"the tree of " + std::string(module_ns) + " does not have a line for each node", ""});
    }
    return lines;
}

namespace
{

const lysc_node *find_node(const lysc_module *module, const lysc_node *parent, std::string_view path)
{
    const size_t end = std::min(path.find('/', 1), path.size());
    const lysc_node *node = nullptr;
    while ((node = lys_getnext(node, parent, module, 0)) != nullptr) {
        if (path.substr(1, end - 1) == node->name) {
            return end == path.size() ? node : find_node(nullptr, node, path.substr(end));
        }
    }
    return nullptr;
}

uint64_t largest(LY_DATA_TYPE type)
{
    return type == LY_TYPE_UINT8 ? UINT8_MAX : type == LY_TYPE_UINT16 ? UINT16_MAX : UINT32_MAX;
}

// Those of `texts` that the leaf takes are added for a string: a pattern may allow some of them only.
void collect_samples(const lysc_type *type, const std::vector<std::string> &texts, std::vector<std::string> &samples)
{
    switch (type->basetype) {
    case LY_TYPE_ENUM: {
        const lysc_type_bitenum_item *const enums = reinterpret_cast<const lysc_type_enum *>(type)->enums;
        for (LY_ARRAY_COUNT_TYPE i = 0; i < LY_ARRAY_COUNT(enums); ++i) {
            samples.emplace_back(enums[i].name);
        }
        break;
    }
    case LY_TYPE_BOOL:
        samples.insert(samples.end(), {"false", "true"});
        break;
    case LY_TYPE_UINT8:
    case LY_TYPE_UINT16:
    case LY_TYPE_UINT32: {
        const lysc_range *const range = reinterpret_cast<const lysc_type_num *>(type)->range;
        std::vector<uint64_t> ends = {0, largest(type->basetype)};
        if (range != nullptr) {
            ends.clear();
            for (LY_ARRAY_COUNT_TYPE i = 0; i < LY_ARRAY_COUNT(range->parts); ++i) {
                ends.insert(ends.end(), {range->parts[i].min_u64, range->parts[i].max_u64});
            }
            ends.erase(std::unique(ends.begin(), ends.end()), ends.end());
        }
        for (const uint64_t end : ends) {
            samples.push_back(std::to_string(end));
        }
        break;
    }
    case LY_TYPE_LEAFREF:
        collect_samples(reinterpret_cast<const lysc_type_leafref *>(type)->realtype, texts, samples);
        break;
    case LY_TYPE_UNION: {
        lysc_type **const types = reinterpret_cast<const lysc_type_union *>(type)->types;
        for (LY_ARRAY_COUNT_TYPE i = 0; i < LY_ARRAY_COUNT(types); ++i) {
            collect_samples(types[i], texts, samples);
        }
        break;
    }
    case LY_TYPE_STRING:
        samples.insert(samples.end(), texts.begin(), texts.end());
        break;
    default:
        break;
    }
}

} // namespace

std::vector<std::string> Models::sample_values(const std::string &path) const
{
    static const std::vector<std::string> texts = {"0123456789abcdef0123456789abcdef", "2030-01-02T03:04:05",
                                                   "2030-01-02T03:04:05Z+00:00", "2030-01-02T03:04:05.25Z+02:00"};
    std::vector<std::string> samples;
    const lys_module *module = ly_ctx_get_module_implemented_ns(context_.get(), ns::openconfig);
    const lysc_node *node = find_node(module->compiled, nullptr, path);
    if (node == nullptr || (node->nodetype & (LYS_LEAF | LYS_LEAFLIST)) == 0) {
        return samples;
    }
    collect_samples(type_of(*node), texts, samples);
    const MemoryWatch watch;
    std::erase_if(samples, [&](const std::string &sample) {
        return lyd_value_validate(context_.get(), node, sample.c_str(), sample.size(), nullptr, nullptr, nullptr) ==
               LY_EVALID;
    });
    watch.check();
    // A text that takes anything needs one sample only.
    if (samples == texts) {
        samples.resize(1);
    }
    return samples;
}

} // namespace router
