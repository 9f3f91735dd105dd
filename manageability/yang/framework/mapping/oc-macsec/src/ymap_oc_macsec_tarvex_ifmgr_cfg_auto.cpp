// The node functions of Tarvex-ifmgr-cfg.
#define TABLE_MODULE to_oc_macsec_tarvexifmgrcfg
#define TABLE_NODE_LINES start_and_end
#define TABLE_LEAF_BY_LINES start_and_end
#define REVERSE_UNMAPPED DEFAULT_FUNCTION
#include "reverse_tables.h"

DUCK_MAP_FUNCTIONS

#define NODE(kind, ...) MAP_##kind(__VA_ARGS__)
#include "ymap_oc_macsec_tarvex_ifmgr_cfg.def"
