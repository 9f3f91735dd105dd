// The modules: they load together, and their lists are named as others address them.
#include "support.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>
#include <unistd.h>

namespace router::test
{

namespace
{

const ListInfo *find(const std::vector<ListInfo> &lists, const char *ns, const std::string &path)
{
    const auto found = std::find_if(lists.begin(), lists.end(),
                                    [&](const ListInfo &list) { return list.ns == ns && list.path == path; });
    return found == lists.end() ? nullptr : &*found;
}

} // namespace

TEST(Models, NameListsWithTheirKeysByPathWithoutPrefixes)
{
    const auto lists = models().lists();
    const struct {
        const char *ns;
        const char *path;
        std::vector<std::string> keys;
    } cases[] = {
        {ns::openconfig, "/macsec/mka/key-chains/key-chain/mka-keys/mka-key", {"id"}},
        {ns::openconfig, "/macsec/interfaces/interface/scsa-rx/scsa-rx", {"sci-rx"}},
        {ns::policies, "/macsec/policy-names/policy-name", {"name"}},
        {ns::keychains, "/keychains/keychain/macsec-keychain/macsec-keys/macsec-key", {"key-id"}},
        {ns::interfaces, "/interface-configurations/interface-configuration", {"active", "interface-name"}},
        {ns::operational, "/oc-macsec/macsec/interfaces/interface/scsa-txes/scsa-tx", {"sci-tx"}},
    };
    for (const auto &expected : cases) {
        const ListInfo *list = find(lists, expected.ns, expected.path);
        ASSERT_TRUE(list) << expected.path;
        EXPECT_EQ(list->keys, expected.keys) << expected.path;
    }
}

TEST(Models, NameTheCipherSuitesAsTheOnlyLeafLists)
{
    const auto leaf_lists = models().leaf_lists();
    EXPECT_EQ(leaf_lists.size(), 3U);
    EXPECT_TRUE(find(leaf_lists, ns::openconfig, "/macsec/mka/policies/policy/config/macsec-cipher-suite"));
    EXPECT_TRUE(find(leaf_lists, ns::openconfig, "/macsec/mka/policies/policy/state/macsec-cipher-suite"));
    EXPECT_TRUE(find(leaf_lists, ns::operational, "/oc-macsec/macsec/mka/policies/policy/state/macsec-cipher-suite"));
}

TEST(Models, SayWhichModuleIsMissing)
{
    const auto nowhere = Models::load("/nonexistent/yang");
    ASSERT_FALSE(nowhere);
    EXPECT_NE(nowhere.error().text.find("/nonexistent/yang"), std::string::npos);

    std::string directory = ::testing::TempDir() + "/no-models.XXXXXX";
    ASSERT_NE(mkdtemp(directory.data()), nullptr);
    const auto empty = Models::load(directory);
    rmdir(directory.c_str());
    ASSERT_FALSE(empty);
    EXPECT_NE(empty.error().text.find("openconfig-macsec"), std::string::npos);
}

TEST(Models, NameTheLeavesThatHoldKeyTexts)
{
    const auto found = models().secrets();
    const std::set<std::string> expected = {
        "/macsec/mka/key-chains/key-chain/mka-keys/mka-key/config/key-clear-text",
        "/macsec/mka/key-chains/key-chain/mka-keys/mka-key/state/key-clear-text",
        "/keychains/keychain/macsec-keychain/macsec-keys/macsec-key/macsec-key-string/string",
        "/keychains/keychain/keys/key/key-string/keystring",
    };
    EXPECT_EQ(std::set<std::string>(found.begin(), found.end()), expected);
}

TEST(Models, RefuseAListWithThreeKeys)
{
    std::string directory = ::testing::TempDir() + "/three-keys.XXXXXX";
    ASSERT_NE(mkdtemp(directory.data()), nullptr);
    std::filesystem::copy(OC_MACSEC_YANG_DIRECTORY, directory);
    const std::string file = directory + "/Tarvex-crypto-macsec-mka-cfg.yang";
    std::ifstream stream(file);
    std::string text{std::istreambuf_iterator<char>(stream), {}};
    const std::string key = "key \"name\";";
    ASSERT_NE(text.find(key), std::string::npos);
    text.replace(text.find(key), key.size(), "key \"name windowsize policyexception\";");
    std::ofstream(file) << text;
    const auto loaded = Models::load(directory);
    std::filesystem::remove_all(directory);
    ASSERT_FALSE(loaded);
    EXPECT_EQ(loaded.error().text, "the list /macsec/policy-names/policy-name of the YANG module "
                                   "Tarvex-crypto-macsec-mka-cfg has 3 keys; two are the most");
}

} // namespace router::test
