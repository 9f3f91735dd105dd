// Which bytes are characters, and where they are.
#include <gtest/gtest.h>

#include <cstdint>
#include <string>

#include "text/characters.h"
#include "text/line_index.h"

namespace
{

// Each stands behind seven letters and before nine more, so that words of eight bytes are looked at, too.
TEST(Characters, AreFoundBadByTheBoundariesOfUtf8AndXml)
{
    const struct {
        const char *bytes;
        std::uint32_t code; // 0: no character of UTF-8
        bool good;
    } cases[] = {
        {"\t", 0x9, true},
        {"\n", 0xa, true},
        {"\r", 0xd, true},
        {"\x01", 0x1, false},
        {"\x1f", 0x1f, false},
        {" ", 0x20, true},
        {"\x7f", 0x7f, true},
        {"\x80", 0, false},
        {"\xbf", 0, false},
        {"\xc1\xbf", 0, false},
        {"\xc2\x80", 0x80, true},
        {"\xc2", 0, false},
        {"\xc2\x41", 0, false},
        {"\xdf\xbf", 0x7ff, true},
        {"\xe0\x9f\xbf", 0, false},
        {"\xe0\xa0\x80", 0x800, true},
        {"\xe2\x82", 0, false},
        {"\xed\x9f\xbf", 0xd7ff, true},
        {"\xed\xa0\x80", 0, false},
        {"\xed\xbf\xbf", 0, false},
        {"\xee\x80\x80", 0xe000, true},
        {"\xef\xbf\xbd", 0xfffd, true},
        {"\xef\xbf\xbe", 0xfffe, false},
        {"\xef\xbf\xbf", 0xffff, false},
        {"\xf0\x8f\xbf\xbf", 0, false},
        {"\xf0\x90\x80\x80", 0x10000, true},
        {"\xf0\x9f\x98", 0, false},
        {"\xf4\x8f\xbf\xbf", 0x10ffff, true},
        {"\xf4\x90\x80\x80", 0, false},
        {"\xf5\x80\x80\x80", 0, false},
        {"\xff", 0, false},
    };
    for (const auto &test : cases) {
        const std::string bytes = test.bytes;
        const text::Character character = text::character_at(bytes, 0);
        EXPECT_EQ(character.length, test.code == 0 ? 0 : bytes.size()) << std::hex << test.code;
        EXPECT_EQ(std::uint32_t{character.code}, test.code);
        EXPECT_EQ(text::find_bad_character("sevenup" + bytes + "and beyond"), test.good ? std::string::npos : 7U);
        EXPECT_EQ(text::find_bad_character("sevenup" + bytes), test.good ? std::string::npos : 7U) << "at the end";
    }
    EXPECT_EQ(text::find_bad_character(std::string("\0", 1)), 0U);
    EXPECT_EQ(text::find_bad_character(""), std::string::npos);
}

TEST(LineIndex, CountsLinesAndColumnsFromOne)
{
    const text::LineIndex lines("ab\n\ncd");
    const char *const places[] = {"line 1, column 1", "line 1, column 2", "line 1, column 3", "line 2, column 1",
                                  "line 3, column 1", "line 3, column 2", "line 3, column 3"};
    for (std::size_t offset = 0; offset < std::size(places); ++offset) {
        EXPECT_EQ(lines.place_of(offset), places[offset]);
    }
    EXPECT_EQ(text::LineIndex("").place_of(0), "line 1, column 1");
}

// Each byte of a word may end a line, beside blanks and beside what is no ASCII.
TEST(Characters, AreSearchedAndLinesCountedInOnePass)
{
    for (const std::string end : {"\n", "\r\n", "\n\n", "\t\n\t", "\xc3\xa9\n", "\n\xf0\x9f\x94\x91", "\x7f\n"}) {
        for (std::size_t before = 0; before < 20; ++before) {
            const std::string good = std::string(before, 'a') + end + std::string(11, 'b') + end + "c";
            for (const std::string &bytes : {good, good + "\x01", good + "\x01\n\n"}) {
                text::LineIndex lines;
                const std::size_t bad = text::find_bad_character(bytes, lines);
                EXPECT_EQ(bad, bytes == good ? std::string::npos : good.size());
                for (std::size_t offset = 0; offset < good.size(); ++offset) {
                    EXPECT_EQ(lines.place_of(offset), text::LineIndex(bytes).place_of(offset)) << before;
                }
            }
        }
    }
}

} // namespace
