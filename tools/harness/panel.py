"""The simulated panel as a script works it."""

import json
import urllib.request

from .processes import Failure, wait_until

RANGE = 32767  # a panel's coordinates go from 0 to this, whatever its size


class Panel:
    """`reach` runs a request in the panel's own network, where that is not the script's."""

    def __init__(self, processes, program, address="127.0.0.1", model="Meridian 65", name="Simulated panel",
                 arguments=(), namespace=None, environment=None):
        self.address, self.model, self.name = address, model, name
        self.hex = "".join(f"{int(part):02X}" for part in address.split("."))
        self._opener = urllib.request.build_opener(urllib.request.ProxyHandler({}))
        self.process = processes.start(
            [program, "--model", model, "--name", name, "--address", address, *arguments],
            name="panel-simulator", namespace=namespace, environment=environment)
        # Its own word: another panel may have the port, and answer there.
        wait_until(lambda: f" on {address}:" in self.process.output() or not self.process.running(),
                   "the start of the simulated panel")
        if not self.process.running():
            raise Failure(f"the simulated panel did not start: {self.process.output().strip()}")

    @property
    def service_name(self):
        return f"{self.model}|{self.name}|{self.hex}"

    def _request(self, path, body=None):
        request = urllib.request.Request(f"http://{self.address}:5000{path}", data=body)
        with self._opener.open(request, timeout=30) as answer:
            return answer.read().decode("utf-8")

    def state(self):
        return json.loads(self._request("/simulator/state"))

    def touch_enabled_at(self):
        """The address that touches are sent to, nothing while nobody wants any."""
        target = self.state()["touchTarget"]
        return target["ip"] if target and target["enabled"] else None

    def ping_times(self):
        """In seconds since 1970, the last hundred."""
        return [time / 1000 for time in self.state()["pings"]["times"]]

    def touch(self, *lines):
        """Lines are "DOWN x y", "MOVE x y" or "UP x y"; a third number is a pause before it, in milliseconds."""
        self._request("/simulator/touch", ("\n".join(lines) + "\n").encode())

    def reply(self, text):
        """What heartbeats are answered with from now on."""
        self._request("/simulator/reply", text.encode())

    def reply_to_uploads(self, text):
        self._request("/simulator/upload-reply", text.encode())


def panel_coordinate(pixel, pixels):
    """The panel's coordinate that stands for a pixel on a screen of so many."""
    return round(pixel * RANGE / pixels)
