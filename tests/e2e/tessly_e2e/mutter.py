"""The GNOME desktop's compositor, without a screen."""

import os
import re

import dbus
import dbus.bus
from Xlib.ext import xfixes

from . import procfs
from .keyboard import Keyboard, Pointer
from .processes import read_log
from .waiting import wait_until
from .wayland_session import WaylandSession

_REMOTE_DESKTOP = "org.gnome.Mutter.RemoteDesktop"
_SESSION = _REMOTE_DESKTOP + ".Session"
_TIMEOUT = 10  # seconds, for one call


class RemoteKeyboard(Keyboard):
    """A keyboard by the interface for being used from afar; without it there is none here."""

    def __init__(self, address):
        self._bus = dbus.bus.BusConnection(address)
        wait_until(lambda: self._bus.name_has_owner(_REMOTE_DESKTOP), "mutter is on the bus")
        self._session = self._bus.call_blocking(
            _REMOTE_DESKTOP, "/org/gnome/Mutter/RemoteDesktop", _REMOTE_DESKTOP, "CreateSession",
            "", (), timeout=_TIMEOUT)
        self._call("Start", "")
        # The first key after the start may get lost; this one means nothing.
        self.press("Shift")

    def close(self):
        self._bus.close()

    def _call(self, method, signature, *arguments):
        self._bus.call_blocking(_REMOTE_DESKTOP, self._session, _SESSION, method, signature,
                                arguments, timeout=_TIMEOUT)

    def _send(self, code, is_down):
        self._call("NotifyKeyboardKeycode", "ub", code - 8, is_down)


class Mutter(WaylandSession):
    """It tells nobody which windows there are, so `windows`, like `clipboard`, is of X11."""

    name = "GNOME"
    tells_windows = False

    def __init__(self, *, size=(1280, 800)):
        super().__init__()
        self.size = size

    def _start_compositor(self):
        folder = self.path("compositor")
        self.compositor = self.start(
            [*self._command(), "--wayland-display", "mutter",
             "--virtual-monitor", "{}x{}".format(*self.size)],
            environment={"XDG_RUNTIME_DIR": folder, **self._homes(folder)})

        def x11():
            return re.search(r"Using public X11 display (:\d+)", self.output())
        wait_until(lambda: x11() or self.compositor.poll() is not None,
                   lambda: "mutter starts: " + self.output())
        if self.compositor.poll() is not None:
            raise AssertionError("mutter cannot run here: " + self.output())
        self._use(os.path.join(folder, "mutter"), x11().group(1))
        # Its X server asks for a key, which lies where the compositor runs.
        keys = wait_until(lambda: [name for name in os.listdir(folder)
                                   if name.startswith(".mutter-Xwaylandauth.")], "there is a key")
        self.environment["XAUTHORITY"] = os.path.join(folder, keys[0])
        self.keyboard = RemoteKeyboard(self.environment["DBUS_SESSION_BUS_ADDRESS"])
        self.clipboard = self.x_clipboard
        self.windows = self.x_windows
        self.pointer = Pointer(self.display)
        self._changes = 0
        self.display.xfixes_query_version()
        self.display.xfixes_select_selection_input(
            self.display.screen().root, self.display.get_atom("CLIPBOARD"),
            xfixes.XFixesSetSelectionOwnerNotifyMask)

    def _command(self):
        # Later ones know nothing of sessions of X11.
        version = int(re.search(rb"mutter (\d+)", self.run(["mutter", "--version"]).stdout)[1])
        return ["mutter", "--headless", "--wayland", *(["--sm-disable"] if version < 49 else [])]

    def _homes(self, folder):
        """Where it finds nothing of the machine's settings."""
        return {"XDG_CONFIG_HOME": folder, "XDG_CACHE_HOME": folder, "HOME": folder}

    def clipboard_changes(self):
        """How often X11 programs were told of something new on the clipboard. What Wayland programs
        copy always belongs to the same window there."""
        self.display.sync()
        while self.display.pending_events():
            self.display.next_event()  # nothing else is asked for
            self._changes += 1
        return self._changes

    @property
    def display(self):
        # The library looks for the key in the environment.
        before = os.environ.get("XAUTHORITY")
        os.environ["XAUTHORITY"] = self.environment["XAUTHORITY"]
        try:
            return super().display
        finally:
            if before is None:
                del os.environ["XAUTHORITY"]
            else:
                os.environ["XAUTHORITY"] = before

    def x_server(self):
        """The process id of its X server, once that is there."""
        assert self.display  # that it is
        return procfs.child(self.compositor.pid, "Xwayland")

    def output(self):
        with open(self.compositor.output_path, errors="replace") as file:
            return file.read() + read_log(self.compositor)

    def _disconnect(self):
        keyboard = self.__dict__.pop("keyboard", None)
        if keyboard is not None:
            keyboard.close()
        super()._disconnect()
