// The node functions of Tarvex-crypto-macsec-mka-cfg. One logs "Start" and no "End"; one that only hands a leaf on logs
// nothing, and one without a mapping is a function of its own.
#define TABLE_MODULE to_oc_macsec_tarvexcryptomacsecmkacfg
#define TABLE_NODE_LINES start
#define TABLE_LEAF_BY_LINES none
#define REVERSE_UNMAPPED OWN_FUNCTION
#include "reverse_tables.h"

DUCK_MAP_FUNCTIONS

#define NODE(kind, ...) MAP_##kind(__VA_ARGS__)
#include "ymap_oc_macsec_tarvex_crypto_macsec_mka_cfg.def"
