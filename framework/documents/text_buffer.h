// What the writers print into: memory in front of a sink, whose room is asked for once for several pieces.
#pragma once

#include <array>
#include <cstddef>
#include <cstring>
#include <functional>
#include <memory>
#include <string_view>

namespace tqm
{

using Sink = std::function<bool(std::string_view)>;

/// The bytes of UTF-8 that stand for themselves in a text; the others are replaced. U+0000 is none, as it ends texts.
class PlainBytes
{
public:
    constexpr explicit PlainBytes(std::string_view replaced)
    {
        for (std::size_t c = 0x20; c < plain_.size(); ++c) {
            plain_[c] = replaced.find(static_cast<char>(c)) == std::string_view::npos;
        }
    }
    constexpr bool has(char c) const { return plain_[static_cast<unsigned char>(c)]; }

private:
    std::array<bool, 256> plain_{};
};

class TextBuffer
{
public:
    explicit TextBuffer(Sink sink);

    /// Makes room for what put() and indent() write before the next call of another function.
    void reserve(std::size_t size)
    {
        if (size > room()) {
            make_room(size);
        }
    }
    void put(char c) { *next_++ = c; }
    void put(std::string_view text)
    {
        if (!text.empty()) {
            std::memcpy(next_, text.data(), text.size());
            next_ += text.size();
        }
    }
    /// Two blanks for each level.
    void indent(unsigned int level)
    {
        std::size_t count = 2 * std::size_t{level};
        for (; count > blanks.size(); count -= blanks.size()) {
            put(blanks);
        }
        std::memcpy(next_, blanks.data(), blanks.size()); // of one size, so that it is no call
        next_ += count;
    }

    void append(std::string_view text)
    {
        reserve(text.size());
        put(text);
    }
    /// Appends `text`, in which replacement(c) stands for each byte that is not plain.
    template <class Replacement>
    void append_escaped(const char *text, const PlainBytes &plain, Replacement replacement)
    {
        // Most texts are short: they are copied as they are looked at.
        while (true) {
            reserve(1);
            char *to = next_;
            for (; to != end_ && plain.has(*text); ++text) {
                *to++ = *text;
            }
            next_ = to;
            if (*text == '\0') {
                return;
            }
            if (!plain.has(*text)) {
                append(replacement(*text));
                ++text;
            }
        }
    }

    /// False if the sink failed, now or before.
    bool flush();

private:
    static constexpr std::size_t usual_size = std::size_t{1} << 16;
    static constexpr std::string_view blanks = "                                ";

    std::size_t room() const { return static_cast<std::size_t>(end_ - next_); }
    void make_room(std::size_t at_least);

    Sink sink_;
    /// Of usual_size, or what the largest piece needs, and what indent() copies too much. Not cleared: it is 64 KiB.
    std::unique_ptr<char[]> memory_;
    char *next_;
    char *end_;
    bool good_ = true;
};

} // namespace tqm
