// Requests all the way: a document in, a plug-in of a few lines, a native side in memory, a document out.
#include <cstring>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "support.h"

namespace
{

using namespace test;
using tqm::Document;

constexpr const char *netconf_ns = "urn:ietf:params:xml:ns:netconf:base:1.0";

rcode forward_policy(tqm_map_ctx ctx, const rdl_tqm_datatree &policy, rdl_tqm_datatree *out)
{
    tqm_map_add_to_node_hierarchy(ctx, &policy, TQM_HIER_LIST);
    rcode rc = tqm_map_datatree_add_path(ctx, out, "/pol/p", native_ns, nullptr, &policy, nullptr, 1);
    for (uint32_t i = 0; rc == 0 && i < policy.subtree_count; ++i) {
        const rdl_tqm_datatree &leaf = policy.subtree[i];
        const std::string path = std::string("/pol/p/") + leaf.tag;
        rc = tqm_map_datatree_add_path(ctx, out, path.c_str(), native_ns, leaf.value, &leaf, nullptr, 0);
    }
    tqm_map_remove_from_node_hierarchy(ctx, &policy);
    return rc;
}

/// Forward: "pol" with what the request's policies name. Reverse: policies as they are in the answer.
rcode forward_root(tqm_map_ctx ctx, const rdl_tqm_datatree *tree, rdl_tqm_datatree *out)
{
    rcode rc = tqm_map_datatree_add_path(ctx, out, "/pol", native_ns, nullptr, nullptr, nullptr, 0);
    for (uint32_t i = 0; rc == 0 && i < tree->subtree_count; ++i) {
        const rdl_tqm_datatree &child = tree->subtree[i];
        if (std::strcmp(child.tag, "refused") == 0) {
            tqm_oc_error_path(ctx);
            ctx->request->error_tag = tqm_strdup(child.tag, "test");
            rc = TQM_ERR_UNSUPPORTED;
        } else if (ctx->request->hdr->kind == TQM_REQ_EDIT && std::strcmp(child.tag, "policy") == 0) {
            rc = forward_policy(ctx, child, out);
        } else if (std::strcmp(child.tag, "psk") == 0) {
            rc = tqm_map_datatree_add_path_flagged(ctx, out, "/ifs/if/macsec/psk/chain", other_ns, child.value, &child,
                                                   nullptr, 0, TQM_ADD_OTHER_MODULE);
        } else if (child.value != nullptr) {
            rc = tqm_map_datatree_add_path(ctx, out, "/pol/leaf", native_ns, child.value, &child, nullptr, 0);
        }
    }
    return rc;
}

void answer_leaves(tqm_map_ctx ctx, const rdl_tqm_datatree &node, rdl_tqm_datatree *out, const std::string &path)
{
    for (uint32_t i = 0; i < node.subtree_count; ++i) {
        const rdl_tqm_datatree &child = node.subtree[i];
        const std::string below = path + "/" + child.tag;
        if (child.value != nullptr) {
            tqm_map_datatree_add_path(ctx, out, below.c_str(), child.ns, child.value, nullptr, nullptr, 0);
        } else {
            answer_leaves(ctx, child, out, below);
        }
    }
}

rcode reverse_root(tqm_map_ctx ctx, const rdl_tqm_datatree *tree, rdl_tqm_datatree *out)
{
    for (uint32_t i = 0; i < tree->subtree_count; ++i) {
        const rdl_tqm_datatree &entry = tree->subtree[i];
        if (std::strcmp(entry.tag, "broken") == 0) {
            return TQM_ERR_INVALID_REQUEST;
        }
        tqm_map_add_to_node_hierarchy(ctx, &entry, TQM_HIER_LIST);
        const bool is_policy = std::strcmp(entry.tag, "policy") == 0;
        if (is_policy) {
            tqm_map_datatree_add_path(ctx, out, "/oc/policy", oc_ns, nullptr, nullptr, nullptr, 1);
        }
        answer_leaves(ctx, entry, out, std::string("/oc/") + entry.tag);
        tqm_map_remove_from_node_hierarchy(ctx, &entry);
    }
    return 0;
}

class Frameworks : public ::testing::Test
{
protected:
    Frameworks()
    {
        std::vector<tqm_map_reg_info> maps = registrations();
        maps.pop_back(); // "kc" lends its OpenConfig top; "pol" does the work
        for (tqm_map_reg_info &map : maps) {
            map.forward_root = forward_root;
            map.reverse_root = reverse_root;
        }
        plugin = tqm::Plugin(maps);
    }
    static std::string top(const std::string &content)
    {
        return std::string("<oc xmlns=\"") + oc_ns + "\" xmlns:f=\"urn:foreign\" xmlns:nc=\"" + netconf_ns + "\">" +
               content + "</oc>";
    }
    static std::string rpc(const std::string &operation)
    {
        return std::string("<rpc xmlns=\"") + netconf_ns + "\">" + operation + "</rpc>";
    }
    std::string get(const std::string &filter)
    {
        const auto trees = framework.get(Document::parse("<filter>" + filter + "</filter>").value(), native);
        if (!trees) {
            return "error: " + trees.error().text;
        }
        std::string text;
        trees->print(text);
        return strip(text);
    }
    /// A printed answer without its frame and its blanks.
    static std::string strip(const std::string &text)
    {
        std::string stripped;
        for (std::size_t at = text.find('\n'); at != std::string::npos; at = text.find('\n', at + 1)) {
            const std::size_t end = text.find('\n', at + 1);
            const std::string line = text.substr(at + 1, end == std::string::npos ? 0 : end - at - 1);
            stripped += line.substr(std::min(line.find_first_not_of(' '), line.size()));
        }
        for (const std::string &frame :
             {std::string("<oc xmlns=\"") + oc_ns + "\">", std::string("</oc>"), std::string("</data>")}) {
            if (const std::size_t at = stripped.find(frame); at != std::string::npos) {
                stripped.erase(at, frame.size());
            }
        }
        return stripped;
    }

    tqm::Plugin plugin{std::vector<tqm_map_reg_info>{}};
    const tqm::Schema models = schema();
    tqm::Framework framework{plugin, models};
    MemorySide native;
};

TEST_F(Frameworks, an_edit_reaches_the_native_side_or_says_why_not)
{
    ASSERT_TRUE(framework.edit(Document::parse(top("<a>1</a>")).value(), native));
    EXPECT_EQ(native.edited, "pol ");
    const auto refused = framework.edit(Document::parse(top("<refused/>")).value(), native);
    ASSERT_FALSE(refused);
    EXPECT_EQ(refused.error().tag, "refused");
    EXPECT_EQ(refused.error().code, TQM_ERR_UNSUPPORTED);
    native.refusing = tl::unexpected(tqm::NativeError{"too long", "/pol/a"});
    const auto error = framework.edit(Document::parse(top("<a>1</a>")).value(), native).error();
    EXPECT_EQ(error.text, "the router refuses the edit") << "the native side did not name a node";
    EXPECT_EQ(error.native_path + ": " + error.native_text, "/pol/a: too long");
    EXPECT_EQ(framework.edit(Document::parse("<filter/>").value(), native).error().text,
              "the request is for get, not for edit-config");
    EXPECT_EQ(native.edited, "pol pol ");
}

TEST_F(Frameworks, printing_escapes_what_xml_cannot_hold)
{
    const auto trees = framework.forward(Document::parse(top("<a>&lt;&amp;\"&#13;\t\xc3\xa9]]&gt;</a>")).value());
    ASSERT_TRUE(trees) << trees.error().text;
    std::string text;
    trees->print(text);
    EXPECT_EQ(text, "<config xmlns=\"urn:ietf:params:xml:ns:netconf:base:1.0\" "
                    "xmlns:nc=\"urn:ietf:params:xml:ns:netconf:base:1.0\">\n"
                    "  <pol xmlns=\"http://example.org/native\">\n"
                    "    <leaf>&lt;&amp;\"&#13;\t\xc3\xa9]]&gt;</leaf>\n"
                    "  </pol>\n"
                    "</config>\n");
    native.data = node("pol", {node("global", {leaf("g", "\x01")})}); // no request can bring it
    EXPECT_EQ(get(top("<global/>")), "<global><g>\xef\xbf\xbd</g></global>");
}

TEST_F(Frameworks, an_answer_holds_what_the_filter_selects)
{
    native.data = node(
        "pol",
        {node("policy", {leaf("name", "P1"), node("config", {leaf("a", "1"), leaf("suite", "x"), leaf("suite", "y")})}),
         node("policy", {leaf("name", "P2"), node("config", {leaf("a", "2")}), node("state", {leaf("s", "9")})}),
         node("global", {leaf("g", "0")})});
    const std::string p1 = "<policy><name>P1</name><config><a>1</a><suite>x</suite><suite>y</suite></config></policy>";
    const std::string p2 = "<policy><name>P2</name><config><a>2</a></config><state><s>9</s></state></policy>";
    const std::string all = p1 + p2 + "<global><g>0</g></global>";
    struct Case {
        std::string filter;
        std::string answer;
    };
    for (const Case &c : {
             Case{"", all},
             {"<policy/>", p1 + p2},
             {"<policy><name>P1</name></policy>", p1},
             {"<policy><name> P2 </name><name>P1</name></policy>", ""},
             {"<policy><name>none</name></policy>", ""},
             {"<policy><name>P2</name></policy><policy><name>P1</name></policy>", p1 + p2},
             {"<policy><name>P2</name><state/></policy>", "<policy><name>P2</name><state><s>9</s></state></policy>"},
             {"<policy><name>P1</name><config><a/></config></policy><policy><name>P1</name><config><suite>y</suite>"
              "</config></policy>",
              "<policy><name>P1</name><config><a>1</a><suite>x</suite><suite>y</suite></config></policy>"},
             {"<policy><config><a>2</a></config></policy>",
              "<policy><name>P2</name><config><a>2</a></config></policy>"},
             {"<policy><config><suite>y</suite><a/></config></policy>",
              "<policy><name>P1</name><config><a>1</a><suite>y</suite></config></policy>"},
             {"<policy><state/></policy><global/>",
              "<policy><name>P2</name><state><s>9</s></state></policy><global><g>0</g></global>"},
             {"<f:policy/>", ""},
         }) {
        EXPECT_EQ(get(top(c.filter)), c.answer) << c.filter;
    }
    EXPECT_EQ(get(""), "");
    const std::string config = "<get-config><source><running/></source></get-config>";
    const std::string empty_filter = "<get><filter/></get>";
    for (const auto &[read, expected] :
         {std::pair{framework.get(std::nullopt, native), all},
          {framework.get(Document::parse(rpc("<get/>")).value(), native), all},
          {framework.get_config(Document::parse(rpc(config)).value(), native), all},
          {framework.get(Document::parse(rpc(empty_filter)).value(), native), std::string()}}) {
        ASSERT_TRUE(read) << read.error().text;
        std::string text;
        read->print(text);
        EXPECT_EQ(strip(text), expected);
    }
}

TEST_F(Frameworks, a_read_whose_walk_back_fails_has_no_answer)
{
    native.data = node("pol", {node("policy", {leaf("name", "P")}), node("broken", {})});
    const std::string saved = std::string("<pol xmlns=\"") + native_ns + "\"><broken/></pol>";
    for (const auto &read : {framework.get(std::nullopt, native), framework.get_config(std::nullopt, native),
                             framework.reverse(Document::parse(saved).value())}) {
        ASSERT_FALSE(read);
        EXPECT_EQ(read.error().code, TQM_ERR_INVALID_REQUEST);
    }
}

TEST_F(Frameworks, what_a_walk_back_could_not_add_is_not_in_its_answer)
{
    native.data = node("pol", {node("policy", {leaf("name", "P"), leaf("a", "1"), leaf("b", "2")})});
    tqm::Faults faults;
    faults.fail("tqm_map_datatree_add_path", 4, TQM_ERR_INVALID_REQUEST); // after "pol", the entry and its name
    tqm::Watch watch;
    watch.faults = &faults;
    std::string text;
    tqm::Framework(plugin, models, watch).get(std::nullopt, native)->print(text);
    EXPECT_EQ(strip(text), "<policy><name>P</name><b>2</b></policy>");
}

TEST_F(Frameworks, what_was_printed_is_read_as_the_same)
{
    tqm::Schema leaves = schema();
    leaves.add({.path = "/oc/policy/a", .ns = oc_ns, .kind = tqm::NodeKind::leaf}); // which may be blank
    tqm::Framework with_leaves{plugin, leaves};
    std::string large; // for whatever is between node and sink
    for (int i = 0; i < 50000; ++i) {
        large += "a<\"";
    }
    for (const std::string &text :
         {std::string("a]]>b'\"&lt;\r\t\n  \xf0\x9f\x94\x91\\u0041"), std::string("]]>"), std::string("\r"),
          std::string("'"), std::string(" \r\n "), std::string(200000, 'a'), large}) {
        native.data = node("pol", {node("policy", {leaf("name", "P"), leaf("a", text)})});
        for (const tqm::Format format : {tqm::Format::xml, tqm::Format::json}) {
            std::string printed;
            with_leaves.get(std::nullopt, native)->print(printed, format);
            const auto again = with_leaves.forward(Document::parse(printed).value());
            ASSERT_TRUE(again) << again.error().text << printed;
            const tqm::OutputNode &policy = *again->roots()[0]->children().begin();
            const char *const value = (++policy.children().begin())->value();
            EXPECT_EQ(value == nullptr ? "no value" : value, text) << printed;
        }
    }
}

TEST_F(Frameworks, nodes_of_another_module_are_printed_with_its_namespace)
{
    const auto trees = framework.forward(Document::parse(top("<psk>K</psk>")).value());
    ASSERT_TRUE(trees) << trees.error().text;
    ASSERT_EQ(trees->roots().size(), 2u); // "pol" is always there
    std::string text;
    trees->print(text, tqm::Format::xml, tqm::Envelope::none);
    EXPECT_EQ(text.substr(text.find("<ifs")),
              "<ifs xmlns=\"http://example.org/native\" xmlns:nc=\"urn:ietf:params:xml:ns:netconf:base:1.0\">\n"
              "  <if>\n"
              "    <macsec xmlns=\"http://example.org/other\">\n"
              "      <psk>\n"
              "        <chain>K</chain>\n"
              "      </psk>\n"
              "    </macsec>\n"
              "  </if>\n"
              "</ifs>\n");
    text.clear();
    trees->print(text, tqm::Format::json, tqm::Envelope::none);
    EXPECT_EQ(nlohmann::json::parse(text, nullptr, false)["example-native:ifs"],
              (nlohmann::json{{"if", {{{"http://example.org/other:macsec", {{"psk", {{"chain", "K"}}}}}}}}}))
        << text;
}

TEST_F(Frameworks, json_has_a_value_in_the_form_of_its_type_or_as_text)
{
    tqm::Schema forms = schema();
    for (const auto &[tag, form] : {std::pair{"text", tqm::ValueForm::text},
                                    {"number", tqm::ValueForm::number},
                                    {"boolean", tqm::ValueForm::boolean},
                                    {"empty", tqm::ValueForm::empty}}) {
        forms.add({.path = std::string("/oc/policy/") + tag, .kind = tqm::NodeKind::leaf, .form = form});
    }
    const struct {
        const char *tag;
        std::string value;
        nlohmann::json printed;
    } rows[] = {
        {"number", "0", 0},        {"number", "-12", -12},      {"number", "4294967295", 4294967295},
        {"number", "007", "007"},  {"number", "-", "-"},        {"number", "12345678901", "12345678901"},
        {"number", "1x", "1x"},    {"number", "/0:", "/0:"},    {"text", "12", "12"},
        {"boolean", "true", true}, {"boolean", "false", false}, {"boolean", "1", "1"},
        {"empty", "", {nullptr}},  {"empty", "x", "x"},         {"text", "\x1f\n\x7f", "\x1f\n\x7f"},
    };
    for (const auto &row : rows) {
        native.data = node("pol", {node("policy", {leaf("name", "P"), leaf(row.tag, row.value)})});
        std::string text;
        tqm::Framework(plugin, forms).get(std::nullopt, native)->print(text, tqm::Format::json, tqm::Envelope::none);
        const nlohmann::json printed = nlohmann::json::parse(text, nullptr, false);
        ASSERT_FALSE(printed.is_discarded()) << text;
        EXPECT_EQ(printed["example-oc:oc"]["policy"][0][row.tag], row.printed) << text;
    }
}

TEST_F(Frameworks, json_holds_operations_as_metadata_of_their_nodes)
{
    const auto trees = framework.forward(
        Document::parse(top("<policy nc:operation=\"create\"><name>P</name><a nc:operation=\"merge\">\"1\\</a>"
                            "<suite>x</suite><suite nc:operation=\"merge\">y</suite></policy>"
                            "<policy nc:operation=\"remove\"><name>Q</name></policy>"
                            "<policy><name>R</name><a nc:operation=\"delete\"/><suite>z</suite></policy>"))
            .value());
    ASSERT_TRUE(trees) << trees.error().text;
    const auto op = [](const char *operation) { return nlohmann::json{{"ietf-netconf:operation", operation}}; };
    const nlohmann::json pol = {{"p",
                                 {{{"@", op("create")},
                                   {"name", "P"},
                                   {"a", "\"1\\"},
                                   {"@a", op("merge")},
                                   {"suite", {"x", "y"}},
                                   {"@suite", {nullptr, op("merge")}}},
                                  {{"@", op("remove")}, {"name", "Q"}},
                                  {{"name", "R"}, {"a", nullptr}, {"@a", op("delete")}, {"suite", {"z"}}}}}};
    for (const auto &[envelope, expected] :
         {std::pair{tqm::Envelope::netconf, nlohmann::json{{"ietf-netconf:config", {{"example-native:pol", pol}}}}},
          {tqm::Envelope::none, nlohmann::json{{"example-native:pol", pol}}}}) {
        std::string text;
        trees->print(text, tqm::Format::json, envelope);
        EXPECT_EQ(nlohmann::json::parse(text, nullptr, false), expected) << text;
    }
}

TEST_F(Frameworks, the_kind_of_a_read_and_its_document_must_agree)
{
    const std::string edit =
        rpc("<edit-config><target><running/></target><config>" + top("") + "</config></edit-config>");
    EXPECT_EQ(framework.get_config(Document::parse(rpc("<get/>")).value(), native).error().text,
              "the request is for get, not for get-config");
    for (const std::string &document : {std::string("<config/>"), edit}) {
        const tqm::Error error = framework.get(Document::parse(document).value(), native).error();
        EXPECT_EQ(error.text, "the request is for edit-config, not for get");
        EXPECT_EQ(error.error_tag, tqm::ErrorTag::operation_not_supported);
    }
    const tqm::Plugin nothing{std::vector<tqm_map_reg_info>{}};
    EXPECT_EQ(tqm::Framework(nothing, models).forward(Document::parse("<config/>").value()).error().text,
              "the plug-in has registered no mapping");
    EXPECT_FALSE(tqm::Plugin::load("/nonexistent/plugin.so", {}));
}

} // namespace
