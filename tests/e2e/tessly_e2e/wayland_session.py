"""What the desktops on Wayland have in common."""

import os
import stat
from collections import namedtuple

import Xlib.display

from .clipboard import Clipboard
from .processes import read_log
from .session import Session
from .waiting import wait_until
from .wayland import Connection
from .wayland_program import WaylandProgram
from .windows import Windows

# A window as the compositor tells it. Its place is that of its content, without the frame.
Toplevel = namedtuple("Toplevel", "id app_id title pid x y width height is_active is_floating")

# Compositors run as an ordinary user where the tests do not.
ORDINARY_USER = 65534


def become_ordinary_user():
    """For a program that does not run as the superuser."""
    if os.geteuid() == 0:
        os.setgroups([])
        os.setgid(ORDINARY_USER)
        os.setuid(ORDINARY_USER)


class Toplevels:
    """The windows of a desktop, asked for in the same way on each; `all` is the desktop's own."""

    def all(self):
        """The windows that are seen, as Toplevel."""
        raise NotImplementedError

    def visible(self, *, pid=None, app_id=None):
        return [window for window in self.all() if (pid is None or window.pid == pid)
                and (app_id is None or window.app_id == app_id)]

    def top(self, *, pid):
        """A window of the program, the one with the keys first; None if it has none."""
        windows = sorted(self.visible(pid=pid), key=lambda window: window.is_active)
        return windows[-1] if windows else None

    @property
    def active(self):
        """The id of the window that has the keys; None for none."""
        return next((window.id for window in self.all() if window.is_active), None)

    focused = active


class WaylandSession(Session):
    """A desktop on Wayland that also runs programs of X11, which see it as `display`."""

    kind = "wayland"
    # What XDG_CURRENT_DESKTOP says.
    name = None
    # Whether one keyboard can let go of what another one holds.
    lifts_modifiers = True

    def _start_desktop(self):
        os.mkdir(self.path("compositor"), 0o700)
        self.environment["XDG_CURRENT_DESKTOP"] = self.name
        self.environment["GDK_BACKEND"] = "wayland,x11"
        self._connections = []
        self._start_compositor()

    def _start_compositor(self):
        """Starts it and tells it to `_use`."""
        raise NotImplementedError

    def _use(self, wayland, x11):
        """Has programs find the compositor: the path of its socket, and its X11 display."""
        wait_until(lambda: os.path.exists(wayland) and stat.S_ISSOCK(os.stat(wayland).st_mode),
                   lambda: "the compositor is there: " + read_log(self.compositor))
        self.socket = wayland
        self.environment["WAYLAND_DISPLAY"] = wayland
        self.environment["DISPLAY"] = x11

    def connect(self):
        """A connection to the compositor, closed with the desktop."""
        connection = Connection(self.socket)
        self._connections.append(connection)
        return connection

    @property
    def display(self):
        """The X11 side, where the windows of Wayland programs are not seen. Compositors start it
        when it is first needed; what comes before they manage it they do not see."""
        if "_display" not in self.__dict__:
            self._display = Xlib.display.Display(self.environment["DISPLAY"])
            wait_until(lambda: Windows(self._display).is_managed, "X11 is there")
        return self._display

    @property
    def x_windows(self):
        return Windows(self.display)

    @property
    def x_clipboard(self):
        """CLIPBOARD as X11 programs have it."""
        if "_x_clipboard" not in self.__dict__:
            self._x_clipboard = Clipboard(self)
        return self._x_clipboard

    def _disconnect(self):
        display = self.__dict__.pop("_display", None)
        if display is not None:
            try:
                display.close()
            except Exception:  # noqa: BLE001 - a server that died in the test has nothing to close
                pass
        for connection in self.__dict__.pop("_connections", []):
            connection.close()

    def close(self):
        self._end_compositor()
        super().close()

    def _end_compositor(self):
        """Asked to, it takes its X11 socket away; killed, it would leave that behind."""
        compositor = self.__dict__.get("compositor")
        if compositor is None:
            return
        self._disconnect()
        self.end_all_but([process for process in self.running
                          if process in (compositor, self.__dict__.get("bus"))])
        compositor.terminate()
        try:
            compositor.wait(5)
        except Exception:  # noqa: BLE001 - then it is killed with the rest
            pass
        self._remove_x11_socket()

    def kill_compositor(self):
        """Ends the compositor as a crash does."""
        self.end(self.compositor)

    def _remove_x11_socket(self):
        number = self.environment.get("DISPLAY", "").lstrip(":").split(".")[0]
        if not number:
            return
        for path in (f"/tmp/.X11-unix/X{number}", f"/tmp/.X{number}-lock"):
            try:
                os.unlink(path)
            except FileNotFoundError:
                pass

    def program(self):
        """A program that copies and shows a window the moment it is told to; for a `with`."""
        return WaylandProgram(self)

    def clipboard_changes(self):
        """How often there was something new on the clipboard."""
        return self.clipboard.selection.count()

    def is_alive(self):
        return self.compositor.poll() is None
