# shellcheck shell=bash
# Collects what passed, failed and was skipped from all kinds of tests, and sums it up. Expects $project_root and
# $results, a file that this library owns: one test a line, "status TAB name TAB reason". A test that passed at its second
# try has a line of its own beside that, with the status "retried" and why the first try failed.

results_add() { # STATUS NAME [REASON]
    printf '%s\t%s\t%s\n' "$1" "$2" "${3-}" >>"$results"
}

results_add_all() { # PREFIX, with lines of the results format on standard input
    LC_ALL=C awk -F '\t' -v OFS='\t' -v prefix="$1: " '{ $2 = prefix $2; print }' >>"$results"
}

results_count() { # STATUS
    awk -F '\t' -v status="$1" '$1 == status { n++ } END { print n + 0 }' "$results"
}

# "name: reason" of every test with that status.
results_list() { # STATUS
    awk -F '\t' -v status="$1" '$1 == status { print "  " $2 ($3 == "" ? "" : ": " $3) }' "$results"
}

# What was skipped; many tests of one kind with one reason are one line.
results_list_skipped() {
    awk -F '\t' '
        function kind(name) { sub(/[.\/][^.\/]*$/, "", name); return name }
        $1 == "skipped" {
            group = kind($2) "\t" $3
            if (!(group in count)) order[++groups] = group
            count[group]++; first[group] = $2; reason[group] = $3
        }
        END {
            for (i = 1; i <= groups; i++) {
                g = order[i]
                split(g, part, "\t")
                name = count[g] == 1 ? first[g] : part[1] " (" count[g] " tests)"
                print "  " name (reason[g] == "" ? "" : ": " reason[g])
            }
        }' "$results"
}

# The lists and, as the last line, the sums. Status 1 if anything failed or nothing was tested.
results_report() {
    local failed passed skipped
    passed=$(results_count passed) failed=$(results_count failed) skipped=$(results_count skipped)
    ((skipped == 0)) || { printf '\nSkipped:\n' && results_list_skipped; }
    (($(results_count retried) == 0)) || { printf '\nPassed only at the second try:\n' && results_list retried; }
    ((failed == 0)) || { printf '\nFailed:\n' && results_list failed; }
    printf '\n%d passed, %d failed, %d skipped\n' "$passed" "$failed" "$skipped"
    ((failed == 0 && passed > 0))
}
