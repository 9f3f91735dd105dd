#!/usr/bin/env bash
# The series of examples runs to its end on every terminal, and prints in bold only where there is bold.
source "$(dirname "$0")/support.sh"
mkdir -p "$work/project/build"
ln -s "$root/examples" "$work/project/examples"
ln -s "$ocmap" "$work/project/build/ocmap"

last="A read of everything, with this as the router's state, in three columns:"
while IFS='|' read -r setting bold; do
    status=0
    script -qec "env $setting '$work/project/examples/run.sh'" /dev/null < /dev/null > "$work/out" || status=$?
    expect "status with '$setting'" 0 $status
    expect "last part with '$setting'" 1 "$(grep -cF "$last" "$work/out")"
    expect "bold with '$setting'" "$bold" "$(grep -q $'\e\\[1m' "$work/out" && echo yes || echo no)"
done <<'END'
-u TERM|no
TERM=|no
TERM=dumb|no
TERM=nonsense|no
-u NO_COLOR TERM=xterm|yes
TERM=xterm NO_COLOR=1|no
END
finish
