#!/usr/bin/env bash
# Applies the policy examples one after another to a fresh store, and then a key's rotation, and shows for each the
# request, the native tree that it becomes, and what a read then returns.
set -euo pipefail
cd "$(dirname "$0")/.."
ocmap=build/ocmap
store=$(mktemp -d)
trap 'rm -rf "$store"' EXIT

bold=; plain=
if [ -t 1 ] && [ -z "${NO_COLOR:-}" ]; then bold=$(tput bold); plain=$(tput sgr0); fi

# The OpenConfig part of a request, without its wrapping.
request() { sed -n '/<macsec /,/<\/macsec>/p' "$1" | sed 's/^      //'; }
comment() { sed -n 's/^<!-- \(.*\) -->$/\1/p' "$1"; }

edit() {
    local example=examples/$1
    echo "${bold}==== $example${plain}"
    comment "$example"
    echo; echo "${bold}-- OpenConfig request${plain}"; request "$example"
    echo "${bold}-- becomes, in the router's model${plain}"; "$ocmap" forward "$example"
    "$ocmap" edit "$example" --store "$store"
    echo "${bold}-- and a read returns${plain}"; "$ocmap" get-config --store "$store"
    echo
}

read_back() {
    local example=examples/$1
    echo "${bold}==== $example${plain}"
    comment "$example"
    "$ocmap" get-config "$example" --store "$store"
    echo
}

edit policies/create.xml
edit policies/merge.xml
read_back policies/get-leaf.xml
read_back policies/get-by-content.xml
edit policies/replace.xml
edit policies/delete.xml
edit key-chains/create.xml
edit key-chains/rotate.xml
