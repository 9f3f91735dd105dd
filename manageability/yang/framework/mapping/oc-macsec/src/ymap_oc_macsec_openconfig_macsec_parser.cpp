// The walkers of openconfig-macsec: one entry for each of its 110 schema nodes, children before their parents. How a
// walker of each kind runs stands in forward_walker.cpp and forward_list_walker.cpp.
#include "forward_tables.h"

// The tables keep one child a line.
// clang-format off

// ---- macsec/mka/policies/policy -------------------------------------------------------------------------------------
KEY_LEAF        (lvla_macsec_policy_name)
PLAIN_LEAF      (lvla_macsec_config_name)
PLAIN_LEAF      (lvla_macsec_config_keyserverpriority)
LEAF_LIST       (lvla_macsec_config_macsecciphersuite)
PLAIN_LEAF      (lvla_macsec_config_confidentialityoffset)
PLAIN_LEAF      (lvla_macsec_config_delayprotection)
PLAIN_LEAF      (lvla_macsec_config_includeicvindicator)
PLAIN_LEAF      (lvla_macsec_config_sakrekeyinterval)
PLAIN_LEAF      (lvla_macsec_config_sakrekeyonlivepeerloss)
PLAIN_LEAF      (lvla_macsec_config_useupdatedethheader)
CONTAINER       (lvla_macsec_policy_config,
                 CONFIG("name",                        lvla_macsec_config_name),
                 CONFIG("key-server-priority",         lvla_macsec_config_keyserverpriority),
                 CONFIG("macsec-cipher-suite",         lvla_macsec_config_macsecciphersuite),
                 CONFIG("confidentiality-offset",      lvla_macsec_config_confidentialityoffset),
                 CONFIG("delay-protection",            lvla_macsec_config_delayprotection),
                 CONFIG("include-icv-indicator",       lvla_macsec_config_includeicvindicator),
                 CONFIG("sak-rekey-interval",          lvla_macsec_config_sakrekeyinterval),
                 CONFIG("sak-rekey-on-live-peer-loss", lvla_macsec_config_sakrekeyonlivepeerloss),
                 CONFIG("use-updated-eth-header",      lvla_macsec_config_useupdatedethheader))
PLAIN_LEAF      (lvla_macsec_state_name)
PLAIN_LEAF      (lvla_macsec_state_keyserverpriority)
LEAF_LIST       (lvla_macsec_state_macsecciphersuite)
PLAIN_LEAF      (lvla_macsec_state_confidentialityoffset)
PLAIN_LEAF      (lvla_macsec_state_delayprotection)
PLAIN_LEAF      (lvla_macsec_state_includeicvindicator)
PLAIN_LEAF      (lvla_macsec_state_sakrekeyinterval)
PLAIN_LEAF      (lvla_macsec_state_sakrekeyonlivepeerloss)
PLAIN_LEAF      (lvla_macsec_state_useupdatedethheader)
STATE_CONTAINER (lvla_macsec_policy_state,
                 STATE("name",                        lvla_macsec_state_name),
                 STATE("key-server-priority",         lvla_macsec_state_keyserverpriority),
                 STATE("macsec-cipher-suite",         lvla_macsec_state_macsecciphersuite),
                 STATE("confidentiality-offset",      lvla_macsec_state_confidentialityoffset),
                 STATE("delay-protection",            lvla_macsec_state_delayprotection),
                 STATE("include-icv-indicator",       lvla_macsec_state_includeicvindicator),
                 STATE("sak-rekey-interval",          lvla_macsec_state_sakrekeyinterval),
                 STATE("sak-rekey-on-live-peer-loss", lvla_macsec_state_sakrekeyonlivepeerloss),
                 STATE("use-updated-eth-header",      lvla_macsec_state_useupdatedethheader))
KEYED_LIST      (lvla_macsec_policies_policy, "/macsec/mka/policies/policy", KEY("name", lvla_macsec_policy_name),
                 CONFIG("config", lvla_macsec_policy_config),
                 STATE ("state",  lvla_macsec_policy_state))

// ---- macsec/mka/policies --------------------------------------------------------------------------------------------
CONTAINER (lvla_macsec_mka_policies,
           CONFIG("policy", lvla_macsec_policies_policy))

// ---- macsec/mka/key-chains/key-chain/mka-keys/mka-key ---------------------------------------------------------------
KEY_LEAF        (lvla_macsec_mkakey_id)
PLAIN_LEAF      (lvla_macsec_config_id)
PLAIN_LEAF      (lvla_macsec_config_keycleartext)
PLAIN_LEAF      (lvla_macsec_config_cryptographicalgorithm)
PLAIN_LEAF      (lvla_macsec_config_validdatetime)
PLAIN_LEAF      (lvla_macsec_config_expirationdatetime)
CONTAINER       (lvla_macsec_mkakey_config,
                 CONFIG("id",                      lvla_macsec_config_id),
                 CONFIG("key-clear-text",          lvla_macsec_config_keycleartext),
                 CONFIG("cryptographic-algorithm", lvla_macsec_config_cryptographicalgorithm),
                 CONFIG("valid-date-time",         lvla_macsec_config_validdatetime),
                 CONFIG("expiration-date-time",    lvla_macsec_config_expirationdatetime))
PLAIN_LEAF      (lvla_macsec_state_id)
PLAIN_LEAF      (lvla_macsec_state_keycleartext)
PLAIN_LEAF      (lvla_macsec_state_cryptographicalgorithm)
PLAIN_LEAF      (lvla_macsec_state_validdatetime)
PLAIN_LEAF      (lvla_macsec_state_expirationdatetime)
STATE_CONTAINER (lvla_macsec_mkakey_state,
                 STATE("id",                      lvla_macsec_state_id),
                 STATE("key-clear-text",          lvla_macsec_state_keycleartext),
                 STATE("cryptographic-algorithm", lvla_macsec_state_cryptographicalgorithm),
                 STATE("valid-date-time",         lvla_macsec_state_validdatetime),
                 STATE("expiration-date-time",    lvla_macsec_state_expirationdatetime))
KEYED_LIST      (lvla_macsec_mkakeys_mkakey, "/macsec/mka/key-chains/key-chain/mka-keys/mka-key", KEY("id", lvla_macsec_mkakey_id),
                 CONFIG("config", lvla_macsec_mkakey_config),
                 STATE ("state",  lvla_macsec_mkakey_state))

// ---- macsec/mka/key-chains ------------------------------------------------------------------------------------------
KEY_LEAF        (lvla_macsec_keychain_name)
PLAIN_LEAF      (lvlb_macsec_config_name)
CONTAINER       (lvla_macsec_keychain_config,
                 CONFIG("name", lvlb_macsec_config_name))
PLAIN_LEAF      (lvlb_macsec_state_name)
STATE_CONTAINER (lvla_macsec_keychain_state,
                 STATE("name", lvlb_macsec_state_name))
CONTAINER       (lvla_macsec_keychain_mkakeys,
                 CONFIG("mka-key", lvla_macsec_mkakeys_mkakey))
KEYED_LIST      (lvla_macsec_keychains_keychain, "/macsec/mka/key-chains/key-chain", KEY("name", lvla_macsec_keychain_name),
                 CONFIG("config",   lvla_macsec_keychain_config),
                 STATE ("state",    lvla_macsec_keychain_state),
                 CONFIG("mka-keys", lvla_macsec_keychain_mkakeys))
CONTAINER       (lvla_macsec_mka_keychains,
                 CONFIG("key-chain", lvla_macsec_keychains_keychain))

// ---- macsec/mka/state -----------------------------------------------------------------------------------------------
PLAIN_LEAF      (lvla_macsec_counters_outmkpduerrors)
PLAIN_LEAF      (lvla_macsec_counters_inmkpduicvverificationerrors)
PLAIN_LEAF      (lvla_macsec_counters_inmkpduvalidationerrors)
PLAIN_LEAF      (lvla_macsec_counters_inmkpdubadpeererrors)
PLAIN_LEAF      (lvla_macsec_counters_inmkpdupeerlisterrors)
PLAIN_LEAF      (lvla_macsec_counters_sakgenerationerrors)
PLAIN_LEAF      (lvla_macsec_counters_sakhasherrors)
PLAIN_LEAF      (lvla_macsec_counters_sakencryptionerrors)
PLAIN_LEAF      (lvla_macsec_counters_sakdecryptionerrors)
PLAIN_LEAF      (lvla_macsec_counters_sakciphermismatcherrors)
STATE_CONTAINER (lvla_macsec_state_counters,
                 STATE("out-mkpdu-errors",                 lvla_macsec_counters_outmkpduerrors),
                 STATE("in-mkpdu-icv-verification-errors", lvla_macsec_counters_inmkpduicvverificationerrors),
                 STATE("in-mkpdu-validation-errors",       lvla_macsec_counters_inmkpduvalidationerrors),
                 STATE("in-mkpdu-bad-peer-errors",         lvla_macsec_counters_inmkpdubadpeererrors),
                 STATE("in-mkpdu-peer-list-errors",        lvla_macsec_counters_inmkpdupeerlisterrors),
                 STATE("sak-generation-errors",            lvla_macsec_counters_sakgenerationerrors),
                 STATE("sak-hash-errors",                  lvla_macsec_counters_sakhasherrors),
                 STATE("sak-encryption-errors",            lvla_macsec_counters_sakencryptionerrors),
                 STATE("sak-decryption-errors",            lvla_macsec_counters_sakdecryptionerrors),
                 STATE("sak-cipher-mismatch-errors",       lvla_macsec_counters_sakciphermismatcherrors))
STATE_CONTAINER (lvla_macsec_mka_state,
                 STATE("counters", lvla_macsec_state_counters))

// ---- macsec/interfaces/interface/scsa-tx ----------------------------------------------------------------------------
KEY_LEAF        (lvla_macsec_scsatx_scitx)
PLAIN_LEAF      (lvla_macsec_state_scitx)
PLAIN_LEAF      (lvla_macsec_counters_scauthonly)
PLAIN_LEAF      (lvla_macsec_counters_scencrypted)
PLAIN_LEAF      (lvla_macsec_counters_saauthonly)
PLAIN_LEAF      (lvla_macsec_counters_saencrypted)
STATE_CONTAINER (lvlc_macsec_state_counters,
                 STATE("sc-auth-only", lvla_macsec_counters_scauthonly),
                 STATE("sc-encrypted", lvla_macsec_counters_scencrypted),
                 STATE("sa-auth-only", lvla_macsec_counters_saauthonly),
                 STATE("sa-encrypted", lvla_macsec_counters_saencrypted))
STATE_CONTAINER (lvla_macsec_scsatx_state,
                 STATE("sci-tx",   lvla_macsec_state_scitx),
                 STATE("counters", lvlc_macsec_state_counters))
STATE_LIST      (lvla_macsec_scsatx_scsatx, "/macsec/interfaces/interface/scsa-tx/scsa-tx", KEY("sci-tx", lvla_macsec_scsatx_scitx),
                 STATE("state", lvla_macsec_scsatx_state))
STATE_CONTAINER (lvla_macsec_interface_scsatx,
                 STATE("scsa-tx", lvla_macsec_scsatx_scsatx))

// ---- macsec/interfaces/interface/scsa-rx ----------------------------------------------------------------------------
KEY_LEAF        (lvla_macsec_scsarx_scirx)
PLAIN_LEAF      (lvla_macsec_state_scirx)
PLAIN_LEAF      (lvla_macsec_counters_scinvalid)
PLAIN_LEAF      (lvla_macsec_counters_scvalid)
PLAIN_LEAF      (lvla_macsec_counters_sainvalid)
PLAIN_LEAF      (lvla_macsec_counters_savalid)
STATE_CONTAINER (lvld_macsec_state_counters,
                 STATE("sc-invalid", lvla_macsec_counters_scinvalid),
                 STATE("sc-valid",   lvla_macsec_counters_scvalid),
                 STATE("sa-invalid", lvla_macsec_counters_sainvalid),
                 STATE("sa-valid",   lvla_macsec_counters_savalid))
STATE_CONTAINER (lvla_macsec_scsarx_state,
                 STATE("sci-rx",   lvla_macsec_state_scirx),
                 STATE("counters", lvld_macsec_state_counters))
STATE_LIST      (lvla_macsec_scsarx_scsarx, "/macsec/interfaces/interface/scsa-rx/scsa-rx", KEY("sci-rx", lvla_macsec_scsarx_scirx),
                 STATE("state", lvla_macsec_scsarx_state))
STATE_CONTAINER (lvla_macsec_interface_scsarx,
                 STATE("scsa-rx", lvla_macsec_scsarx_scsarx))

// ---- macsec/interfaces/interface/mka --------------------------------------------------------------------------------
PLAIN_LEAF      (lvla_macsec_config_mkapolicy)
PLAIN_LEAF      (lvla_macsec_config_keychain)
CONTAINER       (lvla_macsec_mka_config,
                 CONFIG("mka-policy", lvla_macsec_config_mkapolicy),
                 CONFIG("key-chain",  lvla_macsec_config_keychain))
PLAIN_LEAF      (lvla_macsec_state_mkapolicy)
PLAIN_LEAF      (lvla_macsec_state_keychain)
PLAIN_LEAF      (lvla_macsec_counters_inmkpdu)
PLAIN_LEAF      (lvla_macsec_counters_insakmkpdu)
PLAIN_LEAF      (lvla_macsec_counters_incakmkpdu)
PLAIN_LEAF      (lvla_macsec_counters_outmkpdu)
PLAIN_LEAF      (lvla_macsec_counters_outsakmkpdu)
PLAIN_LEAF      (lvla_macsec_counters_outcakmkpdu)
STATE_CONTAINER (lvle_macsec_state_counters,
                 STATE("in-mkpdu",      lvla_macsec_counters_inmkpdu),
                 STATE("in-sak-mkpdu",  lvla_macsec_counters_insakmkpdu),
                 STATE("in-cak-mkpdu",  lvla_macsec_counters_incakmkpdu),
                 STATE("out-mkpdu",     lvla_macsec_counters_outmkpdu),
                 STATE("out-sak-mkpdu", lvla_macsec_counters_outsakmkpdu),
                 STATE("out-cak-mkpdu", lvla_macsec_counters_outcakmkpdu))
STATE_CONTAINER (lvlb_macsec_mka_state,
                 STATE("mka-policy", lvla_macsec_state_mkapolicy),
                 STATE("key-chain",  lvla_macsec_state_keychain),
                 STATE("counters",   lvle_macsec_state_counters))
CONTAINER       (lvla_macsec_interface_mka,
                 CONFIG("config", lvla_macsec_mka_config),
                 STATE ("state",  lvlb_macsec_mka_state))

// ---- macsec/interfaces/interface ------------------------------------------------------------------------------------
KEY_LEAF        (lvla_macsec_interface_name)
PLAIN_LEAF      (lvlc_macsec_config_name)
PLAIN_LEAF      (lvla_macsec_config_enable)
PLAIN_LEAF      (lvla_macsec_config_replayprotection)
CONTAINER       (lvla_macsec_interface_config,
                 CONFIG("name",              lvlc_macsec_config_name),
                 CONFIG("enable",            lvla_macsec_config_enable),
                 CONFIG("replay-protection", lvla_macsec_config_replayprotection))
PLAIN_LEAF      (lvlc_macsec_state_name)
PLAIN_LEAF      (lvla_macsec_state_enable)
PLAIN_LEAF      (lvla_macsec_state_replayprotection)
PLAIN_LEAF      (lvla_macsec_counters_txuntaggedpkts)
PLAIN_LEAF      (lvla_macsec_counters_rxuntaggedpkts)
PLAIN_LEAF      (lvla_macsec_counters_rxbadtagpkts)
PLAIN_LEAF      (lvla_macsec_counters_rxunknownscipkts)
PLAIN_LEAF      (lvla_macsec_counters_rxnoscipkts)
STATE_CONTAINER (lvlb_macsec_state_counters,
                 STATE("tx-untagged-pkts",   lvla_macsec_counters_txuntaggedpkts),
                 STATE("rx-untagged-pkts",   lvla_macsec_counters_rxuntaggedpkts),
                 STATE("rx-badtag-pkts",     lvla_macsec_counters_rxbadtagpkts),
                 STATE("rx-unknownsci-pkts", lvla_macsec_counters_rxunknownscipkts),
                 STATE("rx-nosci-pkts",      lvla_macsec_counters_rxnoscipkts))
STATE_CONTAINER (lvla_macsec_interface_state,
                 STATE("name",              lvlc_macsec_state_name),
                 STATE("enable",            lvla_macsec_state_enable),
                 STATE("replay-protection", lvla_macsec_state_replayprotection),
                 STATE("counters",          lvlb_macsec_state_counters))
KEYED_LIST      (lvla_macsec_interfaces_interface, "/macsec/interfaces/interface", KEY("name", lvla_macsec_interface_name),
                 CONFIG("config",  lvla_macsec_interface_config),
                 STATE ("state",   lvla_macsec_interface_state),
                 STATE ("scsa-tx", lvla_macsec_interface_scsatx),
                 STATE ("scsa-rx", lvla_macsec_interface_scsarx),
                 CONFIG("mka",     lvla_macsec_interface_mka))

// ---- macsec ---------------------------------------------------------------------------------------------------------
CONTAINER (lvla_macsec_mka,
           CONFIG("policies",   lvla_macsec_mka_policies),
           CONFIG("key-chains", lvla_macsec_mka_keychains),
           STATE ("state",      lvla_macsec_mka_state))
CONTAINER (lvla_macsec_interfaces,
           CONFIG("interface", lvla_macsec_interfaces_interface))
CONTAINER (lvla_macsec,
           CONFIG("mka",        lvla_macsec_mka),
           CONFIG("interfaces", lvla_macsec_interfaces))
