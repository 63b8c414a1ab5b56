"""Others on the same network who mean harm: what they cost the whole program, and whether its window still answers."""

import pathlib
import statistics
import sys
import time

from harness.panel import panel_coordinate
from harness.processes import wait_until
from hostile_panel import KINDS
from test_lab import expect_touches_work, needs_mdns, needs_two_hosts

HERE = pathlib.Path(__file__).parent
MIB = 1 << 20


def start_script(lab, name, *arguments):
    return lab.processes.start([sys.executable, HERE / name, *arguments], name=name, namespace=lab.panel_network)


class Load:
    """What the application takes while something goes on, and how soon its window answers."""

    def __init__(self, companion):
        self._companion = companion
        self._memory, self._processor, self._began = companion.memory(), companion.processor_seconds(), time.monotonic()
        self.answers, self.peak = [], 0

    def click(self, count=9):
        """Opens and closes the list."""
        devices, panels = self._companion.window.find(name="Devices"), self._companion.open_list()
        for number in range(count):
            started = time.monotonic()
            devices.press()
            wait_until(lambda opens=number % 2 == 1: panels.has("showing") == opens, "an answer to a click", 10, 0.002)
            self.answers.append(time.monotonic() - started)
            self.peak = max(self.peak, self.growth())
            time.sleep(0.2)
        self._companion.close_list()

    def growth(self):
        """Of memory, by now."""
        return self._companion.memory() - self._memory

    def expect(self, memory, answer=0.2):
        usual = statistics.median(self.answers)
        share = (self._companion.processor_seconds() - self._processor) / (time.monotonic() - self._began)
        print(f"answers within {usual * 1000:.0f} ms (median), {max(self.answers) * 1000:.0f} ms (longest); memory grew by "
              f"{self.peak / MIB:.1f} MiB at most; {share * 100:.0f} % of a processor")
        self._companion.expect_alive()
        assert self.peak <= memory, f"memory grew by {self.peak / MIB:.1f} MiB"
        assert usual <= answer, f"clicks are answered after {['%.3f' % each for each in self.answers]} s"


def pair_with_address(lab, options=()):
    """With a panel that nobody announces, at the address of the lab's."""
    number = "".join(f"{int(part):02X}" for part in lab.panel_address.split("."))

    class Hostile:  # pylint: disable=too-few-public-methods
        name, hex = "Hostile", number
    companion = lab.start_companion(None, ["--panel", f"Meridian 65|Hostile|{number}", *options])
    companion.pair(Hostile)
    return companion


def test_the_program_outlives_48_kinds_of_hostile_replies(lab):
    assert len(KINDS) == 48, f"there are {len(KINDS)} kinds"
    server = start_script(lab, "hostile_panel.py", lab.panel_address)
    wait_until(lambda: "ready" in server.output(), "the hostile panel")
    companion = pair_with_address(lab)
    switch = companion.window.find("check box", "Wireless touch")
    load = Load(companion)
    for number in range(1, len(KINDS) + 1):
        switch.press()  # asks the panel, on or off
        wait_until(lambda n=number: server.output().count("answered ") >= n, f"the request after press {number}")
        companion.expect_alive()
    load.click()
    load.expect(memory=48 * MIB)


def test_panelctl_says_what_is_wrong_with_48_kinds_of_hostile_replies(lab):
    server = start_script(lab, "hostile_panel.py", lab.panel_address)
    wait_until(lambda: "ready" in server.output(), "the hostile panel")
    running = [(kind, lab.processes.start([lab.programs / "panelctl", "ping", "--panel-address", lab.panel_address, "--timeout", "2"]))
               for kind in KINDS]
    for kind, process in running:
        status = process.wait(30)
        assert status in (0, 1, 3, 4), f"{kind}: status {status}: {process.output()[-200:]}"
        assert "\x1b" not in process.output(), f"{kind}: an escape sequence reaches the terminal"


def test_heartbeats_that_are_answered_with_16_mib_or_drips_hold_up_nothing(lab):
    server = start_script(lab, "hostile_panel.py", lab.panel_address, "16 MiB")
    wait_until(lambda: "ready" in server.output(), "the hostile panel")
    companion = pair_with_address(lab)
    companion.start_casting()
    load = Load(companion)
    wait_until(lambda: server.output().count("answered") >= 2, "a heartbeat", 8)
    load.click(5)
    server.end()
    wait_until(lambda: load.growth() < 6 * MIB, "the answers' memory is given back")
    server = start_script(lab, "hostile_panel.py", lab.panel_address, "a drip")
    wait_until(lambda: server.output().count("answered") >= 2, "two heartbeats", 12)
    load.click(5)
    assert companion.is_casting(), "the session has ended"
    load.expect(memory=48 * MIB)


def test_10000_names_and_40_that_flap_hold_up_nothing(lab):
    needs_two_hosts(lab)
    needs_mdns(lab)
    panel = lab.start_panel()
    companion = lab.start_companion(panel)
    companion.pair(panel)
    load = Load(companion)
    teller = start_script(lab, "hostile_names.py", lab.panel_address, "10000", "40")
    wait_until(lambda: "told" in teller.output(), "the names", 60)
    rows = companion.open_list().child_count
    # The daemon remembers 4,096 records, and a panel has four.
    wait_until(lambda: rows() >= 1000, "1,000 rows", 60, 0.5)
    load.click()
    companion.start_casting()
    wait_until(lambda: panel.touch_enabled_at() == lab.computer_address, "the panel is asked for touches", 20)
    expect_touches_work(lab, panel, 83, 731)
    print(f"{rows()} rows")
    load.expect(memory=96 * MIB)


def test_floods_of_three_senders_hold_up_nothing(lab):
    """Any of them may be heard: touches have no sender that can be trusted."""
    panel = lab.start_panel()
    companion = lab.start_companion(panel)
    companion.pair(panel)
    companion.start_casting()
    wait_until(lambda: panel.touch_enabled_at() == lab.computer_address, "the panel is asked for touches")
    load = Load(companion)
    senders = [start_script(lab, "flood.py", lab.computer_address) for _ in range(3)]
    time.sleep(1)
    load.click(5)
    for sender in senders:
        sender.end()
    place = f"{panel_coordinate(1193, lab.desktop.width)} {panel_coordinate(113, lab.desktop.height)}"
    panel.touch(*(f"{word} {place}" for word in ("DOWN", "UP")))
    wait_until(lambda: lab.desktop.pointer() == (1193, 113), "the panel's own touch", 5)
    load.expect(memory=8 * MIB)
