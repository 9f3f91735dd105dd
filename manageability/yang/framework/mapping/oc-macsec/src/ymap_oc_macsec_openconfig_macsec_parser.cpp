// The walkers of openconfig-macsec. How a walker of each kind runs stands in forward_walker.cpp and
// forward_list_walker.cpp.
#define TABLE_MODULE ot_oc_macsec_openconfigmacsec
#include "forward_tables.h"

#define NODE(kind, ...) DECLARE_##kind(__VA_ARGS__)
#include "ymap_oc_macsec_openconfig_macsec.def"

static constexpr oc_macsec::table_line lines[] = {
#define NODE(kind, ...) LINE_##kind(__VA_ARGS__)
#include "ymap_oc_macsec_openconfig_macsec.def"
};
static_assert(oc_macsec::names_fit(lines), "an exported name does not end in its tag");

#define NODE(kind, ...) WALK_##kind(__VA_ARGS__)
#include "ymap_oc_macsec_openconfig_macsec.def"
