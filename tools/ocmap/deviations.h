// The YANG module by which a router tells its clients where it differs from openconfig-macsec.
#pragma once

#include <string>

#include "environment.h"

namespace ocmap
{

/// Text of tarvex-openconfig-macsec-deviations (RFC 7950, section 7.20.3), as yang/ has it. A client that keeps to it
/// gets no "not supported" error, and every answer of the router is valid against the published model with it.
tqm::Expected<std::string> deviations(const Environment &environment);

} // namespace ocmap
