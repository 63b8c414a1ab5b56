"""A drag from another program, moved by a real pointer."""

import subprocess
import time

from .processes import wait_until


def pointer(*arguments):
    subprocess.run(["xdotool", *map(str, arguments)], check=True, timeout=5,
                   stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)


class Drag:
    """Has begun once this exists; the button is held. `offers` are the arguments of drag-source."""

    def __init__(self, processes, programs, *offers):
        self._source = processes.start([programs / "drag-source", *offers], name="drag-source",
                                       environment={"QT_LINUX_ACCESSIBILITY_ALWAYS_ON": "0"})
        self._wait_for("ready")
        self._x, self._y = 20, 20
        pointer("mousemove", self._x, self._y)
        time.sleep(0.1)  # the window may just be coming up
        pointer("mousedown", 1)
        for _ in range(4):
            self._x, self._y = self._x + 8, self._y + 5
            pointer("mousemove", self._x, self._y)
            time.sleep(0.02)
        self._wait_for("started")

    def _wait_for(self, word):
        return wait_until(lambda: next((line for line in self._source.output().splitlines() if line.startswith(word)),
                                       None), f"the source tells {word!r}", interval=0.02)

    def to(self, x, y, steps=8):
        """Moves on, and gives the target the time to answer."""
        for step in range(1, steps + 1):
            pointer("mousemove", self._x + (x - self._x) * step // steps, self._y + (y - self._y) * step // steps)
            time.sleep(0.02)
        self._x, self._y = x, y
        pointer("mousemove", x + 1, y + 1)
        time.sleep(0.2)

    def drop(self):
        """What the source was told: "copy", "move", "link" or "none". That is the answer to the last move: Qt's sources
        do not wait for what the target makes of the drop."""
        pointer("mouseup", 1)
        return self._wait_for("ended").split()[1]

    def end(self):
        self._source.end()
