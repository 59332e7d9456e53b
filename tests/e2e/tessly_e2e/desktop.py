"""A desktop of the test's own: X server, window manager, session bus, home folder."""

import os

import Xlib.display

from .clipboard import Clipboard
from .keyboard import Pointer, XKeyboard
from .processes import read_log
from .screen import Screen
from .session import Session
from .waiting import Timeout, wait_until
from .windows import Windows
from .x_program import XProgram


class Desktop(Session):
    """The desktop on X11."""

    kind = "x11"

    def __init__(self, *, bus=True, size=(1280, 800)):
        super().__init__(bus=bus)
        self.size = size

    def _start_desktop(self):
        self._start_server()
        self._start_window_manager()

    def _disconnect(self):
        display = self.__dict__.pop("display", None)
        if display is not None:
            try:
                display.close()
            except Exception:  # noqa: BLE001 - a server that died in the test has nothing to close
                pass

    def _start_server(self):
        reading, writing = os.pipe()
        try:
            server = self.start(
                ["Xvfb", "-displayfd", str(writing), "-screen", "0",
                 "{}x{}x24".format(*self.size), "-nolisten", "tcp", "-noreset"],
                pass_fds=(writing,))
        finally:
            os.close(writing)
        with os.fdopen(reading) as numbers:
            number = numbers.readline().strip()  # written once the server accepts connections
        if not number:
            raise Timeout("Xvfb did not start: " + read_log(server))
        self.server = server
        self.environment["DISPLAY"] = ":" + number
        self.display = Xlib.display.Display(":" + number)
        self.windows = Windows(self.display)
        self.keyboard = XKeyboard(self.display)
        self.pointer = Pointer(self.display)
        self.screen = Screen(self.display)
        self.clipboard = Clipboard(self)

    def _start_window_manager(self):
        self.start(["openbox", "--sm-disable"])
        wait_until(lambda: self.windows.is_managed, "openbox manages the windows")

    def is_alive(self):
        return self.server.poll() is None

    def program(self):
        """A program that copies and shows a window the moment it is told to; for a `with`."""
        return XProgram(self)

    def keyboard_state(self):
        """The keyboard's layout, its keys' symbols and the layout in use, to compare."""
        xkb = self.run(["setxkbmap", "-query"]).stdout.decode()
        group = (self.display.screen().root.query_pointer().mask >> 13) & 3
        return xkb, self.keyboard.map(), group
