// See schema.h.
#include "tqm/schema.h"

namespace tqm
{

void Schema::add_list(std::string path, std::vector<std::string> keys)
{
    lists_.insert_or_assign(std::move(path), std::move(keys));
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

void Schema::add_secret(std::string path)
{
    secret_tags_.insert(path.substr(path.rfind('/') + 1));
    secrets_.insert(std::move(path));
}

bool Schema::hides(std::string_view path) const
{
    const bool is_misspelt = !leaves_.empty() && !is_leaf(path) && !is_leaf_list(path);
    return is_misspelt || secrets_.find(path) != secrets_.end();
}

bool Schema::is_secret_tag(std::string_view tag) const
{
    return secret_tags_.find(tag) != secret_tags_.end();
}

std::vector<std::string_view> Schema::paths() const
{
    std::vector<std::string_view> paths(leaf_lists_.begin(), leaf_lists_.end());
    paths.insert(paths.end(), leaves_.begin(), leaves_.end());
    paths.insert(paths.end(), containers_.begin(), containers_.end());
    for (const auto &[path, keys] : lists_) {
        paths.push_back(path);
    }
    return paths;
}

void Schema::add_state(std::string path)
{
    state_.insert(std::move(path));
}

bool Schema::is_state(std::string_view path) const
{
    return state_.find(path) != state_.end();
}

void Schema::add_unspaced(std::string path)
{
    unspaced_.insert(std::move(path));
}

bool Schema::is_unspaced(std::string_view path) const
{
    return unspaced_.find(path) != unspaced_.end();
}

void Schema::add_marker(std::string path, std::string marker)
{
    markers_.insert_or_assign(std::move(path), std::move(marker));
}

void Schema::add_companion(std::string path, std::string companion)
{
    companions_[std::move(path)].push_back(std::move(companion));
}

const std::vector<std::string> *Schema::companions(std::string_view path) const
{
    const auto found = companions_.find(path);
    return found == companions_.end() ? nullptr : &found->second;
}

const char *Schema::marker(std::string_view path) const
{
    const auto found = markers_.find(path);
    return found == markers_.end() ? nullptr : found->second.c_str();
}

void Schema::add_module(std::string name, std::string ns, std::string prefix)
{
    ns_module_.emplace(ns, name);
    ns_prefix_.emplace(ns, std::move(prefix));
    module_ns_.emplace(std::move(name), std::move(ns));
}

void Schema::add_ns(std::string path, const std::string &ns)
{
    node_ns_.try_emplace(std::move(path), ns);
}

std::string_view Schema::prefix_of(std::string_view ns) const
{
    const auto found = ns_prefix_.find(ns);
    return found == ns_prefix_.end() ? std::string_view() : std::string_view(found->second);
}

const char *Schema::ns_of(std::string_view path) const
{
    const auto found = node_ns_.find(path);
    return found == node_ns_.end() ? nullptr : found->second.c_str();
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
