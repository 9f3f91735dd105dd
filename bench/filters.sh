#!/usr/bin/env bash
# Counts the instructions of reads with N filters (default 1000) on M policies (default 10000), beside those of the same
# read with one such filter: what a filter costs, and what a pair of filter and policy.
set -euo pipefail
cd "$(dirname "$0")/.."
filters=${1:-1000}
policies=${2:-10000}
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

bench/make-policies.sh "$policies" > "$work/policies.xml"
build/ocmap edit "$work/policies.xml" --store "$work/store"

instructions() {
    bench/make-filters.sh "$1" "$2" > "$work/filter.xml"
    valgrind --tool=cachegrind --cache-sim=no --cachegrind-out-file=/dev/null \
        build/ocmap get-config "$work/filter.xml" --store "$work/store" 2>&1 >/dev/null |
        sed -n 's/.*I *refs: *//p' | tr -d ,
}

echo "$filters filters on $policies policies, in millions of instructions:"
printf '%-8s %12s %12s %18s %16s\n' filters 'one filter' "$filters" 'each more' 'a pair'
for sort in all keys same differ two names; do
    one=$(instructions $sort 1)
    many=$(instructions $sort "$filters")
    awk -v sort=$sort -v one="$one" -v many="$many" -v n="$filters" -v m="$policies" 'BEGIN {
        more = (many - one) / (n - 1)
        printf "%-8s %12.1f %12.1f %18.6f %16.1f\n", sort, one / 1e6, many / 1e6, more / 1e6, more / m
    }'
done
