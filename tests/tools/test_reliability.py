"""The tests that docs/reliability.md names are there, so that its table cannot promise what nobody checks."""

import pathlib
import re

ROOT = pathlib.Path(__file__).resolve().parents[2]
ROW = re.compile(r"^\| (\d+) \| .+ \| .+ \| `([^`]+)` \|$", re.MULTILINE)


def existing_tests():
    """As the table names them: "folder/what_it_says" and "Suite.Case"."""
    found = set()
    for file in (ROOT / "tests").rglob("test_*.py"):
        found |= {f"{file.parent.name}/{name}" for name in re.findall(r"^def test_(\w+)", file.read_text("utf-8"), re.M)}
    for file in ROOT.rglob("*Test.cpp"):
        if "build" not in file.relative_to(ROOT).parts:
            cases = re.findall(r"^TEST(?:_[FP])?\(\s*(\w+),\s*(\w+)\)", file.read_text("utf-8"), re.M)
            found |= {f"{suite}.{case}" for suite, case in cases}
    return found


def test_each_fault_of_the_table_has_a_test_that_exists():
    rows = ROW.findall((ROOT / "docs/reliability.md").read_text("utf-8"))
    assert len(rows) >= 40, f"{len(rows)} rows are told apart"
    assert [int(number) for number, _ in rows] == list(range(1, len(rows) + 1)), "the rows are not numbered one by one"
    existing = existing_tests()
    missing = [name for _, name in rows if name not in existing]
    assert not missing, f"no such tests: {missing}"
