// The walkers of Tarvex-crypto-macsec-mka-if-cfg, which augments an interface with its MACsec settings, children before
// their parents. They are reached through the hook of the interface list; no root is registered for them.
#define REVERSE_MODULE tarvexcryptomacsecmkaifcfg
#define REVERSE_HOOK DEFAULT_HOOK
#include "reverse_tables.h"

static constexpr oc_macsec::reverse_module module = {MKA_IF_CFG_NS, false};

// The tables keep one child a line.
// clang-format off

CONTAINER (lvla_macsec_macsecservice)
CONTAINER (lvla_macsec_eap)
LEAF      (lvla_macsec_pskkeychain_keychainname)
LEAF      (lvla_macsec_pskkeychain_policyname)
CONTAINER (lvla_macsec_pskkeychain,
           CHILD("key-chain-name", lvla_macsec_pskkeychain_keychainname),
           CHILD("policy-name",    lvla_macsec_pskkeychain_policyname))
CONTAINER (lvla_macsec,
           CHILD("macsec-service", lvla_macsec_macsecservice),
           CHILD("eap",            lvla_macsec_eap),
           CHILD("psk-key-chain",  lvla_macsec_pskkeychain))
AUGMENT   (augment_lvla_interface_configuration, lvla_interface_configuration, "macsec", lvla_macsec)
