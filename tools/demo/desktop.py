#!/usr/bin/python3
"""Starts a simulated panel and, beside it, the application on this desktop; both end when the application is closed."""

import argparse
import os
import pathlib
import subprocess
import sys
import tempfile

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1]))
from harness import mdns  # noqa: E402
from harness.panel import Panel  # noqa: E402
from harness.processes import Failure, Processes  # noqa: E402


def reach_mdns(processes, folder):
    """Whether services can be announced; root may start a daemon, on the loopback only, where there is none."""
    if mdns.system_mdns_answers():
        return True
    if os.geteuid() != 0:
        return False
    try:
        bus = mdns.SystemBus(processes, folder)
        mdns.AvahiDaemon(processes, folder, bus, "lo")
    except Failure as problem:
        print(problem, flush=True)
        return False
    os.environ["DBUS_SYSTEM_BUS_ADDRESS"] = bus.address
    return True


def run_companion(command):
    """Its exit status. When this script is ended before, the application may still let go of the mouse button."""
    companion = subprocess.Popen(command)
    try:
        return companion.wait()
    finally:
        if companion.poll() is None:
            companion.terminate()
            companion.wait()


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--programs", required=True, type=pathlib.Path, help="the folder of the built programs")
    parser.add_argument("options", nargs="*", help="for panel-companion")
    arguments = parser.parse_args()

    with tempfile.TemporaryDirectory(prefix="panel-companion.") as name:
        folder = pathlib.Path(name)
        processes = Processes(folder)
        try:
            options = arguments.options
            announced = reach_mdns(processes, folder)
            try:
                panel = Panel(processes, arguments.programs / "panel-simulator",
                              arguments=["--uploads", folder] + ([] if announced else ["--no-announce"]))
            except Failure as problem:
                print(f"There is no simulated panel this time. {problem}", flush=True)
            else:
                print(f"The simulated panel is {panel.name!r}. Pair with it, cast, and touch it in a browser:"
                      f" http://{panel.address}:5000/", flush=True)
                if not announced:
                    print("No mDNS daemon answers here, so the application is told of the panel by --panel.", flush=True)
                    options = ["--panel", panel.service_name, *options]
            # A fresh run after a fatal error would be without the panel, which ends with this script; and an installed
            # program that runs already is another one.
            return run_companion([arguments.programs / "panel-companion", "--no-restart", "--new-instance", *options])
        finally:
            processes.end()


sys.exit(main())
