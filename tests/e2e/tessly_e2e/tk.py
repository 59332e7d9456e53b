"""A program of the Tk toolkit, told what to do line by line."""

import subprocess

from .waiting import wait_until

_SCRIPT = """
wm title . "a Tk program"
wm geometry . 200x100+600+60
fileevent stdin readable {
    if {[gets stdin line] < 0} { exit }
    eval $line
    puts done
    flush stdout
}
"""


class TkProgram:
    """It has one window, in front once it has started. It claims the clipboard with its first copy
    and not again while it has it, as its toolkit does."""

    def __init__(self, desktop):
        self._desktop = desktop
        self._done = 0

    def start(self):
        script = self._desktop.path("files", "program.tcl")
        with open(script, "w") as file:
            file.write(_SCRIPT)
        self.process = self._desktop.start(["wish", script], stdin=subprocess.PIPE, name="wish")
        wait_until(self._find_window, "the window of the Tk program")
        self._window = self._find_window().id
        wait_until(lambda: self._desktop.windows.active == self._window, "it is in front")
        return self

    def _find_window(self):
        return next((window for window in self._desktop.windows.visible()
                     if window.title == "a Tk program"), None)

    def bring_to_front(self):
        self._desktop.windows.activate(self._window)
        wait_until(lambda: self._desktop.windows.active == self._window, "it is in front")

    def copy(self, text):
        """Copies a text without blanks."""
        self._tell(f"clipboard clear; clipboard append {text}")

    def end(self):
        self._desktop.end(self.process)

    def _tell(self, line):
        self._done += 1
        self.process.stdin.write(line.encode() + b"\n")
        self.process.stdin.flush()
        wait_until(self._has_done, "the Tk program has done it")

    def _has_done(self):
        with open(self.process.output_path) as file:
            return file.read().count("done") >= self._done
