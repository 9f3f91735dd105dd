// What a walk made of a request, node by node: plain records that the terminal table and the HTML page are made of.
// Whoever fills them has masked the secrets, so that neither can show one.
#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "tqm/error.h"

namespace ocmap
{

/// What became of a node of the request.
enum class Fate {
    mapped,      ///< it added something to the result
    passed,      ///< walked, and nothing of its own is added: it leads to other nodes, or says nothing
    dropped,     ///< passed over: no mapping takes it, or everything that it added was lost to others
    refused,     ///< the walk ended here, with the explanation's refusal
    not_reached, ///< the walk ended before it
};

inline constexpr std::array fate_names = {"mapped", "passed", "dropped", "refused", "not reached"};

/// A node of the request, in document order; of a reverse request a native one.
struct RequestNode {
    std::size_t depth = 0; ///< 0 for a top element
    std::string tag;
    std::string path;                 ///< with keys, as "/macsec/mka/policies/policy[name='P1']/config"
    std::optional<std::string> value; ///< "***" for what may be a secret; none for a node without a value
    std::string operation;            ///< its own edit operation, "merge" and so on; empty if it has none
    Fate fate = Fate::not_reached;
    std::string reason;               ///< one sentence for what does not explain itself: why it was dropped or refused
    std::vector<std::string> mappers; ///< the plug-in's functions that ran for it, in order
    std::vector<std::size_t> adds;    ///< positions in Explanation::adds, in order
};

/// One call by which a mapper added a node to the result.
struct Add {
    std::size_t node = 0; ///< position in Explanation::request of the node that was walked
    std::string mapper;   ///< the function that made the call
    std::string path;     ///< as the mapper gave it: without keys
    std::optional<std::string> value;
    std::string operation;                ///< empty in a read
    std::optional<std::size_t> result;    ///< position in Explanation::results; none if it is not in the result
    std::optional<std::size_t> lost_to;   ///< a later add to the same result node, whose value and operation stand
    std::vector<std::size_t> wins_over;   ///< the earlier adds that lost to this one
    std::optional<std::string> not_taken; ///< why the framework did not take the add
};

/// How the add at a position of Explanation::adds is called.
inline std::string add_number(std::size_t position)
{
    return "#" + std::to_string(position + 1);
}

/// A node of the result, in document order; of a reverse request an OpenConfig one.
struct ResultNode {
    std::size_t depth = 0;
    std::string tag;
    std::string path; ///< with keys
    std::string ns;
    std::optional<std::string> value;
    std::string operation;         ///< what the native edit says at it; empty if nothing, and in a read
    std::vector<std::size_t> adds; ///< positions in Explanation::adds; none for nodes made on the way to others
};

/// The text of an error that is shown at its place, or beside it: without the path that it begins with.
inline std::string text_at_place(const tqm::Error &error)
{
    const std::string place = error.path + ": ";
    return error.text.starts_with(place) ? error.text.substr(place.size()) : error.text;
}

struct Explanation {
    bool reverse = false;             ///< native to OpenConfig
    std::string kind;                 ///< "edit", "get" or "get-config"
    std::vector<RequestNode> request; ///< in document order: a node's children follow it, one deeper
    std::vector<Add> adds;            ///< in the order of the calls
    std::vector<ResultNode> results;  ///< in document order
    std::optional<tqm::Error> refusal;
};

} // namespace ocmap
