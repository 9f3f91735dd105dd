// The walkers of Tarvex-PRIVATE-oc-macsec-oper, the private operational model, children before their parents. Its chain
// entries match only in requests that read state.
#define REVERSE_MODULE tarvexprivateocmacsecoper
#define REVERSE_HOOK DEFAULT_HOOK
#include "reverse_tables.h"

static constexpr oc_macsec::reverse_module module = {OPER_NS, true};

// The tables keep one child a line.
// clang-format off

LEAF      (lvla_ocmacsec_state_name)
LEAF      (lvla_ocmacsec_state_keyserverpriority)
LEAF      (lvla_ocmacsec_state_confidentialityoffset)
LEAF      (lvla_ocmacsec_state_delayprotection)
LEAF      (lvla_ocmacsec_state_includeicvindicator)
LEAF      (lvla_ocmacsec_state_sakrekeyinterval)
LEAF      (lvla_ocmacsec_state_macsecciphersuite)
CONTAINER (lvla_ocmacsec_policy_state,
           CHILD("name",                   lvla_ocmacsec_state_name),
           CHILD("key-server-priority",    lvla_ocmacsec_state_keyserverpriority),
           CHILD("confidentiality-offset", lvla_ocmacsec_state_confidentialityoffset),
           CHILD("delay-protection",       lvla_ocmacsec_state_delayprotection),
           CHILD("include-icv-indicator",  lvla_ocmacsec_state_includeicvindicator),
           CHILD("sak-rekey-interval",     lvla_ocmacsec_state_sakrekeyinterval),
           CHILD("macsec-cipher-suite",    lvla_ocmacsec_state_macsecciphersuite))
LIST      (lvla_ocmacsec_policies_policy, "/oc-macsec/macsec/mka/policies/policy", KEYS("name"),
           CHILD("state", lvla_ocmacsec_policy_state))
CONTAINER (lvla_ocmacsec_mka_policies,
           LIST_CHILD("policy", lvla_ocmacsec_policies_policy))
LEAF      (lvla_ocmacsec_counters_outmkpduerrors)
LEAF      (lvla_ocmacsec_counters_inmkpduicvverificationerrors)
LEAF      (lvla_ocmacsec_counters_inmkpduvalidationerrors)
LEAF      (lvla_ocmacsec_counters_inmkpdubadpeererrors)
LEAF      (lvla_ocmacsec_counters_inmkpdupeerlisterrors)
LEAF      (lvla_ocmacsec_counters_sakgenerationerrors)
LEAF      (lvla_ocmacsec_counters_sakhasherrors)
LEAF      (lvla_ocmacsec_counters_sakencryptionerrors)
LEAF      (lvla_ocmacsec_counters_sakdecryptionerrors)
LEAF      (lvla_ocmacsec_counters_sakciphermismatcherrors)
CONTAINER (lvla_ocmacsec_mkastate_counters,
           CHILD("out-mkpdu-errors",                 lvla_ocmacsec_counters_outmkpduerrors),
           CHILD("in-mkpdu-icv-verification-errors", lvla_ocmacsec_counters_inmkpduicvverificationerrors),
           CHILD("in-mkpdu-validation-errors",       lvla_ocmacsec_counters_inmkpduvalidationerrors),
           CHILD("in-mkpdu-bad-peer-errors",         lvla_ocmacsec_counters_inmkpdubadpeererrors),
           CHILD("in-mkpdu-peer-list-errors",        lvla_ocmacsec_counters_inmkpdupeerlisterrors),
           CHILD("sak-generation-errors",            lvla_ocmacsec_counters_sakgenerationerrors),
           CHILD("sak-hash-errors",                  lvla_ocmacsec_counters_sakhasherrors),
           CHILD("sak-encryption-errors",            lvla_ocmacsec_counters_sakencryptionerrors),
           CHILD("sak-decryption-errors",            lvla_ocmacsec_counters_sakdecryptionerrors),
           CHILD("sak-cipher-mismatch-errors",       lvla_ocmacsec_counters_sakciphermismatcherrors))
CONTAINER (lvla_ocmacsec_mka_mkastate,
           CHILD("counters", lvla_ocmacsec_mkastate_counters))
LEAF      (lvla_ocmacsec_state_id)
LEAF      (lvla_ocmacsec_state_cryptographicalgorithm)
LEAF      (lvla_ocmacsec_state_validdatetime)
LEAF      (lvla_ocmacsec_state_expirationdatetime)
CONTAINER (lvla_ocmacsec_mkakey_state,
           CHILD("id",                      lvla_ocmacsec_state_id),
           CHILD("cryptographic-algorithm", lvla_ocmacsec_state_cryptographicalgorithm),
           CHILD("valid-date-time",         lvla_ocmacsec_state_validdatetime),
           CHILD("expiration-date-time",    lvla_ocmacsec_state_expirationdatetime))
LIST      (lvla_ocmacsec_mkakeys_mkakey, "/oc-macsec/macsec/mka/key-chains/key-chain/mka-keys/mka-key", KEYS("id"),
           CHILD("state", lvla_ocmacsec_mkakey_state))
CONTAINER (lvla_ocmacsec_keychain_mkakeys,
           LIST_CHILD("mka-key", lvla_ocmacsec_mkakeys_mkakey))
LEAF      (lvlb_ocmacsec_state_name)
CONTAINER (lvla_ocmacsec_keychain_state,
           CHILD("name", lvlb_ocmacsec_state_name))
LIST      (lvla_ocmacsec_keychains_keychain, "/oc-macsec/macsec/mka/key-chains/key-chain", KEYS("name"),
           CHILD("mka-keys", lvla_ocmacsec_keychain_mkakeys),
           CHILD("state",    lvla_ocmacsec_keychain_state))
CONTAINER (lvla_ocmacsec_mka_keychains,
           LIST_CHILD("key-chain", lvla_ocmacsec_keychains_keychain))
CONTAINER (lvla_ocmacsec_macsec_mka,
           CHILD("policies",   lvla_ocmacsec_mka_policies),
           CHILD("mka-state",  lvla_ocmacsec_mka_mkastate),
           CHILD("key-chains", lvla_ocmacsec_mka_keychains))
LEAF      (lvla_ocmacsec_counters_txuntaggedpkts)
LEAF      (lvla_ocmacsec_counters_rxuntaggedpkts)
LEAF      (lvla_ocmacsec_counters_rxbadtagpkts)
LEAF      (lvla_ocmacsec_counters_rxunknownscipkts)
LEAF      (lvla_ocmacsec_counters_rxnoscipkts)
CONTAINER (lvla_ocmacsec_interfacesstate_counters,
           CHILD("tx-untagged-pkts",   lvla_ocmacsec_counters_txuntaggedpkts),
           CHILD("rx-untagged-pkts",   lvla_ocmacsec_counters_rxuntaggedpkts),
           CHILD("rx-badtag-pkts",     lvla_ocmacsec_counters_rxbadtagpkts),
           CHILD("rx-unknownsci-pkts", lvla_ocmacsec_counters_rxunknownscipkts),
           CHILD("rx-nosci-pkts",      lvla_ocmacsec_counters_rxnoscipkts))
CONTAINER (lvla_ocmacsec_interface_interfacesstate,
           CHILD("counters", lvla_ocmacsec_interfacesstate_counters))
LEAF      (lvla_ocmacsec_counters_scencrypted)
LEAF      (lvla_ocmacsec_counters_saencrypted)
CONTAINER (lvla_ocmacsec_state_counters,
           CHILD("sc-encrypted", lvla_ocmacsec_counters_scencrypted),
           CHILD("sa-encrypted", lvla_ocmacsec_counters_saencrypted))
LEAF      (lvla_ocmacsec_state_scitx)
CONTAINER (lvla_ocmacsec_scsatx_state,
           CHILD("counters", lvla_ocmacsec_state_counters),
           CHILD("sci-tx",   lvla_ocmacsec_state_scitx))
LIST      (lvla_ocmacsec_scsatxes_scsatx, "/oc-macsec/macsec/interfaces/interface/scsa-txes/scsa-tx", KEYS("sci-tx"),
           CHILD("state", lvla_ocmacsec_scsatx_state))
CONTAINER (lvla_ocmacsec_interface_scsatxes,
           LIST_CHILD("scsa-tx", lvla_ocmacsec_scsatxes_scsatx))
LEAF      (lvla_ocmacsec_counters_inmkpdu)
LEAF      (lvla_ocmacsec_counters_insakmkpdu)
LEAF      (lvla_ocmacsec_counters_outmkpdu)
LEAF      (lvla_ocmacsec_counters_outsakmkpdu)
CONTAINER (lvlb_ocmacsec_state_counters,
           CHILD("in-mkpdu",      lvla_ocmacsec_counters_inmkpdu),
           CHILD("in-sak-mkpdu",  lvla_ocmacsec_counters_insakmkpdu),
           CHILD("out-mkpdu",     lvla_ocmacsec_counters_outmkpdu),
           CHILD("out-sak-mkpdu", lvla_ocmacsec_counters_outsakmkpdu))
LEAF      (lvla_ocmacsec_state_mkapolicy)
LEAF      (lvla_ocmacsec_state_keychain)
CONTAINER (lvla_ocmacsec_interfacesmka_state,
           CHILD("counters",   lvlb_ocmacsec_state_counters),
           CHILD("mka-policy", lvla_ocmacsec_state_mkapolicy),
           CHILD("key-chain",  lvla_ocmacsec_state_keychain))
CONTAINER (lvla_ocmacsec_interface_interfacesmka,
           CHILD("state", lvla_ocmacsec_interfacesmka_state))
LEAF      (lvla_ocmacsec_counters_scinvalid)
LEAF      (lvla_ocmacsec_counters_scvalid)
LEAF      (lvla_ocmacsec_counters_sainvalid)
LEAF      (lvla_ocmacsec_counters_savalid)
CONTAINER (lvlc_ocmacsec_state_counters,
           CHILD("sc-invalid", lvla_ocmacsec_counters_scinvalid),
           CHILD("sc-valid",   lvla_ocmacsec_counters_scvalid),
           CHILD("sa-invalid", lvla_ocmacsec_counters_sainvalid),
           CHILD("sa-valid",   lvla_ocmacsec_counters_savalid))
LEAF      (lvla_ocmacsec_state_scirx)
CONTAINER (lvla_ocmacsec_scsarx_state,
           CHILD("counters", lvlc_ocmacsec_state_counters),
           CHILD("sci-rx",   lvla_ocmacsec_state_scirx))
LIST      (lvla_ocmacsec_scsarxes_scsarx, "/oc-macsec/macsec/interfaces/interface/scsa-rxes/scsa-rx", KEYS("sci-rx"),
           CHILD("state", lvla_ocmacsec_scsarx_state))
CONTAINER (lvla_ocmacsec_interface_scsarxes,
           LIST_CHILD("scsa-rx", lvla_ocmacsec_scsarxes_scsarx))
LEAF      (lvla_ocmacsec_interface_name)
LIST      (lvla_ocmacsec_interfaces_interface, "/oc-macsec/macsec/interfaces/interface", KEYS("name"),
           CHILD    ("interfaces-state", lvla_ocmacsec_interface_interfacesstate),
           CHILD    ("scsa-txes",        lvla_ocmacsec_interface_scsatxes),
           CHILD    ("interfaces-mka",   lvla_ocmacsec_interface_interfacesmka),
           CHILD    ("scsa-rxes",        lvla_ocmacsec_interface_scsarxes),
           KEY_CHILD("name",             lvla_ocmacsec_interface_name))
CONTAINER (lvla_ocmacsec_macsec_interfaces,
           LIST_CHILD("interface", lvla_ocmacsec_interfaces_interface))
CONTAINER (lvla_ocmacsec_macsec,
           CHILD("mka",        lvla_ocmacsec_macsec_mka),
           CHILD("interfaces", lvla_ocmacsec_macsec_interfaces))
CONTAINER (lvla_ocmacsec,
           CHILD("macsec", lvla_ocmacsec_macsec))
