// Comparisons of values, all through the bounded-string library, and the value tables made of them.
#pragma once

#include <stddef.h>

#include "tqm_map.h"

namespace oc_macsec
{

// Whether two texts are equal. `limit` is the bounded comparison's: what lies behind it counts as a difference. A null
// text equals nothing: the library would leave a result there that reads as "equal".
bool text_equals(const char *text, const char *expected, size_t limit);

struct value_pair {
    const char *from;
    const char *to;
};

// The text that the first matching row gives for `value`, or null when no row does.
template <size_t count>
const char *translate(const value_pair (&table)[count], const char *value, size_t limit)
{
    for (const value_pair &row : table) {
        if (text_equals(value, row.from, limit)) {
            return row.to;
        }
    }
    return nullptr;
}

// The number of bytes of `text` up to its terminator, at most `limit`; 0 for a null text.
size_t bounded_length(const char *text, size_t limit);

// The number that `text` begins with, in its low 32 bits and with their sign; no number counts as 0.
int number_of(const char *text);

// Copies `length` bytes of `text` and a terminator; a text that does not fit, or a null one, leaves `destination`
// empty.
void copy_text(char *destination, size_t size, const char *text, size_t length);

// Copies `length` bytes, or none where they do not fit.
void copy_bytes(void *destination, size_t size, const void *source, size_t length);

// Copies a constant mapping table record by record: both sides have the same type, so nothing is to be bounded.
template <size_t count>
void copy_rows(xpath_list_type_t (&rows)[count], const xpath_list_type_t (&table)[count])
{
    for (size_t row = 0; row < count; ++row) {
        rows[row] = table[row];
    }
}

// Sets `size` bytes to 0.
void clear_memory(void *memory, size_t size);

} // namespace oc_macsec
