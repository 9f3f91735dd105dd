// The table made into the framework's records.
#include "schema_table.h"

#include <algorithm>
#include <string>
#include <vector>

namespace ocmap
{
namespace
{

std::vector<std::string> split(std::string_view names)
{
    std::vector<std::string> found;
    while (!names.empty()) {
        const std::size_t end = std::min(names.find(' '), names.size());
        found.emplace_back(names.substr(0, end));
        names.remove_prefix(std::min(end + 1, names.size()));
    }
    return found;
}

} // namespace

tqm::Schema built_in_schema()
{
    tqm::Schema schema;
    for (const table::Module &module : table::modules) {
        schema.add_module({std::string(module.name), std::string(module.ns), std::string(module.prefix)});
    }
    for (const table::Node &node : table::nodes) {
        schema.add({.path = std::string(node.path),
                    .ns = std::string(node.ns),
                    .kind = node.kind,
                    .keys = split(node.keys),
                    .form = node.form,
                    .config = node.config,
                    .unspaced = node.unspaced,
                    .secret = node.secret,
                    .leafref = std::string(node.leafref),
                    .marker = std::string(node.marker),
                    .companions = split(node.companions)});
    }
    return schema;
}

} // namespace ocmap
