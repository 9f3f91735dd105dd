// What an edit sends, a read gives back: random edits of policies and key chains against a model of what OpenConfig
// should hold, in one process. The model is plain: a map from the path of each leaf to its value.
#include <gtest/gtest.h>

#include <filesystem>
#include <map>
#include <random>
#include <string>
#include <vector>

#include "as_json.h"
#include "environment.h"
#include "native_store.h"
#include "tqm/framework.h"

namespace
{

using Leaves = std::map<std::string, std::string>;

struct LeafKind {
    const char *tag;
    std::vector<std::string> values;
    bool comes_back = true;
};

const std::vector<LeafKind> policy_leaves = {
    {"key-server-priority", {"0", "16", "255"}},
    {"macsec-cipher-suite", {"GCM_AES_128", "GCM_AES_256", "GCM_AES_XPN_128", "GCM_AES_XPN_256"}},
    {"confidentiality-offset", {"0_BYTES", "30_BYTES", "50_BYTES"}},
    {"delay-protection", {"true", "false"}},
    {"include-icv-indicator", {"true", "false"}},
    {"sak-rekey-interval", {"0", "30", "65535"}},
};
const std::vector<LeafKind> key_leaves = {
    {"key-clear-text", {"00112233445566778899aabbccddeeff"}, false},
    {"cryptographic-algorithm", {"AES_128_CMAC", "AES_256_CMAC"}},
    {"valid-date-time", {"2024-02-29T23:59:59", "2031-12-31T00:00:00"}},
    {"expiration-date-time", {"2032-01-01T00:00:00", "2099-06-30T12:30:15", "NO_EXPIRATION"}},
};

std::string element(const std::string &tag, const std::string &inside, const std::string &operation = "")
{
    const std::string attribute = operation.empty() ? "" : " nc:operation='" + operation + "'";
    return "<" + tag + attribute + ">" + inside + "</" + tag + ">";
}

class Generator
{
public:
    explicit Generator(unsigned int seed) : random_(seed) {}

    /// The children of `macsec` in one edit. The model has taken it in already.
    std::string next_edit()
    {
        std::string policies;
        std::string chains;
        for (const char *name : {"P0", "P1", "P2", "P3"}) {
            if (one_in(2)) {
                policies += edit_entry({"/macsec/mka/policies/policy", "policy", "name", name}, policy_leaves);
            }
        }
        for (const char *name : {"C0", "C1", "C2"}) {
            if (one_in(2)) {
                chains += edit_chain(name);
            }
        }
        return element("mka", element("policies", policies) + element("key-chains", chains));
    }

    const Leaves &expected() const { return expected_; }

private:
    struct Entry {
        std::string list;
        std::string tag;
        std::string key;
        std::string name;
        std::string path() const { return list + "[" + key + "='" + name + "']"; }
        std::string key_leaf() const { return element(key, name); }
    };

    bool one_in(int count) { return std::uniform_int_distribution<int>(1, count)(random_) == 1; }
    std::size_t index_below(std::size_t count)
    {
        return std::uniform_int_distribution<std::size_t>(0, count - 1)(random_);
    }
    void forget(const std::string &prefix)
    {
        std::erase_if(expected_, [&](const auto &leaf) { return leaf.first.starts_with(prefix); });
    }

    void expect_entry(const Entry &entry)
    {
        expected_[entry.path() + "/" + entry.key] = entry.name;
        expected_[entry.path() + "/config/" + entry.key] = entry.name;
    }

    // Some of the leaves with values.
    std::string merge_leaves(const Entry &entry, const std::vector<LeafKind> &kinds)
    {
        std::string inside;
        for (const LeafKind &kind : kinds) {
            if (!one_in(2)) {
                continue;
            }
            const std::string value = kind.values[index_below(kind.values.size())];
            inside += element(kind.tag, value);
            std::string &known = expected_[entry.path() + "/config/" + kind.tag];
            // A date does not take an earlier NO_EXPIRATION away.
            known = known == "NO_EXPIRATION" ? known : value;
            if (!kind.comes_back) {
                expected_.erase(entry.path() + "/config/" + kind.tag);
            }
        }
        return inside;
    }

    std::string delete_one_leaf(const Entry &entry, const std::vector<LeafKind> &kinds)
    {
        if (kinds.empty()) {
            return "";
        }
        const LeafKind &kind = kinds[index_below(kinds.size())];
        if (!kind.comes_back) {
            return "";
        }
        const bool there = expected_.erase(entry.path() + "/config/" + kind.tag) != 0;
        return "<" + std::string(kind.tag) + " nc:operation='" + (there ? "delete" : "remove") + "'/>";
    }

    // One edit of an entry with its config.
    std::string edit_entry(const Entry &entry, const std::vector<LeafKind> &kinds)
    {
        const std::string key = entry.key_leaf();
        switch (index_below(6)) {
        case 0: {
            const bool there = expected_.contains(entry.path() + "/" + entry.key);
            forget(entry.path() + "/");
            return element(entry.tag, key, there ? "delete" : "remove");
        }
        case 1:
            forget(entry.path() + "/");
            expect_entry(entry);
            return element(entry.tag, key + element("config", key + merge_leaves(entry, kinds)), "replace");
        case 2:
            forget(entry.path() + "/config/");
            expect_entry(entry);
            return element(entry.tag, key + element("config", key + merge_leaves(entry, kinds), "replace"));
        case 3:
            expect_entry(entry);
            return element(entry.tag, key + element("config", delete_one_leaf(entry, kinds)));
        default:
            expect_entry(entry);
            return element(entry.tag, key + element("config", key + merge_leaves(entry, kinds)));
        }
    }

    std::string edit_chain(const std::string &name)
    {
        const Entry chain{"/macsec/mka/key-chains/key-chain", "key-chain", "name", name};
        if (one_in(3)) {
            return edit_entry(chain, {});
        }
        std::string keys;
        for (const char *id : {"01", "02", "03"}) {
            if (one_in(2)) {
                keys += edit_entry({chain.path() + "/mka-keys/mka-key", "mka-key", "id", id}, key_leaves);
            }
        }
        expect_entry(chain);
        return element("key-chain", chain.key_leaf() + element("config", chain.key_leaf()) + element("mka-keys", keys));
    }

    std::mt19937 random_;
    Leaves expected_;
};

// The leaves of an answer, by path with keys.
void collect(const tqm::OutputNode &node, const std::string &parent, Leaves &leaves)
{
    std::string path = parent + "/" + node.tag();
    for (const tqm::OutputNode &child : node.children()) {
        if (child.is_key()) {
            path += std::string("[") + child.tag() + "='" + child.value() + "']";
        }
    }
    if (node.value() != nullptr) {
        leaves[path] = node.value();
    }
    for (const tqm::OutputNode &child : node.children()) {
        collect(child, path, leaves);
    }
}

// What the router is sent.
std::string native_edit(tqm::Framework &framework, const std::string &text)
{
    auto document = tqm::Document::parse(text);
    const auto trees = document ? framework.forward(std::move(*document)) : tl::make_unexpected(document.error());
    std::string printed;
    if (trees) {
        trees->print(printed);
    }
    return trees ? printed : trees.error().text;
}

class Property : public testing::Test
{
protected:
    void SetUp() override
    {
        std::string pattern = testing::TempDir() + "/property.XXXXXX";
        ASSERT_NE(mkdtemp(pattern.data()), nullptr);
        directory_ = pattern;
    }
    void TearDown() override { std::filesystem::remove_all(directory_); }

    std::string directory_;
};

TEST_F(Property, AReadGivesBackWhatRandomEditsSent)
{
    const auto environment = ocmap::Environment::load({PLUGIN, YANG});
    ASSERT_TRUE(environment) << environment.error().text;
    tqm::Framework framework(environment->plugin(), environment->schema());
    auto store = router::Datastore::open(environment->models(), directory_, router::Access::write);
    ASSERT_TRUE(store) << store.error().text;
    ocmap::NativeStore native(*store);

    Generator generator(20260101);
    for (int round = 0; round < 300; ++round) {
        const std::string text = "<config xmlns:nc='urn:ietf:params:xml:ns:netconf:base:1.0'><macsec "
                                 "xmlns='http://openconfig.net/yang/macsec'>" +
                                 generator.next_edit() + "</macsec></config>";
        auto document = tqm::Document::parse(text);
        ASSERT_TRUE(document) << document.error().text;
        ASSERT_EQ(native_edit(framework, test::as_json(text)), native_edit(framework, text)) << text;
        const auto edited = framework.edit(std::move(*document), native);
        ASSERT_TRUE(edited) << edited.error().text << "\n" << text;
        const auto read = framework.get_config(std::nullopt, native);
        ASSERT_TRUE(read) << read.error().text;
        Leaves leaves;
        for (const tqm::OutputNode *root : read->roots()) {
            collect(*root, "", leaves);
        }
        ASSERT_EQ(leaves, generator.expected()) << "round " << round << "\n" << text;
    }
}

} // namespace
