"""The simulated panel's page in a headless Chromium, driven by pointers and keys."""

import http.server
import math
import threading
import time

import pytest
from harness import network
from harness.browser import keys, pointer
from harness.companion import Companion
from harness.desktop import Desktop
from harness.panel import RANGE, Panel
from harness.processes import Failure, wait_until
from page import COMPUTER, PATH, PHONE, TABLET, png

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


class SilentHandler(http.server.BaseHTTPRequestHandler):
    def do_GET(self):
        self.send_response(200)
        self.send_header("Content-Type", "text/html")
        self.end_headers()
        self.wfile.write(b"<!DOCTYPE html><link rel=icon href='data:,'><title>Somebody else</title>")

    def log_message(self, *_arguments):
        pass


def expect_pointer(desktop, x, y):
    def is_near():
        at = desktop.pointer()
        return abs(at[0] - x) <= 1.5 and abs(at[1] - y) <= 1.5
    try:
        wait_until(is_near, "the pointer", 3)
    except Failure:
        raise Failure("the pointer is at {},{}, not {:.0f},{:.0f}".format(*desktop.pointer(), x, y)) from None


def test_mouse_path_arrives_in_order(page):
    print(page.draw_and_compare("mouse"))


def test_finger_path_arrives_in_order(page):
    print(page.draw_and_compare("touch"))


def test_pen_path_arrives_in_order(page):
    print(page.draw_and_compare("pen"))


def test_corners_are_0_and_32767(page):
    page.open_page()
    page.draw("mouse", page.places([(0.5, 0.5), (-0.01, -0.01), (1.01, 1.01)]))
    touches = page.receiver.stroke()
    assert [touch[1:] for touch in touches[1:]] == [(0, 0), (RANGE, RANGE), (RANGE, RANGE)], f"{touches} came"


def test_second_finger_counts_for_nothing(page):
    page.open_page()
    one = page.places([(0.2, 0.3), (0.3, 0.4)])
    two = page.places([(0.7, 0.7), (0.8, 0.6)])
    page.browser.act(pointer("touch", [one[0], "down", 50, 50, one[1], "up"], "one"),
                     pointer("touch", [two[0], 50, "down", two[1], 50, "up"], "two"))
    page.expect_touches(page.receiver.stroke(), ["DOWN", "MOVE", "UP"], [*one, one[1]])
    page.receiver.expect_silence()


def test_right_button_is_no_finger(page):
    page.open_page()
    place = page.places([(0.5, 0.5)])[0]
    source = pointer("mouse", [place, "down", "up"])
    for action in source["actions"][1:]:
        action["button"] = 2
    page.browser.act(source)
    page.receiver.expect_silence()


def test_coalesced_moves_are_kept(page):
    page.open_page()
    places = page.places([(0.1 + 0.011 * i, 0.5) for i in range(60)])
    page.browser.run("surface.addEventListener('pointerdown', (e) => { window.pointerIs = e.pointerId; });")
    page.browser.act(pointer("mouse", [places[0], "down"]))
    page.browser.run("""
        const move = ([clientX, clientY], more) =>
          new PointerEvent("pointermove", { pointerId: window.pointerIs, clientX, clientY, buttons: 1, bubbles: true,
            ...more });
        surface.dispatchEvent(move(arguments[0].at(-1), { coalescedEvents: arguments[0].map((p) => move(p)) }));
        """, places[1:])
    page.browser.act(pointer("mouse", ["up"]))  # which is still where it was
    page.expect_touches(page.receiver.stroke(), ["DOWN"] + ["MOVE"] * 59 + ["UP"], places + places[:1])


def test_page_from_another_host_tells_what_the_browser_keeps_from_it(page):
    """An address that is not of the loopback is what a tablet opens; here it belongs to the loopback's interface."""
    page.open_page()
    assert not page.browser.find("#moves-hint").is_shown(), "it is told at the loopback, too"
    address = "10.31.9.7"
    if network.WHY_NOT_ISOLATED:
        pytest.skip(network.WHY_NOT_ISOLATED)
    page.processes.run(["ip", "address", "add", f"{address}/32", "dev", "lo"])
    panel = Panel(page.processes, page.programs / "panel-simulator", address=address, name="Far",
                  arguments=["--no-announce", "--touch-port", page.receiver.port])
    page.browser.open(f"http://{address}:5000/enableWifiTouchback?ip=127.0.0.1&enable=true&hidemenu=false&isHDMI=false")
    page.browser.open(f"http://{address}:5000/")
    wait_until(lambda: page.browser.find("#touchback").text == "on (cast)", "the state on the page")
    assert not page.browser.run("return isSecureContext"), "the browser takes the page for a secure one"
    assert "one touch position per frame" in page.browser.find("#moves-hint").text, "the hint is missing"
    page.browser.find("#surface").scroll_to()
    places = page.places(PATH)
    page.draw("touch", places)
    page.expect_touches(page.receiver.stroke(), ["DOWN"] + ["MOVE"] * (len(PATH) - 1) + ["UP"], places + places[-1:])
    panel.process.end()


def test_refusals_stay_until_the_next_stroke(page):
    page.open_page()
    page.turn_touchback("false")
    wait_until(lambda: page.browser.find("#touchback").text == "off", "touchback off on the page")
    page.draw("mouse", page.places(PATH[:2]))
    report = page.browser.find("#surface-report")
    wait_until(lambda: report.text.startswith("Not sent: "), "the refusal")
    refusal = report.text
    asked = page.states_asked_for()
    wait_until(lambda: page.states_asked_for() >= asked + 2, "two looks at the panel's state")
    assert report.text == refusal, f"it was followed by {report.text!r}"
    page.turn_touchback("true")
    wait_until(lambda: page.browser.find("#touchback").text == "on (cast)", "touchback on on the page")
    page.draw("mouse", page.places(PATH[:2]))
    page.receiver.stroke()
    assert report.text == "", f"it still says {report.text!r}"
    page.browser.console()  # tells of the refusal, too
    print(refusal)


def test_slow_network_keeps_order_and_loses_nothing(page):
    page.open_page()
    places = page.places([(0.1 + 0.011 * i, 0.2 + 0.3 * (i % 3)) for i in range(70)])
    page.browser.requested()
    with page.conditions(latency=150):
        page.draw("mouse", places)
        touches = page.receiver.stroke()
    page.expect_touches(touches, ["DOWN"] + ["MOVE"] * 69 + ["UP"], places + places[-1:])
    requests = len([address for address in page.browser.requested() if "/simulator/stroke" in address])
    assert requests < 40, f"{requests} requests for 71 touches: the moves in between do not travel together"
    print(f"71 touches in {requests} requests")


def test_network_that_was_away_delivers_once(page):
    page.open_page()
    places = page.places(PATH[:3])
    page.browser.act(pointer("mouse", [places[0], "down"]))
    assert page.receiver.touch()[0] == "DOWN", "no DOWN came"
    with page.conditions(offline=True):
        page.browser.act(pointer("mouse", [places[1], places[2], "up"]))
        page.receiver.expect_silence(1)
    page.expect_touches(page.receiver.stroke(), ["MOVE", "MOVE", "UP"], [*places[1:], places[2]])
    page.receiver.expect_silence()
    page.browser.console()  # it told of the requests that failed


def test_page_that_goes_away_lifts_its_finger(page):
    page.open_page()
    places = page.places(PATH[:2])
    page.browser.act(pointer("mouse", [places[0], "down", places[1]]))
    page.browser.open("about:blank")
    page.expect_touches(page.receiver.stroke(), ["DOWN", "MOVE", "UP"], [*places, places[1]])
    page.browser.let_go()


def test_capture_that_the_browser_takes_away_lifts_no_finger(page):
    page.open_page()
    places = page.places(PATH[:3])
    page.browser.run("surface.addEventListener('pointerdown', (e) => { window.pointerIs = e.pointerId; });")
    page.browser.act(pointer("mouse", [places[0], "down", places[1]]))
    page.browser.run("surface.releasePointerCapture(window.pointerIs)")
    page.browser.act(pointer("mouse", [places[2], "up"]))
    page.expect_touches(page.receiver.stroke(), ["DOWN", "MOVE", "MOVE", "UP"], [*places, places[2]])
    page.receiver.expect_silence(0.1)


def test_pointer_that_leaves_the_surface_stays_captured(page):
    page.open_page(TABLET)
    left, top, width, height = page.browser.find("#surface").area()
    inside, outside = (round(left + width / 3), round(top + height / 3)), (round(left + width / 2), 5)
    page.browser.run("window.seenBy = []; addEventListener('pointermove', (e) => seenBy.push(e.target.id));")
    page.draw("mouse", [inside, outside])
    touches = page.receiver.stroke()
    seen_by = page.browser.run("return window.seenBy")
    assert seen_by[-1:] == ["surface"], f"the last move went to {seen_by[-1:]}"
    assert [t[0] for t in touches] == ["DOWN", "MOVE", "UP"] and touches[1][2] == 0, f"{touches} came"


def test_finger_does_not_scroll_the_page(page):
    page.open_page(PHONE)
    page.draw("touch", page.places([(0.5, 0.9), (0.5, 0.6), (0.5, 0.3), (0.5, 0.1)]))
    assert len(page.receiver.stroke()) == 5, "the finger's moves did not all come"
    assert page.browser.run("return scrollY") == 0, "the page was scrolled"


def test_keyboard_is_a_finger(page):
    page.open_page()
    page.browser.find("#surface").focus()
    right, down, shift = "\ue014", "\ue015", "\ue008"
    page.browser.act(keys([f"+{right}", f"-{right}", "+ ", f"+{right}", f"-{right}", f"+{shift}", f"+{down}",
                           f"-{down}", f"-{shift}", "- "]))
    touches = page.receiver.stroke()
    middle = (RANGE + 1) // 2
    assert (touches == [("DOWN", middle + 819, middle), ("MOVE", middle + 1638, middle),
                       ("MOVE", middle + 1638, middle + 82), ("UP", middle + 1638, middle + 82)]), f"{touches} came"


def test_state_is_told(page):
    page.panel.reply("heartbeat ok")
    page.get("/pingServerWithIP?ip=192.0.2.7&msg=ping")
    page.open_page()
    wait_until(lambda: page.browser.find("#pings").text.startswith("1, last "), "the heartbeat on the page")
    page.turn_touchback("false")
    wait_until(lambda: page.browser.find("#touchback").text == "off", "touchback off on the page")
    assert "Nobody has asked for touches" in page.browser.find("#surface-message").text, "no hint on the surface"
    page.draw("mouse", page.places(PATH[:2]))
    page.receiver.expect_silence()
    wait_until(lambda: "409" in " ".join(page.browser.console()), "the panel's refusal")
    seen = page.browser.find("dl").text.replace("\n", " ")
    assert "Paired computer 127.0.0.1" in seen, f"the state says {seen}"
    print(seen)


def test_fault_buttons_choose_the_answers(page):
    page.open_page()
    buttons = page.browser.find_all("#faults button")
    assert len(buttons) >= 20, f"only {len(buttons)} buttons"
    for button in buttons:
        button.click()
        wait_until(lambda b=button: b.attribute("aria-pressed") == "true", f"{button.label} pressed")
    reply = page.panel.state()["reply"]
    assert reply == {"heartbeat": "cut", "touchback": "close", "trigger": "close", "upload": "cut"}, \
        f"the panel answers {reply}"
    pressed = page.browser.find_all("#faults button[aria-pressed=true]")
    assert len(pressed) == 4, f"{len(pressed)} buttons look pressed"
    for button in page.browser.find_all("#faults button[data-mode=ok]"):
        button.click()
    wait_until(lambda: set(page.panel.state()["reply"].values()) == {"ok"}, "every answer OK again")


def test_uploaded_picture_is_shown(page):
    page.open_page()
    page.upload("Größe & <b>.png", png(160, 90))
    image = wait_until(lambda: page.browser.find_all("#uploads img"), "the picture")[0]
    wait_until(lambda: page.browser.run("return document.querySelector('#uploads img').naturalWidth") == 160,
               "the picture loaded")
    assert image.label == "The picture Größe & <b>.png", f"it is called {image.label}"
    assert "Größe & <b>.png" in page.browser.find("#uploads li").text, "its name is not shown"


def test_upload_that_is_no_picture_is_not_shown(page):
    page.open_page()
    before = len(page.browser.find_all("#uploads img"))
    page.upload("evil.png", b"<!DOCTYPE html><script>document.title = 'taken over'</script>")
    wait_until(lambda: "evil.png" in page.browser.find("#uploads").text, "the upload")
    assert len(page.browser.find_all("#uploads img")) == before, "it is shown as a picture"
    assert not page.browser.console(), "the page asked for it"
    # As a user who types the address would come to it.
    page.browser.open(page.address + "/simulator/uploads/evil.png")
    assert page.browser.run("return document.title") != "taken over", "it ran as a page"
    page.browser.console()


def test_other_pages_cannot_work_the_panel(page):
    server = http.server.ThreadingHTTPServer(("127.0.0.1", 0), SilentHandler)
    threading.Thread(target=server.serve_forever, daemon=True).start()
    page.turn_touchback("true")
    page.browser.open(f"http://127.0.0.1:{server.server_port}/")
    sent = page.panel.state()["touchesSent"]
    for path in ("touch", "stroke?id=x&part=0"):
        page.browser.run_async("""
            const done = arguments[arguments.length - 1];
            fetch(arguments[0], { method: "POST", mode: "no-cors", body: "DOWN 1 2" }).then(done, done);
            """, f"{page.address}/simulator/{path}")
    page.receiver.expect_silence()
    assert page.panel.state()["touchesSent"] == sent, "a touch was sent"
    read = page.browser.run_async("""
        const done = arguments[arguments.length - 1];
        fetch(arguments[0]).then((a) => a.text()).then(done, () => done(null));
        """, f"{page.address}/simulator/state")
    assert read is None, "the state could be read"
    server.shutdown()
    page.browser.console()


def test_page_needs_no_other_host(page):
    page.browser.requested()
    page.open_page()
    addresses = page.browser.requested()
    strangers = [address for address in addresses if not address.startswith(page.address + "/")]
    assert addresses and not strangers, f"it asked for {strangers}"


def test_everything_has_a_name(page):
    page.open_page()
    for node in page.browser.find_all("button, #surface, img, section, fieldset"):
        assert not node.is_shown() or node.label, f"{node.area()} has no name"
    assert page.browser.find("#surface").label == "Touch surface", "the surface is called something else"


def test_texts_stand_out(page):
    for size in (PHONE, COMPUTER):
        page.open_page(size)
        time.sleep(0.5)  # colours come gradually
        poor = page.browser.run(CONTRAST)
        assert not poor, f"below 4.5: {poor}"


def test_focus_is_seen(page):
    page.open_page()
    seen = set()
    for _ in range(8):
        page.browser.act(keys(["+\ue004", "-\ue004"]))
        seen.add(tuple(page.browser.run("""
            const style = getComputedStyle(document.activeElement);
            return [document.activeElement.tagName, style.outlineStyle, style.outlineWidth];""")))
    assert seen == {("BUTTON", "solid", "3px"), ("DIV", "solid", "3px")}, f"{seen}"


def test_nothing_moves_for_who_wants_that(page):
    page.open_page()
    durations = "return [...new Set([...document.querySelectorAll('*')].flatMap((e) => " \
        "[getComputedStyle(e).transitionDuration, getComputedStyle(e).animationDuration]))].sort()"
    assert page.browser.run(durations) != ["0s"], "there is nothing that could stand still"
    page.browser.command("Emulation.setEmulatedMedia",
                         features=[{"name": "prefers-reduced-motion", "value": "reduce"}])
    assert page.browser.run(durations) == ["0s"], f"{page.browser.run(durations)}"
    page.browser.command("Emulation.setEmulatedMedia", features=[])


def test_fits_a_phone_a_tablet_and_a_computer(page):
    for name, size in (("phone", PHONE), ("tablet", TABLET), ("computer", COMPUTER)):
        page.open_page(size)
        page.draw("mouse", page.places([(0.1 + 0.01 * i, 0.5 + 0.3 * math.sin(i / 5)) for i in range(80)]))
        page.receiver.stroke()
        wide = page.browser.run("return document.scrollingElement.scrollWidth")
        assert wide <= size[0], f"{name}: {wide} pixels wide"
        left, top, width, height = page.browser.find("#surface").area()
        assert left >= 0 and top >= 0 and left + width <= size[0] and top + height <= size[1], \
            f"{name}: the surface is not all on the screen"
        small = [b.label for b in page.browser.find_all("button") if b.is_shown() and b.area()[3] < 40]
        assert not small, f"{name}: too small for a finger: {small}"
        page.browser.run("scrollTo(0, 0)")
        wait_until(lambda: page.browser.find("#connection").text == "Connected", "the connection")
        page.browser.screenshot(page.folder / f"{name}.png")


def test_pointer_of_a_desktop_follows_the_path(page):
    desktop = Desktop(page.processes)
    # On its usual port, since the application listens on that one.
    panel = Panel(page.processes, page.programs / "panel-simulator", address="127.0.0.2", name="Chain",
                  arguments=["--no-announce"])
    companion = Companion(page.processes, desktop, page.programs / "panel-companion",
                          ["--panel", panel.service_name, "--interface", "lo"])
    companion.pair(panel)
    companion.start_casting()
    wait_until(panel.touch_enabled_at, "the panel is asked for touches")
    page.browser.resize(*COMPUTER)
    page.browser.open(f"http://{panel.address}:5000/")
    wait_until(lambda: page.browser.find("#touchback").text.startswith("on"), "touchback on the page")
    places = page.places(PATH)
    steps = [places[0], "down", 700]
    for place in places[1:]:
        steps += [place, 700]
    finger = threading.Thread(target=page.browser.act, args=(pointer("touch", [*steps, "up"]),))
    finger.start()
    followed = []
    for x, y in page.expected(places):
        expect_pointer(desktop, x / RANGE * desktop.width, y / RANGE * desktop.height)
        followed.append("{},{}".format(*desktop.pointer()))
    finger.join()
    wait_until(lambda: panel.state()["touchesSent"] == len(PATH) + 1, "the last touch")
    companion.stop_casting()
    companion.expect_alive()
    print("the pointer was at " + " ".join(followed))
