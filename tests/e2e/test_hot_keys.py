"""The keys that paste by position, whichever program is in front."""

import unittest

from Xlib import X

from tessly_e2e import wait_until
from tessly_e2e.case import DesktopCase, TesslyCase
from tessly_e2e.editors import GtkEditor, Terminal
from tessly_e2e.keyboard import KEYS


class DirectPaste(TesslyCase):
    accessible = True

    def record_three(self):
        for text in ("third entry", "second entry", "first entry"):
            self.record(text)

    def expect_third_entry_in(self, program):
        self.keyboard.press("Alt+Shift+3")
        program.wait_for_text("third entry")
        self.assertIsNone(self.tessly.panel_window())
        self.assertEqual(self.keyboard.keys_down(), set())

    def test_the_third_key_pastes_the_third_entry_into_a_terminal(self):
        self.record_three()
        self.expect_third_entry_in(Terminal(self.desktop).start())

    def test_the_third_key_pastes_the_third_entry_into_a_gtk_editor(self):
        self.record_three()
        self.expect_third_entry_in(GtkEditor(self.desktop).start())

    def test_the_tenth_key_is_zero(self):
        for number in range(10, 0, -1):
            self.record(f"entry number {number}")
        terminal = Terminal(self.desktop).start()
        self.keyboard.press("Alt+Shift+0")
        terminal.wait_for_text("entry number 10")

    def test_locks_do_not_keep_a_key_from_working(self):
        self.record_three()
        terminal = Terminal(self.desktop).start()
        self.keyboard.press("NumLock")
        self.keyboard.press("CapsLock")
        self.keyboard.press("Alt+Shift+3")
        terminal.wait_for_text("third entry")

    def test_keys_are_places_on_the_keyboard_whatever_the_layout(self):
        self.record_three()
        terminal = Terminal(self.desktop).start()
        # Its upper row gives digits only with Shift.
        self.desktop.run(["setxkbmap", "-layout", "fr"])
        self.keyboard.press("Alt+Shift+3")
        terminal.wait_for_text("third entry")

    def test_beyond_the_history_nothing_is_pasted_and_the_panel_says_so(self):
        self.record_three()
        terminal = Terminal(self.desktop).start()
        self.keyboard.press("Alt+Shift+7")
        self.tessly.open_panel()
        self.wait_for_banner(self.tessly, "There is no clipboard item at position 7.")
        self.assertEqual(terminal.text(), "")

    def test_a_search_in_the_panel_does_not_change_what_is_at_a_position(self):
        self.record_three()
        terminal = Terminal(self.desktop).start()
        panel = self.tessly.open_panel()
        panel.search("third")
        self.keyboard.press("Alt+Shift+2")
        self.tessly.wait_for_closed_panel()
        # The panel itself was in front, and it is not pasted into.
        wait_until(lambda: self.clipboard.read() == b"second entry", "the entry is copied")
        self.assertEqual(terminal.text(), "")


class ReleasedKeys(TesslyCase):
    settings = {"directPasteShortcuts": False}

    def test_with_direct_paste_off_the_keys_reach_the_program_in_front(self):
        self.record("first entry")
        terminal = Terminal(self.desktop).start()
        self.keyboard.press("Alt+Shift+1")
        wait_until(terminal.text, "the terminal gets the key")
        self.assertNotIn("entry", terminal.text())


class TakenKeys(DesktopCase):
    """Another program held two of the keys before Tessly started."""

    accessible = True

    def setUp(self):
        super().setUp()
        root = self.desktop.display.screen().root
        for key in ("3", "0"):
            root.grab_key(KEYS[key], X.Mod1Mask | X.ShiftMask, True, X.GrabModeAsync,
                          X.GrabModeAsync)
        self.desktop.display.sync()

    def test_they_are_named_and_the_others_work(self):
        tessly = self.start_tessly()
        tessly.open_panel()
        self.wait_for_banner(
            tessly, "Some direct-paste shortcuts are already in use: ⌥⇧3, 0.")
        tessly.close_panel()
        for text in ("second entry", "first entry"):
            self.clipboard.copy(text)
            tessly.history.wait_for_text(text)
        terminal = Terminal(self.desktop).start()
        self.keyboard.press("Alt+Shift+3")
        self.keyboard.press("Alt+Shift+2")
        terminal.wait_for_text("second entry")


if __name__ == "__main__":
    unittest.main()
