"""The whole program in the desktop's language, as it is seen and as a screen reader hears it."""

import pytest
from harness import network
from harness.companion import Companion
from harness.desktop import Desktop
from harness.processes import Processes

PANEL = "Meridian 65|Room 204|7F000001"


@pytest.fixture
def start(programs, output, has_failed):
    """Starts the program with the languages that a desktop would set."""
    network.loopback_up()
    processes = Processes(output)
    desktop = Desktop(processes)
    from harness import accessibility  # noqa: F401  # so that its bus runs before the application looks for it
    apps = []

    def run(languages):
        app = Companion(processes, desktop, programs / "panel-companion", ["--panel", PANEL],
                        environment={"LANGUAGE": languages})
        apps.append(app)
        return app
    yield run
    if has_failed() and apps:
        desktop.screenshot(output / "failure.png")
        print(apps[-1].window.describe())
    processes.end()


def test_a_german_desktop_gets_german(start):
    app = start("it:de_AT:fr")  # there is no Italian
    window = app.window
    window.find("label", "Kein Panel verbunden")
    assert window.find(window.BUTTON, "Connect").description == "Verbinden"
    assert window.find(window.BUTTON, "Devices").description == "Panels im Netzwerk"
    app.wait_for_row("Room 204, 7F000001")
    window.find("dialog", "Panels in der Nähe")


def test_an_unknown_language_and_one_after_english_leave_it_english(start):
    window = start("eo:en_GB:de").window
    window.find("label", "No panel connected")
    assert window.find(window.BUTTON, "Devices").description == "Panels on the network"
