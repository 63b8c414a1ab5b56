"""Sums up the JUnit reports of CTest, GoogleTest and pytest: results.py FOLDER, where FOLDER holds

    ctest-*.xml, ctest-*.log   CTest's report and output of a run
    junit-<run>/               what CTest's tests reported themselves: a folder for each, with a file for each try
    notes.tsv                  results that no test reported, such as a failed build: status, name, reason, in columns

The last line is "N passed, N failed, N skipped"; the exit status is 0 only if nothing failed and something passed."""

import pathlib
import re
import sys
import xml.etree.ElementTree as ElementTree
from collections import defaultdict

SANITIZER = re.compile(r"^SUMMARY: \w+Sanitizer: .*|^.*: runtime error: .*", re.MULTILINE)
FAILED_TRY = re.compile(r"^ *\d+/\d+ Test +#\d+: (\S+) \.*\*\*\*(\w+)", re.MULTILINE)
RUNNING = re.compile(r"^\[ RUN      \] (\S+)", re.MULTILINE)


class Results:
    def __init__(self):
        self.passed, self.failed, self.skipped, self.retried = [], [], [], []

    def add(self, status, name, reason=""):
        getattr(self, status).append((name, " ".join(reason.split())[:300]))


def parse(file):
    """The test cases of a report; none if its writer was killed before the end."""
    try:
        return list(ElementTree.parse(file).iter("testcase"))
    except ElementTree.ParseError:
        return []


def case_name(test, case):
    """A case of the CTest test `test`: "touchback/NumberTest.Zero" of touchback/1, "lab/a_whole_session" of itself."""
    name = case.get("name")
    if name.startswith("test"):  # pytest's
        name = re.sub(r"^test_(.*\[(.*)\])?", r"\2", name)
        return test if test.endswith("/" + name) else f"{test}/{name}"
    return re.sub(r"/\d+$", "", test) + f"/{case.get('classname')}.{name}"


def case_result(case):
    """("passed", "skipped" or "failed", why)."""
    for tag in ("failure", "error", "skipped"):
        found = case.find(tag)
        if found is not None:
            message = re.sub(r"^\S+:\d+\n", "" if tag == "skipped" else r"\g<0>", found.get("message") or "")
            return "skipped" if tag == "skipped" else "failed", "\n".join(message.split("\n")[:4])
    return ("skipped", "disabled") if case.get("status") == "notrun" else ("passed", "")


def read_tries(folder, test):
    """For each try that left a report: its cases' results by their names."""
    files = sorted((folder / test).glob("*.xml"), key=lambda file: file.stat().st_mtime_ns)
    return [{case_name(test, case): case_result(case) for case in parse(file)} for file in files]


def why_failed(output, how):
    """Of a test that failed although none of its cases says so."""
    found = SANITIZER.search(output)
    if found:
        return found.group()
    running = RUNNING.findall(output)
    during = f" in {running[-1]}" if running else ""
    if how == "Timeout":
        return f"timed out{during}"
    if running:
        return f"crashed{during}"
    lines = [line for line in output.splitlines() if line.strip()]
    told = [line for line in lines if re.match(r"not ok|skipped|E  |.*FAILED", line)]
    return (told or lines or ["no output"])[-1]


def add_test(results, preset, case, folder, failed_tries):
    """One of CTest's tests, which may stand for many cases."""
    test, output = case.get("name"), case.findtext("system-out") or ""
    has_passed, has_run = case.get("status") == "run", case.get("status") in ("run", "fail")
    tries = read_tries(folder, test)
    cases = tries[-1] if tries else {}
    for name, (status, reason) in cases.items():
        results.add(status, f"{preset}: {name}", reason)
    if not has_run:
        reason = re.search(r"skipped(?: - [^:]*)?: (.*)", output)
        skipped = case.find("skipped")
        if skipped is not None and "SKIP_RETURN_CODE" in skipped.get("message", ""):
            results.add("skipped", f"{preset}: {test}", reason.group(1) if reason else "")
        elif case.get("status") == "disabled":
            results.add("skipped", f"{preset}: {test}", "disabled")
        else:
            results.add("failed", f"{preset}: {test}", "it did not run: " + (skipped.get("message", "") if skipped is not None else ""))
    elif not has_passed:
        if not any(status == "failed" for status, _ in cases.values()):
            results.add("failed", f"{preset}: {test}", why_failed(output, failed_tries[test][-1:] == ["Timeout"] and "Timeout"))
    elif failed_tries[test]:
        add_retried(results, preset, test, tries, failed_tries[test][0])
    elif not cases:
        results.add("passed", f"{preset}: {test}")


def add_retried(results, preset, test, tries, how):
    """A crash, or what a sanitizer found, may depend on the moment, so one sight of it is enough: no retry excuses it."""
    failures = {name: reason for name, (status, reason) in tries[0].items() if status == "failed"} if len(tries) > 1 else {}
    for name, reason in failures.items():
        results.add("retried", f"{preset}: {name}", reason)
    if not failures and how == "Failed" and not tries:
        results.add("retried", f"{preset}: {test}")
        results.add("passed", f"{preset}: {test}")
    elif not failures and how == "Timeout":
        results.add("retried", f"{preset}: {test}", "timed out")
    elif not failures:
        results.add("failed", f"{preset}: {test}", "it crashed, and passed when it was run again")


def read(folder):
    results = Results()
    for report in sorted(folder.glob("ctest-*.xml")):
        preset = report.stem.split("-")[1]
        log = report.with_suffix(".log").read_text(encoding="utf-8", errors="replace")
        failed_tries = defaultdict(list)
        for test, how in FAILED_TRY.findall(log):
            failed_tries[test].append(how)
        for case in parse(report):
            add_test(results, preset, case, folder / f"junit-{preset}", failed_tries)
        # Also where the test passed when it was run again.
        finding = SANITIZER.search(log)
        if finding and not any(name.startswith(f"{preset}: ") for name, _ in results.failed):
            results.add("failed", f"{preset}: what a sanitizer found", finding.group())
    notes = folder / "notes.tsv"
    for line in notes.read_text(encoding="utf-8").splitlines() if notes.exists() else []:
        results.add(*line.split("\t"))
    return results


def grouped(entries):
    """Many tests of one kind that were skipped for one reason are one line."""
    groups = defaultdict(list)
    for name, reason in entries:
        groups[re.sub(r"[./][^./]*$", "", name), reason].append(name)
    return [(names[0] if len(names) == 1 else f"{kind} ({len(names)} tests)", reason)
            for (kind, reason), names in groups.items()]


def print_list(title, entries):
    if entries:
        print(f"\n{title}:")
        for name, reason in entries:
            print(f"  {name}: {reason}" if reason else f"  {name}")


def main():
    results = read(pathlib.Path(sys.argv[1]))
    print_list("Skipped", grouped(results.skipped))
    print_list("Passed only at the second try", results.retried)
    print_list("Failed", results.failed)
    print(f"\n{len(results.passed)} passed, {len(results.failed)} failed, {len(results.skipped)} skipped")
    return 0 if results.passed and not results.failed else 1


if __name__ == "__main__":
    sys.exit(main())
