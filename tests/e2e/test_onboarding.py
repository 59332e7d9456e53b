"""The first run."""

import unittest

from tessly_e2e import Tessly, wait_until
from tessly_e2e.case import DesktopCase
from tessly_e2e.desktop import Desktop
from tessly_e2e.waiting import holds_for, settled

TITLE = "Welcome to Tessly"


class FirstRun(DesktopCase):
    accessible = True

    def setUp(self):
        super().setUp()
        self.tessly = Tessly(self.desktop, settings={"hasCompletedOnboarding": False})
        self.addCleanup(self.tessly.kill)
        self.tessly.launch()
        self.addCleanup(self._keep_evidence, self.tessly)
        self.history = self.tessly.history
        self.tree = self.ui(self.tessly)
        self.enable = self.tree.find("push button", "Enable")

    def window(self):
        return self.tessly.window(TITLE)

    def wait_for_focus(self):
        self.tessly.wait_for_window(TITLE)

    def expect_recording_after(self, action):
        """Does something that enables the history; what is copied from then on is recorded."""
        offer = self.clipboard.offer({"UTF8_STRING": b"copied before"})
        self.assertTrue(holds_for(1, lambda: offer.requests() == []), offer.requests())
        action()
        wait_until(lambda: self.window() is None, "the welcome window is gone")
        self.tessly.wait_for_panel()
        self.clipboard.copy("copied after")
        self.history.wait_for_text("copied after")
        self.assertEqual([clip.plain_text for clip in self.history.clips()], ["copied after"])

    def expect_not_shown_again(self):
        self.tessly.stop()
        self.tessly.launch()
        self.tessly.wait_for_trace("recording")
        self.assertIsNone(self.window())

    def test_it_explains_three_things(self):
        self.wait_for_focus()
        window = self.window()
        self.assertEqual((window.width, window.height), (650, 510))
        for text in ("Clipboard history", "Choose Always Allow", "Automatic paste",
                     "Allow in Accessibility", "Local storage", "No cloud"):
            self.assertTrue(self.tree.find_all(name=text), text)

    def test_a_click_on_enable_starts_recording_for_good(self):
        self.expect_recording_after(lambda: self.click(self.enable))
        self.expect_not_shown_again()

    def test_return_does_the_same(self):
        self.wait_for_focus()
        self.expect_recording_after(lambda: self.keyboard.press("Return"))
        self.expect_not_shown_again()

    def test_closing_it_leaves_it_for_the_next_start_and_records_nothing(self):
        self.wait_for_focus()
        self.desktop.windows.close(self.window().id)
        wait_until(lambda: self.window() is None, "the welcome window is gone")
        offer = self.clipboard.offer({"UTF8_STRING": b"never recorded"})
        self.assertTrue(holds_for(1, lambda: offer.requests() == []), offer.requests())
        self.assertTrue(self.tessly.is_running())
        self.tessly.stop()
        self.tessly.launch()
        wait_until(self.window, "the welcome window is there again")
        self.assertEqual(self.history.clips(), [])


class OnALowScreen(DesktopCase):
    """1280 × 720 at a scale of 1.5."""

    accessible = True

    def make_desktop(self):
        return Desktop(size=(853, 480))

    def test_the_button_is_in_sight_and_the_rest_scrolls(self):
        tessly = Tessly(self.desktop, settings={"hasCompletedOnboarding": False})
        self.addCleanup(tessly.kill)
        tessly.launch()
        self.addCleanup(self._keep_evidence, tessly)
        tessly.wait_for_window(TITLE)
        enable = self.ui(tessly).find("push button", "Enable")
        place = settled(lambda: enable.extents, 0.1, "the place of the button")
        self.assertLessEqual(place.y + place.height, 480)
        self.click(enable)
        tessly.wait_for_panel()


if __name__ == "__main__":
    unittest.main()
