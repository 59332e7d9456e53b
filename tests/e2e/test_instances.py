"""One Tessly for a user: starts that meet, and a session bus that is missing, hangs or goes away."""

import os
import shutil
import signal
import unittest

from tessly_e2e import Desktop, Tessly, wait_until
from tessly_e2e.case import DesktopCase, TesslyCase
from tessly_e2e.commands import ACTIONS, DONE, FAILED, Expecting
from tessly_e2e.waiting import holds_for


class InstalledTessly(Tessly):
    """A program in a folder of its own."""

    def __init__(self, desktop, path):
        super().__init__(desktop)
        self._path = path

    @property
    def program(self):
        return self._path


class WithoutABus(Expecting, DesktopCase):
    def make_desktop(self):
        return Desktop(bus=False)

    def setUp(self):
        super().setUp()
        self.tessly = self.start_tessly()

    def log_lines(self):
        return [line for line in self.tessly.log().splitlines() if "bus" in line]

    def test_tessly_runs_all_the_same_with_one_line_in_the_log(self):
        self.clipboard.copy("one")
        self.tessly.history.wait_for_text("one")
        wait_until(self.log_lines, "the log has its line")
        self.clipboard.copy("two")
        self.tessly.history.wait_for_text("two")
        self.assertEqual(len(self.log_lines()), 1, self.tessly.log())
        self.assertIn("There is no session bus", self.log_lines()[0])

    def test_commands_say_that_there_is_no_bus(self):
        line = "Tessly is running, but there is no session bus on which to reach it"
        for arguments in [*ACTIONS, ["status"], ["status", "--json"], []]:
            self.expect_refusal(FAILED, line, *arguments)
        self.assertTrue(self.tessly.is_running())

    def test_the_history_can_be_listed(self):
        self.clipboard.copy("one")
        self.tessly.history.wait_for_text("one")
        self.assertEqual(self.previews(), ["one"])

    def test_of_two_starts_one_survives(self):
        for _ in range(5):
            self.tessly.kill()
            first, second = Tessly(self.desktop), Tessly(self.desktop)
            for tessly in (first, second):
                tessly.launch()
            wait_until(lambda: not (first.is_running() and second.is_running()), "one gives up")
            loser, self.tessly = (second, first) if first.is_running() else (first, second)
            self.assertEqual(loser.process.returncode, FAILED)
            self.assertIn("no session bus on which to reach it", loser.log())
            self.assertEqual(loser.traces("recording"), [])
            self.tessly.wait_for_trace("recording")
            loser.kill()


class AnUpdate(DesktopCase):
    """While the program runs, its files are replaced."""

    def test_a_program_that_is_replaced_still_opens_its_own_windows(self):
        tree = self.desktop.path("installed")
        built = os.path.dirname(os.path.dirname(Tessly(self.desktop).program))
        library = os.path.join("lib", "tessly", "tessly-views.so")
        for name in (os.path.join("bin", "tessly"), library):
            os.makedirs(os.path.dirname(os.path.join(tree, name)))
            shutil.copy(os.path.join(built, name), os.path.join(tree, name))
        tessly = InstalledTessly(self.desktop, os.path.join(tree, "bin", "tessly"))
        self.addCleanup(tessly.kill)
        tessly.start()
        # As packages are installed: a new file takes the name of the old one.
        with open(os.path.join(tree, library + ".new"), "wb") as file:
            file.write(b"not for the program that runs")
        os.replace(os.path.join(tree, library + ".new"), os.path.join(tree, library))
        tessly.open_panel()
        tessly.stop()


class ABusThatGoes(TesslyCase):
    def test_tessly_goes_on_with_one_line_in_the_log(self):
        self.desktop.end(self.desktop.bus)
        wait_until(lambda: "The session bus is gone" in self.tessly.log(), "the log has its line")
        self.record("one")
        lines = [line for line in self.tessly.log().splitlines() if "BusService" in line]
        self.assertEqual(len(lines), 1, self.tessly.log())


class ABusThatHangs(Expecting, DesktopCase):
    def setUp(self):
        super().setUp()
        self.desktop.bus.send_signal(signal.SIGSTOP)
        self.tessly = Tessly(self.desktop)
        self.addCleanup(self.tessly.kill)
        self.tessly.launch()
        self.tessly.wait_for_trace("recording")

    def test_tessly_records_and_is_reached_once_the_bus_answers(self):
        self.clipboard.copy("one")
        self.tessly.history.wait_for_text("one")
        self.expect_refusal(FAILED, "the session bus does not answer", "show")
        self.assertEqual(self.previews(), ["one"])
        self.desktop.bus.send_signal(signal.SIGCONT)
        wait_until(lambda: self.desktop.bus_name_exists("com.brackmoor.tessly"),
                   "tessly is on the bus")
        self.expect_silence("show")
        self.tessly.stop()

    def test_tessly_ends_all_the_same(self):
        self.tessly.stop()


class TwoStarts(DesktopCase):
    ROUNDS = 10

    def test_one_survives_and_the_other_opens_its_panel(self):
        for number in range(self.ROUNDS):
            with self.subTest(round=number):
                self.start_two(number)

    def start_two(self, number):
        first, second = Tessly(self.desktop), Tessly(self.desktop)
        before = len(first.history.clips())
        try:
            first.launch()
            second.launch()
            wait_until(lambda: not (first.is_running() and second.is_running()),
                       lambda: f"one ends: {first.log()}{second.log()}")
            loser, survivor = (second, first) if first.is_running() else (first, second)
            self.assertEqual(loser.process.returncode, DONE, loser.log())
            self.assertTrue(survivor.is_running(), survivor.log())
            self.assertEqual(loser.traces("recording"), [], "it never came to writing")
            survivor.wait_for_trace("show-requested")
            wait_until(survivor.panel_window, lambda: f"the panel is open: {survivor.log()}")
            survivor.command("hide")
            self.clipboard.copy(f"copy {number}")
            survivor.history.wait_for_text(f"copy {number}")
            survivor.stop()
            self.assertEqual(survivor.history.problems(self.desktop.path("scratch")), [])
            self.assertEqual(len(survivor.history.clips()), before + 1)
        finally:
            first.kill()
            second.kill()

    def test_a_start_while_the_first_ends_becomes_the_first(self):
        for _ in range(5):
            first, second = Tessly(self.desktop), Tessly(self.desktop)
            try:
                first.start()
                first.process.send_signal(signal.SIGTERM)
                second.launch()
                wait_until(lambda: not first.is_running(), "the first ends")
                wait_until(lambda: second.traces("recording") or not second.is_running(),
                           "the second runs, or has opened the panel of the first in time")
                if second.is_running():
                    second.wait_for_trace("recording")
                else:
                    self.assertEqual(second.process.returncode, DONE, second.log())
            finally:
                first.kill()
                second.kill()

    def test_one_with_another_data_folder_gives_way_to_the_one_on_the_bus(self):
        first = self.start_tessly()
        other = Tessly(self.desktop,
                       environment={"XDG_DATA_HOME": self.desktop.path("home", "other")})
        self.addCleanup(other.kill)
        other.launch()
        wait_until(lambda: not other.is_running(), "the later one ends")
        self.assertEqual(other.process.returncode, DONE)
        first.wait_for_panel()

    def test_after_a_crash_the_next_start_is_the_first(self):
        first = Tessly(self.desktop).start()
        first.kill()
        second = self.start_tessly()
        self.assertTrue(holds_for(0.5, second.is_running))


if __name__ == "__main__":
    unittest.main()
