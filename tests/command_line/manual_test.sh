#!/usr/bin/env bash
# The manual has the commands and options that the tool has, in its synopsis and where each is told of.
source "$(dirname "$0")/support.sh"
manual=$root/docs/ocmap.1

section() { # the text of one section, or of all, without markup
    awk -v name="$1" '/^\.SH/ { inside = (name == "" || $0 == ".SH " name); next } inside' "$manual" |
        sed -E 's/\\-/-/g; s/\\f[A-Z]//g'
}

# The tags of the paragraphs of a section: the line behind each .TP.
tags() {
    section "$1" | awk 'tag { print; tag = 0 } /^\.TP/ { tag = 1 }'
}

expect "commands told of" "$(commands)" "$(tags COMMANDS | sed 's/^\.B //')"

told=$(tags OPTIONS | grep -oE -- '--[a-z-]+' | sort)
found=$({ options_of && for command in $(commands); do options_of "$command"; done; } | sort -u)
expect "options told of" "$found" "$told"

# A line of the synopsis begins with the tool's name; options that all commands have are not in it.
common=$(options_of deviations; printf '%s\n' --trace --journal --journal-all)
for command in $(commands); do
    line=$(section SYNOPSIS | tr '\n' ' ' | sed 's/\.br/\n/g' | grep -E "^ ?\.B ocmap $command( |$)")
    synopsis=$(grep -oE -- '--[a-z-]+' <<< "$line" | sort || true)
    expect "synopsis of $command" "$(options_of "$command" | grep -vxFe "$common" || true)" "$synopsis"
done

for name in $(section '' | grep -oE 'examples/[a-z/-]+\.(xml|json)' | sort -u); do
    [ -e "$root/$name" ] || expect "$name" "an example" "no such file"
done
for tool in mandoc groff; do
    command -v $tool > /dev/null || continue
    case $tool in
        mandoc) complaints=$(mandoc -T lint "$manual" 2>&1 || true) ;;
        groff) complaints=$(groff -man -ww -Tutf8 "$manual" 2>&1 > /dev/null || true) ;;
    esac
    expect "$tool" '' "$complaints"
done
finish
