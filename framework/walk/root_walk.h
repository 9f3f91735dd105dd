// A walk through a plug-in, from its root walker to the return.
#pragma once

#include "walk/request_state.h"

namespace tqm
{

/// Walks `tree` with the root walker `root`. Gives its code; that there was nothing to do is no failure.
///
/// A plug-in keeps data between its calls, some beyond a request, and may use functions of the C library that have one
/// answer a process: one walk runs at a time, others wait for its end.
rcode walk_root(Request::Impl &request, tqm_map_function root, rdl_tqm_datatree &tree);

} // namespace tqm
