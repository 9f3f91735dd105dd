// The node functions of openconfig-macsec. One logs "Start" and no "End"; one that only hands a leaf on logs nothing.
// What each shape does stands in node_function.cpp.
#define TABLE_MODULE ot_oc_macsec_openconfigmacsec
#define TABLE_NODE_LINES start
#define TABLE_LEAF_BY_LINES none
#include "forward_tables.h"

#define NODE(kind, ...) MAP_##kind(__VA_ARGS__)
#include "ymap_oc_macsec_openconfig_macsec.def"
