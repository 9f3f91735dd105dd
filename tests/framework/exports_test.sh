#!/usr/bin/env bash
# The built libtqm.so exports the operations of tqm_map.h (listed in a file) and C++ names in namespace tqm,
# and nothing else. Its public headers compile alone, and show nothing of what is inside.
set -euo pipefail
library=$1 operations=$2 headers=$3 surface=$4 compiler=$5
export LC_ALL=C

exported=$(nm -D --defined-only "$library" | awk '{ print $3 }' | sort)
if ! diff <(sort "$operations") <(grep -v '^_Z' <<<"$exported"); then
    echo "the exported operations differ from those of tqm_map.h (< listed, > library)"
    exit 1
fi
cxx_names=$(grep '^_Z' <<<"$exported" | c++filt)
if ! grep -q '^tqm::Framework::edit(' <<<"$cxx_names"; then
    echo "the library does not export its interface"
    exit 1
fi
if grep -vE '^((typeinfo|typeinfo name|vtable) for )?tqm::' <<<"$cxx_names"; then
    echo "these exported names are not in namespace tqm"
    exit 1
fi

for header in "$headers"/tqm/*.h; do
    "$compiler" -std=c++20 -fsyntax-only -Wall -Wextra -Werror -x c++ -I "$headers" -I "$surface" \
        -include "$header" /dev/null
done
if grep -nE 'OutputRecord|PathInfo' "$headers"/tqm/*.h; then
    echo "the public headers show what is inside"
    exit 1
fi
