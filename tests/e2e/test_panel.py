"""The panel's coming and going."""

import unittest

from Xlib import X

from tessly_e2e import wait_until
from tessly_e2e.case import TesslyCase
from tessly_e2e.editors import GtkEditor, Terminal
from tessly_e2e.portal import Portal
from tessly_e2e.tessly import Panel as Rows
from tessly_e2e.tessly import program


class Composited(TesslyCase):
    """On a screen with a compositing manager that does nothing."""

    def setUp(self):
        super().setUp()
        self.manager = self.desktop.display.screen().root.create_window(0, 0, 1, 1, 0, X.CopyFromParent)
        self.manager.set_selection_owner(
            self.desktop.display.intern_atom("_NET_WM_CM_S0"), X.CurrentTime)
        self.desktop.display.sync()

    def test_the_shadow_changes_nothing_about_where_the_panel_and_the_preview_are(self):
        self.record("some words")
        self.desktop.pointer.move(400, 40)
        shadowed = self.places()
        self.tessly.close_panel()
        self.manager.destroy()
        self.desktop.display.sync()
        plain = self.places()
        for (place, shadow), (without, none) in zip(shadowed, plain):
            self.assertGreater(min(shadow), 0)
            self.assertIsNone(none)
            x, y, width, height = place
            left, right, top, bottom = shadow
            self.assertEqual((x + left, y + top, width - left - right, height - top - bottom), without)

    def places(self):
        """Where the windows of the panel and of the preview are, and how far their shadows reach."""
        return [((w.x, w.y, w.width, w.height), self.desktop.windows.shadow(w.id))
                for w in self.open_both()]

    def open_both(self):
        panel = self.tessly.open_panel().window
        return panel, wait_until(lambda: self.tessly.window("Tessly Preview"), "the preview is open")

    def test_a_click_into_the_shadow_closes_the_panel(self):
        self.desktop.pointer.move(600, 40)
        window = self.tessly.open_panel().window
        self.desktop.pointer.click(window.x + 5, window.y + 300)
        self.tessly.wait_for_closed_panel()

    def test_a_row_under_the_preview_s_shadow_pastes_by_a_click(self):
        self.record("older row")
        self.record("newer row")
        editor = GtkEditor(self.desktop).start()
        self.desktop.pointer.move(400, 40)
        panel, preview = self.open_both()
        left, right, top, _ = self.desktop.windows.shadow(panel.id)
        edge = panel.x + panel.width - right
        self.assertLess(preview.x, edge - 12, "the shadow lies over the row's end")
        self.desktop.pointer.click(edge - 12, panel.y + top + Rows.FIRST_ROW)
        self.tessly.wait_for_closed_panel()
        editor.wait_for_text("newer row")


class Panel(TesslyCase):
    def test_a_second_start_opens_the_panel_and_ends_well(self):
        self.tessly.command()
        self.tessly.wait_for_panel()
        self.tessly.command()
        panels = [window for window in self.desktop.windows.visible(pid=self.tessly.pid)
                  if window.title == "Tessly"]
        self.assertEqual(len(panels), 1)

    def test_of_two_starts_at_once_one_process_stays(self):
        self.tessly.stop()
        self.tessly.write_settings()
        first, second = (self.desktop.start([program()], name="tessly") for _ in range(2))
        wait_until(lambda: first.poll() is not None or second.poll() is not None,
                   "one of the two ends")
        ended, running = (first, second) if first.poll() is not None else (second, first)
        self.assertEqual(ended.returncode, 0)
        wait_until(lambda: self.desktop.windows.top(pid=running.pid), "the other opens its panel")
        self.assertIsNone(running.poll())

    def test_it_stands_whole_on_the_screen_wherever_the_pointer_is(self):
        width, height = self.desktop.screen.size
        for place in ((0, 0), (width - 1, 0), (0, height - 1), (width - 1, height - 1),
                      (width // 2, height // 2)):
            with self.subTest(pointer=place):
                self.desktop.pointer.move(*place)
                window = self.tessly.open_panel().window
                self.assertGreaterEqual(min(window.x, window.y), 0)
                self.assertLessEqual(window.x + window.width, width)
                self.assertLessEqual(window.y + window.height, height)
                self.tessly.close_panel()

    def test_escape_closes_it_and_gives_the_focus_back(self):
        terminal = Terminal(self.desktop).start()
        self.tessly.open_panel()
        self.tessly.close_panel()
        wait_until(terminal.is_in_front, "the terminal has the focus back")
        self.keyboard.type("typed")
        terminal.wait_for_text("typed")

    def test_a_click_elsewhere_closes_it(self):
        width, height = self.desktop.screen.size
        self.tessly.open_panel()
        self.desktop.pointer.click(width - 5, height - 5)
        self.tessly.wait_for_closed_panel()

    def test_a_click_into_another_window_closes_it(self):
        terminal = Terminal(self.desktop).start()
        self.desktop.run(["xdotool", "windowmove", str(terminal.window), "700", "500"])
        self.tessly.open_panel()
        self.desktop.pointer.click(1200, 780)
        self.tessly.wait_for_closed_panel()

    def test_losing_the_focus_closes_it(self):
        terminal = Terminal(self.desktop).start()
        self.tessly.open_panel()
        self.desktop.windows.activate(terminal.window)
        self.tessly.wait_for_closed_panel()
        wait_until(terminal.is_in_front, "the terminal keeps the focus")

    def test_a_click_on_a_row_pastes_it(self):
        self.record("older row")
        self.record("newer row")
        editor = GtkEditor(self.desktop).start()
        panel = self.tessly.open_panel()
        panel.search("older")
        window = panel.window
        self.desktop.pointer.click(window.x + 200, window.y + panel.FIRST_ROW)
        self.tessly.wait_for_closed_panel()
        editor.wait_for_text("older row")

    def test_a_copy_appears_while_it_is_open(self):
        self.record("one")
        panel = self.tessly.open_panel()
        before = panel.wait_for_rest()
        self.record("two")
        panel.wait_for_rest(unlike=before)

    def test_it_is_as_dark_as_the_desktop_while_that_changes(self):
        portal = Portal(self.desktop).start()
        self.record("an entry")
        window = self.tessly.open_panel().window
        for scheme, is_dark in ((1, True), (2, False), (1, True), (0, False)):
            portal.set_scheme(scheme)
            wait_until(lambda expected=is_dark: self.is_dark(window) == expected,
                       f"it looks as color-scheme {scheme} wants")

    def is_dark(self, window):
        picture = self.desktop.screen.picture(window.x, window.y, window.width, window.height)
        return picture.share(lambda *rgb: max(rgb) < 100) > 0.5

    def test_it_opens_and_closes_many_times(self):
        self.record("one")
        terminal = Terminal(self.desktop).start()
        for _ in range(15):
            self.tessly.open_panel()
            self.tessly.close_panel()
        wait_until(terminal.is_in_front, "the terminal has the focus back")
        self.assertEqual(terminal.text(), "")

    def test_show_hide_and_toggle(self):
        self.tessly.command("toggle")
        self.tessly.wait_for_panel()
        self.tessly.command("toggle")
        self.tessly.wait_for_closed_panel()
        self.tessly.command("show")
        self.tessly.wait_for_panel()
        self.tessly.command("hide")
        self.tessly.wait_for_closed_panel()

    def test_quit_ends_the_program_and_later_commands_say_so(self):
        self.tessly.command("quit")
        wait_until(lambda: not self.tessly.is_running(), "tessly ends")
        self.assertEqual(self.tessly.process.returncode, 0)
        refused = self.tessly.command("show", check=False)
        self.assertEqual(refused.returncode, 3)
        self.assertEqual(len(refused.stderr.decode().splitlines()), 1)


if __name__ == "__main__":
    unittest.main()
