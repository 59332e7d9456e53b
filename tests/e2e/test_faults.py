"""Crashes, damage and missing services."""

import os
import random
import sqlite3
import stat
import time
import unittest
from contextlib import closing

import shared_tests
from tessly_e2e import Desktop, Tessly, png, wait_until
from tessly_e2e.case import DesktopCase, TesslyCase
from tessly_e2e.processes import read_log
from tessly_e2e.waiting import holds_for

PAGE = 2048


def is_orange(red, green, blue):
    """The warning's colour, as dark as white text on it needs it."""
    return red > 140 and 0.35 * red < green < 0.75 * red and blue < 0.4 * red


class Killed(DesktopCase):
    ROUNDS = 10

    def test_a_kill_at_any_moment_leaves_a_sound_history_with_all_that_was_saved(self):
        seed = random.randrange(2**32)
        chance = random.Random(seed)
        seen = set()
        for round_number in range(self.ROUNDS):
            with self.subTest(seed=seed, round=round_number):
                tessly = Tessly(self.desktop).start()
                end = time.monotonic() + chance.uniform(0.2, 1.8)
                number = 0
                while time.monotonic() < end:
                    number += 1
                    if number % 3:
                        self.clipboard.copy(f"round {round_number} copy {number}")
                    else:
                        self.clipboard.copy(png.of_size(chance.randrange(10_000, 2_000_000), number),
                                            "image/png")
                    self.note_saved(tessly, seen, min(end, time.monotonic() + 0.4))
                tessly.kill()
                self.assertEqual(tessly.history.problems(self.desktop.path("scratch")), [])
                self.assertLessEqual(seen, {clip.content_hash for clip in tessly.history.clips()})
        with Tessly(self.desktop) as tessly:
            self.assertLessEqual(seen, {clip.content_hash for clip in tessly.history.clips()})
            self.assertGreater(len(seen), self.ROUNDS)

    def note_saved(self, tessly, seen, until):
        while time.monotonic() < until:
            seen |= {clip.content_hash for clip in tessly.history.clips()}
            time.sleep(0.01)


class Damaged(DesktopCase):
    def setUp(self):
        super().setUp()
        with Tessly(self.desktop) as tessly:
            for number in range(3):
                self.clipboard.copy(png.of_size(20_000, number), "image/png")
                wait_until(lambda: len(tessly.history.clips()) == number + 1, "it is recorded")
            self.history = tessly.history

    def expect_rescue(self):
        """A fresh history, the damaged one kept aside, and a banner that stays until dismissed."""
        with open(self.history.path, "rb") as file:
            damaged = file.read()
        tessly = self.start_tessly()
        self.assertEqual(tessly.history.clips(), [])
        rescue = os.path.join(self.history.folder, "Recovered History")
        folders = os.listdir(rescue)
        self.assertEqual(len(folders), 1)
        self.assertRegex(folders[0],
                         r"^history-recovery-\d{4}-\d\d-\d\dT\d\d-\d\d-\d\dZ-[0-9A-F]{8}$")
        for folder in (rescue, os.path.join(rescue, folders[0])):
            self.assertEqual(stat.S_IMODE(os.stat(folder).st_mode), 0o700)
        with open(os.path.join(rescue, folders[0], "history.sqlite"), "rb") as file:
            self.assertEqual(file.read(), damaged)

        self.clipboard.copy("a fresh start")
        tessly.history.wait_for_text("a fresh start")
        self.assertEqual(tessly.history.problems(self.desktop.path("scratch")), [])
        self.expect_banner_until_dismissed(tessly)

    def expect_banner_until_dismissed(self, tessly):
        panel = tessly.open_panel()
        window = panel.window

        def has_banner():
            return panel.picture().share(is_orange) > 0.02

        wait_until(has_banner, "the panel shows the warning")
        # Ordinary banners go after four seconds.
        self.assertTrue(holds_for(5, has_banner))
        top, bottom = panel.rows_where(is_orange)
        self.desktop.pointer.click(window.x + window.width - 36, window.y + (top + bottom) // 2)
        wait_until(lambda: not has_banner(), "the warning is dismissed")

    def test_random_bytes(self):
        size = os.path.getsize(self.history.path)
        with open(self.history.path, "wb") as file:
            file.write(random.Random(1).randbytes(size))
        self.expect_rescue()

    def test_a_history_cut_short(self):
        os.truncate(self.history.path, os.path.getsize(self.history.path) // 2 // PAGE * PAGE)
        self.expect_rescue()

    def test_a_page_turned_upside_down(self):
        with open(self.history.path, "r+b") as file:
            file.seek(PAGE * 2)
            page = file.read(PAGE)
            file.seek(PAGE * 2)
            file.write(page[::-1])
        self.expect_rescue()


class ServersEnd(shared_tests.DisplayServersEnd, TesslyCase):
    def end_display_server(self):
        self.desktop.end(self.desktop.server)


class CannotStart(DesktopCase):
    def expect_refusal(self, tessly):
        tessly.launch()
        wait_until(lambda: not tessly.is_running(), "tessly gives up")
        self.assertEqual(tessly.process.returncode, 1)
        lines = tessly.log().splitlines()
        self.assertEqual(len(lines), 1, lines)
        self.assertTrue(lines[0].startswith("Tessly could not start: "), lines)
        self.assertGreater(len(lines[0]), len("Tessly could not start: "))

    def test_without_a_data_folder_it_says_why_and_ends(self):
        blocked = self.desktop.path("files", "no-folder")
        with open(blocked, "w"):
            pass
        self.expect_refusal(Tessly(self.desktop, environment={"XDG_DATA_HOME": blocked}))

    def test_without_a_display_it_says_why_and_ends(self):
        self.expect_refusal(Tessly(self.desktop, environment={"DISPLAY": ":4711"}))

    def test_without_a_history_file_it_says_why_and_ends(self):
        tessly = Tessly(self.desktop)
        os.makedirs(tessly.history.path)
        self.expect_refusal(tessly)

    def test_with_a_history_that_it_cannot_use_it_says_why_and_ends(self):
        """Which it finds when it works already."""
        tessly = Tessly(self.desktop)
        os.makedirs(tessly.history.folder)
        with closing(sqlite3.connect(tessly.history.path)) as history:
            history.execute("CREATE TABLE clips (other)")
        notifications = self.start_notifications()
        tessly.launch()
        wait_until(lambda: not tessly.is_running(), "tessly gives up")
        self.assertEqual(tessly.process.returncode, 1)
        reasons = [line for line in tessly.remarks() if line.startswith("Tessly could not start: ")]
        self.assertEqual(len(reasons), 1, tessly.log())
        self.assertIn(tessly.history.path, reasons[0])
        self.assertIn("no such column", reasons[0])
        with open(notifications.output_path) as output:
            shown = [line for line in output if " Notify " in line]
        self.assertEqual(len(shown), 1, shown)

    def start_notifications(self):
        notifications = self.desktop.start(
            ["/usr/bin/python3", "-u", "-m", "dbusmock", "--session", "--template",
             "notification_daemon"], name="notifications")
        # It takes its name before it can answer.
        wait_until(lambda: self.desktop.run(
            ["dbus-send", "--print-reply", "--dest=org.freedesktop.Notifications",
             "/org/freedesktop/Notifications", "org.freedesktop.Notifications.GetServerInformation"],
            check=False).returncode == 0, lambda: read_log(notifications))
        return notifications

    def test_the_desktop_shows_why_and_names_the_file(self):
        notifications = self.start_notifications()
        tessly = Tessly(self.desktop)
        os.makedirs(tessly.history.path)
        self.expect_refusal(tessly)
        with open(notifications.output_path) as output:
            shown = [line for line in output if " Notify " in line]
        self.assertEqual(len(shown), 1, shown)
        self.assertIn("Tessly could not start", shown[0])
        self.assertIn(tessly.history.path, shown[0])
        self.assertIn(tessly.history.path, tessly.log())

    @unittest.skipIf(os.geteuid() == 0, "the superuser may write everywhere")
    def test_without_the_right_to_write_it_says_why_and_ends(self):
        os.chmod(self.desktop.data_home, 0o500)
        self.addCleanup(os.chmod, self.desktop.data_home, 0o700)
        self.expect_refusal(Tessly(self.desktop))


class WithoutBus(DesktopCase):
    def make_desktop(self):
        return Desktop(bus=False)

    def test_it_records_all_the_same_and_stays_the_only_writer(self):
        with Tessly(self.desktop) as tessly:
            self.clipboard.copy("without a bus")
            tessly.history.wait_for_text("without a bus")
            second = tessly.command(check=False)
            self.assertIn(second.returncode, (0, 1))
            self.assertTrue(tessly.is_running())
            self.clipboard.copy("still without a bus")
            tessly.history.wait_for_text("still without a bus")
            self.assertEqual(tessly.history.find("still without a bus").copy_count, 1)


class Services(TesslyCase):
    def test_it_records_on_when_the_bus_goes_away(self):
        self.record("with the bus")
        self.desktop.end(self.desktop.bus)
        self.record("without the bus")
        self.record("and still without")

    def test_it_ends_when_the_x_server_goes_away_and_its_history_is_sound(self):
        self.record("before the crash")
        self.desktop.end(self.desktop.server)
        wait_until(lambda: not self.tessly.is_running(), "tessly ends")
        self.assertEqual(self.history.problems(self.desktop.path("scratch")), [])
        self.assertIsNotNone(self.history.find("before the crash"))
        self.tessly.process.returncode = 0  # how it ends with the server is left open


if __name__ == "__main__":
    unittest.main()
