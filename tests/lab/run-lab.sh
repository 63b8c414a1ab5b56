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
    "$root/tools/lib/isolated.sh" --tap /usr/bin/python3 "$scenarios" \
        --programs "${PANEL_COMPANION_PROGRAMS:-$root/build/debug/bin}" --output "$output/$1" "$1" ||
        printf 'ended %s %d\n' "$1" $?
}

# What is worked through the accessibility bus gets a second try, since the bus itself gives up on a busy computer. It is
# told which scenario needed it, and why.
play_all() {
    local name lines first
    for name in $(/usr/bin/python3 "$scenarios" --names "${1-}"); do
        lines=$(play "$name")
        if has_failed <<<"$lines"; then
            first=$lines
            printf '%s\n' "$first" >"$output/$name-first.tap"
            lines=$(play "$name")
            has_failed <<<"$lines" || lines=$(told_of_first_try "$first" <<<"$lines")
        fi
        printf '%s\n' "$lines"
    done
}

has_failed() {
    grep -qE '^(not ok|ended)'
}

# Standard input, with why the first try has failed behind each test that has passed.
told_of_first_try() { # LINES-OF-FIRST-TRY
    local why
    why=$(grep -m 1 -A 1 -E '^(not ok|ended)' <<<"$1" | tail -n 1)
    why=${why#\# } awk '{ print } /^ok / && !/# SKIP/ { print "# passed at the second try: " ENVIRON["why"] }'
}

# One numbering for all; what is said of the computer is said once.
number_once() {
    awk '
        /^1\.\.0 # SKIP/ { skipped = $0 }
        /^1\.\./ { next }
        /^ended / { if ($3 != 1) printf "not ok %d - %s ended with status %d\n", ++count, $2, $3; next }
        /^(not )?ok / {
            if (/# SKIP/ && $0 in said) next
            said[$0]
            sub(/ok [0-9]+/, "ok " ++count)
        }
        { print; fflush() }
        END { print count || skipped == "" ? "1.." count + 0 : skipped }'
}

rm -rf "$output"
play_all "$@" | number_once
