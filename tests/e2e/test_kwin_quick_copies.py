"""KWin: copies that follow each other or something else at once, and what commands promise."""

import unittest

import shared_tests
import wayland_tests
from tessly_e2e.editors import QtTerminal
from tessly_e2e.kwin import KWin
from tessly_e2e.wayland_case import WaylandCase


class QuickCopies(shared_tests.QuickCopies, WaylandCase):
    desktop_class = KWin
    accessible = True


class CommandsAtTheirWord(shared_tests.CommandsAtTheirWord, WaylandCase):
    desktop_class = KWin
    accessible = True
    make = QtTerminal


class PendingCopies(shared_tests.PendingCopies, WaylandCase):
    desktop_class = KWin
    accessible = True
    make = QtTerminal


class IgnoredInFront(shared_tests.IgnoredInFront, WaylandCase):
    desktop_class = KWin
    accessible = True
    make = QtTerminal


# sway does not tell that a window has another name now.
class Renamed(shared_tests.Renamed, WaylandCase):
    desktop_class = KWin


class RenamedAndIgnored(shared_tests.RenamedAndIgnored, WaylandCase):
    desktop_class = KWin


class Leaving(wayland_tests.Leaving, WaylandCase):
    desktop_class = KWin


if __name__ == "__main__":
    unittest.main()
