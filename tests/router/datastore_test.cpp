// The store on disk: who may read it, what a damaged one does, and that writers do not get into each other's way.
#include "support.h"

#include <algorithm>
#include <chrono>
#include <future>
#include <sys/stat.h>
#include <unistd.h>

namespace router::test
{

using enum Operation;

namespace
{

mode_t mode_of(const std::string &path)
{
    struct stat status = {};
    return stat(path.c_str(), &status) ? 0 : status.st_mode & 07777;
}

const std::string policies_ns = " xmlns='http://tarvex.example/ns/yang/Tarvex-crypto-macsec-mka-cfg'";

std::string policy_document(const std::string &leaves)
{
    return "<config><macsec" + policies_ns + "><policy-names><policy-name><name>P</name>" + leaves +
           "</policy-name></policy-names></macsec></config>";
}

} // namespace

class Store : public StoreTest
{
};

TEST_F(Store, IsForItsOwnerAlone)
{
    const std::string directory = directory_ + "/made";
    {
        auto store = Datastore::open(setup(), directory, Access::write);
        ASSERT_TRUE(store) << store.error().text;
        ASSERT_EQ(error_of(*store, policies({policy("P1", merge)})), "");
    }
    EXPECT_EQ(mode_of(directory), 0700U);
    EXPECT_EQ(mode_of(directory + "/native.xml"), 0600U);

    prepare("<config/>");
    ASSERT_EQ(error_of(policies({policy("P1", merge)})), "");
    EXPECT_EQ(mode_of(file()), 0600U) << "a file that was open to others is not any more";
}

TEST_F(Store, IsEmptyForAReaderWhereThereIsNone)
{
    const std::string directory = directory_ + "/missing";
    auto store = Datastore::open(setup(), directory, Access::read);
    ASSERT_TRUE(store);
    EXPECT_EQ(read(*store, policies({})), "");
    EXPECT_FALSE(std::filesystem::exists(directory));
    EXPECT_EQ(error_of(*store, policies({policy("P1", merge)})), "denied: : the store is open for reading");
}

TEST_F(Store, RefusesADirectoryThatIsNone)
{
    prepare("<config/>");
    for (const Access access : {Access::read, Access::write}) {
        const auto on_file = Datastore::open(setup(), file(), access);
        ASSERT_FALSE(on_file);
        EXPECT_NE(on_file.error().text.find("not a directory"), std::string::npos) << on_file.error().text;
        const auto below_file = Datastore::open(setup(), file() + "/below", access);
        ASSERT_FALSE(below_file);
        EXPECT_NE(below_file.error().text.find(file() + "/below"), std::string::npos) << below_file.error().text;
    }
}

TEST_F(Store, KeepsWhatItHadWhenTheFileCannotBeWritten)
{
    ASSERT_EQ(error_of(policies({policy("P1", merge)})), "");
    const std::string before = content();
    std::filesystem::create_directories(file() + ".tmp/occupied");
    auto store = open();
    EXPECT_TRUE(error_of(*store, policies({policy("P2", merge)})).starts_with("failed: : cannot write "));
    EXPECT_EQ(read(*store, policies({})), "macsec{policy-names{policy-name{name=P1 } } } ");
    EXPECT_EQ(content(), before);
}

TEST_F(Store, SaysThatAFileIsDamagedAndLeavesItAlone)
{
    const std::string good = policy_document("<created/>");
    const std::string key =
        "<config><keychains xmlns='http://tarvex.example/ns/yang/Tarvex-lib-keychain-cfg'><keychain>"
        "<chain-name>K</chain-name><macsec-keychain><macsec-keys><macsec-key><key-id>01</key-id>"
        "<macsec-key-string><string>!s3cret";
    const struct {
        const char *title;
        std::string content;
        std::string part;
    } cases[] = {
        {"empty", "", "empty"},
        {"blank", " \n", "empty"},
        {"no XML", "native", "not well-formed"},
        {"cut short", good.substr(0, good.size() / 2), "not well-formed"},
        {"without its last tag", good.substr(0, good.size() - 9), "not well-formed"},
        {"with something behind", good + "<macsec/>", "not well-formed"},
        {"cut short by a null byte", good + std::string(1, '\0'), "not well-formed"},
        {"of an unknown node", policy_document("<colour>red</colour>"), "colour"},
        {"of a wrong value", policy_document("<key-server-priority>999</key-server-priority>"), "key-server-priority"},
        {"of a policy twice", policy_document("</policy-name><policy-name><name>P</name>"), "Duplicate"},
        {"of another model", "<config><macsec xmlns='http://openconfig.net/yang/macsec'><mka/></macsec></config>",
         "openconfig"},
        {"broken in a key", key + "<<", "not well-formed"},
        {"of a key that is too short",
         key.substr(0, key.size() - 7) + "</string></macsec-key-string></macsec-key>"
                                         "</macsec-keys></macsec-keychain></keychain></keychains></config>",
         "key text"},
        {"of a key under a misspelt name",
         key.substr(0, key.size() - 15) + "<strng>!s3cret</strng></macsec-key-string></macsec-key>"
                                          "</macsec-keys></macsec-keychain></keychain></keychains></config>",
         "strng"},
        {"of a key in a container",
         key.substr(0, key.size() - 15) + "!s3cret</macsec-key-string></macsec-key>"
                                          "</macsec-keys></macsec-keychain></keychain></keychains></config>",
         "not well-formed"},
    };
    for (const auto &test : cases) {
        SCOPED_TRACE(test.title);
        prepare(test.content);
        const auto store = open();
        ASSERT_FALSE(store);
        EXPECT_TRUE(store.error().text.starts_with("the store " + file() + " is damaged: ")) << store.error().text;
        EXPECT_NE(store.error().text.find(test.part), std::string::npos) << store.error().text;
        EXPECT_EQ(store.error().text.find("s3cret"), std::string::npos) << store.error().text;
        EXPECT_EQ(content(), test.content);
    }
}

TEST_F(Store, ReadsWhatAnEngineerWrote)
{
    const std::string bare = "<macsec" + policies_ns +
                             "><policy-names><policy-name><name>P</name></policy-name>"
                             "</policy-names></macsec>";
    for (const std::string &text :
         {bare, "<data>" + bare + "</data>\n",
          "<?xml version='1.0'?>\n<!-- desk -->\n<nc:config xmlns:nc='x'>" + bare + "</nc:config >\n<!-- end -->\n"}) {
        prepare(text);
        EXPECT_EQ(read(policies({})), "macsec{policy-names{policy-name{name=P } } } ") << text;
    }
}

TEST_F(Store, KeepsTextsAsTheyAre)
{
    const std::string name = "a <&> 'b' \"c\" \xc3\xa9]]> ";
    ASSERT_EQ(error_of(policies({policy(name.c_str(), merge)})), "");
    EXPECT_EQ(read(policies({})), "macsec{policy-names{policy-name{name=" + name + " } } } ");
    EXPECT_EQ(error_of(policies({policy(name.c_str(), delete_)})), "");
}

TEST_F(Store, DoesNotTouchTheFileWhenNothingChanges)
{
    prepare(policy_document(""));
    const std::string before = content();
    EXPECT_EQ(error_of(policies({policy("P", merge), policy("Q", remove)})), "");
    EXPECT_EQ(content(), before);
}

TEST_F(Store, MakesASecondWriterWait)
{
    std::optional<Expected<Datastore>> first = open();
    ASSERT_TRUE(*first);
    auto second = std::async(std::launch::async, [this] { return error_of(policies({policy("P2", merge)})); });
    EXPECT_EQ(second.wait_for(std::chrono::milliseconds(50)), std::future_status::timeout);
    ASSERT_EQ(error_of(**first, policies({policy("P1", merge)})), "");
    first.reset();
    EXPECT_EQ(second.get(), "");
    EXPECT_EQ(read(policies({})), "macsec{policy-names{policy-name{name=P1 } policy-name{name=P2 } } } ");
}

TEST_F(Store, LetsASecondWriterWaitNoLongerThanItWants)
{
    const auto first = open();
    ASSERT_TRUE(first);
    std::vector<std::string> notices;
    for (const int limit : {0, 1600}) {
        const auto start = std::chrono::steady_clock::now();
        const LockWait wait{std::chrono::milliseconds(limit), [&](const std::string &who) { notices.push_back(who); }};
        const auto second = Datastore::open(setup(), directory_, Access::write, wait);
        ASSERT_FALSE(second);
        EXPECT_EQ(second.error().fault, Fault::busy);
        EXPECT_GE(std::chrono::steady_clock::now() - start, *wait.limit);
    }
    EXPECT_EQ(notices, std::vector<std::string>{"process " + std::to_string(getpid())});
    for (const auto &[left, who] : {std::pair{"17", "process 17"},
                                    {"", "another process"},
                                    {"x", "another process"},
                                    {"-5", "another process"},
                                    {"0", "another process"}}) {
        std::ofstream(directory_ + "/native.lock") << left;
        const LockWait none{std::chrono::milliseconds(0), {}};
        const auto second = Datastore::open(setup(), directory_, Access::write, none);
        ASSERT_FALSE(second);
        EXPECT_EQ(second.error().text,
                  "the store " + directory_ + " is in use: " + std::string(who) + " is editing it");
    }
}

TEST_F(Store, TakesTheDirectoryThatItMadeAwayAgainWhenNoEditHasSucceeded)
{
    const std::string made = directory_ + "/made";
    const Node refused = policies({policy("P", delete_)});
    const Node nothing_to_do = policies({policy("P", remove)});
    const struct {
        const char *title;
        const Node *tree;
        bool other_file;
        bool stays;
    } cases[] = {
        {"no edit", nullptr, false, false},
        {"a refused edit", &refused, false, false},
        {"somebody else's file", &refused, true, true},
        {"an edit that changes nothing", &nothing_to_do, false, true},
    };
    for (const auto &test : cases) {
        SCOPED_TRACE(test.title);
        std::filesystem::remove_all(made);
        {
            auto store = Datastore::open(setup(), made, Access::write);
            ASSERT_TRUE(store);
            EXPECT_EQ(test.tree && store->edit(Trees(*test.tree).root()), test.tree == &nothing_to_do);
            if (test.other_file) {
                std::ofstream(made + "/notes") << "mine";
            }
        }
        EXPECT_EQ(std::filesystem::exists(made), test.stays);
        EXPECT_EQ(std::filesystem::exists(made + "/notes"), test.other_file);
    }
    ASSERT_TRUE(open()) << "a directory that was there before";
    EXPECT_TRUE(std::filesystem::exists(directory_));
}

TEST_F(Store, LosesNoEditToARefusedOneThatTakesTheDirectoryAway)
{
    const std::string made = directory_ + "/made";
    const Node good = policies({policy("P", merge)});
    const Node bad = policies({policy("Q", delete_)});
    for (int round = 0; round < 100; ++round) {
        std::vector<std::future<bool>> writers;
        for (const Node *tree : {&bad, &bad, &good, &bad}) {
            writers.push_back(std::async(std::launch::async, [&made, tree] {
                auto store = Datastore::open(setup(), made, Access::write);
                return store && store->edit(Trees(*tree).root());
            }));
        }
        const size_t done = static_cast<size_t>(
            std::count_if(writers.begin(), writers.end(), [](std::future<bool> &writer) { return writer.get(); }));
        ASSERT_EQ(done, 1U);
        ASSERT_TRUE(std::filesystem::exists(made + "/native.xml")) << "round " << round;
        std::filesystem::remove_all(made);
    }
}

TEST_F(Store, IsReadWhereAnEarlierVersionOfTheModelsAllowedMore)
{
    const auto key = [](const std::string &id, const std::string &lifetime) {
        return "<macsec-key><key-id>" + id + "</key-id><macsec-key-string><encryption-type>type7</encryption-type>" +
               "</macsec-key-string><macsec-lifetime>" + lifetime + "</macsec-lifetime></macsec-key>";
    };
    const std::string date = "<end-year>2030</end-year>";
    prepare("<keychains xmlns='http://tarvex.example/ns/yang/Tarvex-lib-keychain-cfg'><keychain><chain-name>K"
            "</chain-name><macsec-keychain><macsec-keys>" +
            key("01", date + "<infinite-flag>true</infinite-flag>") +
            key("02", date + "<infinite-flag>false</infinite-flag><life-time>0</life-time>") +
            key("03", date + "<life-time>60</life-time>") + "</macsec-keys></macsec-keychain></keychain></keychains>");
    EXPECT_EQ(read(in(ns::keychains, at("keychains", {}))),
              "keychains{keychain{chain-name=K macsec-keychain{macsec-keys{"
              "macsec-key{key-id=01 macsec-lifetime{infinite-flag=true } } "
              "macsec-key{key-id=02 macsec-lifetime{end-year=2030 } } "
              "macsec-key{key-id=03 macsec-lifetime{life-time=60 } } } } } } ");
}

} // namespace router::test
