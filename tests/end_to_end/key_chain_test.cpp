// Key chains from a NETCONF document to the native store and back: lifetimes, secrets, and chains that are the router's
// own.
#include <algorithm>
#include <ctime>

#include "support.h"

using namespace test;

namespace
{

const std::string secret = "5ec2e75ec2e75ec2e75ec2e75ec2e75e";

std::string key(const std::string &id, const std::string &leaves, const std::string &operation = "")
{
    const std::string attribute = operation.empty() ? "" : " nc:operation='" + operation + "'";
    return "<mka-key" + attribute + "><id>" + id + "</id><config><id>" + id + "</id>" + leaves + "</config></mka-key>";
}

std::string chain(const std::string &name, const std::string &keys, const std::string &operation = "")
{
    const std::string attribute = operation.empty() ? "" : " nc:operation='" + operation + "'";
    const std::string named = "<name>" + name + "</name>";
    return "<key-chain" + attribute + ">" + named + "<config>" + named + "</config><mka-keys>" + keys +
           "</mka-keys></key-chain>";
}

std::string in_chains(const std::string &entries, const std::string &operation = "")
{
    const std::string attribute = operation.empty() ? "" : " nc:operation='" + operation + "'";
    return "<mka><key-chains" + attribute + ">" + entries + "</key-chains></mka>";
}

std::string local_time(time_t at)
{
    char text[sizeof "2026-01-01T00:00:00"];
    struct tm local = {};
    strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%S", localtime_r(&at, &local));
    return text;
}

class KeyChain : public ToolTest
{
protected:
    std::string chains() const { return inside(get_config("<mka><key-chains/></mka>"), "key-chains"); }
    bool stored(const std::string &words) const { return compact(store_file()).find(words) != std::string::npos; }
};

TEST_F(KeyChain, TwoKeysThereAndBack)
{
    const std::string first = "<key-clear-text>" + secret +
                              "</key-clear-text>"
                              "<cryptographic-algorithm>AES_128_CMAC</cryptographic-algorithm>"
                              "<valid-date-time>VALID_IMMEDIATELY</valid-date-time>"
                              "<expiration-date-time>2031-03-04T05:06:07</expiration-date-time>";
    const std::string second = "<key-clear-text>" + secret +
                               "</key-clear-text>"
                               "<cryptographic-algorithm>AES_256_CMAC</cryptographic-algorithm>"
                               "<valid-date-time>2031-03-04T05:06:07+05:45</valid-date-time>"
                               "<expiration-date-time>NO_EXPIRATION</expiration-date-time>";
    const time_t before = time(nullptr);
    const Outcome edited = edit(in_chains(chain("KC", key("01", first) + key("0a", second))));
    const time_t after = time(nullptr);
    ASSERT_EQ(edited.status, 0) << edited.err;

    EXPECT_TRUE(stored("<string>!" + secret + "</string>"));
    EXPECT_TRUE(stored("<encryption-type>type7</encryption-type>"));
    EXPECT_TRUE(stored("<end-month>mar</end-month>"));
    EXPECT_TRUE(stored("<infinite-flag>true</infinite-flag>"));

    const std::string read = chains();
    const std::string now_tag = "<valid-date-time>";
    const std::size_t begin = read.find(now_tag);
    ASSERT_NE(begin, std::string::npos) << read;
    const std::string now = read.substr(begin + now_tag.size(), 19);
    EXPECT_GE(now, local_time(before));
    EXPECT_LE(now, local_time(after));
    EXPECT_EQ(read, chain("KC", key("01", "<cryptographic-algorithm>AES_128_CMAC</cryptographic-algorithm>"
                                          "<valid-date-time>" +
                                              now +
                                              "</valid-date-time>"
                                              "<expiration-date-time>2031-03-04T05:06:07</expiration-date-time>") +
                                    key("0a", "<cryptographic-algorithm>AES_256_CMAC</cryptographic-algorithm>"
                                              "<valid-date-time>2031-03-04T05:06:07</valid-date-time>"
                                              "<expiration-date-time>NO_EXPIRATION</expiration-date-time>")));
}

TEST_F(KeyChain, KeyTextsStandInTheStoreAlone)
{
    const std::string text = "<key-clear-text>" + secret + "</key-clear-text>";
    const auto document = [](const std::string &inside) {
        return "<config xmlns:nc='urn:ietf:params:xml:ns:netconf:base:1.0'>"
               "<macsec xmlns='http://openconfig.net/yang/macsec'>" +
               inside + "</macsec></config>";
    };
    const std::string good = document(in_chains(chain("KC", key("01", text))));
    for (const char *option : {"--trace", "--journal", "--journal-all"}) {
        const Outcome outcome = ocmap({"edit", "-", "--store", store(), option}, good);
        EXPECT_EQ(outcome.status, 0);
        EXPECT_NE(outcome.err, "");
        EXPECT_EQ(outcome.err.find(secret), std::string::npos) << option;
    }
    std::string long_key;
    while (long_key.size() < 999) {
        long_key += secret;
    }
    const std::string bad[] = {
        document(in_chains(chain("KC", key("01", "<key-clear-text>" + long_key + "</key-clear-text>")))),
        document(in_chains(chain("KC", key("01", text + "<expiration-date-time>soon</expiration-date-time>")))),
        document(in_chains(chain("KC", key("01", text + "<cryptographic-algorithm>ROT13</cryptographic-algorithm>")))),
        document(
            in_chains(chain("KC", key("01", "<key-clear-text nc:operation='merger'>" + secret + "</key-clear-text>")))),
        document(in_chains(chain("KC", key("01", "<key-clear-text>" + secret + "<x/></key-clear-text>")))),
    };
    for (const std::string &one : bad) {
        const Outcome outcome = ocmap({"edit", "-", "--store", store(), "--trace", "--journal-all"}, one);
        EXPECT_EQ(outcome.status, 1);
        EXPECT_EQ(outcome.err.find(secret), std::string::npos) << outcome.err;
        EXPECT_EQ(outcome.out, "");
    }
    EXPECT_EQ(ocmap({"get", "--store", store()}).out.find(secret), std::string::npos);
    for (const auto &file : std::filesystem::directory_iterator(store())) {
        const std::filesystem::perms open_to_others =
            std::filesystem::perms::group_all | std::filesystem::perms::others_all;
        EXPECT_EQ(file.status().permissions() & open_to_others, std::filesystem::perms::none) << file.path();
    }
}

TEST_F(KeyChain, TimesThatCannotBeAreRefused)
{
    const struct {
        const char *leaf;
        const char *value;
        const char *words;
    } cases[] = {
        {"expiration-date-time", "no_expiration", "or one of NO_EXPIRATION"},
        {"expiration-date-time", "2021-03-04T05:06", "'2021-03-04T05:06' must be"},
        {"expiration-date-time", "2021-13-04T05:06:07", "calendar"},
        {"valid-date-time", "valid_immediately", "or one of VALID_IMMEDIATELY"},
        {"valid-date-time", "2021-02-04T25:06:07", "calendar"},
        {"valid-date-time", "2030-02-30T00:00:00", "calendar"},
        {"valid-date-time", "2030-02-03T00:00:00 or so", "must be"},
        {"valid-date-time", "1960-01-01T00:00:00", "native: /keychains/keychain[chain-name='KC']/macsec-keychain/"},
    };
    for (const auto &one : cases) {
        const std::string tag = one.leaf;
        const Outcome outcome = edit(in_chains(chain("KC", key("01", "<" + tag + ">" + one.value + "</" + tag + ">"))));
        EXPECT_EQ(outcome.status, 1) << one.value;
        EXPECT_NE(outcome.err.find(one.words), std::string::npos) << outcome.err;
        EXPECT_EQ(store_file(), "");
    }
}

TEST_F(KeyChain, ChainsOfTheRoutersOwnAreOutOfReach)
{
    const std::string own = "<keychain><chain-name>OSPF</chain-name><accept-tolerance><value>5</value>"
                            "</accept-tolerance></keychain>";
    const std::string ours = "<keychain><chain-name>KC</chain-name><macsec-keychain><macsec-keys><macsec-key>"
                             "<key-id>01</key-id></macsec-key></macsec-keys></macsec-keychain></keychain>";
    const auto reset = [&] {
        std::filesystem::create_directories(store());
        write_file(path("store") / "native.xml",
                   "<config xmlns='urn:ietf:params:xml:ns:netconf:base:1.0'><keychains xmlns="
                   "'http://tarvex.example/ns/yang/Tarvex-lib-keychain-cfg'>" +
                       own + ours + "</keychains></config>");
    };
    reset();
    EXPECT_EQ(chains(), chain("KC", key("01", "")));

    const std::string all[] = {
        in_chains("", "delete"),
        in_chains("", "replace"),
        "<mka nc:operation='delete'/>",
        "<mka nc:operation='replace'/>",
        in_chains("<key-chain nc:operation='delete'><name>KC</name></key-chain>"),
    };
    for (const std::string &edits : all) {
        reset();
        const Outcome outcome = edit(edits);
        EXPECT_EQ(outcome.status, 0) << edits << outcome.err;
        EXPECT_EQ(chains(), "") << edits;
        EXPECT_TRUE(stored(own)) << edits;
    }
    reset();
    const std::string before = store_file();
    const auto on_own = [&](const std::string &operation) {
        return edit(in_chains("<key-chain nc:operation='" + operation + "'><name>OSPF</name></key-chain>"));
    };
    EXPECT_NE(on_own("delete").err.find("data-missing"), std::string::npos);
    EXPECT_EQ(on_own("remove").status, 0);
    EXPECT_NE(on_own("merge").err.find("belongs to the router"), std::string::npos);
    EXPECT_NE(on_own("create").err.find("belongs to the router"), std::string::npos);
    EXPECT_EQ(on_own("replace").status, 1);
    EXPECT_EQ(edit(in_chains(chain("OSPF", key("02", "")))).status, 1);
    EXPECT_EQ(store_file(), before);
}

TEST_F(KeyChain, TheExamplesDoWhatTheySay)
{
    const auto apply = [&](const std::string &name) {
        const Outcome outcome = ocmap({"edit", std::string(EXAMPLES) + "/key-chains/" + name, "--store", store()});
        EXPECT_EQ(outcome.status, 0) << name << ": " << outcome.err;
    };
    apply("create.xml");
    EXPECT_NE(chains().find("<expiration-date-time>NO_EXPIRATION<"), std::string::npos);
    apply("rotate.xml");
    EXPECT_NE(chains().find("<expiration-date-time>2027-01-01T00:00:00</expiration-date-time></config></mka-key>"
                            "<mka-key><id>02</id>"),
              std::string::npos);
    apply("expire.xml");
    EXPECT_NE(chains().find("<expiration-date-time>2028-01-01T00:00:00<"), std::string::npos);
    EXPECT_TRUE(stored("<string>!fedcba9876543210"));
    apply("delete-key.xml");
    EXPECT_EQ(chains().find("<id>01</id>"), std::string::npos);
    EXPECT_NE(chains().find("<id>02</id>"), std::string::npos);
    apply("delete-chain.xml");
    EXPECT_EQ(chains(), "");
}

} // namespace
