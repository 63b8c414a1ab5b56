#!/bin/bash
# Sessions across two hosts, with the debug build. An argument is a regular expression for names of scenarios.
#
# Each scenario has hosts and a desktop of its own: a Qt 6.4 program that starts after another one on the same
# accessibility bus is now and then missing from its tree, although its window is there.
set -uo pipefail
root=${PANEL_COMPANION_ROOT:-$(cd "$(dirname "${BASH_SOURCE[0]}")/../.." && pwd)}
output=$root/build/test-results/lab
scenarios=$root/tests/lab/scenarios.py

play() { # SCENARIO
    "$root/tools/lib/isolated.sh" /usr/bin/python3 "$scenarios" \
        --programs "${PANEL_COMPANION_PROGRAMS:-$root/build/debug/bin}" --output "$output/$1" "$1" ||
        printf 'ended %s %d\n' "$1" $?
}

# What is worked through the accessibility bus gets a second and a third try, and it is told which one counted: the bus
# itself gives up on a busy computer.
play_all() {
    local name lines attempt
    for name in $(/usr/bin/python3 "$scenarios" --names "${1-}"); do
        for attempt in 1 2 3; do
            lines=$(play "$name")
            grep -qE '^(not ok|ended)' <<<"$lines" || break
            ((attempt == 3)) || printf '# %s\n' "${lines//$'\n'/$'\n# '}"
        done
        printf '%s\n' "$lines"
        ((attempt == 1)) || printf '# attempt %d\n' "$attempt"
    done
}

# One numbering for all; what is said of the computer is said once.
number_once() {
    awk '
        /^1\.\./ { next }
        /^ended / { if ($3 != 1) printf "not ok %d - %s ended with status %d\n", ++count, $2, $3; next }
        /^(not )?ok / {
            if (/# SKIP/ && $0 in said) next
            said[$0]
            sub(/ok [0-9]+/, "ok " ++count)
        }
        { print; fflush() }
        END { print "1.." count }'
}

rm -rf "$output"
play_all "$@" | number_once
