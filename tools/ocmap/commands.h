// The commands, from a document to what is printed. Each gives an error for main() to report; nothing is printed on
// standard output before the whole result is there.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "environment.h"
#include "tqm/framework.h"

namespace ocmap
{

/// What a command line may say. A field is for all commands, unless one is named.
struct Options {
    std::optional<std::string> file; ///< path, "-" for standard input; none reads everything
    std::string store;               ///< directory of the native datastore
    std::optional<uint32_t> wait;    ///< edit: seconds to wait for another editor; none: as long as it takes
    std::string operational;         ///< document of the router's state, empty for none
    std::optional<uint32_t> kind;    ///< TQM_REQ_*, where the document does not say it
    bool reverse = false;            ///< explain: native to OpenConfig
    std::optional<std::string> page; ///< explain: file for the HTML page, "-" for standard output; none for a table
    tqm::Format format = tqm::Format::xml;           ///< of what is printed
    tqm::Envelope envelope = tqm::Envelope::netconf; ///< of what is printed
    bool check = false;                              ///< forward: also judge an edit as a store's would be
    bool dry_run = false;                            ///< edit: say what it would do, and do nothing
    bool markdown = false;                           ///< tree: the page docs/mapping.md
    bool trace = false;                              ///< the plug-in's log lines to standard error
    bool journal = false;                            ///< the plug-in's calls of framework operations to standard error
    bool questions = false;                          ///< with them those that only ask, compare and log
    Locations locations;
};

tqm::Expected<void> forward(const Options &options);
tqm::Expected<void> reverse(const Options &options);
tqm::Expected<void> edit(const Options &options);
tqm::Expected<void> get(const Options &options);
tqm::Expected<void> get_config(const Options &options);
/// Shows also what is left of a refused request, before it gives the refusal as its error.
tqm::Expected<void> explain(const Options &options);
tqm::Expected<void> tree(const Options &options);
tqm::Expected<void> deviations(const Options &options);

} // namespace ocmap
