// The same request in the other form: the judge of whether JSON and XML are read alike.
#pragma once

#include <string>

namespace test
{

/// `xml`, a request for openconfig-macsec in NETCONF's elements, as JSON with its operations as metadata.
std::string as_json(const std::string &xml);

} // namespace test
