"""What breaks around the whole program while it casts, and what the person at the computer gets to see of it."""

import pathlib
import random
import resource
import signal
import socket
import sys
import time

from harness.announcer import Announcer
from harness.companion import DISABLED, Companion
from harness.processes import Failure, wait_until
from test_lab import expect_touches_work, needs_mdns, needs_two_hosts, start_casting_beside_window, touch

HERE = pathlib.Path(__file__).parent
OTHER_ADDRESS = "10.31.7.21"


def cast(lab, options=(), environment=None):
    panel = lab.start_panel()
    companion = lab.start_companion(panel, options, environment)
    companion.pair(panel)
    companion.start_casting()
    wait_until(lambda: panel.touch_enabled_at() == lab.computer_address, "the panel is asked for touches")
    return panel, companion


def wait_for_heartbeat(panel, timeout=15):
    """One that is sent from now on."""
    since = time.time()
    wait_until(lambda: any(sent > since for sent in panel.ping_times()), "another heartbeat", timeout)


def expect_rhythm(panel, since, count=2):
    """From the first heartbeat after `since` on."""
    def times():
        return [sent for sent in panel.ping_times() if sent > since]
    wait_until(lambda: len(times()) > count, f"{count + 1} heartbeats", 4 * count + 10)
    gaps = [later - earlier for earlier, later in zip(times(), times()[1:])]
    assert all(3.7 < gap < 4.3 for gap in gaps), f"heartbeats after {['%.2f' % gap for gap in gaps]} s"


def expect_signal_releases_button(lab, number):
    _, companion, clicks = start_casting_beside_window(lab)
    companion.process.send(number)
    companion.process.wait(3)
    assert companion.process.status() == 0, f"it ended with status {companion.process.status()}"
    wait_until(lambda: clicks.releases() == 1, "the release", 3)


def test_sigint_with_a_finger_down_ends_the_program_and_releases_the_button(lab):
    expect_signal_releases_button(lab, signal.SIGINT)


def test_sighup_with_a_finger_down_ends_the_program_and_releases_the_button(lab):
    expect_signal_releases_button(lab, signal.SIGHUP)


def test_the_run_after_sigkill_with_a_finger_down_releases_the_button(lab):
    panel, companion, clicks = start_casting_beside_window(lab)
    companion.process.send(signal.SIGKILL)
    companion.process.wait(3)
    time.sleep(0.5)
    assert clicks.releases() == 0, "the button was not left held, so this shows nothing"
    lab.start_companion(panel).expect_alive()
    wait_until(lambda: clicks.releases() == 1, "the release", 10)


def test_the_program_ends_with_its_x_server_says_so_and_works_with_the_next_one(lab):
    """As all programs of the desktop do, and the session with them."""
    panel, companion, _ = start_casting_beside_window(lab)
    server = next(process for process in lab.processes.started() if process.name == "Xvfb")
    server.send(signal.SIGKILL)
    companion.process.wait(5)
    assert companion.process.status() == 1, f"it ended with status {companion.process.status()}"
    last_line = companion.process.output().splitlines()[-1]
    assert "The X11 connection broke" in last_line, f"its last line was {last_line!r}"

    lab.desktop.start_display()
    lab.desktop.start_window_manager("openbox", "--sm-disable")
    companion = lab.start_companion(panel)
    companion.pair(panel)
    companion.start_casting()
    wait_until(lambda: panel.touch_enabled_at() == lab.computer_address, "the panel is asked for touches")
    expect_touches_work(lab, panel, 1200, 600)


def test_a_suspend_of_a_minute_costs_the_heartbeats_of_that_minute_only(lab):
    panel, companion, clicks = start_casting_beside_window(lab)
    touch(lab, panel, "UP", clicks.x + 100, clicks.y + 100)
    companion.process.send(signal.SIGSTOP)
    time.sleep(60)
    woken = time.time()
    companion.process.send(signal.SIGCONT)
    wait_for_heartbeat(panel)
    expect_rhythm(panel, woken + 4)
    late = [sent for sent in panel.ping_times() if woken < sent < woken + 3.5]
    assert len(late) <= 2, f"{len(late)} heartbeats at once after the suspend"
    assert companion.is_casting(), "the suspend ended the session"
    touch(lab, panel, "DOWN", clicks.x + 50, clicks.y + 50)
    wait_until(lambda: len(clicks.presses()) == 2, "a press after the suspend", 3)
    companion.expect_alive()


def test_a_clock_that_is_set_changes_no_rhythm(lab):
    shift = lab.folder / "shift"
    library = lab.programs / "libclock-shift.so"
    panel, companion = cast(lab, environment={"LD_PRELOAD": str(library), "CLOCK_SHIFT": str(shift)})
    wait_for_heartbeat(panel)
    since = time.time()
    for seconds in (-7200, 86400):
        shift.write_text(str(seconds), encoding="ascii")
        wait_for_heartbeat(panel, 6)
        expect_touches_work(lab, panel, 83, 731)
    expect_rhythm(panel, since)
    assert companion.is_casting(), "the clock ended the session"
    companion.stop_casting()


def test_a_panel_that_comes_back_with_another_address_can_be_paired_again(lab):
    needs_two_hosts(lab)
    needs_mdns(lab)
    panel, companion = cast(lab)
    panel.process.send(signal.SIGKILL)
    panel.process.end()
    lab.ip("address", "del", f"{lab.panel_address}/24", "dev", "en0", host=lab.panel_network)
    lab.ip("address", "add", f"{OTHER_ADDRESS}/24", "dev", "en0", host=lab.panel_network)
    lab.panel_address = OTHER_ADDRESS
    companion.open_list()
    wait_until(lambda: not companion.row("0A1F0714"), "the row with the old address gone", 30)  # and its name with it
    panel = lab.start_panel()
    wait_until(lambda: companion.row(panel.hex), "a row with the new address", 30)
    companion.window.press("Disconnect")  # the row counts as picked, whoever is in it now
    companion.expect_alert(DISABLED)
    companion.window.dismiss_alert()
    companion.close_list()
    companion.pair(panel)
    companion.start_casting()
    wait_until(lambda: panel.touch_enabled_at() == lab.computer_address, "the panel is asked for touches")
    expect_touches_work(lab, panel, 1187, 109)


def test_the_heartbeat_names_the_computers_new_address(lab):
    needs_two_hosts(lab)
    panel, companion = cast(lab)
    wait_for_heartbeat(panel)
    lab.ip("address", "del", f"{lab.computer_address}/24", "dev", "en0")
    lab.ip("address", "add", "10.31.7.6/24", "dev", "en0")
    wait_until(lambda: panel.state()["pings"]["lastIp"] == "10.31.7.6", "a heartbeat with the new address", 15)
    assert companion.is_casting(), "the new address ended the session"
    companion.expect_alive()


def test_a_session_goes_on_over_an_interface_that_gets_another_name(lab):
    needs_two_hosts(lab)
    panel, companion = cast(lab)
    lab.ip("link", "set", "en0", "down")
    lab.ip("link", "set", "en0", "name", "wired7")
    lab.ip("link", "set", "wired7", "up")
    wait_for_heartbeat(panel)
    assert panel.state()["pings"]["lastIp"] == lab.computer_address, "the heartbeat names another address"
    expect_touches_work(lab, panel, 83, 731)
    companion.stop_casting()
    wait_until(lambda: panel.touch_enabled_at() is None, "the panel is told to stop")


def test_a_vpn_that_takes_the_default_route_changes_nothing(lab):
    needs_two_hosts(lab)
    panel, companion = cast(lab)
    lab.ip("link", "add", "vpn0", "type", "veth", "peer", "name", "vpn1")
    lab.ip("link", "set", "vpn1", "up")
    lab.ip("address", "add", "10.99.0.2/24", "dev", "vpn0")
    lab.ip("link", "set", "vpn0", "up")
    lab.ip("route", "add", "default", "dev", "vpn0")
    wait_for_heartbeat(panel)
    assert panel.state()["pings"]["lastIp"] == lab.computer_address, "the heartbeat names the VPN's address"
    expect_touches_work(lab, panel, 83, 731)
    companion.expect_alive()


def test_a_touch_port_that_was_taken_works_once_it_is_free(lab):
    with socket.socket(socket.AF_INET, socket.SOCK_DGRAM) as holder:
        holder.bind(("0.0.0.0", 41863))
        panel = lab.start_panel()
        companion = lab.start_companion(panel)
        companion.pair(panel)
        companion.start_casting()
        wait_until(lambda: panel.ping_times(), "the heartbeat", 8)
        companion.expect_alive()
        companion.stop_casting()
    companion.start_casting()
    wait_until(lambda: panel.touch_enabled_at(), "the panel is asked for touches")
    expect_touches_work(lab, panel, 83, 731)
    companion.expect_alive()


def test_without_a_free_descriptor_a_session_goes_on_and_recovers(lab):
    panel, companion = cast(lab)
    limits = resource.prlimit(companion.process.pid, resource.RLIMIT_NOFILE)
    resource.prlimit(companion.process.pid, resource.RLIMIT_NOFILE, (3, limits[1]))
    time.sleep(5)  # a heartbeat falls into it
    companion.expect_alive()
    expect_touches_work(lab, panel, 83, 731)
    resource.prlimit(companion.process.pid, resource.RLIMIT_NOFILE, limits)
    wait_for_heartbeat(panel)
    assert companion.is_casting(), "it ended the session"
    companion.stop_casting()
    wait_until(lambda: panel.touch_enabled_at() is None, "the panel is told to stop")


def test_closed_standard_streams_change_nothing(lab):
    for stream in (0, 1, 2):
        panel = lab.start_panel()
        told = [] if lab.has_mdns else ["--panel", panel.service_name]
        process = lab.processes.start(
            ["sh", "-c", f'exec "$@" {stream}{"<" if stream == 0 else ">"}&-', "sh", lab.programs / "panel-companion",
             "--no-restart", *told], name="panel-companion")
        from harness.accessibility import Program
        window = Program("Panel Companion")
        window.find(name="Devices")
        panel.process.end()
        process.send(signal.SIGTERM)
        assert process.wait(5) == 0, f"with stream {stream} closed it ended with status {process.status()}"


def test_a_panel_that_is_killed_and_started_again_is_listed_again(lab):
    needs_mdns(lab)
    panel = lab.start_panel()
    companion = lab.start_companion(panel)
    companion.wait_for_row(panel.name)
    for pause in (0, 0.2, 0.9):
        panel.process.send(signal.SIGKILL)
        panel.process.end()
        time.sleep(pause)
        panel = lab.start_panel()
        time.sleep(2.5)  # a daemon drops what has said goodbye a second later
        companion.wait_for_row(panel.name)
    companion.pair(panel)


ODDITIES = (  # of an environment, in the shell's words
    "unset HOME", "HOME=/proc/1", "HOME=''", "LC_ALL=xx_YY.KOI8-Q", "LANGUAGE=xx:en_XX", "TZ=Nowhere/At-All", "TZ=:/dev/zero",
    "PATH=''", "unset XDG_RUNTIME_DIR", "XDG_RUNTIME_DIR=/proc/1", "TMPDIR=/nonexistent", "QT_STYLE_OVERRIDE=brushed-steel",
    "XDG_DATA_DIRS=''", "XDG_CONFIG_HOME=/dev/null")
ODD_PANEL = f"Meridian 65|{'long ' * 20_000}|0A1F07FE"


def test_odd_environments_change_nothing(lab):
    """Each is met once alone or with others, in an order by a seed, and every second time the command line is very long."""
    chance = random.Random(31)
    oddities = chance.sample(ODDITIES, len(ODDITIES))
    panel = lab.start_panel()
    program = lab.folder / "odd"
    while oddities:
        mixture = [oddities.pop() for _ in range(min(chance.randint(1, 4), len(oddities)))]
        program.write_text("\n".join(["#!/bin/sh", "set -a", f"TMPDIR='{lab.folder}'", *mixture,
                                      f'exec {lab.programs}/panel-companion "$@"', ""]), encoding="ascii")
        program.chmod(0o755)
        told = ["--panel", panel.service_name] + ["--panel", ODD_PANEL] * chance.randint(0, 1)
        try:
            companion = Companion(lab.processes, lab.desktop, program, told)
            companion.pair(panel)
            companion.start_casting()
            wait_until(lambda: panel.touch_enabled_at() == lab.computer_address, "the panel is asked for touches")
            expect_touches_work(lab, panel, 83, 731)
            companion.stop_casting()
            companion.process.send(signal.SIGTERM)
            assert companion.process.wait(5) == 0, f"it ended with status {companion.process.status()}"
        except (AssertionError, Failure) as failure:
            raise Failure(f"with {mixture}: {failure}") from None


def expect_alert_outlives(lab, fault):
    """`fault` gets the panel, and happens while the alert about the end of a session is open."""
    panel, companion = cast(lab)
    companion.window.press("Cast")
    companion.window.find("alert")
    fault(panel)
    companion.window.dismiss_alert()
    assert not companion.is_casting(), "casting is on"
    if not panel.process.running():
        panel = lab.start_panel()
    companion.start_casting()
    wait_until(lambda: panel.touch_enabled_at() == lab.computer_address, "the panel is asked for touches", 20)
    expect_touches_work(lab, panel, 83, 731)
    companion.expect_alive()


def test_an_alert_is_answered_as_usual_though_the_panel_died_meanwhile(lab):
    def die(panel):
        panel.process.send(signal.SIGKILL)
        panel.process.end()
    expect_alert_outlives(lab, die)


def test_an_alert_is_answered_as_usual_though_the_cable_was_pulled_meanwhile(lab):
    needs_two_hosts(lab)

    def pull(_):
        lab.plug(False)
        time.sleep(1)
        lab.plug(True)
    expect_alert_outlives(lab, pull)


def test_an_alert_is_answered_as_usual_though_200_panels_came_and_went_meanwhile(lab):
    needs_mdns(lab)

    def flood(_):
        with Announcer(lab.panel_bus) as announcer:
            announcer.announce(*(f"Meridian 65|Room {number}|0A20{number:04X}" for number in range(200)))
            time.sleep(1)
    expect_alert_outlives(lab, flood)


def test_an_alert_is_answered_as_usual_though_touches_flooded_meanwhile(lab):
    def flood(_):
        sender = lab.processes.start([sys.executable, HERE / "flood.py", lab.computer_address], name="flood",
                                     namespace=lab.panel_network)
        time.sleep(3)
        sender.end()
    expect_alert_outlives(lab, flood)


def test_an_alert_is_answered_as_usual_though_the_mdns_daemon_restarted_meanwhile(lab):
    needs_mdns(lab)

    def restart(_):
        lab.avahi.stop()
        time.sleep(0.5)
        lab.avahi.start()
    expect_alert_outlives(lab, restart)


def test_25_file_dialogs_keep_less_than_4_mib(lab):
    panel = lab.start_panel()
    companion = lab.start_companion(panel)
    companion.pair(panel)
    grown = []
    for _ in range(26):
        companion.window.press("Upload a file")
        companion.window.find("dialog|file chooser", "Upload a file")
        lab.desktop.key("Escape")
        companion.window.gone("dialog|file chooser", "Upload a file")
        grown.append(companion.memory())
    kept = grown[-1] - grown[0]
    print(f"25 more dialogs keep {kept / 2**20:.1f} MiB")
    assert kept < 4 * 2**20, f"25 more dialogs keep {kept / 2**20:.1f} MiB"
