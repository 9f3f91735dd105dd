// A context of libyang over one directory of modules. The files are read here: libyang's own search for them frees a
// name twice where memory runs out.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "router/error.h"

struct ly_ctx;

namespace router
{

/// A context without modules of its own, LY_CTX_* in `options`, that finds `<name>.yang` in `yang_directory` when a
/// module is asked for. Throws std::bad_alloc for want of memory.
Expected<std::shared_ptr<ly_ctx>> make_context(const std::string &yang_directory, uint16_t options);

} // namespace router
