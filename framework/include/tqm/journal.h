// A record of the framework's operations as a plug-in calls them, and faults put into them. Tests and the tool's users
// watch a plug-in through these.
//
// A line is written when its operation returns:
//
//   tqm_map_search_list("/macsec/mka/policies/policy", key="P1", key_leaf="name", ns=macsec) = 0
//
// A text is in quotes, an absent one is null; a namespace is shown by its last component; a source node
// by its tag and operation; a node by its tag. Values that the schema hides are shown as ***. Results
// are decimal 0 or 0x and eight digits.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "tqm/export.h"

extern "C" {
#include "tqm_rcode.h"
}

namespace tqm
{

/// Written to on the thread of the request that it watches; requests side by side want one each, or a sink that copes.
class TQM_EXPORT Journal
{
public:
    /// `sink` gets each line, without a line end. With `questions` the operations that only ask, compare and log are
    /// written as well (tqm_map_do_these_match, tqm_map_is_request_delete, tqm_debug_should_log, rcode_strerror, the
    /// log writers): they are the bulk of all calls.
    explicit Journal(std::function<void(std::string_view line)> sink, bool questions = false)
        : sink_(std::move(sink)), questions_(questions)
    {
    }
    bool questions() const { return questions_; }
    void write(std::string_view line) const { sink_(line); }

private:
    std::function<void(std::string_view)> sink_;
    bool questions_;
};

/// Counts the calls of the requests that it is given to, which are one thread's.
class TQM_EXPORT Faults
{
public:
    /// Lets the `nth` call (from 1) of `operation` answer `code` without doing anything. Of tqm_strdup the answer is
    /// null. Operations that answer yes or no and those without a result have no faults.
    void fail(std::string operation, unsigned int nth, rcode code);
    /// Counts a call. Gives 0, or the code that this call is to answer.
    rcode on_call(std::string_view operation);

private:
    struct Fault {
        std::string operation;
        unsigned int countdown;
        rcode code;
    };
    std::vector<Fault> faults_;
};

} // namespace tqm
