import pytest
from harness.lab import Lab


@pytest.fixture
def lab(programs, output, has_failed):
    lab = Lab(programs, output)
    yield lab
    if has_failed():
        lab.desktop.screenshot(output / "failed.png")
        print(lab.announcements())
    lab.processes.end()
