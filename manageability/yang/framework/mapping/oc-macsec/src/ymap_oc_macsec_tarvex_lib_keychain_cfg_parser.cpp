// The walkers of Tarvex-lib-keychain-cfg (key chains).
#define TABLE_MODULE to_oc_macsec_tarvexlibkeychaincfg
#define REVERSE_HOOK DEFAULT_HOOK
#include "reverse_tables.h"

static constexpr oc_macsec::reverse_module module = {KEYCHAIN_CFG_NS, false};

#define NODE(kind, ...) DECLARE_##kind(__VA_ARGS__)
#include "ymap_oc_macsec_tarvex_lib_keychain_cfg.def"

static constexpr oc_macsec::table_line lines[] = {
#define NODE(kind, ...) LINE_##kind(__VA_ARGS__)
#include "ymap_oc_macsec_tarvex_lib_keychain_cfg.def"
};
static_assert(oc_macsec::names_fit(lines), "an exported name does not end in its tag");

#define NODE(kind, ...) WALK_##kind(__VA_ARGS__)
#include "ymap_oc_macsec_tarvex_lib_keychain_cfg.def"
