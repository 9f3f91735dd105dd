// What the plug-in gives to operations and the journal does not show: the components of a read, and the argument
// record that a caller zeroes first.
#include <dlfcn.h>
#include <gtest/gtest.h>

#include <algorithm>

#include "support/walk.h"

namespace
{

test::Lines reads;                      // root, then the components, parted by bars
std::vector<tqm_map_xpath_ops> records; // as they were given

template <class Function>
Function *framework(const char *name)
{
    return reinterpret_cast<Function *>(dlsym(RTLD_NEXT, name));
}

} // namespace

extern "C" {

rcode tqm_map_add_leaf_from_xpath(tqm_map_ctx ctx, const rdl_tqm_datatree *node, rdl_tqm_datatree *out,
                                  const char *root, const char *ns, const char *const *components, uint32_t count)
{
    std::string read = root;
    for (uint32_t index = 0; index < count; ++index) {
        read += std::string("|") + components[index];
    }
    reads.push_back(read);
    return framework<decltype(tqm_map_add_leaf_from_xpath)>("tqm_map_add_leaf_from_xpath")(ctx, node, out, root, ns,
                                                                                           components, count);
}

rcode tqm_map_stitch_list_to_list(tqm_map_ctx ctx, tqm_map_xpath_ops *ops)
{
    records.push_back(*ops);
    return framework<decltype(tqm_map_stitch_list_to_list)>("tqm_map_stitch_list_to_list")(ctx, ops);
}

rcode tqm_map_tree_xpath_operations(tqm_map_ctx ctx, tqm_map_xpath_ops *ops)
{
    records.push_back(*ops);
    return framework<decltype(tqm_map_tree_xpath_operations)>("tqm_map_tree_xpath_operations")(ctx, ops);
}
}

namespace
{

using namespace test;

void run(Direction direction, const std::string &inside)
{
    Walk(TQM_REQ_GET, direction).load(document(TQM_REQ_GET, direction, inside)).run();
}

TEST(Surface, AReadNamesOneNodeWithEachComponent)
{
    reads.clear();
    run(Direction::forward, "");
    EXPECT_EQ(reads.size(), 39u);
    for (const std::string &read : reads) {
        EXPECT_TRUE(read.starts_with("/oc-macsec|/oc-macsec|/macsec|/")) << read;
        for (std::size_t slash = read.find('/'); slash != std::string::npos; slash = read.find('/', slash + 1)) {
            EXPECT_TRUE(slash == 0 || read[slash - 1] == '|') << read;
        }
    }
}

/// Bytes of a field behind its text.
template <std::size_t size>
bool is_zero_behind(const char (&text)[size])
{
    const char *const end = std::find(text, text + size, '\0');
    return end != text + size && std::all_of(end, text + size, [](char byte) { return byte == 0; });
}

TEST(Surface, ArgumentRecordsAreZeroBehindTheirTexts)
{
    records.clear();
    run(Direction::reverse,
        "<macsec><policy-names><policy-name><name>P1</name></policy-name><policy-name><name>P1</name>"
        "</policy-name></policy-names></macsec>");
    run(Direction::reverse, wrap("interface-configurations/interface-configuration[interface-name=e0]", ""));
    ASSERT_EQ(records.size(), 2u);
    EXPECT_EQ(records[0].operation, TQM_XPATH_OP_STITCH);
    EXPECT_EQ(records[0].mode, TQM_XPATH_MODE_STITCH);
    EXPECT_STREQ(records[0].path, "/macsec/mka/policies/policy[name=P1]/");
    EXPECT_STREQ(records[0].list_path, "/macsec/mka/policies/policy");
    EXPECT_EQ(records[1].operation, TQM_XPATH_OP_LOOKUP);
    EXPECT_EQ(records[1].mode, TQM_XPATH_MODE_LOOKUP);
    EXPECT_STREQ(records[1].path, "macsec/psk-key-chain");
    EXPECT_STREQ(records[1].list_path, "");
    for (const tqm_map_xpath_ops &record : records) {
        EXPECT_STREQ(record.ns, oc_ns);
        EXPECT_STREQ(record.data, "");
        EXPECT_TRUE(is_zero_behind(record.data) && is_zero_behind(record.ns) && is_zero_behind(record.path) &&
                    is_zero_behind(record.list_path));
    }
}

} // namespace
