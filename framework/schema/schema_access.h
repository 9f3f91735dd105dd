// The framework's way to a schema's paths.
#pragma once

#include "schema/paths.h"

namespace tqm
{

struct SchemaAccess {
    static const SchemaPaths &paths(const Schema &schema) { return *schema.paths_; }
};

} // namespace tqm
