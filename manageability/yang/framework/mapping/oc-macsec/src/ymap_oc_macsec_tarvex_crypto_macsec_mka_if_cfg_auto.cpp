// The node functions of Tarvex-crypto-macsec-mka-if-cfg.
#define TABLE_MODULE to_oc_macsec_tarvexcryptomacsecmkaifcfg
#define TABLE_NODE_LINES start_and_end
#define TABLE_LEAF_BY_LINES start_and_end
#define REVERSE_UNMAPPED DEFAULT_FUNCTION
#include "reverse_tables.h"

DUCK_MAP_FUNCTIONS

#define NODE(kind, ...) MAP_##kind(__VA_ARGS__)
#include "ymap_oc_macsec_tarvex_crypto_macsec_mka_if_cfg.def"
