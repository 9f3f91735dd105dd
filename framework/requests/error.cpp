// The only place that knows how error tags are written.
#include "tqm/error.h"

#include <algorithm>
#include <array>
#include <cstddef>

#include "tqm/tree.h"

namespace tqm
{

namespace
{

constexpr std::array<std::string_view, 19> tag_names = {
    "in-use",
    "invalid-value",
    "too-big",
    "missing-attribute",
    "bad-attribute",
    "unknown-attribute",
    "missing-element",
    "bad-element",
    "unknown-element",
    "unknown-namespace",
    "access-denied",
    "lock-denied",
    "resource-denied",
    "rollback-failed",
    "data-exists",
    "data-missing",
    "operation-not-supported",
    "operation-failed",
    "malformed-message",
};

constexpr std::array<std::string_view, 4> type_names = {"transport", "rpc", "protocol", "application"};

} // namespace

std::string_view name_of(ErrorTag tag)
{
    return tag_names[static_cast<std::size_t>(tag)];
}

std::string_view name_of(ErrorType type)
{
    return type_names[static_cast<std::size_t>(type)];
}

std::string_view name_of(ErrorSeverity severity)
{
    return severity == ErrorSeverity::error ? "error" : "warning";
}

ErrorTag tag_of(rcode code)
{
    switch (code) {
    case TQM_ERR_NO_SUBTREE:
        return ErrorTag::missing_element;
    case TQM_ERR_UNSUPPORTED:
        return ErrorTag::unknown_element;
    case TQM_ERR_LIST_KEY:
        return ErrorTag::bad_element;
    case TQM_ERR_KEY_DELETE:
        return ErrorTag::operation_not_supported;
    case TQM_ERR_BAD_ARGS:
    case TQM_ERR_INVALID_REQUEST:
        return ErrorTag::invalid_value;
    case TQM_ERR_AUGMENT:
        return ErrorTag::unknown_namespace;
    default:
        return ErrorTag::operation_failed;
    }
}

InstanceIdentifier xml_path(const Error &error)
{
    InstanceIdentifier path;
    for (const PathStep &step : error.instance) {
        const std::string prefix = step.prefix.empty() ? "" : step.prefix + ":";
        path.text.append("/").append(prefix).append(step.name);
        for (const auto &[key, value] : step.keys) { // "." is the value of a leaf-list
            append_key(path.text, key == "." ? key : prefix + key, value);
        }
        const std::pair<std::string, std::string> binding{step.prefix, step.ns};
        if (!step.prefix.empty() && std::ranges::find(path.namespaces, binding) == path.namespaces.end()) {
            path.namespaces.push_back(binding);
        }
    }
    return path;
}

std::string json_path(const Error &error)
{
    std::string path;
    std::string_view outer;
    for (const PathStep &step : error.instance) {
        path += '/';
        if (!step.module.empty() && step.module != outer) {
            path.append(step.module).append(":");
        }
        outer = step.module;
        path += step.name;
        for (const auto &[key, value] : step.keys) {
            append_key(path, key, value);
        }
    }
    return path;
}

} // namespace tqm
