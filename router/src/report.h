// Texts of errors: where a node is, what its type allows, and what libyang had to say. What a secret leaf holds, and
// text of a document that may hold one, never gets into them.
#pragma once

#include "router/error.h"

#include <libyang/libyang.h>

#include <string>

namespace router
{

/// Absolute instance path without prefixes, keys as predicates; "" for null.
std::string path_of(const lyd_node *node);

/// `origin` is that of the node of an edit that is to blame.
tl::unexpected<Error> refuse(Fault fault, std::string path, std::string reason, const void *origin = nullptr);

/// Where no one node is to blame.
tl::unexpected<Error> failure(std::string reason);

/// Whether the model marks the node as a secret: a leaf that holds key text.
bool is_secret(const lysc_node *node);

/// Why the leaf does not take the value: the value, unless it is secret, and the rule of the leaf's type.
std::string value_refused(const lysc_node *leaf, const char *value);

/// What libyang found wrong with a document, as a sentence with its place. The document's own text is not in it where
/// that may be part of a key.
std::string document_fault(const ly_ctx *context);

} // namespace router
