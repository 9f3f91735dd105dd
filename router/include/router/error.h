// What an operation of the router answers when it cannot do what it was asked. Errors are values; nothing here throws.
#pragma once

#include <string>
#include <tl/expected.hpp>

namespace router
{

/// What kind of refusal it is. Whoever speaks a protocol has its names for them.
enum class Fault {
    failed,
    unknown_node,
    not_supported,
    bad_value,
    missing_key,
    exists,
    missing,
    denied,
    busy,
    no_memory
};

struct Error {
    /// One line for the user: the value (never a secret one) and the rule.
    std::string text;
    /// The instance in question as an absolute path without prefixes, e.g.
    /// "/macsec/policy-names/policy-name[name='P1']/key-server-priority". Empty where no one node is to blame.
    std::string path = {};
    Fault fault = Fault::failed;
    /// Of an edit: EditNode::origin of the node that is to blame; null if it is not known.
    const void *origin = nullptr;
};

template <typename T>
using Expected = tl::expected<T, Error>;

} // namespace router
