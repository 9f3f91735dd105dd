// The one place where values meet the bounded-string library. Its calls are macros that look at the size of the object
// where the compiler can see it, so they stand behind functions that get no more than a pointer.
#include "text.h"

#include <safe_mem_lib.h>
#include <safe_str_lib.h>
#include <stdlib.h>

namespace oc_macsec
{

__attribute__((noinline)) bool text_equals(const char *text, const char *expected, size_t limit)
{
    if (text == nullptr || expected == nullptr) {
        return false;
    }
    int difference = 0;
    const errno_t error = strcmp_s(text, limit, expected, &difference);
    return error == EOK && difference == 0;
}

__attribute__((noinline)) size_t bounded_length(const char *text, size_t limit)
{
    return text == nullptr ? 0 : strnlen_s(text, limit);
}

int number_of(const char *text)
{
    return static_cast<int>(static_cast<unsigned int>(strtol(text, nullptr, 10)));
}

__attribute__((noinline)) void copy_text(char *destination, size_t size, const char *text, size_t length)
{
    destination[0] = '\0';
    if (text != nullptr) {
        (void)strncpy_s(destination, size, text, length);
    }
}

__attribute__((noinline)) void copy_bytes(void *destination, size_t size, const void *source, size_t length)
{
    if (source != nullptr && length != 0) {
        (void)memcpy_s(destination, size, source, length);
    }
}

__attribute__((noinline)) void clear_memory(void *memory, size_t size)
{
    (void)memset_s(memory, size, 0, size);
}

} // namespace oc_macsec
