// Key chains and their keys, native to OpenConfig, but for the lifetimes: which chains become OpenConfig's, and what
// macsec_kc carries from one request to the next.
#include <algorithm>
#include <cstring>

#include "keychain_documents.h"

extern "C" {
rcode ymap_to_ocmacsec_keychain_list_rev(tqm_map_ctx, const rdl_tqm_datatree *, rdl_tqm_datatree *);
}

using namespace test;

namespace
{

constexpr rcode failure = 0x4321;
const char *const add_operation = "tqm_map_datatree_add_path_flagged";
const std::string algorithm = oc_key + "/config/cryptographic-algorithm";

class KeyChainReverse : public testing::Test
{
protected:
    void SetUp() override { macsec_kc = {}; }
    void TearDown() override { macsec_kc = {}; }
};

Walk walked(Walk walk, const std::string &chains)
{
    return walk.reverse(native_chains(chains), native_chains_root);
}

Lines operator+(Lines first, const Lines &second)
{
    first.insert(first.end(), second.begin(), second.end());
    return first;
}

// The output of a chain or key of this name.
Lines entry(const std::string &name)
{
    return {oc_chain, oc_chain + "/name=" + name, oc_chain + "/config/name=" + name};
}
Lines key_entry(const std::string &id)
{
    return {oc_key, oc_key + "/id=" + id, oc_key + "/config/id=" + id};
}

std::string plain_chain(const std::string &name)
{
    return leaf("keychain", leaf("chain-name", name) +
                                "<accept-tolerance><value>5</value></accept-tolerance><keys><key><key-id>7</key-id>"
                                "<key-string><keystring>x</keystring></key-string><send-lifetime/></key></keys>");
}

std::string key_string(const std::string &native_algorithm)
{
    return leaf("macsec-key-string", "<string>!hidden</string><encryption-type>type7</encryption-type>" +
                                         leaf("cryptographic-algorithm", native_algorithm));
}

TEST_F(KeyChainReverse, OnlyChainsWithAMacsecPartAreShown)
{
    for (const uint32_t kind : {TQM_REQ_GET, TQM_REQ_GET_CONFIG}) {
        Walk walk = walked(answer(kind), plain_chain("P1") + macsec_chain("M1", "") + plain_chain("P2") +
                                             macsec_chain("M2", native_macsec_key("01", "")) + plain_chain("P3"));
        EXPECT_EQ(walk.rc, 0u);
        EXPECT_EQ(walk.built(), entry("M1") + entry("M2") + key_entry("01"));
        EXPECT_EQ(macsec_kc.kc_active, 0);
        const rdl_tqm_datatree &plain_keys = walk.request().tree()->subtree[0].subtree[2];
        EXPECT_EQ(plain_keys.subtree[0].subtree[0].is_key, 1); // a key of the native list nevertheless
    }
}

TEST_F(KeyChainReverse, TheOrderOfChildrenMakesNoDifference)
{
    const std::string name = leaf("chain-name", "M1");
    const std::string keys = "<keys><key><key-id>01</key-id></key></keys>";
    const std::string id = leaf("key-id", "01");
    const std::string text = key_string("aes-128-cmac");
    const Lines leaves = {algorithm + "=AES_128_CMAC", oc_chain + "/config/name=M1", oc_chain + "/name=M1",
                          oc_key + "/config/id=01", oc_key + "/id=01"};
    for (const std::string &key_children : {id + text, text + id}) {
        const std::string part = macsec(leaf("macsec-key", key_children));
        for (const std::string &children :
             {name + keys + part, part + name + keys, keys + part + name, "<accept-tolerance/>" + name + part + keys}) {
            Walk walk = walked(answer(), leaf("keychain", children));
            EXPECT_EQ(walk.rc, 0u);
            Lines built = walk.built();
            std::erase_if(built, [](const std::string &line) { return line.find('=') == std::string::npos; });
            EXPECT_TRUE(std::ranges::is_permutation(built, leaves)) << children;
            EXPECT_EQ(macsec_kc.kc_active, 0);
        }
    }
}

TEST_F(KeyChainReverse, KeysStayWithTheirChainAndKnownEntriesAreStitched)
{
    Walk walk = walked(answer(), macsec_chain("A", native_macsec_key("01", "") + native_macsec_key("02", "")) +
                                     macsec_chain("B", native_macsec_key("01", "")) +
                                     leaf("keychain", macsec(native_macsec_key("03", "")) + leaf("chain-name", "C")) +
                                     macsec_chain("A", native_macsec_key("02", "") + native_macsec_key("04", "")));
    EXPECT_EQ(walk.rc, 0u);
    const Lines late_name = {oc_chain + "/name=C", oc_chain + "/config/name=C"};
    EXPECT_EQ(walk.built(), entry("A") + key_entry("01") + key_entry("02") + key_entry("04") + entry("B") +
                                key_entry("01") + Lines{oc_chain} + key_entry("03") + late_name);
    EXPECT_EQ(walk.lines_of("tqm_map_stitch_list_to_list"),
              (Lines{"(path=\"" + oc_chain + "[chain_name=A]/\", list_path=\"" + oc_chain + "\") = 0",
                     "(path=\"" + oc_key + "[id=02]/\", list_path=\"" + oc_key + "\") = 0"}));
    // The leaves that the searches name are not those of the OpenConfig lists.
    const Lines searches = walk.lines_of("tqm_map_search_list");
    ASSERT_EQ(searches.size(), 10u);
    EXPECT_TRUE(searches[0].starts_with("(\"" + oc_chain + "\", key=\"A\", key_leaf=\"chain_name\""));
    EXPECT_TRUE(searches[1].starts_with("(\"" + oc_key + "\", key=\"01\", key_leaf=\"key-id\""));
}

TEST_F(KeyChainReverse, WithoutConfigurationTheKeysAloneAreWritten)
{
    Walk walk = walked(answer().without_configuration(),
                       macsec_chain("M1", native_macsec_key("01", key_string("aes-256-cmac"))));
    EXPECT_EQ(walk.adds(), (Lines{oc_chain + "=null entry", oc_chain + "/name=\"M1\"", oc_key + "=null entry",
                                  oc_key + "/id=\"01\"", algorithm + "=\"AES_256_CMAC\""}));
}

// ---- macsec_kc -----------------------------------------------------------------------------------------------------

TEST_F(KeyChainReverse, AWalkThatEndsBeforeTheNameLeavesTheRecordSetForTheNext)
{
    const std::string twice = macsec_chain("M1", "") + macsec_chain("M1", "");
    const std::string part = macsec(native_macsec_key("01", ""));
    const struct {
        const char *what;
        Fault fault;
        std::string chains;
    } cases[] = {
        {"the entry is not added", {add_operation, 1, failure}, macsec_chain("M1", "")},
        {"a child fails", {add_operation, 2, failure}, leaf("keychain", part + leaf("chain-name", "M1"))},
        {"the stitch skips", {"tqm_map_stitch_list_to_list", 1, TQM_ERR_SKIP_NODE}, twice},
        {"the stitch fails", {"tqm_map_stitch_list_to_list", 1, failure}, twice},
        {"there is no name", {"tqm_map_stitch_list_to_list", 1, failure}, leaf("keychain", part)},
    };
    // The name that is walked next is mapped, be it of a plain chain or of a deleted one, and clears the record.
    const Lines name_adds = {oc_chain + "/name=\"P1\"", oc_chain + "/config/name=\"P1\""};
    for (const auto &one : cases) {
        SCOPED_TRACE(one.what);
        (void)walked(answer().fault(one.fault), one.chains);
        EXPECT_EQ(macsec_kc.kc_active, 1);
        EXPECT_EQ(walked(answer(), plain_chain("P1") + plain_chain("P2")).adds(), name_adds);
        EXPECT_EQ(macsec_kc.kc_active, 0);
        EXPECT_EQ(macsec_kc.kc_name[0], '\0');
    }
    macsec_kc.kc_active = 1;
    (void)walked(answer(TQM_REQ_EDIT), "<keychain><keys/></keychain>"); // no name is walked
    EXPECT_EQ(macsec_kc.kc_active, 1);
    EXPECT_EQ(walked(answer(TQM_REQ_EDIT), element("keychain", "delete", leaf("chain-name", "P1"))).adds(),
              Lines{oc_chain + "=null from keychain:delete entry"} + name_adds);
    macsec_kc.kc_active = 1;
    EXPECT_EQ(walked(answer().fault({add_operation, 2, failure}), plain_chain("P1")).rc, failure);
    EXPECT_EQ(macsec_kc.kc_active, 0); // whatever the adds answer
}

TEST_F(KeyChainReverse, TheRecordKeepsABoundedNameAndTheTreeTheWholeOne)
{
    for (const std::size_t length : {1u, 49u, 50u, 500u}) {
        const std::string name(length, 'n');
        EXPECT_EQ(walked(answer(), macsec_chain(name, "")).built(), entry(name));
        (void)walked(answer().fault({add_operation, 1, failure}), macsec_chain(name, ""));
        EXPECT_LT(strnlen(macsec_kc.kc_name, sizeof macsec_kc.kc_name), sizeof macsec_kc.kc_name);
        if (length < sizeof macsec_kc.kc_name) {
            EXPECT_EQ(macsec_kc.kc_name, name);
        }
    }
}

TEST_F(KeyChainReverse, TheSearchForTheMacsecPartStopsAtAChildWithoutATag)
{
    rdl_tqm_datatree children[3] = {};
    children[0].tag = "keys";
    children[2].tag = "macsec-keychain";
    rdl_tqm_datatree node{};
    node.subtree = children;
    node.subtree_count = 3;
    EXPECT_EQ(answer().run(ymap_to_ocmacsec_keychain_list_rev, &node).rc, 0u); // no children are given
    node.present = TQM_PRESENT_SUBTREE;
    Walk untagged = answer().trace().run(ymap_to_ocmacsec_keychain_list_rev, &node);
    EXPECT_EQ(untagged.rc, TQM_ERR_NO_SUBTREE);
    EXPECT_EQ(untagged.texts_of("ymap_to_ocmacsec_keychain_list_rev"), (Lines{"Start", "End"}));
    EXPECT_EQ(macsec_kc.kc_active, 0);
}

// ---- Edits and deletes ---------------------------------------------------------------------------------------------

TEST_F(KeyChainReverse, AnEditContinuesAnEntryAndAddsNone)
{
    const std::string chain_text = macsec_chain("M1", native_macsec_key("01", ""));
    // A stranger: the search's code ends the entry, and its children are not walked.
    Walk stranger = walked(answer(TQM_REQ_EDIT).fault({"tqm_map_search_list", 1, failure}), chain_text);
    EXPECT_EQ(stranger.rc, failure);
    EXPECT_EQ(stranger.adds(), Lines{});
    EXPECT_NE(walked(answer(TQM_REQ_EDIT), chain_text).rc, 0u);
    // Without a name there is nothing to search for.
    Walk nameless = walked(answer(TQM_REQ_EDIT), leaf("keychain", macsec(native_macsec_key("01", ""))));
    EXPECT_EQ(nameless.rc, 0u);
    EXPECT_EQ(nameless.adds().front(), oc_key + "=null entry");

    Walk known = answer(TQM_REQ_EDIT);
    tqm::Request &request = known.request();
    rdl_tqm_datatree *added = nullptr;
    ASSERT_EQ(tqm_map_search_or_add_list(request.ctx(), request.out(), &added, oc_chain.c_str(), "M1", "name", oc_ns),
              0u);
    (void)walked(known, chain_text);
    EXPECT_EQ(known.rc, 0u);
    EXPECT_EQ(known.lines_of("tqm_map_stitch_list_to_list").size(), 1u);
    EXPECT_EQ(known.adds(), (Lines{oc_key + "=null entry", oc_key + "/id=\"01\"", oc_key + "/config/id=\"01\""}));
    EXPECT_EQ(macsec_kc.kc_active, 0);
}

TEST_F(KeyChainReverse, DeletesCarryTheirOperationAndChainsLogTheirFailure)
{
    rdl_tqm_datatree node{};
    node.tag = "keychain";
    node.operation = TQM_OP_REMOVE;
    node.present = TQM_PRESENT_OPERATION;
    for (Walk walk : {answer(TQM_REQ_EDIT), answer()}) { // tested before the kind of the request
        EXPECT_EQ(walk.run(ymap_to_ocmacsec_keychain_list_rev, &node).adds(),
                  (Lines{oc_chain + "=null from keychain:remove entry"}));
    }
    Walk failed = answer(TQM_REQ_EDIT).trace().fault({add_operation, 1, failure});
    EXPECT_EQ(failed.run(ymap_to_ocmacsec_keychain_list_rev, &node).rc, failure);
    EXPECT_EQ(failed.texts_of("ymap_to_ocmacsec_keychain_list_rev"),
              (Lines{"Start", "map_datatree_add_path_flagged failed with errror error 0x00004321", "End"}));

    Walk key_walk = answer(TQM_REQ_EDIT).trace().fault({add_operation, 1, failure});
    (void)walked(key_walk, leaf("keychain", macsec(element("macsec-key", "delete", leaf("key-id", "01")))));
    EXPECT_EQ(key_walk.rc, failure);
    EXPECT_EQ(key_walk.adds(), (Lines{oc_key + "=null from macsec-key:delete entry -> 0x00004321"}));
    EXPECT_EQ(key_walk.texts_of("ymap_to_ocmacsec_mka_keys_list_rev"), (Lines{"Start", "End"}));
}

// ---- Keys ----------------------------------------------------------------------------------------------------------

TEST_F(KeyChainReverse, Algorithms)
{
    const struct {
        const char *native; // null: the leaf has no value
        Lines values;       // of the adds; the container's own value, which no document gives it, is "own"
    } cases[] = {
        {"aes-128-cmac", {"own", "AES_128_CMAC"}},
        {"aes-256-cmac", {"own", "AES_256_CMAC"}},
        {"aes256-cmac", {"own", "own"}}, // the operational model's form
        {"AES-256-CMAC", {"own", "own"}},
        {"aes-256-cmac-and-more-than-the-limit", {"own", "own"}},
        {nullptr, {"own"}},
    };
    for (const auto &one : cases) {
        Walk walk = answer().trace().log().questions();
        rdl_tqm_datatree *const root = loaded(
            walk,
            native_chains(leaf("keychain", macsec(leaf("macsec-key", key_string(one.native ? one.native : ""))))));
        rdl_tqm_datatree &container = root->subtree[0].subtree[0].subtree[0].subtree[0].subtree[0];
        ASSERT_STREQ(container.tag, "macsec-key-string");
        container.value = "own";
        if (one.native == nullptr) {
            container.subtree[2].value = nullptr;
        }
        walk.run(native_chains_root, root);
        EXPECT_EQ(walk.rc, 0u);
        Lines expected = {oc_chain + "=null entry", oc_key + "=null entry"};
        for (const std::string &value : one.values) {
            expected.push_back(algorithm + "=\"" + value + "\"");
        }
        EXPECT_EQ(walk.adds(), expected);
        // The key text is neither mapped nor shown.
        for (const std::string &line : walk.calls + walk.traces + walk.logs + walk.built()) {
            EXPECT_EQ(line.find("hidden"), std::string::npos) << line;
        }
    }
}

TEST_F(KeyChainReverse, AKeyStringWithoutChildrenAddsTheKeyText)
{
    Walk walk = answer(TQM_REQ_EDIT).trace();
    const std::string key_text = leaf("macsec-key", element("macsec-key-string", "delete", ""));
    rdl_tqm_datatree *const root = loaded(walk, native_chains(leaf("keychain", macsec(key_text))));
    root->subtree[0].subtree[0].subtree[0].subtree[0].subtree[0].value = nullptr; // a container has none
    walk.run(native_chains_root, root);
    EXPECT_EQ(walk.rc, 0u);
    EXPECT_EQ(walk.adds(), (Lines{oc_key + "=null entry", algorithm + "=null",
                                  oc_key + "/config/key-clear-text=null from macsec-key-string:delete entry"}));
    EXPECT_EQ(walk.texts_of("ymap_to_ocmacsec_key_clear_text_rev"), (Lines{"Start", "No subtrees", "End"}));
}

TEST_F(KeyChainReverse, FailuresInAKeyString)
{
    const std::string chains = leaf("keychain", macsec(leaf("macsec-key", key_string("aes-128-cmac"))));
    const struct {
        Fault fault;
        std::size_t adds; // two are the entries'
    } cases[] = {
        {{"tqm_map_get_node_info", 3, failure}, 3}, // after those of the chain's name and the key's id
        {{add_operation, 3, failure}, 3},
        {{add_operation, 4, failure}, 4},
    };
    for (const auto &one : cases) {
        Walk walk = walked(answer().fault(one.fault), chains);
        EXPECT_EQ(walk.rc, failure);
        EXPECT_EQ(walk.adds().size(), one.adds);
    }

    Walk untagged = answer().trace();
    rdl_tqm_datatree *const root = loaded(untagged, native_chains(chains));
    root->subtree[0].subtree[0].subtree[0].subtree[0].subtree[0].subtree[1].tag = nullptr;
    untagged.run(native_chains_root, root);
    EXPECT_EQ(untagged.rc, TQM_ERR_NO_SUBTREE);
    EXPECT_EQ(untagged.adds().back(), algorithm + "=null");
    EXPECT_EQ(untagged.texts_of("ymap_to_ocmacsec_key_clear_text_rev"),
              (Lines{"Start", "Tag name is not available!", "End"}));
}

} // namespace
