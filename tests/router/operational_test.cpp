// Operational data: what follows from the configuration, and what a document puts in its place.
#include "support.h"

#include <regex>

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

std::vector<Node> with(std::vector<Node> leaves, std::vector<Node> more)
{
    leaves.insert(leaves.end(), more.begin(), more.end());
    return leaves;
}

} // namespace

class Operational : public StoreTest
{
};

TEST_F(Operational, PolicyStateIsWhatIsConfiguredOrTheDefault)
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

TEST_F(Operational, KeyStateTellsStartAndEnd)
{
    setenv("TZ", "UTC", 1);
    prepare("<keychains xmlns='http://tarvex.example/ns/yang/Tarvex-lib-keychain-cfg'>"
            "<keychain><chain-name>ospf</chain-name></keychain></keychains>");
    ASSERT_EQ(error_of(chains({chain(
                  "K", merge,
                  {key_with_lifetime("01", {}),
                   key_with_lifetime("02", with(date("start", "2024", "feb"), {leaf("infinite-flag", "true")})),
                   key_with_lifetime("03", with(date("start", "2024", "feb"), date("end", "2025", "dec"))),
                   key_with_lifetime("04", with(date("start", "2024", "feb"), {leaf("life-time", "2332800")}))})})),
              "");
    const std::string start = "valid-date-time=2024-02-03T04:05:06 ";
    const auto key = [](const char *id, const std::string &dates) {
        return std::string("mka-key{id=") + id + " state{id=" + id + " " + dates + "} } ";
    };
    EXPECT_EQ(read(state("mka", {at("key-chains", {})})),
              "oc-macsec{macsec{mka{key-chains{key-chain{name=K mka-keys{" +
                  key("01", "valid-date-time=VALID_IMMEDIATELY expiration-date-time=NO_EXPIRATION ") +
                  key("02", start + "expiration-date-time=NO_EXPIRATION ") +
                  key("03", start + "expiration-date-time=2025-12-03T04:05:06 ") +
                  key("04", start + "expiration-date-time=2024-03-01T04:05:06 ") + "} state{name=K } } } } } } ");
}

TEST_F(Operational, InterfaceStateNamesItsAttachmentOnce)
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

TEST_F(Operational, StateOfADocumentTakesThePlaceOfAllThatIsDerived)
{
    ASSERT_EQ(error_of(policies({policy("P", merge)})), "");
    auto store = open();
    const std::string bare = "<oc-macsec xmlns='http://tarvex.example/ns/yang/Tarvex-PRIVATE-oc-macsec-oper'><macsec>"
                             "<mka><policies><policy><name>Q</name><state>"
                             "<macsec-cipher-suite>gcm-aes256</macsec-cipher-suite>"
                             "<macsec-cipher-suite>gcm-aes128</macsec-cipher-suite>"
                             "</state></policy></policies></mka></macsec></oc-macsec>";
    std::string prefixed = std::regex_replace(bare, std::regex("(</?)(\\w)"), "$1o:$2");
    prefixed = std::regex_replace(prefixed, std::regex(" xmlns='[^']*'"), "");
    const std::string base = "'urn:ietf:params:xml:ns:netconf:base:1.0'";
    const std::string operational = " xmlns:o='http://tarvex.example/ns/yang/Tarvex-PRIVATE-oc-macsec-oper'";
    for (const std::string &document :
         {bare, "<data>" + bare + "</data>", "\xef\xbb\xbf" + bare, "<data" + operational + ">" + prefixed + "</data >",
          "<nc:rpc-reply xmlns:nc=" + base + " message-id='>\"1'" + operational + "><!-- </nc:data> -->\n<nc:data>" +
              prefixed + "<!-- </nc:data> --></nc:data><?pi </nc:data>?></nc:rpc-reply>\n<!--</nc:rpc-reply>-->",
          "<rpc-reply xmlns=" + base + " xmlns:o='urn:x'><data" + operational + ">" +
              std::regex_replace(prefixed, std::regex(">Q<"), "><![CDATA[Q]]><") + "</data></rpc-reply>",
          std::string(R"({"ietf-netconf:rpc-reply": {"message-id": "1", "data": {
            "Tarvex-PRIVATE-oc-macsec-oper:oc-macsec": {"macsec": {"mka": {"policies": {"policy": [{"name": "Q",
            "state": {"macsec-cipher-suite": ["gcm-aes256", "gcm-aes128"]}}]}}}}}}})")}) {
        const auto taken = store->set_operational(document);
        ASSERT_TRUE(taken) << document << ": " << taken.error().text;
        TextSink sink;
        const Node filter =
            state("mka", {at("policies", {at("policy", {at("state", {leaf("macsec-cipher-suite", none)})})})});
        ASSERT_TRUE(store->read(*Trees(filter).root(), sink));
        EXPECT_EQ(sink.text, "oc-macsec{macsec{mka{policies{policy{name=Q state{macsec-cipher-suite=gcm-aes256 "
                             "macsec-cipher-suite=gcm-aes128 } } } } } } ");
    }
    for (const std::string &wrong : std::vector<std::string>{
             "", "<oc-macsec", "<oc-macsec xmlns='urn:other'/>",
             "<macsec xmlns='http://tarvex.example/ns/yang/Tarvex-crypto-macsec-mka-cfg'/>", "<data/><data/>",
             "<data/>text", "<!DOCTYPE data><data/>", "<data><o:oc-macsec/></data>", "<rpc-reply><ok/></rpc-reply>",
             "<rpc-reply><rpc-error/><data/></rpc-reply>", "<rpc-reply/>",
             R"({"ietf-netconf:rpc-reply": {"ok": [null]}})", "{} trailing",
             "{\"ietf-netconf:data\": {}, this is no JSON }",
             "{\"ietf-netconf:data\": {}, \"Tarvex-PRIVATE-oc-macsec-oper:oc-macsec\": {}}",
             std::string("{}\0 and more", 11)}) {
        const auto result = store->set_operational(wrong);
        ASSERT_FALSE(result) << wrong;
        EXPECT_TRUE(result.error().text.starts_with("the operational data are not valid: ")) << result.error().text;
    }
    EXPECT_EQ(content().find("gcm-aes256"), std::string::npos) << "state is not stored";
}

} // namespace router::test
