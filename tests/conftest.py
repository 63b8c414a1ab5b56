"""What the suites share. CTest starts them by tools/lib/isolated.sh; see app_pytest in cmake/AppTargets.cmake."""

import os
import pathlib
import shutil
import sys

import pytest

ROOT = pathlib.Path(__file__).resolve().parents[1]
sys.path.insert(0, str(ROOT / "tools"))


@pytest.hookimpl(tryfirst=True)
def pytest_configure(config):
    """Each try leaves a report of its own, without a warning that nothing can be done about."""
    folder = os.environ.get("PANEL_COMPANION_JUNIT")
    if folder:
        tries = len(list(pathlib.Path(folder).glob("*.xml")))
        config.option.xmlpath = f"{folder}/{tries + 1}.xml"
    # What the bindings offer instead is the name in the program's language.
    config.addinivalue_line("filterwarnings", "ignore:Atspi.Action.get_action_name is deprecated")


@pytest.hookimpl(hookwrapper=True)
def pytest_runtest_makereport(item, call):
    outcome = yield
    if call.when == "call":
        item.has_passed = outcome.get_result().passed


@pytest.fixture
def has_failed(request):
    """Tells fixtures, after a test, whether to keep evidence."""
    return lambda: not getattr(request.node, "has_passed", False)


@pytest.fixture(scope="session")
def programs():
    """The folder of the built programs."""
    return pathlib.Path(os.environ.get("PANEL_COMPANION_PROGRAMS", ROOT / "build/debug/bin"))


def make_output(name):
    folder = ROOT / "build/test-results" / name
    shutil.rmtree(folder, ignore_errors=True)
    folder.mkdir(parents=True)
    return folder


@pytest.fixture
def output(request):
    """A folder for a test's logs and screenshots."""
    return make_output(f"{request.path.parent.name}/{request.node.name}")


@pytest.fixture(scope="module")
def module_output(request):
    """A folder for the logs and screenshots of all tests of a file."""
    return make_output(f"{request.path.parent.name}/{request.path.stem}")
