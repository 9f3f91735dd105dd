// The elements of NETCONF around data (RFC 6241, section 7): a saved answer is taken as it was received.
#pragma once

#include "router/error.h"

#include <string>

namespace router
{

/// Takes <config>, <data> or <rpc-reply> with <data> off an XML document, of any prefix; of a document without them all
/// stays. Comments and processing instructions go; what is left stands in the lines in which it was, and what the
/// envelope declares is declared on the elements inside, unless they do so themselves. Fails for text that is no XML,
/// and for a reply without data.
Expected<void> take_off_envelope(std::string &xml);

/// The same of JSON, whose members are ietf-netconf:data and ietf-netconf:rpc-reply. Only the first keeps line numbers.
Expected<void> take_off_json_envelope(std::string &json);

} // namespace router
