// The result of an explanation: its nodes after the walk, and which add each of them comes from.
#pragma once

#include <vector>

#include "explanation.h"
#include "tqm/schema.h"
#include "tqm/tree.h"

namespace ocmap
{

/// Puts the trees below `roots` into `explanation`, and joins its adds and them: `targets` are the result nodes that
/// the adds found, in the order of the adds, null where one was refused. Of several adds to one node the last stands.
void outline_result(const tqm::Schema &schema, const std::vector<const tqm::OutputNode *> &roots,
                    const std::vector<const tqm::OutputNode *> &targets, Explanation &explanation);

} // namespace ocmap
