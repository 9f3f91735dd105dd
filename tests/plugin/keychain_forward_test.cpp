// Key chains and their keys, OpenConfig to native, but for the lifetimes.
#include <algorithm>

#include "keychain_documents.h"

extern "C" {
rcode ymap_ot_ocmacsec_macsec_keychain_list_fwd(tqm_map_ctx, const rdl_tqm_datatree *, rdl_tqm_datatree *);
rcode ymap_ot_ocmacsec_keychain_name_fwd(tqm_map_ctx, const rdl_tqm_datatree *, rdl_tqm_datatree *);
rcode ymap_ot_ocmacsec_tv_keychain_name_fwd(tqm_map_ctx, const rdl_tqm_datatree *, rdl_tqm_datatree *);
rcode ymap_ot_ocmacsec_macsec_key_list_fwd(tqm_map_ctx, const rdl_tqm_datatree *, rdl_tqm_datatree *);
rcode ymap_to_ocmacsec_tv_key_id_fwd(tqm_map_ctx, const rdl_tqm_datatree *, rdl_tqm_datatree *);
rcode ymap_ot_ocmacsec_macsec_key_id_fwd(tqm_map_ctx, const rdl_tqm_datatree *, rdl_tqm_datatree *);
rcode ymap_ot_ocmacsec_key_clear_text_fwd(tqm_map_ctx, const rdl_tqm_datatree *, rdl_tqm_datatree *);
rcode ymap_ot_ocmacsec_crypto_alg_fwd(tqm_map_ctx, const rdl_tqm_datatree *, rdl_tqm_datatree *);
rcode ymap_ot_ocmacsec_kc_crypto_algo_fwd(tqm_map_ctx, const rdl_tqm_datatree *, rdl_tqm_datatree *);
}

using namespace test;

namespace
{

const std::string key_string = native_key + "/macsec-key-string";
const std::string lifetime = native_key + "/macsec-lifetime";

// The adds of a fill over a key's leaves, each with `source` where its mapper gives one.
Lines filled_key(const std::string &source, bool deleted)
{
    Lines adds = {native_key + "=null" + source + " entry", native_key + "/key-id=null" + source,
                  native_key + "/key-id=null" + source, key_string + "/string=null",
                  key_string + "/cryptographic-algorithm=null" + source};
    const Lines start = {"start-hour", "start-minutes", "start-seconds", "start-date", "start-month", "start-year"};
    const Lines end = deleted ? Lines{"end-year", "end-month", "end-date", "end-hour", "end-minutes", "end-seconds"}
                              : Lines{"end-hour", "end-minutes", "end-seconds", "end-date", "end-month", "end-year"};
    for (const Lines &leaves : {start, end, Lines{"infinite-flag", "life-time"}}) {
        for (const std::string &name : leaves) {
            adds.push_back(lifetime + "/" + name + "=null" + source);
        }
    }
    return adds;
}

Lines joined(Lines first, const Lines &second)
{
    first.insert(first.end(), second.begin(), second.end());
    return first;
}

TEST(KeyChainForward, EachMapperInEachKindOfRequest)
{
    // What is added to `path`; "V" is the value of the node and "n" its tag.
    const Lines value = {"=\"V\""};
    const Lines sourced = {"=\"V\" from n"};
    const Lines value_delete = {"=\"V\" from n:delete"};
    const Lines bare_delete = {"=null from n:delete"};
    const Lines entry = {"=null entry"};
    const Lines deleted_entry = {"=null from n:delete entry"};
    const Lines entry_twice = {"=null entry", "=\"V\" entry"};
    const Lines entry_value = {"=\"V\" entry"};
    const Lines secret = {"/string=***"}; // without source, also in a delete
    const struct {
        const char *name;
        tqm_map_function mapper;
        std::string path;
        Lines edited, deleted, config, config_gated, all, all_gated;
        bool delete_first; // tested before the kind of the request
    } rows[] = {
        {"chain", ymap_ot_ocmacsec_macsec_keychain_list_fwd, native_chain, entry, deleted_entry, entry, {}, entry_twice,
         entry_value, true},
        {"chain key", ymap_ot_ocmacsec_keychain_name_fwd, native_chain + "/chain-name", sourced, value_delete, value,
         {}, value, {}, false},
        {"chain name", ymap_ot_ocmacsec_tv_keychain_name_fwd, native_chain + "/chain-name", sourced, bare_delete, value,
         value, value, value, false},
        {"key", ymap_ot_ocmacsec_macsec_key_list_fwd, native_key, entry, deleted_entry, entry, {}, entry_twice,
         entry_value, true},
        {"key key", ymap_to_ocmacsec_tv_key_id_fwd, native_key + "/key-id", sourced, value_delete, value, {}, value, {},
         false},
        {"key id", ymap_ot_ocmacsec_macsec_key_id_fwd, native_key + "/key-id", sourced, bare_delete, value, value, value,
         value, false},
        {"key text", ymap_ot_ocmacsec_key_clear_text_fwd, key_string,
         {"/string=*** from n", "/encryption-type=\"type7\" from n"}, secret, secret, secret, secret, secret, false},
        {"algorithm", ymap_ot_ocmacsec_crypto_alg_fwd, key_string + "/cryptographic-algorithm", sourced, bare_delete,
         value, value, value, value, false},
        {"state algorithm", ymap_ot_ocmacsec_kc_crypto_algo_fwd,
         "oc-macsec/macsec/mka/key-chains/key-chain/mka-keys/mka-key/state/cryptographic-algorithm", {}, {}, {"=null"},
         {"=null"}, {"=null"}, {"=null"}, false},
    };
    rdl_tqm_datatree node{};
    node.tag = "n";
    node.ns = oc_ns;
    node.value = "V";
    node.present = TQM_PRESENT_VALUE;
    rdl_tqm_datatree deleted = node;
    deleted.operation = TQM_OP_DELETE;
    deleted.present |= TQM_PRESENT_OPERATION;
    for (const auto &row : rows) {
        const auto added = [&](Walk walk, const rdl_tqm_datatree &on) {
            walk.run(row.mapper, &on);
            Lines adds = walk.adds();
            for (std::string &add : adds) {
                EXPECT_TRUE(add.starts_with(row.path)) << add;
                add = add.substr(row.path.size(), add.find(" -> ") - row.path.size());
            }
            return adds;
        };
        SCOPED_TRACE(row.name);
        EXPECT_EQ(added(edit(), node), row.edited);
        EXPECT_EQ(added(edit(), deleted), row.deleted);
        EXPECT_EQ(added(get_config(), node), row.config);
        EXPECT_EQ(added(get_config().without_configuration(), node), row.config_gated);
        EXPECT_EQ(added(get(), node), row.all);
        EXPECT_EQ(added(get().without_configuration(), node), row.all_gated);
        EXPECT_EQ(added(get_config(), deleted), row.delete_first ? row.deleted : row.config);
        EXPECT_EQ(edit().run(row.mapper, nullptr).rc, TQM_ERR_BAD_ARGS);
        EXPECT_DEATH((void)row.mapper(nullptr, &node, &node), "NULL != ctx");
    }
}

TEST(KeyChainForward, AWholeChainIsMerged)
{
    Walk walk = edit().trace().forward(
        chain("<config><name>C1</name></config>" +
              key("<config><id>01</id><key-clear-text>00112233445566778899aabbccddeeff</key-clear-text>"
                  "<cryptographic-algorithm>AES_128_CMAC</cryptographic-algorithm>"
                  "<expiration-date-time>NO_EXPIRATION</expiration-date-time></config>")));
    EXPECT_EQ(walk.rc, 0u);
    EXPECT_EQ(walk.adds(),
              (Lines{native_chain + "=null entry", native_chain + "/chain-name=\"C1\" from name",
                     native_chain + "/chain-name=\"C1\" from name", native_key + "=null entry",
                     native_key + "/key-id=\"01\" from id", native_key + "/key-id=\"01\" from id",
                     key_string + "/string=*** from key-clear-text",
                     key_string + "/encryption-type=\"type7\" from key-clear-text",
                     key_string + "/cryptographic-algorithm=\"aes-128-cmac\" from cryptographic-algorithm",
                     lifetime + "/infinite-flag=\"true\" from expiration-date-time"}));
    EXPECT_EQ(walk.built(), (Lines{native_chain, native_chain + "/chain-name=C1", native_key, native_key + "/key-id=01",
                                   key_string + "/string=!00112233445566778899aabbccddeeff",
                                   key_string + "/encryption-type=type7",
                                   key_string + "/cryptographic-algorithm=aes-128-cmac",
                                   lifetime + "/infinite-flag=true"}));
    EXPECT_EQ(walk.texts_of("ymap_ot_ocmacsec_tv_keychain_name_fwd"),
              (Lines{"Start", "OC MACSEC Creating key chain name C1", "End"}));
}

TEST(KeyChainForward, ADeleteByKeyFillsInAllThatAnEntryHolds)
{
    const Lines chain_fill = joined({native_chain + "=null from key-chain:delete entry",
                                     native_chain + "/chain-name=\"C1\" from name",
                                     native_chain + "/chain-name=null from key-chain:remove"},
                                    filled_key(" from key-chain:remove", true));
    EXPECT_EQ(edit().forward(chain("", "delete")).adds(), chain_fill);

    // The key's entry and its id come from the request, the rest from the fill.
    Lines rest = filled_key(" from mka-key:remove", true);
    rest.erase(rest.begin(), rest.begin() + 2);
    EXPECT_EQ(edit().forward(chain(key("", "delete"))).adds(),
              joined({native_chain + "=null entry", native_chain + "/chain-name=\"C1\" from name",
                      native_key + "=null from mka-key:delete entry", native_key + "/key-id=\"01\" from id"},
                     rest));

    const std::string all = " from key-chains:remove";
    EXPECT_EQ(edit().forward("<mka><key-chains nc:operation='delete'/></mka>").adds(),
              joined({native_chain + "=null" + all + " entry", native_chain + "/chain-name=null" + all,
                      native_chain + "/chain-name=null" + all},
                     filled_key(all, true)));
}

TEST(KeyChainForward, ADeleteOfTheKeyTextLeavesTheNativeStringAlone)
{
    Walk walk = edit().forward(chain(key("<config><key-clear-text nc:operation='delete'/></config>")));
    EXPECT_EQ(walk.rc, 0u);
    EXPECT_EQ(walk.adds().back(), key_string + "/string=null");
    EXPECT_EQ(walk.adds().size(), 5u);
}

TEST(KeyChainForward, AReadByKeyAsksForEverything)
{
    const Lines by_key = {native_chain + "/chain-name=\"C1\"", native_chain + "/chain-name=null"};
    EXPECT_EQ(get_config().forward(chain("")).adds(),
              joined(joined({native_chain + "=null entry"}, by_key), filled_key("", false)));

    // A read of state has each entry once more, and one state leaf with a path of its own.
    Lines keys = filled_key("", false);
    keys.insert(keys.begin(), native_key + "=null entry");
    keys.push_back("oc-macsec/macsec/mka/key-chains/key-chain/mka-keys/mka-key/state/cryptographic-algorithm=null");
    EXPECT_EQ(get().forward(chain("")).adds(),
              joined(joined({native_chain + "=null entry", native_chain + "=null entry"}, by_key), keys));

    // Without configuration the entries and keys stay out; the leaves under config are not asked about it.
    keys = filled_key("", false);
    keys.erase(keys.begin(), keys.begin() + 2);
    EXPECT_EQ(get_config().without_configuration().forward(chain("")).adds(),
              joined({native_chain + "/chain-name=null"}, keys));
}

TEST(KeyChainForward, RefusesToCreateTheDefaultChain)
{
    for (const char *name : {"default", "DEFAULT", "DeFault"}) {
        Walk walk = edit().trace().forward(chain("", "create", name));
        EXPECT_EQ(walk.rc, TQM_ERR_INVALID_REQUEST);
        EXPECT_EQ(walk.message(), "Invalid request : default keychain can not be created");
        EXPECT_NE(walk.lines_of("tqm_strdup").back().find("owner=\"TQM MAP\""), std::string::npos);
        EXPECT_EQ(walk.adds(), Lines{});
        EXPECT_EQ(walk.error_path() + walk.tag(), "");
        EXPECT_EQ(walk.texts_of("ymap_ot_ocmacsec_macsec_keychain_list_fwd"),
                  (Lines{"Start", "Invalid request :  default keychain can not be created", "End"}));
    }
    EXPECT_EQ(edit().forward(chain("", "create", "default-2")).rc, 0u);
    for (const char *operation : {"", "merge", "replace", "delete", "remove"}) {
        EXPECT_EQ(edit().forward(chain("", operation, "default")).rc, 0u) << operation;
    }
}

TEST(KeyChainForward, KeyTexts)
{
    const auto with_text = [](const std::string &text) {
        return chain(key("<config>" + leaf("key-clear-text", text) + "</config>"));
    };
    for (const std::string &text : {std::string(), std::string("k"), std::string(998, 'k')}) {
        Walk walk = edit().forward(with_text(text));
        EXPECT_EQ(walk.rc, 0u);
        const Lines built = walk.built();
        ASSERT_EQ(built.size(), 6u) << text.size();
        EXPECT_EQ(built[4], key_string + "/string=!" + text);
        EXPECT_EQ(built[5], key_string + "/encryption-type=type7");
    }
    for (const std::size_t length : {999u, 1000u, 5000u}) {
        Walk walk = edit().forward(with_text(std::string(length, 'k')));
        EXPECT_EQ(walk.rc, TQM_ERR_INVALID_REQUEST);
        EXPECT_EQ(walk.message(), "Invalid request : key-clear-text is longer than 998 bytes");
        EXPECT_EQ(walk.built().back(), native_key + "/key-id=01");
    }
}

TEST(KeyChainForward, TheKeyTextIsShownNowhere)
{
    for (const std::size_t length : {32u, 998u, 999u}) {
        const std::string text(length, 'Z');
        Walk walk = edit().trace().log().questions();
        walk.forward(chain(key("<config>" + leaf("key-clear-text", text) + "</config>")));
        Lines shown = joined(joined(walk.calls, walk.traces), walk.logs);
        shown.insert(shown.end(), {walk.message(), walk.error_path(), walk.tag()});
        if (walk.rc != 0) {
            shown.push_back(walk.request().error(walk.rc).text);
        }
        EXPECT_EQ(std::ranges::count_if(
                      shown, [](const std::string &line) { return line.find("ZZZZ") != std::string::npos; }),
                  0);
    }
}

TEST(KeyChainForward, Algorithms)
{
    const struct {
        const char *value;
        const char *native; // null: nothing is added
    } cases[] = {
        {"AES_128_CMAC", "aes-128-cmac"},
        {"AES_256_CMAC", "aes-256-cmac"},
        {"aes_128_cmac", "aes_128_cmac"},
        {"AES_128_CMAC_2", "AES_128_CMAC_2"},
        {"AES_256_CMAC-AND-MORE-THAN-THE-LIMIT", "AES_256_CMAC-AND-MORE-THAN-THE-LIMIT"},
        {"", nullptr},
    };
    for (const auto &one : cases) {
        Walk walk = edit().forward(chain(key("<config>" + leaf("cryptographic-algorithm", one.value) + "</config>")));
        EXPECT_EQ(walk.rc, 0u);
        const std::string expected = one.native == nullptr
                                         ? native_key + "/key-id=01"
                                         : key_string + "/cryptographic-algorithm=" + one.native;
        EXPECT_EQ(walk.built().back(), expected);
    }
}

TEST(KeyChainForward, TheLastAddDecides)
{
    constexpr rcode failure = 0x12345678;
    const struct {
        std::string leaf;
        const char *operation;
        unsigned int nth; // the entries and their keys are four flagged adds before the leaf
        rcode rc;
        Lines logged;
    } cases[] = {
        {leaf("key-clear-text", "k"), "tqm_map_datatree_add_path", 1, 0, {}},
        {leaf("key-clear-text", "k"), "tqm_map_datatree_add_path", 2, failure, {}},
        {leaf("cryptographic-algorithm", "X"), "tqm_map_datatree_add_path", 1, failure,
         {"rc = 305419896, error 0x12345678"}},
        {"<cryptographic-algorithm nc:operation='delete'/>", "tqm_map_datatree_add_path_flagged", 5, failure, {}},
        {leaf("id", "01"), "tqm_map_datatree_add_path_flagged", 5, failure, {}},
    };
    for (const auto &one : cases) {
        Walk walk = edit();
        walk.fault({one.operation, one.nth, failure}).trace();
        walk.forward(chain(key("<config>" + one.leaf + "</config>")));
        EXPECT_EQ(walk.rc, one.rc) << one.leaf;
        Lines logged = walk.texts_of("ymap_ot_ocmacsec_crypto_alg_fwd");
        std::erase_if(logged, [](const std::string &text) { return text == "Start" || text == "End"; });
        EXPECT_EQ(logged, one.logged) << one.leaf;
    }
}

} // namespace
