"""The icon among those of the desktop's tray, and its menu."""

import signal
import unittest

from tessly_e2e import Desktop, wait_until
from tessly_e2e.case import DesktopCase, TesslyCase
from tessly_e2e.tray import Tray
from tessly_e2e.waiting import holds_for

MENU = ["Open Quick Paste", "Pause Clipboard Recording", "Clear Unpinned History", "Settings…",
        "Quit Tessly"]


class TrayCase(TesslyCase):
    accessible = True

    def setUp(self):
        super().setUp()
        self.tray = Tray(self.desktop).start()
        self.tray.wait_for_icon(self.tessly.pid)

    def open_menu(self):
        """Right-clicks the icon and returns the menu's lines, by title."""
        self.tray.click(self.tessly.pid, button=3)
        menu = self.ui(self.tessly).find("popup menu", "Tessly")
        menu.find("menu item", MENU[-1])
        return {line.name: line for line in menu.find_all("menu item")}

    def choose(self, title):
        self.click(self.open_menu()[title])
        wait_until(lambda: not self.ui(self.tessly).find_all("popup menu", "Tessly"),
                   "the menu is gone")

    def open_panel_by_click(self):
        self.tray.click(self.tessly.pid)
        return self.tessly.wait_for_panel()


class Icon(TrayCase):
    def test_a_left_click_opens_the_panel_at_the_icon_and_the_next_one_closes_it(self):
        window = self.open_panel_by_click().window
        icon = self.tray.icon(self.tessly.pid)
        self.assertGreaterEqual(window.y, icon.y + icon.height)
        self.assertGreater(window.x + window.width, icon.x)
        self.assertLessEqual(window.x + window.width, self.desktop.screen.size[0])
        self.tray.click(self.tessly.pid)
        self.tessly.wait_for_closed_panel()
        self.assertTrue(holds_for(0.5, lambda: self.tessly.panel_window() is None))
        self.open_panel_by_click()

    def test_it_comes_back_with_the_next_tray(self):
        self.tray.end()
        wait_until(lambda: self.tray.icon(self.tessly.pid) is None, "the icon went with its tray")
        self.tray.start()
        self.tray.wait_for_icon(self.tessly.pid)
        self.open_panel_by_click()

    def test_a_right_click_closes_the_panel_and_shows_the_menu(self):
        self.open_panel_by_click()
        self.assertEqual(list(self.open_menu()), MENU)
        self.assertIsNone(self.tessly.panel_window())
        self.keyboard.press("Escape")
        wait_until(lambda: not self.ui(self.tessly).find_all("popup menu", "Tessly"),
                   "the menu is closed")

    def test_a_second_start_opens_the_panel_at_the_icon_too(self):
        self.tessly.command()
        window = self.tessly.wait_for_panel().window
        icon = self.tray.icon(self.tessly.pid)
        self.assertGreaterEqual(window.y, icon.y + icon.height)
        self.assertGreater(window.x + window.width, icon.x)


class Menu(TrayCase):
    def test_pausing_records_nothing_and_resuming_makes_up_for_nothing(self):
        self.record("before the pause")
        self.choose("Pause Clipboard Recording")
        self.open_panel_by_click()
        self.wait_for_banner(self.tessly, "Clipboard recording paused.")
        self.tessly.close_panel()
        offer = self.clipboard.offer({"UTF8_STRING": b"while paused"})
        self.assertTrue(holds_for(1, lambda: offer.content_requests() == []))
        self.choose("Resume Clipboard Recording")
        self.expect_still_recording()
        self.assertEqual(self.recorded_texts(), ["before the pause"])
        self.assertIn("Pause Clipboard Recording", self.open_menu())

    def test_clearing_asks_first(self):
        self.record("kept for now")
        self.choose("Clear Unpinned History")
        ui = self.ui(self.tessly)
        ui.find(name="Clear unpinned history?")
        self.click(ui.find("push button", "Cancel"))
        wait_until(lambda: not ui.find_all("push button", "Cancel"), "the question is gone")
        self.expect_still_recording()
        self.assertEqual(self.recorded_texts(), ["kept for now"])

        self.choose("Clear Unpinned History")
        ui.find(name="Clear unpinned history?")
        self.click(ui.find("push button", "Clear"))
        wait_until(lambda: self.history.clips() == [], "the history is cleared")
        self.open_panel_by_click()
        self.wait_for_banner(self.tessly, "Clipboard history cleared.")

    def test_return_confirms_and_escape_cancels(self):
        self.record("kept for now")
        ui = self.ui(self.tessly)
        for key, is_left in (("Escape", True), ("Return", False)):
            self.choose("Clear Unpinned History")
            button = ui.find("push button", "Clear")
            wait_until(lambda: "active" in ui.find("frame").states, "the question has the keys")
            self.keyboard.press(key)
            wait_until(lambda: not ui.find_all("push button", "Clear"), "the question is gone")
            del button
            if is_left:
                self.expect_still_recording()
                self.assertEqual(self.recorded_texts(), ["kept for now"])
        wait_until(lambda: self.history.clips() == [], "the history is cleared")

    def test_the_keys_move_in_it(self):
        self.open_menu()
        self.keyboard.press("Down")
        self.keyboard.press("Return")
        self.tessly.wait_for_panel()

    def test_it_opens_the_settings(self):
        self.choose("Settings…")
        self.ui(self.tessly).find("page tab", "General")

    def test_it_quits_in_order(self):
        self.click(self.open_menu()["Quit Tessly"])
        wait_until(lambda: not self.tessly.is_running(), "tessly ends")
        self.assertEqual(self.tessly.process.returncode, 0)
        self.assertIsNone(self.tray.icon(self.tessly.pid))


class EndOfTheProgram(DesktopCase):
    def test_signals_end_it_in_order(self):
        for number in (signal.SIGTERM, signal.SIGINT, signal.SIGHUP):
            with self.subTest(signal=number):
                tessly = self.start_tessly()
                tessly.process.send_signal(number)
                wait_until(lambda: not tessly.is_running(), "tessly ends")
                self.assertEqual(tessly.process.returncode, 0)
                self.assertEqual(tessly.history.problems(self.desktop.path("tmp", "check")), [])


class WithoutBus(DesktopCase):
    def make_desktop(self):
        return Desktop(bus=False)

    def test_icon_and_panel_work_and_the_log_tells_once(self):
        tessly = self.start_tessly()
        tray = Tray(self.desktop).start()
        tray.click(tessly.pid)
        tessly.wait_for_panel()
        self.assertEqual(tessly.log().count("session bus"), 1, tessly.log())


if __name__ == "__main__":
    unittest.main()
