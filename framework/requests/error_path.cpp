#include "requests/error_path.h"

#include <algorithm>

namespace tqm
{

namespace
{

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
    if (error.instance.empty() || !error.instance.front().ns.empty()) {
        return;
    }
    std::string schema_path;
    std::string ns;
    for (PathStep &step : error.instance) {
        schema_path.append("/").append(step.name);
        const SchemaNode *const declared = schema.find(schema_path);
        if (declared != nullptr) {
            ns = declared->ns;
        }
        step.ns = ns;
        // Top nodes of several models share a name.
        if (&step == error.instance.data() + 1 && declared != nullptr) {
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
