// Requests and results in JSON (RFC 7951, RFC 7952).
#include "as_json.h"
#include "support.h"

#include <filesystem>
#include <regex>

#include <libyang/libyang.h>

namespace
{

using namespace test;

class Json : public ToolTest
{
};

const std::string netconf = "{\"ietf-netconf:config\": ";

std::string in_policy(const std::string &members)
{
    return netconf + R"({"openconfig-macsec:macsec": {"mka": {"policies": {"policy": [{"name": "P", "config": {)" +
           members + "}}]}}}}}";
}

TEST_F(Json, EveryExampleBecomesTheSameInBothForms)
{
    int compared = 0;
    for (const auto &file : std::filesystem::recursive_directory_iterator(EXAMPLES)) {
        if (file.path().extension() != ".xml" || file.path().parent_path().filename() == "state") {
            continue;
        }
        // The time of the request would differ between the two runs.
        const std::string xml =
            std::regex_replace(read_file(file.path()), std::regex("VALID_IMMEDIATELY"), "2026-01-01T00:00:00");
        const Outcome from_xml = ocmap({"forward", "-"}, xml);
        const Outcome from_json = ocmap({"forward", "-"}, as_json(xml));
        EXPECT_EQ(from_xml.status, 0) << from_xml.err;
        EXPECT_EQ(from_json.out, from_xml.out) << file.path() << "\n" << from_json.err << as_json(xml);
        const std::filesystem::path sibling = std::filesystem::path(file.path()).replace_extension(".json");
        if (std::filesystem::exists(sibling)) {
            EXPECT_EQ(ocmap({"forward", sibling}).out, from_xml.out) << sibling;
        }
        ++compared;
    }
    EXPECT_GE(compared, 16);
}

TEST_F(Json, MetadataCarryOperations)
{
    const std::string edit = R"({"openconfig-macsec:macsec": {"mka": {"policies": {"policy": [
        {"@": {"ietf-netconf:operation": "create"}, "name": "A", "config": {"name": "A"}},
        {"name": "B", "config": {"@": {"ietf-netconf:operation": "replace"}, "name": "B",
         "@delay-protection": {"ietf-netconf:operation": "remove"},
         "macsec-cipher-suite": ["GCM_AES_128", "GCM_AES_256"],
         "@macsec-cipher-suite": [null, {"ietf-netconf:operation": "delete"}]}}]}}}})";
    const std::string xml = in_policies(
        "<policy nc:operation='create'><name>A</name><config><name>A</name></config></policy>"
        "<policy><name>B</name><config nc:operation='replace'><name>B</name><delay-protection nc:operation='remove'/>"
        "<macsec-cipher-suite>GCM_AES_128</macsec-cipher-suite>"
        "<macsec-cipher-suite nc:operation='delete'>GCM_AES_256</macsec-cipher-suite></config></policy>");
    const Outcome expected = ocmap({"forward", "-"}, "<macsec xmlns='http://openconfig.net/yang/macsec' "
                                                     "xmlns:nc='urn:ietf:params:xml:ns:netconf:base:1.0'>" +
                                                         xml + "</macsec>");
    EXPECT_EQ(expected.status, 0) << expected.err;
    EXPECT_EQ(ocmap({"forward", "-"}, edit).out, expected.out);
}

TEST_F(Json, WhatIsPrintedCanBeReadAgain)
{
    ASSERT_EQ(ocmap({"edit", "-", "--store", store()}, in_policy(R"("name": "P", "key-server-priority": 20,
        "delay-protection": true, "sak-rekey-interval": 60, "macsec-cipher-suite": ["GCM_AES_256"])"))
                  .status,
              0);
    const Outcome json = ocmap({"get-config", "--store", store(), "--json"});
    EXPECT_EQ(json.out, R"({
  "ietf-netconf:data": {
    "openconfig-macsec:macsec": {
      "mka": {
        "policies": {
          "policy": [
            {
              "name": "P",
              "config": {
                "name": "P",
                "key-server-priority": 20,
                "macsec-cipher-suite": [
                  "GCM_AES_256"
                ],
                "delay-protection": true,
                "sak-rekey-interval": 60
              }
            }
          ]
        }
      }
    }
  }
}
)");
    const std::string copy = path("copy");
    std::string edit = json.out;
    edit.replace(edit.find("netconf:data"), 12, "netconf:config");
    EXPECT_EQ(ocmap({"edit", "-", "--store", copy}, edit).err, "");
    EXPECT_EQ(read_file(path("copy") / "native.xml"), store_file());

    const std::string request = read_file(std::filesystem::path(EXAMPLES) / "policies/replace.xml");
    const Outcome as_xml = ocmap({"forward", "-"}, request);
    const Outcome native = ocmap({"forward", "-", "--json"}, request);
    const std::vector<std::string> back = {"reverse", "-", "--kind", "edit"};
    std::string data_xml = as_xml.out;
    EXPECT_EQ(ocmap(back, native.out).out, ocmap(back, data_xml).out) << native.out;
}

TEST_F(Json, AnAnswerIsValidInstanceDataOfTheModel)
{
    for (const char *example : {"policies/merge.xml", "key-chains/create.xml", "interfaces/attach.xml"}) {
        ocmap({"edit", std::filesystem::path(EXAMPLES) / example, "--store", store()});
    }
    const std::string state = std::filesystem::path(EXAMPLES) / "state/busy-router.xml";
    const Outcome answer = ocmap({"get", "--store", store(), "--oper", state, "--json"});
    ASSERT_EQ(answer.status, 0) << answer.err;
    const std::string open = "\"ietf-netconf:data\": ";
    const std::size_t begin = answer.out.find(open) + open.size();
    const std::string data = answer.out.substr(begin, answer.out.rfind('}') - begin);

    ly_ctx *context = nullptr;
    ASSERT_EQ(ly_ctx_new(YANG, LY_CTX_NO_YANGLIBRARY, &context), LY_SUCCESS);
    ASSERT_NE(ly_ctx_load_module(context, "openconfig-macsec", nullptr, nullptr), nullptr);
    ASSERT_NE(ly_ctx_load_module(context, "tarvex-openconfig-macsec-deviations", nullptr, nullptr), nullptr);
    lyd_node *tree = nullptr;
    EXPECT_EQ(lyd_parse_data_mem(context, data.c_str(), LYD_JSON, LYD_PARSE_STRICT | LYD_PARSE_ONLY, 0, &tree),
              LY_SUCCESS)
        << ly_errmsg(context) << ly_errpath(context);
    lyd_free_all(tree);

    // The same dump in JSON gives the same answer, bare and in <data>.
    ASSERT_NE(ly_ctx_load_module(context, "Tarvex-PRIVATE-oc-macsec-oper", nullptr, nullptr), nullptr);
    lyd_node *dump = nullptr;
    ASSERT_EQ(lyd_parse_data_path(context, state.c_str(), LYD_XML, LYD_PARSE_ONLY, 0, &dump), LY_SUCCESS);
    char *printed = nullptr;
    ASSERT_EQ(lyd_print_mem(&printed, dump, LYD_JSON, LYD_PRINT_WITHSIBLINGS), LY_SUCCESS);
    const std::string bare = printed;
    std::free(printed);
    lyd_free_all(dump);
    ly_ctx_destroy(context);
    for (const std::string &text : {bare, "{ \"ietf-netconf:data\": " + bare + "}"}) {
        write_file(path("state.json"), text);
        const Outcome again = ocmap({"get", "--store", store(), "--oper", path("state.json"), "--json"});
        EXPECT_EQ(again.out, answer.out) << again.err;
    }
}

TEST_F(Json, BadDocumentsAreRefusedWithTheirPlace)
{
    const struct {
        std::string text;
        std::string error; ///< the beginning of the line
    } rows[] = {
        {"{\"a\": ", "the request is no JSON document: syntax error at line 1, column 7"},
        {"{\n\"openconfig-macsec:macsec\": {]}", "the request is no JSON document: syntax error at line 2, column 30"},
        {"{\"a\": x", "the request is no JSON document: syntax error at line 1, column 7\n"},
        {"{\"a\":\n  \"P\n     1\"}", "the request is no JSON document: syntax error at line 2, column 5\n"},
        {"{\"m:a\": 1.\n    5}", "the request is no JSON document: syntax error at line 1, column 11\n"},
        {"{\"m:a\":\n  \n      12 13}", "the request is no JSON document: syntax error at line 3, column 10\n"},
        {"{\"m:a\": {\r\n\t \r\n  ]}", "the request is no JSON document: syntax error at line 3, column 3\n"},
        {"{\"openconfig-macsec:macsec\":\n  {}\n    \n",
         "the request is no JSON document: syntax error at line 4, column 1\n"},
        {"{\"openconfig-macsec:macsec\": {\n\t\"mka\":\r\n   [[]]}}",
         "there is an array in an array at line 3, column 5\n"},
        {"{\"m:a\": \"P\\x\"}", "the request is no JSON document: syntax error at line 1, column 11\n"},
        {"{\"m:a\": {\"b\": 1,\n}}", "the request is no JSON document: syntax error at line 2, column 1\n"},
        {"{\"m:a\": [1,]}", "the request is no JSON document: syntax error at line 1, column 12\n"},
        {"{\"m:a\": /* b */ 1}", "the request is no JSON document: syntax error at line 1, column 9\n"},
        {"{\"m:a\": NaN}", "the request is no JSON document: syntax error at line 1, column 9\n"},
        {"{\"m:a\": 01}", "the request is no JSON document: syntax error at line 1, column 10\n"},
        {"{\"m:a\": 1}\n{}", "the request is no JSON document: syntax error at line 2, column 1\n"},
        {"{\"m:a\": [\"\\ud800\"]}", "the request is no JSON document: syntax error at line 1, column 11\n"},
        {"{\"m:a\": [\"\\udc00\"]}", "the request is no JSON document: syntax error at line 1, column 17\n"},
        {"{\"\\udfff\": []}", "the request is no JSON document: syntax error at line 1, column 9\n"},
        {"\xef\xbb\xbf{\"m:a\": x}", "the request is no JSON document: syntax error at line 1, column 12\n"},
        {"{\"a b\": 123\n}", "'a b' is no name of a member: it is a name or 'module:name' at line 1, column 12\n"},
        {"{\"a b\": 123", "'a b' is no name of a member: it is a name or 'module:name' at line 1, column 11\n"},
        {"{\"a b\": \"123\"", "'a b' is no name of a member: it is a name or 'module:name' at line 1, column 13\n"},
        {"[1]", "a request is a JSON object, not an array"},
        {R"({"macsec": {}})", "the member 'macsec' must name its module, as 'module:macsec'"},
        {R"({"other:macsec": {}})", "there is no module 'other' here"},
        {R"({"openconfig-macsec:macsec": {"a b": 1}})", "'a b' is no name of a member: it is a name or 'module:name'"},
        {in_policy(R"("name": "P", "name": "Q")"), "the member 'name' stands twice in one object"},
        {in_policy(R"("name": "P", "n\u0061me": "Q")"), "the member 'name' stands twice in one object"},
        {"{\n\"openconfig-macsec:macsec\": {\"mka\": [[]]}}", "there is an array in an array at line 2, column 38\n"},
        {in_policy(R"("name": ["P", {}])"), "the array 'name' holds objects beside other values"},
        {in_policy(R"("name": "P\u0000Q")"), "the value of 'name' holds a character that XML cannot carry"},
        {in_policy(R"("@name": {"operation": "delete"})"),
         "unknown annotation 'operation': only ietf-netconf:operation is known"},
        {in_policy(R"("@name": "delete")"), "the annotations of 'name' are no object"},
        {in_policy(R"("@name": [{"ietf-netconf:operation": "delete"}, {"ietf-netconf:operation": "delete"}])"),
         "'@name' has annotations for more values than there are"},
        {in_policy(R"("name": "P", "@name": {"ietf-netconf:operation": "delete\u0000"})"),
         "operation 'delete\\x00' is none of merge, replace, create, delete and remove at line 1"},
        {in_policy(R"("name": "P", "@bogus:config": {"ietf-netconf:operation": "delete"})"),
         "there is no module 'bogus' here"},
        {in_policy(R"("name": "\ufffe")"), "the value of 'name' holds a character that XML cannot carry"},
        {in_policy(R"("name": 1e999)"), "there is a number that is too large"},
        {in_policy(R"("name": "P", "@delay-protection": {"ietf-netconf:operation": "erase"})"),
         "operation 'erase' is none of merge, replace, create, delete and remove"},
    };
    for (const auto &row : rows) {
        const Outcome outcome = ocmap({"forward", "-"}, row.text);
        EXPECT_EQ(outcome.status, 1) << row.text;
        EXPECT_EQ(outcome.out, "");
        EXPECT_TRUE(outcome.err.starts_with("error: " + row.error)) << outcome.err;
    }
    const std::string deep = std::string(100000, '[');
    EXPECT_EQ(ocmap({"forward", "-"}, "{\"config\":" + deep).status, 1);
    std::string objects;
    for (int i = 0; i < 100000; ++i) {
        objects += "{\"a\":";
    }
    EXPECT_EQ(ocmap({"forward", "-"}, "{\"config\":" + objects).err.substr(0, 37),
              "error: the request is nested too deep");
}

} // namespace
