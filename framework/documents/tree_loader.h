// Where a document becomes a tree: from its elements to the arrays that walkers walk.
#pragma once

#include <span>

#include "schema/paths.h"
#include "tqm/document.h"
#include "tqm/schema.h"
#include "trees/arena.h"
#include "trees/namespaces.h"
#include "trees/request_tree.h"
#include "walk/walk_kind.h"

namespace tqm
{

/// What a document is held to.
struct LoadRules {
    const Schema &schema;
    std::span<const tqm_map_reg_info> registrations; ///< name the top elements
    const WalkKind &kind;
    bool keeps_left_out; ///< somebody asks for what of a filter is not walked
};

/// Where its tree is made.
struct LoadTarget {
    Arena &arena;
    Namespaces &namespaces;
    PathTable &paths;
    RequestTree &tree;
};

/// Gives `target` the elements of `document` as its trees. The texts stay in the document's buffer, which the tree then
/// owns. Fails with the place and the rule for what is no request: elements that no registration or other namespace
/// names, attributes and operations that it cannot have, texts beside elements, nodes that stand twice.
Expected<void> load_tree(Document document, const LoadRules &rules, const LoadTarget &target);

} // namespace tqm
