// Where a client is told that a request has failed: each kind of refusal names its place node by node, as messages
// need it.
#include <cstring>

#include <gtest/gtest.h>

#include "support.h"

namespace
{

using namespace test;
using tqm::Document;

rcode refuse(tqm_map_ctx ctx, const char *tag, rcode code)
{
    tqm_oc_error_path(ctx);
    ctx->request->error_tag = tqm_strdup(tag, "test");
    return code;
}

/// Maps policies to /pol/p: the leaves in it to leaves of their names, both values of "cipher" to one leaf.
rcode forward_policy(tqm_map_ctx ctx, const rdl_tqm_datatree &policy, rdl_tqm_datatree *out)
{
    rcode rc = tqm_map_datatree_add_path(ctx, out, "/pol/p", native_ns, nullptr, &policy, nullptr, 1);
    for (uint32_t i = 0; rc == 0 && i < policy.subtree_count; ++i) {
        const rdl_tqm_datatree &child = policy.subtree[i];
        if (std::strcmp(child.tag, "refused") == 0) {
            rc = refuse(ctx, child.tag, TQM_ERR_UNSUPPORTED);
        } else if (std::strcmp(child.tag, "list-key") == 0) {
            rc = TQM_ERR_LIST_KEY;
        } else {
            const std::string path = std::string("/pol/p/") + child.tag;
            rc = tqm_map_datatree_add_path(ctx, out, path.c_str(), native_ns, child.value, &child, nullptr, 0);
        }
    }
    return rc;
}

rcode forward_root(tqm_map_ctx ctx, const rdl_tqm_datatree *tree, rdl_tqm_datatree *out)
{
    rcode rc = 0;
    tqm_map_add_to_node_hierarchy(ctx, tree, TQM_HIER_CONTAINER);
    for (uint32_t i = 0; rc == 0 && i < tree->subtree_count; ++i) {
        const rdl_tqm_datatree &policy = tree->subtree[i];
        if (std::strcmp(policy.tag, "policy") != 0) {
            continue;
        }
        if (policy.subtree_count == 0) {
            return TQM_ERR_NO_SUBTREE;
        }
        if (std::strcmp(policy.subtree[0].tag, "config") == 0) {
            return TQM_ERR_BAD_ARGS;
        }
        tqm_map_add_to_node_hierarchy(ctx, &policy, TQM_HIER_LIST);
        rc = forward_policy(ctx, policy, out);
        tqm_map_remove_from_node_hierarchy(ctx, &policy);
    }
    tqm_map_remove_from_node_hierarchy(ctx, tree);
    return rc;
}

rcode reverse_root(tqm_map_ctx ctx, const rdl_tqm_datatree *tree, rdl_tqm_datatree *out)
{
    for (uint32_t i = 0; i < tree->subtree_count; ++i) {
        const rdl_tqm_datatree &entry = tree->subtree[i];
        if (std::strcmp(entry.tag, "bad") == 0) {
            tqm_map_add_to_node_hierarchy(ctx, tree, TQM_HIER_CONTAINER);
            tqm_map_add_to_node_hierarchy(ctx, &entry, TQM_HIER_CONTAINER);
            return refuse(ctx, entry.tag, TQM_ERR_LIST_KEY);
        }
        tqm_map_datatree_add_path(ctx, out, "/oc/policy", oc_ns, nullptr, nullptr, nullptr, 1);
        for (uint32_t j = 0; j < entry.subtree_count; ++j) {
            const std::string path = std::string("/oc/policy/") + entry.subtree[j].tag;
            tqm_map_datatree_add_path(ctx, out, path.c_str(), oc_ns, entry.subtree[j].value, nullptr, nullptr, 0);
        }
    }
    return 0;
}

/// Refuses the entry with the name "X".
class Checker : public tqm::EditChecker
{
public:
    tqm::Expected<void> check(const tqm::EditTree &edit) override
    {
        tqm::Expected<void> checked;
        edit.for_each_child(edit.top(), [&](const rdl_tqm_datatree &entry) {
            tqm::InstancePath place;
            place.enter("oc").enter("policy").keys(entry, {"name"});
            if (place.text() == "/oc/policy[name='X']") {
                checked = tl::unexpected(tqm::Error{"no X"}.at(place));
            }
            return checked.has_value();
        });
        return checked;
    }
};

class ErrorPlaces : public ::testing::Test
{
protected:
    static tqm::Schema models_with_leaves()
    {
        tqm::Schema models = schema();
        for (const char *leaf : {"/oc/policy/name", "/oc/policy/a"}) {
            models.add({.path = leaf, .ns = oc_ns, .kind = tqm::NodeKind::leaf});
        }
        models.add({.path = "/oc", .ns = oc_ns, .kind = tqm::NodeKind::container});
        models.add({.path = "/oc/policy/cipher", .ns = oc_ns, .kind = tqm::NodeKind::leaf_list});
        models.add({.path = "/pol/p/cipher", .ns = native_ns, .kind = tqm::NodeKind::leaf});
        models.add({.path = "/pol/bad", .ns = native_ns, .kind = tqm::NodeKind::container});
        models.add({.path = "/pol/p/a", .ns = native_ns, .kind = tqm::NodeKind::leaf});
        return models;
    }
    static tqm::Plugin plugin_of_policies()
    {
        std::vector<tqm_map_reg_info> maps = registrations();
        maps.resize(2); // "kc" makes "oc" a client's top
        maps[0].forward_root = forward_root;
        maps[0].reverse_root = reverse_root;
        return tqm::Plugin(maps);
    }
    static std::string top(const std::string &content)
    {
        return std::string("<oc xmlns=\"") + oc_ns +
               "\" xmlns:f=\"urn:foreign\" xmlns:nc=\"urn:ietf:params:xml:ns:netconf:base:1.0\">" + content + "</oc>";
    }
    static std::string told(const tqm::Error &error)
    {
        const tqm::InstanceIdentifier instance = xml_path(error);
        std::string text = std::string(name_of(error.error_tag)) + " " + instance.text + " " + json_path(error);
        for (const auto &[prefix, uri] : instance.namespaces) {
            text.append(" ").append(prefix).append("=").append(uri == oc_ns || uri == native_ns ? "" : "?");
        }
        return text + (error.bad_element.empty() ? "" : " <" + error.bad_element + ">");
    }
    std::string edit(const std::string &content)
    {
        const auto edited = framework.edit(Document::parse(top(content)).value(), native);
        return edited ? "done" : told(edited.error());
    }

    const tqm::Schema models = models_with_leaves();
    const tqm::Plugin plugin = plugin_of_policies();
    Checker checker;
    tqm::Framework framework{plugin, models, {}, &checker};
    MemorySide native;
};

TEST_F(ErrorPlaces, each_kind_of_refusal_of_an_edit_has_its_own)
{
    native.data = node("pol", {node("p", {leaf("name", "P"), leaf("cipher", "x")})});
    const std::string p = "/oc:oc/oc:policy[oc:name='P'] /example-oc:oc/policy[name='P'] oc=";
    const std::string p_a = "/oc:oc/oc:policy[oc:name='P']/oc:a /example-oc:oc/policy[name='P']/a oc=";
    const struct {
        const char *content;
        std::string told;
    } rows[] = {
        {"<policy><name>P</name><a>1</a></policy>", "done"},
        // the document
        {"<policy><name>P</name><a nc:operation='erase'/></policy>", "bad-attribute " + p_a + " <a>"},
        {"<policy><name>it's</name><a nc:operation='erase'/></policy>",
         "bad-attribute /oc:oc/oc:policy[oc:name=\"it's\"]/oc:a /example-oc:oc/policy[name=\"it's\"]/a oc= <a>"},
        {"<policy><name>a\"b\\c'</name><a nc:operation='erase'/></policy>",
         R"(bad-attribute /oc:oc/oc:policy[oc:name="a\"b\\c'"]/oc:a /example-oc:oc/policy[name="a\"b\\c'"]/a oc= <a>)"},
        {"<policy><name>P</name><f:a/></policy>", "unknown-namespace " + p + " <a>"},
        {"<chain><name>C</name><keys><key><id>1</id><id f:x=''/></key></keys></chain>",
         "unknown-attribute /oc:oc/oc:chain[oc:name='C']/oc:keys/oc:key[oc:id='1']/oc:id "
         "/example-oc:oc/chain[name='C']/keys/key[id='1']/id oc= <id>"},
        // the client's model
        {"<policy><name>X</name></policy>",
         "operation-failed /oc:oc/oc:policy[oc:name='X'] /example-oc:oc/policy[name='X'] oc="},
        // what is there
        {"<policy nc:operation='create'><name>P</name></policy>", "data-exists " + p},
        {"<policy><name>P</name><a nc:operation='delete'/></policy>", "data-missing " + p_a},
        {"<policy><name>P</name><cipher nc:operation='delete'>y</cipher></policy>",
         "data-missing /oc:oc/oc:policy[oc:name='P']/oc:cipher[.='y'] /example-oc:oc/policy[name='P']/cipher[.='y'] "
         "oc="},
        // the walk: with a place of its own, and without
        {"<policy><name>P</name><refused/></policy>", "unknown-element " + p + " <refused>"},
        {"<policy><name>P</name><list-key/></policy>", "bad-element  "},
        {"<interface/><policy/>", "missing-element /oc:oc/oc:interface /example-oc:oc/interface oc="},
        {"<global><x nc:operation='remove'><y/></x></global><policy><config/></policy>",
         "invalid-value /oc:oc/oc:global/oc:x /example-oc:oc/global/x oc="},
        {"<policy><name>P</name><cipher>x</cipher><cipher>y</cipher></policy>",
         "operation-failed /oc:oc/oc:policy[oc:name='P']/oc:cipher[.='y'] "
         "/example-oc:oc/policy[name='P']/cipher[.='y'] oc="},
    };
    for (const auto &row : rows) {
        EXPECT_EQ(edit(row.content), row.told) << row.content;
    }
}

TEST_F(ErrorPlaces, what_the_router_refuses_is_told_at_the_clients_node)
{
    const std::string policy = "<policy><name>P</name><a>1</a></policy>";
    native.refusing = tl::unexpected(tqm::NativeError{"no", "/pol/p[name='P']/a", nullptr, tqm::ErrorTag::too_big});
    for (const auto &[path, told] : {
             std::pair{"", "too-big  "},
             {"/pol/p/a", "too-big /oc:oc/oc:policy[oc:name='P']/oc:a /example-oc:oc/policy[name='P']/a oc="},
             {"/pol/p", "too-big /oc:oc/oc:policy[oc:name='P'] /example-oc:oc/policy[name='P'] oc="},
             {"/pol", "too-big  "},
         }) {
        native.refused_path = path;
        EXPECT_EQ(edit(policy), told) << path;
    }
}

TEST_F(ErrorPlaces, a_failed_read_names_the_native_node_or_the_clients)
{
    native.data = node("pol", {node("bad", {leaf("x", "1")})});
    const auto get = [&] {
        const auto trees =
            framework.get(Document::parse("<filter>" + top("<policy><name/></policy>") + "</filter>").value(), native);
        return trees ? "done" : told(trees.error());
    };
    const std::string walked = "bad-element /n:pol/n:bad /example-native:pol/bad n= <bad>";
    EXPECT_EQ(get(), walked);
    tqm::InstancePath unread_entry;
    unread_entry.enter("pol").enter("p").key("name", "P");
    native.failing = tl::unexpected(tqm::Error{"no answer"}.at(unread_entry));
    const std::string unread = "operation-failed /n:pol/n:p[n:name='P'] /example-native:pol/p[name='P'] n=";
    EXPECT_EQ(get(), unread);
    EXPECT_EQ(edit("<policy nc:operation='create'><name>P</name></policy>"), unread);
    native.failing = {};
    EXPECT_EQ(edit("<policy nc:operation='create'><name>P</name></policy>"), walked);
    const auto reversed = framework.reverse(
        Document::parse("<pol xmlns='" + std::string(native_ns) + "'><p><name>P</name></p><bad/></pol>").value());
    ASSERT_FALSE(reversed);
    EXPECT_EQ(reversed.error().code, TQM_ERR_LIST_KEY);
    EXPECT_EQ(reversed.error().path, "/pol/bad");
}

} // namespace
