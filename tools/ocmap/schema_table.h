// The schema of the models that the program was built with, from a table in the program: who needs no more of them than
// names, kinds and types of nodes has it without libyang, whose modules take many times as long to load as a small
// request takes to walk.
#pragma once

#include <span>
#include <string_view>

#include "tqm/schema.h"

namespace ocmap
{

/// The same as schema_of() makes of the directory yang/.
tqm::Schema built_in_schema();

namespace table
{

/// Rows with the fields of tqm::SchemaModule and tqm::SchemaNode. Several names or paths stand in one text, with a
/// blank between each two: none has one in it.
struct Module {
    std::string_view name;
    std::string_view ns;
    std::string_view prefix;
};
struct Node {
    std::string_view path;
    std::string_view ns;
    tqm::NodeKind kind;
    std::string_view keys = {};
    tqm::ValueForm form = tqm::ValueForm::text;
    bool config = true;
    bool unspaced = false;
    bool secret = false;
    std::string_view leafref = {};
    std::string_view marker = {};
    std::string_view companions = {};
};

/// The rows, in the order in which a schema is filled. Their file is made when the project is built
/// (make_schema_table.cpp).
extern const std::span<const Module> modules;
extern const std::span<const Node> nodes;

} // namespace table
} // namespace ocmap
