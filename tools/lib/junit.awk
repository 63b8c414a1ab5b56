# CTest's JUnit report → one line per test: passed, failed or skipped, its name, and why not, parted by tabs.

function decoded(text) {
    gsub(/&lt;/, "<", text); gsub(/&gt;/, ">", text); gsub(/&quot;/, "\"", text); gsub(/&apos;/, "'", text)
    gsub(/&#x[0-9A-Fa-f]+;/, " ", text); gsub(/&amp;/, "\\&", text); gsub(/\t/, " ", text)
    return text
}

function attribute(name,    start, rest) {
    start = index($0, " " name "=\"")
    if (!start) return ""
    rest = substr($0, start + length(name) + 3)
    return decoded(substr(rest, 1, index(rest, "\"") - 1))
}

# The report does not tell a test that was ended after its time from one that crashed. The shortest limit is 60 seconds.
function was_ended() { return attribute("time") >= 59.5 }

# A test that was never run did not pass: only GoogleTest's own skip is one, and a disabled test.
function finish() {
    if (name == "") return
    if (status == "run") print "passed\t" name "\t"
    else if (status == "disabled") print "skipped\t" name "\tdisabled"
    else if (status == "notrun" && said_skipped) print "skipped\t" name "\t" reason
    else print "failed\t" name "\t" (reason == "" ? problem : reason)
    name = ""
}

/^\t<testcase / {
    finish()
    name = attribute("name"); sub(/ +# GetParam\(\) = .*/, "", name); status = attribute("status")
    reason = ""; problem = was_ended() ? "it took too long" : "no assertion failed: it crashed"
    said_skipped = 0; reason_follows = 0
    next
}
reason_follows { reason = decoded($0); reason_follows = 0 }
/<skipped message="SKIP_REGULAR_EXPRESSION_MATCHED"/ { said_skipped = 1 }
/<skipped message="Unable to find executable"/ { problem = "it was not built" }
/^[^ ]+:[0-9]+: Skipped$/ { reason_follows = 1 }
/^[^ ]+:[0-9]+: Failure$/ && reason == "" { reason = decoded($0) }
# What a sanitizer found weighs more than an assertion.
/^SUMMARY: [A-Za-z]+Sanitizer: / || /: runtime error: / { reason = decoded($0) }
END { finish() }
