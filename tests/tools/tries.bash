# shellcheck shell=bash
# shellcheck disable=SC2034 # what is set here is used by the libraries

. "$project_root/tools/lib/results.sh"
. "$project_root/tools/lib/tries.sh"

logs=$PWD results=$PWD/results.tsv wrapper=()
: >"$results"
tell() { :; }
in_private_home() { "$@"; }

# CTest with three tests of which "a/Unsteady" fails in the first run, "a/Broken" always.
pretend_ctest() {
    pretend ctest <<'SCRIPT'
printf '%s\n' "$*" >>calls
case $* in *" -R ^("*) second=yes ;; *) second=no ;; esac
while (($#)); do
    [[ $1 != --output-junit ]] || report=$2
    shift
done
{
    if [[ $second == yes ]]; then
        printf '\t<testcase name="a/Unsteady.Test" status="run">\n'
    else
        printf '\t<testcase name="a/Unsteady.Test" status="fail">\n/here/T.cpp:7: Failure\n'
        printf '\t<testcase name="a/Steady" status="run">\n'
    fi
    printf '\t<testcase name="a/Broken+" status="fail">\n/here/T.cpp:9: Failure\n'
} >"$report"
SCRIPT
}

test_a_test_that_passes_at_its_second_try_is_named() {
    pretend_ctest
    run_ctest debug second-try >/dev/null
    expect results "$(printf 'failed\tdebug: a/Broken+\t/here/T.cpp:9: Failure
passed\tdebug: a/Steady\t
passed\tdebug: a/Unsteady.Test\t
retried\tdebug: a/Unsteady.Test\t/here/T.cpp:7: Failure')" "$(sort "$results")"
    expect report '
Passed only at the second try:
  debug: a/Unsteady.Test: /here/T.cpp:7: Failure

Failed:
  debug: a/Broken+: /here/T.cpp:9: Failure

2 passed, 1 failed, 0 skipped' "$(results_report)"
}

test_only_what_failed_and_is_no_unit_test_is_tried_again() {
    pretend_ctest
    run_ctest debug second-try >/dev/null
    expect calls 2 "$(wc -l <calls)"
    [[ $(sed -n 2p calls) == *' -R ^(a/Unsteady\.Test|a/Broken\+)( +# GetParam.*)?$ -LE ^unit$' ]] || sed -n 2p calls
}

test_what_is_run_once_gets_no_second_try() {
    pretend_ctest
    run_ctest debug once >/dev/null
    expect calls 1 "$(wc -l <calls)"
    expect failures 2 "$(results_count failed)"
    expect "second tries" 0 "$(results_count retried)"
}

# CTest with one test that ends as told: lines of its output.
pretend_ctest_with_output() { # LINE...
    printf '%s\n' "$@" >output
    seconds=${seconds-1.5}
    export seconds
    pretend ctest <<'SCRIPT'
echo "$*" >>calls
while (($#)); do
    [[ $1 != --output-junit ]] || report=$2
    shift
done
{ printf '\t<testcase name="a/T" time="%s" status="fail">\n' "$seconds" && cat output; } >"$report"
SCRIPT
}

test_what_a_sanitizer_found_gets_no_second_try_and_is_told() {
    pretend_ctest_with_output '/here/T.cpp:7: Failure' 'SUMMARY: ThreadSanitizer: data race /here/A.cpp:3 in A::a()'
    run_ctest tsan second-try >/dev/null
    expect calls 1 "$(wc -l <calls)"
    expect results "$(printf 'failed\ttsan: a/T\tSUMMARY: ThreadSanitizer: data race /here/A.cpp:3 in A::a()')" "$(cat "$results")"
}

test_undefined_behaviour_gets_no_second_try() {
    pretend_ctest_with_output '/here/A.cpp:3:5: runtime error: signed integer overflow' '/here/T.cpp:7: Failure'
    run_ctest asan second-try >/dev/null
    expect calls 1 "$(wc -l <calls)"
}

test_a_crash_gets_no_second_try() {
    pretend_ctest_with_output 'Segmentation fault'
    run_ctest debug second-try >/dev/null
    expect calls 1 "$(wc -l <calls)"
    expect results "$(printf 'failed\tdebug: a/T\tno assertion failed: it crashed')" "$(cat "$results")"
}

test_what_ran_out_of_time_is_tried_again() {
    seconds=60.02 pretend_ctest_with_output '[ RUN      ] a.T'
    run_ctest debug second-try >/dev/null
    expect calls 2 "$(wc -l <calls)"
    expect results "$(printf 'failed\tdebug: a/T\tit took too long')" "$(cat "$results")"
}

test_unit_tests_are_never_given_a_second_try() {
    pretend_ctest
    run_ctest debug second-try >/dev/null
    [[ $(tail -n 1 calls) == *' -LE ^unit$' ]] || tail -n 1 calls
}

test_many_failures_are_no_matter_of_a_busy_computer() {
    seq 20 | sed 's|.*|failed\ta&\t/here/T.cpp:7: Failure|' >failures
    [[ -n $(names_to_try_again failures) ]] || echo "20 are tried again"
    printf 'failed\ta21\t/here/T.cpp:7: Failure\n' >>failures
    expect "names of 21" '' "$(names_to_try_again failures)"
}

# A suite whose first play fails at "drag"; how many plays there were is in the file "plays".
pretend_suite() {
    pretend suite <<'SCRIPT'
echo play >>plays
echo "ok 1 - draw"
if [[ $(wc -l <plays) == 1 ]]; then printf 'not ok 2 - drag\n# it slipped\n'; else echo "ok 2 - drag"; fi
echo 1..2
SCRIPT
}

test_a_suite_that_may_be_played_again_names_what_needed_it() {
    pretend_suite
    run_suite bin/suite suite second-try >/dev/null
    expect results "$(printf 'passed\tsuite: draw\t
passed\tsuite: drag\t
retried\tsuite: drag\tit slipped')" "$(cat "$results")"
}

test_other_suites_are_played_once() {
    pretend_suite
    run_suite bin/suite suite once >/dev/null
    expect plays 1 "$(wc -l <plays)"
    expect failures 1 "$(results_count failed)"
}

test_a_scenario_that_the_lab_tried_twice_is_named() {
    expect lines "$(printf 'passed\ta session\t\nretried\ta session\tno answer\npassed\tanother\t')" \
        "$(printf 'ok 1 - a session\n# passed at the second try: no answer\nok 2 - another\n# seen\n1..2\n' |
            awk -f "$project_root/tools/lib/tap.awk")"
}

# A lab of two scenarios, "steady" and "shaky", that are played by this test's own python3 and isolation.
pretend_lab() { # HOW-MANY-TIMES-SHAKY-FAILS
    mkdir -p project/tests/lab project/tools/lib
    cat >project/tools/lib/isolated.sh <<SCRIPT
#!/bin/bash
scenario=\${@: -1}
echo "\$scenario" >>"$PWD/plays"
mkdir -p "$PWD/project/build/test-results/lab"
if [[ \$scenario == shaky ]] && ((\$(grep -c shaky "$PWD/plays") <= $1)); then
    printf 'not ok 1 - shaky\n# it shook\n1..1\n'
    exit 1
fi
printf 'ok 1 - %s\n# seen\n1..1\n' "\$scenario"
SCRIPT
    chmod +x project/tools/lib/isolated.sh
    echo 'print("steady\nshaky")' >project/tests/lab/scenarios.py
}

test_the_lab_tries_a_scenario_twice_at_most() {
    pretend_lab 3
    PANEL_COMPANION_ROOT=$PWD/project "$project_root/tests/lab/run-lab.sh" >lines
    expect plays 'steady shaky shaky' "$(paste -sd ' ' plays)"
    expect lines "$(printf 'ok 1 - steady\n# seen\nnot ok 2 - shaky\n# it shook\n1..2')" "$(cat lines)"
}

test_the_lab_names_the_scenario_that_needed_its_second_try() {
    pretend_lab 1
    PANEL_COMPANION_ROOT=$PWD/project "$project_root/tests/lab/run-lab.sh" >lines
    expect lines "$(printf 'ok 1 - steady\n# seen\nok 2 - shaky\n# passed at the second try: it shook\n# seen\n1..2')" \
        "$(cat lines)"
}
