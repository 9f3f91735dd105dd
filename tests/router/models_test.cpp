// The modules: what is said of those that cannot be loaded, or not be worked with.
#include "support.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <unistd.h>

namespace router::test
{

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
