#!/bin/bash
# Runs a fuzz target for a short time, from its corpus. Exit status 77 if clang cannot build it here.
#
#   tests/fuzz/fuzz.sh TARGET [SECONDS]     one of the files here, without ".cpp"; 10 seconds by default
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/../.."
target=$1 seconds=${2:-10} output=build/fuzz

libraries=()
case $target in
HttpReplyFuzz)
    sources=(platform/curl/CurlHttpSession.cpp platform/curl/CurlTransfer.cpp)
    libraries=(-lcurl)
    ;;
RecordingFuzz) sources=(cli/TouchRecording.cpp simulator/Recording.cpp simulator/Text.cpp) ;;
ServiceNameFuzz) sources=(discovery/DevicesListViewController.cpp discovery/PanelList.cpp discovery/PanelName.cpp) ;;
SimulatorInputFuzz)
    sources=(simulator/{BrowserSafety,Gesture,InstanceName,ReplyMode,StrokeOrder,Text,UploadFile}.cpp)
    ;;
TouchMessageFuzz) sources=(touchback/MouseSimulate.cpp touchback/Number.cpp touchback/TouchMessage.cpp) ;;
UrlFuzz) sources=(platform/FileUrl.cpp platform/HttpSession.cpp) ;;
*) printf 'fuzz.sh: there is no target "%s"\n' "$target" >&2 && exit 2 ;;
esac

skip() {
    printf 'skipped: %s (./test --with-optional installs it)\n' "$1"
    exit 77
}

command -v clang++ >/dev/null || skip "clang is not installed"
mkdir -p "$output/$target"
echo 'extern "C" int LLVMFuzzerTestOneInput(const unsigned char*, unsigned long) { return 0; }' >"$output/$target-probe.cpp"
clang++ -fsanitize=fuzzer -o "$output/$target-probe" "$output/$target-probe.cpp" 2>/dev/null ||
    skip "clang has no fuzzing run-time library"
clang++ -std=c++20 -g -O1 -I. -fsanitize=fuzzer,address,undefined -fno-sanitize-recover=all -o "$output/$target.run" \
    "tests/fuzz/$target.cpp" "${sources[@]}" platform/FatalError.cpp platform/Text.cpp "${libraries[@]}"
"$output/$target.run" -max_total_time="$seconds" -max_len=4096 -timeout=30 -rss_limit_mb=1024 \
    -artifact_prefix="$output/$target-" "$output/$target" "tests/fuzz/corpus/$target"
