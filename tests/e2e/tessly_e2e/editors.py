"""Programs that a person copies from and pastes into: a terminal and two text editors."""

import os

from .waiting import TIMEOUT, holds_for, wait_until


class _Program:
    """A program with one window, in front once `start` has returned."""

    def __init__(self, desktop, name):
        self.desktop = desktop
        self.path = desktop.path("files", name)

    def _start(self, arguments, environment=None):
        if not self._is_of_wayland():
            assert self.desktop.display  # that it is there
        self.process = self.desktop.start(arguments, environment=environment)
        self.window = wait_until(self._find_window, f"the window of {arguments[0]}").id
        wait_until(self.is_in_front, lambda: f"{arguments[0]} is in front, not "
                   f"{self.desktop.windows.active} {self.desktop.windows.visible()}")
        return self

    def _is_of_wayland(self):
        return False

    def _find_window(self):
        return self.desktop.windows.top(pid=self.process.pid)

    def is_in_front(self):
        windows = self.desktop.windows
        return windows.active == self.window and windows.focused is not None

    def geometry(self):
        return next(window for window in self.desktop.windows.visible()
                    if window.id == self.window)

    def _until_copied(self, copy):
        """Copies again until there is something new on the clipboard."""
        before = self.desktop.clipboard_changes()

        def is_copied():
            copy()
            return not holds_for(1, lambda: self.desktop.clipboard_changes() == before)
        wait_until(is_copied, "the copy is on the clipboard")

    def bring_to_front(self):
        self.desktop.windows.activate(self.window)
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
        for path in (self.path, self.path + ".ready"):
            if os.path.exists(path):
                os.remove(path)  # an earlier one's

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

    def wait_for_arrival(self, timeout=TIMEOUT):
        """Waits until something was typed or pasted, pressing no key for it."""
        wait_until(self.text, "something arrives in the terminal", timeout)

    def wait_for_text(self, expected, timeout=TIMEOUT):
        wait_until(lambda: self.text() == expected,
                   lambda: f"the terminal got “{expected}”, it has “{self.text()}”", timeout)

    def _press_until_it_arrives(self):
        """For a terminal that appends what arrives, which is nothing afterwards."""
        def arrives():
            self.desktop.keyboard.press("1")
            return not holds_for(0.2, lambda: not self.text())
        wait_until(arrives, "keys reach the terminal")
        self.desktop.keyboard.press("2")
        wait_until(lambda: self.text().endswith("2"), "all keys have arrived")
        os.truncate(self.path, 0)

    def copy_word(self):
        """Selects the word at the top left with a double click, which copies it."""
        place = self.geometry()
        self.desktop.pointer.click(place.x + 12, place.y + 10, times=2)


class WaylandTerminal(Terminal):
    """A foot that tells by itself when it gets and loses the keys, which not every compositor
    does."""

    source_id = "foot"
    source_name = "Foot"
    _COMES, _GOES = b"\x1b[I", b"\x1b[O"

    def start(self, shown=""):
        script = ('printf %s "$1"; stty raw -echo; printf "\\033[?1004h"; : > "$0.ready"; '
                  'exec cat >> "$0"')
        self.process = self.desktop.start(
            ["foot", "--config=/dev/null", "--window-size-chars=80x20", "sh", "-c", script,
             self.path, shown])
        wait_until(lambda: os.path.exists(self.path + ".ready"), "the terminal's shell runs")
        if self.desktop.tells_windows:
            wait_until(lambda: self.desktop.windows.active == self.window, "foot is in front")
        else:
            self._press_until_it_arrives()
        return self

    def _input(self):
        try:
            with open(self.path, "rb") as file:
                return file.read()
        except FileNotFoundError:
            return b""

    def is_in_front(self):
        told = self._input()
        return told.rfind(self._COMES) >= told.rfind(self._GOES)

    def text(self):
        typed = self._input().replace(self._COMES, b"").replace(self._GOES, b"")
        return typed.decode(errors="replace").replace("\r", "\n")

    def geometry(self):
        return self.desktop.windows.top(pid=self.process.pid)

    @property
    def window(self):
        window = self.geometry()
        return window.id if window else "no window yet"

    def copy_word(self):
        """Selects the word at the top left and copies it by its key."""
        def copy():
            Terminal.copy_word(self)
            self.desktop.keyboard.press("Control+Shift+c")
        # What is clicked on may still be on its way to its place.
        self._until_copied(copy)


class QtTerminal(Terminal):
    """A qterminal, for compositors on which foot does not run."""

    source_id = "qterminal"
    source_name = "QTerminal"

    def _is_of_wayland(self):
        return True

    def start(self, shown=""):
        script = self.desktop.path("files", os.path.basename(self.path) + ".sh")
        with open(script, "w") as file:
            file.write(f'printf %s "{shown}"; stty raw -echo; : > "{self.path}.ready"; '
                       f'exec cat >> "{self.path}"')
        self._start(["qterminal", "-e", "sh", script], {"QT_QPA_PLATFORM": "wayland"})
        wait_until(lambda: os.path.exists(self.path + ".ready"), "the terminal's shell runs")
        # It has the keys some time before it knows its own.
        self._press_until_it_arrives()
        return self


class _Editor(_Program):
    """A text editor on a file of its own. Its title tells whether it was changed.

    `backend` is "x11" for one that runs as a program of X11 on a Wayland desktop.
    """

    command = ()

    def __init__(self, desktop, name, backend=None):
        super().__init__(desktop, name)
        self._backend = backend or desktop.kind

    def start(self, text=""):
        with open(self.path, "w") as file:
            file.write(text)
        self._saved = text
        self._start([*self.command, self.path], self._environment())
        wait_until(lambda: os.path.basename(self.path) in self.geometry().title,
                   "the editor shows its file")
        return self

    def _environment(self):
        raise NotImplementedError

    def _is_of_wayland(self):
        return self._backend == "wayland"

    def _find_window(self):
        window = super()._find_window()
        return window if window and window.title else None

    def is_changed(self):
        return "*" in self.geometry().title

    def text(self):
        """What is in the editor: saves it and reads the file."""
        def is_saved():
            self.desktop.keyboard.press("Control+s")
            # Something may arrive between the key and the look at the title.
            return not holds_for(1, self.is_changed)

        if self.is_changed():
            wait_until(is_saved, "the editor saved its text")
        with open(self.path) as file:
            return file.read()

    def wait_for_arrival(self, timeout=TIMEOUT):
        """Waits until something was typed or pasted, pressing no key for it."""
        wait_until(self.is_changed, "something arrives in the editor", timeout)

    def wait_for_text(self, expected, timeout=TIMEOUT):
        """Waits until something arrives and expects the text to be `expected` then.

        Keys are pressed only after the arrival, so that they cannot mix with a paste under way.
        """
        self.wait_for_arrival(timeout)
        wait_until(lambda: self.text().rstrip("\n") == expected,
                   lambda: f"the editor got “{expected}”, it has “{self.text()}”", timeout)

    def copy_all(self):
        if self._backend == self.desktop.kind:
            self._press_copy()
            return
        # The compositor takes over what a program of X11 copies some time after it is in front.
        self._until_copied(self._press_copy)

    def _press_copy(self):
        self.desktop.keyboard.press("Control+a")
        self.desktop.keyboard.press("Control+c")


class GtkEditor(_Editor):
    command = ("mousepad", "--disable-server")
    source_id = "org.xfce.mousepad"
    source_name = "Mousepad"

    def __init__(self, desktop, name="gtk.txt", *, backend=None):
        super().__init__(desktop, name, backend)

    def start(self, text=""):
        super().start(text)
        if self._backend == "wayland":
            # Earlier ones call themselves by what is no desktop entry's name.
            self.source_id = self.geometry().app_id
            if not os.path.exists(f"/usr/share/applications/{self.source_id}.desktop"):
                self.source_name = self.source_id
        return self

    def _environment(self):
        return {"GDK_BACKEND": self._backend}


class QtEditor(_Editor):
    command = ("featherpad", "--standalone")
    source_id = "featherpad"
    source_name = "FeatherPad"

    def __init__(self, desktop, name="qt.txt", *, backend=None):
        super().__init__(desktop, name, backend)

    def _environment(self):
        return {"QT_QPA_PLATFORM": {"x11": "xcb"}.get(self._backend, self._backend)}


class _CommandEditor(_Program):
    """An editor to which Control+V is a command of its own. It is told to write its file at each
    change, so that no key need be pressed to see what is in it, and another once it is ready."""

    def _arguments(self):
        raise NotImplementedError

    def start(self):
        with open(self.path, "w"):
            pass
        self._start(self._arguments())
        wait_until(lambda: os.path.exists(self.path + ".ready"), "the editor shows its file")
        wait_until(self.is_in_front, "the editor is in front")
        return self

    def text(self):
        with open(self.path) as file:
            return file.read()

    def wait_for_text(self, expected, timeout=TIMEOUT):
        wait_until(lambda: self.text().rstrip("\n") == expected,
                   lambda: f"the editor got “{expected}”, it has “{self.text()}”", timeout)


class Emacs(_CommandEditor):
    def __init__(self, desktop, name="emacs.txt"):
        super().__init__(desktop, name)

    def _arguments(self):
        return ["emacs", "-Q", self.path, "--eval", """(progn
            (add-hook 'after-change-functions
                (lambda (&rest _) (write-region nil nil buffer-file-name nil 'quiet)) nil t)
            (write-region "" nil (concat buffer-file-name ".ready") nil 'quiet))"""]


class GVim(_CommandEditor):
    def __init__(self, desktop, name="gvim.txt"):
        super().__init__(desktop, name)

    def _arguments(self):
        return ["gvim", "-f", "-n", "-i", "NONE",
                "-c", "autocmd TextChanged,TextChangedI * silent write",
                "-c", "call writefile([], expand('%') . '.ready')", self.path]


class SeenEditor(_Program):
    """A GTK editor seen through assistive technology, where no other way tells what is in front.
    Its desktop has to have `accessibility`."""

    source_id = source_name = None

    def __init__(self, desktop, name="seen.txt"):
        super().__init__(desktop, name)

    def start(self, text=""):
        with open(self.path, "w") as file:
            file.write(text)
        self.process = self.desktop.start(["mousepad", "--disable-server", self.path],
                                          environment={"NO_AT_BRIDGE": "0"})
        self._seen = self.desktop.accessibility.application(self.process.pid)
        wait_until(self.is_in_front, lambda: "the editor is in front: " + self._seen.describe())
        self._content = self._seen.find("text")
        # The first keys reach it some time later.
        wait_until(lambda: "focused" in self._content.states, "its text has the keys")
        return self

    def is_in_front(self):
        return any("active" in frame.states for frame in self._seen.find_all("frame"))

    def text(self):
        return self._content.text

    def wait_for_arrival(self, timeout=TIMEOUT):
        wait_until(self.text, "something arrives in the editor", timeout)

    def wait_for_text(self, expected, timeout=TIMEOUT):
        wait_until(lambda: self.text() == expected,
                   lambda: f"the editor got “{expected}”, it has “{self.text()}”", timeout)

    def copy_all(self):
        self.desktop.keyboard.press("Control+a")
        self.desktop.keyboard.press("Control+c")
