"""Another program beside it that keeps what is copied."""

import signal
import unittest

from tessly_e2e import wait_until
from tessly_e2e.case import TesslyCase
from tessly_e2e.clipboard_watch import ClipboardWatch
from tessly_e2e.waiting import holds_for, settled

# Such programs look twice a second.
QUIET = 1.2
# What is copied until they are there.
BEFORE = "for the neighbour"


class Neighbour:
    """`command` starts it."""

    COPIES = 4

    def setUp(self):
        super().setUp()
        self.watch = self.enterContext(ClipboardWatch(self.desktop))
        self.neighbour = self.desktop.start([self.command])
        self.program = self.enterContext(self.desktop.program())
        wait_until(self.looks, "the neighbour looks at the clipboard")

    def looks(self):
        """Whether two programs read a copy, or one of them takes it over."""
        self.program.forget_requests()
        self.program.copy(BEFORE)
        return not holds_for(1, lambda: len(self.program.content_requests()) < 2
                             and self.program.owns_clipboard())

    def changes(self):
        return settled(self.watch.changes, QUIET, "who has the clipboard")

    def expect_recorded_once(self, *texts):
        self.assertEqual([(clip.plain_text, clip.copy_count) for clip in self.history.clips()
                          if clip.plain_text != BEFORE], [(text, 1) for text in reversed(texts)])

    def test_each_copy_is_recorded_once_and_nothing_echoes(self):
        before = self.changes()
        texts = [f"copy {number}" for number in range(self.COPIES)]
        for text in texts:
            self.record(text)
            self.changes()
        self.expect_recorded_once(*texts)
        # Each may be taken over once.
        self.assertLessEqual(self.changes() - before, 2 * self.COPIES)
        self.assertIsNone(self.neighbour.poll())

    def test_what_outlives_its_owner_is_offered_by_one_of_the_two(self):
        process = self.clipboard.copy("outlives its owner")
        self.history.wait_for_text("outlives its owner")
        before = self.changes()
        self.desktop.end(process)
        wait_until(lambda: self.clipboard.read() == b"outlives its owner", "it can be pasted")
        self.assertLessEqual(self.changes() - before, 2)
        self.assertEqual(self.clipboard.read(), b"outlives its owner")
        self.expect_recorded_once("outlives its owner")

    def test_what_it_offers_before_tessly_can_is_no_copy(self):
        process = self.clipboard.copy("outlives its owner")
        self.history.wait_for_text("outlives its owner")
        self.changes()
        self.tessly.process.send_signal(signal.SIGSTOP)
        try:
            self.desktop.end(process)
            self.changes()
        finally:
            self.tessly.process.send_signal(signal.SIGCONT)
        wait_until(lambda: self.clipboard.read() == b"outlives its owner", "it can be pasted")
        self.changes()
        self.expect_recorded_once("outlives its owner")

    def test_an_entry_that_is_copied_again_stays_on_the_clipboard(self):
        for text in ("older", "newer"):
            self.record(text)
        before = self.changes()
        self.tessly.command("copy", "2")
        wait_until(lambda: self.clipboard.read() == b"older", "the entry is on the clipboard")
        self.assertLessEqual(self.changes() - before, 2)
        self.assertEqual(self.clipboard.read(), b"older")
        self.expect_recorded_once("older", "newer")


class Parcellite(Neighbour, TesslyCase):
    command = "parcellite"


class Diodon(Neighbour, TesslyCase):
    command = "diodon"


class CopyQ(Neighbour, TesslyCase):
    command = "copyq"


if __name__ == "__main__":
    unittest.main()
