// The schema that is compiled into the tool is the one that libyang gives for yang/.
#include <gtest/gtest.h>

#include <string>
#include <tuple>
#include <vector>

#include "model_schema.h"
#include "openconfig.h"
#include "schema_table.h"

namespace
{

auto fields(const tqm::SchemaNode &node)
{
    const auto &[path, ns, kind, keys, form, config, unspaced, secret, leafref, marker, companions] = node;
    return std::tuple(path, ns, kind, keys, form, config, unspaced, secret, leafref, marker, companions);
}

class SchemaTable : public testing::Test
{
protected:
    SchemaTable()
    {
        const auto models = ocmap::load_models(YANG);
        EXPECT_TRUE(models) << models.error().text;
        modules = models->modules();
        loaded = ocmap::schema_of(*models);
    }

    std::vector<router::ModuleInfo> modules;
    tqm::Schema loaded;
    const tqm::Schema built_in = ocmap::built_in_schema();
};

TEST_F(SchemaTable, HasTheNodesThatTheModulesHave)
{
    ASSERT_EQ(built_in.nodes().size(), loaded.nodes().size());
    for (std::size_t i = 0; i < loaded.nodes().size(); ++i) {
        EXPECT_EQ(fields(built_in.nodes()[i]), fields(loaded.nodes()[i])) << loaded.nodes()[i].path;
    }
}

TEST_F(SchemaTable, HasTheModules)
{
    EXPECT_EQ(ocmap::table::modules.size(), modules.size());
    for (const router::ModuleInfo &module : modules) {
        const tqm::SchemaModule *const known = built_in.module_named(module.name);
        ASSERT_NE(known, nullptr) << module.name;
        EXPECT_EQ(known->ns, module.ns);
        EXPECT_EQ(known->prefix, module.prefix);
    }
}

} // namespace
