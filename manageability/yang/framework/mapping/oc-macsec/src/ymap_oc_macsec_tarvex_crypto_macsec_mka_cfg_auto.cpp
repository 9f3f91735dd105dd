// The node functions of Tarvex-crypto-macsec-mka-cfg. In this module a node function logs "Start" and no "End", one
// that only hands a leaf on logs nothing, and a node without a mapping has a function of its own that returns at once.
#define REVERSE_MODULE tarvexcryptomacsecmkacfg
#define REVERSE_NODE_LINES start
#define REVERSE_LEAF_BY_LINES none
#include "reverse_tables.h"

// The tables keep one node a line.
// clang-format off

DUCK_MAP_FUNCTIONS

// ---- macsec ---------------------------------------------------------------------------------------------------------
EMPTY_CONTAINER (lvla_macsec)
UNMAPPED_LEAF   (lvla_macsec_shutdown)
EMPTY_CONTAINER (lvla_macsec_policynames)

// ---- macsec/policy-names/policy-name --------------------------------------------------------------------------------
LIST_BY         (lvla_macsec_policynames_policyname,         ymap_to_ocmacsec_policy_list_rev)
LEAF_BY         (lvla_macsec_policyname_name,                ymap_to_oc_macsec_tarvexcryptomacsecmkacfg_man_leaf_lvla_macsec_policyname_name)
LEAF_BY         (lvla_macsec_policyname_delayprotection,     ymap_to_ocmacsec_delay_protection_rev)
CONFIG_LEAF     (lvla_macsec_policyname_keyserverpriority,   "/macsec/mka/policies/policy/config/key-server-priority")
LEAF_BY         (lvla_macsec_policyname_confoffset,          ymap_to_ocmacsec_policy_confidentiality_offset_rev)
MAN_LEAF        (lvla_macsec_policyname_sakrekeyinterval)
MAN_LEAF        (lvla_macsec_policyname_sakrekeyintervalsec)
LEAF_BY         (lvla_macsec_policyname_ciphersuite,         ymap_to_ocmacsec_policy_macsec_cipher_suite_rev)
LEAF_BY         (lvla_macsec_policyname_includeicvindicator, ymap_to_ocmacsec_include_icv_indicator_rev)
EMPTY_CONTAINER (lvla_macsec_policyname_allow)
UNMAPPED_LEAF   (lvla_macsec_allow_lacpinclear)
UNMAPPED_LEAF   (lvla_macsec_allow_pauseframeinclear)
EMPTY_CONTAINER (lvla_macsec_policyname_suspendfor)
UNMAPPED_LEAF   (lvla_macsec_suspendfor_disable)
EMPTY_CONTAINER (lvla_macsec_policyname_ppk)
UNMAPPED_LEAF   (lvla_macsec_ppk_ppksub)
UNMAPPED_LEAF   (lvla_macsec_ppk_sksprofile)
UNMAPPED_LEAF   (lvla_macsec_policyname_suspendonrequestdisable)
UNMAPPED_LEAF   (lvla_macsec_policyname_securitypolicy)
UNMAPPED_LEAF   (lvla_macsec_policyname_created)
UNMAPPED_LEAF   (lvla_macsec_policyname_policyexception)
UNMAPPED_LEAF   (lvla_macsec_policyname_windowsize)
UNMAPPED_LEAF   (lvla_macsec_policyname_enablelegacyfallback)
UNMAPPED_LEAF   (lvla_macsec_policyname_useeapolpaeinicv)
UNMAPPED_LEAF   (lvla_macsec_policyname_vlantagsinclear)
UNMAPPED_LEAF   (lvla_macsec_policyname_enablelegacysakwrite)
