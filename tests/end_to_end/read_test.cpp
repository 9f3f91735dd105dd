// Reads of MKA policies, and the commands that need no store.
#include <algorithm>
#include <sstream>

#include "support.h"

using namespace test;

namespace
{

class Read : public ToolTest
{
protected:
    void SetUp() override
    {
        ToolTest::SetUp();
        const Outcome edited = edit(in_policies(policy("P1", "<key-server-priority>10</key-server-priority>"
                                                             "<macsec-cipher-suite>GCM_AES_128</macsec-cipher-suite>") +
                                                policy("P2", "<key-server-priority>20</key-server-priority>"
                                                             "<delay-protection>true</delay-protection>")));
        ASSERT_EQ(edited.status, 0) << edited.err;
    }

    // What the filter inside `policies` selects there.
    std::string selected(const std::string &filter)
    {
        return inside(get_config("<mka><policies>" + filter + "</policies></mka>"), "policies");
    }
};

TEST_F(Read, FiltersSelectWhatTheyNameAndNoMore)
{
    const std::string p1 = policy("P1", "<key-server-priority>10</key-server-priority>"
                                        "<macsec-cipher-suite>GCM_AES_128</macsec-cipher-suite>");
    const std::string p2 = policy("P2", "<key-server-priority>20</key-server-priority>"
                                        "<delay-protection>true</delay-protection>");
    const struct {
        const char *filter;
        std::string answer;
    } cases[] = {
        {"", p1 + p2},
        {"<policy><name>P2</name></policy>", p2},
        {"<policy><name>P9</name></policy>", ""},
        {"<policy><name/></policy>", "<policy><name>P1</name></policy><policy><name>P2</name></policy>"},
        {"<policy><name>P1</name><config><macsec-cipher-suite/></config></policy>",
         "<policy><name>P1</name><config><macsec-cipher-suite>GCM_AES_128</macsec-cipher-suite></config></policy>"},
        {"<policy><config><key-server-priority>20</key-server-priority></config></policy>", p2},
        {"<policy><config><key-server-priority>20</key-server-priority><name/></config></policy>",
         "<policy><name>P2</name><config><name>P2</name><key-server-priority>20</key-server-priority></config>"
         "</policy>"},
        {"<policy><config><delay-protection/></config></policy>",
         "<policy><name>P2</name><config><delay-protection>true</delay-protection></config></policy>"},
        {"<policy><name>P2</name></policy><policy><name>P1</name><config><name/></config></policy>",
         p2 + "<policy><name>P1</name><config><name>P1</name></config></policy>"},
        {"<policy><nonsense/></policy>", ""},
        // Content matches alone select all siblings, also one on a leaf-list.
        {"<policy><config><macsec-cipher-suite>GCM_AES_128</macsec-cipher-suite></config></policy>", p1},
        // A content match decides for what stands beside it, and for nothing else.
        {"<policy><name>P1</name><config><key-server-priority>20</key-server-priority></config>"
         "<config><name/></config></policy>",
         "<policy><name>P1</name><config><name>P1</name></config></policy>"},
        {"<policy><name>P1</name><config><key-server-priority>20</key-server-priority></config></policy>"
         "<policy><name>P9</name></policy><policy><config><delay-protection/></config></policy>",
         "<policy><name>P1</name></policy>"
         "<policy><name>P2</name><config><delay-protection>true</delay-protection></config></policy>"},
        {"<policy><config><key-server-priority>10</key-server-priority><name>P2</name></config></policy>", ""},
        {"<policy><name/><config><name>P1</name><delay-protection/></config>"
         "<config><key-server-priority>20</key-server-priority><name/></config></policy>",
         "<policy><name>P1</name><config><name>P1</name></config></policy>"
         "<policy><name>P2</name><config><name>P2</name><key-server-priority>20</key-server-priority></config>"
         "</policy>"},
        // An element of another model selects nothing, whatever its name.
        {"<policy><name>P1</name><config xmlns='urn:x'><use-updated-eth-header/></config></policy>",
         "<policy><name>P1</name></policy>"},
        // An element without a namespace is meant in every namespace.
        {"<policy xmlns=''><name>P2</name></policy>", p2},
    };
    for (const auto &one : cases) {
        EXPECT_EQ(selected(one.filter), one.answer) << one.filter;
    }
}

TEST_F(Read, EachTopElementOfAFilterSelectsForItself)
{
    const auto top = [](const std::string &entry) {
        return "<macsec xmlns='http://openconfig.net/yang/macsec'>" + in_policies(entry) + "</macsec>";
    };
    const auto read = [&](const char *command, const std::string &tops) {
        return ocmap({command, "-", "--store", store()}, "<filter>" + tops + "</filter>");
    };
    const std::string other = "<interfaces xmlns='urn:x'><macsec/></interfaces><macsec xmlns='urn:x'/>";
    EXPECT_EQ(inside(read("get-config", top("<policy><name>P9</name></policy>") + other +
                                            top("<policy><name>P2</name><config><name/></config></policy>") +
                                            top("<policy><name/></policy>")),
                     "policies"),
              "<policy><name>P2</name><config><name>P2</name></config></policy><policy><name>P1</name></policy>");
    const std::string nothing = "<data xmlns=\"urn:ietf:params:xml:ns:netconf:base:1.0\"/>\n";
    for (const char *command : {"get", "get-config"}) {
        EXPECT_EQ(read(command, other).out, nothing);
    }
    EXPECT_EQ(ocmap({"get-config", "-", "--store", store()},
                    R"({"ietf-netconf:filter": {"no-such-module:top": {"leaf": 1}}})")
                  .out,
              nothing);
    const Outcome forward = ocmap({"forward", "-"}, "<filter>" + other + top("<policy><name>P1</name></policy>") +
                                                        top("<policy><name>P2</name></policy>") + "</filter>");
    EXPECT_NE(inside(forward, "policy-names").find("<name>P2</name>"), std::string::npos) << forward.out;
    const Outcome no_filter = ocmap({"get", "-", "--store", store()}, "<macsec xmlns='urn:x'/>");
    EXPECT_EQ(no_filter.status, 1); // such a document is mistyped
}

TEST_F(Read, AKeyIsFoundWithAndWithoutTheBlanksAroundIt)
{
    ASSERT_EQ(edit(in_policies(policy(" P3 ", ""))).status, 0);
    const std::string p3 = policy(" P3 ", "");
    EXPECT_EQ(selected("<policy><name> P3 </name></policy>"), p3);
    EXPECT_EQ(selected("<policy><name>P3</name></policy>"), "");
    EXPECT_EQ(selected("<policy><config><name> P3 </name></config></policy>"), p3);
    EXPECT_EQ(selected("<policy><name>\n  P1\n</name><config><name/></config></policy>"),
              "<policy><name>P1</name><config><name>P1</name></config></policy>");
    ASSERT_EQ(edit(in_policies(policy("P3", ""))).status, 0);
    EXPECT_EQ(selected("<policy><name> P3 </name></policy>"), policy("P3", "") + p3);
}

TEST_F(Read, GetReturnsConfigurationAndStateInOneEntry)
{
    const Outcome read = ocmap({"get", "--store", store()});
    EXPECT_EQ(read.status, 0) << read.err;
    const std::string text = compact(read.out);
    EXPECT_NE(text.find("<policy><name>P1</name><config><name>P1</name>"), std::string::npos);
    EXPECT_NE(text.find("<state><name>P1</name><key-server-priority>10</key-server-priority>"), std::string::npos);
    EXPECT_EQ(text.find("<policy><name>P1</name>"), text.rfind("<policy><name>P1</name>"));
    EXPECT_NE(text.find("<sak-hash-errors>0</sak-hash-errors>"), std::string::npos);
}

TEST_F(Read, TraceLinesAreNumberedThroughAllWalks)
{
    const std::string create =
        "<macsec xmlns='http://openconfig.net/yang/macsec' xmlns:nc='urn:ietf:params:xml:ns:netconf:base:1.0'>" +
        in_policies(policy("P1", "<delay-protection nc:operation='create'>true</delay-protection>")) + "</macsec>";
    // A create asks first whether its node is there: a walk there and back before that of the edit.
    const struct {
        Outcome traced;
        int headings;
    } cases[] = {{ocmap({"get-config", "--store", store(), "--trace"}), 0},
                 {ocmap({"edit", "-", "--store", store(), "--trace"}, create), 2}};
    for (const auto &[traced, expected_headings] : cases) {
        std::istringstream lines(traced.err);
        int number = 0;
        int headings = 0;
        for (std::string line; std::getline(lines, line);) {
            if (line.starts_with("----")) {
                ++headings;
                continue;
            }
            EXPECT_TRUE(line.starts_with("#" + std::to_string(++number) + ":")) << line;
        }
        EXPECT_EQ(headings, expected_headings);
        EXPECT_NE(traced.err.find("ymap_to_oc_"), std::string::npos); // there are lines of a walk back
    }
}

TEST_F(Read, SavedAnswersAreTakenWhereDataAre)
{
    const std::string base = "urn:ietf:params:xml:ns:netconf:base:1.0";
    const std::string stored = store_file();
    const std::size_t begin = stored.find("<macsec");
    const std::string native = stored.substr(begin, stored.find("</config>") - begin);
    const auto reply = [&](const std::string &inside) {
        return "<nc:rpc-reply xmlns:nc='" + base + "' message-id='7'>" + inside + "</nc:rpc-reply>";
    };
    const auto priority = [](const Outcome &outcome) { return inside(outcome, "key-server-priority"); };
    EXPECT_EQ(priority(ocmap({"reverse", "-"}, reply("<nc:data>" + native + "</nc:data>"))), "10");
    EXPECT_EQ(priority(ocmap({"reverse", "-"}, R"({"ietf-netconf:rpc-reply": {"message-id": "7", "data":
        {"Tarvex-crypto-macsec-mka-cfg:macsec": {"policy-names": {"policy-name": [{"name": "P", "key-server-priority":
        9}]}}}}})")),
              "9");
    const Outcome answer = ocmap({"get-config", "--store", store()});
    write_file(path("answer.xml"), reply(answer.out));
    EXPECT_EQ(ocmap({"edit", path("answer.xml"), "--store", path("copy")}).status, 0);
    EXPECT_EQ(ocmap({"get-config", "--store", path("copy")}).out, answer.out);
    for (const char *holds : {"<nc:ok/>", "<nc:rpc-error/>", ""}) {
        const Outcome refused = ocmap({"reverse", "-"}, reply(holds));
        EXPECT_EQ(refused.status, 1);
        EXPECT_NE(refused.err.find("reply that holds "), std::string::npos) << refused.err;
    }
}

TEST_F(Read, BareTreesStandAlone)
{
    const std::string filter = "<filter><macsec xmlns='http://openconfig.net/yang/macsec'>" +
                               in_policies("<policy><name>P1</name><config><name/></config></policy>") +
                               "</macsec></filter>";
    const auto bare = [&](std::vector<std::string> arguments, const std::string &input) {
        arguments.emplace_back("--bare");
        return ocmap(arguments, input).out;
    };
    const std::vector<std::string> read = {"get-config", "-", "--store", store()};
    EXPECT_EQ(compact(bare(read, filter)),
              "<macsec xmlns=\"http://openconfig.net/yang/macsec\"><mka><policies>"
              "<policy><name>P1</name><config><name>P1</name></config></policy></policies></mka></macsec>\n");
    EXPECT_EQ(bare({"get-config", "-", "--store", store(), "--json"}, filter).find(R"({
  "openconfig-macsec:macsec": {
    "mka": {)"),
              0U);
    EXPECT_EQ(bare(read, "<filter/>"), "");
    EXPECT_EQ(bare({"get-config", "-", "--store", store(), "--json"}, "<filter/>"), "{}\n");
    // Each of several trees declares what it needs, and can be read again.
    const std::string edit = bare({"forward", std::string(EXAMPLES) + "/key-chains/delete-chain.xml"}, "");
    EXPECT_EQ(edit.find("<keychains xmlns=\"http://tarvex.example/ns/yang/Tarvex-lib-keychain-cfg\" xmlns:nc="), 0U)
        << edit;
    EXPECT_EQ(ocmap({"reverse", "-", "--kind", "edit"}, edit).status, 0);
}

TEST_F(Read, InAnEditsWayBackADeletedEntryCarriesItsKey)
{
    const std::string native =
        "<data xmlns:nc='urn:ietf:params:xml:ns:netconf:base:1.0'>"
        "<keychains xmlns='http://tarvex.example/ns/yang/Tarvex-lib-keychain-cfg'>"
        "<keychain nc:operation='delete'><chain-name>C</chain-name><macsec-keychain><macsec-keys>"
        "<macsec-key nc:operation='remove'><key-id>01</key-id></macsec-key></macsec-keys>"
        "</macsec-keychain></keychain></keychains><interface-configurations "
        "xmlns='http://tarvex.example/ns/yang/Tarvex-ifmgr-cfg'><interface-configuration "
        "nc:operation='delete'><active>act</active><interface-name>I</interface-name>"
        "</interface-configuration></interface-configurations></data>";
    const Outcome back = ocmap({"reverse", "-", "--kind", "edit"}, native);
    EXPECT_EQ(inside(back, "key-chains"), "<key-chain nc:operation=\"delete\"><name>C</name><mka-keys>"
                                          "<mka-key nc:operation=\"remove\"><id>01</id><config><id>01</id></config>"
                                          "</mka-key></mka-keys></key-chain>");
    EXPECT_EQ(inside(back, "interfaces"), "<interface nc:operation=\"delete\"><name>I</name></interface>");
}

TEST_F(Read, AnEmptyFilterSelectsNothingAndAnEmptyStoreHasNothing)
{
    const std::string nothing = "<data xmlns=\"urn:ietf:params:xml:ns:netconf:base:1.0\"/>\n";
    EXPECT_EQ(ocmap({"get-config", "-", "--store", store()}, "<filter/>").out, nothing);
    std::filesystem::create_directory(path("empty"));
    EXPECT_EQ(ocmap({"get-config", "--store", path("empty")}).out, nothing);
    const Outcome mistyped = ocmap({"get-config", "--store", path("mistyped")});
    EXPECT_EQ(mistyped.status, 1);
    EXPECT_NE(mistyped.err.find("mistyped"), std::string::npos) << mistyped.err;
}

TEST_F(Read, UnsupportedLeavesFailAReadThatNamesThem)
{
    // With a value the leaf is a content match, and the walk goes on through its siblings after the refusal.
    for (const char *leaf : {"<use-updated-eth-header/>", "<use-updated-eth-header>true</use-updated-eth-header>"}) {
        const Outcome named =
            get_config(in_policies(std::string("<policy><name>P1</name><config>") + leaf + "</config></policy>"));
        EXPECT_EQ(named.status, 1);
        EXPECT_EQ(named.err, "error: use-updated-eth-header: this router does not support it\n"
                             "  error-tag: unknown-element\n"
                             "  path: /macsec/mka/policies/policy[name='P1']/config\n"
                             "  tag: use-updated-eth-header\n"
                             "  code: 0xaaf2ee00\n");
    }
}

TEST_F(Read, ReverseTakesNativeTreesAndForwardReads)
{
    const Outcome reversed = ocmap({"reverse", "-", "--kind", "get-config"},
                                   "<macsec xmlns='http://tarvex.example/ns/yang/Tarvex-crypto-macsec-mka-cfg'>"
                                   "<policy-names><policy-name><name>P1</name><sak-rekey-interval>30"
                                   "</sak-rekey-interval></policy-name></policy-names></macsec>");
    EXPECT_EQ(reversed.status, 0) << reversed.err;
    EXPECT_NE(reversed.out.find("<sak-rekey-interval>1800</sak-rekey-interval>"), std::string::npos);
    // An empty native container is no leaf with an empty text.
    const Outcome empty =
        ocmap({"reverse", "-"}, "<data><keychains xmlns='http://tarvex.example/ns/yang/Tarvex-lib-keychain-cfg'>"
                                "<keychain><chain-name>KC</chain-name><macsec-keychain><macsec-keys><macsec-key>"
                                "<key-id>01</key-id><macsec-key-string/><macsec-lifetime/></macsec-key></macsec-keys>"
                                "</macsec-keychain></keychain></keychains></data>");
    EXPECT_NE(empty.out.find("<id>01</id>"), std::string::npos);
    EXPECT_EQ(empty.out.find("date-time"), std::string::npos);
    EXPECT_EQ(empty.out.find("algorithm"), std::string::npos);
    // Names are known within their modules, in which a leaf, a key too, stands once.
    const auto of_chain = [](const std::string &nodes) {
        return ocmap({"reverse", "-"},
                     "<keychains xmlns='http://tarvex.example/ns/yang/Tarvex-lib-keychain-cfg'><keychain>"
                     "<chain-name>KC</chain-name>" +
                         nodes + "<macsec-keychain/></keychain></keychains>");
    };
    EXPECT_NE(of_chain("<chain-name xmlns='urn:x'><x/></chain-name>").out.find("<name>KC</name>"), std::string::npos);
    EXPECT_EQ(of_chain("<chain-name>KD</chain-name>").err,
              "error: the element <chain-name> stands twice\n  error-tag: bad-element\n  path: "
              "/keychains/keychain[chain-name='KC']/chain-name\n");
    const Outcome forward = ocmap({"forward", std::string(EXAMPLES) + "/policies/get-leaf.xml"});
    EXPECT_EQ(compact(forward.out),
              "<filter xmlns=\"urn:ietf:params:xml:ns:netconf:base:1.0\" type=\"subtree\"><macsec "
              "xmlns=\"http://tarvex.example/ns/yang/Tarvex-crypto-macsec-mka-cfg\"><policy-names><policy-name>"
              "<name>P1</name><cipher-suite/></policy-name></policy-names></macsec></filter>\n");
}

} // namespace
