#!/usr/bin/env bash
# Help goes to standard output, errors in the command line to standard error with status 2, and each example of the help
# works from the project's root. A stand-in for that has nothing but the examples, so that none of them can write to it.
source "$(dirname "$0")/support.sh"
mkdir "$work/project"
ln -s "$root/examples" "$work/project/examples"
cd "$work/project"

status_of() {
    local status=0
    "$@" > "$work/out" 2> "$work/err" < /dev/null || status=$?
    echo $status
}

mkdir "$work/bin"
ln -s "$ocmap" "$work/bin/ocmap"
for command in '' $(commands); do
    expect "status of '$command --help'" 0 "$(status_of "$ocmap" $command --help)"
    expect "errors of '$command --help'" '' "$(cat "$work/err")"
    grep -q '^Exit status: ' "$work/out" || expect "'$command --help'" "exit statuses" none
    sed -n '/^Examples:/,/^$/s/^  //p' "$work/out" > "$work/examples"
    [ -s "$work/examples" ] || expect "'$command --help'" examples none
    while IFS= read -r example; do
        expect "$example" 0 "$(status_of env PATH="$work/bin:$PATH" bash -o pipefail -c "${example//\/tmp\//$work/}")"
        if [ ! -s "$work/out" ] && [[ ! $example =~ ' edit '|' > '|' --html ' ]]; then
            expect "$example" output none
        fi
    done < "$work/examples"
done
expect "what the examples leave beside themselves" examples "$(ls)"

while IFS='|' read -r arguments words; do
    expect "status of '$arguments'" 2 "$(status_of "$ocmap" $arguments)"
    expect "output of '$arguments'" '' "$(cat "$work/out")"
    expect "lines of '$arguments'" 1 "$(wc -l < "$work/err")"
    grep -qF -- "$words" "$work/err" || expect "$arguments" "$words" "$(cat "$work/err")"
done <<'END'
|a command is missing; the commands are forward, reverse, edit
foo|unknown command 'foo'; the commands are forward, reverse, edit
foo --json|unknown command 'foo'
--foo|unknown option '--foo'
forward|FILE is required; see 'ocmap forward --help'
get|--store is required; see 'ocmap get --help'
tree examples/policies/merge.xml|not expected: examples/policies/merge.xml
tree --trace|not expected: --trace
forward examples/policies/merge.xml --kind 1|--kind: must be edit, get or get-config, not '1'
edit examples/policies/merge.xml --store none --wait -1|--wait: must be a number of seconds, not '-1'
END

version=$(sed -n 's/^project(.* VERSION \([0-9.]*\) .*/\1/p' "$root/CMakeLists.txt")
expect version "ocmap $version" "$("$ocmap" --version)"
expect "kind in the help" "  --kind KIND         edit, get or get-config" \
    "$("$ocmap" forward --help | grep -o '^  --kind.*get-config')"
finish
