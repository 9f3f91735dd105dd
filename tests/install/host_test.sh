#!/usr/bin/env bash
# The host in C is built with the surface's two headers alone, and sees the plug-in add what expected.txt says. The
# plug-in registers its mappings only where /pkg/yang has the model.
set -euo pipefail
host=$1 include=$2 plugin=$3
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

mkdir "$work/include"
cp "$include"/tqm_map.h "$include"/tqm_rcode.h "$work/include"
"${CC:-cc}" -std=c11 -Wall -Wextra -Wpedantic -Werror -I "$work/include" -rdynamic "$host/host.c" -ldl -o "$work/host"
"$work/host" "$plugin" | diff "$host/expected.txt" -
"$work/host" "$plugin" -v 2> "$work/log" | cmp "$host/expected.txt" -
grep -q '^TRC: TQM: ctx=.*,Start$' "$work/log"

# Each header stands alone in C, but for the logger's, which says what it needs.
for header in tqm_map.h tqm_rcode.h; do
    echo "#include <$header>" | "${CC:-cc}" -std=c11 -Wall -Wextra -Wpedantic -Werror -I "$work/include" -x c -c - -o "$work/o"
done
if echo '#include <tqm_log.h>' | "${CC:-cc}" -std=c11 -I "$include" -x c -fsyntax-only - 2> "$work/error"; then exit 1; fi
grep -q 'error.*tqm_log.h is for plug-ins in C++' "$work/error"
