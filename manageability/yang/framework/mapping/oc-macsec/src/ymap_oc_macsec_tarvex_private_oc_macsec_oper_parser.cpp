// The walkers of Tarvex-PRIVATE-oc-macsec-oper, the private operational model. Its chain entries match only in requests
// that read state.
#define TABLE_MODULE to_oc_macsec_tarvexprivateocmacsecoper
#define REVERSE_HOOK DEFAULT_HOOK
#include "reverse_tables.h"

static constexpr oc_macsec::reverse_module module = {OPER_NS, true};

#define NODE(kind, ...) DECLARE_##kind(__VA_ARGS__)
#include "ymap_oc_macsec_tarvex_private_oc_macsec_oper.def"

static constexpr oc_macsec::table_line lines[] = {
#define NODE(kind, ...) LINE_##kind(__VA_ARGS__)
#include "ymap_oc_macsec_tarvex_private_oc_macsec_oper.def"
};
static_assert(oc_macsec::names_fit(lines), "an exported name does not end in its tag");

#define NODE(kind, ...) WALK_##kind(__VA_ARGS__)
#include "ymap_oc_macsec_tarvex_private_oc_macsec_oper.def"
