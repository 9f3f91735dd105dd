// The private operational model, native to OpenConfig: the answer to a read of state.
#include <algorithm>

#include "support.h"

extern "C" {
rcode ymap_to_oc_macsec_tarvexlibkeychaincfg_lvla_keychains(tqm_map_ctx, const rdl_tqm_datatree *, rdl_tqm_datatree *);
rcode ymap_to_oc_macsec_tarvexifmgrcfg_lvla_interfaceconfigurations(tqm_map_ctx, const rdl_tqm_datatree *,
                                                                    rdl_tqm_datatree *);
rcode ymap_to_oc_macsec_tarvexprivateocmacsecoper_lvla_ocmacsec(tqm_map_ctx, const rdl_tqm_datatree *,
                                                                rdl_tqm_datatree *);
rcode ymap_to_ocmacsec_conf_offset_oper_rev(tqm_map_ctx, const rdl_tqm_datatree *, rdl_tqm_datatree *);
rcode ymap_to_ocmacsec_cipher_suite_oper_rev(tqm_map_ctx, const rdl_tqm_datatree *, rdl_tqm_datatree *);
rcode ymap_to_ocmacsec_kc_crypto_algo_rev(tqm_map_ctx, const rdl_tqm_datatree *, rdl_tqm_datatree *);
}

using namespace test;

namespace
{

constexpr tqm_map_function root = ymap_to_oc_macsec_tarvexprivateocmacsecoper_lvla_ocmacsec;
const std::string policy_list = "/macsec/mka/policies/policy";
const std::string chain_list = "/macsec/mka/key-chains/key-chain";
const std::string key_list = chain_list + "/mka-keys/mka-key";
const std::string interface_list = "/macsec/interfaces/interface";

std::string element(const std::string &tag, const std::string &inside)
{
    return "<" + tag + ">" + inside + "</" + tag + ">";
}

std::string native(const std::string &inside_macsec)
{
    return "<oc-macsec xmlns='http://tarvex.example/ns/yang/Tarvex-PRIVATE-oc-macsec-oper'><macsec>" + inside_macsec +
           "</macsec></oc-macsec>";
}

std::string policy_state(const std::string &leaves, const std::string &name = "P1")
{
    return "<mka><policies><policy>" + element("name", name) + element("state", leaves) + "</policy></policies></mka>";
}

std::string key_state(const std::string &leaves)
{
    return "<mka><key-chains><key-chain><name>C1</name><mka-keys><mka-key><id>01</id>" + element("state", leaves) +
           "</mka-key></mka-keys></key-chain></key-chains></mka>";
}

/// Leaves whose value is the path that they are to come out at, so that no two are alike.
std::string leaves(const std::string &container, const Lines &tags)
{
    std::string text;
    for (const std::string &tag : tags) {
        text += element(tag, container + "/" + tag);
    }
    return text;
}

TEST(OperationalReverse, EachLeafComesOutAtItsPath)
{
    const std::string tx = interface_list + "/scsa-tx/scsa-tx";
    const std::string rx = interface_list + "/scsa-rx/scsa-rx";
    const std::string mka = interface_list + "/mka/state";
    const std::string policies = "<policy><name>P1</name><state>" +
                                 leaves(policy_list + "/state", {"name", "key-server-priority", "delay-protection",
                                                                 "include-icv-indicator", "sak-rekey-interval"}) +
                                 "<confidentiality-offset>thirty-bytes</confidentiality-offset>"
                                 "<macsec-cipher-suite>gcm-aes-xpn128</macsec-cipher-suite></state></policy>";
    const std::string counters =
        leaves("/macsec/mka/state/counters",
               {"out-mkpdu-errors", "in-mkpdu-icv-verification-errors", "in-mkpdu-validation-errors",
                "in-mkpdu-bad-peer-errors", "in-mkpdu-peer-list-errors", "sak-generation-errors", "sak-hash-errors",
                "sak-encryption-errors", "sak-decryption-errors", "sak-cipher-mismatch-errors"});
    const std::string chains = "<key-chain><name>C1</name><mka-keys><mka-key><id>01</id><state>" +
                               leaves(key_list + "/state", {"id", "valid-date-time", "expiration-date-time"}) +
                               "<cryptographic-algorithm>aes256-cmac</cryptographic-algorithm></state></mka-key>"
                               "</mka-keys>" +
                               element("state", leaves(chain_list + "/state", {"name"})) + "</key-chain>";
    const std::string interface =
        "<interface><name>e0</name><interfaces-state><counters>" +
        leaves(interface_list + "/state/counters",
               {"tx-untagged-pkts", "rx-untagged-pkts", "rx-badtag-pkts", "rx-unknownsci-pkts", "rx-nosci-pkts"}) +
        "</counters></interfaces-state><scsa-txes><scsa-tx><sci-tx>1</sci-tx><state>" +
        element("counters", leaves(tx + "/state/counters", {"sc-encrypted", "sa-encrypted"})) +
        leaves(tx + "/state", {"sci-tx"}) + "</state></scsa-tx></scsa-txes><interfaces-mka><state>" +
        element("counters", leaves(mka + "/counters", {"in-mkpdu", "in-sak-mkpdu", "out-mkpdu", "out-sak-mkpdu"})) +
        leaves(mka, {"mka-policy", "key-chain"}) +
        "</state></interfaces-mka><scsa-rxes><scsa-rx><sci-rx>2</sci-rx><state>" +
        element("counters", leaves(rx + "/state/counters", {"sc-invalid", "sc-valid", "sa-invalid", "sa-valid"})) +
        leaves(rx + "/state", {"sci-rx"}) + "</state></scsa-rx></scsa-rxes></interface>";

    Walk walk = answer().without_configuration(); // which keeps no state back
    walk.reverse(native("<mka>" + element("policies", policies) + element("mka-state", element("counters", counters)) +
                        element("key-chains", chains) + "</mka>" + element("interfaces", interface)),
                 root);
    EXPECT_EQ(walk.rc, 0u);
    Lines translated;
    Lines keys;
    int copied = 0;
    for (const std::string &line : walk.built()) {
        const size_t equals = line.find('=');
        if (equals != std::string::npos && line.substr(0, equals) == line.substr(equals + 1)) {
            ++copied;
        } else if (line.find("/state/") != std::string::npos) {
            translated.push_back(line);
        } else {
            keys.push_back(line);
        }
    }
    EXPECT_EQ(copied, 42 - 4);
    EXPECT_EQ(translated, (Lines{policy_list + "/state/confidentiality-offset=30_BYTES",
                                 policy_list + "/state/macsec-cipher-suite=GCM_AES_XPN_128",
                                 key_list + "/state/cryptographic-algorithm=AES_256_CMAC",
                                 interface_list + "/state/name=e0"})); // which is the native key
    EXPECT_EQ(keys, (Lines{policy_list, policy_list + "/name=P1", chain_list, chain_list + "/name=C1", key_list,
                           key_list + "/id=01", interface_list, interface_list + "/name=e0", tx, tx + "/sci-tx=1", rx,
                           rx + "/sci-rx=2"}));
    for (const std::string &line : walk.lines_of("tqm_map_datatree_add_path_flagged")) {
        EXPECT_TRUE(line.ends_with(", source=null, list_entry=0, flags=0) = 0")) << line;
        EXPECT_NE(line.find(", ns=macsec, "), std::string::npos) << line;
    }
}

TEST(OperationalReverse, ValuesOfOtherModelsAreLeftOut)
{
    const struct {
        const char *leaf;
        std::vector<std::pair<const char *, const char *>> table;
        Lines dropped;
    } cases[] = {
        {"confidentiality-offset",
         {{"zero-bytes", "0_BYTES"}, {"thirty-bytes", "30_BYTES"}, {"fifty-bytes", "50_BYTES"}},
         {"conf-off-set-0", "0_BYTES", "zero-bytes-and-more", "Zero-Bytes"}},
        {"macsec-cipher-suite",
         {{"gcm-aes128", "GCM_AES_128"},
          {"gcm-aes256", "GCM_AES_256"},
          {"gcm-aes-xpn128", "GCM_AES_XPN_128"},
          {"gcm-aes-xpn256", "GCM_AES_XPN_256"}},
         {"gcm-aes-128", "gcm-aes-xpn-256", "GCM_AES_128", "gcm-aes", "gcm-aes-of-some-length-beyond-the-limit"}},
        {"cryptographic-algorithm",
         {{"aes128-cmac", "AES_128_CMAC"}, {"aes256-cmac", "AES_256_CMAC"}},
         {"aes-128-cmac", "AES_128_CMAC", ""}},
    };
    for (const auto &one : cases) {
        const std::string tag = one.leaf;
        const bool of_key = tag == "cryptographic-algorithm";
        const auto adds = [&](const std::string &leaf) {
            // The leaf behind it shows that the walk goes on.
            Walk walk = answer().reverse(
                native(of_key ? key_state(leaf + "<id>01</id>") : policy_state(leaf + "<name>P1</name>")), root);
            EXPECT_EQ(walk.rc, 0u) << leaf;
            Lines found = walk.adds();
            EXPECT_EQ(found.back(), of_key ? key_list + "/state/id=\"01\"" : policy_list + "/state/name=\"P1\"");
            found.pop_back();
            return found;
        };
        for (const auto &[native_value, value] : one.table) {
            EXPECT_EQ(adds(element(tag, native_value)),
                      Lines{(of_key ? key_list : policy_list) + "/state/" + tag + "=\"" + value + "\""});
        }
        for (const std::string &value : one.dropped) {
            EXPECT_EQ(adds(element(tag, value)), Lines{}) << value;
        }
    }
    // An answer without a value matches no row.
    const rdl_tqm_datatree valueless{};
    for (const tqm_map_function mapper : {ymap_to_ocmacsec_conf_offset_oper_rev, ymap_to_ocmacsec_cipher_suite_oper_rev,
                                          ymap_to_ocmacsec_kc_crypto_algo_rev}) {
        Walk walk = answer().run(mapper, &valueless);
        EXPECT_EQ(walk.rc, 0u);
        EXPECT_EQ(walk.calls, Lines{});
    }
    // Two suites are two entries of a leaf-list, in the order of the answer.
    const Walk two = answer().reverse(native(policy_state("<macsec-cipher-suite>gcm-aes256</macsec-cipher-suite>"
                                                          "<macsec-cipher-suite>gcm-aes128</macsec-cipher-suite>")),
                                      root);
    EXPECT_EQ(two.adds(), (Lines{policy_list + "/state/macsec-cipher-suite=\"GCM_AES_256\"",
                                 policy_list + "/state/macsec-cipher-suite=\"GCM_AES_128\""}));
}

/// Two entries of each list; the second entries of the outer lists hold the inner ones.
const std::string six_lists =
    native("<mka><policies><policy><name>P1</name></policy><policy><name>P2</name></policy></policies>"
           "<key-chains><key-chain><name>C1</name></key-chain><key-chain><name>C2</name><mka-keys><mka-key><id>01</"
           "id></mka-key>"
           "<mka-key><id>02</id></mka-key></mka-keys></key-chain></key-chains></mka><interfaces>"
           "<interface><name>e1</name></interface><interface><name>e2</name>"
           "<scsa-txes><scsa-tx><sci-tx>1</sci-tx></scsa-tx><scsa-tx><sci-tx>2</sci-tx></scsa-tx></scsa-txes>"
           "<scsa-rxes><scsa-rx><sci-rx>3</sci-rx></scsa-rx><scsa-rx><sci-rx>4</sci-rx></scsa-rx></scsa-rxes>"
           "</interface></interfaces>");

TEST(OperationalReverse, KeysStitchTheSixListsAndASkippedEntryLeavesItsSiblings)
{
    const std::string tx = interface_list + "/scsa-tx/scsa-tx";
    const std::string rx = interface_list + "/scsa-rx/scsa-rx";
    // One row an entry, in the order of the stitches, with what it puts into the answer.
    const std::vector<Lines> entries = {
        {policy_list, policy_list + "/name=P1"},
        {policy_list, policy_list + "/name=P2"},
        {chain_list, chain_list + "/name=C1"},
        {chain_list, chain_list + "/name=C2"},
        {key_list, key_list + "/id=01"},
        {key_list, key_list + "/id=02"},
        {interface_list, interface_list + "/name=e1", interface_list + "/state/name=e1"},
        {interface_list, interface_list + "/name=e2", interface_list + "/state/name=e2"},
        {tx, tx + "/sci-tx=1"},
        {tx, tx + "/sci-tx=2"},
        {rx, rx + "/sci-rx=3"},
        {rx, rx + "/sci-rx=4"},
    };
    for (unsigned int skipped = 0; skipped <= 12; ++skipped) { // 0: none
        Walk walk = answer();
        if (skipped != 0) {
            walk.fault({"tqm_map_auto_stitch_list_to_list", skipped, TQM_ERR_SKIP_NODE});
        }
        walk.reverse(six_lists, root);
        EXPECT_EQ(walk.rc, 0u) << skipped;
        Lines expected;
        for (unsigned int i = 1; i <= 12; ++i) {
            const bool within = (skipped == 4 && (i == 5 || i == 6)) || (skipped == 8 && i > 8);
            if (i != skipped && !within) {
                expected.insert(expected.end(), entries[i - 1].begin(), entries[i - 1].end());
            }
        }
        EXPECT_EQ(walk.built(), expected) << skipped;
        EXPECT_EQ(walk.lines_of("tqm_map_add_to_node_hierarchy").size(),
                  walk.lines_of("tqm_map_remove_from_node_hierarchy").size());
        EXPECT_EQ(walk.lines_of("tqm_add_to_output_list_ctx").size(),
                  walk.lines_of("tqm_remove_from_output_list_ctx").size());
    }
    // Any other failure of a stitch ends the walk.
    Walk failed = answer();
    failed.fault({"tqm_map_auto_stitch_list_to_list", 5, 0x55}).reverse(six_lists, root);
    EXPECT_EQ(failed.rc, 0x55u);
    EXPECT_EQ(failed.lines_of("tqm_map_auto_stitch_list_to_list").size(), 5u);
}

TEST(OperationalReverse, OtherKindsWriteNothing)
{
    for (const uint32_t kind : {0u, 1u, 2u, 8u, 15u}) {
        Walk walk = answer(kind).trace().reverse(six_lists, root);
        EXPECT_EQ(walk.rc, 0u) << kind;
        EXPECT_EQ(walk.built(), Lines{}) << kind;
        EXPECT_EQ(walk.texts_of("ymap_to_oc_macsec_tarvexprivateocmacsecoper_lvla_ocmacsec"),
                  (Lines{"Start", "Unsupported tag. Ignoring.", "End"}));
    }
}

TEST(OperationalReverse, KnownTagsAreTakenInAnyNamespace)
{
    Walk walk = answer().reverse(native(policy_state("<name xmlns='http://example.com/x'>P9</name>"
                                                     "<other xmlns='http://example.com/x'>1</other>")),
                                 root);
    EXPECT_EQ(walk.rc, 0u);
    EXPECT_EQ(walk.adds(), Lines{policy_list + "/state/name=\"P9\""});
}

TEST(OperationalReverse, FailedAddsOfTranslatedLeavesDiffer)
{
    constexpr rcode failure = 0x1234;
    const struct {
        std::string inside;
        rcode rc;
    } cases[] = {
        {policy_state("<key-server-priority>1</key-server-priority><name>P1</name>"), failure},
        {policy_state("<confidentiality-offset>zero-bytes</confidentiality-offset><name>P1</name>"), 0},
        {policy_state("<macsec-cipher-suite>gcm-aes128</macsec-cipher-suite><name>P1</name>"), 0},
        {key_state("<cryptographic-algorithm>aes128-cmac</cryptographic-algorithm><id>01</id>"), failure},
    };
    for (const auto &one : cases) {
        Walk walk = answer();
        walk.fault({"tqm_map_datatree_add_path_flagged", 1, failure}).reverse(native(one.inside), root);
        EXPECT_EQ(walk.rc, one.rc) << one.inside;
        EXPECT_EQ(walk.adds().size(), one.rc == 0 ? 2u : 1u) << one.inside;
    }
}

TEST(OperationalReverse, ConfigurationAndStateMeetInOneEntry)
{
    const std::string interface_entry =
        "<interface-configurations xmlns='http://tarvex.example/ns/yang/Tarvex-ifmgr-cfg'>"
        "<interface-configuration><active>act</active><interface-name>e0</interface-name>"
        "<macsec xmlns='http://tarvex.example/ns/yang/Tarvex-crypto-macsec-mka-if-cfg'>"
        "<psk-key-chain><policy-name>P1</policy-name></psk-key-chain></macsec>"
        "</interface-configuration></interface-configurations>";
    const std::string chain_entry =
        "<keychains xmlns='http://tarvex.example/ns/yang/Tarvex-lib-keychain-cfg'><keychain>"
        "<chain-name>C1</chain-name><macsec-keychain><macsec-keys><macsec-key>"
        "<key-id>01</key-id></macsec-key></macsec-keys></macsec-keychain></keychain>"
        "</keychains>";
    const struct {
        std::string configuration;
        tqm_map_function root;
        std::string state;
        std::string list;
        Lines leaves;
    } cases[] = {
        {native_policies("<policy-name><name>P1</name></policy-name>"),
         ymap_to_oc_macsec_tarvexcryptomacsecmkacfg_lvla_macsec,
         policy_state("<name>P1</name>"),
         policy_list,
         {policy_list + "/name=P1", policy_list + "/config/name=P1", policy_list + "/state/name=P1"}},
        {chain_entry,
         ymap_to_oc_macsec_tarvexlibkeychaincfg_lvla_keychains,
         key_state("<id>01</id>"),
         key_list,
         {key_list + "/id=01", key_list + "/config/id=01", key_list + "/state/id=01"}},
        {interface_entry,
         ymap_to_oc_macsec_tarvexifmgrcfg_lvla_interfaceconfigurations,
         "<interfaces><interface><name>e0</name></interface></interfaces>",
         interface_list,
         {interface_list + "/name=e0", interface_list + "/config/name=e0", interface_list + "/mka/config/mka-policy=P1",
          interface_list + "/state/name=e0"}},
    };
    for (const auto &one : cases) {
        for (const bool state_first : {false, true}) {
            Walk walk = state_first ? answer().reverse(native(one.state) + one.configuration, root)
                                    : answer().reverse(one.configuration + native(one.state), one.root);
            EXPECT_EQ(walk.rc, 0u);
            walk.run(state_first ? one.root : root, walk.request().tree(1));
            EXPECT_EQ(walk.rc, 0u);
            const Lines built = walk.built();
            EXPECT_EQ(std::ranges::count(built, one.list), 1) << one.list << state_first;
            for (const std::string &leaf : one.leaves) {
                EXPECT_EQ(std::ranges::count(built, leaf), 1) << leaf << state_first;
            }
        }
    }
}

} // namespace
