// The walkers of Tarvex-ifmgr-cfg (interfaces). The hook of the interface list, which lets the MACsec module's children
// in, stands in the _man file.
#define TABLE_MODULE to_oc_macsec_tarvexifmgrcfg
#define REVERSE_HOOK DEFAULT_HOOK
#include "reverse_tables.h"

static constexpr oc_macsec::reverse_module module = {IFMGR_CFG_NS, false};

#define NODE(kind, ...) DECLARE_##kind(__VA_ARGS__)
#include "ymap_oc_macsec_tarvex_ifmgr_cfg.def"

static constexpr oc_macsec::table_line lines[] = {
#define NODE(kind, ...) LINE_##kind(__VA_ARGS__)
#include "ymap_oc_macsec_tarvex_ifmgr_cfg.def"
};
static_assert(oc_macsec::names_fit(lines), "an exported name does not end in its tag");

#define NODE(kind, ...) WALK_##kind(__VA_ARGS__)
#include "ymap_oc_macsec_tarvex_ifmgr_cfg.def"
