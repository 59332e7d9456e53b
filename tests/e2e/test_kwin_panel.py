"""KWin: the panel, the state of things, and what is left when the compositor goes."""

import unittest

import wayland_tests
from tessly_e2e.commands import Expecting
from tessly_e2e.editors import QtTerminal
from tessly_e2e.kwin import KWin
from tessly_e2e.wayland_case import WaylandCase


class Panel(wayland_tests.Panel, WaylandCase):
    desktop_class = KWin
    accessible = True
    terminal = QtTerminal


class Status(Expecting, WaylandCase):
    desktop_class = KWin

    def test_it_tells_what_works_here(self):
        status = self.status()
        self.assertEqual(
            {name: status[name] for name in ("running", "session", "capture", "paste", "hotKeys",
                                        "tray")},
            {"running": True, "session": "wayland", "capture": True, "paste": True,
             "hotKeys": False, "tray": False})


class CompositorsEnd(wayland_tests.CompositorsEnd, WaylandCase):
    desktop_class = KWin


if __name__ == "__main__":
    unittest.main()
