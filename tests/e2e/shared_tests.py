"""What holds on every desktop, X11 or Wayland. The classes that use these have a desktop, a Tessly
that records, and `make`, which starts what is pasted into."""

import signal

from tessly_e2e import procfs, wait_until
from tessly_e2e.bus_calls import BusCalls
from tessly_e2e.commands import DONE, Expecting
from tessly_e2e.hand import pace, pause
from tessly_e2e.waiting import holds_for, settled

# How long a program may take to fetch what is pasted into it.
LAZINESS = 0.1
# How long a window is there that is hardly seen.
A_MOMENT = 0.05
# All that was in front this long ago counts for a copy, in seconds, and a little.
REMEMBERED = 0.5


class DisplayServersEnd(Expecting):
    """The last test of its desktop, which `end_display_server` ends as a crash does."""

    text_type = "UTF8_STRING"

    def test_tessly_says_so_and_ends_with_all_that_it_has_read_in_the_history(self):
        for number in range(5):
            self.record(f"entry {number}")
        listed = self.previews()
        with self.history.held():
            offer = self.clipboard.offer({self.text_type: b"read at last"})
            offer.wait_for_request(self.text_type)
            # Answered after what it had read by then has been dealt with.
            self.expect_silence("hide")
            self.end_display_server()
            wait_until(lambda: "The connection to the desktop was lost." in self.tessly.log()
                       or not self.tessly.is_running(), "tessly hears of it")
            self.assertTrue(self.tessly.is_running(), "it waits until it has saved")
        wait_until(lambda: not self.tessly.is_running(), "tessly ends")
        self.assertEqual(self.tessly.process.returncode, 1)
        self.tessly.process.returncode = 0  # as expected
        self.assertEqual([line for line in self.tessly.remarks() if "AppDelegate" in line],
                         ["com.brackmoor.tessly.AppDelegate: "
                          "The connection to the desktop was lost."])
        self.assertEqual(self.history.problems(self.desktop.path("scratch")), [])
        self.assertEqual([clip.preview for clip in self.history.clips()],
                         ["read at last", *listed])


class PasteOrder(Expecting):
    """Each entry arrives once, in the order in which it was asked for."""

    def setUp(self):
        super().setUp()
        for text in ("five;", "four;", "three;", "two;", "one;"):
            self.record(text)
        self.calls = self.enterContext(BusCalls(self.desktop))

    def start_program(self):
        return self.make(self.desktop).start()

    def expect_in(self, program, *texts):
        program.wait_for_text("".join(texts))

    def test_commands_one_after_another(self):
        program = self.start_program()
        for position in (2, 3, 4):
            self.expect_silence("paste", str(position))
        self.expect_in(program, "two;", "three;", "four;")

    def test_calls_that_do_not_wait_for_each_other(self):
        program = self.start_program()
        calls = [self.calls.paste(position) for position in (2, 3, 4)]
        self.assertEqual([call.wait() for call in calls], [None] * 3)
        self.expect_in(program, "two;", "three;", "four;")

    def test_commands_started_at_once_arrive_once_each(self):
        program = self.start_program()
        commands = [self.desktop.start([self.tessly.program, "paste", str(position)])
                    for position in (2, 3, 4)]
        self.assertEqual([command.wait() for command in commands], [DONE] * 3)
        program.wait_for_arrival()
        # Which of them was first is chance.
        wait_until(lambda: sorted(program.text().split(";")) == ["", "four", "three", "two"],
                   lambda: f"each has arrived once: {program.text()}")

    def test_a_command_right_after_a_paste_from_the_panel(self):
        program = self.start_program()
        panel = self.tessly.open_panel()
        # The first entry: that it is used changes no position.
        panel.search("one")
        self.keyboard.press("Return")
        self.tessly.wait_for_closed_panel()
        self.expect_silence("paste", "2")
        self.expect_in(program, "one;", "two;")

    def test_a_program_that_is_slow_to_fetch_gets_both(self):
        program = self.start_program()
        program.process.send_signal(signal.SIGSTOP)
        first = self.calls.paste(2)
        second = self.calls.paste(3)
        self.assertIsNone(first.wait())
        pause(LAZINESS)
        program.process.send_signal(signal.SIGCONT)
        self.assertIsNone(second.wait())
        self.expect_in(program, "two;", "three;")


class CommandsAtTheirWord(Expecting):
    """What a command says is true when it has ended."""

    ROUNDS = 20

    def setUp(self):
        super().setUp()
        self.record("older")
        self.record("newer")
        self.program = self.enterContext(self.desktop.program())

    def test_who_reads_after_a_copy_gets_the_entry(self):
        for number in range(self.ROUNDS):
            position, text = ((1, b"newer"), (2, b"older"))[number % 2]
            self.expect_silence("copy", str(position))
            self.assertEqual(self.clipboard.read(), text, number)

    def test_who_copies_after_a_copy_keeps_the_clipboard(self):
        with BusCalls(self.desktop) as calls:
            for number in range(self.ROUNDS):
                # The last entry, whatever was recorded meanwhile.
                self.assertIsNone(calls.copy(len(self.history.clips())).wait())
                self.program.copy(f"copied afterwards {number}")
                losses = self.program.losses()
                self.assertTrue(holds_for(0.1, lambda: self.program.losses() == losses), number)
                self.assertTrue(self.program.owns_clipboard(), number)
                self.history.wait_for_text(f"copied afterwards {number}")

    def test_a_paste_has_put_its_entry_on_the_clipboard(self):
        self.make(self.desktop).start()
        for position, text in ((2, b"older"), (1, b"newer"), (2, b"older")):
            self.expect_silence("paste", str(position))
            self.assertEqual(self.clipboard.read(), text)


class QuickCopies:
    """The clipboard tells of a change, and nothing else wakes the program."""

    def setUp(self):
        super().setUp()
        self.program = self.enterContext(self.desktop.program())

    def expect_recorded(self, texts, but_for=0):
        """All of them but for so many, as entries of their own, newest first."""
        def recorded():
            return [clip.plain_text for clip in self.history.clips()]
        wait_until(lambda: recorded()[:1] == texts[-1:],
                   lambda: f"“{texts[-1]}” is recorded, after {len(recorded())} others")
        missing = sorted(set(texts) - set(recorded()))
        self.assertLessEqual(len(missing), but_for, f"not recorded: {missing}")
        self.assertEqual(recorded(), [text for text in reversed(texts) if text not in missing])

    def copy_at_pace(self, seconds, count, but_for=0):
        texts = [f"copy {number} of {count}" for number in range(count)]
        for number in pace(seconds, count):
            self.program.copy(texts[number])
        self.expect_recorded(texts, but_for)

    def test_five_a_second_are_all_recorded(self):
        self.copy_at_pace(0.2, 50)

    def test_twenty_a_second_are_recorded(self):
        # On a busy machine a copy is gone now and then before anybody could ask for it. That none
        # is lost otherwise is for the benchmark to show.
        self.copy_at_pace(0.05, 50, but_for=10)

    def test_two_copies_a_tenth_of_a_second_apart_are_two_entries(self):
        self.copy_at_pace(0.1, 2)

    def test_what_is_set_several_times_in_a_row_is_one_copy(self):
        for number in range(5):
            self.program.offer_in_a_row(
                [{self.program.TEXT: f"step {step} of {number}".encode()} for step in range(4)])
            self.history.wait_for_text(f"step 3 of {number}")
        self.expect_recorded([f"step 3 of {number}" for number in range(5)])

    def test_nothing_wakes_it_while_nothing_happens(self):
        def switches():
            return procfs.switches(self.tessly.pid)

        self.record("something")
        settled(switches, 3, "how often its threads were switched to, after a copy")
        self.tessly.open_panel()
        self.tessly.close_panel()
        settled(switches, 3, "how often its threads were switched to, after closing the panel")


class PendingCopies(Expecting):
    """What was copied just before something else happens is recorded."""

    ROUNDS = 5

    def setUp(self):
        super().setUp()
        self.record("an entry")
        self.program = self.enterContext(self.desktop.program())

    def expect_recorded(self, text):
        self.history.wait_for_text(text, 5)

    def test_before_an_entry_is_copied(self):
        with BusCalls(self.desktop) as calls:
            for number in range(self.ROUNDS):
                self.program.copy(f"just before {number}")
                self.assertIsNone(calls.copy(1).wait())
                self.expect_recorded(f"just before {number}")

    def test_before_an_entry_is_copied_by_command(self):
        for number in range(self.ROUNDS):
            self.program.copy(f"just before {number}")
            self.expect_silence("copy", "1")
            self.expect_recorded(f"just before {number}")

    def test_before_an_entry_is_pasted(self):
        self.make(self.desktop).start()
        with BusCalls(self.desktop) as calls:
            for number in range(self.ROUNDS):
                self.program.copy(f"just before {number}")
                self.assertIsNone(calls.paste(1).wait())
                self.expect_recorded(f"just before {number}")

    def test_before_the_end(self):
        for number in range(self.ROUNDS):
            self.program.copy(f"just before {number}")
            self.tessly.stop()
            self.assertIsNotNone(self.history.find(f"just before {number}"), number)
            self.tessly.start()

    def test_before_the_command_to_quit(self):
        for number in range(self.ROUNDS):
            self.program.copy(f"just before {number}")
            self.tessly.command("quit")
            wait_until(lambda: not self.tessly.is_running(), "tessly quits")
            self.assertIsNotNone(self.history.find(f"just before {number}"), number)
            self.tessly.start()


class IgnoredInFront:
    """Whatever was in front for a moment counts."""

    ROUNDS = 8
    settings = {"ignoredBundleIDs": "Glimpse"}

    def setUp(self):
        super().setUp()
        self.program = self.enterContext(self.desktop.program())
        self.front = self.make(self.desktop).start()

    def show(self):
        self.program.show("Glimpse")
        wait_until(self.program.is_in_front, "the ignored application is in front")

    def test_an_application_shown_for_a_moment_is_ignored(self):
        for number in range(self.ROUNDS):
            self.show()
            self.program.copy(f"secret {number}")
            pause(A_MOMENT)
            self.program.hide()
            wait_until(self.front.is_in_front, "the other window is in front again")
            pause(REMEMBERED)
            self.expect_still_recording()
        self.assertEqual(self.recorded_texts(), [])
        self.assertEqual(self.program.content_requests(), [])

    def test_what_is_copied_a_moment_later_is_ignored(self):
        self.show()
        pause(A_MOMENT)
        self.program.hide()
        pause(0.1)
        self.program.copy("secret")
        wait_until(self.front.is_in_front, "the other window is in front again")
        pause(REMEMBERED)
        self.expect_still_recording()
        self.assertEqual(self.recorded_texts(), [])

    def test_what_is_copied_long_after_is_recorded_from_what_is_in_front(self):
        self.show()
        self.program.hide()
        wait_until(self.front.is_in_front, "the other window is in front again")
        pause(REMEMBERED)
        self.program.copy("no secret")
        clip = self.history.wait_for_text("no secret")
        self.assertEqual((clip.source_app_name, clip.source_bundle_id),
                         (self.front.source_name, self.front.source_id))


class Renaming:
    """An application that gives its window other names once it is there."""

    # How long after its window is there an application gives it the names that it keeps.
    UNTIL_RENAMED = 0.1

    def setUp(self):
        super().setUp()
        self.program = self.enterContext(self.desktop.program())
        self.program.show("Starter")
        wait_until(self.program.is_in_front, "the window is in front")
        pause(self.UNTIL_RENAMED)
        self.program.rename("Real")


class Renamed(Renaming):
    def test_a_copy_is_credited_to_the_name_that_the_window_has_now(self):
        self.program.copy("from a renamed window")
        clip = self.history.wait_for_text("from a renamed window")
        self.assertEqual((clip.source_app_name, clip.source_bundle_id), ("Real", "Real"))


class RenamedAndIgnored(Renaming):
    settings = {"ignoredBundleIDs": "real"}

    def test_its_copies_are_neither_read_nor_recorded(self):
        self.program.copy("secret")
        self.assertTrue(holds_for(1, lambda: self.program.content_requests() == []))
        self.assertEqual(self.recorded_texts(), [])
