// What the tool says of the model: the tree with its native paths, and the deviations that clients go by.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <regex>
#include <set>
#include <sstream>
#include <string>

#include <libyang/libyang.h>

#include "deviations.h"
#include "environment.h"
#include "mapping_page.h"
#include "model_tree.h"
#include "tqm/framework.h"

namespace
{

class Model : public testing::Test
{
protected:
    static void SetUpTestSuite()
    {
        auto loaded = ocmap::Environment::load({PLUGIN, YANG});
        ASSERT_TRUE(loaded) << loaded.error().text;
        environment = new ocmap::Environment(std::move(*loaded));
    }
    static void TearDownTestSuite() { delete environment; }

    static inline ocmap::Environment *environment = nullptr;
};

/// What stands beside the nodes of a tree, by the node's path.
std::map<std::string, std::string> beside_nodes(const std::string &tree)
{
    std::map<std::string, std::string> found;
    std::vector<std::string> names;
    const std::regex line("([ |]*)\\+--r[wo] ([a-z-]+)\\S*( .*)?");
    const std::regex native(".*?(  |^)((get:|edit:|oper:|/|not supported|no native).*)");
    std::istringstream lines(tree);
    for (std::string text; std::getline(lines, text);) {
        std::smatch node;
        if (!std::regex_match(text, node, line)) {
            continue;
        }
        names.resize((static_cast<std::size_t>(node[1].length()) - 2) / 3);
        names.push_back(node[2]);
        std::string path;
        for (const std::string &name : names) {
            path += "/" + name;
        }
        const std::string rest = std::regex_replace(node[3].str(), std::regex("-> /\\S+"), "");
        std::smatch text_beside;
        found[path] = std::regex_match(rest, text_beside, native) ? text_beside[2].str() : "";
    }
    return found;
}

TEST_F(Model, TheTreeShowsWhereEachNodeGoes)
{
    const auto tree = ocmap::model_tree(*environment);
    ASSERT_TRUE(tree) << tree.error().text;
    const auto beside = beside_nodes(*tree);
    EXPECT_EQ(beside.size(), 110U);
    // All places are on the mapping's page; here is how a line tells them.
    const std::string policy = "/macsec/policy-names/policy-name/";
    EXPECT_EQ(beside.at("/macsec/mka/policies"), "");
    EXPECT_EQ(beside.at("/macsec/mka/policies/policy/config/sak-rekey-interval"),
              "get: " + policy + "{sak-rekey-interval,sak-rekey-interval-sec}; edit: " + policy +
                  "sak-rekey-interval-sec");

    // The counts are those of the lines.
    const auto count = [&](const std::string &beginning) {
        return std::ranges::count_if(beside, [&](const auto &node) { return node.second.starts_with(beginning); });
    };
    const auto says = [&](std::ptrdiff_t number, const std::string &kind) {
        EXPECT_NE(tree->find(" " + std::to_string(number) + " " + kind + "\n"), std::string::npos) << number << kind;
    };
    says(count("/"), "with one native path for reads and edits");
    says(count("get:") + count("edit:"), "with native paths that differ between reads and edits");
    says(count("oper:"), "in the operational model");
    says(count("not supported"), "not supported");
    says(count("no native"), "without a native node of their own");
}

TEST_F(Model, TheTreeMarksNativePathsThatAreInNoModel)
{
    namespace fs = std::filesystem;
    std::string pattern = testing::TempDir() + "/yang.XXXXXX";
    ASSERT_NE(mkdtemp(pattern.data()), nullptr);
    fs::copy(YANG, pattern, fs::copy_options::recursive);
    const fs::path module = fs::path(pattern) / "Tarvex-crypto-macsec-mka-cfg.yang";
    std::ifstream stream(module);
    const std::string text{std::istreambuf_iterator<char>(stream), {}};
    std::ofstream(module) << std::regex_replace(text, std::regex("leaf conf-offset "), "leaf other-offset ");
    const auto other = ocmap::Environment::load({PLUGIN, pattern});
    fs::remove_all(pattern);
    ASSERT_TRUE(other) << other.error().text;
    const auto tree = ocmap::model_tree(*other);
    ASSERT_TRUE(tree) << tree.error().text;
    const std::string mark = " (in no model)";
    const std::size_t marked = tree->find(mark);
    EXPECT_TRUE(tree->substr(0, marked).ends_with("/macsec/policy-names/policy-name/conf-offset"));
    EXPECT_EQ(marked, tree->rfind(mark));
    EXPECT_EQ(ocmap::model_tree(*environment)->find(mark), std::string::npos);
}

TEST_F(Model, ThePageAndTheDeviationsAreTheTools)
{
    const struct {
        const char *file;
        tqm::Expected<std::string> made;
    } cases[] = {{MAPPING_PAGE, ocmap::mapping_page(*environment)},
                 {YANG "/tarvex-openconfig-macsec-deviations.yang", ocmap::deviations(*environment)}};
    for (const auto &one : cases) {
        ASSERT_TRUE(one.made) << one.made.error().text << " " << one.made.error().path;
        std::ifstream file(one.file, std::ios::binary);
        const std::string text{std::istreambuf_iterator<char>(file), {}};
        EXPECT_EQ(text, *one.made) << "'make docs' writes it anew";
    }
}

struct CompiledNode {
    std::string open; ///< the elements that lead to it, with the keys of lists that have one
    std::string close;
    const lysc_node *schema;
};

std::string valid_value(const lysc_node *node)
{
    const lysc_type *type = node->nodetype == LYS_LEAF ? reinterpret_cast<const lysc_node_leaf *>(node)->type
                                                       : reinterpret_cast<const lysc_node_leaflist *>(node)->type;
    if (type->basetype == LY_TYPE_ENUM) {
        return reinterpret_cast<const lysc_type_enum *>(type)->enums[0].name;
    }
    if (type->basetype == LY_TYPE_BOOL) {
        return "true";
    }
    // Texts are those of the keys: a leaf in config repeats its entry's.
    return type->basetype == LY_TYPE_STRING ? "01" : type->basetype == LY_TYPE_UNION ? "2030-01-01T00:00:00" : "60";
}

void collect(const lysc_node *first, const CompiledNode &around, std::vector<CompiledNode> &nodes)
{
    for (const lysc_node *node = first; node != nullptr; node = node->next) {
        const std::string name = node->name;
        const std::string ns = around.open.empty() ? " xmlns='http://openconfig.net/yang/macsec'" : "";
        CompiledNode here{around.open, around.close, node};
        nodes.push_back(here);
        here.open += "<" + name + ns + ">";
        for (const lysc_node *child = lysc_node_child(node); child != nullptr; child = child->next) {
            if (lysc_is_key(child) && (child->flags & LYS_CONFIG_W) != 0) {
                here.open += std::string("<") + child->name + ">01</" + child->name + ">";
            }
        }
        here.close.insert(0, "</" + name + ">");
        collect(lysc_node_child(node), here, nodes);
    }
}

// The compiled openconfig-macsec, with the deviations if there are any.
class Compiled
{
public:
    explicit Compiled(const std::string &deviations)
    {
        ly_log_options(LY_LOSTORE_LAST);
        EXPECT_EQ(ly_ctx_new(YANG, LY_CTX_NO_YANGLIBRARY, &context_), LY_SUCCESS);
        module_ = ly_ctx_load_module(context_, "openconfig-macsec", nullptr, nullptr);
        lys_module *loaded = nullptr;
        if (!deviations.empty()) {
            EXPECT_EQ(lys_parse_mem(context_, deviations.c_str(), LYS_IN_YANG, &loaded), LY_SUCCESS)
                << ly_errmsg(context_);
        }
        collect(module_->compiled->data, {}, nodes_);
    }
    ~Compiled() { ly_ctx_destroy(context_); }
    Compiled(const Compiled &) = delete;
    Compiled &operator=(const Compiled &) = delete;

    const std::vector<CompiledNode> &nodes() const { return nodes_; }
    std::set<std::string> paths() const
    {
        std::set<std::string> paths;
        for (const CompiledNode &node : nodes_) {
            char text[512];
            paths.insert(lysc_path(node.schema, LYSC_PATH_DATA, text, sizeof text));
        }
        return paths;
    }

private:
    ly_ctx *context_ = nullptr;
    const lys_module *module_ = nullptr;
    std::vector<CompiledNode> nodes_;
};

TEST_F(Model, AClientThatKeepsToTheDeviationsMeetsNothingUnsupported)
{
    const auto text = ocmap::deviations(*environment);
    ASSERT_TRUE(text) << text.error().text;
    const Compiled all("");
    const Compiled left(*text);
    EXPECT_EQ(all.nodes().size(), 110U);

    // Each unsupported node is gone, and no other.
    const auto tree = ocmap::model_tree(*environment);
    const std::set<std::string> kept = left.paths();
    for (const auto &[path, beside] : beside_nodes(*tree)) {
        std::string data_path = path;
        data_path.replace(0, 1, "/openconfig-macsec:");
        EXPECT_EQ(kept.contains(std::regex_replace(data_path, std::regex("\\[.*\\]"), "")), beside != "not supported")
            << path;
    }

    tqm::Framework framework(environment->plugin(), environment->schema());
    const auto code_of = [&](const std::string &wrapper, const std::string &inside) -> rcode {
        auto document = tqm::Document::parse("<" + wrapper + " xmlns:nc='urn:ietf:params:xml:ns:netconf:base:1.0'>" +
                                             inside + "</" + wrapper + ">");
        EXPECT_TRUE(document) << document.error().text;
        const auto done = framework.forward(std::move(*document));
        return done ? 0 : done.error().code.value_or(0);
    };
    for (const CompiledNode &node : left.nodes()) {
        const std::string name = node.schema->name;
        const std::string ns = node.open.empty() ? " xmlns='http://openconfig.net/yang/macsec'" : "";
        const bool is_leaf = node.schema->nodetype == LYS_LEAF || node.schema->nodetype == LYS_LEAFLIST;
        const bool is_key = lysc_is_key(node.schema);
        EXPECT_NE(code_of("filter", node.open + (is_key ? "" : "<" + name + ns + "/>") + node.close),
                  TQM_ERR_UNSUPPORTED)
            << name;
        if ((node.schema->flags & LYS_CONFIG_W) == 0 || !is_leaf || is_key) {
            continue;
        }
        EXPECT_EQ(
            code_of("config", node.open + "<" + name + ">" + valid_value(node.schema) + "</" + name + ">" + node.close),
            0U)
            << name;
        EXPECT_NE(code_of("config", node.open + "<" + name + " nc:operation='remove'/>" + node.close),
                  TQM_ERR_UNSUPPORTED)
            << name;
    }
}

} // namespace
