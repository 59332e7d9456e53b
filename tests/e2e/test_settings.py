"""The settings window, and what its controls do."""

import unittest

from tessly_e2e import wait_until
from tessly_e2e.case import DesktopCase, TesslyCase
from tessly_e2e.editors import GtkEditor, Terminal
from tessly_e2e.waiting import holds_for, settled


class SettingsCase(TesslyCase):
    accessible = True

    def open_settings(self, tab="General"):
        """Opens the window from the panel, as a person does, on a tab; returns its tree."""
        self.tessly.open_panel()
        ui = self.ui(self.tessly)
        self.click(ui.find("push button", "Settings"))
        self.click(ui.find("page tab", tab))
        wait_until(lambda: "selected" in ui.find("page tab", tab).states, f"{tab} is shown")
        wait_until(lambda: self.tessly.panel_window() is None, "the panel is closed")
        return ui

    def settings_on_disk(self):
        with open(self.tessly.settings_path) as file:
            lines = file.read().splitlines()
        return dict(line.split("=", 1) for line in lines if "=" in line)

    def wait_for_setting(self, key, value):
        wait_until(lambda: self.settings_on_disk().get(key) == value,
                   lambda: f"{key} is {value}: {self.settings_on_disk()}")

    def toggle(self, ui, label):
        box = ui.find("check box", label)
        before = "checked" in box.states
        self.click(box)
        wait_until(lambda: ("checked" in box.states) != before, f"“{label}” is switched")

    def reach(self, ui, role, name):
        """A control of the page that is shown, scrolled into view."""
        page = ui.find("page tab list").extents
        middle = page.x + page.width // 2, page.y + page.height + 150

        def look():
            found = ui.find_all(role, name)
            if not found:
                self.desktop.pointer.click(*middle, button=5)  # the wheel
            return found
        wait_until(look, f"{role} “{name}” comes into view")
        return settled(lambda: ui.find_all(role, name)[0], 0.2, f"the place of “{name}”")

    def expect_text(self, ui, text):
        self.reach(ui, None, text)


class General(SettingsCase):
    def test_every_control_is_there_and_shows_what_is_set(self):
        ui = self.open_settings()
        states = {box.name: "checked" in box.states for box in ui.find_all("check box")}
        self.assertEqual(states, {
            "Launch Tessly at login": False, "Remember images": True,
            "Remember copied files": True, "Move pasted items to the top": False,
            "Enable direct position shortcuts": True})
        values = {box.name: box.value for box in ui.find_all("spin box")}
        self.assertEqual(values, {"Keep up to 500 unpinned items": 500,
                                  "Maximum item size: 25 MB": 25})

    def test_settings_hold_at_once_and_after_a_restart(self):
        ui = self.open_settings()
        self.toggle(ui, "Remember images")
        self.toggle(ui, "Move pasted items to the top")
        self.wait_for_setting("captureImages", "false")
        self.wait_for_setting("moveUsedItemsToTop", "true")
        self.tessly.stop()
        self.tessly.start()
        ui = self.open_settings()
        self.assertNotIn("checked", ui.find("check box", "Remember images").states)
        self.assertIn("checked", ui.find("check box", "Move pasted items to the top").states)

    def test_with_direct_paste_off_the_keys_reach_other_programs_again(self):
        self.record("only entry")
        self.toggle(self.open_settings(), "Enable direct position shortcuts")
        self.tessly.open_panel()
        self.wait_for_banner(self.tessly, "Direct-paste shortcuts released.")
        self.tessly.close_panel()
        terminal = Terminal(self.desktop).start()
        self.keyboard.press("Alt+Shift+1")
        wait_until(terminal.text, "the terminal gets the key")
        self.assertNotIn("entry", terminal.text())

    def test_launching_at_login_is_refused_to_a_copy_that_is_not_installed(self):
        ui = self.open_settings()
        box = ui.find("check box", "Launch Tessly at login")
        self.click(box)
        self.wait_for_banner(self.tessly, "Move Tessly to Applications first.")
        self.assertNotIn("checked", box.states)

    def test_the_keys_reach_every_control(self):
        ui = self.open_settings()
        # Not by another click: the window manager looks at clicks first, and keys may overtake them.
        wait_until(lambda: "focused" in ui.find("page tab", "General").states, "the tab has the focus")
        wanted = ["Launch Tessly at login", "Remember images", "Remember copied files",
                  "Keep up to 500 unpinned items", "Maximum item size: 25 MB",
                  "Move pasted items to the top", "Enable direct position shortcuts"]
        for name in wanted:
            self.keyboard.press("Tab")
            wait_until(lambda: any(control.name == name and "focused" in control.states
                                   for control in ui.find_all()), f"“{name}” has the focus")
        self.keyboard.press("space")
        self.wait_for_setting("directPasteShortcuts", "false")


class Limits(SettingsCase):
    settings = {"maxHistory": 12}

    def test_a_lowered_maximum_trims_at_once(self):
        for number in range(12):
            self.record(f"entry {number}")
        ui = self.open_settings()
        spin = ui.find("spin box", "Keep up to 12 unpinned items")
        place = spin.extents
        self.desktop.pointer.click(place.x + place.width // 4, place.y + place.height // 2)
        self.wait_for_setting("maxHistory", "10")
        wait_until(lambda: len(self.history.clips()) == 10, "the two oldest are gone")
        self.expect_text(ui, "Keep up to 10 unpinned items")
        spin.take_focus()
        self.keyboard.press("Up")
        self.wait_for_setting("maxHistory", "60")


class Privacy(SettingsCase):
    def test_it_tells_what_is_allowed_and_what_is_stored(self):
        self.record("one")
        self.record("two")
        ui = self.open_settings("Privacy")
        for text in ("Clipboard access", "Background history", "Available", "Automatic paste",
                     "Access", "Granted", "Excluded bundle IDs", "Stored data", "History",
                     "2 items", "Pinned", "0 items", "Database"):
            self.expect_text(ui, text)

    def test_clearing_everything_asks_first(self):
        self.record("kept for now")
        ui = self.open_settings("Privacy")
        self.click(self.reach(ui, "push button", "Clear Everything"))
        self.expect_text(ui, "Clear all clipboard history?")
        self.expect_text(ui, "Pinned and unpinned items will be removed. This cannot be undone.")
        self.click(ui.find("push button", "Cancel"))
        wait_until(lambda: not ui.find_all("push button", "Cancel"), "the question is gone")
        self.expect_still_recording()
        self.assertEqual(self.recorded_texts(), ["kept for now"])

        self.click(self.reach(ui, "push button", "Clear Unpinned History"))
        self.expect_text(ui, "Clear unpinned clipboard history?")
        self.expect_text(ui, "Pinned items will be kept. This cannot be undone.")
        # Return alone would cancel.
        self.keyboard.press("Shift+Tab")
        self.keyboard.press("Return")
        wait_until(lambda: self.history.clips() == [], "the history is cleared")
        self.expect_text(ui, "0 items")

    def test_the_systems_clipboard_can_be_cleared(self):
        self.record("on the clipboard")
        ui = self.open_settings("Privacy")
        self.click(self.reach(ui, "push button", "Clear System Clipboard"))
        wait_until(lambda: self.clipboard.owner() is None, "the clipboard has no owner")
        self.assertEqual(self.history.find("on the clipboard").copy_count, 1)

    def test_an_application_that_is_excluded_is_not_recorded_any_more(self):
        ui = self.open_settings("Privacy")
        editor = ui.find("text", "Excluded bundle IDs")
        self.click(editor)
        # Window managers hold clicks back, so that keys overtake them.
        wait_until(lambda: "focused" in editor.states, "the editor has the keys")
        self.keyboard.press("Control+a")
        self.keyboard.type("debian-xterm")
        self.wait_for_setting("ignoredBundleIDs", "debian-xterm")
        terminal = Terminal(self.desktop).start(shown="secret")
        terminal.copy_word()
        wait_until(lambda: self.clipboard.read() == b"secret", "the word is copied")
        # Each longer than the program looks away.
        self.assertTrue(holds_for(1, lambda: self.history.clips() == []))
        editor = GtkEditor(self.desktop).start()
        self.assertTrue(holds_for(1, editor.is_in_front))
        self.expect_still_recording()
        self.assertEqual(self.recorded_texts(), [])


class Reference(SettingsCase):
    def test_the_shortcuts_are_told_with_the_names_of_this_keyboard(self):
        ui = self.open_settings("Shortcuts")
        for text in ("Global direct paste", "Positions 1–9", "Position 10", "Inside Quick Paste",
                     "Paste selected", "Paste plain text", "Pin or unpin", "Delete",
                     "On this keyboard ⌘ is Ctrl and ⌥ is Alt."):
            self.expect_text(ui, text)

    def test_about_tells_the_version(self):
        ui = self.open_settings("About")
        version = self.tessly.command("--version").stdout.decode().split()[-1]
        for text in ("Tessly", "Local-only", f"Version {version}"):
            self.expect_text(ui, text)


class DamagedSettings(DesktopCase):
    accessible = True

    def test_nonsense_in_the_file_reads_as_the_limits_and_the_defaults(self):
        tessly = self.start_tessly(settings={
            "maxHistory": 3, "maxItemSizeMB": 9999, "captureImages": "perhaps",
            "directPasteShortcuts": "[", "\x01": "\x02"})
        tessly.open_panel()
        ui = self.ui(tessly)
        self.click(ui.find("push button", "Settings"))
        ui.find("spin box", "Keep up to 10 unpinned items")
        ui.find("spin box", "Maximum item size: 250 MB")


if __name__ == "__main__":
    unittest.main()
