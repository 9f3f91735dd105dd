#!/usr/bin/env bash
# Measures the forward mapping of a large edit against a stylesheet that makes the same native tree, how time and memory
# grow, what many filters cost, and the walkers alone.
set -euo pipefail
cd "$(dirname "$0")/.."
ocmap=build/ocmap
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

for count in 10000 100000; do
    bench/make-policies.sh $count > "$work/$count.xml"
    awk -v count=$count 'BEGIN {
        print "<filter><macsec xmlns=\"http://openconfig.net/yang/macsec\"><mka><policies>"
        for (i = 1; i <= count; i++) print "<policy><name>P" i "</name></policy>"
        print "</policies></mka></macsec></filter>"
    }' > "$work/$count-names.xml"
done
# Prints what one run of a command took, the best of five: wall-clock seconds and peak memory.
measure() {
    local label=$1 best=
    shift
    for _ in 1 2 3 4 5; do
        /usr/bin/time -f '%e %M' -o "$work/time" "$@" > /dev/null
        if [ -z "$best" ] || awk -v new="$(cut -d' ' -f1 "$work/time")" -v old="${best%% *}" 'BEGIN { exit !(new < old) }'; then
            best=$(cat "$work/time")
        fi
    done
    printf '%-44s %6s s %6d MB\n' "$label" "${best%% *}" $((${best##* } / 1024))
}

echo "$(du -m "$work/100000.xml" | cut -f1) MB, 100,000 policies with seven leaves:"
measure "xsltproc bench/policies.xsl" xsltproc bench/policies.xsl "$work/100000.xml"
measure "ocmap forward" $ocmap forward "$work/100000.xml"
measure "ocmap forward, 10,000 policies" $ocmap forward "$work/10000.xml"
for count in 10000 100000; do
    measure "ocmap edit, $count policies" bash -c "rm -rf $work/store && $ocmap edit $work/$count.xml --store $work/store"
    measure "ocmap get-config, $count policies" $ocmap get-config --store "$work/store"
    measure "ocmap get-config, each by its name" $ocmap get-config "$work/$count-names.xml" --store "$work/store"
done
echo
bench/filters.sh
echo
build/bench/walk_bench
