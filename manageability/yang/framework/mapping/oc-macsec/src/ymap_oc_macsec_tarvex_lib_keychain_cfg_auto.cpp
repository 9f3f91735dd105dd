// The node functions of Tarvex-lib-keychain-cfg. A node without a mapping is another name of the module's default
// function.
#define REVERSE_MODULE tarvexlibkeychaincfg
#define REVERSE_NODE_LINES start_and_end
#define REVERSE_LEAF_BY_LINES start_and_end
#include "reverse_tables.h"

// The tables keep one node a line.
// clang-format off

DUCK_MAP_FUNCTIONS

// ---- keychains/keychain ---------------------------------------------------------------------------------------------
EMPTY_CONTAINER (lvla_keychains)
LIST_BY         (lvla_keychains_keychain,           ymap_to_ocmacsec_keychain_list_rev)
LEAF_BY         (lvla_keychains_keychain_chainname, ymap_to_oc_macsec_tarvexlibkeychaincfg_man_leaf_lvla_keychains_keychain_chainname)
DUCK_CONTAINER  (lvla_keychains_keychain_accepttolerance)
DUCK_LEAF       (lvla_keychains_accepttolerance_value)
DUCK_LEAF       (lvla_keychains_accepttolerance_infinite)

// ---- keychains/keychain/macsec-keychain -----------------------------------------------------------------------------
EMPTY_CONTAINER (lvla_keychains_keychain_macseckeychain)
EMPTY_CONTAINER (lvla_keychains_macseckeychain_macseckeys)
LIST_BY         (lvla_keychains_macseckeys_macseckey,      ymap_to_ocmacsec_mka_keys_list_rev)
LEAF_BY         (lvla_keychains_macseckey_keyid,           ymap_to_oc_macsec_tarvexlibkeychaincfg_man_leaf_lvla_keychains_macseckey_keyid)
CONTAINER_BY    (lvla_keychains_macseckey_macseckeystring, ymap_to_ocmacsec_key_clear_text_rev)
DUCK_LEAF       (lvla_keychains_macseckeystring_cryptographicalgorithm)
DUCK_LEAF       (lvla_keychains_macseckeystring_string)
DUCK_LEAF       (lvla_keychains_macseckeystring_encryptiontype)
CONTAINER_BY    (lvla_keychains_macseckey_macseclifetime,  ymap_to_ocmacsec_keychain_valid_date_time_rev)
DUCK_LEAF       (lvla_keychains_macseclifetime_starthour)
DUCK_LEAF       (lvla_keychains_macseclifetime_startminutes)
DUCK_LEAF       (lvla_keychains_macseclifetime_startseconds)
DUCK_LEAF       (lvla_keychains_macseclifetime_startdate)
DUCK_LEAF       (lvla_keychains_macseclifetime_startmonth)
DUCK_LEAF       (lvla_keychains_macseclifetime_startyear)
DUCK_LEAF       (lvla_keychains_macseclifetime_endhour)
DUCK_LEAF       (lvla_keychains_macseclifetime_endminutes)
DUCK_LEAF       (lvla_keychains_macseclifetime_endseconds)
DUCK_LEAF       (lvla_keychains_macseclifetime_enddate)
DUCK_LEAF       (lvla_keychains_macseclifetime_endmonth)
DUCK_LEAF       (lvla_keychains_macseclifetime_endyear)
DUCK_LEAF       (lvla_keychains_macseclifetime_lifetime)
DUCK_LEAF       (lvla_keychains_macseclifetime_infiniteflag)

// ---- keychains/keychain/keys ----------------------------------------------------------------------------------------
DUCK_CONTAINER (lvla_keychains_keychain_keys)
DUCK_LIST      (lvla_keychains_keys_key)
DUCK_LEAF      (lvla_keychains_key_keyid)
DUCK_LEAF      (lvla_keychains_key_cryptographicalgorithm)
DUCK_CONTAINER (lvla_keychains_key_keystring)
DUCK_LEAF      (lvla_keychains_keystring_encrypttype)
DUCK_LEAF      (lvla_keychains_keystring_keystring)
DUCK_CONTAINER (lvla_keychains_key_acceptlifetime)
DUCK_LEAF      (lvla_keychains_acceptlifetime_starthour)
DUCK_LEAF      (lvla_keychains_acceptlifetime_startminutes)
DUCK_LEAF      (lvla_keychains_acceptlifetime_startseconds)
DUCK_LEAF      (lvla_keychains_acceptlifetime_startdate)
DUCK_LEAF      (lvla_keychains_acceptlifetime_startmonth)
DUCK_LEAF      (lvla_keychains_acceptlifetime_startyear)
DUCK_LEAF      (lvla_keychains_acceptlifetime_endhour)
DUCK_LEAF      (lvla_keychains_acceptlifetime_endminutes)
DUCK_LEAF      (lvla_keychains_acceptlifetime_endseconds)
DUCK_LEAF      (lvla_keychains_acceptlifetime_enddate)
DUCK_LEAF      (lvla_keychains_acceptlifetime_endmonth)
DUCK_LEAF      (lvla_keychains_acceptlifetime_endyear)
DUCK_LEAF      (lvla_keychains_acceptlifetime_lifetime)
DUCK_LEAF      (lvla_keychains_acceptlifetime_infiniteflag)
DUCK_CONTAINER (lvla_keychains_key_sendlifetime)
DUCK_LEAF      (lvla_keychains_sendlifetime_starthour)
DUCK_LEAF      (lvla_keychains_sendlifetime_startminutes)
DUCK_LEAF      (lvla_keychains_sendlifetime_startseconds)
DUCK_LEAF      (lvla_keychains_sendlifetime_startdate)
DUCK_LEAF      (lvla_keychains_sendlifetime_startmonth)
DUCK_LEAF      (lvla_keychains_sendlifetime_startyear)
DUCK_LEAF      (lvla_keychains_sendlifetime_endhour)
DUCK_LEAF      (lvla_keychains_sendlifetime_endminutes)
DUCK_LEAF      (lvla_keychains_sendlifetime_endseconds)
DUCK_LEAF      (lvla_keychains_sendlifetime_enddate)
DUCK_LEAF      (lvla_keychains_sendlifetime_endmonth)
DUCK_LEAF      (lvla_keychains_sendlifetime_endyear)
DUCK_LEAF      (lvla_keychains_sendlifetime_lifetime)
DUCK_LEAF      (lvla_keychains_sendlifetime_infiniteflag)
