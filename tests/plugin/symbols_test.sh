#!/usr/bin/env bash
# The built plug-in exports exactly the names in exported_symbols.txt, and leaves undefined nothing but the framework's
# operations (operations.txt), the bounded-string library and libc.
set -euo pipefail
library=$1 lists=$2
export LC_ALL=C

exported=$(nm -D --defined-only "$library" | awk '{ print $3 }' | sort)
if ! diff <(sort "$lists/exported_symbols.txt") <(echo "$exported"); then
    echo "the exported symbols differ from the list (< list, > library)"
    exit 1
fi

undefined=$(nm -D --undefined-only "$library" | awk '$1 == "U" { print $2 }' | grep -v '@GLIBC_' | sort)
safec='^_(memcpy|memset|strcmp|strncpy|strnlen)_s_chk$'
strangers=$(echo "$undefined" | grep -vE "$safec" | comm -23 - <(sort "$lists/operations.txt"))
if [ -n "$strangers" ]; then
    echo "undefined symbols that no framework has to bring: $strangers"
    exit 1
fi
if readelf -d "$library" | grep NEEDED | grep -vE 'libsafec|libc\.so'; then
    echo "the library needs more than libc and libsafec"
    exit 1
fi
