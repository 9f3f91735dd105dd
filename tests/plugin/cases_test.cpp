// The cases: requests with all that must come of them, as texts in cases/.
#include "support/case_file.h"

namespace
{

[[maybe_unused]] const bool registered = test::register_cases(CASES);

} // namespace
