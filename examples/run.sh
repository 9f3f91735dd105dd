#!/usr/bin/env bash
# Applies the policy examples one after another to a fresh store, then a key's rotation. For each edit it shows side by
# side the OpenConfig request, the native tree that it becomes, and what a read then returns, all in outline;
# `ocmap forward FILE` and `ocmap get-config --store DIR` print the documents themselves.
set -euo pipefail
cd "$(dirname "$0")/.."
ocmap=build/ocmap
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
store=$work/store

bold='' plain=''
if [ -t 1 ] && [ -z "${NO_COLOR:-}" ]; then
    # A terminal may have no bold, or be none that anybody knows.
    { bold=$(tput bold) && plain=$(tput sgr0); } 2> /dev/null || bold='' plain=''
fi

# XML in outline: a line a node, its value behind it and its operation in parentheses. $1 is the element to begin in.
outline() {
    sed -n "/<$1[ >]/,/<\/$1>/p" | sed -E '
        1d; s/ xmlns="[^"]*"//; /^ *<\//d
        s/<([a-z0-9-]+)( nc:operation="([a-z]+)")?\/?>/<\1> (\3)/
        s/<([a-z0-9-]+)> (\([a-z]*\))([^<]*)<.*/\1 \3 \2/
        s/<([a-z0-9-]+)>/\1/; s/ *\(\)//' | awk '
        NR == 1 { match($0, /^ */); indent = RLENGTH }
        { print substr($0, indent + 1) }'
}

heading() {
    local comment
    comment=$(sed -n '1,/-->/p' "examples/$1" | tr -s ' \n' ' ' | sed -n 's/^<!-- \(.*\) -->.*/\1/p')
    echo "${bold}---- examples/$1: $comment${plain}"
}

edit() {
    local example=$1 request=$2 native=$3
    heading "$example"
    { echo "request:"; outline "$request" < "examples/$example"; } > "$work/request"
    { echo "in the router's model:"; "$ocmap" forward "examples/$example" | outline "$native"; } > "$work/native"
    "$ocmap" edit "examples/$example" --store "$store"
    { echo "a read returns:"; "$ocmap" get-config --store "$store" | outline "$request"; } > "$work/read"
    pr -m -t -w 132 "$work/request" "$work/native" "$work/read" | expand | sed 's/ *$//'
}

read_back() {
    heading "$1"
    "$ocmap" get-config "examples/$1" --store "$store" | outline policies
}

edit policies/create.xml policies policy-names
edit policies/merge.xml policies policy-names
read_back policies/get-leaf.xml
read_back policies/get-by-content.xml
edit policies/replace.xml policies policy-names
edit policies/delete.xml policies policy-names
edit key-chains/create.xml key-chains keychains
edit key-chains/rotate.xml key-chains keychains
edit interfaces/attach.xml interfaces interface-configurations

heading state/busy-router.xml
echo "A read of everything, with this as the router's state, in three columns:"
"$ocmap" get --store "$store" --oper examples/state/busy-router.xml | outline macsec > "$work/all"
pr -3 -t -w 132 -l $((($(wc -l < "$work/all") + 2) / 3)) "$work/all" | expand | sed 's/ *$//'
