// What the macros of all table files are made of. A macro here makes only what a function cannot: an exported name with
// its signature, the name and place for trace lines, and the function's own call-site words.
#pragma once

#include "frame.h"

#define DECLARE_MAPPER(name) extern "C" rcode name(MAPPER_PARAMETERS);
#define DECLARE_CONTAINER_FUNCTION(name) extern "C" rcode name(CONTAINER_PARAMETERS);

// The frame of the exported function `name`, for a static descriptor in its body.
#define FRAME_OF(name)                                                                                                 \
    {                                                                                                                  \
#name, __FILE__, __LINE__, &sites                                                                              \
    }
#define CALL_SITES static oc_macsec::call_sites sites

// The number of elements of an array.
#define LENGTH_OF(array) (sizeof(array) / sizeof((array)[0]))
