// Bad input of every sort: each has its own error and exit status, prints nothing else and changes nothing.
#include "support.h"

using namespace test;

namespace
{

using BadInput = ToolTest;

TEST_F(BadInput, DocumentsAreRefusedWithAReason)
{
    ASSERT_EQ(edit(in_policies(policy("P1", "<key-server-priority>1</key-server-priority>"))).status, 0);
    const std::string before = store_file();
    const std::string open = "<config xmlns:nc='urn:ietf:params:xml:ns:netconf:base:1.0'>"
                             "<macsec xmlns='http://openconfig.net/yang/macsec'>";
    const std::string close = "</macsec></config>";
    const auto in_policy = [&](const std::string &inside) {
        return open + "<mka><policies><policy>" + inside + "</policy></policies></mka>" + close;
    };
    const struct {
        const char *what;
        std::string document;
        const char *words;
    } cases[] = {
        {"not XML", "hello", "no XML"},
        {"empty", "", "empty"},
        {"truncated", open + "<mka><policies>", "line 1"},
        {"another namespace", "<config><macsec xmlns='http://example.com/other'/></config>",
         "http://example.com/other"},
        {"no namespace", "<config><macsec/></config>", "namespace"},
        {"an unknown top element", "<config><mac xmlns='http://openconfig.net/yang/macsec'/></config>", "<mac>"},
        {"a second root", open + "</macsec><macsec xmlns='http://openconfig.net/yang/macsec'/></config>", "macsec"},
        {"an unknown prefix", open + "<x:mka/>" + close, "<x:mka>"},
        {"no key", in_policy("<config/>"), "lacks its key 'name'"},
        {"no children", in_policy(""), "lacks its key 'name'"},
        {"an empty key", in_policy("<name/>"), "lacks its key 'name'"},
        {"two keys", in_policy("<name>P1</name><name>P2</name>"), "tag: name"},
        {"a key that differs from config", in_policy("<name>P1</name><config><name>P2</name></config>"), "P2"},
        {"a key with an operation", in_policy("<name nc:operation='delete'>P1</name>"), "key"},
        {"an unknown tag", in_policy("<name>P1</name><config><colour>red</colour></config>"),
         "config/colour: there is no such node\n"},
        {"a foreign child", in_policy("<name>P1</name><x xmlns='http://example.com/x'/>"), "tag: x"},
        {"a name nearly right", in_policy("<name>P1</name><config><delay-protektion/></config>"),
         "did you mean 'delay-protection'?"},
        {"state in an edit", in_policy("<name>P1</name><state/>"), "policy[name='P1']/state: it is state"},
        {"a delete with children", open + "<mka nc:operation='delete'><policies/></mka>" + close, "delete"},
        {"an unknown operation", in_policy("<name>P1</name><config nc:operation='merger'/>"), "'merger'"},
        {"an operation in no namespace", in_policy("<name>P1</name><config operation='delete'/>"), "operation"},
        {"no children, where", in_policy(""), "path: /macsec/mka/policies/policy"},
        {"an operation given twice", in_policy("<name>P1</name><config nc:operation='merge' nc:operation='delete'/>"),
         "twice"},
        {"an operation of another namespace",
         in_policy("<name>P1</name><config xmlns:x='http://example.com/x' x:operation='delete'/>"), "operation"},
        {"a key with an operation that deletes nothing", in_policy("<name nc:operation='merge'>P1</name>"), "key"},
        {"a deleted entry with content",
         open + "<mka><policies><policy nc:operation='delete'><name>P1</name><config/></policy></policies></mka>" +
             close,
         "keys"},
        {"a known tag of another namespace", in_policy("<name>P1</name><config xmlns='http://example.com/x'/>"),
         "tag: config"},
        {"a leaf given twice", in_policy("<name>P1</name><config><name>P1</name><name>P2</name></config>"), "twice"},
        {"a container given twice", in_policy("<name>P1</name><config/><config nc:operation='delete'/>"),
         "<config> stands twice"},
        {"a leaf with children", in_policy("<name>P1</name><config><delay-protection><x/></delay-protection></config>"),
         "path: /macsec/mka/policies/policy[name='P1']/config/delay-protection"},
        {"text in a container", open + "<mka><policies>P1</policies></mka>" + close, "no text"},
        {"a reference to no character", in_policy("<name>P1&#0;2</name>"), "'&'"},
        {"an unknown entity", in_policy("<name>P1&who;</name>"), "line 1"},
        {"another encoding", "<?xml version='1.0' encoding='UTF-16'?><config/>", "UTF-8"},
        {"another target",
         "<rpc xmlns='urn:ietf:params:xml:ns:netconf:base:1.0'><edit-config><target><startup/></target><config/>"
         "</edit-config></rpc>",
         "startup"},
        {"a read", "<rpc xmlns='urn:ietf:params:xml:ns:netconf:base:1.0'><get/></rpc>", "edit"},
        {"an operation at the whole",
         "<config xmlns:nc='urn:ietf:params:xml:ns:netconf:base:1.0' nc:operation='delete'/>",
         "<config> has no attribute 'nc:operation'\n  error-tag: unknown-attribute"},
        {"an unknown default operation",
         "<rpc xmlns='urn:ietf:params:xml:ns:netconf:base:1.0'><edit-config><target><running/></target>"
         "<default-operation>keep</default-operation><config/></edit-config></rpc>",
         "'keep'"},
    };
    for (const auto &one : cases) {
        const Outcome outcome = ocmap({"edit", "-", "--store", store()}, one.document);
        EXPECT_EQ(outcome.status, 1) << one.what;
        EXPECT_EQ(outcome.out, "") << one.what;
        EXPECT_TRUE(outcome.err.starts_with("error: ")) << one.what << ": " << outcome.err;
        EXPECT_NE(outcome.err.find(one.words), std::string::npos) << one.what << ": " << outcome.err;
        EXPECT_EQ(store_file(), before) << one.what;
    }
}

TEST_F(BadInput, FilesAndStoresAreNamed)
{
    const std::string document = std::string(EXAMPLES) + "/policies/create.xml";
    const auto expect_error = [](const Outcome &outcome, const std::string &words) {
        EXPECT_EQ(outcome.status, 1);
        EXPECT_EQ(outcome.out, "");
        EXPECT_TRUE(outcome.err.starts_with("error: ")) << outcome.err;
        EXPECT_NE(outcome.err.find(words), std::string::npos) << outcome.err;
    };
    expect_error(ocmap({"edit", path("none.xml"), "--store", store()}), "none.xml");
    expect_error(ocmap({"forward", testing::TempDir()}), testing::TempDir());

    write_file(path("file"), "");
    expect_error(ocmap({"edit", document, "--store", path("file")}), path("file"));
    expect_error(ocmap({"edit", document, "--store", path("file") / "below"}), path("file"));

    ASSERT_EQ(ocmap({"edit", document, "--store", store()}).status, 0);
    const std::string good = store_file();
    for (const std::string &damaged : {std::string(), good.substr(0, good.size() / 2), std::string("hello"),
                                       good + "<more/>", std::string("<config><macsec/></config>")}) {
        write_file(path("store") / "native.xml", damaged);
        for (const char *command : {"get-config", "get"}) {
            expect_error(ocmap({command, "--store", store()}), "native.xml");
        }
        expect_error(ocmap({"edit", document, "--store", store()}), "native.xml");
        EXPECT_EQ(store_file(), damaged);
    }
}

TEST_F(BadInput, AMissingModelOrPluginIsNamed)
{
    const std::string document = std::string(EXAMPLES) + "/policies/create.xml";
    const Outcome no_model = ocmap({"forward", document}, "",
                                   {std::string("LD_PRELOAD=") + MODEL_FILE, "OC_MACSEC_MODEL_FILE=/none/such",
                                    "ASAN_OPTIONS=verify_asan_link_order=0"});
    EXPECT_EQ(no_model.status, 1);
    EXPECT_NE(no_model.err.find("/pkg/yang/openconfig-macsec.yang"), std::string::npos) << no_model.err;
    EXPECT_NE(no_model.err.find("make model"), std::string::npos) << no_model.err;
    const Outcome no_plugin = ocmap({"forward", document, "--plugin", path("none.so")});
    EXPECT_EQ(no_plugin.status, 1);
    EXPECT_NE(no_plugin.err.find("none.so"), std::string::npos) << no_plugin.err;
    const Outcome no_yang = ocmap({"forward", document, "--yang", path("none")});
    EXPECT_EQ(no_yang.status, 1);
    EXPECT_NE(no_yang.err.find("none"), std::string::npos) << no_yang.err;
}

TEST_F(BadInput, UsageErrorsExitWithTwo)
{
    const std::vector<std::vector<std::string>> calls = {
        {}, {"edit"}, {"edit", "x.xml"}, {"forward"}, {"forward", "x.xml", "--kind", "rpc"}, {"mapp"}, {"tree", "x"}};
    for (const std::vector<std::string> &arguments : calls) {
        const Outcome outcome = ocmap(arguments);
        EXPECT_EQ(outcome.status, 2);
        EXPECT_EQ(outcome.out, "");
        EXPECT_NE(outcome.err, "");
    }
    EXPECT_EQ(ocmap({"--help"}).status, 0);
    EXPECT_EQ(ocmap({"edit", "--help"}).status, 0);
}

} // namespace
