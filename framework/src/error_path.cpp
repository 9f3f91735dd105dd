// See error_path.h. Paths are of this library's own making: steps without prefixes, keys as append_key writes them.
#include "error_path.h"

#include <algorithm>

namespace tqm
{

namespace
{

/// Takes "[name='value']" from the front of `text`; false if there is none.
bool take_key(std::string_view &text, PathStep &step)
{
    const std::size_t equals = text.find('=');
    if (!text.starts_with('[') || equals == std::string_view::npos || equals + 1 >= text.size())
        return false;
    const char quote = text[equals + 1];
    const std::size_t end = text.find(std::string{quote, ']'}, equals + 2);
    if (end == std::string_view::npos)
        return false;
    step.keys.emplace_back(text.substr(1, equals - 1), text.substr(equals + 2, end - equals - 2));
    text.remove_prefix(end + 2);
    return true;
}

} // namespace

void fill_instance(Error &error, const Schema &schema)
{
    std::string_view rest = error.path;
    if (!error.instance.empty() || !rest.starts_with('/'))
        return;
    std::string schema_path;
    std::string ns;
    while (rest.starts_with('/')) {
        rest.remove_prefix(1);
        const std::size_t end = std::min(rest.find_first_of("/["), rest.size());
        PathStep step{std::string(rest.substr(0, end)), {}, {}, {}};
        rest.remove_prefix(end);
        while (take_key(rest, step)) {
        }
        schema_path.append("/").append(step.name);
        if (const char *const declared = schema.ns_of(schema_path))
            ns = declared;
        step.ns = ns;
        error.instance.push_back(std::move(step));
        // Top nodes of several models share a name.
        if (error.instance.size() == 2 && schema.ns_of(schema_path) != nullptr)
            error.instance.front().ns = ns;
    }
    for (PathStep &step : error.instance) {
        step.prefix = schema.prefix_of(step.ns);
        step.module = step.prefix.empty() ? "" : schema.module_of(step.ns);
    }
}

} // namespace tqm
