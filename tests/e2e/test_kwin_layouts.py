"""KWin: pasting whatever the keyboard's layouts are; which of them is in effect is not told."""

import unittest

from tessly_e2e.editors import QtEditor, QtTerminal, SeenEditor
from tessly_e2e.kwin import KWin
from tessly_e2e.wayland_case import WaylandCase


class TwoLatinLayouts(WaylandCase):
    """The second one is in effect, which has another letter on the key that has the v in the first."""

    desktop_class = KWin
    desktop_options = {"keyboard": ("us,us", ",dvorak", "grp:alt_shift_toggle")}
    accessible = True

    def switch(self):
        with self.keyboard.held("Alt", "Shift"):
            pass

    def expect_paste(self, program, fetches_later=False):
        self.record("only entry")
        program.start()
        self.switch()
        self.keyboard.press("v")
        program.wait_for_arrival()
        self.tessly.command("paste", "1")
        if fetches_later:
            program.wait_for_text("konly entry")
        self.keyboard.press("v")
        self.switch()
        program.wait_for_text("konly entryk")

    def test_it_pastes_into_a_gtk_editor(self):
        # What is typed before it has the clipboard's content stands before that.
        self.expect_paste(SeenEditor(self.desktop), fetches_later=True)

    def test_it_pastes_into_a_qt_editor(self):
        self.expect_paste(QtEditor(self.desktop))

    def test_it_pastes_into_a_terminal(self):
        self.expect_paste(QtTerminal(self.desktop))


class WithoutLatinLetters(WaylandCase):
    """No key bears a v in any layout."""

    desktop_class = KWin
    desktop_options = {"keyboard": ("ru", "", "")}
    accessible = True

    def expect_paste(self, program):
        self.record("only entry")
        program.start()
        self.tessly.command("paste", "1")
        program.wait_for_arrival()
        self.keyboard.press("v")
        program.wait_for_text("only entryм")

    def test_it_pastes_into_an_editor(self):
        self.expect_paste(SeenEditor(self.desktop))

    def test_it_pastes_into_a_terminal(self):
        self.expect_paste(QtTerminal(self.desktop))


class KeysThatSwitchLayouts(WaylandCase):
    """What a terminal pastes by would switch the layout."""

    desktop_class = KWin
    desktop_options = {"keyboard": ("us,ru", ",", "grp:ctrl_shift_toggle")}

    def test_it_pastes_into_a_terminal_and_the_layout_stays(self):
        self.record("only entry")
        terminal = QtTerminal(self.desktop).start()
        self.tessly.command("paste", "1")
        self.keyboard.press("v")
        terminal.wait_for_text("only entryv")


if __name__ == "__main__":
    unittest.main()
