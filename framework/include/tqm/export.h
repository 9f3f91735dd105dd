// What libtqm.so shows: the operations of tqm_map.h, and what is marked so. All else is hidden.
#pragma once

#define TQM_EXPORT __attribute__((visibility("default")))
/// A part of what is marked that nobody outside meets.
#define TQM_HIDDEN __attribute__((visibility("hidden")))
