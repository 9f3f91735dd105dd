// The node functions of Tarvex-crypto-macsec-mka-if-cfg. A node without a mapping is another name of the module's
// default function.
#define REVERSE_MODULE tarvexcryptomacsecmkaifcfg
#define REVERSE_NODE_LINES start_and_end
#define REVERSE_LEAF_BY_LINES start_and_end
#include "reverse_tables.h"

// The tables keep one node a line.
// clang-format off

DUCK_MAP_FUNCTIONS

// ---- macsec ---------------------------------------------------------------------------------------------------------
EMPTY_CONTAINER (lvla_macsec)
DUCK_CONTAINER  (lvla_macsec_macsecservice)
DUCK_LEAF       (lvla_macsec_macsecservice_decryptport)
DUCK_LEAF       (lvla_macsec_macsecservice_keychain)
DUCK_LEAF       (lvla_macsec_macsecservice_policy)
DUCK_CONTAINER  (lvla_macsec_eap)
DUCK_LEAF       (lvla_macsec_eap_eapconfig)
DUCK_LEAF       (lvla_macsec_eap_policyname)
CONTAINER_BY    (lvla_macsec_pskkeychain,              ymap_to_ocmacsec_interfaces_interface_mka_rev)
CONFIG_LEAF     (lvla_macsec_pskkeychain_keychainname, "/macsec/interfaces/interface/mka/config/key-chain")
CONFIG_LEAF     (lvla_macsec_pskkeychain_policyname,   "/macsec/interfaces/interface/mka/config/mka-policy")
DUCK_LEAF       (lvla_macsec_pskkeychain_fallbackkeychain)
