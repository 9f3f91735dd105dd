// A function of a generated name, in an object linked with the plug-in's, is called in place of the generated one.
#include <dlfcn.h>

#include "support.h"

namespace
{

tqm_map_function overriding_root()
{
    static void *const library = dlopen(OVERRIDING_PLUGIN, RTLD_NOW);
    EXPECT_NE(library, nullptr) << dlerror();
    return reinterpret_cast<tqm_map_function>(dlsym(library, "ymap_ot_oc_macsec_openconfigmacsec_lvla_macsec"));
}

} // namespace

// The tests' support runs requests through this name.
extern "C" rcode ymap_ot_oc_macsec_openconfigmacsec_lvla_macsec(tqm_map_ctx ctx, const rdl_tqm_datatree *node,
                                                                rdl_tqm_datatree *out)
{
    return overriding_root()(ctx, node, out);
}

namespace
{

using namespace test;

TEST(Override, ANodeFunctionOfTheSameNameTakesThePlaceOfTheGeneratedOne)
{
    Walk walk = edit().forward(policy("<config><use-updated-eth-header>true</use-updated-eth-header></config>"));
    EXPECT_EQ(walk.rc, 0u);
    EXPECT_EQ(walk.built().back(), "/overridden/leaf=true");
}

TEST(Override, AnAugmentWalkerOfTheSameNameTakesThePlaceOfTheGeneratedOne)
{
    Walk walk = edit().forward("<mka><extra xmlns='http://example.com/x'/></mka>");
    EXPECT_EQ(walk.rc, 0u);
    EXPECT_EQ(walk.built().back(), "/overridden/hook=extra");
    // The others are as they were.
    EXPECT_EQ(edit().forward("<extra xmlns='http://example.com/x'/>").rc, TQM_ERR_AUGMENT);
}

} // namespace
