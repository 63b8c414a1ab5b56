#!/bin/bash
# The simulated panel's page in a real browser, with the debug build.
root=${PANEL_COMPANION_ROOT:-$(cd "$(dirname "${BASH_SOURCE[0]}")/../.." && pwd)}
for program in chromium chromedriver; do
    if ! command -v "$program" >/dev/null; then
        echo "1..0 # SKIP $program is not installed (./test --with-optional installs it where there is a package)"
        exit 0
    fi
done
output=$root/build/test-results/page
rm -rf "$output"
exec "$root/tools/lib/isolated.sh" --tap /usr/bin/python3 "$root/tests/simulator/page_test.py" \
    --programs "${PANEL_COMPANION_PROGRAMS:-$root/build/debug/bin}" --output "$output" "$@"
