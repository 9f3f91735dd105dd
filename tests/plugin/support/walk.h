// One request run on the plug-in, and all that came of it in its order: the framework's journal, the plug-in's lines,
// and the fields of the request that walkers write, wherever they change. The plug-in is loaded as the tool loads it,
// and walks with the tool's schema. Nothing of the framework's own headers is seen from here.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "tqm_map.h"

namespace test
{

using Lines = std::vector<std::string>;

inline constexpr const char *oc_ns = "http://openconfig.net/yang/macsec";

enum class Direction { forward, reverse };

struct Event {
    enum class Of { state, call, line } of;
    std::string text;
};

/// One request. Settings are made first, then a document is loaded or a node is made by hand, and functions are run.
class Walk
{
public:
    Walk(uint32_t kind, Direction direction);
    ~Walk();
    Walk(Walk &&) noexcept;

    // ---- Settings
    /// Lets the `nth` call of an operation of the framework fail.
    Walk &fault(const std::string &operation, unsigned int nth, rcode code);
    /// Runs `action` at the end of the `nth` call of `operation`, in the midst of the walk.
    Walk &on_call(const std::string &operation, unsigned int nth, std::function<void()> action);
    /// The data selector that leaves configuration out, with an option set.
    Walk &without_configuration();
    /// Journals the asking operations as well.
    Walk &questions();
    /// Switches the two sinks of log lines; both are on.
    Walk &sinks(bool log, bool trace);

    // ---- The walk
    /// A whole document: <config>, <filter> or <data>. `nc` is declared for operations.
    Walk &load(const std::string &document);
    /// The root walkers, each on its tree.
    Walk &run();
    /// Any function of the plug-in: `name`, on `node`.
    Walk &run(const std::string &name, const rdl_tqm_datatree *node);
    Walk &run(tqm_map_function function, const rdl_tqm_datatree *node);

    // ---- What came of it
    rcode rc() const;
    const std::vector<Event> &events() const;
    /// Journal lines as they are; lines as "function: text", errors as "function: ERR text", a function's own name and
    /// line in a text as "function:N".
    Lines calls() const;
    Lines lines() const;
    /// The lines of one function, without its name.
    Lines lines_of(const std::string &function) const;
    /// Journal lines that begin so.
    Lines calls_of(const std::string &operation) const;
    /// Raw lines of the two sinks.
    const Lines &logged() const;
    const Lines &traced() const;
    /// The fields that walkers write, as they are now; empty if all are as at the start.
    std::string state() const;
    /// What a client is told: code, tag, path, message. "0" for a walk that went well and left none of them.
    std::string outcome() const;

    tqm_map_ctx ctx() const;
    rdl_tqm_datatree *out() const;
    rdl_tqm_datatree *tree(uint32_t index = 0) const;

private:
    struct State;
    std::unique_ptr<State> state_;
};

/// A null node or output tree is handed on as it is; container functions get the number of the node's children.
rcode call(const std::string &name, tqm_map_ctx ctx, const rdl_tqm_datatree *node, rdl_tqm_datatree *out);
/// Whether a function of the plug-in has the signature of container functions.
bool is_container_function(const std::string &name);
/// Address of an exported symbol of the plug-in.
void *symbol(const std::string &name);

/// The document as one walk of the framework prints it, or the error.
std::string printed(uint32_t kind, Direction direction, const std::string &document);

/// `inside` in the elements of `path`: tag, or tag[key=value], separated by slashes. An operation stands behind the
/// tag, as tag:delete.
std::string wrap(std::string_view path, std::string_view inside);
/// A whole document of the request's kind: `inside` the OpenConfig top element, or native trees. Of these the top
/// elements get the namespaces of their modules; $mka, $mka-if, $keychain, $ifmgr and $oper are such namespaces.
std::string document(uint32_t kind, Direction direction, std::string_view inside);

/// Code as it is named in tqm_rcode.h, without TQM_ERR_, or as a number.
std::string code_name(rcode code);

} // namespace test
