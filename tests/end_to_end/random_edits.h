// Edits for the property test: made at random, printed, and made smaller where one shows a fault.
#pragma once

#include <functional>
#include <random>
#include <string>
#include <vector>

#include "rfc6241_model.h"

namespace test
{

class RandomEdits
{
public:
    explicit RandomEdits(unsigned int seed) : random_(seed) {}

    /// The next edit of a server that holds `tree`: mostly one that is done, or refused for one reason.
    Edit next(const Leaves &tree);

private:
    /// Where an element stands: what was there before, whether it must be named to be made, and in which order.
    struct Place {
        std::string path;
        const Leaves &tree;
        bool none;
        bool grouped;
    };
    Edit edit(const Leaves &tree);
    Element element(const Schema &schema, const std::string &value, const Place &parent);
    std::vector<Element> children(const Element &parent, const Place &place);
    std::optional<Operation> operation(Kind kind, const Place &place);
    bool one_in(std::size_t count) { return below(count) == 0; }
    std::size_t below(std::size_t count) { return std::uniform_int_distribution<std::size_t>(0, count - 1)(random_); }

    std::mt19937 random_;
};

/// The edit as a NETCONF document.
std::string to_xml(const Edit &edit);

/// The smallest sequence that is found by taking edits, elements and operations out of one that `fails`, as long as it
/// still does.
std::vector<Edit> shrunk(std::vector<Edit> edits, const std::function<bool(const std::vector<Edit> &)> &fails);

} // namespace test
