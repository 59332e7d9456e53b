"""Programs that a person copies from and pastes into: a terminal and two text editors."""

import os

from .waiting import PATIENCE, wait_until


class _Program:
    """A program with one window, in front once `start` has returned."""

    def __init__(self, desktop, name):
        self.desktop = desktop
        self.path = desktop.path("files", name)

    def _start(self, arguments, environment=None):
        self.process = self.desktop.start(arguments, environment=environment)
        self.window = wait_until(self._find_window, f"the window of {arguments[0]}").id
        wait_until(self.is_in_front, lambda: f"{arguments[0]} is in front, not "
                   f"{self.desktop.windows.active} {self.desktop.windows.visible()}")
        return self

    def _find_window(self):
        return self.desktop.windows.top(pid=self.process.pid)

    def is_in_front(self):
        windows = self.desktop.windows
        return windows.active == self.window and windows.focused is not None

    def geometry(self):
        return next(window for window in self.desktop.windows.visible()
                    if window.id == self.window)

    def bring_to_front(self):
        self.desktop.run(["xdotool", "windowactivate", str(self.window)])
        wait_until(self.is_in_front, "the window is in front again")

    def close(self):
        self.desktop.end(self.process)
        wait_until(lambda: not any(window.id == self.window
                                   for window in self.desktop.windows.visible()),
                   "the window is gone")


class Terminal(_Program):
    """An xterm whose input goes to a file, byte for byte as typed or pasted."""

    source_id = "debian-xterm"
    source_name = "XTerm"

    def __init__(self, desktop, name="terminal.txt"):
        super().__init__(desktop, name)

    def start(self, shown=""):
        """`shown` stands in the first line, for copying with the mouse."""
        script = 'printf %s "$1"; stty raw -echo; : > "$0.ready"; exec cat > "$0"'
        self._start(["xterm", "-geometry", "80x20+40+40", "-xrm", "XTerm*selectToClipboard: true",
                     "-e", "sh", "-c", script, self.path, shown])
        wait_until(lambda: os.path.exists(self.path + ".ready"), "the terminal's shell runs")
        return self

    def text(self):
        """What has arrived; the line end of a paste is a carriage return in a terminal."""
        try:
            with open(self.path, newline="") as file:
                return file.read().replace("\r", "\n")
        except FileNotFoundError:
            return ""

    def wait_for_arrival(self, timeout=PATIENCE):
        """Waits until something was typed or pasted, pressing no key for it."""
        wait_until(self.text, "something arrives in the terminal", timeout)

    def wait_for_text(self, expected, timeout=PATIENCE):
        wait_until(lambda: self.text() == expected,
                   lambda: f"the terminal got “{expected}”, it has “{self.text()}”", timeout)

    def copy_word(self):
        """Selects the word at the top left with a double click, which copies it."""
        place = self.geometry()
        self.desktop.pointer.click(place.x + 12, place.y + 10, times=2)


class _Editor(_Program):
    """A text editor on a file of its own. Its title tells whether it was changed."""

    command = ()

    def start(self, text=""):
        with open(self.path, "w") as file:
            file.write(text)
        self._saved = text
        self._start([*self.command, self.path], self._environment())
        wait_until(lambda: os.path.basename(self.path) in self.geometry().title,
                   "the editor shows its file")
        return self

    def _environment(self):
        return {}

    def _find_window(self):
        window = super()._find_window()
        return window if window and window.title else None

    def is_changed(self):
        return "*" in self.geometry().title

    def text(self):
        """What is in the editor: saves it and reads the file."""
        if self.is_changed():
            self.desktop.keyboard.press("Control+s")
            wait_until(lambda: not self.is_changed(), "the editor saved its text")
        with open(self.path) as file:
            return file.read()

    def wait_for_arrival(self, timeout=PATIENCE):
        """Waits until something was typed or pasted, pressing no key for it."""
        wait_until(self.is_changed, "something arrives in the editor", timeout)

    def wait_for_text(self, expected, timeout=PATIENCE):
        """Waits until something arrives and expects the text to be `expected` then.

        Keys are pressed only after the arrival, so that they cannot mix with a paste under way.
        """
        self.wait_for_arrival(timeout)
        wait_until(lambda: self.text().rstrip("\n") == expected,
                   lambda: f"the editor got “{expected}”, it has “{self.text()}”", timeout)

    def copy_all(self):
        self.desktop.keyboard.press("Control+a")
        self.desktop.keyboard.press("Control+c")


class GtkEditor(_Editor):
    command = ("mousepad", "--disable-server")
    source_id = "org.xfce.mousepad"
    source_name = "Mousepad"

    def __init__(self, desktop, name="gtk.txt"):
        super().__init__(desktop, name)


class QtEditor(_Editor):
    command = ("featherpad", "--standalone")
    source_id = "featherpad"
    source_name = "FeatherPad"

    def __init__(self, desktop, name="qt.txt"):
        super().__init__(desktop, name)

    def _environment(self):
        return {"QT_QPA_PLATFORM": "xcb"}
