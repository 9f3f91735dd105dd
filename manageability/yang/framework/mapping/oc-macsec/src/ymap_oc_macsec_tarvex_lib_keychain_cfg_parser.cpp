// The walkers of Tarvex-lib-keychain-cfg (key chains), children before their parents.
#define REVERSE_MODULE tarvexlibkeychaincfg
#define REVERSE_HOOK DEFAULT_HOOK
#include "reverse_tables.h"

static constexpr oc_macsec::reverse_module module = {KEYCHAIN_CFG_NS, false};

// The tables keep one child a line.
// clang-format off

// ---- keychains/keychain/macsec-keychain -----------------------------------------------------------------------------
CONTAINER (lvla_keychains_macseckey_macseclifetime)
CONTAINER (lvla_keychains_macseckey_macseckeystring)
LEAF      (lvla_keychains_macseckey_keyid)
LIST      (lvla_keychains_macseckeys_macseckey, "/keychains/keychain/macsec-keychain/macsec-keys/macsec-key", KEYS("key-id"),
           CHILD    ("macsec-lifetime",   lvla_keychains_macseckey_macseclifetime),
           CHILD    ("macsec-key-string", lvla_keychains_macseckey_macseckeystring),
           KEY_CHILD("key-id",            lvla_keychains_macseckey_keyid))
CONTAINER (lvla_keychains_macseckeychain_macseckeys,
           LIST_CHILD("macsec-key", lvla_keychains_macseckeys_macseckey))
CONTAINER (lvla_keychains_keychain_macseckeychain,
           CHILD("macsec-keys", lvla_keychains_macseckeychain_macseckeys))

// ---- keychains/keychain/keys ----------------------------------------------------------------------------------------
CONTAINER (lvla_keychains_key_keystring)
CONTAINER (lvla_keychains_key_acceptlifetime)
CONTAINER (lvla_keychains_key_sendlifetime)
LIST      (lvla_keychains_keys_key, "/keychains/keychain/keys/key", KEYS("key-id"),
           CHILD("key-string",      lvla_keychains_key_keystring),
           CHILD("accept-lifetime", lvla_keychains_key_acceptlifetime),
           CHILD("send-lifetime",   lvla_keychains_key_sendlifetime))
CONTAINER (lvla_keychains_keychain_keys,
           LIST_CHILD("key", lvla_keychains_keys_key))

// ---- keychains ------------------------------------------------------------------------------------------------------
CONTAINER (lvla_keychains_keychain_accepttolerance)
LEAF      (lvla_keychains_keychain_chainname)
LIST      (lvla_keychains_keychain, "/keychains/keychain", KEYS("chain-name"),
           CHILD    ("accept-tolerance", lvla_keychains_keychain_accepttolerance),
           CHILD    ("macsec-keychain",  lvla_keychains_keychain_macseckeychain),
           CHILD    ("keys",             lvla_keychains_keychain_keys),
           KEY_CHILD("chain-name",       lvla_keychains_keychain_chainname))
CONTAINER (lvla_keychains,
           LIST_CHILD("keychain", lvla_keychains_keychain))
