#include "tqm/instance_path.h"

#include "tqm/tree.h"
#include "walk/hierarchy.h"

namespace tqm
{

void append_key(std::string &path, std::string_view key, std::string_view value)
{
    const char quote = value.find('\'') == std::string_view::npos ? '\'' : '"';
    path.append("[").append(key).append("=").append(1, quote);
    for (const char c : value) {
        if (quote == '"' && (c == '"' || c == '\\')) {
            path += '\\';
        }
        path += c;
    }
    path.append(1, quote).append("]");
}

InstancePath &InstancePath::enter(const char *name)
{
    steps_.push_back({name == nullptr ? "?" : name});
    return *this;
}

InstancePath &InstancePath::key(std::string_view name, std::string_view value)
{
    steps_.back().keys.emplace_back(name, value);
    return *this;
}

InstancePath &InstancePath::keys(const rdl_tqm_datatree &entry, const std::vector<std::string> &names)
{
    for (const std::string &name : names) {
        if (const char *const value = given_value(find_child(entry, name))) {
            key(name, value);
        }
    }
    return *this;
}

std::string InstancePath::text() const
{
    std::string text;
    for (const PathStep &step : steps_) {
        text.append("/").append(step.name);
        for (const auto &[name, value] : step.keys) {
            append_key(text, name, value);
        }
    }
    return text;
}

} // namespace tqm
