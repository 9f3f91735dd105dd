// Namespace URIs of one request, each kept once, so that equal ones can be told by their addresses.
#pragma once

#include <cstring>
#include <string_view>
#include <unordered_set>
#include <utility>

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
        // Most requests have one or two.
        if (std::strcmp(last_, ns) != 0) {
            std::swap(last_, other_);
            last_ = std::strcmp(last_, ns) == 0 ? last_ : find(ns);
        }
        return last_;
    }

private:
    const char *find(const char *ns)
    {
        if (const char *const known = of_schema_.find_namespace(ns)) {
            return known;
        }
        auto found = known_.find(ns);
        if (found == known_.end()) {
            found = known_.insert(arena_.copy(ns)).first;
        }
        return found->data();
    }

    const SchemaPaths &of_schema_;
    Arena &arena_;
    std::unordered_set<std::string_view> known_; ///< those that no schema has
    const char *last_ = find("");
    const char *other_ = last_;
};

} // namespace tqm
