#!/bin/bash
# The tour of ./run, played with the debug build.
root=${PANEL_COMPANION_ROOT:-$(cd "$(dirname "${BASH_SOURCE[0]}")/../.." && pwd)}
rm -rf "$root/build/test-results/tour"
exec "$root/tools/lib/isolated.sh" --tap /usr/bin/python3 "$root/tools/tour/tour.py" --tap \
    --programs "${PANEL_COMPANION_PROGRAMS:-$root/build/debug/bin}" --output "$root/build/test-results/tour"
