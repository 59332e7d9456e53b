"""sway: pasting from the panel and by command, into programs of three toolkits and of X11."""

import unittest

import wayland_tests
from tessly_e2e.editors import GtkEditor, QtEditor, Terminal, WaylandTerminal
from tessly_e2e.sway import Sway, VirtualKeyboard
from tessly_e2e.wayland_case import WaylandCase


class IntoTerminal(wayland_tests.Into, WaylandCase):
    desktop_class = Sway
    make = WaylandTerminal


class IntoGtkEditor(wayland_tests.Into, WaylandCase):
    desktop_class = Sway
    make = GtkEditor


class IntoQtEditor(wayland_tests.Into, WaylandCase):
    desktop_class = Sway
    make = QtEditor


class IntoX11(WaylandCase):
    desktop_class = Sway

    def test_return_pastes_into_an_editor_on_x11(self):
        self.record("needle one")
        self.record("something else")
        program = GtkEditor(self.desktop, backend="x11").start()
        self.choose("needle")
        program.wait_for_text("needle one")

    def test_return_pastes_into_xterm(self):
        self.record("needle one")
        self.record("something else")
        program = Terminal(self.desktop).start()
        self.choose("needle")
        program.wait_for_text("needle one")


class WithoutLatinLetters(WaylandCase):
    """The keyboard has a layout on which no key bears a v, and keeps it."""

    desktop_class = Sway

    def paste_and_type(self, program):
        self.record("only entry")
        program.start()
        russian = VirtualKeyboard(self.desktop.connect(), "ru")
        self.addCleanup(russian.unplug)
        self.tessly.open_panel()
        russian.press("Return")
        self.tessly.wait_for_closed_panel()
        program.wait_for_arrival()
        russian.press("v")
        program.wait_for_text("only entryм")

    def test_it_pastes_into_an_editor(self):
        self.paste_and_type(GtkEditor(self.desktop))

    def test_it_pastes_into_a_terminal(self):
        self.paste_and_type(WaylandTerminal(self.desktop))


if __name__ == "__main__":
    unittest.main()
