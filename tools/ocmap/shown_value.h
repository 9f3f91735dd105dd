// Values as explanations show them: without secrets.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "tqm/schema.h"

namespace ocmap
{

/// The value of the node at a schema path, "***" for what may be a secret; none for a null. An empty text hides
/// nothing.
inline std::optional<std::string> shown_value(const tqm::Schema &schema, std::string_view path, const char *value)
{
    if (value == nullptr) {
        return std::nullopt;
    }
    return *value != '\0' && schema.hides(path) ? "***" : value;
}

} // namespace ocmap
