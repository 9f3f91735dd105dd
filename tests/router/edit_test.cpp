// Edits: what each operation does to what is there, which entries an edit means, and what the router refuses.
#include "support.h"

namespace router::test
{

using enum Operation;

namespace
{

Node all_policies()
{
    return in(ns::policies, at("macsec", {}));
}
Node all_chains()
{
    return in(ns::keychains, at("keychains", {}));
}
Node all_interfaces()
{
    return in(ns::interfaces, at("interface-configurations", {}));
}

Node key(const char *id, Operation operation = merge, std::vector<Node> children = {})
{
    children.insert(children.begin(), leaf("key-id", id));
    return at("macsec-key", operation, std::move(children));
}

const std::string foreign_chain =
    "<keychains xmlns='http://tarvex.example/ns/yang/Tarvex-lib-keychain-cfg'>"
    "<keychain><chain-name>ospf</chain-name><keys><key><key-id>01</key-id></key></keys></keychain></keychains>";
const std::string plain_interface =
    "<interface-configurations xmlns='http://tarvex.example/ns/yang/Tarvex-ifmgr-cfg'>"
    "<interface-configuration><active>act</active><interface-name>Eth0</interface-name>"
    "<description>uplink</description></interface-configuration></interface-configurations>";

} // namespace

class Editing : public StoreTest
{
};

TEST_F(Editing, AppliesEachOperationToWhatIsThereAndWhatIsNot)
{
    const struct {
        const char *title;
        Node tree;
        std::string error; // its beginning
        std::string after; // within policy-names; unchanged after an error
    } cases[] = {
        {"merge sets a leaf", policies({policy("P1", merge, {leaf("key-server-priority", "7")})}), "",
         "policy-name{name=P1 key-server-priority=7 conf-offset=conf-off-set-30 } "},
        {"create of an entry that is there", policies({policy("P1", create)}), "exists: /macsec/policy-names", ""},
        {"create of a leaf that is there",
         policies({policy("P1", none, {leaf("conf-offset", "conf-off-set-0", create)})}),
         "exists: /macsec/policy-names/policy-name[name='P1']/conf-offset", ""},
        {"create of a leaf", policies({policy("P1", none, {leaf("cipher-suite", "gcm-aes-128", create)})}), "",
         "policy-name{name=P1 key-server-priority=5 conf-offset=conf-off-set-30 cipher-suite=gcm-aes-128 } "},
        {"replace of an entry", policies({policy("P1", replace, {leaf("cipher-suite", "gcm-aes-128")})}), "",
         "policy-name{name=P1 cipher-suite=gcm-aes-128 } "},
        {"delete of a leaf", policies({policy("P1", none, {leaf("conf-offset", delete_)})}), "",
         "policy-name{name=P1 key-server-priority=5 } "},
        {"delete of a leaf that is not there", policies({policy("P1", none, {leaf("cipher-suite", delete_)})}),
         "missing: /macsec/policy-names/policy-name[name='P1']/cipher-suite", ""},
        {"remove of a leaf that is not there", policies({policy("P1", none, {leaf("cipher-suite", remove)})}), "",
         "policy-name{name=P1 key-server-priority=5 conf-offset=conf-off-set-30 } "},
        {"delete of an entry that is not there", policies({policy("P2", delete_)}),
         "missing: /macsec/policy-names/policy-name[name='P2']", ""},
        {"remove of an entry that is not there", policies({policy("P2", remove)}), "",
         "policy-name{name=P1 key-server-priority=5 conf-offset=conf-off-set-30 } "},
        {"a way through an entry that is not there", policies({policy("P2", none, {leaf("cipher-suite", delete_)})}),
         "missing: /macsec/policy-names/policy-name[name='P2']", ""},
        {"a way to what is removed, through an entry that is not there",
         policies({policy("P2", none, {leaf("cipher-suite", remove)})}), "",
         "policy-name{name=P1 key-server-priority=5 conf-offset=conf-off-set-30 } "},
        {"delete of an entry, whatever its leaves say",
         policies({policy("P1", delete_, {leaf("conf-offset", "conf-off-set-0")})}), "", ""},
        {"remove of the key that names the entry", policies({at("policy-name", merge, {leaf("name", "P1", remove)})}),
         "", "policy-name{name=P1 key-server-priority=5 conf-offset=conf-off-set-30 } "},
        {"delete that a later entry takes back",
         policies({policy("P1", delete_), policy("P1", merge, {leaf("key-server-priority", "1")})}), "",
         "policy-name{name=P1 key-server-priority=1 } "},
        {"an entry with all kinds of leaves",
         policies(
             {policy("P1", remove),
              policy("P2", merge,
                     {leaf("created", ""), leaf("cipher-suite", "gcm-aes-xpn-256"), leaf("delay-protection", merge),
                      leaf("include-icv-indicator", "false"), leaf("sak-rekey-interval-sec", "60", none)})}),
         "",
         "policy-name{name=P2 created= delay-protection= sak-rekey-interval-sec=60 cipher-suite=gcm-aes-xpn-256 "
         "include-icv-indicator=false } "},
        {"an entry without keys, for all that are there",
         policies({policy("P2", merge), at("policy-name", merge, {leaf("key-server-priority", "1")})}), "",
         "policy-name{name=P1 key-server-priority=1 conf-offset=conf-off-set-30 } policy-name{name=P2 "
         "key-server-priority=1 } "},
        {"delete of all entries", policies({at("policy-name", delete_, {})}), "", ""},
        {"create without keys", policies({at("policy-name", create, {})}),
         "missing key: /macsec/policy-names/policy-name", ""},
        {"a fault in the last node",
         policies({policy("P1", delete_), policy("P2", merge, {leaf("conf-offset", "none")})}),
         "bad value: /macsec/policy-names/policy-name[name='P2']/conf-offset", ""},
        {"a leaf without value and operation", policies({policy("P1", none, {leaf("conf-offset", none)})}), "",
         "policy-name{name=P1 key-server-priority=5 conf-offset=conf-off-set-30 } "},
    };
    for (const auto &test : cases) {
        SCOPED_TRACE(test.title);
        std::filesystem::remove(file());
        auto store = open();
        ASSERT_EQ(
            error_of(*store,
                     policies({policy("P1", merge,
                                      {leaf("key-server-priority", "5"), leaf("conf-offset", "conf-off-set-30")})})),
            "");
        const std::string before = read(*store, all_policies());
        const std::string error = error_of(*store, test.tree);
        EXPECT_TRUE(error.starts_with(test.error) && error.empty() == test.error.empty()) << error;
        const std::string after = test.after.empty() ? "" : "macsec{policy-names{" + test.after + "} } ";
        EXPECT_EQ(read(*store, all_policies()), test.error.empty() ? after : before) << "in memory";
        EXPECT_EQ(read(all_policies()), test.error.empty() ? after : before) << "in the file";
    }
}

TEST_F(Editing, RefusesAValueByNamingPlaceValueAndRule)
{
    const auto key_with = [](Node child) {
        return chains({chain("K", merge, {key("01", merge, {std::move(child)})})});
    };
    const auto lifetime = [&](const char *name, const char *value) {
        return key_with(at("macsec-lifetime", {leaf(name, value)}));
    };
    const struct {
        Node tree;
        std::vector<std::string> parts;
    } cases[] = {
        {lifetime("start-month", "NA"), {"macsec-key[key-id='01']/macsec-lifetime/start-month", "'NA'", "jan, feb"}},
        {lifetime("end-hour", "25"), {"end-hour", "'25'", "0..23"}},
        {policies({policy("P", merge, {leaf("sak-rekey-interval-sec", "29")})}), {"'29'", "0, 30..65535"}},
        {policies({policy("P", merge, {leaf("delay-protection", "maybe")})}), {"'maybe'", "empty, or one of false"}},
        {policies({policy("P", merge, {leaf("cipher-suite", merge)})}), {"cipher-suite", "no value", "gcm-aes-128"}},
        {chains({chain("K", merge, {key("xyz")})}), {"key-id", "'xyz'", "[0-9a-fA-F]*"}},
        {policies({policy("a\x01z", merge)}), {"policy-name/name", "XML"}},
        {policies({policy("a\rz", merge)}), {"policy-name/name", "XML"}},
        {policies({policy("P", merge, {leaf("colour", "red")})}), {"unknown node", "policy-name[name='P']/colour"}},
        {in(ns::operational, at("oc-macsec", merge, {})), {"not supported", "/oc-macsec"}},
    };
    for (const auto &test : cases) {
        const std::string error = error_of(test.tree);
        for (const std::string &part : test.parts) {
            EXPECT_NE(error.find(part), std::string::npos) << "'" << part << "' in: " << error;
        }
        EXPECT_FALSE(std::filesystem::exists(file()));
    }
}

TEST_F(Editing, NeverShowsKeyTextInAnError)
{
    for (const std::string text : {"!s3cr\x02t", "!s3cr\xff"}) {
        const std::string error = error_of(
            chains({chain("K", merge, {key("01", merge, {at("macsec-key-string", {leaf("string", text)})})})}));
        EXPECT_NE(error.find("macsec-key-string/string"), std::string::npos) << error;
        EXPECT_EQ(error.find("s3cr"), std::string::npos) << error;
    }
}

// The end of a lifetime, and the rekey interval in its two units, are one setting each.
TEST_F(Editing, LetsTheCasesOfAChoiceTakeOneAnothersPlace)
{
    const auto lifetime = [](std::vector<Node> leaves) {
        return chains({chain("K", merge, {key("01", merge, {at("macsec-lifetime", std::move(leaves))})})});
    };
    const Node infinite = leaf("infinite-flag", "true", merge);
    const std::vector<Node> date = {leaf("end-year", "2030", merge), leaf("end-month", "jan", merge)};
    const struct {
        std::vector<Node> before;
        std::vector<Node> edit;
        std::string after;
    } cases[] = {
        {{infinite}, date, "end-month=jan end-year=2030 "},
        {date, {infinite}, "infinite-flag=true "},
        {date, {leaf("life-time", remove), infinite, leaf("end-year", remove)}, "infinite-flag=true "},
        {date, {leaf("infinite-flag", delete_)}, ""},
        {{leaf("life-time", "60", merge)},
         {leaf("end-year", remove), leaf("start-year", "2029", merge)},
         "start-year=2029 "},
    };
    for (const auto &test : cases) {
        std::filesystem::remove(file());
        auto store = open();
        ASSERT_EQ(error_of(*store, lifetime(test.before)), "");
        EXPECT_EQ(error_of(*store, lifetime(test.edit)), "");
        const std::string rest = test.after.empty() ? "" : "macsec-lifetime{" + test.after + "} ";
        EXPECT_EQ(read(*store, all_chains()), "keychains{keychain{chain-name=K macsec-keychain{macsec-keys{macsec-key{"
                                              "key-id=01 " +
                                                  rest + "} } } } } ");
        const Node whole = chains({chain("K", none, {key("01", none, {at("macsec-lifetime", delete_, {})})})});
        EXPECT_EQ(error_of(*store, whole).substr(0, 8), test.after.empty() ? "missing:" : "")
            << "an empty container goes";
    }
}

// What a replace above a list makes of it: all entries go, but those that it names keep what is the router's own.
TEST_F(Editing, SparesTheEntriesThatItNamesFromARemovalOfAll)
{
    ASSERT_EQ(error_of(policies({policy("P1", merge, {leaf("windowsize", "7"), leaf("conf-offset", "conf-off-set-0")}),
                                 policy("P2", merge, {leaf("windowsize", "8")})})),
              "");
    const Node all = at("policy-name", remove, {leaf("conf-offset", remove), leaf("cipher-suite", remove)});
    EXPECT_EQ(error_of(policies({all, policy("P1", merge, {leaf("cipher-suite", "gcm-aes-128")})})), "");
    EXPECT_EQ(read(all_policies()),
              "macsec{policy-names{policy-name{name=P1 cipher-suite=gcm-aes-128 windowsize=7 } } } ");
}

TEST_F(Editing, AppliesAnEntryWithOneOfTwoKeysToThoseThatAgree)
{
    ASSERT_EQ(error_of(interfaces({interface("act", "Eth0", {psk(merge)}), interface("pre", "Eth0", {psk(merge)}),
                                   interface("act", "Eth1", {psk(merge)})})),
              "");
    EXPECT_EQ(error_of(interfaces({interface("", "Eth0", {psk(delete_)})})), "");
    EXPECT_EQ(read(all_interfaces()),
              "interface-configurations{interface-configuration{active=act interface-name=Eth1 macsec{psk-key-chain{} "
              "} } } ");
    EXPECT_NE(content().find("Eth0"), std::string::npos) << "the interfaces themselves stay";

    const std::string before = content();
    EXPECT_EQ(error_of(interfaces({interface("", "Eth7", {psk(merge)})})), "") << "makes no entry";
    EXPECT_EQ(content(), before);
}

TEST_F(Editing, FindsEntriesByOneKeyThatTheSameEditMadeAndUnmade)
{
    ASSERT_EQ(error_of(interfaces({interface("act", "Eth0", {psk(merge)})})), "");
    EXPECT_EQ(error_of(interfaces({
                  interface("", "Eth0", {psk(none, {leaf("policy-name", "P1")})}),
                  at("interface-configuration", delete_, {leaf("active", "act"), leaf("interface-name", "Eth0")}),
                  interface("act", "Eth0", {psk(merge)}),
                  interface("", "Eth0", {psk(none, {leaf("policy-name", "P2")})}),
              })),
              "");
    EXPECT_EQ(read(all_interfaces()), "interface-configurations{interface-configuration{active=act interface-name=Eth0 "
                                      "macsec{psk-key-chain{policy-name=P2 } } } } ");
}

TEST_F(Editing, KeepsAwayFromKeyChainsOfTheRouter)
{
    prepare(foreign_chain);
    const std::string before = content();
    for (const Operation operation : {merge, create, replace}) {
        EXPECT_NE(error_of(chains({chain("ospf", operation, {key("01")})})).find("it is the router's own"),
                  std::string::npos);
    }
    for (const Operation operation : {delete_, none}) {
        EXPECT_TRUE(error_of(chains({chain("ospf", operation, {key("01")})})).starts_with("missing: "));
    }
    EXPECT_EQ(error_of(chains({chain("ospf", remove)})), "");
    EXPECT_EQ(error_of(chains({at("keychain", remove, {})})), "");
    EXPECT_EQ(error_of(chains({at("keychain", merge, {at("accept-tolerance", {leaf("value", "1")})})})), "");
    EXPECT_TRUE(error_of(chains({at("keychain", delete_, {})})).starts_with("missing: "));
    EXPECT_EQ(content(), before);

    ASSERT_EQ(error_of(chains({chain("K1", merge, {key("01")})})), "");
    ASSERT_EQ(error_of(chains({at("keychain", delete_, {})})), "");
    EXPECT_EQ(read(all_chains()), "");
    EXPECT_NE(content().find("ospf"), std::string::npos);
}

TEST_F(Editing, AttachesMacsecToAnInterfaceAndLeavesTheRestOfIt)
{
    prepare(plain_interface);
    const Node whole = at("interface-configuration", delete_, {leaf("active", "act"), leaf("interface-name", "Eth0")});
    EXPECT_TRUE(error_of(interfaces({whole})).starts_with("missing: "));
    Node attached = interface("act", "Eth0", {psk(none, {leaf("key-chain-name", "K1", merge)})});
    ASSERT_EQ(error_of(interfaces({attached})), "");
    attached.operation = create;
    EXPECT_TRUE(error_of(interfaces({attached})).starts_with("exists: "));
    EXPECT_EQ(read(all_interfaces()),
              "interface-configurations{interface-configuration{active=act interface-name=Eth0 description=uplink "
              "macsec{psk-key-chain{key-chain-name=K1 } } } } ");
    ASSERT_EQ(error_of(interfaces({interface("", "Eth0", {psk(remove)})})), "");
    EXPECT_EQ(read(all_interfaces()), "");
    EXPECT_NE(content().find("uplink"), std::string::npos);
    EXPECT_EQ(content().find("Tarvex-crypto-macsec-mka-if-cfg"), std::string::npos) << "no empty container stays";
}

} // namespace router::test
