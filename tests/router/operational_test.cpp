// Operational data: a source makes them, or a document puts others in their place.
#include "support.h"

#include <libyang/libyang.h>

#include <regex>

namespace router::test
{

using enum Operation;

namespace
{

Node state(std::vector<Node> below)
{
    return in(ns::operational, at("oc-macsec", {at("macsec", {at("mka", std::move(below))})}));
}

// How often it was asked for, told as the priority of a policy.
Tree count_calls(const ly_ctx *context, int calls)
{
    lyd_node *tree = nullptr;
    const std::string path = "/Tarvex-PRIVATE-oc-macsec-oper:oc-macsec/macsec/mka/policies/policy[name='Q']/state/"
                             "key-server-priority";
    lyd_new_path(nullptr, context, path.c_str(), std::to_string(calls).c_str(), 0, &tree);
    return Tree(tree);
}

} // namespace

class Operational : public StoreTest
{
protected:
    Operational()
        : StoreTest(setup([this](const ly_ctx *context, const lyd_node *configuration, const Shown &is_shown) {
              for (const lyd_node *list = configuration ? lyd_child(configuration) : nullptr; list; list = list->next) {
                  (is_shown(list) ? shown_ : hidden_) += LYD_NAME(list);
              }
              return works_ ? count_calls(context, ++calls_) : nullptr;
          }))
    {
    }

    int calls_ = 0;
    bool works_ = true;
    std::string shown_;
    std::string hidden_;
};

TEST_F(Operational, SourceIsAskedOnceForEachConfiguration)
{
    const auto answer = [](int calls) {
        return "oc-macsec{macsec{mka{policies{policy{name=Q state{key-server-priority=" + std::to_string(calls) +
               " } } } } } } ";
    };
    prepare("<keychains xmlns='http://tarvex.example/ns/yang/Tarvex-lib-keychain-cfg'><keychain><chain-name>ospf"
            "</chain-name></keychain></keychains>");
    auto store = open();
    EXPECT_EQ(read(*store, state({})), answer(1));
    EXPECT_EQ(read(*store, state({})), answer(1));
    EXPECT_EQ(hidden_, "keychain");
    ASSERT_EQ(error_of(*store, chains({chain("K", merge, {at("macsec-key", merge, {leaf("key-id", "01")})})})), "");
    EXPECT_EQ(read(*store, state({})), answer(2));
    EXPECT_EQ(shown_, "keychain");
    works_ = false;
    ASSERT_EQ(error_of(*store, chains({chain("K", remove)})), "");
    EXPECT_EQ(read(*store, state({})), "libyang cannot make the operational data");
    auto without_source = Datastore::open(setup(), directory_, Access::read);
    EXPECT_EQ(read(*without_source, state({})), "");
}

TEST_F(Operational, StateOfADocumentTakesThePlaceOfWhatTheSourceMakes)
{
    ASSERT_EQ(error_of(policies({policy("P", merge)})), "");
    auto store = open();
    const std::string bare = "<oc-macsec xmlns='http://tarvex.example/ns/yang/Tarvex-PRIVATE-oc-macsec-oper'><macsec>"
                             "<mka><policies><policy><name>Q</name><state>"
                             "<macsec-cipher-suite>gcm-aes256</macsec-cipher-suite>"
                             "<macsec-cipher-suite>gcm-aes128</macsec-cipher-suite>"
                             "</state></policy></policies></mka></macsec></oc-macsec>";
    std::string prefixed = std::regex_replace(bare, std::regex("(</?)(\\w)"), "$1o:$2");
    prefixed = std::regex_replace(prefixed, std::regex(" xmlns='[^']*'"), "");
    const std::string base = "'urn:ietf:params:xml:ns:netconf:base:1.0'";
    const std::string operational = " xmlns:o='http://tarvex.example/ns/yang/Tarvex-PRIVATE-oc-macsec-oper'";
    const Node suites = state({at("policies", {at("policy", {at("state", {leaf("macsec-cipher-suite", none)})})})});
    for (const std::string &document :
         {bare, "<data>" + bare + "</data>", "\xef\xbb\xbf" + bare, "<data" + operational + ">" + prefixed + "</data >",
          "<nc:rpc-reply xmlns:nc=" + base + " message-id='>\"1'" + operational + "><!-- </nc:data> -->\n<nc:data>" +
              prefixed + "<!-- </nc:data> --></nc:data><?pi </nc:data>?></nc:rpc-reply>\n<!--</nc:rpc-reply>-->",
          "<rpc-reply xmlns=" + base + " xmlns:o='urn:x'><data" + operational + ">" +
              std::regex_replace(prefixed, std::regex(">Q<"), "><![CDATA[Q]]><") + "</data></rpc-reply>",
          "<rpc-reply xmlns=" + base + "><data>" + bare + "</data><!----></rpc-reply>",
          "<data xmlns:unused='urn:a&amp;\"b'\n><!---->" +
              std::regex_replace(bare, std::regex(">Q<"), "><?p i?>&#x51;<!-- c --><") + "</data\n>",
          std::string(R"({"ietf-netconf:rpc-reply": {"message-id": "1", "data": {
            "Tarvex-PRIVATE-oc-macsec-oper:oc-macsec": {"macsec": {"mka": {"policies": {"policy": [{"name": "Q",
            "state": {"macsec-cipher-suite": ["gcm-aes256", "gcm-aes128"]}}]}}}}}}})")}) {
        const auto taken = store->set_operational(document);
        ASSERT_TRUE(taken) << document << ": " << taken.error().text;
        EXPECT_EQ(read(*store, suites),
                  "oc-macsec{macsec{mka{policies{policy{name=Q state{macsec-cipher-suite=gcm-aes256 "
                  "macsec-cipher-suite=gcm-aes128 } } } } } } ");
    }
    for (const std::string &wrong : std::vector<std::string>{
             "", "<oc-macsec", "<data>text" + bare + "</data>", "<oc-macsec xmlns='urn:other'/>",
             "<macsec xmlns='http://tarvex.example/ns/yang/Tarvex-crypto-macsec-mka-cfg'/>", "<data/><data/>",
             "<data/>text", "<!DOCTYPE data><data/>", "<data><o:oc-macsec/></data>", "<rpc-reply><ok/></rpc-reply>",
             "<rpc-reply><rpc-error/><data/></rpc-reply>", "<rpc-reply/>",
             R"({"ietf-netconf:rpc-reply": {"ok": [null]}})", "{} trailing",
             "{\"ietf-netconf:data\": {}, this is no JSON }",
             "{\"ietf-netconf:data\": {}, \"Tarvex-PRIVATE-oc-macsec-oper:oc-macsec\": {}}",
             std::string("{}\0 and more", 11)}) {
        const auto result = store->set_operational(wrong);
        ASSERT_FALSE(result) << wrong;
        EXPECT_TRUE(result.error().text.starts_with("the operational data are not valid: ")) << result.error().text;
    }
    EXPECT_EQ(content().find("gcm-aes256"), std::string::npos) << "state is not stored";
}

// Lines are those of the document, whatever was around its data and in its tags.
TEST_F(Operational, FaultOfADocumentIsToldWithItsLine)
{
    const std::string open_tag = "<oc-macsec\n xmlns='http://tarvex.example/ns/yang/Tarvex-PRIVATE-oc-macsec-oper'>";
    auto store = open();
    for (const auto &[document, line] : std::vector<std::pair<std::string, std::string>>{
             {open_tag + "\n<macsec><colour/></macsec></oc-macsec>", "number 3"},
             {"<data\n><!--\n-->" + open_tag + "<macsec\n><mka\n></mka\n><colour/></macsec></oc-macsec></data>",
              "number 7"},
             {"<rpc-reply xmlns='a\nb'>\n<data>" + open_tag +
                  "<?p\ni?><macsec><![CDATA[\n]]><colour/></macsec></oc-macsec></data></rpc-reply>",
              "number 6"},
             {"<data>\n\n<macsec>", "(line 3)"}}) {
        const auto result = store->set_operational(document);
        ASSERT_FALSE(result) << document;
        EXPECT_NE(result.error().text.find(line), std::string::npos) << result.error().text;
    }
}

} // namespace router::test
