#!/bin/bash
# The shell libraries that ./run and ./test are made of, against programs that only pretend. Tells its results in the Test
# Anything Protocol.
set -uo pipefail
project_root=${PANEL_COMPANION_ROOT:-$(cd "$(dirname "${BASH_SOURCE[0]}")/../.." && pwd)}
here=$project_root/tests/tools
output=$project_root/build/test-results/tools
export PATH=$PATH:/usr/sbin:/sbin
rm -rf "$output" && mkdir -p "$output" || exit 2
count=0

# A test is a function in tests/tools/*.bash whose name begins with "test_"; each gets a process and an empty folder of its
# own. What it prints beside its name is why it failed.
play() { # FILE TEST
    # shellcheck source=/dev/null
    cd "$output/$2" && . "$here/support.sh" && . "$1" && "$2" 2>&1
}

for file in "$here"/*.bash; do
    while read -r name; do
        mkdir -p "$output/$name"
        title=${name#test_}
        if complaint=$(play "$file" "$name") && [[ -z $complaint ]]; then
            printf 'ok %d - %s\n' $((++count)) "${title//_/ }"
        else
            printf 'not ok %d - %s\n# %s\n' $((++count)) "${title//_/ }" "${complaint//$'\n'/$'\n# '}"
        fi
    done < <(sed -nE 's/^(test_[a-z0-9_]+)\(\) \{.*/\1/p' "$file")
done
printf '1..%d\n' "$count"
