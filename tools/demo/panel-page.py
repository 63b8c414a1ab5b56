#!/usr/bin/python3
"""panel-page.py PROGRAMS PICTURE FILE: a picture of the simulated panel's page in a browser, while a computer uses the
panel: a stroke has been drawn, and PICTURE has been uploaded."""

import math
import pathlib
import sys
import tempfile
import time

sys.dont_write_bytecode = True  # nothing is left behind in the source tree
sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1]))
from harness import network  # noqa: E402
from harness.browser import Browser, pointer  # noqa: E402
from harness.panel import Panel  # noqa: E402
from harness.processes import Processes  # noqa: E402

WIDTH, HEIGHT = 1280, 1060


def loops(left, top, width, height):
    """Five, each a little flatter than the one before."""
    points = []
    for step in range(260):
        angle = 2 * math.pi * step / 52
        shrink = 1 - step / 400
        points.append((round(left + width * (0.12 + 0.72 * step / 260 - 0.055 * math.sin(angle))),
                       round(top + height * (0.5 - 0.26 * shrink * math.cos(angle)))))
    return points


def main():
    programs, picture, file = map(pathlib.Path, sys.argv[1:])
    network.loopback_up()
    with tempfile.TemporaryDirectory() as folder:
        processes = Processes(folder)
        panel = Panel(processes, programs / "panel-simulator", name="Room 204",
                      arguments=["--no-announce", "--uploads", f"{folder}/uploads"])
        browser = Browser(processes, f"{folder}/profile", options=["--lang=en-GB", "--hide-scrollbars"])
        browser.resize(WIDTH, HEIGHT)
        browser.open(f"http://{panel.address}:5000")

        def panelctl(*command):
            processes.run([programs / "panelctl", *command, "--panel-address", panel.address])

        panelctl("touchback", "on")
        panelctl("upload", picture)
        time.sleep(2)  # the page has heard of it
        points = loops(*browser.find("#surface").area())
        browser.act(pointer("touch", [points[0], "down", *((x, y, 8) for x, y in points[1:]), "up"]))
        for _ in range(3):
            panelctl("ping")
        time.sleep(2)
        browser.screenshot(file)
        browser.quit()
        processes.end()


main()
