"""The program under test, started and used from outside."""

import json
import os
import re
import signal
import time
from collections import namedtuple

from .history import History
from .processes import read_log
from .waiting import TIMEOUT, Timeout, settled, wait_until
from .wayland_session import Toplevel

BUS_NAME = "com.brackmoor.tessly"
MARKER = "com.brackmoor.tessly.internal-origin"

# The id of a panel that is no window.
_LAYER = "layer"

Trace = namedtuple("Trace", "name time")  # seconds, as time.monotonic() counts them


def program():
    """The built program; TESSLY_PROGRAM names it."""
    path = os.environ.get("TESSLY_PROGRAM")
    if not path:
        raise RuntimeError("set TESSLY_PROGRAM to the built program")
    return os.path.abspath(path)


class Panel:
    """The quick paste panel while it is up."""

    # Above the list: the search field, whose cursor blinks, and the filters.
    _HEADER = 110
    # The middle of the first row, while there is no banner.
    FIRST_ROW = 150

    def __init__(self, desktop, window, pid):
        self._desktop = desktop
        self._pid = pid
        self.window = window

    def picture(self):
        w = self.window
        return self._desktop.screen.picture(w.x, w.y, w.width, w.height)

    def rows_where(self, matches):
        """The first and the last line of pixels, seen from the panel's top, that hold a colour for
        which matches(red, green, blue) is true in a tenth of their width."""
        w = self.window
        lines = [y for y in range(w.height)
                 if self._desktop.screen.picture(w.x, w.y + y, w.width, 1).share(matches) > 0.1]
        return lines[0], lines[-1]

    def list_picture(self):
        """The list and the footer, without what blinks; where no program may look, what assistive
        technology sees."""
        if self._desktop.screen is None:
            return self._desktop.accessibility.application(self._pid).names("list item")
        w = self.window
        return self._desktop.screen.picture(w.x, w.y + self._HEADER, w.width,
                                            w.height - self._HEADER)

    def wait_for_rest(self, *, unlike=None):
        """The list once it does not change any more, and differs from the picture `unlike`."""
        if unlike is not None:
            wait_until(lambda: self.list_picture() != unlike, "the list changes")
        return settled(self.list_picture, 0.3, "the list of the panel")

    def search(self, text):
        """Types into the search field and waits for the list to follow."""
        before = self.wait_for_rest()
        self._desktop.keyboard.type(text)
        self.wait_for_rest(unlike=before)


class Tessly:
    """One Tessly process on a desktop. Use it in a `with`, or call start and stop.

    `settings` are keys of the settings file; the first-run window counts as done unless they say
    otherwise. Its history stays in the desktop's home folder, so a second one finds it again.
    """

    def __init__(self, desktop, *, settings=None, environment=None):
        self.desktop = desktop
        self._settings = {"hasCompletedOnboarding": True, **(settings or {})}
        self.environment = {"TESSLY_TRACE": "1", **(environment or {})}
        folder = self.environment.get("XDG_DATA_HOME", desktop.data_home)
        self.history = History(os.path.join(folder, "Tessly"))
        self.process = None

    def __enter__(self):
        return self.start()

    def __exit__(self, kind, *_):
        if kind is None:
            self.stop()
        else:
            self.kill()

    @property
    def program(self):
        return self.desktop.install(program())

    @property
    def pid(self):
        return self.process.pid

    @property
    def settings_path(self):
        return os.path.join(self.desktop.config_home, BUS_NAME + ".ini")

    def write_settings(self):
        values = {key: str(value).lower() if isinstance(value, bool) else str(value)
                  for key, value in self._settings.items()}
        # Another start may be reading the file: it sees all of it or none.
        fresh = f"{self.settings_path}.{id(self)}"
        with open(os.open(fresh, os.O_WRONLY | os.O_CREAT | os.O_EXCL, 0o600), "w") as file:
            file.write("[General]\n" + "".join(f"{key}={value}\n" for key, value in values.items()))
        os.replace(fresh, self.settings_path)

    def start(self, **options):
        """Starts the program and returns once it records, has looked its history through and can be
        reached, where there is a bus; the options are those of launch."""
        self.launch(**options)
        self.wait_for_trace("recording")
        self.wait_for_trace("checked")
        if self.desktop.has_bus:
            wait_until(lambda: self.desktop.bus_name_exists(BUS_NAME), "tessly is on the bus")
        return self

    def launch(self, *, umask=-1, before=None):
        """Starts the program and returns at once. Later starts find the settings as they were
        left. `before` is called in the new process before it becomes the program."""
        if self.process is None:
            self.write_settings()
        self.started = time.monotonic()
        self.process = self.desktop.start([self.program], environment=self.environment,
                                          name="tessly", umask=umask, before=before)

    def stop(self):
        """Quits the program and expects it to end in order."""
        if self.is_running():
            self.process.send_signal(signal.SIGTERM)
            wait_until(lambda: not self.is_running(), "tessly ends when asked to")
        if self.process.returncode not in (0, -signal.SIGKILL):
            raise AssertionError(f"tessly ended with {self.process.returncode}: {self.log()}")
        self.kill()

    def kill(self):
        """kill -9."""
        if self.process is not None:
            self.desktop.end(self.process)

    def is_running(self):
        return self.process is not None and self.process.poll() is None

    def log(self):
        return read_log(self.process)

    def remarks(self):
        """The lines that it logged by itself."""
        return [line for line in self.log().splitlines() if not line.startswith("trace: ")]

    def traces(self, name):
        """The marks of this name so far."""
        return [Trace(found, float(time) / 1000) for found, time in
                re.findall(r"^trace: (\S+) ([\d.]+)$", self.log(), re.MULTILINE) if found == name]

    def wait_for_trace(self, name, count=1, timeout=TIMEOUT):
        """The `count`th mark of this name."""
        def marks():
            if not self.is_running():
                raise Timeout(f"tessly ended with {self.process.returncode}: {self.log()}")
            return self.traces(name)[count - 1:]
        return wait_until(marks, lambda: f"tessly reports “{name}”: {self.log()}", timeout)[0]

    def command(self, *arguments, check=True):
        """Runs the program a second time, with a command, and returns what became of it."""
        return self.desktop.run([self.program, *arguments], environment={
            name: value for name, value in self.environment.items() if name != "TESSLY_TRACE"},
            check=check)

    # Its windows

    def has_layer_panel(self):
        """Whether the panel is a layer surface here."""
        status = json.loads(self.command("status", "--json").stdout)
        return "zwlr_layer_shell_v1" in status["protocols"]

    def window(self, title):
        """The window of this title, or None while it is closed."""
        return next((window for window in self.desktop.windows.visible(pid=self.pid)
                     if window.title == title), None)

    def wait_for_window(self, title):
        """The window of this title, once it is up and has the keys."""
        wait_until(lambda: self.window(title), f"the window “{title}” is open")
        wait_until(lambda: self.has_keys(self.window(title)), f"“{title}” has the keys")
        return self.window(title)

    def panel_window(self):
        """The panel's window, or None while it is closed."""
        return self._layer_panel() or self.window("Tessly")

    def _layer_panel(self):
        """The panel where it is a layer surface, of which compositors tell nobody: as the program
        itself sees it."""
        marks = re.findall(r"^trace: panel-(\S+) ", self.log(), re.MULTILINE)
        shown = max((number for number, mark in enumerate(marks) if mark.startswith("shown:")),
                    default=None)
        if shown is None or "closed" in marks[shown:]:
            return None
        place = map(int, marks[shown].removeprefix("shown:").split(","))
        return Toplevel(_LAYER, BUS_NAME, "Tessly", self.pid, *place, "active" in marks[shown:],
                        True)

    def open_panel(self):
        """Opens the panel as a second start does; returns it once it has the keys and its list."""
        self.command("show")
        return self.wait_for_panel()

    def wait_for_panel(self):
        window = wait_until(self.panel_window, "the panel is open")
        wait_until(lambda: self.has_keys(window), "the panel has the keys")
        # The window may still move to its place and grow to its size.
        window = settled(self.panel_window, 0.1, "the place of the panel")
        panel = Panel(self.desktop, window, self.pid)
        panel.wait_for_rest()
        return panel

    def has_keys(self, window):
        if window.id == _LAYER:
            panel = self._layer_panel()
            return panel is not None and panel.is_active
        windows = self.desktop.windows
        return windows.active == window.id and windows.focused is not None

    def wait_for_closed_panel(self, timeout=TIMEOUT):
        wait_until(lambda: self.panel_window() is None, "the panel is closed", timeout)

    def close_panel(self, timeout=TIMEOUT):
        """Closes the panel by Escape, which closes a preview first."""
        def closed():
            return re.findall(r"^trace: (panel|preview)-closed ", self.log(), re.MULTILINE)
        before = len(closed())
        self.desktop.keyboard.press("Escape")
        wait_until(lambda: len(closed()) > before, "Escape closes something", timeout)
        if closed()[before] == "preview":
            self.desktop.keyboard.press("Escape")
        self.wait_for_closed_panel(timeout)

    def preview(self):
        """The place of the preview as the program has it: x, y, width, height. None while it is
        closed."""
        marks = re.findall(r"^trace: preview-(\S+) ", self.log(), re.MULTILINE)
        if not marks or marks[-1] == "closed":
            return None
        return tuple(map(int, marks[-1].removeprefix("shown:").split(",")))

    def wait_for_preview(self):
        return wait_until(self.preview, "the preview is shown")

    # The clipboard

    def owns_clipboard(self):
        """Whether what is on the clipboard was put there by the program."""
        return MARKER in self.desktop.clipboard.targets()
