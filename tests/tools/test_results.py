"""How ./test sums up reports and chooses tests."""

import pathlib
import sys

import pytest

sys.path.insert(0, str(pathlib.Path(__file__).parents[2] / "tools/lib"))
import choose  # noqa: E402
import results  # noqa: E402

GTEST = '<testsuites><testsuite name="S">{}</testsuite></testsuites>'
PASS, FAIL = '<testcase name="A" classname="S" status="run"/>', \
    '<testcase name="A" classname="S" status="run"><failure message="T.cpp:7&#xA;Expected: 1"/></testcase>'
SKIP = '<testcase name="B" classname="S" status="run"><skipped message="T.cpp:9&#xA;no display&#xA;"/></testcase>'


@pytest.fixture
def report(tmp_path):
    """Writes what a run of CTest leaves: report(case, log, try, try...)."""
    def write(case, log="", *tries, test="a/1"):
        (tmp_path / "ctest-debug-steady.xml").write_text(f"<testsuite>{case}</testsuite>", encoding="utf-8")
        (tmp_path / "ctest-debug-steady.log").write_text(log, encoding="utf-8")
        folder = tmp_path / "junit-debug" / test
        folder.mkdir(parents=True)
        for number, cases in enumerate(tries):
            (folder / f"{number}.xml").write_text(GTEST.format(cases), encoding="utf-8")
        return results.read(tmp_path)
    return write


def ctest(status="run", output="", inner="", name="a/1"):
    return f'<testcase name="{name}" status="{status}">{inner}<system-out>{output}</system-out></testcase>'


def log(*outcomes, name="a/1"):
    return "".join(f" 1/1 Test  #1: {name} ......{outcome}  1.02 sec\n" for outcome in outcomes)


def test_cases_are_counted_by_name(report):
    found = report(ctest(), "", PASS + SKIP)
    assert found.passed == [("debug: a/S.A", "")]
    assert found.skipped == [("debug: a/S.B", "no display")]


def test_a_failed_case_is_named_with_its_reason(report):
    found = report(ctest("fail"), log("***Failed"), FAIL)
    assert found.failed == [("debug: a/S.A", "T.cpp:7 Expected: 1")] and not found.passed


def test_a_second_try_is_listed_with_why_the_first_failed(report):
    found = report(ctest(), log("***Failed", "   Passed"), FAIL, PASS)
    assert found.passed == [("debug: a/S.A", "")] and not found.failed
    assert found.retried == [("debug: a/S.A", "T.cpp:7 Expected: 1")]


def test_a_crash_is_no_matter_of_a_second_try(report):
    found = report(ctest(), log("***Exception: SegFault", "   Passed"), PASS)
    assert found.failed == [("debug: a/1", "it crashed, and passed when it was run again")]


def test_what_a_sanitizer_found_is_no_matter_of_a_second_try(report):
    finding = "SUMMARY: ThreadSanitizer: data race A.cpp:3"
    found = report(ctest(), log("***Failed", "   Passed") + finding + "\n", FAIL, PASS)
    assert found.failed == [("debug: what a sanitizer found", finding)]


@pytest.mark.parametrize(("output", "log_line", "reason"), [
    ("[ RUN      ] S.A\nSegmentation fault", "***Exception: SegFault", "crashed in S.A"),
    ("[ RUN      ] S.A\n", "***Timeout", "timed out in S.A"),
    ("[ RUN      ] S.A\nSUMMARY: ThreadSanitizer: data race A.cpp:3", "***Failed", "SUMMARY: ThreadSanitizer: data race A.cpp:3"),
    ("A.cpp:3:5: runtime error: signed integer overflow", "***Failed", "A.cpp:3:5: runtime error: signed integer overflow"),
    ("ok - one\nnot ok - two\n", "***Failed", "not ok - two")])
def test_a_test_that_left_no_failed_case_says_why(report, output, log_line, reason):
    assert report(ctest("fail", output), log(log_line)).failed == [("debug: a/1", reason)]


def test_a_skipped_program_says_why(report):
    found = report(ctest("notrun", "skipped - form: no clang-format", '<skipped message="SKIP_RETURN_CODE=77"/>'))
    assert found.skipped == [("debug: a/1", "no clang-format")]


def test_a_test_that_was_not_built_has_failed(report):
    found = report(ctest("notrun", "", '<skipped message="Unable to find executable"/>'))
    assert found.failed == [("debug: a/1", "it did not run: Unable to find executable")]


def test_many_tests_skipped_for_one_reason_are_one_line():
    assert results.grouped([("debug: a/S.A", "x"), ("debug: a/S.B", "x"), ("debug: b/S.A", "x")]) == \
        [("debug: a/S (2 tests)", "x"), ("debug: b/S.A", "x")]


@pytest.mark.parametrize(("test", "case", "name"), [
    ("lab/a_session", {"name": "test_a_session", "classname": "test_lab"}, "lab/a_session"),
    ("upload/drop", {"name": "test_a_file", "classname": "tests.upload.test_drop"}, "upload/drop/a_file"),
    ("tools", {"name": "test_shell[a_function]", "classname": "test_shell"}, "tools/a_function"),
    ("screens/at_2/1", {"name": "Fits/0", "classname": "P/LayoutTest"}, "screens/at_2/P/LayoutTest.Fits/0")])
def test_cases_are_named_after_their_group(test, case, name):
    assert results.case_name(test, case) == name


def test_a_test_of_one_case_is_among_the_cases_that_a_filter_chooses(tmp_path):
    several = tmp_path / "test_several.py"
    several.write_text("def test_drag():\n    pass\n", encoding="utf-8")
    tests = [("lab/several", ["python3", "-m", "pytest", str(several)]),
             ("lab/a_drag", ["python3", "-m", "pytest", "test_one.py::test_a_drag"])]
    assert choose.choose(tests, lambda name: "drag" in name)[2] == {"drag", "a_drag"}
    assert choose.choose(tests[1:], lambda name: "drag" in name) == (["lab/a_drag"], set(), set())


def test_a_filter_chooses_cases_and_whole_tests(monkeypatch, tmp_path):
    monkeypatch.setattr(choose, "gtest_cases", lambda program: {"bin/x_test": ["S.Tap", "S.Drag"], "bin/y_test": ["S.Tap"]}[program])
    file = tmp_path / "test_page.py"
    file.write_text("def test_Tap_twice(page):\n    pass\n\n\ndef test_drag(page):\n    pass\n", encoding="utf-8")
    tests = [("x/1", ["bin/x_test"]), ("y/1", ["bin/y_test"]), ("page", ["python3", "-m", "pytest", str(file)]), ("check/Tap", ["c.sh"])]

    def chosen(pattern):
        return choose.choose(tests, lambda name: pattern in name)
    assert chosen("Tap") == (["x/1", "y/1", "page", "check/Tap"], {"S.Tap"}, {"Tap_twice"})
    assert chosen("x/S.Drag") == (["x/1"], {"S.Drag"}, set())
    assert chosen("nothing") == ([], set(), set())
