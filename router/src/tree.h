// Ownership at libyang's boundary: whoever holds one of these frees it.
#pragma once

#include "router/tree.h"

#include <libyang/libyang.h>

#include <cstdlib>
#include <memory>

namespace router
{

struct FreeTree {
    void operator()(lyd_node *node) const { lyd_free_tree(node); }
};
struct Free {
    void operator()(void *memory) const { std::free(memory); }
};

/// One node that is linked nowhere, with all below it.
using Detached = std::unique_ptr<lyd_node, FreeTree>;

using Text = std::unique_ptr<char, Free>;

} // namespace router
