// The walkers of Tarvex-crypto-macsec-mka-if-cfg, which augments an interface with its MACsec settings. They are
// reached through the hook of the interface list; no root is registered for them.
#define TABLE_MODULE to_oc_macsec_tarvexcryptomacsecmkaifcfg
#define REVERSE_HOOK DEFAULT_HOOK
#include "reverse_tables.h"

static constexpr oc_macsec::reverse_module module = {MKA_IF_CFG_NS, false};

#define NODE(kind, ...) DECLARE_##kind(__VA_ARGS__)
#include "ymap_oc_macsec_tarvex_crypto_macsec_mka_if_cfg.def"

static constexpr oc_macsec::table_line lines[] = {
#define NODE(kind, ...) LINE_##kind(__VA_ARGS__)
#include "ymap_oc_macsec_tarvex_crypto_macsec_mka_if_cfg.def"
};
static_assert(oc_macsec::names_fit(lines), "an exported name does not end in its tag");

#define NODE(kind, ...) WALK_##kind(__VA_ARGS__)
#include "ymap_oc_macsec_tarvex_crypto_macsec_mka_if_cfg.def"

AUGMENT(augment_lvla_interface_configuration, lvla_interface_configuration, "macsec", lvla_macsec)
