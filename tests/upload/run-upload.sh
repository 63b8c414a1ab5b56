#!/bin/bash
# Files on their way to a panel, with the debug build. An argument is a regular expression for names of scenarios.
root=${PANEL_COMPANION_ROOT:-$(cd "$(dirname "${BASH_SOURCE[0]}")/../.." && pwd)}
output=$root/build/test-results/upload
rm -rf "$output"
exec "$root/tools/lib/isolated.sh" --tap /usr/bin/python3 "$root/tests/upload/scenarios.py" \
    --programs "${PANEL_COMPANION_PROGRAMS:-$root/build/debug/bin}" --output "$output" "$@"
