// The YANG module by which a router tells its clients what it does not support of openconfig-macsec.
#pragma once

#include <string>

#include "environment.h"

namespace ocmap
{

/// Text of tarvex-openconfig-macsec-deviations (RFC 7950, section 7.20.3). A client that keeps to it gets no
/// "not supported" error.
tqm::Expected<std::string> deviations(const Environment &environment);

} // namespace ocmap
