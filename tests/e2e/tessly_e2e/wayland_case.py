"""The ground of the tests on Wayland: one desktop for the tests of a class, and a Tessly of its own
for each."""

import itertools
import time
from contextlib import contextmanager

import dbus
import dbus.bus

from .case import DesktopCase, TesslyCase
from .tessly import BUS_NAME
from .waiting import wait_until

_homes = itertools.count(1)


class WaylandDesktopCase(DesktopCase):
    """The desktop of the class, as `desktop`: each test finds it without programs, and with a home
    folder that nobody has used."""

    desktop_class = None
    desktop_options = {}

    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        cls._shared = cls.enterClassContext(cls.desktop_class(**cls.desktop_options))

    @contextmanager
    def make_desktop(self):
        desktop = self._shared
        before = desktop.running
        desktop.move_into(f"home-{next(_homes)}")
        try:
            yield desktop
        finally:
            desktop.end_all_but(before)
            if desktop.tells_windows and desktop.is_alive():
                wait_until(lambda: not desktop.windows.all(), "the windows are gone")


class WaylandCase(WaylandDesktopCase, TesslyCase):
    """Beside the desktop a Tessly that records."""


class Heartbeat:
    """Asks Tessly something every few milliseconds that its main thread answers. Use it in a `with`;
    `longest` is then how many seconds an answer took at the most."""

    _EVERY = 0.01

    def __init__(self, desktop):
        self._bus = dbus.bus.BusConnection(desktop.environment["DBUS_SESSION_BUS_ADDRESS"])
        self.longest = 0.0

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self._bus.close()

    def beat(self, seconds):
        """Asks for so long."""
        end = time.monotonic() + seconds
        while time.monotonic() < end:
            asked = time.monotonic()
            self._bus.call_blocking(BUS_NAME, "/com/brackmoor/tessly", BUS_NAME, "Status", "", (),
                                    timeout=30)
            self.longest = max(self.longest, time.monotonic() - asked)
            time.sleep(self._EVERY)


