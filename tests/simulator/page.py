"""The simulated panel, its page in a browser, and the computer that its touches go to."""

import contextlib
import socket
import struct
import urllib.request
import zlib

from harness import network
from harness.browser import Browser, pointer
from harness.panel import RANGE, Panel
from harness.processes import Failure, Processes, wait_until

PHONE, TABLET, COMPUTER = (390, 844), (1024, 768), (1280, 800)
PATH = [(0.11, 0.83), (0.17, 0.71), (0.29, 0.64), (0.43, 0.31), (0.61, 0.37), (0.78, 0.12), (0.93, 0.57)]


def png(width, height):
    """A picture with a colour of its own in every corner."""
    def chunk(kind, data):
        return struct.pack(">I", len(data)) + kind + data + struct.pack(">I", zlib.crc32(kind + data))
    rows = b"".join(b"\0" + b"".join(bytes((52 + 160 * x // width, 73 + 120 * y // height, 94)) for x in range(width))
                    for y in range(height))
    return b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", struct.pack(">IIBBBBB", width, height, 8, 2, 0, 0, 0)) \
        + chunk(b"IDAT", zlib.compress(rows, 9)) + chunk(b"IEND", b"")


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


class Page:
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
            "Content-Type": "multipart/form-data; boundary=Boundary-7F000001",
            "srcfilename": name.encode().decode("latin-1"),  # urllib's way to let UTF-8 through
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
        assert [touch[0] for touch in touches] == words, f"{touches} came, not {words}"
        width, height = self.area[2:]
        for (_word, x, y), (right_x, right_y) in zip(touches, self.expected(places)):
            # A touch has a contact area; browsers give its middle to within half a pixel.
            assert abs(x - right_x) <= 1 + RANGE / width / 2 and abs(y - right_y) <= 1 + RANGE / height / 2, \
                f"{x},{y} came for {right_x:.0f},{right_y:.0f}"

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

    def states_asked_for(self):
        return self.browser.run("return performance.getEntriesByName(location.origin + '/simulator/state').length")
