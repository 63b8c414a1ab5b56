"""The application as a user works it."""

import copy
import os

from .processes import Failure, wait_until

ENABLED = "Touchback is enabled now."
DISABLED = "Touchback is disabled now."
UPLOADED = "File Uploaded successfully."


class Companion:
    """panel-companion on `desktop`, with its dashboard showing. With `restarts` it may start again by itself."""

    def __init__(self, processes, desktop, program, options=(), environment=None, timeout=20.0, restarts=False):
        self._desktop = desktop
        switch = [] if restarts else ["--no-restart"]
        self.process = processes.start([program, *options, *switch], name="panel-companion", environment=environment)
        self._wait_for_window(timeout)
        # The list closes when the window behind it becomes active, and a new window becomes so a little later.
        frame = self.window.find("frame", "Panel Companion")
        wait_until(lambda: frame.has("active"), "the window is the active one", timeout)

    def of_fresh_run(self, timeout=20.0):
        """What follows this one, whose process has ended: the process is not known, an alert is open."""
        fresh = copy.copy(self)
        fresh.process = None
        fresh._wait_for_window(timeout)
        return fresh

    def _wait_for_window(self, timeout):
        from .accessibility import Program  # only where there is a desktop there is a bus for it
        self.window = Program("Panel Companion", timeout)
        self.window.find(name="Devices", timeout=timeout)

    def open_list(self):
        if not self.window.is_showing("list|table", "Panels"):
            self.window.press("Devices")
        return self.window.find("list|table", "Panels")

    def close_list(self):
        if self.window.is_showing("list|table", "Panels"):
            self.window.press("Devices")
            self.window.gone("list|table", "Panels")

    def row(self, panel_name):
        return next((e for e in self.window.find_all("list item|table cell") if panel_name in e.name), None)

    def wait_for_row(self, panel_name, timeout=15.0):
        self.open_list()
        return wait_until(lambda: self.row(panel_name), f"a row for {panel_name!r}", timeout)

    def pair(self, panel):
        """Picks the panel in the list; returns what the status says then."""
        row = self.wait_for_row(panel.name)
        self._desktop.click(*row.center())
        status = self.window.find("label", f"Paired to {panel.hex}").name
        self.close_list()
        return status

    def expect_alert(self, text, timeout=15.0):
        texts = self.window.alert_texts(timeout)
        if text not in texts:
            raise Failure(f"the alert says {texts}, not {text!r}")

    def press_cast(self, alert):
        """Presses "Cast" and answers the alert that follows, which is to say `alert`."""
        self.window.press("Cast")
        self.expect_alert(alert)
        self.window.dismiss_alert()

    def start_casting(self):
        self.press_cast(ENABLED)

    def stop_casting(self):
        self.press_cast(DISABLED)

    def is_casting(self):
        return self.window.find(name="Cast").has("pressed")

    def pick_file(self, name, button="Open"):
        """Opens the file dialog, writes `name` into it and presses `button`, or Return when there is none."""
        self.window.press("Upload a file")
        dialog = self.window.find("dialog|file chooser", "Upload a file")
        field = next(part for part in dialog.everything() if part.role == "text" and part.has("editable"))
        field.write(str(name))
        if button:
            wait_until(lambda: self._button(dialog, button), f"a button {button!r}").press()
        else:
            self._desktop.key("Return")
        self.window.gone("dialog|file chooser", "Upload a file")

    def _button(self, dialog, name):
        return next((part for part in dialog.everything() if part.role in self.window.BUTTON.split("|")
                     and part.name.replace("&", "") == name and part.has("enabled")), None)

    def expect_alive(self):
        if not self.process.running():
            raise Failure(f"the application ended with status {self.process.status()}: {self.process.output()[-500:]}")

    def processor_seconds(self):
        """The processor time that it has used."""
        with open(f"/proc/{self.process.pid}/stat", encoding="ascii") as stat:
            fields = stat.read().rsplit(")", 1)[1].split()
        return (int(fields[11]) + int(fields[12])) / os.sysconf("SC_CLK_TCK")

    def memory(self):
        """Resident, in bytes."""
        with open(f"/proc/{self.process.pid}/statm", encoding="ascii") as statm:
            return int(statm.read().split()[1]) * os.sysconf("SC_PAGE_SIZE")
