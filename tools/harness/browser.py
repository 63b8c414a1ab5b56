"""A browser that a script works as a user does, by WebDriver (https://www.w3.org/TR/webdriver2/)."""

import base64
import json
import re
import shutil
import urllib.error
import urllib.request

from .processes import Failure, wait_until

_ELEMENT = "element-6066-11e4-a52e-4f735466cecf"


def missing_program():
    """The program that is needed and not installed, if any."""
    return next((program for program in ("chromium", "chromedriver") if not shutil.which(program)), None)


class Browser:
    """A headless Chromium without a past, which talks to nobody but the pages that it is sent to."""

    def __init__(self, processes, profile, width=1366, height=768, options=()):
        self._opener = urllib.request.build_opener(urllib.request.ProxyHandler({}))
        self._driver = processes.start(["chromedriver", "--port=0", "--allowed-ips=127.0.0.1"])
        self._address = f"http://127.0.0.1:{self._port()}"
        self._session = None
        switches = ["--headless", "--no-sandbox", "--disable-gpu", "--disable-quic", "--no-first-run",
                    "--disable-background-networking", "--disable-component-update", "--disable-sync",
                    "--no-proxy-server", "--disable-dev-shm-usage",
                    f"--user-data-dir={profile}", f"--window-size={width},{height}", *options]
        answer = self._ask("POST", "/session", {"capabilities": {"alwaysMatch": {
            "browserName": "chrome", "goog:chromeOptions": {"binary": shutil.which("chromium"), "args": switches},
            "goog:loggingPrefs": {"browser": "ALL", "performance": "ALL"}}}})
        self._session = answer["sessionId"]

    def _port(self):
        found = wait_until(lambda: re.search(r"on port (\d+)\.", self._driver.output()) or not self._driver.running(),
                           "the browser's driver")
        if found is True:
            raise Failure(f"the browser's driver did not start: {self._driver.output()}")
        return int(found.group(1))

    def _ask(self, method, path, body=None):
        data = json.dumps(body if body is not None else {}).encode() if method == "POST" else None
        request = urllib.request.Request(self._address + path, data=data, method=method,
                                         headers={"Content-Type": "application/json; charset=utf-8"})
        try:
            with self._opener.open(request, timeout=90) as answer:
                return json.load(answer)["value"]
        except urllib.error.HTTPError as error:
            value = json.load(error)["value"]
            raise Failure(f"{value['error']}: {value['message'].splitlines()[0]}") from None

    def ask(self, method, path, body=None):
        return self._ask(method, f"/session/{self._session}{path}", body)

    def open(self, address):
        self.ask("POST", "/url", {"url": address})

    def run(self, script, *arguments):
        """The value of JavaScript that ends with a return."""
        return self.ask("POST", "/execute/sync", {"script": script, "args": list(arguments)})

    def run_async(self, script, *arguments):
        """The same for JavaScript that calls its last argument."""
        return self.ask("POST", "/execute/async", {"script": script, "args": list(arguments)})

    def find(self, selector):
        return Node(self, self.ask("POST", "/element", {"using": "css selector", "value": selector}))

    def find_all(self, selector):
        return [Node(self, found) for found in
                self.ask("POST", "/elements", {"using": "css selector", "value": selector})]

    def act(self, *sources):
        """Plays pointers and keys together, tick by tick."""
        self.ask("POST", "/actions", {"actions": list(sources)})

    def let_go(self):
        self.ask("DELETE", "/actions")

    def console(self):
        """What pages wrote to the console since the last call, errors of loading included."""
        return [entry["message"] for entry in self.ask("POST", "/se/log", {"type": "browser"})]

    def requested(self):
        """The addresses that were asked for since the last call."""
        events = (json.loads(entry["message"])["message"]
                  for entry in self.ask("POST", "/se/log", {"type": "performance"}))
        return [event["params"]["request"]["url"] for event in events if event["method"] == "Network.requestWillBeSent"]

    def command(self, name, **parameters):
        """One of the browser's own protocol (https://chromedevtools.github.io/devtools-protocol/)."""
        return self.ask("POST", "/goog/cdp/execute", {"cmd": name, "params": parameters})

    def resize(self, width, height):
        """The page's size in CSS pixels."""
        self.command("Emulation.setDeviceMetricsOverride", width=width, height=height, deviceScaleFactor=1,
                     mobile=width < 600)

    def screenshot(self, file):
        file.write_bytes(base64.b64decode(self.ask("GET", "/screenshot")))

    def quit(self):
        if self._session:
            self.ask("DELETE", "")
            self._session = None


class Node:
    def __init__(self, browser, reference):
        self._browser, self._reference = browser, reference
        self._path = f"/element/{reference[_ELEMENT]}"

    @property
    def text(self):
        return self._browser.ask("GET", self._path + "/text")

    @property
    def label(self):
        """The name that a screen reader says."""
        return self._browser.ask("GET", self._path + "/computedlabel")

    def attribute(self, name):
        return self._browser.ask("GET", f"{self._path}/attribute/{name}")

    def is_shown(self):
        return self._browser.run("return arguments[0].checkVisibility()", self._reference)

    def area(self):
        """On the page as it is scrolled, in CSS pixels: left, top, width, height."""
        return self._browser.run("const a = arguments[0].getBoundingClientRect();"
                                 "return [a.left, a.top, a.width, a.height]", self._reference)

    def scroll_to(self):
        self._browser.run("arguments[0].scrollIntoView({block: 'nearest'})", self._reference)

    def click(self):
        self._browser.ask("POST", self._path + "/click")

    def focus(self):
        self._browser.run("arguments[0].focus()", self._reference)


def pointer(kind, steps, name=None):
    """A source of actions: `steps` are "down", "up", (x, y), (x, y, milliseconds), or milliseconds of rest."""
    actions = []
    for step in steps:
        if step in ("down", "up"):
            actions.append({"type": f"pointer{step.capitalize()}", "button": 0})
        elif isinstance(step, tuple):
            actions.append({"type": "pointerMove", "origin": "viewport", "x": step[0], "y": step[1],
                            "duration": step[2] if len(step) > 2 else 0})
        else:
            actions.append({"type": "pause", "duration": step})
    return {"type": "pointer", "id": name or kind, "parameters": {"pointerType": kind}, "actions": actions}


def keys(steps):
    """A source of actions: "+x" presses the key x and "-x" releases it."""
    return {"type": "key", "id": "keyboard", "actions": [
        {"type": "keyDown" if step[0] == "+" else "keyUp", "value": step[1:]} for step in steps]}
