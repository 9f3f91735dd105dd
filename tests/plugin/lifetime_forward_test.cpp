// The two time leaves of a key, OpenConfig to native.
#include "keychain_documents.h"

extern "C" {
rcode ymap_ot_ocmacsec_macsec_keychain_start_time_fwd(tqm_map_ctx, const rdl_tqm_datatree *, rdl_tqm_datatree *);
rcode ymap_ot_ocmacsec_macsec_keychain_end_time_fwd(tqm_map_ctx, const rdl_tqm_datatree *, rdl_tqm_datatree *);
}

using namespace test;

namespace
{

const std::string lifetime = native_key + "/macsec-lifetime/";

std::string with_time(const std::string &name, const std::string &text)
{
    return chain(key("<config>" + leaf(name, text) + "</config>"));
}

// The adds to macsec-lifetime, without that path.
Lines lifetime_adds(const Walk &walk)
{
    Lines adds;
    for (const std::string &add : walk.adds()) {
        if (add.starts_with(lifetime)) {
            adds.push_back(add.substr(lifetime.size(), add.find(" -> ") - lifetime.size())); // failed or not
        }
    }
    return adds;
}

// The leaves of an edit in their order, from "2021 mar 4 5 6 7".
Lines written(const std::string &end, const std::string &values, const std::string &source)
{
    Lines adds;
    for (std::size_t index = 0; index < date_parts.size(); ++index) {
        adds.push_back(end + "-" + date_parts[index] + "=\"" + words(values)[index] + "\" from " + source);
    }
    return adds;
}

TEST(LifetimeForward, ADateIsTakenApart)
{
    const struct {
        std::string text;
        std::string start;
        std::string end; // empty: refused
    } cases[] = {
        {"2021-03-04T05:06:07", "2021 mar 4 5 6 7", "2021 mar 4 5 6 7"},
        {"2021-12-31T23:59:59Z", "2021 dec 31 23 59 59", "2021 dec 31 23 59 59"},
        {"2021-03-04T05:06:07.125+05:30", "2021 mar 4 5 6 7", "2021 mar 4 5 6 7"},
        {"2021-03-04T05:06:07 nonsense", "2021 mar 4 5 6 7", "2021 mar 4 5 6 7"},
        // Digits are all that is asked of the numbers.
        {"0000-00-00T00:00:00", "0 NA 0 0 0 0", "0 NA 0 0 0 0"},
        {"9999-13-99T99:99:99", "9999 NA 99 99 99 99", "9999 NA 99 99 99 99"},
        {"2021-02-31T25:61:61", "2021 feb 31 25 61 61", "2021 feb 31 25 61 61"},
        // What is badly formed gives a start of zeros, and no end.
        {"2021-03-04T05:06", "0 NA 0 0 0 0", ""},
        {"2021-03-04T05:06:0", "0 NA 0 0 0 0", ""},
        {"2021-03-04 05:06:07", "0 NA 0 0 0 0", ""},
        {"2021/03/04T05:06:07", "0 NA 0 0 0 0", ""},
        {"2021-03-04T05.06.07", "0 NA 0 0 0 0", ""},
        {"+021-03-04T05:06:07", "0 NA 0 0 0 0", ""},
        {"2021-03-04T05:06:0x", "0 NA 0 0 0 0", ""},
        {"valid_immediately..", "0 NA 0 0 0 0", ""},
        {"VALID_IMMEDIATELY_NOW", "0 NA 0 0 0 0", ""},
        {"no_expiration", "0 NA 0 0 0 0", ""},
        {"NO_EXPIRATION_AT_ALL", "0 NA 0 0 0 0", ""},
        {"", "0 NA 0 0 0 0", ""},
        // A start has room for 99 bytes, an end has no limit.
        {"2021-03-04T05:06:07" + std::string(80, '.'), "2021 mar 4 5 6 7", "2021 mar 4 5 6 7"},
        {"2021-03-04T05:06:07" + std::string(81, '.'), "0 NA 0 0 0 0", "2021 mar 4 5 6 7"},
        {"2021-03-04T05:06:07" + std::string(9000, '.'), "0 NA 0 0 0 0", "2021 mar 4 5 6 7"},
    };
    const Zone zone(berlin); // the zone plays no part
    for (const auto &one : cases) {
        Walk start = edit().forward(with_time("valid-date-time", one.text));
        EXPECT_EQ(start.rc, 0u) << one.text;
        EXPECT_EQ(lifetime_adds(start), written("start", one.start, "valid-date-time")) << one.text;

        Walk end = edit().trace().forward(with_time("expiration-date-time", one.text));
        if (!one.end.empty()) {
            EXPECT_EQ(end.rc, 0u) << one.text;
            EXPECT_EQ(lifetime_adds(end), written("end", one.end, "expiration-date-time")) << one.text;
            continue;
        }
        EXPECT_EQ(end.rc, TQM_ERR_INVALID_REQUEST) << one.text;
        EXPECT_EQ(lifetime_adds(end), Lines{}) << one.text;
        EXPECT_EQ(end.message(), "Invalid expiration-date-time(not OC complaint)");
        ASSERT_EQ(end.lines_of("tqm_strdup").size(), 1u);
        EXPECT_NE(end.lines_of("tqm_strdup").back().find("owner=\"TQM_MAP\""), std::string::npos);
        EXPECT_EQ(end.error_path() + end.tag(), "");
        EXPECT_EQ(end.texts_of("ymap_ot_ocmacsec_macsec_keychain_end_time_fwd"),
                  (Lines{"Start", "Invalid expiration-date-time string(not OC complaint)", "End"}));
    }
}

TEST(LifetimeForward, EveryMonthHasItsName)
{
    for (std::size_t month = 0; month <= 13; ++month) {
        const std::string digits = std::to_string(month + 100).substr(1);
        const std::string name = month >= 1 && month <= 12 ? months[month - 1] : "NA";
        Walk walk = edit().forward(with_time("expiration-date-time", "2021-" + digits + "-01T00:00:00"));
        EXPECT_EQ(lifetime_adds(walk)[1], "end-month=\"" + name + "\" from expiration-date-time");
    }
}

TEST(LifetimeForward, ValidImmediatelyIsTheLocalTimeOfTheEdit)
{
    for (const char *zone_text : {utc, berlin, kathmandu}) {
        const Zone zone(zone_text);
        const auto written_at = [](std::time_t now) {
            std::tm local{};
            localtime_r(&now, &local);
            std::string values =
                std::to_string(local.tm_year + 1900) + " " + months[static_cast<std::size_t>(local.tm_mon)];
            for (const int part : {local.tm_mday, local.tm_hour, local.tm_min, local.tm_sec}) {
                values += " " + std::to_string(part);
            }
            return written("start", values, "valid-date-time");
        };
        const std::time_t before = std::time(nullptr) - 1; // time() may lag behind the finer clock
        Walk walk = edit().forward(with_time("valid-date-time", "VALID_IMMEDIATELY"));
        const std::time_t after = std::time(nullptr) + 1;
        EXPECT_EQ(walk.rc, 0u);
        bool met = false;
        for (std::time_t now = before; now <= after; ++now) {
            met = met || lifetime_adds(walk) == written_at(now);
        }
        EXPECT_TRUE(met) << zone_text << ": " << testing::PrintToString(lifetime_adds(walk));
    }
}

TEST(LifetimeForward, NoExpirationIsAFlagAlone)
{
    Walk walk = edit().forward(with_time("expiration-date-time", "NO_EXPIRATION"));
    EXPECT_EQ(walk.rc, 0u);
    EXPECT_EQ(lifetime_adds(walk), (Lines{"infinite-flag=\"true\" from expiration-date-time"}));
    Walk failed = edit();
    failed.fault({"tqm_map_datatree_add_path", 1, 0x99});
    EXPECT_EQ(failed.forward(with_time("expiration-date-time", "NO_EXPIRATION")).rc, 0x99u);
    // The duration is the native side's own.
    EXPECT_EQ(edit().forward(chain(key("<config><id>01</id></config>"))).built().back(), native_key + "/key-id=01");
}

TEST(LifetimeForward, ReadsAndDeletesNameAllLeaves)
{
    const std::string start = "start-hour start-minutes start-seconds start-date start-month start-year";
    const std::string flags = " infinite-flag life-time";
    const struct {
        std::string leaf;
        tqm_map_function mapper;
        Lines read;
        Lines deleted;
        const char *deleting; // the operation that a delete uses
    } cases[] = {
        {"valid-date-time", ymap_ot_ocmacsec_macsec_keychain_start_time_fwd, words(start), words(start),
         "tqm_map_datatree_add_path_flagged"},
        {"expiration-date-time", ymap_ot_ocmacsec_macsec_keychain_end_time_fwd,
         words("end-hour end-minutes end-seconds end-date end-month end-year" + flags),
         words("end-year end-month end-date end-hour end-minutes end-seconds" + flags), "tqm_map_datatree_add_path"},
    };
    for (const auto &one : cases) {
        const auto each = [](Lines leaves, const std::string &rest) {
            for (std::string &name : leaves) {
                name += rest;
            }
            return leaves;
        };
        for (Walk walk : {get_config(), get(), get().without_configuration()}) {
            EXPECT_EQ(lifetime_adds(walk.forward(with_time(one.leaf, ""))), each(one.read, "=null"));
        }
        rdl_tqm_datatree node{};
        node.value = "V";
        node.operation = TQM_OP_DELETE; // means nothing in a read
        node.present = TQM_PRESENT_VALUE | TQM_PRESENT_OPERATION;
        EXPECT_EQ(lifetime_adds(get_config().run(one.mapper, &node)), each(one.read, "=\"V\""));

        Walk removal = edit().forward(chain(key(leaf("config", element(one.leaf, "delete", "")))));
        EXPECT_EQ(removal.rc, 0u);
        EXPECT_EQ(lifetime_adds(removal), each(one.deleted, "=null from " + one.leaf + ":delete"));
        EXPECT_TRUE(removal.lines_of(one.deleting).back().find("/macsec-lifetime/") != std::string::npos);
    }
}

TEST(LifetimeForward, TheLastAddDecides)
{
    for (const char *name : {"valid-date-time", "expiration-date-time"}) {
        for (const unsigned int nth : {1u, 2u, 5u, 6u}) {
            Walk walk = edit();
            walk.fault({"tqm_map_datatree_add_path", nth, 0x77});
            walk.forward(with_time(name, "2021-03-04T05:06:07"));
            EXPECT_EQ(walk.rc, nth == 6 ? 0x77u : 0u) << name << " " << nth;
            EXPECT_EQ(lifetime_adds(walk).size(), 6u);
        }
    }
}

} // namespace
