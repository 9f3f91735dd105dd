// Every answer is valid against the published model with the deviations: reads of stores that examples, random edits
// and the router itself have made, whole and through a filter for each node of the answer, judged by libyang.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <random>
#include <string>
#include <vector>

#include <libyang/libyang.h>

#include "environment.h"
#include "model_probe.h"
#include "model_queries.h"
#include "native_store.h"
#include "support.h"
#include "tqm/framework.h"

namespace
{

const std::filesystem::path yang = YANG;
const std::filesystem::path examples = EXAMPLES;

// ---- Judges ---------------------------------------------------------------------------------------------------------

// What yanglint does for its types get, getconfig and config.
struct Rule {
    const char *name;
    uint32_t parse;
    uint32_t validate;
};
constexpr Rule get_rule{"get", LYD_PARSE_STRICT | LYD_PARSE_ONLY, 0};
constexpr Rule get_config_rule{"getconfig", LYD_PARSE_STRICT | LYD_PARSE_ONLY | LYD_PARSE_NO_STATE, 0};
constexpr Rule config_rule{"config", LYD_PARSE_STRICT | LYD_PARSE_NO_STATE, LYD_VALIDATE_NO_STATE};

// In the published model an interface's name is that of an interface of openconfig-interfaces.
constexpr const char *interfaces_module = R"(module openconfig-interfaces {
  namespace "urn:example:interfaces";
  prefix oc-if;
  container interfaces {
    list interface {
      key "name";
      leaf name { type string; }
    }
  }
})";

void substitute(std::string &text, const std::string &behind, const std::string &old, const std::string &now)
{
    const std::size_t at = text.find(old, text.find(behind));
    ASSERT_NE(at, std::string::npos) << behind;
    text.replace(at, old.size(), now);
}

class Judge
{
public:
    enum class Model { our_own, published };

    Judge(Model model, bool with_deviations)
    {
        ly_log_options(LY_LOSTORE_LAST);
        EXPECT_EQ(ly_ctx_new(nullptr, LY_CTX_NO_YANGLIBRARY | LY_CTX_DISABLE_SEARCHDIRS, &context_), LY_SUCCESS);
        std::string text = test::read_file(yang / "openconfig-macsec.yang");
        if (model == Model::published) {
            load(interfaces_module);
            substitute(text, "prefix \"oc-macsec\";", "import",
                       "import openconfig-interfaces { prefix oc-if; } import");
            substitute(text, "grouping interface-settings", "type string;",
                       "type leafref { path \"/oc-if:interfaces/oc-if:interface/oc-if:name\"; }");
        }
        load(test::read_file(yang / "tarvex-extensions.yang"));
        load(text);
        if (with_deviations) {
            load(test::read_file(yang / "tarvex-openconfig-macsec-deviations.yang"));
        }
    }
    ~Judge() { ly_ctx_destroy(context_); }
    Judge(const Judge &) = delete;
    Judge &operator=(const Judge &) = delete;

    // What is wrong with an answer; empty if nothing is.
    std::string fault(const Rule &rule, const std::string &answer) const
    {
        const std::size_t begin = answer.find('>') + 1;
        const std::size_t end = answer.rfind("</data>");
        if (end == std::string::npos) {
            return answer.starts_with("<data ") ? "" : "no <data>";
        }
        const std::string data = answer.substr(begin, end - begin);
        lyd_node *tree = nullptr;
        const LY_ERR code = lyd_parse_data_mem(context_, data.c_str(), LYD_XML, rule.parse, rule.validate, &tree);
        lyd_free_all(tree);
        const char *const place = ly_errpath(context_);
        return code == LY_SUCCESS
                   ? ""
                   : std::string(rule.name) + ": " + ly_errmsg(context_) + " " + (place == nullptr ? "" : place);
    }

private:
    void load(const std::string &text)
    {
        EXPECT_EQ(lys_parse_mem(context_, text.c_str(), LYS_IN_YANG, nullptr), LY_SUCCESS) << ly_errmsg(context_);
    }

    ly_ctx *context_ = nullptr;
};

// ---- Stores and reads -----------------------------------------------------------------------------------------------

std::string macsec(const std::string &inside, const std::string &operation = "")
{
    return "<macsec xmlns='http://openconfig.net/yang/macsec'" + operation + ">" + inside + "</macsec>";
}

std::string escaped(const std::string &text)
{
    std::string result;
    for (const char c : text) {
        result += c == '<' ? "&lt;" : c == '&' ? "&amp;" : std::string(1, c);
    }
    return result;
}

// A filter for each node of an answer: with the keys of the entries around it, without them, and one by its value.
class Filters
{
public:
    void add(const tqm::OutputNode &node, const std::string &open = "", const std::string &bare_open = "",
             const std::string &close = "")
    {
        const std::string tag = node.tag();
        const std::string ns = open.empty() ? " xmlns='" + std::string(node.ns()) + "'" : "";
        const std::string selection = "<" + tag + ns + "/>";
        texts_.push_back(open + selection + close);
        if (bare_open != open) {
            texts_.push_back(bare_open + selection + close);
        }
        if (node.value() != nullptr) {
            texts_.push_back(bare_open + "<" + tag + ">" + escaped(node.value()) + "</" + tag + ">" + close);
        }
        std::string keys;
        for (const tqm::OutputNode &child : node.children()) {
            if (child.is_key()) {
                keys += std::string("<") + child.tag() + ">" + escaped(child.value()) + "</" + child.tag() + ">";
            }
        }
        const std::string start = "<" + tag + ns + ">";
        for (const tqm::OutputNode &child : node.children()) {
            add(child, open + start + (child.is_key() ? "" : keys), bare_open + start, "</" + tag + ">" + close);
        }
    }

    // Each once.
    std::vector<std::string> take()
    {
        std::ranges::sort(texts_);
        texts_.erase(std::unique(texts_.begin(), texts_.end()), texts_.end());
        return std::move(texts_);
    }

private:
    std::vector<std::string> texts_;
};

class ValidAnswer : public testing::Test
{
protected:
    static void SetUpTestSuite()
    {
        auto loaded = ocmap::Environment::load({PLUGIN, YANG});
        ASSERT_TRUE(loaded) << loaded.error().text;
        environment = new ocmap::Environment(std::move(*loaded));
    }
    static void TearDownTestSuite() { delete environment; }

    void SetUp() override
    {
        std::string pattern = testing::TempDir() + "/answers.XXXXXX";
        ASSERT_NE(mkdtemp(pattern.data()), nullptr);
        directory_ = pattern;
    }
    void TearDown() override { std::filesystem::remove_all(directory_); }

    router::Datastore open() const
    {
        auto store = router::Datastore::open(environment->native(), directory_, router::Access::write);
        EXPECT_TRUE(store) << store.error().text;
        return std::move(*store);
    }

    static tqm::Expected<void> edit(router::Datastore &store, const std::string &text)
    {
        auto document = tqm::Document::parse(text);
        EXPECT_TRUE(document) << document.error().text;
        ocmap::NativeStore native(store);
        return tqm::Framework(environment->plugin(), environment->schema()).edit(std::move(*document), native);
    }

    static tqm::Expected<tqm::Trees> read(router::Datastore &store, bool with_state, const std::string &filter)
    {
        tqm::Framework framework(environment->plugin(), environment->schema());
        ocmap::NativeStore native(store);
        std::optional<tqm::Document> document;
        if (!filter.empty()) {
            auto parsed = tqm::Document::parse("<filter>" + filter + "</filter>");
            EXPECT_TRUE(parsed) << parsed.error().text;
            document = std::move(*parsed);
        }
        return with_state ? framework.get(std::move(document), native)
                          : framework.get_config(std::move(document), native);
    }

    static std::string printed(const tqm::Trees &trees)
    {
        std::string text;
        trees.print(text);
        return text;
    }

    static void expect_valid(const Rule &rule, const std::string &answer, const std::string &filter)
    {
        static const Judge judges[] = {{Judge::Model::our_own, true}, {Judge::Model::published, true}};
        for (const Judge &judge : judges) {
            EXPECT_EQ(judge.fault(rule, answer), "") << filter << "\n" << answer;
        }
    }

    // Reads everything, and everything through filters.
    static void expect_valid_answers(router::Datastore &store)
    {
        for (const bool with_state : {false, true}) {
            const auto whole = read(store, with_state, "");
            ASSERT_TRUE(whole) << whole.error().text;
            const Rule &rule = with_state ? get_rule : get_config_rule;
            expect_valid(rule, printed(*whole), "");
            if (!with_state) {
                expect_valid(config_rule, printed(*whole), "");
            }
            Filters filters;
            for (const tqm::OutputNode *root : whole->roots()) {
                filters.add(*root);
            }
            for (const std::string &filter : filters.take()) {
                const auto answer = read(store, with_state, filter);
                // Reads that name the key of a secure channel are refused.
                const bool names_channel = filter.find("<sci-") != filter.npos;
                ASSERT_TRUE(answer || names_channel) << answer.error().text << "\n" << filter;
                if (answer) {
                    // An entry that only the state knows is not found by the name of its key alone.
                    EXPECT_TRUE(!answer->roots().empty() || filter.find("<mka-key><id/>") != filter.npos) << filter;
                    expect_valid(rule, printed(*answer), filter);
                }
            }
        }
    }

    static inline ocmap::Environment *environment = nullptr;
    std::string directory_;
};

const std::vector<const char *> example_edits = {
    "policies/create.xml",   "policies/merge.xml",        "policies/merge.json",         "policies/replace.xml",
    "key-chains/create.xml", "key-chains/rotate.xml",     "key-chains/expire.xml",       "interfaces/attach.xml",
    "interfaces/detach.xml", "key-chains/delete-key.xml", "key-chains/delete-chain.xml", "policies/delete.xml",
};

TEST_F(ValidAnswer, AfterEachOfTheExamples)
{
    router::Datastore store = open();
    for (const char *example : example_edits) {
        SCOPED_TRACE(example);
        const auto edited = edit(store, test::read_file(examples / example));
        EXPECT_TRUE(edited) << edited.error().text;
        const auto whole = read(store, false, "");
        ASSERT_TRUE(whole) << whole.error().text;
        expect_valid(config_rule, printed(*whole), "");
    }
}

TEST_F(ValidAnswer, OfABusyRouterThroughEachFilter)
{
    router::Datastore store = open();
    for (const char *example : {"policies/create.xml", "key-chains/create.xml", "interfaces/attach.xml"}) {
        ASSERT_TRUE(edit(store, test::read_file(examples / example)));
    }
    expect_valid_answers(store);
    const auto taken = store.set_operational(test::read_file(examples / "state/busy-router.xml"));
    ASSERT_TRUE(taken) << taken.error().text;
    expect_valid_answers(store);
}

// Edits with any value that a leaf's type takes.
class RandomEdits
{
public:
    RandomEdits(const ocmap::Environment &environment, unsigned int seed) : environment_(environment), random_(seed)
    {
        auto nodes = ocmap::probe_model(environment);
        EXPECT_TRUE(nodes) << nodes.error().text;
        nodes_ = std::move(*nodes);
    }

    std::string next()
    {
        return "<config xmlns:nc='urn:ietf:params:xml:ns:netconf:base:1.0'>" + macsec(inside("/macsec", "")) +
               "</config>";
    }

private:
    std::string inside(const std::string &path, const std::string &key)
    {
        std::string text;
        for (const ocmap::ProbedNode &node : nodes_) {
            const router::SchemaNode &info = node.info;
            const std::size_t slash = info.path.rfind('/');
            if (info.path.substr(0, slash) != path || !info.config || !node.supported) {
                continue;
            }
            const std::string tag = info.path.substr(slash + 1);
            if (info.kind == router::NodeKind::container) {
                text += "<" + tag + ">" + inside(info.path, key) + "</" + tag + ">";
            } else if (info.kind == router::NodeKind::list) {
                text += entries(info.path, tag);
            } else if (info.is_key || tag == "name" || tag == "id") { // a leaf of config repeats the key
                text += "<" + tag + ">" + key + "</" + tag + ">";
            } else if (index_below(2) == 0) {
                const std::vector<std::string> samples = ocmap::sample_values(environment_.models(), info.path);
                text += "<" + tag + ">" + samples[index_below(samples.size())] + "</" + tag + ">";
            }
        }
        return text;
    }

    std::string entries(const std::string &path, const std::string &tag)
    {
        static const std::vector<std::string> ids = {"01", "ab", "0123456789abcdefABCDEF"};
        static const std::vector<std::string> names = {"P", "a  b", "it's \"&lt;&amp;", "\u00fc\u4e2d"};
        std::string text;
        for (const std::string &key : tag == "mka-key" ? ids : names) {
            const std::string key_leaf = environment_.schema().find(path)->keys.front();
            switch (index_below(4)) {
            case 0:
                break;
            case 1:
                text +=
                    "<" + tag + " nc:operation='remove'><" + key_leaf + ">" + key + "</" + key_leaf + "></" + tag + ">";
                break;
            default:
                text += "<" + tag + ">" + inside(path, key) + "</" + tag + ">";
            }
        }
        return text;
    }

    std::size_t index_below(std::size_t count)
    {
        return std::uniform_int_distribution<std::size_t>(0, count - 1)(random_);
    }

    const ocmap::Environment &environment_;
    std::vector<ocmap::ProbedNode> nodes_;
    std::mt19937 random_;
};

TEST_F(ValidAnswer, AfterRandomEdits)
{
    router::Datastore store = open();
    RandomEdits edits(*environment, 20260101);
    for (int round = 0; round < 8; ++round) {
        const std::string text = edits.next();
        const auto edited = edit(store, text);
        ASSERT_TRUE(edited) << edited.error().text << " " << edited.error().path << "\n" << text;
        expect_valid_answers(store);
    }
}

// What no client writes: settings of the router's own, in its own forms.
TEST_F(ValidAnswer, OfSettingsThatTheRouterMade)
{
    const auto key = [](const std::string &id, const std::string &lifetime) {
        return "<macsec-key><key-id>" + id + "</key-id><macsec-lifetime>" + lifetime +
               "</macsec-lifetime></macsec-key>";
    };
    const auto start = [](const std::string &year) {
        return "<start-hour>23</start-hour><start-minutes>59</start-minutes><start-seconds>59</start-seconds>"
               "<start-date>31</start-date><start-month>dec</start-month><start-year>" +
               year + "</start-year>";
    };
    const std::string ns = "xmlns='http://tarvex.example/ns/yang/Tarvex-";
    test::write_file(std::filesystem::path(directory_) / "native.xml",
                     "<config><macsec " + ns +
                         "crypto-macsec-mka-cfg'><policy-names>"
                         "<policy-name><name>bare</name></policy-name>"
                         "<policy-name><name>long</name><sak-rekey-interval>1092</sak-rekey-interval></policy-name>"
                         "<policy-name><name>off</name><delay-protection>False</delay-protection>"
                         "<include-icv-indicator>false</include-icv-indicator><sak-rekey-interval>0</"
                         "sak-rekey-interval></policy-name>"
                         "</policy-names></macsec>"
                         "<keychains " +
                         ns +
                         "lib-keychain-cfg'><keychain><chain-name>others</chain-name></keychain>"
                         "<keychain><chain-name>KC</chain-name><macsec-keychain><macsec-keys>" +
                         key("00", "") + key("01", start("1970") + "<life-time>4294967295</life-time>") +
                         key("02", start("9999") + "<life-time>4294967295</life-time>") +
                         key("03", start("9999") + "<infinite-flag>true</infinite-flag>") +
                         key("04", "<start-year>2030</start-year><end-year>2031</end-year>") +
                         "</macsec-keys></macsec-keychain></keychain></keychains>"
                         "<interface-configurations " +
                         ns +
                         "ifmgr-cfg'>"
                         "<interface-configuration><active>act</active><interface-name>Loopback0</interface-name>"
                         "</interface-configuration>"
                         "<interface-configuration><active>act</active><interface-name>a</interface-name>"
                         "<macsec " +
                         ns +
                         "crypto-macsec-mka-if-cfg'><psk-key-chain/></macsec></interface-configuration>"
                         "<interface-configuration><active>pre</active><interface-name>a</interface-name>"
                         "<macsec " +
                         ns +
                         "crypto-macsec-mka-if-cfg'><psk-key-chain><policy-name>none</policy-name></psk-key-chain>"
                         "</macsec></interface-configuration>"
                         "</interface-configurations></config>");
    router::Datastore store = open();
    expect_valid_answers(store);
}

// The judges can tell: each difference that the deviations name is one.
TEST_F(ValidAnswer, IsValidOnlyWithTheDeviations)
{
    const auto in_interface = [](const std::string &mka) {
        return "<interfaces><interface><name>a</name><config><name>a</name></config>" + mka +
               "</interface></interfaces>";
    };
    const auto in_key = [](const std::string &leaf) {
        return "<mka><key-chains><key-chain><name>K</name><config><name>K</name></config><mka-keys><mka-key><id>01</id>"
               "<config><id>01</id>" +
               leaf + "</config></mka-key></mka-keys></key-chain></key-chains></mka>";
    };
    const std::string answers[] = {
        in_interface(""),
        in_interface("<mka><config><mka-policy>none</mka-policy></config></mka>"),
        in_interface("<mka><config><key-chain>none</key-chain></config></mka>"),
        in_key("<valid-date-time>2030-01-01T00:00:00</valid-date-time>"),
        in_key("<expiration-date-time>2030-01-01T00:00:00</expiration-date-time>"),
    };
    const Judge published(Judge::Model::published, false);
    for (const std::string &inside : answers) {
        const std::string answer = "<data >" + macsec(inside) + "</data>";
        EXPECT_NE(published.fault(config_rule, answer), "") << inside;
        expect_valid(config_rule, answer, "");
    }
    const Judge deviated(Judge::Model::published, true);
    const std::string suite = "<macsec-cipher-suite>GCM_AES_128</macsec-cipher-suite>"
                              "<macsec-cipher-suite>GCM_AES_256</macsec-cipher-suite>";
    const std::string two = "<data >" +
                            macsec("<mka><policies><policy><name>P</name><config><name>P</name>" + suite +
                                   "</config></policy></policies></mka>") +
                            "</data>";
    EXPECT_EQ(published.fault(config_rule, two), "");
    EXPECT_NE(deviated.fault(config_rule, two), "");
}

} // namespace
