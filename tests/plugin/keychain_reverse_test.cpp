// Key chains and their keys, native to OpenConfig, but for the lifetimes: which chains become OpenConfig's, and what
// macsec_kc carries from one request to the next.
#include <algorithm>
#include <cstring>

#include "keychain_documents.h"

extern "C" {
rcode ymap_to_ocmacsec_keychain_list_rev(tqm_map_ctx, const rdl_tqm_datatree *, rdl_tqm_datatree *);
rcode ymap_to_ocmacsec_key_clear_text_rev(tqm_map_ctx, const rdl_tqm_datatree *, unsigned int, rdl_tqm_datatree *);
}

using namespace test;

namespace
{

constexpr rcode failure = 0x4321;
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

Lines entry(const std::string &name)
{
    return {oc_chain, oc_chain + "/name=" + name, oc_chain + "/config/name=" + name};
}

Lines named_key(const std::string &id)
{
    return {oc_key, oc_key + "/id=" + id, oc_key + "/config/id=" + id};
}

Lines operator+(Lines first, const Lines &second)
{
    first.insert(first.end(), second.begin(), second.end());
    return first;
}

std::string plain_chain(const std::string &name)
{
    return "<keychain>" + leaf("chain-name", name) +
           "<accept-tolerance><value>5</value></accept-tolerance><keys><key><key-id>7</key-id><key-string>"
           "<keystring>secret</keystring></key-string><accept-lifetime><start-year>2024</start-year></accept-lifetime>"
           "</key></keys></keychain>";
}

TEST_F(KeyChainReverse, OnlyChainsWithAMacsecPartAreShown)
{
    for (const uint32_t kind : {TQM_REQ_GET, TQM_REQ_GET_CONFIG}) {
        Walk walk = walked(answer(kind), plain_chain("P1") + macsec_chain("M1", "") + plain_chain("P2") +
                                             macsec_chain("M2", native_macsec_key("01", "")) + plain_chain("P3"));
        EXPECT_EQ(walk.rc, 0u);
        EXPECT_EQ(walk.built(), entry("M1") + entry("M2") + named_key("01"));
        EXPECT_EQ(macsec_kc.kc_active, 0);
        const rdl_tqm_datatree &plain_keys = walk.request().tree()->subtree[0].subtree[2];
        EXPECT_EQ(plain_keys.subtree[0].subtree[0].is_key, 1); // a key of the native list nevertheless
    }
}

TEST_F(KeyChainReverse, TheOrderOfChildrenMakesNoDifference)
{
    const std::string name = leaf("chain-name", "M1");
    const std::string keys = "<keys><key><key-id>01</key-id></key></keys>";
    const std::string text = "<macsec-key-string><cryptographic-algorithm>aes-128-cmac</cryptographic-algorithm>"
                             "</macsec-key-string>";
    const std::string id = leaf("key-id", "01");
    const std::string tolerance = "<accept-tolerance/>";
    const Lines leaves = {algorithm + "=AES_128_CMAC", oc_chain + "/config/name=M1", oc_chain + "/name=M1",
                          oc_key + "/config/id=01", oc_key + "/id=01"};
    for (const std::string &key_children : {id + text, text + id}) {
        const std::string part = macsec("<macsec-key>" + key_children + "</macsec-key>");
        for (const std::string &children : {name + keys + tolerance + part, part + name + keys, keys + part + name,
                                            keys + name + part, tolerance + name + part + keys}) {
            Walk walk = walked(answer(), "<keychain>" + children + "</keychain>");
            EXPECT_EQ(walk.rc, 0u);
            Lines built = walk.built();
            std::erase_if(built, [](const std::string &line) { return line.find('=') == std::string::npos; });
            EXPECT_TRUE(std::ranges::is_permutation(built, leaves)) << children;
            EXPECT_EQ(macsec_kc.kc_active, 0);
        }
    }
}

TEST_F(KeyChainReverse, KeysStayWithTheirChain)
{
    Walk walk = walked(answer(), macsec_chain("A", native_macsec_key("01", "") + native_macsec_key("02", "")) +
                                     macsec_chain("B", native_macsec_key("01", "")) +
                                     "<keychain>" + macsec(native_macsec_key("03", "")) + leaf("chain-name", "C") +
                                     "</keychain>");
    EXPECT_EQ(walk.rc, 0u);
    const Lines late_name = {oc_chain + "/name=C", oc_chain + "/config/name=C"};
    EXPECT_EQ(walk.built(), entry("A") + named_key("01") + named_key("02") + entry("B") + named_key("01") +
                                Lines{oc_chain} + named_key("03") + late_name);
    // The leaves that the searches name are the native side's way of writing them.
    Lines searches = walk.lines_of("tqm_map_search_list");
    for (std::string &search : searches) {
        search = search.substr(0, search.find(", ns="));
    }
    const auto chain_search = [](const std::string &name) {
        return "(\"" + oc_chain + "\", key=\"" + name + "\", key_leaf=\"chain_name\"";
    };
    const auto key_search = [](const std::string &id) {
        return "(\"" + oc_key + "\", key=\"" + id + "\", key_leaf=\"key-id\"";
    };
    EXPECT_EQ(searches, (Lines{chain_search("A"), key_search("01"), key_search("02"), chain_search("B"),
                               key_search("01"), chain_search("C"), key_search("03")}));
}

TEST_F(KeyChainReverse, AnEntryThatStandsAlreadyIsStitched)
{
    Walk walk = walked(answer(), macsec_chain("M1", native_macsec_key("01", "")) +
                                     macsec_chain("M1", native_macsec_key("01", "") + native_macsec_key("02", "")));
    EXPECT_EQ(walk.rc, 0u);
    EXPECT_EQ(walk.built(), entry("M1") + named_key("01") + named_key("02"));
    EXPECT_EQ(walk.lines_of("tqm_map_stitch_list_to_list"),
              (Lines{"(path=\"" + oc_chain + "[chain_name=M1]/\", list_path=\"" + oc_chain + "\") = 0",
                     "(path=\"" + oc_key + "[id=01]/\", list_path=\"" + oc_key + "\") = 0"}));
}

TEST_F(KeyChainReverse, WithoutConfigurationTheKeysAloneAreWritten)
{
    Walk walk = walked(answer().without_configuration(),
                       macsec_chain("M1", native_macsec_key("01", "<macsec-key-string><cryptographic-algorithm>"
                                                                  "aes-256-cmac</cryptographic-algorithm>"
                                                                  "</macsec-key-string>")));
    EXPECT_EQ(walk.adds(), (Lines{oc_chain + "=null entry", oc_chain + "/name=\"M1\"", oc_key + "=null entry",
                                  oc_key + "/id=\"01\"", algorithm + "=\"AES_256_CMAC\""}));
}

// ---- macsec_kc -----------------------------------------------------------------------------------------------------

TEST_F(KeyChainReverse, AWalkThatEndsBeforeTheNameLeavesTheRecordSet)
{
    const std::string part = macsec(native_macsec_key("01", ""));
    const struct {
        const char *what;
        Fault fault;
        std::string chains;
    } cases[] = {
        {"the entry is not added", {"tqm_map_datatree_add_path_flagged", 1, failure}, macsec_chain("M1", "")},
        {"a child before the name fails",
         {"tqm_map_datatree_add_path_flagged", 2, failure},
         "<keychain>" + part + leaf("chain-name", "M1") + "</keychain>"},
        {"the stitch skips the entry",
         {"tqm_map_stitch_list_to_list", 1, TQM_ERR_SKIP_NODE},
         macsec_chain("M1", "") + macsec_chain("M1", "")},
        {"the stitch fails",
         {"tqm_map_stitch_list_to_list", 1, failure},
         macsec_chain("M1", "") + macsec_chain("M1", "")},
        {"the entry has no name", {"none", 1, 0}, "<keychain>" + part + "</keychain>"},
    };
    for (const auto &one : cases) {
        SCOPED_TRACE(one.what);
        macsec_kc = {};
        (void)walked(answer().fault(one.fault), one.chains);
        EXPECT_EQ(macsec_kc.kc_active, 1);

        // The next name that is walked, be it of a plain chain, is mapped and clears the record; the one after is not.
        Walk next = walked(answer(), plain_chain("P1") + plain_chain("P2"));
        EXPECT_EQ(next.rc, 0u);
        EXPECT_EQ(next.adds(), (Lines{oc_chain + "/name=\"P1\"", oc_chain + "/config/name=\"P1\""}));
        EXPECT_EQ(macsec_kc.kc_active, 0);
        EXPECT_EQ(macsec_kc.kc_name[0], '\0');
    }
}

TEST_F(KeyChainReverse, ARecordThatIsSetAlsoReachesEditsAndOtherChains)
{
    macsec_kc.kc_active = 1;
    EXPECT_EQ(walked(answer(), macsec_chain("M1", "")).built(), entry("M1"));
    EXPECT_EQ(macsec_kc.kc_active, 0);

    // An edit's list entry without a name passes the record by, and so does a chain that is not read to its name.
    macsec_kc.kc_active = 1;
    (void)walked(answer(TQM_REQ_EDIT), "<keychain><keys/></keychain>");
    EXPECT_EQ(macsec_kc.kc_active, 1);
    Walk deleted = walked(answer(TQM_REQ_EDIT), "<keychain nc:operation='delete'><chain-name>X</chain-name></keychain>");
    EXPECT_EQ(deleted.adds(), (Lines{oc_chain + "=null from keychain:delete entry", oc_chain + "/name=\"X\"",
                                     oc_chain + "/config/name=\"X\""}));
    EXPECT_EQ(macsec_kc.kc_active, 0);
    // Only the value 1 counts as set, and what the name's adds answer does not matter.
    macsec_kc.kc_active = 2;
    EXPECT_EQ(walked(answer(), plain_chain("P1")).adds(), Lines{});
    macsec_kc.kc_active = 1;
    Walk failed = answer();
    failed.fault({"tqm_map_datatree_add_path_flagged", 1, failure});
    EXPECT_EQ(walked(failed.fault({"tqm_map_datatree_add_path_flagged", 2, failure}), plain_chain("P1")).rc, failure);
    EXPECT_EQ(macsec_kc.kc_active, 0);
}

TEST_F(KeyChainReverse, TheRecordKeepsABoundedNameAndTheTreeTheWholeOne)
{
    for (const std::size_t length : {1u, 49u, 50u, 51u, 500u}) {
        const std::string name(length, 'n');
        EXPECT_EQ(walked(answer(), macsec_chain(name, "")).built(), entry(name));
        (void)walked(answer().fault({"tqm_map_datatree_add_path_flagged", 1, failure}), macsec_chain(name, ""));
        ASSERT_EQ(macsec_kc.kc_active, 1);
        const std::size_t kept = strnlen(macsec_kc.kc_name, sizeof macsec_kc.kc_name);
        EXPECT_LT(kept, sizeof macsec_kc.kc_name) << length;
        if (length < sizeof macsec_kc.kc_name) {
            EXPECT_EQ(macsec_kc.kc_name, name);
        }
        macsec_kc = {};
    }
}

TEST_F(KeyChainReverse, TheSearchForTheMacsecPartStopsAtAChildWithoutATag)
{
    rdl_tqm_datatree children[3] = {};
    children[0].tag = "keys";
    children[2].tag = "macsec-keychain";
    rdl_tqm_datatree node{};
    node.tag = "keychain";
    node.subtree = children;
    node.subtree_count = 3;
    EXPECT_EQ(answer().run(ymap_to_ocmacsec_keychain_list_rev, &node).rc, 0u); // no children are given
    node.present = TQM_PRESENT_SUBTREE;
    Walk untagged = answer().trace().run(ymap_to_ocmacsec_keychain_list_rev, &node);
    EXPECT_EQ(untagged.rc, TQM_ERR_NO_SUBTREE);
    EXPECT_EQ(untagged.texts_of("ymap_to_ocmacsec_keychain_list_rev"), (Lines{"Start", "End"}));
    node.subtree = nullptr;
    EXPECT_EQ(answer().run(ymap_to_ocmacsec_keychain_list_rev, &node).rc, TQM_ERR_NO_SUBTREE);
    EXPECT_EQ(answer().run(ymap_to_ocmacsec_keychain_list_rev, nullptr).rc, TQM_ERR_BAD_ARGS);
    EXPECT_EQ(macsec_kc.kc_active, 0);
}

// ---- Edits and deletes ---------------------------------------------------------------------------------------------

TEST_F(KeyChainReverse, AnEditContinuesAnEntryAndAddsNone)
{
    // A stranger: the search's code ends the entry and its children are not walked.
    Walk stranger = walked(answer(TQM_REQ_EDIT).trace(), macsec_chain("M1", native_macsec_key("01", "")));
    ASSERT_EQ(stranger.lines_of("tqm_map_search_list").size(), 1u);
    EXPECT_NE(stranger.rc, 0u);
    EXPECT_EQ(stranger.adds(), Lines{});
    Walk coded = answer(TQM_REQ_EDIT);
    EXPECT_EQ(walked(coded.fault({"tqm_map_search_list", 1, failure}), macsec_chain("M1", "")).rc, failure);
    // Without a name there is nothing to search for.
    Walk nameless = walked(answer(TQM_REQ_EDIT), "<keychain>" + macsec(native_macsec_key("01", "")) + "</keychain>");
    EXPECT_EQ(nameless.rc, 0u);
    EXPECT_EQ(nameless.adds().front(), oc_key + "=null entry");

    // An entry that the output has: stitched, its name not written again.
    Walk known = answer(TQM_REQ_EDIT);
    tqm::Request &request = known.request();
    rdl_tqm_datatree *added = nullptr;
    ASSERT_EQ(tqm_map_search_or_add_list(request.ctx(), request.out(), &added, oc_chain.c_str(), "M1", "name", oc_ns),
              0u);
    (void)walked(known, macsec_chain("M1", native_macsec_key("01", "")));
    EXPECT_EQ(known.rc, 0u);
    EXPECT_EQ(known.lines_of("tqm_map_stitch_list_to_list").size(), 1u);
    EXPECT_EQ(known.adds(), (Lines{oc_key + "=null entry", oc_key + "/id=\"01\"", oc_key + "/config/id=\"01\""}));
    EXPECT_EQ(macsec_kc.kc_active, 0);
}

TEST_F(KeyChainReverse, DeletesCarryTheirOperation)
{
    const std::string chain_text = "<keychain nc:operation='delete'><chain-name>M1</chain-name></keychain>";
    EXPECT_EQ(walked(answer(TQM_REQ_EDIT), chain_text).adds(), (Lines{oc_chain + "=null from keychain:delete entry"}));
    rdl_tqm_datatree node{};
    node.tag = "keychain";
    node.operation = TQM_OP_REMOVE;
    node.present = TQM_PRESENT_OPERATION; // tested before the kind of the request
    EXPECT_EQ(answer().run(ymap_to_ocmacsec_keychain_list_rev, &node).adds(),
              (Lines{oc_chain + "=null from keychain:remove entry"}));
    Walk failed = answer(TQM_REQ_EDIT).trace();
    (void)walked(failed.fault({"tqm_map_datatree_add_path_flagged", 1, failure}), chain_text);
    EXPECT_EQ(failed.rc, failure);
    EXPECT_EQ(failed.texts_of("ymap_to_ocmacsec_keychain_list_rev"),
              (Lines{"Start", "map_datatree_add_path_flagged failed with errror error 0x00004321", "End"}));

    const std::string key_text =
        "<keychain>" + macsec("<macsec-key nc:operation='remove'><key-id>01</key-id></macsec-key>") + "</keychain>";
    Walk key_walk = walked(answer(TQM_REQ_EDIT), key_text);
    EXPECT_EQ(key_walk.rc, 0u);
    EXPECT_EQ(key_walk.adds().front(), oc_key + "=null from macsec-key:remove entry");
    Walk failed_key = answer(TQM_REQ_EDIT).trace();
    (void)walked(failed_key.fault({"tqm_map_datatree_add_path_flagged", 1, failure}), key_text);
    EXPECT_EQ(failed_key.rc, failure);
    EXPECT_EQ(failed_key.texts_of("ymap_to_ocmacsec_mka_keys_list_rev"), (Lines{"Start", "End"}));
}

// ---- Keys ----------------------------------------------------------------------------------------------------------

TEST_F(KeyChainReverse, Algorithms)
{
    const auto with_algorithm = [](const std::string &text) {
        return native_chains(
            "<keychain>" +
            macsec("<macsec-key><macsec-key-string><string>!hidden</string><encryption-type>type7</encryption-type>" +
                   leaf("cryptographic-algorithm", text) + "</macsec-key-string></macsec-key>") +
            "</keychain>");
    };
    const struct {
        const char *native; // null: the leaf has no value
        Lines adds;         // behind the one of the container's own value
    } cases[] = {
        {"aes-128-cmac", {"\"AES_128_CMAC\""}},
        {"aes-256-cmac", {"\"AES_256_CMAC\""}},
        // A text outside the table gives what the container has.
        {"aes256-cmac", {"\"own\""}},
        {"AES-256-CMAC", {"\"own\""}},
        {"aes-256-cmac-and-more-than-the-limit", {"\"own\""}},
        {"", {"\"own\""}},
        {nullptr, {}},
    };
    for (const auto &one : cases) {
        Walk walk = answer().trace().log().questions();
        rdl_tqm_datatree *const root = loaded(walk, with_algorithm(one.native == nullptr ? "" : one.native));
        rdl_tqm_datatree &key_string = root->subtree[0].subtree[0].subtree[0].subtree[0].subtree[0];
        ASSERT_STREQ(key_string.tag, "macsec-key-string");
        key_string.value = "own";
        if (one.native == nullptr) {
            key_string.subtree[2].value = nullptr;
        }
        walk.run(native_chains_root, root);
        EXPECT_EQ(walk.rc, 0u);
        Lines expected = {oc_chain + "=null entry", oc_key + "=null entry", algorithm + "=\"own\""};
        for (const std::string &value : one.adds) {
            expected.push_back(algorithm + "=" + value);
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
    rdl_tqm_datatree *const root =
        loaded(walk, native_chains("<keychain>" +
                                   macsec("<macsec-key><macsec-key-string nc:operation='delete'/><key-id>01</key-id>"
                                          "</macsec-key>") +
                                   "</keychain>"));
    root->subtree[0].subtree[0].subtree[0].subtree[0].subtree[0].value = nullptr; // a container has none
    walk.run(native_chains_root, root);
    EXPECT_EQ(walk.rc, 0u);
    ASSERT_EQ(walk.adds().size(), 5u);
    EXPECT_EQ(walk.adds()[1], algorithm + "=null");
    EXPECT_EQ(walk.adds()[2], oc_key + "/config/key-clear-text=null from macsec-key-string:delete entry");
    EXPECT_EQ(walk.texts_of("ymap_to_ocmacsec_key_clear_text_rev"), (Lines{"Start", "No subtrees", "End"}));
}

TEST_F(KeyChainReverse, FailuresInAKeyString)
{
    const std::string chains = "<keychain>" +
                               macsec("<macsec-key><macsec-key-string><cryptographic-algorithm>aes-128-cmac"
                                      "</cryptographic-algorithm><string>x</string></macsec-key-string></macsec-key>") +
                               "</keychain>";
    const struct {
        Fault fault;
        rcode rc;
        std::size_t algorithm_adds;
    } cases[] = {
        // The lookups before are those of the chain's name and the key's id.
        {{"tqm_map_get_node_info", 3, failure}, failure, 1},
        {{"tqm_map_datatree_add_path_flagged", 3, failure}, failure, 1},
        {{"tqm_map_datatree_add_path_flagged", 4, failure}, failure, 2},
    };
    for (const auto &one : cases) {
        Walk walk = walked(answer().fault(one.fault), chains);
        EXPECT_EQ(walk.rc, one.rc);
        EXPECT_EQ(walk.adds().size(), 2 + one.algorithm_adds);
    }

    rdl_tqm_datatree child{};
    rdl_tqm_datatree node{};
    node.tag = "macsec-key-string";
    node.subtree = &child;
    node.subtree_count = 1;
    const auto mapped = [&](Walk walk) {
        walk.rc = ymap_to_ocmacsec_key_clear_text_rev(walk.request().ctx(), &node, 1, walk.request().out());
        return walk;
    };
    EXPECT_EQ(mapped(answer().without_configuration()).rc, 0u); // no children are given
    node.present = TQM_PRESENT_SUBTREE;
    Walk untagged = mapped(answer().trace().without_configuration());
    EXPECT_EQ(untagged.rc, TQM_ERR_NO_SUBTREE);
    EXPECT_EQ(untagged.texts(), (Lines{"ymap_to_ocmacsec_key_clear_text_rev: Start",
                                       "ymap_to_ocmacsec_key_clear_text_rev: Tag name is not available!",
                                       "ymap_to_ocmacsec_key_clear_text_rev: End"}));
    node.subtree = nullptr;
    EXPECT_EQ(mapped(answer().without_configuration()).rc, TQM_ERR_NO_SUBTREE);
}

} // namespace
