#!/bin/bash
# The whole program on a virtual desktop, worked with a real pointer and a real keyboard. Tells the results in the Test
# Anything Protocol. Arguments are names of scenarios; none means all.
root=${PANEL_COMPANION_ROOT:-$(cd "$(dirname "${BASH_SOURCE[0]}")/../.." && pwd)}
rm -rf "$root/build/test-results/screens"
exec "$root/tools/lib/isolated.sh" --tap /usr/bin/python3 "$root/tests/screens/screens.py" \
    --programs "${PANEL_COMPANION_PROGRAMS:-$root/build/debug/bin}" --output "$root/build/test-results/screens" "$@"
