// What the plug-in's tests are made of: a request given as XML, one function of the plug-in run on it, and all that
// came of it - the framework's journal, the log lines, the built tree, and what is left for the client.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "tqm/journal.h"
#include "tqm/request.h"

// Functions of the plug-in that tests call; all others are reached through these.
extern "C" {
rcode ymap_ot_oc_macsec_openconfigmacsec_lvla_macsec(tqm_map_ctx, const rdl_tqm_datatree *, rdl_tqm_datatree *);
rcode ymap_to_oc_macsec_tarvexcryptomacsecmkacfg_lvla_macsec(tqm_map_ctx, const rdl_tqm_datatree *, rdl_tqm_datatree *);
}

namespace test
{

using Lines = std::vector<std::string>;

inline constexpr const char *oc_ns = "http://openconfig.net/yang/macsec";
inline constexpr const char *mka_ns = "http://tarvex.example/ns/yang/Tarvex-crypto-macsec-mka-cfg";

/// The lists and leaf-lists of all six models.
const tqm::Schema &schema();
const std::vector<tqm_map_reg_info> &registrations();

struct Fault {
    const char *operation;
    unsigned int nth;
    rcode code;
};

/// One request. Settings are made first, then the document is loaded and a function is run. Copies are the same walk.
class Walk
{
    struct State;
    std::shared_ptr<State> state_;

public:
    Walk(uint32_t kind, tqm::Direction direction);

    Walk &fault(const Fault &fault);
    Walk &trace();                 // trace-buffer lines
    Walk &log();                   // framework log lines
    Walk &questions();             // journal the asking operations as well
    Walk &without_configuration(); // the data selector that leaves configuration out, with an option set

    /// Loads the children of `macsec` (forward) or native top elements (reverse), and runs the root walker.
    Walk &forward(std::string_view inside_macsec);
    Walk &reverse(std::string_view native, tqm_map_function root);
    /// Runs any function on `node`.
    Walk &run(tqm_map_function function, const rdl_tqm_datatree *node);

    /// The request, made on the first call.
    tqm::Request &request();

    rcode &rc;
    Lines &calls;  // journal
    Lines &traces; // trace buffer
    Lines &logs;   // framework log

    /// The adds of the journal, as path=value[ from source][ entry][ -> failure].
    Lines adds() const;
    /// The journal's lines of one operation, without its name.
    Lines lines_of(std::string_view operation) const;
    /// "function: text" of each trace line, and the texts of one function alone.
    Lines texts() const;
    Lines texts_of(const std::string &function) const;

    std::string tag();
    std::string message();
    std::string error_path();
    /// Leaves and list entries of the built tree, each as path[=value][:operation], merge left out.
    Lines built();
};

inline Walk edit()
{
    return {TQM_REQ_EDIT, tqm::Direction::forward};
}
inline Walk get()
{
    return {TQM_REQ_GET, tqm::Direction::forward};
}
inline Walk get_config()
{
    return {TQM_REQ_GET_CONFIG, tqm::Direction::forward};
}
inline Walk answer(uint32_t kind = TQM_REQ_GET)
{
    return {kind, tqm::Direction::reverse};
}

/// `inside` as the configuration of policy P1.
std::string policy(std::string_view inside, std::string_view operation = "", std::string_view name = "P1");
/// `inside` as the content of one native policy entry in a whole native document.
std::string native_policies(std::string_view inside);

} // namespace test
