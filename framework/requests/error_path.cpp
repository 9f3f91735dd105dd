// Paths are of this library's own making: steps without prefixes, keys as append_key writes them.
#include "requests/error_path.h"

#include <algorithm>

namespace tqm
{

namespace
{

/// Takes "[name='value']" from the front of `text`; false if there is none.
bool take_key(std::string_view &text, PathStep &step)
{
    const std::size_t equals = text.find('=');
    if (!text.starts_with('[') || equals == std::string_view::npos || equals + 1 >= text.size()) {
        return false;
    }
    const char quote = text[equals + 1];
    std::string value;
    std::size_t at = equals + 2;
    for (; at < text.size() && text[at] != quote; ++at) {
        if (quote == '"' && text[at] == '\\' && at + 1 < text.size()) {
            ++at;
        }
        value += text[at];
    }
    if (text.substr(std::min(at, text.size()), 2) != std::string{quote, ']'}) {
        return false;
    }
    step.keys.emplace_back(text.substr(1, equals - 1), std::move(value));
    text.remove_prefix(at + 2);
    return true;
}

/// Tags with which RFC 6241, appendix A, names the element at fault.
bool names_element(ErrorTag tag)
{
    switch (tag) {
    case ErrorTag::missing_attribute:
    case ErrorTag::bad_attribute:
    case ErrorTag::unknown_attribute:
    case ErrorTag::missing_element:
    case ErrorTag::bad_element:
    case ErrorTag::unknown_element:
    case ErrorTag::unknown_namespace:
        return true;
    default:
        return false;
    }
}

} // namespace

void fill_instance(Error &error, const Schema &schema)
{
    if (!names_element(error.error_tag)) {
        error.bad_element.clear();
    }
    std::string_view rest = error.path;
    if (!error.instance.empty() || !rest.starts_with('/')) {
        return;
    }
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
        const SchemaNode *const declared = schema.find(schema_path);
        if (declared != nullptr) {
            ns = declared->ns;
        }
        step.ns = ns;
        error.instance.push_back(std::move(step));
        // Top nodes of several models share a name.
        if (error.instance.size() == 2 && declared != nullptr) {
            error.instance.front().ns = ns;
        }
    }
    if (ns.empty()) { // a place that no model has
        error.instance.clear();
    } else if (error.error_tag == ErrorTag::unknown_namespace) {
        error.instance.pop_back(); // the element itself is in none
    }
    for (PathStep &step : error.instance) {
        if (const SchemaModule *const module = schema.module_of(step.ns)) {
            step.prefix = module->prefix;
            step.module = module->name;
        }
    }
}

} // namespace tqm
