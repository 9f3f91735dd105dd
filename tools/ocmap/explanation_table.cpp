#include "explanation_table.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "printable.h"

namespace ocmap
{
namespace
{

constexpr std::size_t widest_left = 48;

namespace style
{
constexpr const char *heading = "\033[1m";
constexpr const char *mapper = "\033[2m";
constexpr const char *added = "\033[32m";
constexpr const char *lost = "\033[33m";
constexpr const char *refused = "\033[1;31m";
constexpr const char *plain = "\033[0m";
} // namespace style

std::string with_value(const std::string &name, const std::optional<std::string> &value, const std::string &operation)
{
    std::string text = printable(name);
    if (value) {
        text += " = " + (value->empty() ? "\"\"" : printable(*value));
    }
    return operation.empty() ? text : text + " (" + operation + ")";
}

std::string list_of(const std::vector<std::size_t> &positions)
{
    std::string text;
    for (const std::size_t position : positions) {
        text += (text.empty() ? "" : ", ") + add_number(position);
    }
    return text;
}

std::string counted(std::size_t count, const std::string &what)
{
    return std::to_string(count) + " " + what + (count == 1 ? "" : "s");
}

// Characters, not bytes: columns are counted in them.
std::size_t width(std::string_view text)
{
    return static_cast<std::size_t>(
        std::ranges::count_if(text, [](char c) { return (static_cast<unsigned char>(c) & 0xc0U) != 0x80U; }));
}

class Table
{
public:
    Table(const Explanation &explanation, bool colour) : explanation_(explanation), colour_(colour)
    {
        for (const RequestNode &node : explanation.request) {
            left_width_ = std::max(left_width_, std::min(width(left_of(node)), widest_left));
        }
    }

    std::string text()
    {
        const char *const result = explanation_.reverse ? "OpenConfig" : "native";
        line("request: " + explanation_.kind, std::string("mapper, and what it adds (") + result + ")", style::heading,
             style::heading);
        for (const RequestNode &node : explanation_.request) {
            add(node);
        }
        text_ += "\n" + summary() + "\n";
        return std::move(text_);
    }

private:
    static std::string left_of(const RequestNode &node)
    {
        return std::string(2 * node.depth, ' ') + with_value(node.tag, node.value, node.operation);
    }

    void add(const RequestNode &node)
    {
        std::string left = left_of(node);
        const char *const left_style = node.fate == Fate::refused ? style::refused : nullptr;
        const auto row = [&](const std::string &right, const char *right_style) {
            line(left, right, left_style, right_style);
            left.clear();
        };
        auto next = node.adds.begin();
        const auto rows_of = [&](const std::string &mapper) {
            row(mapper, style::mapper);
            for (; next != node.adds.end() && explanation_.adds[*next].mapper == mapper; ++next) {
                const Add &add = explanation_.adds[*next];
                const bool stands = !add.lost_to && !add.not_taken && add.result;
                row("  " + describe(add, *next), stands ? style::added : style::lost);
            }
        };
        for (const std::string &mapper : node.mappers) {
            rows_of(mapper);
        }
        while (next != node.adds.end()) { // of a function that went on after another that it had called
            rows_of(explanation_.adds[*next].mapper);
        }
        if (node.fate == Fate::passed && !node.reason.empty()) {
            row("  " + printable(node.reason), nullptr);
        } else if (node.fate == Fate::dropped) {
            row("  dropped: " + printable(node.reason), style::lost);
        } else if (node.fate == Fate::refused) {
            row("  refused: " + printable(node.reason), style::refused);
        } else if (node.fate == Fate::not_reached) {
            row("  not reached", style::lost);
        }
        if (!left.empty()) {
            row("", nullptr);
        }
    }

    static std::string describe(const Add &add, std::size_t position)
    {
        const bool goes_without_saying = add.operation == "merge";
        std::string text =
            add_number(position) + " " + with_value(add.path, add.value, goes_without_saying ? "" : add.operation);
        if (add.lost_to) {
            text += ", lost to " + add_number(*add.lost_to);
        }
        if (!add.wins_over.empty()) {
            text += ", wins over " + list_of(add.wins_over);
        }
        if (add.not_taken) {
            text += ", not taken: " + *add.not_taken;
        } else if (!add.result) {
            text += ", not in the result";
        }
        return text;
    }

    std::string summary() const
    {
        std::array<std::size_t, fate_names.size()> counts{};
        for (const RequestNode &node : explanation_.request) {
            ++counts[static_cast<std::size_t>(node.fate)];
        }
        std::string text = counted(explanation_.request.size(), "node") + ":";
        const char *separator = " ";
        for (std::size_t fate = 0; fate < fate_names.size(); ++fate) {
            if (counts[fate] != 0) {
                text += separator + std::to_string(counts[fate]) + " " + fate_names[fate];
                separator = ", ";
            }
        }
        const auto lost =
            std::ranges::count_if(explanation_.adds, [](const Add &add) { return add.lost_to.has_value(); });
        text += "; " + counted(explanation_.adds.size(), "add");
        return lost == 0 ? text : text + ", " + std::to_string(lost) + " lost";
    }

    void line(const std::string &left, const std::string &right, const char *left_style, const char *right_style)
    {
        styled(left, left_style);
        if (!right.empty()) {
            const std::size_t used = width(left);
            if (used > left_width_) {
                text_ += '\n';
            }
            text_.append(left_width_ + 2 - (used > left_width_ ? 0 : used), ' ');
            styled(right, right_style);
        }
        text_ += '\n';
    }

    void styled(const std::string &text, const char *how)
    {
        if (colour_ && how != nullptr && !text.empty()) {
            text_.append(how).append(text).append(style::plain);
        } else {
            text_ += text;
        }
    }

    const Explanation &explanation_;
    bool colour_;
    std::size_t left_width_ = 16;
    std::string text_;
};

} // namespace

std::string explanation_table(const Explanation &explanation, bool colour)
{
    return Table(explanation, colour).text();
}

} // namespace ocmap
