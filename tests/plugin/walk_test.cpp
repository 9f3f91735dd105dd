// What one request alone cannot show: what a node function of another build leaves on the iteration-tree stack, what a
// request leaves to the next, and the entry that reverse mappers fill.
#include <gtest/gtest.h>

#include "support/walk.h"
#include "ymap_oc_macsec.h"

namespace
{

using namespace test;

// ---- Elements of the iteration tree --------------------------------------------------------------------------------

Lines instances_called; // tag and operation of each node that the callback got

rcode note_instance(tqm_map_ctx, rdl_tqm_datatree *node, rdl_tqm_datatree *, uint32_t zero)
{
    const std::string operation =
        (node->present & TQM_PRESENT_OPERATION) != 0 ? std::to_string(node->operation) : "none";
    instances_called.push_back(std::string(node->value) + " " + operation + " " + std::to_string(zero));
    return 0x99; // is not looked at
}

/// A policy whose list node function leaves two instances to walk, each with one leaf.
struct Iteration {
    rdl_tqm_datatree leaves[2] = {};
    rdl_tqm_datatree containers[2] = {};
    rdl_tqm_datatree instances[2] = {};

    Iteration()
    {
        for (int index = 0; index < 2; ++index) {
            leaves[index] = node(index == 0 ? "key-server-priority" : "delay-protection", nullptr);
            containers[index] = node("config", &leaves[index]);
            instances[index] = node("policy", &containers[index]);
            instances[index].value = index == 0 ? "first" : "second";
        }
    }

    static rdl_tqm_datatree node(const char *tag, rdl_tqm_datatree *child)
    {
        rdl_tqm_datatree made{};
        made.tag = tag;
        made.ns = oc_ns;
        made.subtree = child;
        made.subtree_count = child == nullptr ? 0 : 1;
        made.present = child == nullptr ? 0 : TQM_PRESENT_SUBTREE;
        return made;
    }

    Walk walked(const std::string &entry, bool with_callback, uint32_t count = 2)
    {
        instances_called.clear();
        Walk walk(TQM_REQ_EDIT, Direction::forward);
        walk.on_call("tqm_map_get_node_info", 1, [this, ctx = walk.ctx(), with_callback, count] {
            tqm_map_util_itree_stack_push(ctx, instances, count, with_callback ? note_instance : nullptr);
        });
        walk.load(document(TQM_REQ_EDIT, Direction::forward, wrap(entry, ""))).run();
        return walk;
    }
};

TEST(Iteration, EachInstanceIsWalkedAndAllButTheFirstArePushed)
{
    Iteration iteration;
    const Walk walk = iteration.walked("mka/policies/policy[name=P1]", true);
    EXPECT_EQ(walk.outcome(), "0");
    EXPECT_EQ(instances_called, (Lines{"first none 0", "second none 0"}));
    const std::string push = "tqm_map_add_to_node_hierarchy";
    EXPECT_EQ(walk.calls_of(push).size(), 4u + 1 + 2); // to the list, the second instance, and two containers
    EXPECT_EQ(walk.calls_of(push)[5], push + "(policy, level_kind=2) = 0");
    EXPECT_EQ(walk.calls_of("tqm_map_remove_from_node_hierarchy").size(), 7u);
    EXPECT_EQ(walk.calls_of("tqm_map_update_current_list_node").size(), 2u);
    EXPECT_EQ(walk.calls_of("tqm_map_util_itree_stack_peak").size(), 1u);
    EXPECT_EQ(walk.calls_of("tqm_map_util_itree_stack_pop").size(), 1u);
    const Lines adds = walk.calls_of("tqm_map_datatree_add_path_flagged");
    ASSERT_EQ(adds.size(), 3u); // of the entry, and the leaves; the request's own children are not walked
    EXPECT_NE(adds[1].find("/key-server-priority\""), std::string::npos);
    EXPECT_NE(adds[2].find("/delay-protection\""), std::string::npos);
}

TEST(Iteration, InADeleteInstancesWithACallbackAreRemoved)
{
    Iteration iteration;
    (void)iteration.walked("mka/policies/policy:delete[name=P1]", true);
    EXPECT_EQ(instances_called, (Lines{"first 4 0", "second 4 0"}));
    Iteration without_callback;
    (void)without_callback.walked("mka/policies/policy:delete[name=P1]", false);
    EXPECT_EQ(without_callback.instances[1].present & TQM_PRESENT_OPERATION, 0);
}

TEST(Iteration, AnElementWithoutInstancesIsPoppedAndTheRequestIsWalked)
{
    Iteration iteration;
    const Walk walk = iteration.walked("mka/policies/policy[name=P1]", false, 0);
    EXPECT_EQ(walk.calls_of("tqm_map_util_itree_stack_pop").size(), 1u);
    EXPECT_EQ(walk.calls_of("tqm_map_datatree_add_path_flagged").size(), 3u); // the entry, its key and "created"
}

// ---- The entry that is filled ---------------------------------------------------------------------------------------

TEST(FilledEntry, IsNoneWhereTheNextCannotBeAdded)
{
    for (const unsigned int nth : {0u, 4u}) { // the entry and its name twice come first
        Walk walk(TQM_REQ_GET, Direction::reverse);
        walk.fault("tqm_map_datatree_add_path_flagged", nth, 0x4321);
        walk.load(document(TQM_REQ_GET, Direction::reverse,
                           "<macsec><policy-names><policy-name><name>P1</name></policy-name><policy-name>"
                           "<name>P2</name></policy-name></policy-names></macsec>"));
        walk.run();
        EXPECT_EQ(walk.ctx()->request->current_list == nullptr, nth != 0);
    }
}

// ---- The record of the key chain, which outlives a request ---------------------------------------------------------

macsec_kc_record &kept()
{
    return *static_cast<macsec_kc_record *>(symbol("macsec_kc"));
}

class KeptChain : public testing::Test
{
protected:
    void SetUp() override { kept() = {}; }
    void TearDown() override { kept() = {}; }
};

const std::string named = "keychains/keychain[chain-name=M1]/macsec-keychain";

Walk answered(const std::string &path, const char *operation = "", unsigned int nth = 0)
{
    Walk walk(TQM_REQ_GET, Direction::reverse);
    if (nth != 0) {
        walk.fault(operation, nth, 0x4321);
    }
    walk.load(document(TQM_REQ_GET, Direction::reverse, wrap(path, ""))).run();
    return walk;
}

TEST_F(KeptChain, AWalkThatEndsBeforeTheNameLeavesTheRecordSetForTheNext)
{
    const char *const add = "tqm_map_datatree_add_path_flagged";
    for (const std::string &path : {named, std::string("keychains/keychain/macsec-keychain")}) {
        (void)answered(path, add, 1);
        EXPECT_EQ(kept().kc_active, 1);
        EXPECT_STREQ(kept().kc_name, path == named ? "M1" : "");
        // The name that is walked next is mapped, be it of a plain chain, and clears the record.
        EXPECT_EQ(answered("keychains/keychain[chain-name=P1]").calls_of(add).size(), 2u);
        EXPECT_EQ(kept().kc_active, 0);
        EXPECT_STREQ(kept().kc_name, "");
        EXPECT_EQ(answered("keychains/keychain[chain-name=P1]").calls_of(add).size(), 0u);
    }
    kept().kc_active = 1;
    (void)answered("keychains/keychain[chain-name=P1]", add, 2);
    EXPECT_EQ(kept().kc_active, 0); // whatever the adds answer
    kept().kc_active = 2;
    EXPECT_EQ(answered("keychains/keychain[chain-name=P1]").calls_of(add).size(), 0u);
}

TEST_F(KeptChain, TheRecordKeepsABoundedName)
{
    for (const std::size_t length : {1u, 49u, 50u, 500u}) {
        const std::string name(length, 'n');
        const std::string path = "keychains/keychain[chain-name=" + name + "]/macsec-keychain";
        (void)answered(path, "tqm_map_datatree_add_path_flagged", 1);
        EXPECT_EQ(kept().kc_name, length < sizeof kept().kc_name ? name : "") << length;
    }
}

TEST_F(KeptChain, AnEditContinuesAnEntryThatIsThere)
{
    Walk walk(TQM_REQ_EDIT, Direction::reverse);
    walk.load(document(TQM_REQ_EDIT, Direction::reverse, wrap(named, "")));
    rdl_tqm_datatree *added = nullptr;
    ASSERT_EQ(tqm_map_search_or_add_list(walk.ctx(), walk.out(), &added, "/macsec/mka/key-chains/key-chain", "M1",
                                         "name", oc_ns),
              0u);
    EXPECT_EQ(walk.run().outcome(), "0");
    EXPECT_EQ(walk.calls_of("tqm_map_stitch_list_to_list").size(), 1u);
    EXPECT_EQ(kept().kc_active, 0);
}

} // namespace
