"""Chooses tests by a regular expression: choose.py BUILD-FOLDER REGEX prints shell assignments for ./test: more arguments of
CTest for `choice`, and GTEST_FILTER and PYTEST_ADDOPTS, which programs that hold many cases read. Status 1 if nothing matches."""

import json
import pathlib
import re
import shlex
import subprocess
import sys


def ctest_tests(build):
    shown = subprocess.run(["ctest", "--test-dir", build, "--show-only=json-v1"], check=True, stdout=subprocess.PIPE).stdout
    return [(test["name"], test.get("command", [])) for test in json.loads(shown)["tests"]]


def gtest_cases(program):
    shown = subprocess.run([program, "--gtest_list_tests"], check=False, text=True, stdout=subprocess.PIPE).stdout
    suite = ""
    for line in shown.splitlines():
        name = line.split("#")[0]
        if line.startswith("  "):
            yield suite + name.strip()
        elif name.strip().endswith("."):
            suite = name.strip()


def pytest_cases(file):
    return re.findall(r"^def test_(\w+)", pathlib.Path(file).read_text(encoding="utf-8"), re.MULTILINE)


def choose(tests, matches):
    """(names of CTest's tests, GoogleTest's cases, pytest's cases) that match."""
    names, gtest, pytest, single = [], set(), set(), set()
    for name, command in tests:
        program, group = command[0] if command else "", re.sub(r"/\d+$", "", name)
        if program.endswith("_test"):
            cases = {case for case in gtest_cases(program) if matches(f"{group}/{case}")}
            gtest |= cases
        elif command and command[-1].endswith(".py") and "pytest" in command:
            cases = {case for case in pytest_cases(command[-1]) if matches(f"{name}/{case}")}
            pytest |= cases
        else:
            cases = matches(name)
            if cases and command and "::test_" in command[-1]:
                single.add(command[-1].split("::test_")[1])
        if cases:
            names.append(name)
    # Tests of one case each need no choice of theirs, but must be in the one that is made for others.
    return names, gtest, (pytest | single if pytest else set())


def main():
    build, pattern = sys.argv[1:]
    names, gtest, pytest = choose(ctest_tests(build), re.compile(pattern).search)
    if not names:
        return 1
    print("choice+=(-R", shlex.quote("^(" + "|".join(map(re.escape, names)) + ")$") + ")")
    if gtest:
        print("export GTEST_FILTER=" + shlex.quote(":".join(sorted(gtest))))
    if pytest:
        print("export PYTEST_ADDOPTS=" + shlex.quote("-k " + shlex.quote(" or ".join(sorted(pytest)))))
    return 0


if __name__ == "__main__":
    sys.exit(main())
