"""Tells what happened, step by step: for people, or in the Test Anything Protocol."""


class Skip(Exception):
    """What a scenario needs is not here; the text says why."""


class Report:
    def __init__(self, as_tap=False):
        self._as_tap = as_tap
        self._count = 0
        self.failures = 0

    def passed(self, name, seen=""):
        self._count += 1
        if self._as_tap:
            print(f"ok {self._count} - {name}", flush=True)
            self.comment(seen)
        else:
            print(f"  {name:<28} {seen}", flush=True)

    def failed(self, name, problem):
        self._count += 1
        self.failures += 1
        if self._as_tap:
            print(f"not ok {self._count} - {name}", flush=True)
            self.comment(problem)
        else:
            print(f"  {name:<28} FAILED: {problem}", flush=True)

    def skipped(self, name, reason):
        self._count += 1
        print(f"ok {self._count} - {name} # SKIP {reason}" if self._as_tap else f"  {name:<28} skipped: {reason}",
              flush=True)

    def comment(self, text):
        for line in str(text).splitlines():
            print(f"# {line}" if self._as_tap else f"  {line}", flush=True)

    def end(self):
        """The plan, and the exit status."""
        if self._as_tap:
            print(f"1..{self._count}", flush=True)
        return 1 if self.failures or not self._count else 0
