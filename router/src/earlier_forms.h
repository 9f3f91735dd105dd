// Configurations that an earlier version of the modules allowed, and that the present one does not.
#pragma once

#include "tree.h"

namespace router
{

/// Prepares a tree that has been parsed for its validation. Of the cases of each choice one stays: the last in the
/// model's order that says anything, as "false" and 0 do not. What a `when` forbids goes in the validation, without
/// making the tree invalid.
void admit_earlier_forms(Tree &tree);

} // namespace router
