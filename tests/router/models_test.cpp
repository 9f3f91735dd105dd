// The modules: they load together, and their lists are named as others address them.
#include "support.h"

#include <algorithm>
#include <cstdlib>
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

} // namespace router::test
