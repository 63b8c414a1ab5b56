"""Programs that a script starts; every one is ended, by its process id, at the latest when the script ends."""

import atexit
import ctypes
import os
import pathlib
import signal
import subprocess
import sys
import time

_libc = ctypes.CDLL(None, use_errno=True)
_CLONE_NEWNET = 0x40000000
_PR_SET_PDEATHSIG = 1


class Failure(Exception):
    """Something that should have happened did not; the text says what."""


def wait_until(condition, what, timeout=10.0, interval=0.05):
    """The first true value of condition(); Failure(what) when there is none in time."""
    end = time.monotonic() + timeout
    while True:
        value = condition()
        if value:
            return value
        if time.monotonic() > end:
            raise Failure(f"{what}: not within {timeout:g} s")
        time.sleep(interval)


class NetworkNamespace:
    """A network of its own, with nothing but an unconfigured loopback; gone when nobody uses it any more."""

    def __init__(self):
        home = os.open("/proc/self/ns/net", os.O_RDONLY)
        if _libc.unshare(_CLONE_NEWNET) != 0:
            raise OSError(ctypes.get_errno(), "no right to make a network namespace")
        self.fd = os.open("/proc/self/ns/net", os.O_RDONLY)
        _libc.setns(home, _CLONE_NEWNET)
        os.close(home)

    @property
    def path(self):
        return f"/proc/{os.getpid()}/fd/{self.fd}"

    def enter(self):
        if _libc.setns(self.fd, _CLONE_NEWNET) != 0:
            raise OSError(ctypes.get_errno(), "cannot enter the network namespace")


class Process:
    """Not reaped before its end() is over, so that its process id, and its group's, stays its own till then."""

    def __init__(self, name, popen, log):
        self.name, self.popen, self.log = name, popen, log

    @property
    def pid(self):
        return self.popen.pid

    def _ended(self):
        return os.waitid(os.P_PID, self.pid, os.WEXITED | os.WNOWAIT | os.WNOHANG)

    def running(self):
        return self.popen.returncode is None and self._ended() is None

    def status(self):
        """The exit status, 128 + N for a death by signal N, nothing while it runs."""
        if self.popen.returncode is not None:
            return self.popen.returncode if self.popen.returncode >= 0 else 128 - self.popen.returncode
        ended = self._ended()
        if ended is None:
            return None
        return ended.si_status if ended.si_code == os.CLD_EXITED else 128 + ended.si_status

    def output(self):
        return self.log.read_text(encoding="utf-8", errors="replace")

    def wait(self, timeout=10.0):
        wait_until(lambda: not self.running(), f"the end of {self.name}", timeout)
        return self.status()

    def send(self, number):
        if self.running():
            self.popen.send_signal(number)

    def end(self):
        """Terminates the program and those of its group that outlive it."""
        if self.popen.returncode is not None:
            return
        self.send(signal.SIGTERM)
        end = time.monotonic() + 3
        while self.running() and time.monotonic() < end:
            time.sleep(0.01)
        try:
            os.killpg(self.pid, signal.SIGKILL)
        except ProcessLookupError:
            pass
        self.popen.wait()


class Processes:
    """Starts programs with their output in `folder`. Ends them newest first, also after a signal."""

    def __init__(self, folder):
        self.folder = pathlib.Path(folder)
        self.folder.mkdir(parents=True, exist_ok=True)
        self._started = []
        atexit.register(self.end)
        for number in (signal.SIGTERM, signal.SIGINT, signal.SIGHUP):
            signal.signal(number, lambda signum, _frame: sys.exit(128 + signum))

    def start(self, arguments, name=None, namespace=None, environment=None, pass_fds=()):
        name = name or os.path.basename(str(arguments[0]))
        log = self._log(name)

        def prepare():
            _libc.prctl(_PR_SET_PDEATHSIG, signal.SIGKILL)
            if namespace is not None:
                namespace.enter()

        with open(log, "wb") as out:
            popen = subprocess.Popen(
                [str(argument) for argument in arguments],
                stdin=subprocess.DEVNULL, stdout=out, stderr=subprocess.STDOUT,
                env={**os.environ, **(environment or {})}, preexec_fn=prepare,
                pass_fds=pass_fds, start_new_session=True)
        process = Process(name, popen, log)
        self._started.append(process)
        return process

    def run(self, arguments, namespace=None, check=True, timeout=30):
        """Runs a command to its end and returns what it printed."""
        done = subprocess.run(
            [str(argument) for argument in arguments], stdin=subprocess.DEVNULL, text=True, timeout=timeout,
            stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
            preexec_fn=namespace.enter if namespace is not None else None)
        if check and done.returncode != 0:
            raise Failure(f"{' '.join(map(str, arguments))}: {done.stdout.strip()}")
        return done.stdout

    def started(self):
        return list(self._started)

    def end(self, keep=()):
        for process in reversed(self._started):
            if process not in keep:
                process.end()
        self._started = [process for process in self._started if process in keep]

    def _log(self, name):
        log = self.folder / f"{name}.log"
        number = 2
        while log.exists():
            log = self.folder / f"{name}-{number}.log"
            number += 1
        return log
