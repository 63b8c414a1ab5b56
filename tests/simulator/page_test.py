#!/usr/bin/python3
"""The simulated panel's page in a headless Chromium, worked by pointers and keys. Tells its results in the Test Anything
Protocol; an argument is a regular expression for names of tests."""

import argparse
import contextlib
import http.server
import math
import os
import pathlib
import re
import socket
import struct
import sys
import threading
import time
import urllib.request
import zlib

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[2] / "tools"))
from harness import network  # noqa: E402
from harness.browser import Browser, keys, pointer  # noqa: E402
from harness.companion import Companion  # noqa: E402
from harness.desktop import Desktop  # noqa: E402
from harness.panel import RANGE, Panel  # noqa: E402
from harness.processes import Failure, Processes, wait_until  # noqa: E402
from harness.report import Report, Skip  # noqa: E402

PHONE, TABLET, COMPUTER = (390, 844), (1024, 768), (1280, 800)
PATH = [(0.11, 0.83), (0.17, 0.71), (0.29, 0.64), (0.43, 0.31), (0.61, 0.37), (0.78, 0.12), (0.93, 0.57)]

CONTRAST = """
const channel = (c) => { c /= 255; return c <= 0.04045 ? c / 12.92 : ((c + 0.055) / 1.055) ** 2.4; };
const light = ([r, g, b]) => 0.2126 * channel(r) + 0.7152 * channel(g) + 0.0722 * channel(b);
const parse = (text) => text.match(/[\\d.]+/g).map(Number);
const ground = (element) => {
  for (let e = element; e; e = e.parentElement) {
    const color = parse(getComputedStyle(e).backgroundColor);
    if (color.length < 4 || color[3] === 1) return color;
  }
  return [255, 255, 255];
};
const poor = [];
for (const e of document.body.querySelectorAll("*")) {
  const hasText = [...e.childNodes].some((n) => n.nodeType === 3 && n.data.trim());
  if (!hasText || !e.checkVisibility()) continue;
  const [a, b] = [light(parse(getComputedStyle(e).color)), light(ground(e))];
  const ratio = (Math.max(a, b) + 0.05) / (Math.min(a, b) + 0.05);
  if (ratio < 4.5) poor.push(`${e.tagName} "${e.textContent.trim().slice(0, 30)}" ${ratio.toFixed(2)}`);
}
return poor;
"""


def expect(condition, problem):
    if not condition:
        raise Failure(problem)


def png(width, height):
    """A picture with a colour of its own in every corner."""
    def chunk(kind, data):
        return struct.pack(">I", len(data)) + kind + data + struct.pack(">I", zlib.crc32(kind + data))
    rows = b"".join(b"\0" + b"".join(bytes((52 + 160 * x // width, 73 + 120 * y // height, 94)) for x in range(width))
                    for y in range(height))
    return b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", struct.pack(">IIBBBBB", width, height, 8, 2, 0, 0, 0)) \
        + chunk(b"IDAT", zlib.compress(rows, 9)) + chunk(b"IEND", b"")


TESTS = []


def test(function):
    """Marks a test; they are played in the order in which they stand here."""
    TESTS.append(function)
    return function


class Receiver:
    """The computer that touches go to: (word, x, y) of each datagram."""

    def __init__(self):
        self._socket = socket.socket(socket.AF_INET, socket.SOCK_DGRAM)
        self._socket.setsockopt(socket.SOL_SOCKET, socket.SO_RCVBUF, 1 << 20)
        self._socket.bind(("127.0.0.1", 0))
        self.port = self._socket.getsockname()[1]

    def touch(self, timeout=5.0):
        self._socket.settimeout(timeout)
        try:
            word, x, y, _time = self._socket.recv(65536).decode().split(",")
        except socket.timeout:
            return None
        return word, int(x), int(y)

    def stroke(self):
        """All up to the next UP."""
        touches = []
        while not touches or touches[-1][0] != "UP":
            touch = self.touch()
            if touch is None:
                raise Failure(f"no UP came, only {touches}")
            touches.append(touch)
        return touches

    def expect_silence(self, seconds=0.4):
        touch = self.touch(seconds)
        if touch is not None:
            raise Failure(f"{touch} came though nothing should have")


class PageTests:
    def __init__(self, programs, folder):
        network.loopback_up()
        self.programs, self.folder = programs, folder
        self.processes = Processes(folder)
        self.receiver = Receiver()
        uploads = folder / "uploads"
        self.panel = Panel(self.processes, programs / "panel-simulator", name="Room 204", arguments=[
            "--no-announce", "--uploads", uploads, "--touch-port", self.receiver.port])
        self.area = None
        self.address = f"http://{self.panel.address}:5000"
        self.browser = Browser(self.processes, folder / "profile")
        self.browser.open("about:blank")
        self.browser.console()  # of the page that a new browser shows

    # What the tests are made of.

    def get(self, path):
        with urllib.request.urlopen(self.address + path, timeout=10) as answer:
            return answer.read().decode()

    def turn_touchback(self, enable):
        self.get(f"/enableWifiTouchback?ip=127.0.0.1&enable={enable}&hidemenu=false&isHDMI=false")

    def upload(self, name, data):
        line = b"--Boundary-7F000001"
        body = line + f'\r\nContent-Disposition: form-data; name="my-file"; filename="{name}"\r\n'.encode() \
            + b"Content-Type: image/png\r\n\r\n" + data + b"\r\n" + line + b"--\r\n"
        request = urllib.request.Request(f"http://{self.panel.address}:5505/uploadfile", data=body, headers={
            "Content-Type": "multipart/form-data; boundary=Boundary-7F000001", "srcfilename": name.encode().decode("latin-1"),  # urllib's way to let UTF-8 through
            "filetype": "image/png"})
        urllib.request.urlopen(request, timeout=10).close()

    def open_page(self, size=COMPUTER):
        self.turn_touchback("true")
        self.browser.resize(*size)
        self.browser.open(self.address + "/")
        wait_until(lambda: self.browser.find("#touchback").text == "on (cast)", "the state on the page")
        self.browser.find("#surface").scroll_to()

    def places(self, path):
        """Points of the surface as it is now, in whole pixels of the window."""
        self.area = left, top, width, height = self.browser.find("#surface").area()
        return [(round(left + x * width), round(top + y * height)) for x, y in path]

    def expected(self, places):
        left, top, width, height = self.area
        return [((x - left) / width * RANGE, (y - top) / height * RANGE) for x, y in places]

    def expect_touches(self, touches, words, places):
        expect([touch[0] for touch in touches] == words, f"{touches} came, not {words}")
        width, height = self.area[2:]
        for (_word, x, y), (right_x, right_y) in zip(touches, self.expected(places)):
            # A touch has a contact area; browsers give its middle to within half a pixel.
            expect(abs(x - right_x) <= 1 + RANGE / width / 2 and abs(y - right_y) <= 1 + RANGE / height / 2,
                   f"{x},{y} came for {right_x:.0f},{right_y:.0f}")

    def draw(self, kind, places):
        first, *others = places
        self.browser.act(pointer(kind, [first, "down", *others, "up"]))

    def draw_and_compare(self, kind):
        self.open_page()
        places = self.places(PATH)
        self.draw(kind, places)
        touches = self.receiver.stroke()
        self.expect_touches(touches, ["DOWN"] + ["MOVE"] * (len(PATH) - 1) + ["UP"], places + places[-1:])
        self.receiver.expect_silence(0.1)
        return " ".join(f"{word},{x},{y}" for word, x, y in touches)

    @contextlib.contextmanager
    def conditions(self, **changed):
        network_is = {"offline": False, "latency": 0, "downloadThroughput": -1, "uploadThroughput": -1}
        self.browser.command("Network.enable")
        self.browser.command("Network.emulateNetworkConditions", **{**network_is, **changed})
        try:
            yield
        finally:
            self.browser.command("Network.emulateNetworkConditions", **network_is)

    # The tests, in this order.

    @test
    def mouse_path_arrives_in_order(self):
        return self.draw_and_compare("mouse")

    @test
    def finger_path_arrives_in_order(self):
        return self.draw_and_compare("touch")

    @test
    def pen_path_arrives_in_order(self):
        return self.draw_and_compare("pen")

    @test
    def corners_are_0_and_32767(self):
        self.open_page()
        self.draw("mouse", self.places([(0.5, 0.5), (-0.01, -0.01), (1.01, 1.01)]))
        touches = self.receiver.stroke()
        expect([touch[1:] for touch in touches[1:]] == [(0, 0), (RANGE, RANGE), (RANGE, RANGE)], f"{touches} came")

    @test
    def second_finger_counts_for_nothing(self):
        self.open_page()
        one = self.places([(0.2, 0.3), (0.3, 0.4)])
        two = self.places([(0.7, 0.7), (0.8, 0.6)])
        self.browser.act(pointer("touch", [one[0], "down", 50, 50, one[1], "up"], "one"),
                         pointer("touch", [two[0], 50, "down", two[1], 50, "up"], "two"))
        self.expect_touches(self.receiver.stroke(), ["DOWN", "MOVE", "UP"], [*one, one[1]])
        self.receiver.expect_silence()

    @test
    def right_button_is_no_finger(self):
        self.open_page()
        place = self.places([(0.5, 0.5)])[0]
        source = pointer("mouse", [place, "down", "up"])
        for action in source["actions"][1:]:
            action["button"] = 2
        self.browser.act(source)
        self.receiver.expect_silence()

    @test
    def coalesced_moves_are_kept(self):
        self.open_page()
        places = self.places([(0.1 + 0.011 * i, 0.5) for i in range(60)])
        self.browser.run("surface.addEventListener('pointerdown', (e) => { window.pointerIs = e.pointerId; });")
        self.browser.act(pointer("mouse", [places[0], "down"]))
        self.browser.run("""
            const move = ([clientX, clientY], more) =>
              new PointerEvent("pointermove", { pointerId: window.pointerIs, clientX, clientY, buttons: 1, bubbles: true,
                ...more });
            surface.dispatchEvent(move(arguments[0].at(-1), { coalescedEvents: arguments[0].map((p) => move(p)) }));
            """, places[1:])
        self.browser.act(pointer("mouse", ["up"]))  # which is still where it was
        self.expect_touches(self.receiver.stroke(), ["DOWN"] + ["MOVE"] * 59 + ["UP"], places + places[:1])

    @test
    def page_from_another_host_tells_what_the_browser_keeps_from_it(self):
        """An address that is not of the loopback is what a tablet opens; here it belongs to the loopback's interface."""
        self.open_page()
        expect(not self.browser.find("#moves-hint").is_shown(), "it is told at the loopback, too")
        address = "10.31.9.7"
        if os.environ.get("PANEL_COMPANION_ISOLATION", "none") == "none":
            raise Skip(network.WHY_NOT_ISOLATED)
        self.processes.run(["ip", "address", "add", f"{address}/32", "dev", "lo"])
        panel = Panel(self.processes, self.programs / "panel-simulator", address=address, name="Far",
                      arguments=["--no-announce", "--touch-port", self.receiver.port])
        self.browser.open(f"http://{address}:5000/enableWifiTouchback?ip=127.0.0.1&enable=true&hidemenu=false&isHDMI=false")
        self.browser.open(f"http://{address}:5000/")
        wait_until(lambda: self.browser.find("#touchback").text == "on (cast)", "the state on the page")
        expect(not self.browser.run("return isSecureContext"), "the browser takes the page for a secure one")
        expect("one place a frame" in self.browser.find("#moves-hint").text, "it is not told")
        self.browser.find("#surface").scroll_to()
        places = self.places(PATH)
        self.draw("touch", places)
        self.expect_touches(self.receiver.stroke(), ["DOWN"] + ["MOVE"] * (len(PATH) - 1) + ["UP"], places + places[-1:])
        panel.process.end()

    @test
    def refusals_stay_until_the_next_stroke(self):
        self.open_page()
        self.turn_touchback("false")
        wait_until(lambda: self.browser.find("#touchback").text == "off", "touchback off on the page")
        self.draw("mouse", self.places(PATH[:2]))
        report = self.browser.find("#surface-report")
        wait_until(lambda: report.text.startswith("Not sent: "), "the refusal")
        refusal = report.text
        asked = self.states_asked_for()
        wait_until(lambda: self.states_asked_for() >= asked + 2, "two looks at the panel's state")
        expect(report.text == refusal, f"it was followed by {report.text!r}")
        self.turn_touchback("true")
        wait_until(lambda: self.browser.find("#touchback").text == "on (cast)", "touchback on on the page")
        self.draw("mouse", self.places(PATH[:2]))
        self.receiver.stroke()
        expect(report.text == "", f"it still says {report.text!r}")
        self.browser.console()  # tells of the refusal, too
        return refusal

    def states_asked_for(self):
        return self.browser.run("return performance.getEntriesByName(location.origin + '/simulator/state').length")

    @test
    def slow_network_keeps_order_and_loses_nothing(self):
        self.open_page()
        places = self.places([(0.1 + 0.011 * i, 0.2 + 0.3 * (i % 3)) for i in range(70)])
        self.browser.requested()
        with self.conditions(latency=150):
            self.draw("mouse", places)
            touches = self.receiver.stroke()
        self.expect_touches(touches, ["DOWN"] + ["MOVE"] * 69 + ["UP"], places + places[-1:])
        requests = len([address for address in self.browser.requested() if "/simulator/stroke" in address])
        expect(requests < 40, f"{requests} requests for 71 touches: the moves in between do not travel together")
        return f"71 touches in {requests} requests"

    @test
    def network_that_was_away_delivers_once(self):
        self.open_page()
        places = self.places(PATH[:3])
        self.browser.act(pointer("mouse", [places[0], "down"]))
        expect(self.receiver.touch()[0] == "DOWN", "no DOWN came")
        with self.conditions(offline=True):
            self.browser.act(pointer("mouse", [places[1], places[2], "up"]))
            self.receiver.expect_silence(1)
        self.expect_touches(self.receiver.stroke(), ["MOVE", "MOVE", "UP"], [*places[1:], places[2]])
        self.receiver.expect_silence()
        self.browser.console()  # it told of the requests that failed

    @test
    def page_that_goes_away_lifts_its_finger(self):
        self.open_page()
        places = self.places(PATH[:2])
        self.browser.act(pointer("mouse", [places[0], "down", places[1]]))
        self.browser.open("about:blank")
        self.expect_touches(self.receiver.stroke(), ["DOWN", "MOVE", "UP"], [*places, places[1]])
        self.browser.let_go()

    @test
    def capture_that_the_browser_takes_away_lifts_no_finger(self):
        self.open_page()
        places = self.places(PATH[:3])
        self.browser.run("surface.addEventListener('pointerdown', (e) => { window.pointerIs = e.pointerId; });")
        self.browser.act(pointer("mouse", [places[0], "down", places[1]]))
        self.browser.run("surface.releasePointerCapture(window.pointerIs)")
        self.browser.act(pointer("mouse", [places[2], "up"]))
        self.expect_touches(self.receiver.stroke(), ["DOWN", "MOVE", "MOVE", "UP"], [*places, places[2]])
        self.receiver.expect_silence(0.1)

    @test
    def pointer_that_leaves_the_surface_stays_captured(self):
        self.open_page(TABLET)
        left, top, width, height = self.browser.find("#surface").area()
        inside, outside = (round(left + width / 3), round(top + height / 3)), (round(left + width / 2), 5)
        self.browser.run("window.seenBy = []; addEventListener('pointermove', (e) => seenBy.push(e.target.id));")
        self.draw("mouse", [inside, outside])
        touches = self.receiver.stroke()
        seen_by = self.browser.run("return window.seenBy")
        expect(seen_by[-1:] == ["surface"], f"the last move went to {seen_by[-1:]}")
        expect([t[0] for t in touches] == ["DOWN", "MOVE", "UP"] and touches[1][2] == 0, f"{touches} came")

    @test
    def finger_does_not_scroll_the_page(self):
        self.open_page(PHONE)
        self.draw("touch", self.places([(0.5, 0.9), (0.5, 0.6), (0.5, 0.3), (0.5, 0.1)]))
        expect(len(self.receiver.stroke()) == 5, "the finger's moves did not all come")
        expect(self.browser.run("return scrollY") == 0, "the page was scrolled")

    @test
    def keyboard_is_a_finger(self):
        self.open_page()
        self.browser.find("#surface").focus()
        right, down, shift = "\ue014", "\ue015", "\ue008"
        self.browser.act(keys([f"+{right}", f"-{right}", "+ ", f"+{right}", f"-{right}", f"+{shift}", f"+{down}",
                               f"-{down}", f"-{shift}", "- "]))
        touches = self.receiver.stroke()
        middle = (RANGE + 1) // 2
        expect(touches == [("DOWN", middle + 819, middle), ("MOVE", middle + 1638, middle),
                           ("MOVE", middle + 1638, middle + 82), ("UP", middle + 1638, middle + 82)], f"{touches} came")

    @test
    def state_is_told(self):
        self.panel.reply("heartbeat ok")
        self.get("/pingServerWithIP?ip=192.0.2.7&msg=ping")
        self.open_page()
        wait_until(lambda: self.browser.find("#pings").text.startswith("1, last "), "the heartbeat on the page")
        self.turn_touchback("false")
        wait_until(lambda: self.browser.find("#touchback").text == "off", "touchback off on the page")
        expect("Nobody has asked for touches" in self.browser.find("#surface-message").text, "no hint on the surface")
        self.draw("mouse", self.places(PATH[:2]))
        self.receiver.expect_silence()
        wait_until(lambda: "409" in " ".join(self.browser.console()), "the panel's refusal")
        seen = self.browser.find("dl").text.replace("\n", " ")
        expect("Paired computer 127.0.0.1" in seen, f"the state says {seen}")
        return seen

    @test
    def fault_buttons_choose_the_answers(self):
        self.open_page()
        buttons = self.browser.find_all("#faults button")
        expect(len(buttons) >= 20, f"only {len(buttons)} buttons")
        for button in buttons:
            button.click()
            wait_until(lambda b=button: b.attribute("aria-pressed") == "true", f"{button.label} pressed")
        reply = self.panel.state()["reply"]
        expect(reply == {"heartbeat": "cut", "touchback": "close", "trigger": "close", "upload": "cut"},
               f"the panel answers {reply}")
        pressed = self.browser.find_all("#faults button[aria-pressed=true]")
        expect(len(pressed) == 4, f"{len(pressed)} buttons look pressed")
        for button in self.browser.find_all("#faults button[data-mode=ok]"):
            button.click()
        wait_until(lambda: set(self.panel.state()["reply"].values()) == {"ok"}, "every answer OK again")

    @test
    def uploaded_picture_is_shown(self):
        self.open_page()
        self.upload("Größe & <b>.png", png(160, 90))
        image = wait_until(lambda: self.browser.find_all("#uploads img"), "the picture")[0]
        wait_until(lambda: self.browser.run("return document.querySelector('#uploads img').naturalWidth") == 160,
                   "the picture loaded")
        expect(image.label == "The picture Größe & <b>.png", f"it is called {image.label}")
        expect("Größe & <b>.png" in self.browser.find("#uploads li").text, "its name is not shown")

    @test
    def upload_that_is_no_picture_is_not_shown(self):
        self.open_page()
        before = len(self.browser.find_all("#uploads img"))
        self.upload("evil.png", b"<!DOCTYPE html><script>document.title = 'taken over'</script>")
        wait_until(lambda: "evil.png" in self.browser.find("#uploads").text, "the upload")
        expect(len(self.browser.find_all("#uploads img")) == before, "it is shown as a picture")
        expect(not self.browser.console(), "the page asked for it")
        # As a user who types the address would come to it.
        self.browser.open(self.address + "/simulator/uploads/evil.png")
        expect(self.browser.run("return document.title") != "taken over", "it ran as a page")
        self.browser.console()

    @test
    def other_pages_cannot_work_the_panel(self):
        server = http.server.ThreadingHTTPServer(("127.0.0.1", 0), SilentHandler)
        threading.Thread(target=server.serve_forever, daemon=True).start()
        self.turn_touchback("true")
        self.browser.open(f"http://127.0.0.1:{server.server_port}/")
        sent = self.panel.state()["touchesSent"]
        for path in ("touch", "stroke?id=x&part=0"):
            self.browser.run_async("""
                const done = arguments[arguments.length - 1];
                fetch(arguments[0], { method: "POST", mode: "no-cors", body: "DOWN 1 2" }).then(done, done);
                """, f"{self.address}/simulator/{path}")
        self.receiver.expect_silence()
        expect(self.panel.state()["touchesSent"] == sent, "a touch was sent")
        read = self.browser.run_async("""
            const done = arguments[arguments.length - 1];
            fetch(arguments[0]).then((a) => a.text()).then(done, () => done(null));
            """, f"{self.address}/simulator/state")
        expect(read is None, "the state could be read")
        server.shutdown()
        self.browser.console()

    @test
    def page_needs_no_other_host(self):
        self.browser.requested()
        self.open_page()
        addresses = self.browser.requested()
        strangers = [address for address in addresses if not address.startswith(self.address + "/")]
        expect(addresses and not strangers, f"it asked for {strangers}")

    @test
    def everything_has_a_name(self):
        self.open_page()
        for node in self.browser.find_all("button, #surface, img, section, fieldset"):
            expect(not node.is_shown() or node.label, f"{node.area()} has no name")
        expect(self.browser.find("#surface").label == "Touch surface", "the surface is called something else")

    @test
    def texts_stand_out(self):
        for size in (PHONE, COMPUTER):
            self.open_page(size)
            time.sleep(0.5)  # colours come gradually
            poor = self.browser.run(CONTRAST)
            expect(not poor, f"below 4.5: {poor}")

    @test
    def focus_is_seen(self):
        self.open_page()
        seen = set()
        for _ in range(8):
            self.browser.act(keys(["+\ue004", "-\ue004"]))
            seen.add(tuple(self.browser.run("""
                const style = getComputedStyle(document.activeElement);
                return [document.activeElement.tagName, style.outlineStyle, style.outlineWidth];""")))
        expect(seen == {("BUTTON", "solid", "3px"), ("DIV", "solid", "3px")}, f"{seen}")

    @test
    def nothing_moves_for_who_wants_that(self):
        self.open_page()
        durations = "return [...new Set([...document.querySelectorAll('*')].flatMap((e) => " \
            "[getComputedStyle(e).transitionDuration, getComputedStyle(e).animationDuration]))].sort()"
        expect(self.browser.run(durations) != ["0s"], "there is nothing that could stand still")
        self.browser.command("Emulation.setEmulatedMedia",
                             features=[{"name": "prefers-reduced-motion", "value": "reduce"}])
        expect(self.browser.run(durations) == ["0s"], f"{self.browser.run(durations)}")
        self.browser.command("Emulation.setEmulatedMedia", features=[])

    @test
    def fits_a_phone_a_tablet_and_a_computer(self):
        for name, size in (("phone", PHONE), ("tablet", TABLET), ("computer", COMPUTER)):
            self.open_page(size)
            self.draw("mouse", self.places([(0.1 + 0.01 * i, 0.5 + 0.3 * math.sin(i / 5)) for i in range(80)]))
            self.receiver.stroke()
            wide = self.browser.run("return document.scrollingElement.scrollWidth")
            expect(wide <= size[0], f"{name}: {wide} pixels wide")
            left, top, width, height = self.browser.find("#surface").area()
            expect(left >= 0 and top >= 0 and left + width <= size[0] and top + height <= size[1],
                   f"{name}: the surface is not all on the screen")
            small = [b.label for b in self.browser.find_all("button") if b.is_shown() and b.area()[3] < 40]
            expect(not small, f"{name}: too small for a finger: {small}")
            self.browser.run("scrollTo(0, 0)")
            wait_until(lambda: self.browser.find("#connection").text == "Connected", "the connection")
            self.browser.screenshot(self.folder / f"{name}.png")

    @test
    def pointer_of_a_desktop_follows_the_path(self):
        desktop = Desktop(self.processes)
        # On its usual port, since the application listens on that one.
        panel = Panel(self.processes, self.programs / "panel-simulator", address="127.0.0.2", name="Chain",
                      arguments=["--no-announce"])
        companion = Companion(self.processes, desktop, self.programs / "panel-companion",
                              ["--panel", panel.service_name, "--interface", "lo"])
        companion.pair(panel)
        companion.start_casting()
        wait_until(panel.touch_enabled_at, "the panel is asked for touches")
        self.browser.resize(*COMPUTER)
        self.browser.open(f"http://{panel.address}:5000/")
        wait_until(lambda: self.browser.find("#touchback").text.startswith("on"), "touchback on the page")
        places = self.places(PATH)
        steps = [places[0], "down", 700]
        for place in places[1:]:
            steps += [place, 700]
        finger = threading.Thread(target=self.browser.act, args=(pointer("touch", [*steps, "up"]),))
        finger.start()
        followed = []
        for x, y in self.expected(places):
            self.expect_pointer(desktop, x / RANGE * desktop.width, y / RANGE * desktop.height)
            followed.append("{},{}".format(*desktop.pointer()))
        finger.join()
        wait_until(lambda: panel.state()["touchesSent"] == len(PATH) + 1, "the last touch")
        companion.stop_casting()
        companion.expect_alive()
        return "the pointer was at " + " ".join(followed)

    @staticmethod
    def expect_pointer(desktop, x, y):
        def is_near():
            at = desktop.pointer()
            return abs(at[0] - x) <= 1.5 and abs(at[1] - y) <= 1.5
        try:
            wait_until(is_near, "the pointer", 3)
        except Failure:
            raise Failure("the pointer is at {},{}, not {:.0f},{:.0f}".format(*desktop.pointer(), x, y)) from None


class SilentHandler(http.server.BaseHTTPRequestHandler):
    def do_GET(self):
        self.send_response(200)
        self.send_header("Content-Type", "text/html")
        self.end_headers()
        self.wfile.write(b"<!DOCTYPE html><link rel=icon href='data:,'><title>Somebody else</title>")

    def log_message(self, *_arguments):
        pass


def play(page, name, function, report):
    try:
        seen = function(page)
        # Of a text that a browser shows by itself, it asks for a picture.
        complaints = [line for line in page.browser.console() if "/favicon.ico - " not in line]
        expect(not complaints, f"the browser complains: {complaints}")
    except Skip as reason:
        report.skipped(name, reason)
    except Exception as problem:  # pylint: disable=broad-except  # whatever it is, the test has failed
        page.browser.screenshot(page.folder / f"{name.replace(' ', '-')}.png")
        page.browser.console()
        report.failed(name, problem if isinstance(problem, Failure) else repr(problem))
    else:
        report.passed(name, seen or "")


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--programs", required=True, type=pathlib.Path, help="the folder of the built programs")
    parser.add_argument("--output", required=True, type=pathlib.Path, help="for screenshots and logs")
    parser.add_argument("filter", nargs="?", default="")
    arguments = parser.parse_args()
    report = Report(as_tap=True)
    page = PageTests(arguments.programs, arguments.output)
    try:
        for function in TESTS:
            name = function.__name__.replace("_", " ")
            if re.search(arguments.filter, name):
                play(page, name, function, report)
        page.browser.quit()
    finally:
        page.processes.end()
    return report.end()


sys.exit(main())
