"""Two hosts on one computer: the computer, which is where this script runs, and a panel in a network of its own, joined
by a cable whose ends are both called "en0". Each has its own system bus and its own mDNS daemon.

Where networks of one's own are not allowed there is one host with both roles on the loopback."""

import os
import pathlib
import socket

from . import mdns, network
from .companion import Companion
from .desktop import Desktop
from .panel import Panel
from .processes import Failure, NetworkNamespace, Processes, wait_until

COMPUTER_ADDRESS = "10.31.7.5"
PANEL_ADDRESS = "10.31.7.20"


class Lab:
    def __init__(self, programs, folder):
        self.programs, self.folder = pathlib.Path(programs), pathlib.Path(folder)
        self.processes = Processes(self.folder)
        self.has_two_hosts = os.environ.get("PANEL_COMPANION_ISOLATION", "none") != "none"
        self.panel_network = None
        self.computer_address = self.panel_address = "127.0.0.1"
        self.has_mdns = True
        network.loopback_up()
        if self.has_two_hosts:
            self._lay_cable()
        self._start_mdns()
        self.desktop = Desktop(self.processes)

    def _lay_cable(self):
        self.computer_address, self.panel_address = COMPUTER_ADDRESS, PANEL_ADDRESS
        self.panel_network = NetworkNamespace()
        self.ip("link", "add", "en0", "type", "veth", "peer", "name", "en0", "netns", self.panel_network.path)
        for host, address in ((None, self.computer_address), (self.panel_network, self.panel_address)):
            self.ip("link", "set", "lo", "up", host=host)
            self.ip("link", "set", "en0", "up", host=host)
            self.ip("address", "add", f"{address}/24", "dev", "en0", host=host)

    def _start_mdns(self):
        interface = "en0" if self.has_two_hosts else "lo"
        self.bus = self.panel_bus = None
        try:
            self.bus = self.panel_bus = mdns.SystemBus(self.processes, self.folder, "computer")
            self.avahi = mdns.AvahiDaemon(self.processes, self.folder, self.bus, interface, "computer")
            if self.has_two_hosts:
                self.panel_bus = mdns.SystemBus(self.processes, self.folder, "panel")
                self.panel_avahi = mdns.AvahiDaemon(
                    self.processes, self.folder, self.panel_bus, interface, "panel", self.panel_network)
        except Failure:
            self.has_mdns = False
        os.environ["DBUS_SYSTEM_BUS_ADDRESS"] = self._address_of(self.bus)

    def _address_of(self, bus):
        """Without a bus, an address where nobody answers: the computer's own bus is none of the lab's."""
        return bus.address if bus else f"unix:path={self.folder}/no.bus"

    def ip(self, *arguments, host=None):
        """The ip command on the computer, or on `host`."""
        return self.processes.run(["ip", *arguments], namespace=host)

    def announcements(self):
        """What the mDNS daemon of each host says of panels, to tell who lost one."""
        browse = "DBUS_SYSTEM_BUS_ADDRESS=$0 timeout 10 avahi-browse -rpt _airplay._tcp 2>&1"
        hosts = {"computer": (self.bus, None), "panel": (self.panel_bus, self.panel_network)}
        return "\n".join(
            f"{name}'s mDNS daemon:\n" + self.processes.run(["sh", "-c", browse, bus.address], namespace=host, check=False)
            for name, (bus, host) in hosts.items() if bus)

    def plug(self, is_in):
        """Pulls the cable at the panel's end, or puts it in and waits for it: an address that could not be resolved before
        stays unreachable for some seconds."""
        self.ip("link", "set", "en0", "up" if is_in else "down", host=self.panel_network)
        if is_in:
            wait_until(self._reaches_panel, "the panel is reached by the cable")

    def _reaches_panel(self):
        try:
            socket.create_connection((self.panel_address, 5000), 1).close()
        except ConnectionRefusedError:
            pass
        except OSError:
            return False
        return True

    def start_panel(self, name="Room 204", **options):
        return Panel(self.processes, self.programs / "panel-simulator", self.panel_address, name=name,
                     namespace=self.panel_network,
                     environment={"DBUS_SYSTEM_BUS_ADDRESS": self._address_of(self.panel_bus)},
                     arguments=[] if self.has_mdns else ["--no-announce"], **options)

    def start_companion(self, panel=None, options=(), environment=None):
        """Without mDNS the application is told of the panel."""
        told = [] if self.has_mdns or panel is None else ["--panel", panel.service_name]
        return Companion(self.processes, self.desktop, self.programs / "panel-companion", [*told, *options], environment)
