"""The shell libraries behind ./run and ./test, with fake apt-get, cmake and the like: every function in *.bash whose name
begins with "test_", each in a process and an empty folder of its own. It passes if it prints nothing."""

import os
import pathlib
import re
import subprocess

import pytest

HERE = pathlib.Path(__file__).parent
ROOT = HERE.parents[1]
TESTS = [(file.name, name) for file in sorted(HERE.glob("*.bash"))
         for name in re.findall(r"^(test_\w+)\(\)", file.read_text(encoding="utf-8"), re.MULTILINE)]


@pytest.mark.parametrize(("file", "name"), TESTS, ids=[name[len("test_"):] for _, name in TESTS])
def test_shell(file, name, tmp_path):
    done = subprocess.run(
        ["bash", "-c", f'set -uo pipefail; . "{HERE}/support.sh"; . "{HERE}/{file}"; {name}'], cwd=tmp_path, text=True,
        check=False, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, timeout=60,
        env={**os.environ, "project_root": str(ROOT), "PATH": os.environ["PATH"] + ":/usr/sbin:/sbin"})
    assert (done.returncode, done.stdout) == (0, "")
