#!/bin/bash
# Sessions across two hosts, with the debug build. An argument is a regular expression for names of scenarios.
root=${PANEL_COMPANION_ROOT:-$(cd "$(dirname "${BASH_SOURCE[0]}")/../.." && pwd)}
output=$root/build/test-results/lab
rm -rf "$output"
exec "$root/tools/lib/isolated.sh" /usr/bin/python3 "$root/tests/lab/scenarios.py" \
    --programs "${PANEL_COMPANION_PROGRAMS:-$root/build/debug/bin}" --output "$output" "$@"
