// Requests as documents: what is taken, what is refused and with which words.
#include <gtest/gtest.h>

#include "support.h"

namespace
{

using namespace test;
using tqm::Document;
using tqm::Request;

constexpr const char *netconf_ns = "urn:ietf:params:xml:ns:netconf:base:1.0";

std::string top(const std::string &content, const std::string &attributes = "")
{
    return std::string("<oc xmlns=\"") + oc_ns + "\" xmlns:nc=\"" + netconf_ns + "\"" + attributes + ">" + content +
           "</oc>";
}
std::string rpc(const std::string &operation)
{
    return std::string("<?xml version=\"1.0\"?><!-- c --><rpc xmlns=\"") + netconf_ns + "\" message-id=\"1\">" +
           operation + "</rpc>";
}
std::string edit(const std::string &config, const std::string &options = "")
{
    return rpc("<edit-config><target><running/></target>" + options + "<config>" + config + "</config></edit-config>");
}

void describe(std::string &text, const rdl_tqm_datatree &node)
{
    constexpr const char *names[] = {"merge", "replace", "create", "delete", "remove", "none"};
    text += node.tag;
    if ((node.present & TQM_PRESENT_VALUE) != 0) {
        text.append("='").append(node.value).append("'");
    }
    if ((node.present & TQM_PRESENT_OPERATION) != 0) {
        text.append(":").append(names[node.operation]);
    }
    if ((node.present & TQM_PRESENT_SUBTREE) == 0) {
        return;
    }
    text += "{";
    for (uint32_t i = 0; i < node.subtree_count; ++i) {
        text += i == 0 ? "" : " ";
        describe(text, node.subtree[i]);
    }
    text += "}";
}

/// The request tree of `text`, or the error with its path.
std::string read(const std::string &text, uint32_t kind = TQM_REQ_EDIT,
                 tqm::Direction direction = tqm::Direction::forward)
{
    static const tqm::Schema models = schema();
    static const std::vector<tqm_map_reg_info> maps = registrations();
    tqm::Expected<Document> document = Document::parse(text);
    if (!document) {
        return "error: " + document.error().text;
    }
    Request request(models, maps, document->kind().value_or(kind), direction);
    if (const tqm::Expected<void> loaded = request.load(std::move(*document)); !loaded) {
        return "error: " + loaded.error().text + (loaded.error().path.empty() ? "" : " at " + loaded.error().path);
    }
    std::string trees;
    for (uint32_t i = 0; i < request.tree_count(); ++i) {
        describe(trees, *request.tree(i));
    }
    return trees;
}

struct Case {
    std::string text;
    std::string expected;
};
void expect_all(const std::vector<Case> &cases, uint32_t kind = TQM_REQ_EDIT,
                tqm::Direction direction = tqm::Direction::forward)
{
    for (const Case &c : cases) {
        EXPECT_EQ(read(c.text, kind, direction), c.expected) << c.text;
    }
}

TEST(Documents, all_wrappers_lead_to_the_same_tree)
{
    const std::string tree = top("<policy><name>P</name></policy>");
    for (const std::string &text :
         {tree, "<config>" + tree + "</config>", "<data>" + tree + "</data>", edit(tree), "\xef\xbb\xbf" + tree,
          std::string("<x:oc xmlns:x=\"") + oc_ns + "\"><x:policy><y:name xmlns:y=\"" + oc_ns +
              "\">P</y:name></x:policy></x:oc>"}) {
        EXPECT_EQ(read(text), "oc{policy{name='P'}}") << text;
    }
    EXPECT_EQ(
        read(rpc("<edit-config xmlns:o=\"urn:o\"><target><running/></target><config xmlns:x=\"" + std::string(oc_ns) +
                 "\"><x:oc><x:policy><x:name>P</x:name></x:policy></x:oc></config>" + "</edit-config>")),
        "oc{policy{name='P'}}")
        << "a prefix that <config> declares";
    EXPECT_EQ(read(rpc("<get/>")), "oc");
    EXPECT_EQ(read(rpc("<get><filter/></get>")), "");
    EXPECT_EQ(
        read(rpc("<get-config><source><running/></source><filter type=\"subtree\">" + tree + "</filter></get-config>")),
        "oc{policy{name='P'}}");
}

TEST(Documents, texts_are_kept_in_edits_and_trimmed_in_filters)
{
    const std::string tree = top("<a> x &lt;<![CDATA[&y]]><!-- c -->z </a><b>  </b><c/><d>&apos;&quot;&#39;&#x41;</d>");
    EXPECT_EQ(read(tree), "oc{a=' x <&yz ' b c d=''\"'A'}");
    EXPECT_EQ(read(tree, TQM_REQ_GET), "oc{a='x <&yz' b c d=''\"'A'}");
    EXPECT_EQ(read("<pol xmlns=\"" + std::string(native_ns) + "\"><a/></pol>", TQM_REQ_GET, tqm::Direction::reverse),
              "pol{a=''}");
}

TEST(Documents, operations_go_down_to_where_the_walkers_want_them)
{
    expect_all({
        {top("<policy nc:operation=\"create\"><name>P</name><config><a>1</a><b nc:operation=\"merge\">2</b></config>"
             "</policy>"),
         "oc{policy:create{name='P' config:create{a='1':create b='2':merge}}}"},
        {top("<policy nc:operation=\"replace\"><name>P</name><a>1</a></policy><x nc:operation=\"delete\"><y/></x>"),
         "oc{policy:replace{name='P' a='1'} x:delete{y}}"},
        {edit(top("<a>1</a>"), "<default-operation>replace</default-operation>"), "oc:replace{a='1'}"},
        {edit(top("<a>1</a>", " nc:operation=\"merge\""), "<default-operation>replace</default-operation>"),
         "oc:merge{a='1'}"},
        {edit(top("<policy><name>P</name><config><a>1</a><b nc:operation=\"delete\"/></config></policy>"
                  "<policy nc:operation=\"merge\"><name>Q</name><a>1</a></policy>"),
              "<default-operation>none</default-operation><test-option>set</test-option>"),
         "oc:none{policy:none{name='P':none config:none{b:delete}} policy:merge{name='Q' a='1'}}"},
    });
}

TEST(Documents, refusals_name_what_is_wrong)
{
    const auto undeclared = [](const std::string &name) {
        return "error: the prefix of element <" + name + "> is not declared";
    };
    expect_all({
        {"", "error: the request is empty"},
        {"<!-- -->", "error: the request has no element"},
        {"<a/>junk", "error: the request is no XML document: there is text outside its root element"},
        {"<!DOCTYPE a><a/>", "error: a document type declaration is not allowed"},
        {top("") + "<x/>", "error: the request has a second root element, <x>"},
        {"<config>" + top("") + "<x/></config>", "error: a request has one tree, and <x> is a second one at /x"},
        {top("<a>\n <b>\n</c></a>"),
         "error: the request is no XML document: Start-end tags mismatch at line 3, column 3"},
        {"<oc>\xff</oc>", "error: the request has bytes that are no XML character in UTF-8 at line 1, column 5"},
        {"<oc/>", "error: <oc> is in namespace '', not in 'http://example.org/oc' at /oc"},
        {"<x/>", "error: no mapping is registered for the element <x> at /x"},
        {"<op xmlns=\"" + std::string(oc_ns) + "\"/>", "error: no mapping is registered for the element <op> at /op"},
        {top("<p:a/>"), "error: the prefix of element <p:a> is not declared at /oc/a"},
        {top("<a p:b=\"\"/>"), "error: the prefix of attribute 'p:b' is not declared at /oc/a"},
        {top("<a operation=\"delete\"/>"),
         "error: the attribute 'operation' must be in namespace " + std::string(netconf_ns) + " at /oc/a"},
        {top("<a nc:operation=\"erase\"/>"),
         "error: operation 'erase' is none of merge, replace, create, delete and remove at /oc/a"},
        {top("<a b=\"\"/>"), "error: unknown attribute 'b' at /oc/a"},
        {top("<a>text<b/></a>"), "error: an element holds text beside its child elements at /oc/a"},
        {"<x:config>" + top("") + "</x:config>", undeclared("x:config")},
        {"<x:rpc><get/></x:rpc>", undeclared("x:rpc")},
        {rpc("<x:get/>"), undeclared("x:get")},
        {rpc("<get><x:filter/></get>"), undeclared("x:filter")},
        {rpc("<edit-config><target><running/></target><x:config>" + top("") + "</x:config></edit-config>"),
         undeclared("x:config")},
        {rpc("<edit-config><x:target><running/></x:target><config>" + top("") + "</config></edit-config>"),
         undeclared("x:target")},
        {rpc("<edit-config xmlns:x=\"urn:x\"><x:target><running/></x:target><config/></edit-config>"),
         "error: unknown element <x:target> in <edit-config>"},
        {rpc("<edit-config><target><running/></target><config/><config/></edit-config>"),
         "error: <config> stands twice in <edit-config>"},
        {rpc("<edit-config><config/></edit-config>"), "error: <edit-config> lacks <target>"},
        {rpc("<get><filter f=\"\"/></get>"), "error: unknown attribute 'f' of <filter>"},
        {rpc(""), "error: the <rpc> holds no operation"},
        {"<config>x" + top("") + "</config>", "error: there is text between the elements"},
        {rpc("<commit/>"), "error: the operation <commit> is not offered"},
        {rpc("<get/><get/>"), "error: an <rpc> holds one operation, and <get> is a second one"},
        {rpc("<get-config><source><startup/></source></get-config>"),
         "error: the source 'startup' does not exist: the only datastore is running"},
        {rpc("<get-config/>"), "error: <get-config> lacks <source>"},
        {rpc("<edit-config><target><running/></target></edit-config>"), "error: <edit-config> lacks <config>"},
        {edit("", "<test-option>test-only</test-option>"),
         "error: test-option 'test-only' is not offered, only test-then-set and set"},
        {edit("", "<error-option>continue-on-error</error-option>"),
         "error: error-option 'continue-on-error' is not offered, only stop-on-error and rollback-on-error"},
        {edit("", "<default-operation>create</default-operation>"),
         "error: default-operation 'create' is none of merge, replace and none"},
        {edit("", "<url/>"), "error: unknown element <url> in <edit-config>"},
        {rpc("<get><filter type=\"xpath\" select=\"/\"/></get>"),
         "error: filters of type 'xpath' are not offered, only subtree"},
    });
    expect_all({{top("<a nc:operation=\"delete\"/>"), "error: an operation attribute has no place in a read at /oc/a"},
                {top("<a b=\"1\"/>"), "error: attribute 'b': attribute match expressions are not supported at /oc/a"}},
               TQM_REQ_GET);
}

TEST(Documents, deep_nesting_is_refused)
{
    std::string text;
    for (int i = 0; i < 100000; ++i) {
        text += "<a>";
    }
    const std::string truncated = read(text);
    EXPECT_TRUE(truncated.starts_with("error: the request is no XML document")) << truncated;
    for (int i = 0; i < 100000; ++i) {
        text += "</a>";
    }
    const std::string deep = read(top(text));
    EXPECT_TRUE(deep.starts_with("error: the request is nested deeper than 256 elements")) << deep.substr(0, 80);
}

} // namespace
