"""sway: pastes that follow each other, and clipboards that change before a paste's keys."""

import unittest

import shared_tests
import wayland_tests
from tessly_e2e.editors import GtkEditor, WaylandTerminal
from tessly_e2e.sway import Sway
from tessly_e2e.wayland_case import WaylandCase


class IntoTerminal(shared_tests.PasteOrder, wayland_tests.HeldKeys, WaylandCase):
    desktop_class = Sway
    make = WaylandTerminal


class IntoGtkEditor(shared_tests.PasteOrder, WaylandCase):
    desktop_class = Sway
    make = GtkEditor


class Overtaken(wayland_tests.Overtaken, WaylandCase):
    desktop_class = Sway
    make = WaylandTerminal


if __name__ == "__main__":
    unittest.main()
