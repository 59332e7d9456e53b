"""KWin: pasting from the panel and by command, into programs of two toolkits and a terminal."""

import unittest

import wayland_tests
from tessly_e2e.editors import GtkEditor, QtEditor, QtTerminal
from tessly_e2e.kwin import KWin
from tessly_e2e.wayland_case import WaylandCase


class IntoTerminal(wayland_tests.Into, WaylandCase):
    desktop_class = KWin
    accessible = True
    make = QtTerminal


class IntoGtkEditor(wayland_tests.Into, WaylandCase):
    desktop_class = KWin
    accessible = True
    make = GtkEditor


class IntoQtEditor(wayland_tests.Into, WaylandCase):
    desktop_class = KWin
    accessible = True
    make = QtEditor


if __name__ == "__main__":
    unittest.main()
