// What the router's tests share: trees written as nested braces, answers as one line of text, a store that is gone
// after the test.
#pragma once

#include "router/datastore.h"
#include "router/edit_node.h"
#include "router/setup.h"

#include <cstdlib>
#include <deque>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace router::test
{

struct Node {
    std::string name;
    std::vector<Node> children = {};
    std::optional<std::string> value = {};
    Operation operation = Operation::none;
    const char *ns = nullptr;
};

inline Node in(const char *ns, Node node)
{
    node.ns = ns;
    return node;
}

// A leaf with a value, or one without.
inline Node leaf(std::string name, std::string value, Operation operation = Operation::merge)
{
    return {std::move(name), {}, std::move(value), operation};
}
inline Node leaf(std::string name, Operation operation)
{
    return {std::move(name), {}, {}, operation};
}
inline Node at(std::string name, std::vector<Node> children)
{
    return {std::move(name), std::move(children)};
}
inline Node at(std::string name, Operation operation, std::vector<Node> children)
{
    return {std::move(name), std::move(children), {}, operation};
}

// Whole native trees around entries.
inline Node policies(std::vector<Node> entries)
{
    return in(ns::policies, at("macsec", {at("policy-names", std::move(entries))}));
}
inline Node policy(const char *name, Operation operation, std::vector<Node> leaves = {})
{
    leaves.insert(leaves.begin(), leaf("name", name));
    return at("policy-name", operation, std::move(leaves));
}
inline Node chains(std::vector<Node> entries)
{
    return in(ns::keychains, at("keychains", std::move(entries)));
}
inline Node chain(const char *name, Operation operation, std::vector<Node> keys = {})
{
    Node entry = at("keychain", operation, {leaf("chain-name", name)});
    if (!keys.empty()) {
        entry.children.push_back(at("macsec-keychain", {at("macsec-keys", std::move(keys))}));
    }
    return entry;
}
inline Node interfaces(std::vector<Node> entries)
{
    return in(ns::interfaces, at("interface-configurations", std::move(entries)));
}
inline Node psk(Operation operation, std::vector<Node> leaves = {})
{
    return in(ns::interface_macsec, at("macsec", {at("psk-key-chain", operation, std::move(leaves))}));
}
// With an empty `active`, the entry gives the name alone.
inline Node interface(const std::string &active, const char *name, std::vector<Node> children)
{
    children.insert(children.begin(), leaf("interface-name", name));
    if (!active.empty()) {
        children.insert(children.begin(), leaf("active", active));
    }
    return at("interface-configuration", Operation::merge, std::move(children));
}

// Lays EditNodes over a Node, which must outlive it.
class Trees
{
public:
    explicit Trees(const Node &root) : root_(add(root)) {}
    const EditNode *root() const { return root_; }

private:
    EditNode *add(const Node &node)
    {
        EditNode &made = made_.emplace_back();
        made.ns = node.ns;
        made.name = node.name.c_str();
        made.value = node.value ? node.value->c_str() : nullptr;
        made.operation = node.operation;
        made.origin = &node;
        const EditNode **link = &made.first_child;
        for (const Node &child : node.children) {
            EditNode *added = add(child);
            *link = added;
            link = &added->next;
        }
        return &made;
    }

    std::deque<EditNode> made_;
    EditNode *root_;
};

// "macsec{policy-names{policy-name{name=P1 created= } } } "
class TextSink : public Sink
{
public:
    void open(const char *, const char *name) override { text += std::string(name) + "{"; }
    void leaf(const char *, const char *name, const char *value) override
    {
        text += std::string(name) + "=" + value + " ";
    }
    void close() override { text += "} "; }

    std::string text;
};

inline const Models &models()
{
    static const Expected<Models> loaded = Models::load(OC_MACSEC_YANG_DIRECTORY, {"openconfig-macsec"});
    if (!loaded) {
        std::abort();
    }
    return *loaded;
}

// Two lists of the router of which not all entries are shown: one that is closed to edits of the others, one that is
// not.
inline Setup setup(OperationalSource source = {})
{
    auto made = Setup::make(models(),
                            {{ns::keychains, "/keychains/keychain", "macsec-keychain", {}, "it is the router's own"},
                             {ns::interfaces,
                              "/interface-configurations/interface-configuration",
                              "macsec/psk-key-chain",
                              {{"active", "act"}},
                              ""}},
                            std::move(source));
    if (!made) {
        std::abort();
    }
    return *made;
}

inline std::string fault_name(Fault fault)
{
    static const char *const names[] = {"failed", "unknown node", "not supported", "bad value", "missing key",
                                        "exists", "missing",      "denied",        "busy",      "no memory"};
    return names[static_cast<size_t>(fault)];
}

class StoreTest : public ::testing::Test
{
protected:
    explicit StoreTest(router::Setup setup = test::setup()) : setup_(std::move(setup))
    {
        std::string pattern = ::testing::TempDir() + "routerXXXXXX";
        directory_ = mkdtemp(pattern.data());
    }
    ~StoreTest() override { std::filesystem::remove_all(directory_); }

    std::string file() const { return directory_ + "/native.xml"; }
    std::string content() const
    {
        std::ifstream stream(file());
        return {std::istreambuf_iterator<char>(stream), {}};
    }
    // The file as a desk engineer would prepare it.
    void prepare(const std::string &text) const { std::ofstream(file()) << text; }

    Expected<Datastore> open(Access access = Access::write) const
    {
        return Datastore::open(setup_, directory_, access);
    }
    // "" where the edit is done, or "exists: PATH: TEXT".
    static std::string error_of(Datastore &store, const Node &tree)
    {
        const auto done = store.edit(Trees(tree).root());
        return done ? "" : fault_name(done.error().fault) + ": " + done.error().path + ": " + done.error().text;
    }
    static std::string read(Datastore &store, const Node &filter)
    {
        TextSink sink;
        const auto done = store.read(*Trees(filter).root(), sink);
        return done ? sink.text : done.error().text;
    }
    // Through the file, so that what comes back has been stored.
    std::string error_of(const Node &tree) const
    {
        auto store = open();
        return store ? error_of(*store, tree) : store.error().text;
    }
    std::string read(const Node &filter) const
    {
        auto store = open(Access::read);
        return store ? read(*store, filter) : store.error().text;
    }

    router::Setup setup_; // the test framework has a Setup of its own
    std::string directory_;
};

} // namespace router::test
