// Requests all the way: a document in, a plug-in of a few lines, a native side in memory, a document out.
#include <cstring>

#include <gtest/gtest.h>

#include "support.h"

namespace
{

using namespace test;
using tqm::Document;

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

class MemorySide : public tqm::NativeSide
{
public:
    tl::expected<void, tqm::NativeError> edit(std::span<const tqm::OutputNode *const> trees) override
    {
        for (const tqm::OutputNode *tree : trees) {
            edited += std::string(tree->tag()) + " ";
        }
        return refusing;
    }
    tqm::Expected<void> read(const tqm::OutputNode &, tqm::TreeBuilder &answer) override
    {
        build(answer, data);
        return failing;
    }
    static void build(tqm::TreeBuilder &builder, const Node &tree, const char *ns = native_ns)
    {
        const char *below = std::strcmp(ns, native_ns) == 0 ? oc_ns : ns;
        if (tree.value) {
            return builder.leaf(ns, tree.tag, *tree.value);
        }
        builder.open(ns, tree.tag);
        for (const Node &child : tree.children) {
            build(builder, child, below);
        }
        builder.close();
    }

    std::string edited;
    Node data;
    tqm::Expected<void> failing;
    tl::expected<void, tqm::NativeError> refusing;
};

class Frameworks : public ::testing::Test
{
protected:
    Frameworks()
    {
        std::vector<tqm_map_reg_info> maps = registrations();
        maps.resize(2); // "kc" lends its OpenConfig top; "pol" does the work
        for (tqm_map_reg_info &map : maps) {
            map.forward_root = forward_root;
            map.reverse_root = reverse_root;
        }
        plugin = tqm::Plugin(maps);
    }
    static std::string top(const std::string &content)
    {
        return std::string("<oc xmlns=\"") + oc_ns + "\" xmlns:f=\"urn:foreign\">" + content + "</oc>";
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
    const auto everything = framework.get(std::nullopt, native);
    std::string text;
    everything->print(text);
    EXPECT_EQ(strip(text), all);
}

TEST_F(Frameworks, the_kind_of_a_read_and_its_document_must_agree)
{
    const std::string rpc = "<rpc xmlns=\"urn:ietf:params:xml:ns:netconf:base:1.0\"><get/></rpc>";
    EXPECT_EQ(framework.get_config(Document::parse(rpc).value(), native).error().text,
              "the request is for get, not for get-config");
    EXPECT_EQ(framework.get(Document::parse("<config/>").value(), native).error().text,
              "the request is for edit-config, not for get");
    const tqm::Plugin nothing{std::vector<tqm_map_reg_info>{}};
    EXPECT_EQ(tqm::Framework(nothing, models).forward(Document::parse("<config/>").value()).error().text,
              "the plug-in has registered no mapping");
    EXPECT_FALSE(tqm::Plugin::load("/nonexistent/plugin.so", {}));
}

} // namespace
