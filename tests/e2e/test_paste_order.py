"""Pastes that follow each other, and clipboards that change before a paste's keys."""

import unittest

import shared_tests
from tessly_e2e import wait_until
from tessly_e2e.case import TesslyCase
from tessly_e2e.commands import FAILED
from tessly_e2e.editors import GtkEditor, Terminal
from tessly_e2e.hand import BETWEEN_KEYS, pace, pause
from tessly_e2e.waiting import holds_for


class IntoTerminal(shared_tests.PasteOrder, TesslyCase):
    make = Terminal

    def test_keys_pressed_while_the_modifiers_stay_down(self):
        program = self.start_program()
        with self.keyboard.held("Alt", "Shift"):
            for key in "234":
                self.keyboard.press(key)
                pause(BETWEEN_KEYS)
        self.expect_in(program, "two;", "three;", "four;")

    def test_chords_in_quick_succession(self):
        program = self.start_program()
        for number in pace(0.05, 3):
            self.keyboard.press(f"Alt+Shift+{number + 2}")
        self.expect_in(program, "two;", "three;", "four;")


class IntoGtkEditor(shared_tests.PasteOrder, TesslyCase):
    make = GtkEditor
    # So that a use can be seen. The entries below the one used stay where they are.
    settings = {"moveUsedItemsToTop": True}

    def wait_for_uses(self, *texts):
        wait_until(lambda: [clip.plain_text for clip in self.history.clips()][:len(texts)]
                   == list(reversed(texts)),
                   lambda: f"the uses are noted: {self.recorded_texts()}")

    def test_commands_started_at_once_arrive_once_each(self):
        self.skipTest("which entry has which position depends on which was used first")

    def test_keys_pressed_while_the_modifiers_stay_down(self):
        program = self.start_program()
        with self.keyboard.held("Alt", "Shift"):
            for key in "234":
                self.keyboard.press(key)
                pause(BETWEEN_KEYS)
        self.wait_for_uses("two;", "three;", "four;")
        self.expect_in(program, "two;", "three;", "four;")

    def test_chords_in_quick_succession(self):
        program = self.start_program()
        for number in pace(0.05, 3):
            self.keyboard.press(f"Alt+Shift+{number + 2}")
        self.wait_for_uses("two;", "three;", "four;")
        self.expect_in(program, "two;", "three;", "four;")


class Overtaken:
    """Another program copies between the moment at which an entry is put on the clipboard and the
    one at which the keys are pressed."""

    accessible = True
    settings = {"moveUsedItemsToTop": True}

    def setUp(self):
        super().setUp()
        self.record("older entry")
        self.record("newer entry")
        self.program = self.make(self.desktop).start()

    def expect_nothing_pasted(self):
        self.assertTrue(holds_for(1, lambda: self.program.text() == ""), self.program.text())
        self.assertEqual(self.clipboard.read(), b"a password")
        self.assertEqual([clip.plain_text for clip in self.history.clips()
                          if clip.plain_text != "a password"], ["newer entry", "older entry"])

    def test_by_a_hot_key_nothing_is_pasted_and_the_panel_says_what_happened(self):
        with self.keyboard.held("Alt", "Shift"):
            self.keyboard.press("2")
            self.wait_for_own_content()
            self.clipboard.copy("a password")
        self.expect_nothing_pasted()
        self.tessly.open_panel()
        self.wait_for_banner(self.tessly, "Copied to the clipboard.")

    def test_by_a_command_nothing_is_pasted_and_the_command_fails(self):
        with self.keyboard.held("Alt", "Shift"):
            command = self.desktop.start([self.tessly.program, "paste", "2"], name="command")
            self.wait_for_own_content()
            self.clipboard.copy("a password")
        self.assertEqual(command.wait(), FAILED)
        with open(command.log_path) as log:
            self.assertEqual(len(log.read().splitlines()), 1)
        self.expect_nothing_pasted()


class OvertakenInTerminal(Overtaken, TesslyCase):
    make = Terminal


class OvertakenInGtkEditor(Overtaken, TesslyCase):
    make = GtkEditor


if __name__ == "__main__":
    unittest.main()
