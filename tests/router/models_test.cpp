// The modules: they load together, and tell of each node what others need.
#include "support.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <unistd.h>

namespace router::test
{

namespace
{

SchemaNode node(const std::string &path)
{
    const auto nodes = models().nodes();
    const auto found = std::ranges::find(nodes, path, &SchemaNode::path);
    return found == nodes.end() ? SchemaNode{} : *found;
}

} // namespace

TEST(Models, TellOfANodeWhatOthersNeed)
{
    const SchemaNode id = node("/macsec/mka/key-chains/key-chain/mka-keys/mka-key/id");
    EXPECT_EQ(id.leafref, "/macsec/mka/key-chains/key-chain/mka-keys/mka-key/config/id");
    EXPECT_TRUE(id.is_key && id.config && !id.secret);
    EXPECT_EQ(node("/macsec/interfaces/interface/mka/config/mka-policy").leafref, "/macsec/mka/policies/policy/name");
    const SchemaNode interface = node("/interface-configurations/interface-configuration");
    EXPECT_EQ(interface.keys, (std::vector<std::string>{"active", "interface-name"}));
    EXPECT_EQ(interface.kind, NodeKind::list);
    EXPECT_EQ(interface.ns, ns::interfaces);
    EXPECT_TRUE(node("/macsec/mka/key-chains/key-chain/mka-keys/mka-key/state/key-clear-text").secret);
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
    EXPECT_NE(empty.error().text.find("Tarvex-crypto-macsec-mka-cfg"), std::string::npos);
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
