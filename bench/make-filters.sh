#!/bin/sh
# Prints a filter of N elements <policy> of one sort:
# all: without a match; keys: each by its key; same, differ: by one leaf, with one value or others; two: by two leaves, of
# which all policies agree with the first; names: by a leaf that all have and the leaf that repeats the key.
# Usage: make-filters.sh SORT N
awk -v sort="$1" -v count="$2" 'BEGIN {
    print "<filter><macsec xmlns=\"http://openconfig.net/yang/macsec\"><mka><policies>"
    for (i = 1; i <= count; i++) {
        priority = "<key-server-priority>" (sort == "same" ? 7 : i) "</key-server-priority>"
        if (sort == "all") inside = ""
        else if (sort == "keys") inside = "<name>P" i "</name>"
        else if (sort == "two") inside = "<config><delay-protection>true</delay-protection>" priority "</config>"
        else if (sort == "names") inside = "<config><delay-protection>true</delay-protection><name>P" i "</name></config>"
        else inside = "<config>" priority "</config>"
        print "<policy>" inside "</policy>"
    }
    print "</policies></mka></macsec></filter>"
}'
