"""A file that another process has: its readers wait until that gives it up, see F_SETLEASE in fcntl(2)."""

import fcntl
import os
import signal

from harness.processes import wait_until


class Lease:
    def __init__(self, path):
        signal.signal(signal.SIGIO, signal.SIG_IGN)  # the system's word that somebody waits; it is asked for below
        self._file = os.open(path, os.O_RDWR)
        fcntl.fcntl(self._file, fcntl.F_SETLEASE, fcntl.F_WRLCK)

    def wait_for_reader(self, timeout=10):
        """Until somebody tries to read the file."""
        wait_until(lambda: fcntl.fcntl(self._file, fcntl.F_GETLEASE) != fcntl.F_WRLCK, "a reader of the file", timeout)

    def give_up(self):
        os.close(self._file)
