"""KWin: pastes that follow each other, and clipboards that change before a paste's keys."""

import unittest

import shared_tests
import wayland_tests
from tessly_e2e import wait_until
from tessly_e2e.editors import GtkEditor, QtTerminal
from tessly_e2e.kwin import KWin
from tessly_e2e.portal import Portal
from tessly_e2e.wayland_case import WaylandCase


class IntoTerminal(shared_tests.PasteOrder, wayland_tests.HeldKeys, WaylandCase):
    desktop_class = KWin
    accessible = True
    make = QtTerminal

    def test_hot_keys_of_the_portal(self):
        portal = Portal(self.desktop).start()
        program = self.start_program()
        wait_until(lambda: self.status()["hotKeys"], "hot keys are held")
        for position in (2, 3, 4):
            portal.press(f"paste-{position:02}")
        self.expect_in(program, "two;", "three;", "four;")


class IntoGtkEditor(shared_tests.PasteOrder, WaylandCase):
    desktop_class = KWin
    accessible = True
    make = GtkEditor


class Overtaken(wayland_tests.Overtaken, WaylandCase):
    desktop_class = KWin
    make = QtTerminal


if __name__ == "__main__":
    unittest.main()
