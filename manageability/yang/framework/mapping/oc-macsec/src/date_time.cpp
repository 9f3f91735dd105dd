#include "date_time.h"

#include <stdio.h>
#include <stdlib.h>

#include "text.h"

namespace oc_macsec
{
namespace
{

bool is_digit(char c)
{
    return c >= '0' && c <= '9';
}

bool begins_with_two_digits(const char *text)
{
    return is_digit(text[0]) && is_digit(text[1]);
}

} // namespace

const char *month_name(int month)
{
    return month >= 1 && month <= 12 ? month_names[month - 1] : "NA";
}

bool begins_with_date_time(const char *text)
{
    static constexpr size_t length = sizeof "2024-02-29T23:59:59" - 1;
    if (bounded_length(text, length) < length) {
        return false;
    }
    const bool date = begins_with_two_digits(text) && begins_with_two_digits(text + 2) && text[4] == '-' &&
                      begins_with_two_digits(text + 5) && text[7] == '-' && begins_with_two_digits(text + 8);
    return date && text[10] == 'T' && begins_with_two_digits(text + 11) && text[13] == ':' &&
           begins_with_two_digits(text + 14) && text[16] == ':' && begins_with_two_digits(text + 17);
}

date_time parse_date_time(const char *text)
{
    date_time parsed;
    (void)sscanf(text, "%04ld-%02d-%02dT%02d:%02d:%02d", &parsed.year, &parsed.month, &parsed.date, &parsed.hour,
                 &parsed.minutes, &parsed.seconds);
    return parsed;
}

void print_date_time(const date_time &when, char *line, size_t size)
{
    (void)snprintf(line, size, "%04ld-%02d-%02dT%02d:%02d:%02d", when.year, when.month, when.date, when.hour,
                   when.minutes, when.seconds);
}

bool local_date_time(time_t moment, date_time *when)
{
    const struct tm *const local = localtime(&moment);
    if (local == nullptr) {
        return false;
    }
    *when = {local->tm_year + 1900L, local->tm_mon + 1, local->tm_mday, local->tm_hour, local->tm_min, local->tm_sec};
    return true;
}

bool moment_of(const date_time &when, time_t *moment)
{
    struct tm *const record = static_cast<struct tm *>(calloc(1, sizeof(struct tm)));
    if (record == nullptr) {
        return false;
    }
    record->tm_sec = when.seconds;
    record->tm_min = when.minutes;
    record->tm_hour = when.hour;
    record->tm_mday = when.date;
    record->tm_mon = when.month - 1;
    record->tm_year = static_cast<int>(static_cast<unsigned int>(when.year) - 1900u); // a year of any size wraps
    *moment = mktime(record);
    free(record);
    return true;
}

} // namespace oc_macsec
