// Reads: which entries and leaves a filter chooses, and what always comes along.
#include "support.h"

namespace router::test
{

using enum Operation;

class Reading : public StoreTest
{
protected:
    Reading()
    {
        prepare("<config><keychains xmlns='http://tarvex.example/ns/yang/Tarvex-lib-keychain-cfg'>"
                "<keychain><chain-name>K1</chain-name><macsec-keychain><macsec-keys>"
                "<macsec-key><key-id>01</key-id><macsec-key-string><string>!a</string></macsec-key-string>"
                "<macsec-lifetime><infinite-flag>true</infinite-flag></macsec-lifetime></macsec-key>"
                "<macsec-key><key-id>02</key-id></macsec-key></macsec-keys></macsec-keychain></keychain>"
                "<keychain><chain-name>K2</chain-name><macsec-keychain/></keychain>"
                "<keychain><chain-name>ospf</chain-name></keychain></keychains>"
                "<interface-configurations xmlns='http://tarvex.example/ns/yang/Tarvex-ifmgr-cfg'>"
                "<interface-configuration><active>act</active><interface-name>Eth0</interface-name>"
                "<description>up</description><macsec "
                "xmlns='http://tarvex.example/ns/yang/Tarvex-crypto-macsec-mka-if-cfg'>"
                "<psk-key-chain><policy-name>P</policy-name></psk-key-chain></macsec></interface-configuration>"
                "<interface-configuration><active>act</active><interface-name>Eth1</interface-name>"
                "<macsec xmlns='http://tarvex.example/ns/yang/Tarvex-crypto-macsec-mka-if-cfg'><eap><policyname>P"
                "</policyname></eap></macsec></interface-configuration></interface-configurations></config>");
    }
};

TEST_F(Reading, GivesTheEntriesAndLeavesThatTheFilterChooses)
{
    const Node key_id = leaf("key-id", none);
    const Node lifetime = at("macsec-lifetime", {leaf("infinite-flag", none)});
    const std::string k1_whole = "keychain{chain-name=K1 macsec-keychain{macsec-keys{macsec-key{key-id=01 "
                                 "macsec-key-string{string=!a } macsec-lifetime{infinite-flag=true } } "
                                 "macsec-key{key-id=02 } } } } ";
    const struct {
        const char *title;
        Node filter;
        std::string answer;
    } cases[] = {
        {"all", chains({}), "keychains{" + k1_whole + "keychain{chain-name=K2 macsec-keychain{} } } "},
        {"one entry, by its key alone", chains({at("keychain", {leaf("chain-name", "K1")})}),
         "keychains{keychain{chain-name=K1 macsec-keychain{} } } "},
        {"one entry of the router's own", chains({at("keychain", {leaf("chain-name", "ospf")})}), ""},
        {"an entry that is not there", chains({at("keychain", {leaf("chain-name", "K9")})}), ""},
        {"a leaf of the keys of all chains, whatever value the filter has for it",
         chains({at("keychain",
                    {at("macsec-keychain",
                        {at("macsec-keys", {at("macsec-key", {at("macsec-lifetime",
                                                                 {leaf("infinite-flag", "NO_EXPIRATION")})})})})})}),
         "keychains{keychain{chain-name=K1 macsec-keychain{macsec-keys{macsec-key{key-id=01 "
         "macsec-lifetime{infinite-flag=true } } macsec-key{key-id=02 } } } } "
         "keychain{chain-name=K2 macsec-keychain{} } } "},
        {"two filters for one entry",
         chains({chain("K1", none, {at("macsec-key", {leaf("key-id", "01"), lifetime})}),
                 chain("K1", none, {at("macsec-key", {leaf("key-id", "02")})})}),
         "keychains{keychain{chain-name=K1 macsec-keychain{macsec-keys{macsec-key{key-id=01 "
         "macsec-lifetime{infinite-flag=true } } macsec-key{key-id=02 } } } } } "},
        {"a node that no model has", chains({at("keychain", {leaf("chain-name", "K2"), at("colour", {})})}),
         "keychains{keychain{chain-name=K2 macsec-keychain{} } } "},
        {"interfaces by name alone", interfaces({interface("", "Eth0", {leaf("description", none)})}),
         "interface-configurations{interface-configuration{active=act interface-name=Eth0 description=up "
         "macsec{psk-key-chain{} } } } "},
        {"interfaces without MACsec by name", interfaces({interface("", "Eth1", {})}), ""},
        {"interfaces in use", interfaces({at("interface-configuration", {leaf("active", "act"), psk(none)})}),
         "interface-configurations{interface-configuration{active=act interface-name=Eth0 "
         "macsec{psk-key-chain{policy-name=P } } } } "},
        {"a model without data", policies({}), ""},
    };
    for (const auto &test : cases) {
        EXPECT_EQ(read(test.filter), test.answer) << test.title;
    }
}

TEST(Setup, SaysWhichNodeOfItsRecordsIsNotThere)
{
    const std::string list = "/interface-configurations/interface-configuration";
    const struct {
        Visibility record;
        std::string path;
    } cases[] = {
        {{ns::interfaces, "/interface-configurations/interface", "macsec", {}, ""},
         "/interface-configurations/interface"},
        {{ns::keychains, list, "macsec", {}, ""}, list},
        {{"urn:none", list, "macsec", {}, ""}, list},
        {{ns::interfaces, "/interface-configurations", "interface-configuration", {}, ""}, "/interface-configurations"},
        {{ns::interfaces, list, "macsec/psk", {}, ""}, list + "/macsec/psk"},
        {{ns::interfaces, list, "macsec", {{"description", "x"}}, ""}, list + "/description"},
        {{ns::interfaces, list, "macsec", {{"colour", "x"}}, ""}, list + "/colour"},
    };
    for (const auto &test : cases) {
        const auto made = Setup::make(models(), {test.record});
        ASSERT_FALSE(made) << test.path;
        EXPECT_EQ(made.error().path, test.path);
    }
}

} // namespace router::test
