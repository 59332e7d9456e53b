"""sway: the panel, the state of things, and what is left when the compositor goes."""

import unittest

import wayland_tests
from tessly_e2e.commands import Expecting
from tessly_e2e.editors import WaylandTerminal
from tessly_e2e.sway import Sway
from tessly_e2e.wayland_case import WaylandCase


class Panel(wayland_tests.Panel, WaylandCase):
    desktop_class = Sway
    terminal = WaylandTerminal

    def test_it_is_in_the_middle(self):
        panel = self.test_it_floats_whole_on_the_screen_and_has_the_keys()
        width, height = self.desktop.size
        self.assertLess(abs(panel.x + panel.width / 2 - width / 2), 2)
        self.assertLess(abs(panel.y + panel.height / 2 - height / 2), 20)


class Status(Expecting, WaylandCase):
    desktop_class = Sway

    def test_it_tells_what_works_here(self):
        status = self.status()
        self.assertEqual(
            {name: status[name] for name in ("running", "session", "capture", "paste", "hotKeys",
                                        "tray")},
            {"running": True, "session": "wayland", "capture": True, "paste": True,
             "hotKeys": False, "tray": False})


class CompositorsEnd(wayland_tests.CompositorsEnd, WaylandCase):
    desktop_class = Sway


class Killed(wayland_tests.Killed, WaylandCase):
    desktop_class = Sway


if __name__ == "__main__":
    unittest.main()
