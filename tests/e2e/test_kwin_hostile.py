"""KWin: owners of the clipboard that hang, flood or vanish."""

import unittest

import wayland_tests
from tessly_e2e.kwin import KWin
from tessly_e2e.wayland_case import WaylandCase


class Hostile(wayland_tests.Hostile, WaylandCase):
    desktop_class = KWin


if __name__ == "__main__":
    unittest.main()
