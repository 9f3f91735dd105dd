// Dates and times: the parts in which the native models hold them, and the text in which OpenConfig does.
#pragma once

#include <stddef.h>
#include <time.h>

namespace oc_macsec
{

struct date_time {
    long year = 0;
    int month = 0;
    int date = 0;
    int hour = 0;
    int minutes = 0;
    int seconds = 0;
};

// The months as the native models write them, January first.
constexpr const char *month_names[] = {"jan", "feb", "mar", "apr", "may", "jun",
                                       "jul", "aug", "sep", "oct", "nov", "dec"};

// The name of a month from 1 to 12, "NA" of any other.
const char *month_name(int month);

// Whether the text (null: no) begins with a date and time in digits, as 2024-02-29T23:59:59. What stands behind the
// seconds, a fraction or a zone, is not looked at, nor are the ranges.
bool begins_with_date_time(const char *text);

// The date and time at the beginning of a text that begins with one.
date_time parse_date_time(const char *text);

// Writes that text; `size` is that of `line`.
void print_date_time(const date_time &when, char *line, size_t size);

// A moment in the process's local time zone; false when it lies beyond all calendars.
bool local_date_time(time_t moment, date_time *when);

// The moment that this date and time is in the local time zone, with daylight saving time off. Parts beyond their range
// carry over. False without memory.
bool moment_of(const date_time &when, time_t *moment);

} // namespace oc_macsec
