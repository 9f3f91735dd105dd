// Edits of MKA policies, from a NETCONF document to the native store and back.
#include <sys/stat.h>

#include "support.h"

using namespace test;

namespace
{

using Edit = ToolTest;

const std::string seven_leaves = "<key-server-priority>10</key-server-priority>"
                                 "<macsec-cipher-suite>GCM_AES_256</macsec-cipher-suite>"
                                 "<confidentiality-offset>50_BYTES</confidentiality-offset>"
                                 "<delay-protection>true</delay-protection>"
                                 "<include-icv-indicator>false</include-icv-indicator>"
                                 "<sak-rekey-interval>3600</sak-rekey-interval>";

std::string by_key(const std::string &name, const std::string &operation)
{
    return in_policies("<policy nc:operation='" + operation + "'><name>" + name + "</name></policy>");
}

// A failed edit: exit status 1, nothing on standard output, one line of error with these words in it.
void expect_failure(const Outcome &outcome, const std::string &words)
{
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.out, "");
    EXPECT_TRUE(outcome.err.starts_with("error: ")) << outcome.err;
    EXPECT_NE(outcome.err.find(words), std::string::npos) << outcome.err;
}

TEST_F(Edit, AMergedPolicyIsStoredInTheRoutersModelAndReadBack)
{
    const Outcome edited = edit(in_policies(policy("P1", seven_leaves)));
    EXPECT_EQ(edited.status, 0) << edited.err;
    EXPECT_EQ(edited.out, "");
    const std::string stored = compact(store_file());
    EXPECT_NE(stored.find("<name>P1</name>"), std::string::npos);
    EXPECT_NE(stored.find("<created/>"), std::string::npos);
    EXPECT_NE(stored.find("<cipher-suite>gcm-aes-256</cipher-suite>"), std::string::npos);
    EXPECT_NE(stored.find("<delay-protection/>"), std::string::npos);
    EXPECT_NE(stored.find("<sak-rekey-interval-sec>3600</sak-rekey-interval-sec>"), std::string::npos);
    EXPECT_EQ(stored.find("<sak-rekey-interval>"), std::string::npos);
    struct stat status;
    ASSERT_EQ(stat((path("store") / "native.xml").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777, 0600u);

    EXPECT_EQ(policies(), policy("P1", seven_leaves));
}

TEST_F(Edit, ReplaceLeavesExactlyWhatItNames)
{
    const std::string two = "<key-server-priority>5</key-server-priority>"
                            "<sak-rekey-interval>60</sak-rekey-interval>";
    edit(in_policies(policy("P1", seven_leaves) + policy("P2", "<delay-protection>true</delay-protection>")));
    const std::string p2 = policy("P2", "<delay-protection>true</delay-protection>");

    EXPECT_EQ(edit(in_policies("<policy><name>P1</name><config nc:operation='replace'><name>P1</name>" + two +
                               "</config></policy>"))
                  .status,
              0);
    EXPECT_EQ(policies(), policy("P1", two) + p2);

    EXPECT_EQ(
        edit(in_policies(policy("P1", "<confidentiality-offset>0_BYTES</confidentiality-offset>", "replace"))).status,
        0);
    EXPECT_EQ(policies(), policy("P1", "<confidentiality-offset>0_BYTES</confidentiality-offset>") + p2);

    EXPECT_EQ(edit("<mka><policies nc:operation='replace'>" + policy("P3", two) + "</policies></mka>").status, 0);
    EXPECT_EQ(policies(), policy("P3", two));
}

// The container that makes the interface one of OpenConfig's stays.
TEST_F(Edit, ReplaceOfAnInterfacesMkaKeepsWhatItNames)
{
    const std::string document = "<config xmlns:nc='urn:ietf:params:xml:ns:netconf:base:1.0'>"
                                 "<macsec xmlns='http://openconfig.net/yang/macsec'><interfaces><interface>"
                                 "<name>I</name><config><name>I</name></config><mka nc:operation='replace'>"
                                 "<config><mka-policy>P</mka-policy></config></mka></interface></interfaces></macsec>"
                                 "</config>";
    const std::string native = ocmap({"forward", "-"}, document).out;
    EXPECT_NE(native.find("<psk-key-chain>\n"
                          "          <policy-name>P</policy-name>\n"
                          "          <key-chain-name nc:operation=\"remove\"/>"),
              std::string::npos)
        << native;
    ASSERT_EQ(ocmap({"edit", "-", "--store", store()}, document).status, 0);
    EXPECT_NE(store_file().find("<policy-name>P</policy-name>"), std::string::npos) << store_file();
}

TEST_F(Edit, DeleteRemoveAndCreate)
{
    EXPECT_EQ(edit(in_policies(policy("P1", seven_leaves, "create"))).status, 0);
    expect_failure(edit(in_policies(policy("P1", "", "create"))), "data-exists");
    EXPECT_EQ(edit(by_key("P1", "delete")).status, 0);
    EXPECT_EQ(policies(), "");
    expect_failure(edit(by_key("P1", "delete")), "data-missing");
    EXPECT_EQ(edit(by_key("P1", "remove")).status, 0);
    edit(in_policies(policy("P1", seven_leaves)));
    EXPECT_EQ(edit(by_key("P1", "remove")).status, 0);
    EXPECT_EQ(policies(), "");

    edit(in_policies(policy("P1", "<delay-protection>true</delay-protection>") + policy("P2", "")));
    EXPECT_EQ(edit(in_policies("<policy><name>P1</name><config><delay-protection nc:operation='delete'/></config>"
                               "</policy>"))
                  .status,
              0);
    EXPECT_EQ(policies(), policy("P1", "") + policy("P2", ""));
    expect_failure(edit(in_policies("<policy><name>P1</name><config><delay-protection nc:operation='delete'/>"
                                    "</config></policy>")),
                   "data-missing");
    EXPECT_EQ(edit("<mka><policies nc:operation='delete'/></mka>").status, 0);
    EXPECT_EQ(policies(), "");
}

TEST_F(Edit, TheDefaultOperationIsHonoured)
{
    const std::string one = "<key-server-priority>1</key-server-priority>";
    const std::string other = "<delay-protection>true</delay-protection>";
    edit(in_policies(policy("P1", one) + policy("P2", one)));
    EXPECT_EQ(edit(in_policies(policy("P1", other)), "<default-operation>merge</default-operation>").status, 0);
    EXPECT_EQ(policies(), policy("P1", one + other) + policy("P2", one));

    // Under "none" only what carries an operation changes, and what leads to it must be there.
    EXPECT_EQ(edit(in_policies("<policy><name>P1</name><config><key-server-priority>9</key-server-priority>"
                               "<delay-protection nc:operation='delete'/></config></policy>"),
                   "<default-operation>none</default-operation>")
                  .status,
              0);
    EXPECT_EQ(policies(), policy("P1", one) + policy("P2", one));
    expect_failure(edit(in_policies(policy("P9", other)), "<default-operation>none</default-operation>"),
                   "data-missing");

    EXPECT_EQ(edit(in_policies(policy("P3", other)), "<default-operation>replace</default-operation>").status, 0);
    EXPECT_EQ(policies(), policy("P3", other));
}

TEST_F(Edit, AnEmptyReplacementLeavesNothing)
{
    edit(in_policies(policy("P1", seven_leaves)));
    const std::string empty = "<edit-config xmlns='urn:ietf:params:xml:ns:netconf:base:1.0'><target><running/></target>"
                              "<default-operation> replace </default-operation><config/></edit-config>";
    EXPECT_EQ(ocmap({"edit", "-", "--store", store()}, empty).status, 0);
    EXPECT_EQ(policies(), "");
}

TEST_F(Edit, RefusalsNameWhatIsWrongAndChangeNothing)
{
    edit(in_policies(policy("P1", seven_leaves)));
    const std::string before = store_file();
    const struct {
        std::string inside;
        const char *words;
    } cases[] = {
        {in_policies(policy("Default", "", "create")), "Invalid request : default policy can not be created"},
        {in_policies(policy("P2", "<use-updated-eth-header>true</use-updated-eth-header>")),
         "/config/use-updated-eth-header: this router does not support it"},
        {in_policies(policy("P2", "") + policy("P1", "<key-server-priority>300</key-server-priority>")),
         "/macsec/mka/policies/policy[name='P1']/config/key-server-priority: '300' must be a number in 0..255"},
        {in_policies(policy("P2", "") + policy("P3", "<macsec-cipher-suite>ROT13</macsec-cipher-suite>")), "ROT13"},
        {in_policies(policy("P2", "")) + "<interfaces><interface><name>e0</name><config><enable>true</enable></config>"
                                         "</interface></interfaces>",
         "/macsec/interfaces/interface[name='e0']/config/enable: this router does not support it"},
    };
    for (const auto &one : cases) {
        expect_failure(edit(one.inside), one.words);
        EXPECT_EQ(store_file(), before) << one.inside;
    }
}

TEST_F(Edit, ManyPoliciesBecomeAsManyEntries)
{
    std::string entries;
    for (int index = 0; index < 5000; ++index) {
        entries += policy("P" + std::to_string(index), "<sak-rekey-interval>60</sak-rekey-interval>");
    }
    EXPECT_EQ(edit(in_policies(entries)).status, 0);
    EXPECT_EQ(policies(), entries);
}

TEST_F(Edit, TraceAndJournalGoToStandardError)
{
    const std::string document = std::string(EXAMPLES) + "/policies/create.xml";
    const Outcome quiet = ocmap({"forward", document});
    EXPECT_EQ(quiet.err, "");
    const Outcome traced = ocmap({"forward", document, "--trace"});
    EXPECT_EQ(traced.out, quiet.out);
    EXPECT_TRUE(traced.err.starts_with("#1: TRC: ymap_ot_oc_macsec_openconfigmacsec_lvla_macsec:")) << traced.err;
    const Outcome journalled = ocmap({"forward", document, "--journal"});
    EXPECT_EQ(journalled.out, quiet.out);
    EXPECT_TRUE(journalled.err.starts_with("tqm_map_add_to_node_hierarchy(")) << journalled.err;
    EXPECT_NE(journalled.err.find("\"gcm-aes-xpn-256\""), std::string::npos);
}

} // namespace
