"""System buses and Avahi daemons of one's own, for a computer or a network namespace that has none."""

import atexit
import os
import pathlib
import shutil
import subprocess
import tempfile

from .processes import Failure, wait_until

_BUS = """<!DOCTYPE busconfig PUBLIC "-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN"
 "http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd">
<busconfig>
  <type>system</type>
  <listen>unix:path={socket}</listen>
  <auth>EXTERNAL</auth>
  <policy context="default">
    <allow user="*"/>
    <allow own="*"/>
    <allow send_destination="*" eavesdrop="true"/>
    <allow receive_sender="*"/>
  </policy>
</busconfig>
"""

_AVAHI = """[server]
host-name={host}
use-ipv4=yes
use-ipv6={ipv6}
allow-interfaces={interfaces}
enable-dbus=yes
{limits}
[publish]
disable-publishing={silent}
publish-hinfo=no
publish-workstation=no
[rlimits]
"""

# Avahi's run-time folder is fixed; with a private one, several daemons live on one computer.
_PRIVATE_FOLDER = "mkdir -p /run/avahi-daemon && mount -t tmpfs tmpfs /run/avahi-daemon && exec \"$@\""
_SHARED_FOLDER = "mkdir -p /run/avahi-daemon && exec \"$@\""


def system_mdns_answers():
    """Whether this computer's own mDNS daemon can be used."""
    if not shutil.which("dbus-send"):
        return False
    question = ["dbus-send", "--system", "--print-reply", "--reply-timeout=2000", "--dest=org.freedesktop.Avahi", "/",
                "org.freedesktop.Avahi.Server.GetVersionString"]
    return subprocess.run(question, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, check=False).returncode == 0


def avahi_program():
    return shutil.which("avahi-daemon", path=os.environ.get("PATH", "") + ":/usr/sbin")


class SystemBus:
    def __init__(self, processes, folder, name="system"):
        folder = pathlib.Path(folder)
        folder.mkdir(parents=True, exist_ok=True)
        # In a folder of its own: a bus's address takes neither blanks nor long names.
        place = tempfile.mkdtemp(prefix="panel-companion-bus.", dir="/tmp")
        atexit.register(shutil.rmtree, place, ignore_errors=True)
        socket = pathlib.Path(place) / "bus"
        configuration = folder / f"{name}-bus.conf"
        configuration.write_text(_BUS.format(socket=socket), encoding="utf-8")
        self.address = f"unix:path={socket}"
        self.process = processes.start(
            ["dbus-daemon", f"--config-file={configuration}", "--nofork"], name=f"{name}-bus")
        wait_until(lambda: socket.exists() or not self.process.running(), "the system bus")
        if not self.process.running():
            raise Failure(f"the system bus did not start: {self.process.output()}")


class AvahiDaemon:
    """mDNS on some interfaces, reached over `bus`. It can be stopped and started again."""

    def __init__(self, processes, folder, bus, interfaces, host="computer", namespace=None, ipv6=False, limits="",
                 publishes=True):
        self._processes, self._bus, self._namespace, self._host = processes, bus, namespace, host
        self._configuration = pathlib.Path(folder) / f"{host}-avahi.conf"
        self._configuration.write_text(_AVAHI.format(
            host=host, interfaces=interfaces, ipv6="yes" if ipv6 else "no", limits=limits,
            silent="no" if publishes else "yes"), encoding="utf-8")
        self.process = None
        self.start()

    def start(self):
        """Does nothing if it runs."""
        if self.process is not None and self.process.running():
            return
        program = avahi_program()
        if not program:
            raise Failure("avahi-daemon is not installed")
        arguments = [program, "-f", self._configuration, "--no-drop-root", "--no-chroot", "--no-rlimits",
                     "--no-proc-title"]
        can_mount = subprocess.run(["unshare", "--mount", "true"], stderr=subprocess.DEVNULL,
                                   check=False).returncode == 0
        if can_mount:
            arguments = ["unshare", "--mount", "sh", "-c", _PRIVATE_FOLDER, "sh", *arguments]
        else:
            arguments = ["sh", "-c", _SHARED_FOLDER, "sh", *arguments]
        self.process = self._processes.start(
            arguments, name=f"{self._host}-avahi", namespace=self._namespace,
            environment={"DBUS_SYSTEM_BUS_ADDRESS": self._bus.address})
        wait_until(lambda: "startup complete" in self.process.output() or not self.process.running(),
                   "the start of avahi-daemon")
        if not self.process.running():
            raise Failure(f"avahi-daemon did not start: {self.process.output().strip()}")

    def stop(self):
        self.process.end()
