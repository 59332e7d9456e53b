"""The Wayland desktops of the other tests, without Tessly: what is expected of it there has to be
possible there."""

import unittest

from tessly_e2e import wait_until
from tessly_e2e.editors import GtkEditor, QtEditor, QtTerminal, Terminal, WaylandTerminal
from tessly_e2e.kwin import KWin
from tessly_e2e.mutter import Mutter
from tessly_e2e.sway import Sway
from tessly_e2e.wayland_case import WaylandDesktopCase


class WithDataControl:
    def expect_paste(self, program, chord="Control+v"):
        self.clipboard.copy("pasted by hand")
        program.start()
        self.assertEqual(self.desktop.windows.active, program.window)
        self.keyboard.press(chord)
        program.wait_for_text("pasted by hand")

    def test_keys_and_the_clipboard_reach_a_gtk_editor(self):
        self.expect_paste(GtkEditor(self.desktop))

    def test_keys_and_the_clipboard_reach_a_qt_editor(self):
        self.expect_paste(QtEditor(self.desktop))

    def test_keys_and_the_clipboard_reach_a_terminal(self):
        self.expect_paste(self.terminal(self.desktop), "Control+Shift+v")

    def test_keys_and_the_clipboard_reach_an_editor_on_x11(self):
        self.expect_paste(GtkEditor(self.desktop, backend="x11"))

    def test_editors_copy(self):
        for make in (GtkEditor, QtEditor):
            with self.subTest(make.command[0]):
                editor = make(self.desktop).start(f"text of {make.command[0]}")
                before = self.clipboard.selection.count()
                editor.copy_all()
                wait_until(lambda: self.clipboard.selection.count() > before, "it is copied")
                self.assertEqual(self.clipboard.read().rstrip(b"\n"),
                                 f"text of {make.command[0]}".encode())
                editor.close()

    def test_an_owner_counts_what_it_is_asked_for(self):
        offer = self.clipboard.offer({"text/plain": b"plain", "text/html": b"<b>html</b>"})
        self.assertEqual(self.clipboard.targets(), ["text/plain", "text/html"])
        self.assertEqual(offer.content_requests(), [])
        self.assertEqual(self.clipboard.read("text/html"), b"<b>html</b>")
        self.assertEqual(offer.content_requests(), ["text/html"])


class OnSway(WithDataControl, WaylandDesktopCase):
    desktop_class = Sway
    terminal = WaylandTerminal

    def test_a_word_is_copied_with_the_mouse_in_a_terminal(self):
        WaylandTerminal(self.desktop).start(shown="pickme and more").copy_word()
        wait_until(lambda: self.clipboard.read() == b"pickme", "the word is on the clipboard")

    def test_the_screen_shows_what_is_on_it(self):
        empty = self.desktop.screen.picture()
        self.assertEqual((empty.width, empty.height), (1280, 800))
        Terminal(self.desktop).start()
        wait_until(lambda: self.desktop.screen.picture() != empty, "the terminal is seen")


class OnKWin(WithDataControl, WaylandDesktopCase):
    desktop_class = KWin
    terminal = QtTerminal


class OnMutter(WaylandDesktopCase):
    desktop_class = Mutter

    def test_keys_and_copies_of_x11_reach_a_terminal(self):
        terminal = WaylandTerminal(self.desktop).start()
        self.clipboard.copy("pasted by hand")
        self.keyboard.press("Control+Shift+v")
        terminal.wait_for_text("pasted by hand")

    def test_copies_of_wayland_programs_are_seen_by_those_of_x11(self):
        self.desktop.start(["wl-copy", "--foreground", "from Wayland"])
        wait_until(lambda: self.clipboard.read() == b"from Wayland", "the copy is on X11")


if __name__ == "__main__":
    unittest.main()
