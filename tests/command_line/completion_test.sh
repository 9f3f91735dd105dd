#!/usr/bin/env bash
# The completion offers the commands and options that the tool has, the values of an option, and files that fit.
source "$(dirname "$0")/support.sh"
source "$root/tools/ocmap/ocmap.bash"
mkdir -p "$work/here/store" "$work/here/with space"
cd "$work/here"
touch a.xml b.json c.txt d.html plugin.so

# What is offered for the last of the words, sorted.
offered() {
    COMP_WORDS=(ocmap "$@") COMP_CWORD=$#
    "$(complete -p ocmap | sed 's/.*-F \([^ ]*\) .*/\1/')" ocmap "${COMP_WORDS[COMP_CWORD]}" "${COMP_WORDS[COMP_CWORD - 1]}"
    printf '%s\n' "${COMPREPLY[@]}" | sort | xargs -d '\n'
}

expect commands "$(commands | sort | xargs)" "$(offered '')"
expect "commands with g" "get get-config" "$(offered g)"
expect "the tool's options" "$(options_of | xargs)" "$(offered --)"
for command in $(commands); do
    expect "options of $command" "$(options_of "$command" | xargs)" "$(offered "$command" --)"
done

directories='store with space'
while IFS='|' read -r words wanted; do
    IFS=' ' read -ra line <<< "$words"
    expect "'$words'" "$wanted" "$(offered "${line[@]/#EMPTY/}")"
done <<END
forward EMPTY|a.xml b.json $directories
explain a.xml --kind EMPTY|edit get get-config
explain a.xml --html EMPTY|d.html $directories
reverse a.xml --kind g|get get-config
reverse --kind = get-|get-config
edit --store EMPTY|$directories
edit --store = EMPTY|$directories
edit --store =|$directories
tree --yang s|store
edit a.xml --store store --wait EMPTY|
get --store store --oper EMPTY|a.xml b.json $directories
get b|b.json
tree --plugin EMPTY|plugin.so $directories
edit --st|--store
tree EMPTY|$(offered tree --)
nonsense EMPTY|
nonsense --|
END
finish
