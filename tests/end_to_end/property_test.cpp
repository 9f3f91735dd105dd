// What a client reads after an edit is what RFC 6241 says of the tree that it sent: sequences of random edits through
// the framework and a datastore, in one process, each followed by a whole read, against the model of rfc6241_model.h.
// MACSEC_SEQUENCES and MACSEC_SEED in the environment give other counts and other sequences.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <regex>

#include <pugixml.hpp>
#include <unistd.h>

#include "as_json.h"
#include "edit_checker.h"
#include "environment.h"
#include "native_store.h"
#include "openconfig.h"
#include "random_edits.h"
#include "tqm/framework.h"

namespace
{

using test::Leaves;

/// What the router holds before the first edit.
constexpr const char *native_data = R"(<data xmlns="urn:ietf:params:xml:ns:netconf:base:1.0">
<macsec xmlns="http://tarvex.example/ns/yang/Tarvex-crypto-macsec-mka-cfg"><policy-names>
  <policy-name><name>P0</name><created/><conf-offset>conf-off-set-50</conf-offset>
    <securitypolicy>must-secure</securitypolicy><windowsize>64</windowsize></policy-name>
  <policy-name><name>P1</name><created/><sak-rekey-interval>2</sak-rekey-interval></policy-name>
</policy-names></macsec>
<keychains xmlns="http://tarvex.example/ns/yang/Tarvex-lib-keychain-cfg">
  <keychain><chain-name>C0</chain-name><accept-tolerance><value>5</value></accept-tolerance>
    <macsec-keychain><macsec-keys><macsec-key><key-id>01</key-id>
      <macsec-key-string><string>!0b</string><encryption-type>clear</encryption-type></macsec-key-string>
    </macsec-key></macsec-keys></macsec-keychain>
    <keys><key><key-id>0c</key-id><key-string><keystring>0d</keystring></key-string></key></keys></keychain>
  <keychain><chain-name>R0</chain-name><accept-tolerance><value>6</value></accept-tolerance></keychain>
</keychains>
<interface-configurations xmlns="http://tarvex.example/ns/yang/Tarvex-ifmgr-cfg">
  <interface-configuration><active>act</active><interface-name>I0</interface-name><description>up</description>
    <macsec xmlns="http://tarvex.example/ns/yang/Tarvex-crypto-macsec-mka-if-cfg"><psk-key-chain>
      <key-chain-name>C0</key-chain-name><fallbackkeychain>F0</fallbackkeychain></psk-key-chain></macsec>
  </interface-configuration>
  <interface-configuration><active>act</active><interface-name>I1</interface-name><description>down</description>
  </interface-configuration>
  <interface-configuration><active>act</active><interface-name>R1</interface-name><shutdown/></interface-configuration>
</interface-configurations></data>)";

const std::string policy_0 = "/macsec/mka/policies/policy[name='P0']";
const std::string policy_1 = "/macsec/mka/policies/policy[name='P1']";
const std::string chain_0 = "/macsec/mka/key-chains/key-chain[name='C0']";
const std::string key_01 = chain_0 + "/mka-keys/mka-key[id='01']";
const std::string interface_0 = "/macsec/interfaces/interface[name='I0']";

/// The same as OpenConfig shows it, with the secret.
const Leaves tree_at_first = {
    {policy_0 + "/name", "P0"},
    {policy_0 + "/config/name", "P0"},
    {policy_0 + "/config/confidentiality-offset", "50_BYTES"},
    {policy_1 + "/name", "P1"},
    {policy_1 + "/config/name", "P1"},
    {policy_1 + "/config/sak-rekey-interval", "120"},
    {chain_0 + "/name", "C0"},
    {chain_0 + "/config/name", "C0"},
    {key_01 + "/id", "01"},
    {key_01 + "/config/id", "01"},
    {key_01 + "/config/key-clear-text", "0b"},
    {interface_0 + "/name", "I0"},
    {interface_0 + "/config/name", "I0"},
    {interface_0 + "/mka/config/key-chain", "C0"},
};

const std::string native_policy = "/macsec/policy-names/policy-name[name='P0']";
const std::string native_chain = "/keychains/keychain[chain-name=";
const std::string native_interface = "/interface-configurations/interface-configuration[interface-name=";
/// What of it is the router's own, and the OpenConfig entry that it goes with; without one it never goes.
const std::map<std::string, std::string> routers_own = {
    {native_policy + "/securitypolicy", policy_0},
    {native_policy + "/windowsize", policy_0},
    {native_chain + "'C0']/accept-tolerance/value", chain_0},
    {native_chain + "'C0']/keys/key[key-id='0c']/key-id", chain_0},
    {native_chain + "'C0']/keys/key[key-id='0c']/key-string/keystring", chain_0},
    {native_chain + "'R0']/chain-name", ""},
    {native_chain + "'R0']/accept-tolerance/value", ""},
    {native_interface + "'I0']/description", ""},
    {native_interface + "'I0']/macsec/psk-key-chain/fallbackkeychain", interface_0},
    {native_interface + "'I1']/description", ""},
    {native_interface + "'R1']/shutdown", ""},
};

/// The leaves of `node`, of either side's data, by path with keys.
void collect(pugi::xml_node node, const std::string &parent, Leaves &leaves)
{
    static const std::map<std::string, const char *> keys = {
        {"policy", "name"},       {"key-chain", "name"},   {"mka-key", "id"},
        {"interface", "name"},    {"policy-name", "name"}, {"keychain", "chain-name"},
        {"macsec-key", "key-id"}, {"key", "key-id"},       {"interface-configuration", "interface-name"},
    };
    const std::string name = node.name();
    const bool is_leaf = node.first_child().type() != pugi::node_element;
    std::string path = parent + "/" + name;
    if (const auto key = keys.find(name); key != keys.end() && !is_leaf) {
        path += std::string("[") + key->second + "='" + node.child_value(key->second) + "']";
    } else if (name == "macsec-cipher-suite") {
        path += std::string("[.='") + node.child_value() + "']";
    }
    if (is_leaf) {
        leaves[path] = node.child_value();
        return;
    }
    for (const pugi::xml_node child : node.children()) {
        collect(child, path, leaves);
    }
}

Leaves leaves_of(const std::string &data)
{
    pugi::xml_document document;
    document.load_string(data.c_str());
    Leaves leaves;
    for (const pugi::xml_node root : document.document_element().children()) {
        collect(root, "", leaves);
    }
    return leaves;
}

/// Of native leaves the router's own, but for those that belong to entries that are not in `tree`.
Leaves own_after(Leaves native, const Leaves &tree)
{
    std::erase_if(native, [&](const auto &leaf) {
        const auto own = routers_own.find(leaf.first);
        return own == routers_own.end() || (!own->second.empty() && !test::exists(tree, own->second));
    });
    return native;
}

/// How many native leaves `tree` takes, so that none is left behind that no read shows. Interfaces count without their
/// keys: their entries may have been there before, and stay.
std::size_t native_count(const Leaves &tree)
{
    static const std::regex none("/macsec/interfaces/.*/name|.*/config/(name|id)");
    static const std::regex two("/macsec/mka/policies/policy\\[[^/]*\\]/name|.*/key-clear-text");
    std::size_t count = 0;
    for (const auto &[path, value] : tree) {
        const bool is_date = path.ends_with("-date-time") && value != "NO_EXPIRATION";
        count += std::regex_match(path, none) ? 0 : std::regex_match(path, two) ? 2 : is_date ? 6 : 1;
    }
    return count;
}

std::string differences(const Leaves &expected, const Leaves &actual)
{
    std::string text;
    for (const auto &[path, value] : expected) {
        const auto found = actual.find(path);
        if (found == actual.end() || found->second != value) {
            text += path + " is " + (found == actual.end() ? "missing" : found->second) + " instead of " + value + "\n";
        }
    }
    for (const auto &[path, value] : actual) {
        text += expected.contains(path) ? "" : path + " is " + value + " and should not be there\n";
    }
    return text;
}

class Property : public testing::Test
{
protected:
    void SetUp() override
    {
        auto loaded = ocmap::Environment::load({PLUGIN, YANG});
        ASSERT_TRUE(loaded) << loaded.error().text;
        environment_.emplace(std::move(*loaded));
        auto model = ocmap::load_client_model(environment_->models(), YANG);
        ASSERT_TRUE(model) << model.error().text;
        checker_.emplace(std::move(*model));
        framework_.emplace(environment_->plugin(), environment_->schema(), tqm::Watch{}, &*checker_);
        // In memory where there is such a place: most of the time would go into making files durable.
        const bool has_memory = access("/dev/shm", W_OK) == 0;
        std::string pattern = (has_memory ? "/dev/shm" : testing::TempDir()) + "/property.XXXXXX";
        ASSERT_NE(mkdtemp(pattern.data()), nullptr);
        directory_ = pattern;
    }
    void TearDown() override { std::filesystem::remove_all(directory_); }

    /// What goes wrong in `edits` on a new store; empty if nothing does.
    std::string fault(const std::vector<test::Edit> &edits)
    {
        std::ofstream(store_file(), std::ios::trunc) << native_data;
        auto store = router::Datastore::open(environment_->native(), directory_, router::Access::write);
        if (!store) {
            return store.error().text;
        }
        ocmap::NativeStore native(*store);
        Leaves tree = tree_at_first;
        std::string found;
        for (std::size_t i = 0; i < edits.size() && found.empty(); ++i) {
            found = fault_of(edits[i], native, tree);
        }
        return found;
    }

private:
    std::string fault_of(const test::Edit &edit, ocmap::NativeStore &native, Leaves &tree)
    {
        const std::string xml = to_xml(edit);
        const std::string json = edit.grouped ? test::as_json(xml) : xml;
        if (json != xml && native_edit(json) != native_edit(xml)) {
            return "in JSON it is another edit:\n" + json + "\n" + native_edit(json) + native_edit(xml);
        }
        const Leaves before = native_leaves();
        const std::set<test::Refusal> refusals = edit_config(edit, tree);
        auto document = tqm::Document::parse(xml);
        const auto edited =
            document ? framework_->edit(std::move(*document), native) : tl::unexpected(document.error());
        if (!refusals.empty()) {
            const std::string changes = edited ? "" : differences(before, native_leaves());
            return fault_of_refusal(refusals, edited) + changes;
        }
        return edited ? fault_of_state(tree, before, native) : "refused: " + edited.error().text;
    }

    static std::string fault_of_refusal(const std::set<test::Refusal> &allowed, const tqm::Expected<void> &edited)
    {
        const bool any = allowed.contains(test::Refusal{});
        if (!edited && (any || allowed.contains({edited.error().error_tag, edited.error().app_tag}))) {
            return "";
        }
        std::string text = edited ? "done" : "refused: " + edited.error().text;
        if (!edited) {
            text += " (" + std::string(tqm::name_of(edited.error().error_tag)) + " " + edited.error().app_tag + ")";
        }
        for (const test::Refusal &refusal : allowed) {
            text +=
                ", not " + (refusal.tag ? std::string(tqm::name_of(*refusal.tag)) : "refused") + " " + refusal.app_tag;
        }
        return text + "\n";
    }

    std::string fault_of_state(const Leaves &tree, const Leaves &before, ocmap::NativeStore &native)
    {
        const auto read = framework_->get_config(std::nullopt, native);
        std::string answer;
        if (!read) {
            return "no answer: " + read.error().text;
        }
        read->print(answer);
        Leaves shown = leaves_of(answer);
        const Leaves after = native_leaves();
        std::size_t count = 0;
        for (const auto &[path, value] : after) {
            static const std::regex secret(
                "/keychains/keychain\\[chain-name(=.*)\\]/macsec-keychain/macsec-keys/macsec-key"
                "\\[key-id(=.*)\\]/macsec-key-string/string");
            static const std::regex entry_only(".*/(active|interface-name|psk-key-chain|macsec-keychain)");
            if (std::regex_match(path, secret)) {
                shown[std::regex_replace(path, secret,
                                         "/macsec/mka/key-chains/key-chain[name$1]/mka-keys/mka-key[id$2]"
                                         "/config/key-clear-text")] =
                    value.starts_with('!') ? value.substr(1) : "no key";
            }
            count += routers_own.contains(path) || std::regex_match(path, entry_only) ? 0 : 1;
        }
        const bool left_over = count != native_count(tree);
        return differences(tree, shown) + differences(own_after(before, tree), own_after(after, tree_at_first)) +
               (left_over ? std::to_string(count) + " native leaves, not " + std::to_string(native_count(tree)) : "");
    }

    /// What the router is sent, or why nothing is.
    std::string native_edit(const std::string &text)
    {
        auto document = tqm::Document::parse(text);
        const auto trees = document ? framework_->forward(std::move(*document)) : tl::unexpected(document.error());
        std::string printed;
        if (trees) {
            trees->print(printed);
        }
        return trees ? printed : trees.error().text;
    }

    std::string store_file() const { return directory_ + "/native.xml"; }
    /// All that the store holds, also what OpenConfig never sees.
    Leaves native_leaves() const
    {
        std::ifstream file(store_file());
        return leaves_of({std::istreambuf_iterator<char>(file), {}});
    }

    std::optional<ocmap::Environment> environment_;
    std::optional<ocmap::ModelChecker> checker_;
    std::optional<tqm::Framework> framework_;
    std::string directory_;
};

unsigned int setting(const char *name, unsigned int otherwise)
{
    const char *const text = std::getenv(name);
    return text == nullptr ? otherwise : static_cast<unsigned int>(std::strtoul(text, nullptr, 10));
}

#ifdef __SANITIZE_ADDRESS__
constexpr unsigned int sequences = 1000;
#else
constexpr unsigned int sequences = 2000;
#endif

TEST_F(Property, AReadAfterAnyEditsGivesWhatTheRfcSaysOfThem)
{
    const unsigned int first = setting("MACSEC_SEED", 1);
    const unsigned int count = setting("MACSEC_SEQUENCES", sequences);
    unsigned int done = 0;
    unsigned int refused = 0;
    for (unsigned int seed = first; seed - first < count; ++seed) {
        test::RandomEdits random(seed);
        std::vector<test::Edit> edits;
        Leaves tree = tree_at_first;
        while (edits.size() <= seed % 12) {
            edits.push_back(random.next(tree));
            const bool is_done = edit_config(edits.back(), tree).empty();
            ++(is_done ? done : refused);
        }
        if (fault(edits).empty()) {
            continue;
        }
        edits = shrunk(edits, [&](const auto &some) { return !fault(some).empty(); });
        std::string text;
        for (const test::Edit &edit : edits) {
            text += to_xml(edit) + "\n";
        }
        FAIL() << "MACSEC_SEED=" << seed << ", shrunk to\n" << text << fault(edits);
    }
    // A refusal ends an edit at its first fault: most of what can be wrong shows in those that are done.
    EXPECT_TRUE(done > 2 * refused || count < sequences) << done << " done, " << refused << " refused";
}

} // namespace
