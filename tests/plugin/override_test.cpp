// A function of a generated name, in an object linked with the plug-in's, is called in place of the generated one.
#include <dlfcn.h>
#include <gtest/gtest.h>

#include "support/walk.h"

namespace
{

tqm_map_function overriding_root()
{
    static void *const library = dlopen(OVERRIDING_PLUGIN, RTLD_NOW);
    EXPECT_NE(library, nullptr) << dlerror();
    return reinterpret_cast<tqm_map_function>(dlsym(library, "ymap_ot_oc_macsec_openconfigmacsec_lvla_macsec"));
}

} // namespace

namespace
{

using namespace test;

Walk walked(const std::string &inside)
{
    Walk walk(TQM_REQ_EDIT, Direction::forward);
    walk.load(document(TQM_REQ_EDIT, Direction::forward, inside));
    walk.run(overriding_root(), walk.tree());
    return walk;
}

TEST(Override, ANodeFunctionOfTheSameNameTakesThePlaceOfTheGeneratedOne)
{
    const Walk walk =
        walked("<mka><policies><policy><name>P1</name><config><use-updated-eth-header>true</use-updated-eth-header>"
               "</config></policy></policies></mka>");
    EXPECT_EQ(walk.outcome(), "0");
    EXPECT_TRUE(walk.calls_of("tqm_map_datatree_add_path").back().find("(\"/overridden/leaf\"") != std::string::npos);
}

TEST(Override, AnAugmentWalkerOfTheSameNameTakesThePlaceOfTheGeneratedOne)
{
    const Walk walk = walked("<mka><extra xmlns='http://example.com/x'/></mka>");
    EXPECT_EQ(walk.outcome(), "0");
    EXPECT_TRUE(walk.calls_of("tqm_map_datatree_add_path").back().find("(\"/overridden/hook\"") != std::string::npos);
    // The others are as they were.
    EXPECT_EQ(walked("<extra xmlns='http://example.com/x'/>").rc(), TQM_ERR_AUGMENT);
}

} // namespace
