// Ownership of a data tree of libyang's, for those who are handed one.
#pragma once

#include <memory>

struct lyd_node;

namespace router
{

struct FreeAll {
    void operator()(lyd_node *node) const;
};

/// A whole data tree, held by any of its top-level nodes.
using Tree = std::unique_ptr<lyd_node, FreeAll>;

} // namespace router
