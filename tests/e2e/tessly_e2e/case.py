"""The ground every end-to-end test stands on: a desktop and a running Tessly of its own."""

import os
import shutil
import sys
import unittest

from .accessible import Accessibility
from .desktop import Desktop
from .tessly import Tessly
from .waiting import settled, wait_until


class DesktopCase(unittest.TestCase):
    """A fresh desktop for each test, as `desktop`. A test that fails prints what Tessly logged, and
    leaves that and a picture of the desktop in the folder that TESSLY_E2E_PICTURES names."""

    maxDiff = 2000
    # Whether assistive technology is there, through which `ui` finds controls.
    accessible = False

    def setUp(self):
        self.desktop = self.enterContext(self.make_desktop())
        if self.accessible:
            self.desktop.accessibility = self._accessibility = Accessibility(self.desktop)
            self.addCleanup(self._accessibility.close)
        self.clipboard = self.desktop.clipboard
        self.keyboard = self.desktop.keyboard

    def make_desktop(self):
        return Desktop()

    def start_tessly(self, **options):
        """A Tessly that runs until the end of the test; the options are those of Tessly."""
        tessly = self.enterContext(Tessly(self.desktop, **options))
        self.addCleanup(self._keep_evidence, tessly)  # before Tessly ends
        return tessly

    def ui(self, tessly):
        """All that a Tessly shows, as assistive technology sees it."""
        return self._accessibility.application(tessly.pid)

    def click(self, control, button=1):
        """Clicks on a control that assistive technology found."""
        # A window that has just come up may still be moved.
        centre = settled(lambda: control.centre, 0.1, f"the place of {control!r}")
        self.desktop.pointer.click(*centre, button)

    def wait_for_banner(self, tessly, text):
        """A banner with this text, in the panel that is open."""
        self.ui(tessly).find("alert message", text)

    def run(self, result=None):
        self._result = result
        return super().run(result)

    def _has_failed(self):
        return any(test is self or getattr(test, "test_case", None) is self
                   for test, _ in self._result.failures + self._result.errors)

    def _keep_evidence(self, tessly):
        if not self._has_failed():
            return
        print(f"{self.id()}: tessly logged:", *tessly.remarks(), sep="\n    ", file=sys.stderr)
        folder = os.environ.get("TESSLY_E2E_PICTURES")
        if folder:
            os.makedirs(folder, exist_ok=True)
            if self.desktop.screen is not None and self.desktop.is_alive():
                self.desktop.screen.picture().save(os.path.join(folder, self.id() + ".png"))
            shutil.copyfile(tessly.process.log_path, os.path.join(folder, self.id() + ".log"))


class TesslyCase(DesktopCase):
    """Beside the desktop a Tessly that records, as `tessly`, with the settings of the class."""

    settings = {}

    def setUp(self):
        super().setUp()
        self.tessly = self.start_tessly(settings=self.settings)
        self.history = self.tessly.history
        self._ordinary_copies = 0

    def record(self, text):
        """Copies a text as ever and waits for its entry."""
        self.clipboard.copy(text)
        return self.history.wait_for_text(text)

    def expect_still_recording(self):
        """The next ordinary copy is recorded. A copy that was noticed before it has been dealt with
        then; one that was not, the program need not have seen at all."""
        self._ordinary_copies += 1
        return self.record(f"ordinary copy {self._ordinary_copies}")

    def recorded_texts(self):
        """The plain texts of the history but for the ordinary copies, newest first."""
        return [clip.plain_text for clip in self.history.clips()
                if not (clip.plain_text or "").startswith("ordinary copy ")]

    def choose(self, search, chord="Return"):
        """Opens the panel, searches for an entry and presses a chord on it."""
        panel = self.tessly.open_panel()
        panel.search(search)
        self.keyboard.press(chord)
        self.tessly.wait_for_closed_panel()

    def wait_for_own_content(self):
        wait_until(self.tessly.owns_clipboard, "Tessly offers the content")
