"""KWin: the panel, the state of things, and what is left when the compositor goes."""

import unittest

import wayland_tests
from tessly_e2e.editors import QtTerminal
from tessly_e2e.kwin import KWin
from tessly_e2e.wayland_case import WaylandCase


class Panel(wayland_tests.Panel, WaylandCase):
    desktop_class = KWin
    accessible = True
    terminal = QtTerminal


class Status(wayland_tests.Status, WaylandCase):
    desktop_class = KWin


class StartsAndEnds(wayland_tests.StartsAndEnds, WaylandCase):
    desktop_class = KWin
    accessible = True
    editor = QtTerminal


class CompositorsEnd(wayland_tests.CompositorsEnd, WaylandCase):
    desktop_class = KWin


if __name__ == "__main__":
    unittest.main()
