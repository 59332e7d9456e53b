"""Copies that are not recorded though nothing forbids it, and what is said about them."""

import json
import resource
import signal
import unittest

from tessly_e2e import Tessly, wait_until
from tessly_e2e.case import DesktopCase, TesslyCase
from tessly_e2e.waiting import holds_for

# Words that no log line has of its own.
CONTENT = "umbrella xylophone "
WORDS = CONTENT.split()


class Remarks:
    """What is expected of the lines in the log; `tessly` writes them."""

    def expect_remark(self, remarks_before, count=1):
        """So many new lines, and nothing of the content in any."""
        wait_until(lambda: len(self.tessly.remarks()) >= len(remarks_before) + count,
                   lambda: f"a line in the log: {self.tessly.remarks()}")
        self.assertTrue(holds_for(
            0.5, lambda: len(self.tessly.remarks()) == len(remarks_before) + count),
            self.tessly.remarks())
        self.expect_no_content()
        return self.tessly.remarks()[len(remarks_before):]

    def expect_no_content(self):
        for word in WORDS:
            self.assertNotIn(word, self.tessly.log())


class Dropped(Remarks, TesslyCase):
    """One line each, with the reason."""

    settings = {"maxItemSizeMB": 1}

    def setUp(self):
        super().setUp()
        self.expect_still_recording()
        self.before = self.tessly.remarks()

    def test_one_that_is_too_large(self):
        self.clipboard.offer({"UTF8_STRING": CONTENT.encode() * 100_000})
        self.expect_remark(self.before)

    def test_one_that_is_too_large_as_its_owner_says(self):
        # In pieces, so that its size is known before it has come.
        self.clipboard.offer({"UTF8_STRING": CONTENT.encode() * 200_000}, "--incr", "1000")
        self.expect_remark(self.before)

    def test_one_whose_owner_does_not_say_what_it_offers(self):
        self.clipboard.offer({"UTF8_STRING": CONTENT.encode()}, "--behave", "TARGETS", "silent")
        self.expect_remark(self.before)

    def test_one_whose_owner_never_delivers(self):
        self.clipboard.offer({"UTF8_STRING": CONTENT.encode()}, "--behave", "*", "silent")
        self.expect_remark(self.before)

    def test_one_whose_owner_ends_when_it_is_asked(self):
        self.clipboard.offer({"UTF8_STRING": CONTENT.encode()}, "--behave", "*", "vanish")
        self.expect_remark(self.before)

    def test_one_whose_owner_refuses(self):
        self.clipboard.offer({"UTF8_STRING": CONTENT.encode()}, "--behave", "*", "refuse")
        self.expect_remark(self.before)

    def test_one_that_was_overtaken_while_it_was_read(self):
        offer = self.clipboard.offer({"UTF8_STRING": CONTENT.encode()}, "--behave", "*", "silent")
        offer.wait_for_request("UTF8_STRING")
        self.record("the newer one")
        self.expect_remark(self.before)

    def test_nothing_is_said_of_those_that_must_not_be_recorded(self):
        self.clipboard.offer({"UTF8_STRING": CONTENT.encode(),
                              "x-kde-passwordManagerHint": b"secret"}).wait_for_request("TARGETS")
        self.expect_still_recording()
        self.tessly.command("pause")
        self.clipboard.copy(CONTENT)
        self.tessly.command("resume")
        self.expect_still_recording()
        self.assertEqual(self.tessly.remarks(), self.before)


class FailingStore(Remarks, DesktopCase):
    """Files cannot grow beyond a size, as on a disk that is full; then they can."""

    accessible = True
    # Above all files that there are, below what is copied.
    LIMIT = 512 * 1024

    def setUp(self):
        super().setUp()
        self.tessly = Tessly(self.desktop, settings={"hasCompletedOnboarding": True})
        self.addCleanup(self.tessly.kill)
        # Writing beyond the limit fails, and does not end the program.
        self.tessly.start(before=lambda: signal.signal(signal.SIGXFSZ, signal.SIG_IGN))
        self.history = self.tessly.history
        self.clipboard.copy("small enough")
        self.history.wait_for_text("small enough")
        self.large = CONTENT * (2 * self.LIMIT // len(CONTENT))

    def limit_files(self, size):
        resource.prlimit(self.tessly.pid, resource.RLIMIT_FSIZE, (size, resource.RLIM_INFINITY))

    def status(self):
        return json.loads(self.tessly.command("status", "--json").stdout)

    def fail_to_save(self):
        before = self.tessly.remarks()
        self.limit_files(self.LIMIT)
        self.clipboard.copy(self.large)
        wait_until(lambda: len(self.tessly.remarks()) > len(before), "the failure is logged")
        self.assertIsNone(self.history.find(self.large))

    def test_while_all_is_well_nothing_is_said(self):
        self.assertNotIn("lastError", self.status())
        self.tessly.open_panel()
        self.assertEqual(self.ui(self.tessly).find_all("alert message"), [])

    def test_the_failure_is_in_the_log_and_in_the_status_and_in_the_panel(self):
        well = self.tessly.command("status").stdout.decode().splitlines()
        self.fail_to_save()
        self.assertTrue(self.status()["lastError"])
        failed = self.tessly.command("status").stdout.decode().splitlines()
        self.assertGreater(len(failed), len(well))
        self.tessly.open_panel()
        banner = self.ui(self.tessly).find("alert message")
        for word in WORDS:
            self.assertNotIn(word, "\n".join([*failed, banner.name, str(self.status())]))
        self.expect_no_content()

    def test_it_is_saved_by_itself_once_that_is_possible(self):
        self.fail_to_save()
        self.limit_files(resource.RLIM_INFINITY)
        self.history.wait_for_text(self.large)
        wait_until(lambda: "lastError" not in self.status(), "all is well again")
        self.assertEqual(self.history.find(self.large).copy_count, 1)

    def test_it_is_saved_with_the_next_copy(self):
        self.fail_to_save()
        self.limit_files(resource.RLIM_INFINITY)
        self.clipboard.copy("the next copy")
        self.history.wait_for_text("the next copy")
        self.history.wait_for_text(self.large)
        wait_until(lambda: "lastError" not in self.status(), "all is well again")
        self.assertEqual(len(self.history.clips()), 3)


if __name__ == "__main__":
    unittest.main()
