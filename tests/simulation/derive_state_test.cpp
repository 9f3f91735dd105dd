// What state follows from a configuration.
#include "simulation/derive_state.h"

#include "support.h"

#include <cstdlib>

namespace router::test
{

using enum Operation;

namespace
{

Node state(const char *branch, std::vector<Node> below)
{
    return in(ns::operational, at("oc-macsec", {at("macsec", {at(branch, std::move(below))})}));
}

Node key_with_lifetime(const char *id, std::vector<Node> leaves)
{
    return at("macsec-key", merge, {leaf("key-id", id), at("macsec-lifetime", std::move(leaves))});
}

std::vector<Node> date(const std::string &side, const char *year, const char *month)
{
    return {leaf(side + "-year", year), leaf(side + "-month", month), leaf(side + "-date", "3"),
            leaf(side + "-hour", "4"),  leaf(side + "-minutes", "5"), leaf(side + "-seconds", "6")};
}

Node algorithm(const char *name)
{
    return at("macsec-key-string", {leaf("cryptographic-algorithm", name)});
}

std::vector<Node> with(std::vector<Node> leaves, std::vector<Node> more)
{
    leaves.insert(leaves.end(), more.begin(), more.end());
    return leaves;
}

} // namespace

// Where both are seen, one interface that is configured in two forms is one all the same.
TEST(DerivedStateOfAll, NamesAnInterfaceOnce)
{
    auto setup = Setup::make(models(), {}, simulation::derive_state);
    ASSERT_TRUE(setup);
    std::string directory = ::testing::TempDir() + "simulationXXXXXX";
    ASSERT_NE(mkdtemp(directory.data()), nullptr);
    std::ofstream(directory + "/native.xml")
        << "<interface-configurations xmlns='http://tarvex.example/ns/yang/Tarvex-ifmgr-cfg'>"
           "<interface-configuration><active>act</active><interface-name>E</interface-name></interface-configuration>"
           "<interface-configuration><active>pre</active><interface-name>E</interface-name></interface-configuration>"
           "</interface-configurations>";
    auto store = Datastore::open(*setup, directory, Access::read);
    std::filesystem::remove_all(directory);
    ASSERT_TRUE(store) << store.error().text;
    TextSink sink;
    const Node filter = state("interfaces", {at("interface", {at("name", {})})});
    ASSERT_TRUE(store->read(*Trees(filter).root(), sink));
    EXPECT_EQ(sink.text, "oc-macsec{macsec{interfaces{interface{name=E } } } } ");
}

// The models with their values are the router's; what is shown of them here is all there is.
class DerivedState : public StoreTest
{
protected:
    DerivedState() : StoreTest(setup(simulation::derive_state)) {}
};

TEST_F(DerivedState, PolicyStateIsWhatIsConfiguredOrTheDefault)
{
    const std::string defaults = "confidentiality-offset=zero-bytes delay-protection=false include-icv-indicator=true ";
    const struct {
        std::vector<Node> leaves;
        std::string answer;
    } cases[] = {
        {{}, "key-server-priority=16 " + defaults + "sak-rekey-interval=0 "},
        {{leaf("sak-rekey-interval", "2")}, "key-server-priority=16 " + defaults + "sak-rekey-interval=120 "},
        {{leaf("sak-rekey-interval", "2"), leaf("sak-rekey-interval-sec", "90")},
         "key-server-priority=16 " + defaults + "sak-rekey-interval=90 "},
        {{leaf("key-server-priority", "1"), leaf("conf-offset", "conf-off-set-50"), leaf("delay-protection", ""),
          leaf("include-icv-indicator", "False"), leaf("cipher-suite", "gcm-aes-xpn-128")},
         "key-server-priority=1 confidentiality-offset=fifty-bytes delay-protection=true include-icv-indicator=false "
         "sak-rekey-interval=0 macsec-cipher-suite=gcm-aes-xpn128 "},
    };
    for (const auto &test : cases) {
        ASSERT_EQ(error_of(policies({policy("P", replace, test.leaves)})), "");
        EXPECT_EQ(read(state("mka", {at("policies", {})})),
                  "oc-macsec{macsec{mka{policies{policy{name=P state{name=P " + test.answer + "} } } } } } ");
    }
}

// By its place in the enumeration, which is the same on both sides.
TEST_F(DerivedState, ValuesHaveTheOperationalModelsNames)
{
    const struct {
        const char *leaf;
        const char *name;
        std::vector<std::pair<const char *, const char *>> values;
    } cases[] = {
        {"conf-offset",
         "confidentiality-offset",
         {{"conf-off-set-0", "zero-bytes"}, {"conf-off-set-30", "thirty-bytes"}, {"conf-off-set-50", "fifty-bytes"}}},
        {"cipher-suite",
         "macsec-cipher-suite",
         {{"gcm-aes-128", "gcm-aes128"},
          {"gcm-aes-256", "gcm-aes256"},
          {"gcm-aes-xpn-128", "gcm-aes-xpn128"},
          {"gcm-aes-xpn-256", "gcm-aes-xpn256"}}},
        {"delay-protection", "delay-protection", {{"", "true"}, {"false", "false"}, {"False", "false"}}},
        {"include-icv-indicator", "include-icv-indicator", {{"", "true"}, {"false", "false"}, {"False", "false"}}},
    };
    for (const auto &test : cases) {
        for (const auto &[configured, derived] : test.values) {
            ASSERT_EQ(error_of(policies({policy("P", replace, {leaf(test.leaf, configured)})})), "");
            EXPECT_EQ(read(state("mka", {at("policies", {at("policy", {at("state", {leaf(test.name, none)})})})})),
                      std::string("oc-macsec{macsec{mka{policies{policy{name=P state{") + test.name + "=" + derived +
                          " } } } } } } ");
        }
    }
}

TEST_F(DerivedState, KeyStateTellsStartAndEnd)
{
    setenv("TZ", "UTC", 1);
    prepare("<keychains xmlns='http://tarvex.example/ns/yang/Tarvex-lib-keychain-cfg'>"
            "<keychain><chain-name>ospf</chain-name></keychain></keychains>");
    ASSERT_EQ(error_of(chains(
                  {chain("K", merge,
                         {key_with_lifetime("01", {}),
                          key_with_lifetime("02", with(date("start", "2024", "feb"), {leaf("infinite-flag", "true")})),
                          key_with_lifetime("03", with(date("start", "2024", "feb"), date("end", "2025", "dec"))),
                          key_with_lifetime("04", with(date("start", "2024", "feb"), {leaf("life-time", "2332800")})),
                          key_with_lifetime("05", with(date("start", "9999", "dec"), {leaf("life-time", "4000000")})),
                          key_with_lifetime("06", with(date("start", "2024", "jan"), {leaf("life-time", "0")})),
                          key_with_lifetime("07", {leaf("start-year", "2024"), leaf("life-time", "60")}),
                          at("macsec-key", merge, {leaf("key-id", "08"), algorithm("aes-128-cmac")}),
                          at("macsec-key", merge, {leaf("key-id", "09"), algorithm("aes-256-cmac")})})})),
              "");
    const std::string always = "valid-date-time=VALID_IMMEDIATELY expiration-date-time=NO_EXPIRATION ";
    const std::string start = "valid-date-time=2024-02-03T04:05:06 ";
    const auto key = [](const char *id, const std::string &dates) {
        return std::string("mka-key{id=") + id + " state{id=" + id + " " + dates + "} } ";
    };
    EXPECT_EQ(read(state("mka", {at("key-chains", {})})),
              "oc-macsec{macsec{mka{key-chains{key-chain{name=K mka-keys{" + key("01", always) +
                  key("02", start + "expiration-date-time=NO_EXPIRATION ") +
                  key("03", start + "expiration-date-time=2025-12-03T04:05:06 ") +
                  key("04", start + "expiration-date-time=2024-03-01T04:05:06 ") +
                  key("05", "valid-date-time=9999-12-03T04:05:06 ") +
                  key("06", "valid-date-time=2024-01-03T04:05:06 expiration-date-time=NO_EXPIRATION ") +
                  key("07", always) + key("08", "cryptographic-algorithm=aes128-cmac " + always) +
                  key("09", "cryptographic-algorithm=aes256-cmac " + always) + "} state{name=K } } } } } } ");
}

TEST_F(DerivedState, InterfaceStateNamesItsAttachmentOnce)
{
    ASSERT_EQ(error_of(interfaces(
                  {interface("act", "Eth0", {psk(merge, {leaf("policy-name", "P"), leaf("key-chain-name", "K")})}),
                   interface("pre", "Eth0", {psk(merge)}), interface("act", "Eth1", {})})),
              "");
    EXPECT_EQ(read(state("interfaces", {})),
              "oc-macsec{macsec{interfaces{interface{name=Eth0 interfaces-state{counters{tx-untagged-pkts=0 "
              "rx-untagged-pkts=0 rx-badtag-pkts=0 rx-unknownsci-pkts=0 rx-nosci-pkts=0 } } "
              "interfaces-mka{state{counters{in-mkpdu=0 in-sak-mkpdu=0 out-mkpdu=0 out-sak-mkpdu=0 } mka-policy=P "
              "key-chain=K } } } } } } ");
}

} // namespace router::test
