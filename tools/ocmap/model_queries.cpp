#include "model_queries.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string_view>

#include <libyang/libyang.h>

#include "openconfig.h"
#include "router/memory.h"

namespace ocmap
{

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

router::Expected<std::vector<std::string>> tree_lines(const router::Models &models, const char *module_ns)
{
    const lys_module *module = ly_ctx_get_module_implemented_ns(models.context(), module_ns);
    const router::MemoryWatch watch;
    char *allocated = nullptr;
    const bool failed = module == nullptr || lys_print_mem(&allocated, module, LYS_OUT_TREE, 0);
    const std::unique_ptr<char, decltype(&std::free)> printed(allocated, &std::free);
    watch.check();
    if (failed) {
        return tl::unexpected(router::Error{"libyang cannot print the tree of " + std::string(module_ns), ""});
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
    if (lines.size() != models.nodes(module_ns).size()) {
        return tl::unexpected(
            router::Error{"the tree of " + std::string(module_ns) + " does not have a line for each node", ""});
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

std::vector<std::string> sample_values(const router::Models &models, const std::string &path)
{
    static const std::vector<std::string> texts = {"0123456789abcdef0123456789abcdef", "2030-01-02T03:04:05",
                                                   "2030-01-02T03:04:05Z+00:00", "2030-01-02T03:04:05.25Z+02:00"};
    std::vector<std::string> samples;
    const lys_module *module = ly_ctx_get_module_implemented_ns(models.context(), openconfig_ns);
    const lysc_node *node = find_node(module->compiled, nullptr, path);
    if (node == nullptr || (node->nodetype & (LYS_LEAF | LYS_LEAFLIST)) == 0) {
        return samples;
    }
    collect_samples(reinterpret_cast<const lysc_node_leaf *>(node)->type, texts, samples);
    const router::MemoryWatch watch;
    std::erase_if(samples, [&](const std::string &sample) {
        return lyd_value_validate(models.context(), node, sample.c_str(), sample.size(), nullptr, nullptr, nullptr) ==
               LY_EVALID;
    });
    watch.check();
    // A text that takes anything needs one sample only.
    if (samples == texts) {
        samples.resize(1);
    }
    return samples;
}

} // namespace ocmap
