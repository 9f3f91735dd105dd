// What an operation of the router answers when it cannot do what it was asked. Errors are values; nothing here throws.
#ifndef ROUTER_ERROR_H
#define ROUTER_ERROR_H

#include <string>
#include <tl/expected.hpp>

namespace router
{

struct Error {
    // One line for the user: the place, the value (never a secret one) and the rule. Errors of an edit begin with their
    // NETCONF error-tag where there is one: "data-missing: ...", "data-exists: ...", "invalid-value: ...".
    std::string text;
    // The instance in question as an absolute path without prefixes, e.g.
    // "/macsec/policy-names/policy-name[name='P1']/key-server-priority". Empty where no one node is to blame.
    std::string path;
    // What the text alone would not tell a program.
    enum class Kind { refused, in_use } kind = Kind::refused;
};

template <typename T>
using Expected = tl::expected<T, Error>;

} // namespace router

#endif
