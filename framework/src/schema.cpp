// See schema.h.
#include "tqm/schema.h"

namespace tqm
{

void Schema::add_list(std::string path, std::vector<std::string> keys)
{
    lists_.insert_or_assign(std::move(path), std::move(keys));
}

void Schema::add_state(std::string path)
{
    state_.insert(std::move(path));
}

bool Schema::is_state(std::string_view path) const
{
    return state_.find(path) != state_.end();
}

void Schema::add_leaf_list(std::string path)
{
    leaf_lists_.insert(std::move(path));
}

const std::vector<std::string> *Schema::list_keys(std::string_view path) const
{
    const auto found = lists_.find(path);
    return found == lists_.end() ? nullptr : &found->second;
}

bool Schema::is_leaf_list(std::string_view path) const
{
    return leaf_lists_.find(path) != leaf_lists_.end();
}

void Schema::add_leaf(std::string path)
{
    leaves_.insert(std::move(path));
}

bool Schema::is_leaf(std::string_view path) const
{
    return leaves_.find(path) != leaves_.end();
}

void Schema::add_container(std::string path)
{
    containers_.insert(std::move(path));
}

bool Schema::is_container(std::string_view path) const
{
    return containers_.find(path) != containers_.end();
}

std::vector<std::string_view> Schema::paths() const
{
    std::vector<std::string_view> paths(leaf_lists_.begin(), leaf_lists_.end());
    paths.insert(paths.end(), leaves_.begin(), leaves_.end());
    paths.insert(paths.end(), containers_.begin(), containers_.end());
    for (const auto &[path, keys] : lists_)
        paths.push_back(path);
    return paths;
}

void Schema::add_module(std::string name, std::string ns)
{
    ns_module_.emplace(ns, name);
    module_ns_.emplace(std::move(name), std::move(ns));
}

void Schema::add_json_type(std::string path, JsonType type)
{
    json_types_.insert_or_assign(std::move(path), type);
}

const char *Schema::module_ns(std::string_view name) const
{
    const auto found = module_ns_.find(name);
    return found == module_ns_.end() ? nullptr : found->second.c_str();
}

std::string_view Schema::module_of(std::string_view ns) const
{
    const auto found = ns_module_.find(ns);
    return found == ns_module_.end() ? ns : std::string_view(found->second);
}

JsonType Schema::json_type(std::string_view path) const
{
    const auto found = json_types_.find(path);
    return found == json_types_.end() ? JsonType::text : found->second;
}

} // namespace tqm
