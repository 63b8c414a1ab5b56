# shellcheck shell=bash
# Whether programs built with a sanitizer run on this machine, and with which settings. Expects $scratch and "note", which
# records a result. Sets $wrapper, a command to start tests of that build with, and $sanitizer_problem.

sanitizer_flags() { # PRESET
    case $1 in
    asan) printf '%s\n' -fsanitize=address,undefined ;;
    tsan) printf '%s\n' -fsanitize=thread ;;
    esac
}

set_sanitizer_options() { # PRESET
    export UBSAN_OPTIONS=print_stacktrace=1
    export ASAN_OPTIONS=detect_stack_use_after_return=1
    export LSAN_OPTIONS=suppressions=$project_root/tools/sanitizers/leaks.txt:print_suppressions=0
    # Libraries that were not built with the thread sanitizer look like races to it.
    export TSAN_OPTIONS=ignore_noninstrumented_modules=1:suppressions=$project_root/tools/sanitizers/races.txt
}

sanitizer_works() { # PRESET
    local probe=$scratch/probe-$1
    set_sanitizer_options "$1"
    printf '#include <thread>\nint main() { std::thread([] {}).join(); }\n' >"$probe.cpp"
    if ! g++ "$(sanitizer_flags "$1")" -o "$probe" "$probe.cpp" 2>"$probe.log"; then
        sanitizer_problem="the compiler has no such sanitizer: $(head -n 1 "$probe.log")"
        return 1
    fi
    # With strong address randomisation, sanitizers abort some starts and not others, so one success proves nothing.
    wrapper=()
    if setarch -R true 2>/dev/null; then
        wrapper=(setarch -R)
    fi
    "${wrapper[@]}" "$probe" >"$probe.log" 2>&1 && return 0
    # Leak detection traces the program, which some containers forbid.
    if [[ $1 == asan ]] && ASAN_OPTIONS=$ASAN_OPTIONS:detect_leaks=0 "${wrapper[@]}" "$probe" >>"$probe.log" 2>&1; then
        ASAN_OPTIONS+=:detect_leaks=0
        note skipped "$1: leaks" "programs may not be traced here"
        return 0
    fi
    sanitizer_problem="its programs do not run here: $(grep -m 1 . "$probe.log")"
    return 1
}
