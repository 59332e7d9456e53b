"""sway: copies that follow each other or something else at once, and what commands promise."""

import unittest

import shared_tests
import wayland_tests
from tessly_e2e.editors import WaylandTerminal
from tessly_e2e.sway import Sway
from tessly_e2e.wayland_case import WaylandCase


class QuickCopies(shared_tests.QuickCopies, WaylandCase):
    desktop_class = Sway


class CommandsAtTheirWord(shared_tests.CommandsAtTheirWord, WaylandCase):
    desktop_class = Sway
    make = WaylandTerminal


class PendingCopies(shared_tests.PendingCopies, WaylandCase):
    desktop_class = Sway
    make = WaylandTerminal


class IgnoredInFront(shared_tests.IgnoredInFront, WaylandCase):
    desktop_class = Sway
    make = WaylandTerminal


class Leaving(wayland_tests.Leaving, WaylandCase):
    desktop_class = Sway


if __name__ == "__main__":
    unittest.main()
