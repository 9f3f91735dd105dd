// Interfaces, and reads of configuration and state together against the dump of a busy router.
#include <algorithm>
#include <cstdlib>

#include "support.h"

using namespace test;

namespace
{

const std::string examples = EXAMPLES;

class State : public ToolTest
{
protected:
    void SetUp() override
    {
        ToolTest::SetUp();
        for (const char *name : {"policies/create.xml", "key-chains/create.xml", "interfaces/attach.xml"}) {
            const Outcome outcome = ocmap({"edit", examples + "/" + name, "--store", store()});
            ASSERT_EQ(outcome.status, 0) << outcome.err;
        }
    }

    Outcome get(const std::string &inside_filter) const
    {
        return ocmap({"get", "-", "--store", store(), "--oper", examples + "/state/busy-router.xml"},
                     "<filter><macsec xmlns='http://openconfig.net/yang/macsec'>" + inside_filter +
                         "</macsec></filter>");
    }
    // What a read selects below `macsec`.
    std::string selected(const std::string &inside_filter) const { return inside(get(inside_filter), "macsec"); }
};

std::size_t count(const std::string &text, const std::string &words)
{
    std::size_t found = 0;
    for (std::size_t at = text.find(words); at != std::string::npos; at = text.find(words, at + 1)) {
        ++found;
    }
    return found;
}

TEST_F(State, AWholeReadHasOneEntryForEachName)
{
    const std::string all = selected("");
    EXPECT_EQ(count(all, "<policy>"), 3u);
    EXPECT_EQ(count(all, "<key-chain><name>"), 2u);
    EXPECT_EQ(count(all, "<mka-key>"), 3u);
    EXPECT_EQ(count(all, "<interface>"), 4u);
    EXPECT_EQ(count(all, "<sci-tx>"), 2 * 3u); // of the entry and of its state
    EXPECT_EQ(count(all, "<sci-rx>"), 2 * (1 + 2 + 3u));
    EXPECT_EQ(count(all, "<macsec-cipher-suite>"), 1 + 1 + 2 + 1u);
    // Leaves of both trees stand in one entry, and an entry that only one of them knows is there too.
    EXPECT_NE(all.find("<mka><config><mka-policy>P2</mka-policy><key-chain>KC1</key-chain></config>"
                       "<state><mka-policy>P2</mka-policy><key-chain>KC1</key-chain><counters>"
                       "<in-mkpdu>10000</in-mkpdu>"),
              std::string::npos);
    EXPECT_NE(all.find("<policy><name>P3</name><state>"), std::string::npos);
    EXPECT_EQ(count(all, "fedcba"), 0u);
}

TEST_F(State, FiltersSelectState)
{
    const struct {
        const char *filter;
        const char *answer;
    } cases[] = {
        {"<mka><policies><policy><name>P2</name><state><macsec-cipher-suite/></state></policy></policies></mka>",
         "<mka><policies><policy><name>P2</name><state><macsec-cipher-suite>GCM_AES_128</macsec-cipher-suite>"
         "<macsec-cipher-suite>GCM_AES_256</macsec-cipher-suite></state></policy></policies></mka>"},
        {"<mka><policies><policy><state><key-server-priority>255</key-server-priority><name/></state></policy>"
         "</policies></mka>",
         "<mka><policies><policy><name>P3</name><state><key-server-priority>255</key-server-priority><name>P3</name>"
         "</state></policy></policies></mka>"},
        // An entry that only the state knows is one, too.
        {"<mka><policies><policy><name>P3</name><config/></policy></policies></mka>",
         "<mka><policies><policy><name>P3</name></policy></policies></mka>"},
        {"<mka><state><counters><sak-hash-errors/></counters></state></mka>",
         "<mka><state><counters><sak-hash-errors>7</sak-hash-errors></counters></state></mka>"},
        {"<interfaces><interface><name>HundredGigE0/0/0/1</name><state><counters><rx-badtag-pkts/></counters></state>"
         "</interface></interfaces>",
         "<interfaces><interface><name>HundredGigE0/0/0/1</name><state><counters><rx-badtag-pkts>2022</rx-badtag-pkts>"
         "</counters></state></interface></interfaces>"},
        {"<interfaces><interface><name>HundredGigE0/0/0/0</name><scsa-tx/></interface></interfaces>",
         "<interfaces><interface><name>HundredGigE0/0/0/0</name><scsa-tx><scsa-tx><sci-tx>00a1b2c3d4e00001</sci-tx>"
         "<state><sci-tx>00a1b2c3d4e00001</sci-tx><counters><sc-encrypted>987654321</sc-encrypted>"
         "<sa-encrypted>123456789</sa-encrypted></counters></state></scsa-tx></scsa-tx></interface></interfaces>"},
        {"<interfaces><interface><name>HundredGigE9/0/0/0</name></interface></interfaces>", ""},
    };
    for (const auto &one : cases) {
        EXPECT_EQ(selected(one.filter), one.answer) << one.filter;
    }
}

TEST_F(State, KeysOfStateEntriesCanBeNamed)
{
    const auto channels = [&](const std::string &filter) {
        return selected("<interfaces><interface><name>HundredGigE0/0/0/1</name><scsa-rx>" + filter +
                        "</scsa-rx></interface></interfaces>");
    };
    const auto answer = [](const std::string &entries) {
        return "<interfaces><interface><name>HundredGigE0/0/0/1</name><scsa-rx>" + entries +
               "</scsa-rx></interface></interfaces>";
    };
    const auto entry = [](const std::string &key, const std::string &below) {
        return "<scsa-rx><sci-rx>" + key + "</sci-rx>" + below + "</scsa-rx>";
    };
    const std::string first = "00f9e8d7c6b00001";
    const std::string second = "00f9e8d7c6b10001";
    const std::string valid = "<state><counters><sc-valid/></counters></state>";
    EXPECT_EQ(channels("<scsa-rx><sci-rx/></scsa-rx>"), answer(entry(first, "") + entry(second, "")));
    EXPECT_EQ(channels("<scsa-rx><sci-rx>" + second + "</sci-rx>" + valid + "</scsa-rx>"),
              answer(entry(second, "<state><counters><sc-valid>555001</sc-valid></counters></state>")));
    EXPECT_EQ(channels("<scsa-rx><sci-rx>00f9e8d7c6b20001</sci-rx></scsa-rx>"),
              "<interfaces><interface><name>HundredGigE0/0/0/1</name></interface></interfaces>");
    const std::string whole = channels("<scsa-rx><sci-rx>" + second + "</sci-rx></scsa-rx>");
    EXPECT_EQ(count(whole, "<scsa-rx><sci-rx>"), 1u) << whole;
    EXPECT_EQ(count(whole, "<sa-valid>"), 1u) << whole;
}

TEST_F(State, ConfigurationReadsHaveNoState)
{
    const Outcome read = get_config("<mka><policies><policy><state/></policy></policies></mka><interfaces/>");
    EXPECT_EQ(read.status, 0) << read.err;
    EXPECT_EQ(read.out.find("<state>"), std::string::npos);
    EXPECT_EQ(read.out.find("<policy>"), std::string::npos);
    EXPECT_NE(read.out.find("<mka-policy>P1</mka-policy>"), std::string::npos);
}

TEST_F(State, InterfacesOfTheRoutersOwnStay)
{
    // A native interface that OpenConfig does not see, and one that it takes MACsec off.
    std::string stored = store_file();
    const std::string own = "<interface-configuration><active>act</active><interface-name>Loopback0</interface-name>"
                            "<description>router id</description></interface-configuration>";
    const std::string end = "</interface-configurations>";
    stored.insert(stored.find(end), own);
    write_file(path("store") / "native.xml", stored);
    EXPECT_EQ(get_config("<interfaces/>").out.find("Loopback0"), std::string::npos);

    EXPECT_EQ(ocmap({"edit", examples + "/interfaces/detach.xml", "--store", store()}).status, 0);
    EXPECT_EQ(get_config("<interfaces/>").out.find("HundredGigE0/0/0/1"), std::string::npos);
    EXPECT_NE(compact(store_file()).find("<interface-name>HundredGigE0/0/0/1</interface-name>"), std::string::npos);

    for (const char *all : {"<interfaces nc:operation='delete'/>", "<interfaces nc:operation='replace'/>"}) {
        const Outcome outcome = edit(all);
        EXPECT_EQ(outcome.status, 0) << outcome.err;
        EXPECT_EQ(compact(get_config("<interfaces/>").out).find("<interface>"), std::string::npos);
        EXPECT_NE(compact(store_file()).find(own), std::string::npos);
        EXPECT_EQ(count(store_file(), "<interface-configuration>"), 3u);
    }
}

TEST_F(State, ADumpIsReadFromAFileAndFromAPipe)
{
    const std::string dump = std::string(300'000, '\n') + read_file(examples + "/state/busy-router.xml");
    write_file(path("dump.xml"), dump);
    const Outcome from_file = ocmap({"get", "--store", store(), "--oper", path("dump.xml")});
    EXPECT_EQ(from_file.status, 0) << from_file.err;
    EXPECT_EQ(from_file.out, ocmap({"get", "--store", store(), "--oper", "-"}, dump).out);
    const std::string command = "cat '" + std::string(path("dump.xml")) + "' | '" OCMAP "' get --store '" + store() +
                                "' --oper - > '" + std::string(path("answer.xml")) + "'";
    EXPECT_EQ(std::system(command.c_str()), 0);
    EXPECT_EQ(from_file.out, read_file(path("answer.xml")));
}

TEST_F(State, DamagedDumpsAreRefused)
{
    for (const char *text : {"", "hello", "<oc-macsec/>", "<macsec xmlns='http://openconfig.net/yang/macsec'/>"}) {
        write_file(path("dump.xml"), text);
        const Outcome read = ocmap({"get", "--store", store(), "--oper", path("dump.xml")});
        EXPECT_EQ(read.status, 1) << text;
        EXPECT_EQ(read.out, "");
    }
    EXPECT_EQ(ocmap({"get", "--store", store(), "--oper", path("none.xml")}).status, 1);
    const Outcome directory = ocmap({"get", "--store", store(), "--oper", store()});
    EXPECT_EQ(directory.status, 1);
    EXPECT_TRUE(directory.err.starts_with("error: cannot read '" + store() + "': ")) << directory.err;
}

} // namespace
