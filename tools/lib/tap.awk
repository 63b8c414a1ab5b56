# Test Anything Protocol → one line per test: passed, failed or skipped, its name, and why not, parted by tabs.
# A plan that does not match what came is a failure of its own. A test with the comment "# passed at the second try: why"
# behind it has a line more: retried, its name, and why the first try failed.

function without_number(text) { sub(/^[0-9]* *(- *)?/, "", text); gsub(/\t/, " ", text); return text }

function finish() {
    if (status != "") print status "\t" name "\t" reason
    if (retried != "") print "retried\t" name "\t" retried
    status = retried = ""
}

/^1\.\.[0-9]+/ { planned = substr($0, 4) + 0; has_plan = 1 }
/^1\.\.0 # [Ss][Kk][Ii][Pp]/ { all_skipped = substr($0, 13) }
/^(not )?ok( |$)/ {
    finish()
    count++
    status = /^not/ ? "failed" : "passed"
    name = $0; sub(/^(not )?ok */, "", name); name = without_number(name); reason = ""
    at = match(name, / # [Ss][Kk][Ii][Pp]/)
    if (at) {
        reason = substr(name, at + RLENGTH); sub(/^[A-Za-z]* */, "", reason)
        name = substr(name, 1, at - 1)
        if (status == "passed") status = "skipped"
    }
    next
}
/^Bail out!/ { bailed = 1; finish(); print "failed\t(ended early)\t" substr($0, 11) }
/^# passed at the second try: / && status == "passed" { retried = substr($0, 29) }
/^# / && status == "failed" && reason == "" { reason = substr($0, 3) }
END {
    finish()
    if (all_skipped != "") print "skipped\t(all)\t" all_skipped
    else if (!bailed && !has_plan) print "failed\t(ended early)\tit did not tell how many tests it has"
    else if (!bailed && !count) print "failed\t(ended early)\tit had nothing to run"
    else if (!bailed && planned != count) print "failed\t(ended early)\t" count + 0 " of " planned " tests were run"
}
