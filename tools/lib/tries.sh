# shellcheck shell=bash
# Runs tests, where that is allowed with a second try, and collects their results. Which second try a test needed to pass
# is told, so that no race hides in it. Expects results.sh, environment.sh, $logs, and $wrapper, a command that tests are
# started with.

# More failures than this are no matter of a busy computer.
most_second_tries=20

# Runs tests of a preset that is built, with CTest's further arguments, and collects their results. With "second-try"
# those in which an assertion failed or time ran out, and which are not of the label "unit", are run once more: they wait
# for real servers, in real time. A crash, or what a sanitizer found, may well depend on the moment, so one sight of it is
# enough.
run_ctest() { # PRESET once|second-try CTEST-ARGUMENT...
    local preset=$1 tries=$2 first=$logs/$1.tsv second=$logs/$1-second.tsv log=$logs/$1.log failed
    shift 2
    tell "Testing $preset"
    if ! run_ctest_once "$preset" "$log" "$first" "$@"; then
        results_add failed "$preset: ctest" "it left no report; see $log"
        return
    fi
    failed=$([[ $tries == once ]] || names_to_try_again "$first")
    if [[ -n $failed ]]; then
        tell "Testing $preset: what failed, once more"
        run_ctest_once "$preset" "${log%.log}-second.log" "$second" -R "$failed" -LE '^unit$' || : >"$second"
        overlay "$second" "$first" >"$first.both"
        results_of_tries "$first" "$first.both" | results_add_all "$preset"
    else
        results_add_all "$preset" <"$first"
    fi
}

run_ctest_once() { # PRESET LOG RESULTS CTEST-ARGUMENT...
    local preset=$1 log=$2 lines=$3 report=$2.xml
    shift 3
    rm -f "$report"
    in_private_home "${wrapper[@]}" ctest --test-dir "build/$preset" -j 2 --timeout 120 --output-on-failure \
        --no-tests=ignore --output-junit "$report" "$@" </dev/null >"$log" 2>&1
    grep -vE ' +Passed +[0-9.]+ sec$|^ +Start +[0-9]+:' "$log"
    [[ -s $report ]] && LC_ALL=C awk -f "$project_root/tools/lib/junit.awk" "$report" >"$lines"
}

# A regular expression for the tests in which an assertion failed or time ran out; none when they are too many.
names_to_try_again() { # RESULTS
    local names
    names=$(LC_ALL=C awk -F '\t' '$1 == "failed" && $3 ~ /: Failure$|^it took too long$/ { print $2 }' "$1")
    [[ -n $names ]] && (($(wc -l <<<"$names") <= most_second_tries)) || return 0
    printf '^(%s)( +# GetParam.*)?$' "$(sed -E 's/[][\\.*^$+?()|]/\\&/g' <<<"$names" | paste -sd '|')"
}

# The lines of the second file, those of the first one instead where both name the test.
overlay() { # NEWER OLDER
    LC_ALL=C awk -F '\t' 'NR == FNR { newer[$2] = $0; next } { print $2 in newer ? newer[$2] : $0 }' "$1" "$2"
}

# The second file, and the names of what had failed in the first one and has not in the second: "retried".
results_of_tries() { # FIRST SECOND
    LC_ALL=C awk -F '\t' -v OFS='\t' '
        NR == FNR { if ($1 == "failed") reason[$2] = $3; next }
        { print; if ($1 == "failed") failed[$2] }
        END { for (name in reason) if (!(name in failed)) print "retried", name, reason[name] }' "$1" "$2"
}

# Runs a suite, a program that tells its results in the Test Anything Protocol, and collects them. With "second-try" one
# in which something failed is played once more.
run_suite() { # FILE NAME once|second-try
    local name=$2 lines=$logs/$2.tsv status
    tell "Running $name"
    play_suite "$1" "$logs/$name"
    status=$?
    if ((status == 0)) || [[ $3 == once ]]; then
        results_add_all "$name" <"$lines"
    else
        mv "$lines" "$lines.first"
        mv "$logs/$name.log" "$logs/$name-first.log"
        tell "Running $name once more"
        play_suite "$1" "$logs/$name"
        status=$?
        results_of_tries "$lines.first" "$lines" | results_add_all "$name"
    fi
    if ((status > 1)); then
        tail -n 40 "$logs/$name.log"
        results_add failed "$name: end" "status $status; see $logs/$name.log"
    fi
}

# Status 0 if all went well, 1 if something failed, the suite's own if it broke off.
play_suite() { # FILE LOG
    in_private_home timeout --kill-after=20 1200 "$1" </dev/null 2>"$2.log" | tee "$2.tap"
    local status=${PIPESTATUS[0]}
    LC_ALL=C awk -f "$project_root/tools/lib/tap.awk" "$2.tap" >"$2.tsv"
    ((status <= 1)) || return "$status"
    ! grep -q '^failed' "$2.tsv"
}
