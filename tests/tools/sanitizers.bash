# shellcheck shell=bash
# shellcheck disable=SC2034 # what is set here is used by the libraries

. "$project_root/tools/lib/sanitizers.sh"

scratch=$PWD wrapper=(untouched)
note() { printf '%s\n' "$*" >>notes; }

# A compiler whose programs are the script on standard input.
pretend_compiler() {
    cat >program
    # shellcheck disable=SC2016 # its own arguments
    pretend g++ <<<'while (($#)); do [[ $1 != -o ]] || { cp program "$2"; chmod +x "$2"; }; shift; done'
}

test_memory_is_not_scattered_even_if_one_start_succeeds() {
    pretend_compiler <<<'#!/bin/sh'
    # shellcheck disable=SC2016 # its own arguments
    pretend setarch <<<'shift; exec "$@"'
    sanitizer_works tsan || echo "$sanitizer_problem"
    expect wrapper 'setarch -R' "${wrapper[*]}"
}

test_where_scattering_cannot_be_switched_off_programs_are_started_as_they_are() {
    pretend_compiler <<<'#!/bin/sh'
    pretend setarch <<<'exit 1'
    sanitizer_works tsan || echo "$sanitizer_problem"
    expect wrapper '' "${wrapper[*]}"
}

test_a_computer_that_lets_nothing_be_traced_leaves_out_the_search_for_leaks() {
    # shellcheck disable=SC2016 # its own variable
    pretend_compiler <<<'#!/bin/sh
case $ASAN_OPTIONS in *detect_leaks=0*) exit 0 ;; *) echo cannot trace; exit 1 ;; esac'
    sanitizer_works asan || echo "$sanitizer_problem"
    expect notes "skipped asan: leaks programs may not be traced here" "$(cat notes)"
    sanitizer_works tsan && echo "the thread sanitizer works without being told so"
    expect problem 'its programs do not run here: cannot trace' "$sanitizer_problem"
}
