// The end of a process that has no memory left. Most of its ways out are std::bad_alloc; some libraries end the process
// instead, or follow a pointer that they could not get.
#pragma once

namespace ocmap
{

/// From now on a process that memory has run out in ends with exit status 1 and `text` on standard error, also where a
/// library would have it aborted or crashed. Other crashes stay what they are. `text` must live as long as the process.
void tell_want_of_memory(const char *text);

} // namespace ocmap
