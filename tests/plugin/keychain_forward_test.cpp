// Key chains and their keys, OpenConfig to native, but for the lifetimes.
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

// For a node "n" with value "V": what each mapper adds to its path in an edit, a delete, a read of configuration, the
// same without configuration, and both again for a read that asks for state as well.
const struct {
    tqm_map_function mapper;
    std::string path;
    const char *adds;
} mappers[] = {
    // clang-format off
    {ymap_ot_ocmacsec_macsec_keychain_list_fwd, native_chain,
     R"(=null entry; =null from n:delete entry; =null entry; ; =null entry+="V" entry; ="V" entry)"},
    {ymap_ot_ocmacsec_keychain_name_fwd, native_chain + "/chain-name",
     R"(="V" from n; ="V" from n:delete; ="V"; ; ="V"; )"},
    {ymap_ot_ocmacsec_tv_keychain_name_fwd, native_chain + "/chain-name",
     R"(="V" from n; =null from n:delete; ="V"; ="V"; ="V"; ="V")"},
    {ymap_ot_ocmacsec_macsec_key_list_fwd, native_key,
     R"(=null entry; =null from n:delete entry; =null entry; ; =null entry+="V" entry; ="V" entry)"},
    {ymap_to_ocmacsec_tv_key_id_fwd, native_key + "/key-id",
     R"(="V" from n; ="V" from n:delete; ="V"; ; ="V"; )"},
    {ymap_ot_ocmacsec_macsec_key_id_fwd, native_key + "/key-id",
     R"(="V" from n; =null from n:delete; ="V"; ="V"; ="V"; ="V")"},
    {ymap_ot_ocmacsec_key_clear_text_fwd, key_string,
     R"(/string=*** from n+/encryption-type="type7" from n; /string=***; /string=***; /string=***; /string=***; )"
     R"(/string=***)"},
    {ymap_ot_ocmacsec_crypto_alg_fwd, key_string + "/cryptographic-algorithm",
     R"(="V" from n; =null from n:delete; ="V"; ="V"; ="V"; ="V")"},
    {ymap_ot_ocmacsec_kc_crypto_algo_fwd,
     "oc-macsec/macsec/mka/key-chains/key-chain/mka-keys/mka-key/state/cryptographic-algorithm",
     "; ; =null; =null; =null; =null"},
    // clang-format on
};

TEST(KeyChainForward, EachMapperInEachKindOfRequest)
{
    rdl_tqm_datatree node{};
    node.tag = "n";
    node.value = "V";
    node.present = TQM_PRESENT_VALUE;
    rdl_tqm_datatree deleted = node;
    deleted.operation = TQM_OP_DELETE;
    deleted.present |= TQM_PRESENT_OPERATION;
    for (const auto &row : mappers) {
        const auto added = [&](Walk walk, const rdl_tqm_datatree &on) {
            walk.run(row.mapper, &on);
            std::string text;
            for (const std::string &add : walk.adds()) {
                EXPECT_TRUE(add.starts_with(row.path)) << add;
                const char *const ns = row.path.starts_with('/') ? "Tarvex-lib-keychain-cfg" : "oc-macsec-oper";
                EXPECT_TRUE(walk.calls.back().find(ns) != std::string::npos) << walk.calls.back();
                text += (text.empty() ? "" : "+") + add.substr(row.path.size(), add.find(" -> ") - row.path.size());
            }
            return text;
        };
        const std::string delete_adds = added(edit(), deleted);
        EXPECT_EQ(added(edit(), node) + "; " + delete_adds + "; " + added(get_config(), node) + "; " +
                      added(get_config().without_configuration(), node) + "; " + added(get(), node) + "; " +
                      added(get().without_configuration(), node),
                  row.adds)
            << row.path;
        // Lists look for a delete before the kind of the request, leaves after it.
        EXPECT_EQ(added(get(), deleted), delete_adds.ends_with("entry") ? delete_adds : added(get(), node));
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
    EXPECT_EQ(walk.adds(), (Lines{native_chain + "=null entry", native_chain + "/chain-name=\"C1\" from name",
                                  native_chain + "/chain-name=\"C1\" from name", native_key + "=null entry",
                                  native_key + "/key-id=\"01\" from id", native_key + "/key-id=\"01\" from id",
                                  key_string + "/string=*** from key-clear-text",
                                  key_string + "/encryption-type=\"type7\" from key-clear-text",
                                  key_string + "/cryptographic-algorithm=\"aes-128-cmac\" from cryptographic-algorithm",
                                  lifetime + "/infinite-flag=\"true\" from expiration-date-time"}));
    EXPECT_EQ(walk.built(),
              (Lines{native_chain, native_chain + "/chain-name=C1", native_key, native_key + "/key-id=01",
                     key_string + "/string=!00112233445566778899aabbccddeeff", key_string + "/encryption-type=type7",
                     key_string + "/cryptographic-algorithm=aes-128-cmac", lifetime + "/infinite-flag=true"}));
    EXPECT_EQ(walk.texts_of("ymap_ot_ocmacsec_tv_keychain_name_fwd"),
              (Lines{"Start", "OC MACSEC Creating key chain name C1", "End"}));
}

TEST(KeyChainForward, ADeleteByKeyFillsInAllThatAnEntryHolds)
{
    const Lines chain_fill =
        joined({native_chain + "=null from key-chain:delete entry", native_chain + "/chain-name=\"C1\" from name",
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
        ASSERT_EQ(walk.lines_of("tqm_strdup").size(), 1u);
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

TEST(KeyChainForward, KeyTextsOfUpTo998BytesPassAndAreShownNowhere)
{
    for (const std::size_t length : {0u, 1u, 32u, 998u, 999u, 1000u, 5000u}) {
        const std::string text(length, 'Z');
        Walk walk = edit().trace().log().questions();
        walk.forward(chain(key("<config>" + leaf("key-clear-text", text) + "</config>")));
        Lines shown = joined(joined(walk.calls, walk.traces), walk.logs);
        if (length <= 998) {
            EXPECT_EQ(walk.rc, 0u);
            const Lines built = walk.built();
            ASSERT_EQ(built.size(), 6u);
            EXPECT_EQ(built[4], key_string + "/string=!" + text);
            EXPECT_EQ(built[5], key_string + "/encryption-type=type7");
        } else {
            EXPECT_EQ(walk.rc, TQM_ERR_INVALID_REQUEST);
            EXPECT_EQ(walk.message(), "Invalid request : key-clear-text is longer than 998 bytes");
            EXPECT_EQ(walk.built().back(), native_key + "/key-id=01");
            shown.push_back(walk.request().error(walk.rc).text);
        }
        for (const std::string &line : shown) {
            EXPECT_EQ(line.find("ZZZ"), std::string::npos) << line;
        }
    }
}

TEST(KeyChainForward, Algorithms)
{
    const struct {
        const char *value;
        const char *native;
    } cases[] = {
        {"AES_128_CMAC", "aes-128-cmac"},
        {"AES_256_CMAC", "aes-256-cmac"},
        {"aes_128_cmac", "aes_128_cmac"},
        {"AES_128_CMAC_2", "AES_128_CMAC_2"},
        {"AES_256_CMAC-AND-MORE-THAN-THE-LIMIT", "AES_256_CMAC-AND-MORE-THAN-THE-LIMIT"},
    };
    for (const auto &one : cases) {
        Walk walk = edit().forward(chain(key("<config>" + leaf("cryptographic-algorithm", one.value) + "</config>")));
        EXPECT_EQ(walk.built().back(), key_string + "/cryptographic-algorithm=" + one.native);
    }
    Walk empty = edit().forward(chain(key("<config><cryptographic-algorithm/></config>")));
    EXPECT_EQ(empty.rc, 0u);
    EXPECT_EQ(empty.built().back(), native_key + "/key-id=01");
}

TEST(KeyChainForward, TheLastAddDecides)
{
    constexpr rcode failure = 0x12345678;
    const auto failed = [&](const std::string &config, unsigned int nth) {
        Walk walk = edit().trace().fault({"tqm_map_datatree_add_path", nth, failure});
        return walk.forward(chain(key("<config>" + config + "</config>")));
    };
    EXPECT_EQ(failed(leaf("key-clear-text", "k"), 1).rc, 0u); // the string; the encryption type is the last
    EXPECT_EQ(failed(leaf("key-clear-text", "k"), 2).rc, failure);
    Walk algorithm = failed(leaf("cryptographic-algorithm", "X"), 1);
    EXPECT_EQ(algorithm.rc, failure);
    EXPECT_EQ(algorithm.texts_of("ymap_ot_ocmacsec_crypto_alg_fwd"),
              (Lines{"Start", "rc = 305419896, error 0x12345678", "End"}));
}

} // namespace
