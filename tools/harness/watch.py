"""What a running program takes of the computer, sample by sample."""

import os
import statistics
import time
from typing import NamedTuple

MIB = 1 << 20


class Sample(NamedTuple):
    seconds: float  # since the watch began
    memory: int     # resident, in bytes
    descriptors: int
    threads: int
    x_resources: int

    def __str__(self):
        return (f"{self.seconds:7.0f} s {self.memory / MIB:8.2f} MiB {self.descriptors:4} descriptors {self.threads:3} threads "
                f"{self.x_resources:5} X resources")


class Watch:
    """`x_server` is an XServer, or nothing on other desktops."""

    def __init__(self, pid, x_server=None):
        self._pid, self._x_server = pid, x_server
        self._began = time.monotonic()
        self.samples = []

    def take(self):
        folder = f"/proc/{self._pid}"
        with open(f"{folder}/statm", encoding="ascii") as statm:
            memory = int(statm.read().split()[1]) * os.sysconf("SC_PAGE_SIZE")
        self.samples.append(Sample(
            time.monotonic() - self._began, memory, len(os.listdir(f"{folder}/fd")), len(os.listdir(f"{folder}/task")),
            self._x_server.resources(self._pid) if self._x_server else 0))
        return self.samples[-1]

    def growth(self, warm_up):
        """By how much each figure grew after `warm_up` seconds: the median of the last fifth of the samples less that of
        the first fifth, as a Sample; the seconds are those that lie between."""
        samples = [sample for sample in self.samples if sample.seconds >= warm_up]
        count = max(1, len(samples) // 5)
        return Sample(*(statistics.median(after) - statistics.median(before)
                        for before, after in zip(zip(*samples[:count]), zip(*samples[-count:]))))
