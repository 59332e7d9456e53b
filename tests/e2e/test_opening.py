"""What works while a large history is still being checked, and what becomes of what waits for that."""

import json
import os
import random
import unittest

from tessly_e2e import Tessly, wait_until
from tessly_e2e.case import DesktopCase
from tessly_e2e.tessly import BUS_NAME, program
from tessly_e2e.waiting import holds_for


def held_check():
    """The library that holds the check; the tests' build names it."""
    built = os.path.join(os.path.dirname(program()), "..", "tests", "e2e", "libtessly_held_check.so")
    return os.path.abspath(os.environ.get("TESSLY_HELD_CHECK", built))


class BeingChecked(DesktopCase):
    """Three texts in the history of a Tessly whose check does not end before the test says so."""

    def setUp(self):
        super().setUp()
        with Tessly(self.desktop) as tessly:
            for text in ("one", "two", "three"):
                self.clipboard.copy(text)
                tessly.history.wait_for_text(text)
            self.history = tessly.history

    def start_held(self):
        self.hold = self.desktop.path("files", "held")
        with open(self.hold, "w"):
            pass
        environment = {"LD_PRELOAD": held_check(), "TESSLY_HOLD_CHECK_WHILE": self.hold}
        if "ASAN_OPTIONS" in os.environ:
            environment["ASAN_OPTIONS"] = os.environ["ASAN_OPTIONS"] + ":verify_asan_link_order=0"
        self.tessly = Tessly(self.desktop, environment=environment)
        self.addCleanup(self.tessly.kill)
        self.tessly.launch()
        self.tessly.wait_for_trace("recording")
        wait_until(lambda: self.desktop.bus_name_exists(BUS_NAME), "tessly is on the bus")

    def let_go(self):
        os.remove(self.hold)
        self.tessly.wait_for_trace("checked")

    def listed(self):
        entries = json.loads(self.tessly.command("list", "--json").stdout)
        self.assertEqual([entry["position"] for entry in entries],
                         list(range(1, len(entries) + 1)))
        return [entry["preview"] for entry in entries]

    def copy(self, text):
        """Returns once it is in the list, which is before it is in the history."""
        self.clipboard.copy(text)
        wait_until(lambda: text in self.listed(), f"“{text}” is listed")

    def expect_held(self):
        self.assertEqual(self.tessly.traces("checked"), [])

    def test_it_records_lists_and_hands_out(self):
        self.start_held()
        self.copy("four")
        self.copy("two")
        self.assertEqual(self.listed(), ["two", "four", "three", "one"])
        self.tessly.command("copy", "2")
        wait_until(lambda: self.clipboard.read() == b"four", "the copy that waits is handed out")
        self.tessly.command("copy", "4")
        wait_until(lambda: self.clipboard.read() == b"one", "what is stored is handed out")
        status = json.loads(self.tessly.command("status", "--json").stdout)
        self.assertEqual(status["items"], 4)
        self.tessly.open_panel()
        self.expect_held()
        self.assertIsNone(self.history.find("four"))
        self.let_go()
        self.history.wait_for_text("four")
        self.assertEqual(self.listed(), ["two", "four", "three", "one"])
        self.assertEqual(self.history.find("two").copy_count, 2)
        self.assertLess(self.history.find("four").created_at, self.history.find("two").last_used_at)

    def test_a_deletion_is_reported_when_it_is_done(self):
        self.start_held()
        self.copy("four")
        deletion = self.desktop.start([self.tessly.program, "delete", "2"])
        self.assertTrue(holds_for(0.5, lambda: deletion.poll() is None))
        self.assertEqual(self.listed(), ["four", "three", "two", "one"])
        self.expect_held()
        self.let_go()
        self.assertEqual(deletion.wait(30), 0)
        self.assertEqual(self.listed(), ["four", "two", "one"])

    def test_an_export_waits_until_it_has_all_that_is_listed(self):
        self.start_held()
        self.copy("copied meanwhile")
        exported = self.desktop.path("files", "exported.jsonl")
        export = self.desktop.start([self.tessly.program, "export", exported])
        self.assertTrue(holds_for(0.5, lambda: export.poll() is None))
        self.expect_held()
        self.let_go()
        wait_until(lambda: export.poll() is not None, "the export has ended")
        self.assertEqual(export.returncode, 0)
        with open(exported) as file:
            self.assertEqual(len(file.readlines()), 1 + 4 + 1)

    def test_the_end_does_not_wait_for_the_check_and_saves_what_waits(self):
        self.start_held()
        self.copy("four")
        self.expect_held()
        self.tessly.stop()
        self.assertTrue(os.path.exists(self.hold))
        self.assertIsNotNone(self.history.find("four"))
        self.assertEqual(self.history.problems(self.desktop.path("scratch")), [])

    def test_a_kill_loses_no_more_than_what_waits(self):
        self.start_held()
        self.copy("four")
        self.tessly.kill()
        self.assertEqual([clip.plain_text for clip in self.history.clips()],
                         ["three", "two", "one"])
        self.assertEqual(self.history.problems(self.desktop.path("scratch")), [])

    def test_what_waits_goes_into_the_fresh_history_in_place_of_a_damaged_one(self):
        damaged = random.Random(1).randbytes(os.path.getsize(self.history.path))
        with open(self.history.path, "wb") as file:
            file.write(damaged)
        self.start_held()
        for text in ("four", "five"):
            offer = self.clipboard.offer({"UTF8_STRING": text.encode()})
            offer.wait_until_served("UTF8_STRING")
        self.expect_held()
        self.let_go()
        self.history.wait_for_text("five")
        self.assertIsNotNone(self.history.find("four"))
        rescue = os.path.join(self.history.folder, "Recovered History")
        folder, = os.listdir(rescue)
        with open(os.path.join(rescue, folder, "history.sqlite"), "rb") as file:
            self.assertEqual(file.read(), damaged)

    def test_commands_do_not_check_a_closed_history(self):
        self.start_held()
        self.tessly.kill()
        self.assertEqual(self.listed(), ["three", "two", "one"])
        self.assertIn(b"items     3", self.tessly.command("status").stdout)


if __name__ == "__main__":
    unittest.main()
