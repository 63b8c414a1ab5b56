#!/bin/bash
# Runs the fuzz targets for a short time each, from their corpus. Tells its results in the Test Anything Protocol.
#
#   tests/fuzz/run-fuzz.sh [SECONDS]     10 seconds each, or as many
set -uo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/../.." || exit 2
seconds=${1:-10}
output=build/fuzz
common=(platform/FatalError.cpp platform/Text.cpp)
count=0

fuzz() { # TARGET SOURCE...
    local target=$1 log=$output/$1.log
    shift
    mkdir -p "$output/$target"
    if ! clang++ -std=c++20 -g -O1 -I. -fsanitize=fuzzer,address,undefined -fno-sanitize-recover=all \
        -o "$output/$target.run" "tests/fuzz/$target.cpp" "$@" "${common[@]}" >"$log" 2>&1; then
        # A compiler without its fuzzing run-time library is a missing tool, not a failed test.
        if grep -q 'libclang_rt.fuzzer\|cannot find.*fuzzer' "$log"; then
            printf 'ok %d - %s # SKIP clang has no fuzzing run-time library here (./test --with-optional installs it)\n' $((++count)) "$target"
        else
            printf 'not ok %d - %s\n' $((++count)) "$target"
            sed 's/^/# /' "$log"
        fi
        return
    fi
    if "$output/$target.run" -max_total_time="$seconds" -max_len=4096 -timeout=5 -rss_limit_mb=1024 \
        -artifact_prefix="$output/$target-" "$output/$target" "tests/fuzz/corpus/$target" >>"$log" 2>&1; then
        printf 'ok %d - %s: %s\n' $((++count)) "$target" "$(grep -o '^Done.*' "$log" | tail -n 1)"
    else
        printf 'not ok %d - %s\n' $((++count)) "$target"
        tail -n 40 "$log" | sed 's/^/# /'
    fi
}

if ! command -v clang++ >/dev/null; then
    echo '1..0 # SKIP clang is not installed (./test --with-optional installs it)'
    exit 0
fi
mkdir -p "$output"
fuzz TouchMessageFuzz touchback/MouseSimulate.cpp touchback/Number.cpp touchback/TouchMessage.cpp
fuzz ServiceNameFuzz discovery/DevicesListViewController.cpp discovery/PanelName.cpp
echo "1..$count"
