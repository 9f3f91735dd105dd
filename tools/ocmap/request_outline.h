// The request of an explanation: its nodes as they stand before the walk, and how a node is found again.
#pragma once

#include <cstddef>
#include <map>
#include <optional>
#include <string>
#include <unordered_map>

#include "explanation.h"
#include "tqm/request.h"

namespace ocmap
{

class RequestOutline
{
public:
    /// Puts the nodes of a loaded request, and those that are not walked, into `explanation`. All three are borrowed.
    RequestOutline(const tqm::Schema &schema, tqm::Request &request, Explanation &explanation);

    /// Position in Explanation::request of the node whose tag has this address.
    std::optional<std::size_t> position_of(const char *tag) const;
    /// The node with this path, keys included. Of several the one that the walk has come to last.
    std::optional<std::size_t> position_of_path(const std::string &path, std::optional<std::size_t> last) const;

private:
    void add(const rdl_tqm_datatree &node, std::size_t depth, const std::string &outer_schema_path,
             const std::string &outer_path);
    void add_left_out(const tqm::LeftOut &left, std::size_t depth, const std::string &outer_schema_path,
                      const std::string &outer_path);

    const tqm::Schema &schema_;
    const tqm::Request &request_;
    Explanation &explanation_;
    std::unordered_map<const char *, std::size_t> by_tag_;
    std::multimap<const rdl_tqm_datatree *, const tqm::LeftOut *> left_out_; ///< equal keys stay in document order
};

} // namespace ocmap
