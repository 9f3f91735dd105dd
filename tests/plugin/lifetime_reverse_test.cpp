// The lifetime of a key, native to OpenConfig.
#include <algorithm>

#include "keychain_documents.h"

extern "C" {
rcode ymap_to_ocmacsec_keychain_valid_date_time_rev(tqm_map_ctx, const rdl_tqm_datatree *, unsigned int,
                                                    rdl_tqm_datatree *);
}

using namespace test;

namespace
{

constexpr rcode failure = 0x4321;
const char *const mapper = "ymap_to_ocmacsec_keychain_valid_date_time_rev";
const std::string valid = oc_key + "/config/valid-date-time";
const std::string expiration = oc_key + "/config/expiration-date-time";

std::string with_lifetime(const std::string &leaves)
{
    return native_chains(
        macsec_chain("C1", native_macsec_key("01", "<macsec-lifetime>" + leaves + "</macsec-lifetime>")));
}

Walk mapped(Walk walk, const std::string &leaves)
{
    return walk.reverse(with_lifetime(leaves), native_chains_root);
}

rdl_tqm_datatree &lifetime_of(rdl_tqm_datatree *root)
{
    rdl_tqm_datatree &lifetime = root->subtree[0].subtree[1].subtree[0].subtree[0].subtree[1];
    EXPECT_STREQ(lifetime.tag, "macsec-lifetime");
    return lifetime;
}

// The adds of the two OpenConfig leaves, as v=... and e=...; the values as the journal shows them.
Lines times(const Walk &walk)
{
    Lines found;
    for (const std::string &add : walk.adds()) {
        if (add.starts_with(valid)) {
            found.push_back("v" + add.substr(valid.size()));
        } else if (add.starts_with(expiration)) {
            found.push_back("e" + add.substr(expiration.size()));
        }
    }
    return found;
}

// What is added where both leaves get a text: first both without a value, then the start and the end.
Lines both(const std::string &start, const std::string &end)
{
    return {"v=null", "e=null", "v=\"" + start + "\"", "e=\"" + end + "\""};
}

TEST(LifetimeReverse, MonthNames)
{
    for (unsigned int month = 1; month <= 12; ++month) {
        EXPECT_EQ(convert_month_to_number(months[month - 1].c_str()), month);
    }
    for (const char *text : {"Jan", "DEC", "sept", "ja", "", "NA", "1"}) {
        EXPECT_EQ(convert_month_to_number(text), 0u) << text;
    }
    EXPECT_EQ(convert_month_to_number(nullptr), 0u);
}

TEST(LifetimeReverse, TheEndIsInfiniteOrADurationOrADate)
{
    const std::string start = six("start", "2024 mar 5 7 8 9");
    const std::string end = six("end", "2025 dec 31 23 59 58");
    const std::string start_text = "2024-03-05T07:08:09";
    const std::string end_text = "2025-12-31T23:59:58";
    const struct {
        std::string leaves;
        std::string end;
    } cases[] = {
        {start + end, end_text},
        {start + leaf("infinite-flag", "true"), "NO_EXPIRATION"},
        {leaf("infinite-flag", "true") + leaf("life-time", "3600") + end + start, "NO_EXPIRATION"},
        {start + end + leaf("infinite-flag", "false"), end_text},
        {start + end + leaf("infinite-flag", "True"), end_text},
        {start + end + leaf("infinite-flag", "trueish"), end_text},
        {start + end + leaf("infinite-flag", "tru"), end_text},
        {start + leaf("infinite-flag", "false") + leaf("life-time", "3600"), "2024-03-05T08:08:09"},
        {leaf("life-time", "3600") + end + start, "2024-03-05T08:08:09"},
        {start + leaf("life-time", "60 s"), "2024-03-05T07:09:09"},
        // No duration: zero, no number, and what is zero in 32 bits.
        {start + end + leaf("life-time", "0"), end_text},
        {start + end + leaf("life-time", "long"), end_text},
        {start + end + leaf("life-time", "4294967296"), end_text},
        // Unknown tags between the leaves.
        {leaf("zone", "utc") + start + "<other xmlns='http://example.com/x'>1</other>" + end, end_text},
        // A year of two digits.
        {start + six("end", "25 jan 1 2 3 4"), "0025-01-01T02:03:04"},
    };
    const Zone zone(utc);
    for (const auto &one : cases) {
        Walk walk = mapped(answer(), one.leaves);
        EXPECT_EQ(walk.rc, 0u);
        EXPECT_EQ(times(walk), both(start_text, one.end)) << one.leaves;
        const Lines built = walk.built();
        EXPECT_EQ(Lines(built.end() - 2, built.end()), (Lines{valid + "=" + start_text, expiration + "=" + one.end}));
    }
}

TEST(LifetimeReverse, DurationsAreCountedInTheLocalZoneWithoutDaylightSaving)
{
    const struct {
        const char *zone;
        const char *start;
        const char *life_time;
        const char *valid;
        const char *expiration;
    } cases[] = {
        {utc, "2024 jan 31 23 30 0", "3600", "2024-01-31T23:30:00", "2024-02-01T00:30:00"},
        {utc, "2023 dec 31 23 59 59", "1", "2023-12-31T23:59:59", "2024-01-01T00:00:00"},
        {utc, "2024 feb 28 0 0 0", "86400", "2024-02-28T00:00:00", "2024-02-29T00:00:00"},
        {utc, "2023 feb 28 0 0 0", "86400", "2023-02-28T00:00:00", "2023-03-01T00:00:00"},
        {utc, "2100 feb 28 0 0 0", "86400", "2100-02-28T00:00:00", "2100-03-01T00:00:00"},
        // The low 32 bits, with their sign.
        {utc, "2024 mar 1 0 0 0", "-86400", "2024-03-01T00:00:00", "2024-02-29T00:00:00"},
        {utc, "2024 mar 1 0 0 0", "4294967295", "2024-03-01T00:00:00", "2024-02-29T23:59:59"},
        {utc, "2024 mar 1 0 0 0", "4294967297", "2024-03-01T00:00:00", "2024-03-01T00:00:01"},
        {utc, "2024 mar 1 0 0 0", "2147483648", "2024-03-01T00:00:00", "1956-02-11T20:45:52"},
        {utc, "2024 mar 1 0 0 0", "99999999999999999999", "2024-03-01T00:00:00", "2024-02-29T23:59:59"},
        // What does not exist is printed as it is, and put right for the sum.
        {utc, "2024 apr 31 0 0 0", "86400", "2024-04-31T00:00:00", "2024-05-02T00:00:00"},
        {utc, "2024 xyz 5 0 0 0", "60", "2024-00-05T00:00:00", "2023-12-05T00:01:00"},
        {utc, "2024 jan 1 24 60 60", "1", "2024-01-01T24:60:60", "2024-01-02T01:01:01"},
        {utc, "2024 jan 1st 1h x y", "1", "2024-01-01T01:00:00", "2024-01-01T01:00:01"},
        // Winter; summer, where the start is an hour later on the clock; over both changes; a time that is left out.
        {berlin, "2024 jan 15 12 0 0", "3600", "2024-01-15T12:00:00", "2024-01-15T13:00:00"},
        {berlin, "2024 jul 1 12 0 0", "3600", "2024-07-01T12:00:00", "2024-07-01T14:00:00"},
        {berlin, "2024 mar 31 1 30 0", "3600", "2024-03-31T01:30:00", "2024-03-31T03:30:00"},
        {berlin, "2024 mar 31 2 30 0", "60", "2024-03-31T02:30:00", "2024-03-31T03:31:00"},
        {berlin, "2024 mar 30 12 0 0", "86400", "2024-03-30T12:00:00", "2024-03-31T13:00:00"},
        {berlin, "2024 oct 27 1 30 0", "3600", "2024-10-27T01:30:00", "2024-10-27T02:30:00"},
        {berlin, "2024 oct 26 12 0 0", "86400", "2024-10-26T12:00:00", "2024-10-27T12:00:00"},
        {kathmandu, "2024 dec 31 18 15 0", "20700", "2024-12-31T18:15:00", "2025-01-01T00:00:00"},
    };
    for (const auto &one : cases) {
        const Zone zone(one.zone);
        Walk walk = mapped(answer().trace(), six("start", one.start) + leaf("life-time", one.life_time));
        EXPECT_EQ(walk.rc, 0u);
        EXPECT_EQ(times(walk), both(one.valid, one.expiration))
            << one.zone << ": " << one.start << " + " << one.life_time;
        const Lines texts = walk.texts_of(mapper);
        ASSERT_EQ(texts.size(), 4u);
        EXPECT_EQ(texts[1], "No mapping done for this node");
        EXPECT_TRUE(texts[2].starts_with(std::string(mapper) + ":")) << texts[2];
        EXPECT_TRUE(texts[2].ends_with(std::string(", life_time: ") + one.life_time + ", end_time: " + one.expiration));
    }
}

TEST(LifetimeReverse, NumbersBeyondAllCalendarsDoNoHarm)
{
    const Zone zone(berlin);
    for (const std::string number : {"2147483647", "-2147483648", "4294967295", "9223372036854775807",
                                     "-9223372036854775808", "99999999999999999999", "-99999999999999999999"}) {
        std::string values = number + " dec";
        for (int part = 0; part < 4; ++part) {
            values += " " + number;
        }
        for (const char *life_time : {"2147483647", "-2147483648", "0"}) {
            Walk walk =
                mapped(answer().trace(), six("start", values) + six("end", values) + leaf("life-time", life_time));
            EXPECT_EQ(walk.rc, 0u) << number;
            EXPECT_GE(times(walk).size(), 3u);
        }
    }
}

TEST(LifetimeReverse, MissingLeavesGiveNoDateButNoFailureEither)
{
    const Zone zone(utc);
    const std::string start = six("start", "2024 mar 5 7 8 9");
    const std::string short_start = start.substr(0, start.find("<start-seconds>"));
    const std::string end = six("end", "2025 dec 31 23 59 58");
    const struct {
        std::string leaves;
        Lines added; // behind the two without a value
    } cases[] = {
        {start, {"v=\"2024-03-05T07:08:09\""}},
        {start + leaf("end-year", "2025"), {"v=\"2024-03-05T07:08:09\""}},
        {end, {"e=\"2025-12-31T23:59:58\""}},
        {short_start + end, {"e=\"2025-12-31T23:59:58\""}},
        {short_start + leaf("life-time", "60"), {}},
        {leaf("life-time", "60") + end, {}},
        {leaf("infinite-flag", "true"), {"e=\"NO_EXPIRATION\""}},
        {leaf("zone", "utc"), {}},
    };
    for (const auto &one : cases) {
        Walk walk = mapped(answer(), one.leaves);
        EXPECT_EQ(walk.rc, 0u);
        Lines expected = {"v=null", "e=null"};
        expected.insert(expected.end(), one.added.begin(), one.added.end());
        EXPECT_EQ(times(walk), expected) << one.leaves;
    }
    // A leaf without a value ends the mapping at once.
    for (const std::size_t index : {0u, 5u, 6u}) {
        Walk walk = answer();
        rdl_tqm_datatree *const root = loaded(walk, with_lifetime(start + leaf("infinite-flag", "true")));
        lifetime_of(root).subtree[index].value = nullptr;
        walk.run(native_chains_root, root);
        EXPECT_EQ(walk.rc, 0u);
        EXPECT_EQ(times(walk), (Lines{"v=null", "e=null"}));
    }
    Walk empty = answer().trace();
    rdl_tqm_datatree *const root = loaded(empty, with_lifetime(""));
    lifetime_of(root).value = nullptr; // a container has none
    empty.run(native_chains_root, root);
    EXPECT_EQ(empty.rc, 0u);
    EXPECT_EQ(times(empty), (Lines{"v=null", "e=null"}));
    EXPECT_EQ(empty.texts_of(mapper), (Lines{"Start", "No subtrees", "End"}));
}

TEST(LifetimeReverse, KindGateAndOperationChangeOnlyTheFirstTwoAdds)
{
    const std::string leaves = six("start", "2024 mar 5 7 8 9") + leaf("infinite-flag", "true");
    const Lines all = both("2024-03-05T07:08:09", "NO_EXPIRATION");
    EXPECT_EQ(times(mapped(answer(TQM_REQ_GET_CONFIG), leaves)), all);
    EXPECT_EQ(times(mapped(answer().without_configuration(), leaves)), Lines(all.begin() + 2, all.end()));
    EXPECT_EQ(times(mapped(answer().without_configuration(), "")), Lines{});
    const std::string deleted = leaf("macsec-key", element("macsec-lifetime", "delete", leaves));
    EXPECT_EQ(times(answer(TQM_REQ_EDIT).reverse(native_chains(leaf("keychain", macsec(deleted))), native_chains_root)),
              all);
}

TEST(LifetimeReverse, FailuresOfTheFramework)
{
    const std::string leaves = six("start", "2024 mar 5 7 8 9") + leaf("infinite-flag", "true");
    const struct {
        const char *operation;
        unsigned int nth; // six adds and two lookups come before the mapper's
        rcode rc;
        std::size_t added;
    } cases[] = {
        {"tqm_map_datatree_add_path_flagged", 7, 0, 4},
        {"tqm_map_datatree_add_path_flagged", 8, failure, 2}, // then nothing is collected
        {"tqm_map_datatree_add_path_flagged", 9, 0, 4},
        {"tqm_map_datatree_add_path_flagged", 10, failure, 4},
        {"tqm_map_get_node_info", 3, failure, 2},
        {"tqm_map_get_node_info", 9, failure, 2},
    };
    for (const auto &one : cases) {
        Walk walk = mapped(answer().trace().fault({one.operation, one.nth, failure}), leaves);
        EXPECT_EQ(walk.rc, one.rc) << one.operation << " " << one.nth;
        EXPECT_EQ(times(walk).size(), one.added) << one.operation << " " << one.nth;
        EXPECT_EQ(walk.texts_of(mapper), (Lines{"Start", "No mapping done for this node", "End"}));
    }
}

TEST(LifetimeReverse, AChildWithoutATagEndsTheCollection)
{
    Walk walk = answer().trace();
    rdl_tqm_datatree *const root = loaded(walk, with_lifetime(six("start", "2024 mar 5 7 8 9") +
                                                              leaf("infinite-flag", "true") + leaf("life-time", "60")));
    lifetime_of(root).subtree[6].tag = nullptr;
    walk.run(native_chains_root, root);
    EXPECT_EQ(times(walk), (Lines{"v=null", "e=null", "v=\"2024-03-05T07:08:09\""}));
    EXPECT_EQ(walk.texts_of(mapper),
              (Lines{"Start", "No mapping done for this node", "Tag name is not available!", "End"}));

    const auto alone = [](const rdl_tqm_datatree *node) {
        Walk one = answer().trace();
        one.rc = ymap_to_ocmacsec_keychain_valid_date_time_rev(one.request().ctx(), node, 1, one.request().out());
        return one;
    };
    rdl_tqm_datatree node{};
    node.subtree_count = 1;
    node.present = TQM_PRESENT_SUBTREE;
    EXPECT_EQ(alone(&node).rc, TQM_ERR_NO_SUBTREE);
    EXPECT_EQ(alone(&node).texts_of(mapper), (Lines{"Start", "No mapping done for this node", "End"}));
    EXPECT_EQ(alone(nullptr).rc, TQM_ERR_BAD_ARGS);
    EXPECT_EQ(alone(nullptr).texts_of(mapper), (Lines{"Start", "Invalid arguments passed!"}));
}

} // namespace
