// Namespace URIs of one request, each kept once, so that equal ones can be told by their addresses.
#pragma once

#include <cstring>
#include <string_view>
#include <unordered_set>

#include "schema/schema_access.h"
#include "trees/arena.h"

namespace tqm
{

class Namespaces
{
public:
    Namespaces(const Schema &schema, Arena &arena) : of_schema_(SchemaAccess::paths(schema)), arena_(arena) {}

    /// The kept text; "" for null.
    const char *intern(const char *ns)
    {
        ns = ns == nullptr ? "" : ns;
        if (last_ != nullptr && std::strcmp(last_, ns) == 0) {
            return last_;
        }
        last_ = of_schema_.find_namespace(ns);
        if (last_ == nullptr) {
            auto found = known_.find(ns);
            if (found == known_.end()) {
                found = known_.insert(arena_.copy(ns)).first;
            }
            last_ = found->data();
        }
        return last_;
    }

private:
    const SchemaPaths &of_schema_;
    Arena &arena_;
    std::unordered_set<std::string_view> known_; ///< those that no schema has
    const char *last_ = nullptr;
};

} // namespace tqm
