// The walkers of Tarvex-crypto-macsec-mka-cfg (MKA policies), children before their parents.
#define REVERSE_MODULE tarvexcryptomacsecmkacfg
#define REVERSE_HOOK BARE_HOOK
#include "reverse_tables.h"

static constexpr oc_macsec::reverse_module module = {MKA_CFG_NS, false};

// The tables keep one child a line.
// clang-format off

CONTAINER (lvla_macsec_policyname_allow)
CONTAINER (lvla_macsec_policyname_suspendfor)
CONTAINER (lvla_macsec_policyname_ppk)
LEAF      (lvla_macsec_policyname_delayprotection)
LEAF      (lvla_macsec_policyname_keyserverpriority)
LEAF      (lvla_macsec_policyname_confoffset)
LEAF      (lvla_macsec_policyname_sakrekeyinterval)
LEAF      (lvla_macsec_policyname_ciphersuite)
LEAF      (lvla_macsec_policyname_includeicvindicator)
LEAF      (lvla_macsec_policyname_sakrekeyintervalsec)
LEAF      (lvla_macsec_policyname_name)
LIST      (lvla_macsec_policynames_policyname, "/macsec/policy-names/policy-name", KEYS("name"),
           CHILD    ("allow",                  lvla_macsec_policyname_allow),
           CHILD    ("suspend-for",            lvla_macsec_policyname_suspendfor),
           CHILD    ("ppk",                    lvla_macsec_policyname_ppk),
           CHILD    ("delay-protection",       lvla_macsec_policyname_delayprotection),
           CHILD    ("key-server-priority",    lvla_macsec_policyname_keyserverpriority),
           CHILD    ("conf-offset",            lvla_macsec_policyname_confoffset),
           CHILD    ("sak-rekey-interval",     lvla_macsec_policyname_sakrekeyinterval),
           CHILD    ("cipher-suite",           lvla_macsec_policyname_ciphersuite),
           CHILD    ("include-icv-indicator",  lvla_macsec_policyname_includeicvindicator),
           CHILD    ("sak-rekey-interval-sec", lvla_macsec_policyname_sakrekeyintervalsec),
           KEY_CHILD("name",                   lvla_macsec_policyname_name))
CONTAINER (lvla_macsec_policynames,
           LIST_CHILD("policy-name", lvla_macsec_policynames_policyname))
CONTAINER (lvla_macsec,
           CHILD("policy-names", lvla_macsec_policynames))
