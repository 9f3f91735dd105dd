#!/usr/bin/env bash
# What the README shows is what a newcomer sees: its commands, run from top to bottom, print what stands below them.
source "$(dirname "$0")/support.sh"
mkdir -p "$work/project/build" "$work/tmp"
ln -s "$root/examples" "$work/project/examples"
ln -s "$ocmap" "$work/project/build/ocmap"
cd "$work/project"

examples=0 command='' output=''
run() {
    if [ -n "$command" ]; then
        expect "$command" "${output%$'\n'}" "$(bash -c "${command//\/tmp\//$work/tmp/}" 2>&1)"
        examples=$((examples + 1))
        command='' output=''
    fi
}

# In a block a command's line begins with "$ "; one that has a text of its own goes up to END.
inside=0 open=0
while IFS= read -r line; do
    if [ $open = 1 ]; then
        command+=$'\n'$line
        [ "$line" != END ] || open=0
    elif [ "$line" = '```' ]; then
        run
        inside=$((1 - inside))
    elif [ $inside = 1 ] && [[ $line == '$ '* ]]; then
        run
        command=${line#\$ }
        [[ $line != *"<<'END'"* ]] || open=1
    else
        output+=$line$'\n'
    fi
    [ -n "$command" ] || output=''
done < "$root/README.md"
[ $examples -gt 5 ] || expect README examples $examples
finish
