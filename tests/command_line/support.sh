# For the tests of this directory. They are called with the tool and the project's root.
set -euo pipefail
ocmap=$1 root=$2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
failures=0

expect() { # what, wanted, found
    if [ "$2" != "$3" ]; then
        printf '%s:\n  wanted: %q\n  found:  %q\n' "$1" "$2" "$3"
        failures=$((failures + 1))
    fi
}

commands() {
    "$ocmap" --help | awk '/^Commands:/ { inside = 1; next } inside && NF == 0 { exit } inside { print $1 }'
}

# The long options of a command, or of the tool itself, one a line and sorted.
options_of() {
    "$ocmap" "$@" --help | grep -oE '^  (-h,)?--[a-z-]+' | grep -oE -- '--[a-z-]+' | sort
}

finish() {
    exit $((failures > 0))
}
