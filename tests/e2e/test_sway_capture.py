"""sway: what is copied, by whom, and what becomes of it in the history."""

import unittest

import wayland_tests
from tessly_e2e.editors import QtEditor, Terminal, WaylandTerminal
from tessly_e2e.sway import Sway
from tessly_e2e.waiting import holds_for
from tessly_e2e.wayland_case import WaylandCase


class Copies(wayland_tests.Copies, WaylandCase):
    desktop_class = Sway

    def test_a_word_selected_in_a_terminal_is_recorded_with_its_source(self):
        terminal = WaylandTerminal(self.desktop).start(shown="terminalword and more")
        terminal.copy_word()
        clip = self.history.wait_for_text("terminalword")
        self.assertEqual(clip.kind, "text")
        self.expect_source(clip, terminal)

    def test_text_of_xclip_is_recorded_while_a_program_of_x11_is_in_front(self):
        # The compositor takes over what X11 programs copy only then.
        terminal = Terminal(self.desktop).start()
        self.desktop.x_clipboard.copy("by way of X11")
        self.expect_source(self.history.wait_for_text("by way of X11"), terminal)


class IgnoredApplication(WaylandCase):
    desktop_class = Sway
    settings = {"ignoredBundleIDs": "FeatherPad"}

    def test_its_copies_are_neither_read_nor_recorded(self):
        editor = QtEditor(self.desktop).start("from an ignored editor")
        offer = self.clipboard.offer({"text/plain;charset=utf-8": b"copied in front of it"})
        self.assertTrue(holds_for(1, lambda: offer.content_requests() == []))
        editor.copy_all()
        self.assertTrue(holds_for(1, lambda: self.recorded_texts() == []))
        self.assertEqual(offer.content_requests(), [])
        editor.close()
        WaylandTerminal(self.desktop).start()
        # A copy made just after leaving the application still counts as its own.
        self.assertTrue(holds_for(1, lambda: self.recorded_texts() == []))
        self.expect_still_recording()


class Commands(wayland_tests.Commands, WaylandCase):
    desktop_class = Sway


if __name__ == "__main__":
    unittest.main()
