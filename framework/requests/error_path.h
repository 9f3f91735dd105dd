// The place of an error, node by node, as messages of a protocol need it.
#pragma once

#include "tqm/error.h"
#include "tqm/schema.h"

namespace tqm
{

/// Makes the record complete: keeps `bad_element` where the tag asks for it, and gives the steps of `error.instance`
/// their namespaces, unless they have them. Names that no model has get that of the node around them; a place that no
/// model has is none.
void fill_instance(Error &error, const Schema &schema);

/// `error` with its instance filled, for returning it.
inline tl::unexpected<Error> with_instance(Error error, const Schema &schema)
{
    fill_instance(error, schema);
    return tl::unexpected(std::move(error));
}

} // namespace tqm
