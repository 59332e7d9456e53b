"""KWin: what is copied, by whom, and what becomes of it in the history."""

import unittest

import wayland_tests
from tessly_e2e.kwin import KWin
from tessly_e2e.wayland_case import WaylandCase


class Copies(wayland_tests.Copies, WaylandCase):
    desktop_class = KWin


class Commands(wayland_tests.Commands, WaylandCase):
    desktop_class = KWin


if __name__ == "__main__":
    unittest.main()
