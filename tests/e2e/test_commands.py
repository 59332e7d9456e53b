"""The command line: what each command does, prints and ends with, whether Tessly runs or not."""

import os
import pathlib
import signal
import stat
import unittest

from tessly_e2e import Tessly, wait_until
from tessly_e2e.case import DesktopCase, TesslyCase
from tessly_e2e.commands import ACTIONS, FAILED, NOT_RUNNING, WRONG_USAGE, Expecting
from tessly_e2e.editors import GtkEditor, Terminal


class CommandCase(Expecting, TesslyCase):
    pass


class Listing(CommandCase):
    def setUp(self):
        super().setUp()
        self.terminal = Terminal(self.desktop).start("fromterminal")
        self.record("plain text")
        self.record("https://example.org/")
        self.clipboard.offer({"UTF8_STRING": b"rich words", "text/html": b"<b>rich words</b>"})
        self.history.wait_for_kind("richText")
        self.terminal.copy_word()
        self.history.wait_for_text("fromterminal")

    def test_json_tells_all_about_each_entry(self):
        self.expect_silence("pin", "4")
        entries = self.entries()
        clips = self.history.clips()
        self.assertEqual(len(clips), 4)
        for position, (entry, clip) in enumerate(zip(entries, clips, strict=True), 1):
            self.assertEqual(entry, {
                "position": position, "id": clip.id, "kind": clip.kind, "preview": clip.preview,
                "createdAt": clip.created_at, "lastUsedAt": clip.last_used_at,
                "sourceAppName": clip.source_app_name, "sourceBundleID": clip.source_bundle_id,
                "isPinned": bool(clip.is_pinned), "pinOrder": clip.pin_order,
                "copyCount": clip.copy_count,
                "byteCount": len(clip.plain_text.encode()) + len(clip.html or b"")})
        self.assertEqual([entry["kind"] for entry in entries], ["text", "text", "richText", "link"])
        self.assertIs(entries[0]["isPinned"], True)
        self.assertEqual(entries[1]["sourceBundleID"], Terminal.source_id)
        self.assertEqual(entries[1]["sourceAppName"], Terminal.source_name)

    def test_options_choose_entries_that_keep_their_positions(self):
        def positions(*options):
            return [entry["position"] for entry in self.entries(*options)]
        self.assertEqual(positions(), [1, 2, 3, 4])
        self.assertEqual(positions("--limit", "2"), [1, 2])
        self.assertEqual(positions("--limit=0"), [])
        self.assertEqual(positions("--kind", "link"), [3])
        self.assertEqual(positions("--kind", "image"), [])
        self.assertEqual(positions("--query", "text"), [4])
        self.assertEqual(positions("--query=xample"), [3])
        self.assertEqual(positions("--query", "words", "--kind", "text"), [])
        self.assertEqual(positions("--query", "nothing like it"), [])

    def test_people_get_a_line_for_each_entry(self):
        self.expect_silence("pin", "2")
        lines = self.do("list").splitlines()
        self.assertRegex(lines[0], r"^1 \* richText  (now|\d+ seconds? ago) +rich words$")
        self.assertRegex(lines[1], r"^2   text      (now|\d+ seconds? ago) +fromterminal$")
        self.assertRegex(lines[2], r"^3   link ")
        self.assertEqual(len(lines), 4)
        self.assertEqual(self.do("list", "--query", "nothing like it"), "")

    def test_the_panel_and_its_search_do_not_matter(self):
        panel = self.tessly.open_panel()
        panel.search("plain")
        self.assertEqual(len(self.entries()), 4)

    def test_a_reader_that_has_enough_is_left_in_peace(self):
        answer = self.desktop.run(
            ["bash", "-c", 'set -o pipefail; "$0" list | true; echo "${PIPESTATUS[0]}"',
             self.tessly_path()], environment=self.tessly.environment)
        self.assertEqual(answer.stderr, b"")

    def tessly_path(self):
        return os.path.abspath(os.environ["TESSLY_PROGRAM"])


class Hostile(CommandCase):
    def test_what_was_copied_never_speaks_to_the_terminal(self):
        hostile = "one\x1b[31mtwo\x07\x1b]0;title\x07three\u009b2Jfour\u202efive\x7f"
        self.record(hostile)
        for arguments in (["list"], ["list", "--json"]):
            printed = self.do(*arguments)
            self.assertTrue(all(c == "\n" or c.isprintable() for c in printed), repr(printed))
        # Programs get every character all the same.
        self.assertEqual(self.previews(), [hostile])
        self.expect_refusal(
            WRONG_USAGE, 'there is no command " [31m"; see "tessly --help"', "\x1b[31m")

    def test_a_large_text_is_listed_by_its_beginning(self):
        self.clipboard.copy("x" * 5_000_000)
        wait_until(self.history.clips, "it is recorded")
        entry = self.entries()[0]
        self.assertEqual(entry["byteCount"], 5_000_000)
        self.assertEqual(entry["preview"], "x" * 400)


class Acting(CommandCase):
    def setUp(self):
        super().setUp()
        for text in ("three", "two", "one"):
            self.record(text)

    def test_pin_and_unpin(self):
        self.expect_silence("pin", "3")
        self.assertEqual(self.previews(), ["three", "one", "two"])
        self.expect_silence("pin", "3")
        self.assertEqual(self.previews(), ["two", "three", "one"])
        self.assertEqual(self.status()["pinned"], 2)
        self.expect_silence("unpin", "1")
        self.assertEqual(self.previews(), ["three", "one", "two"])

    def test_delete_leaves_no_trace(self):
        self.record("secret-to-be-deleted")
        self.expect_silence("delete", "1")
        self.assertEqual(self.previews(), ["one", "two", "three"])
        for name in os.listdir(self.history.folder):
            with open(os.path.join(self.history.folder, name), "rb") as file:
                self.assertNotIn(b"secret-to-be-deleted", file.read(), name)

    def test_clear_keeps_the_pinned_unless_told_otherwise(self):
        self.expect_silence("pin", "2")
        self.expect_silence("clear")
        self.assertEqual(self.previews(), ["two"])
        self.expect_silence("clear", "--everything")
        self.assertEqual(self.previews(), [])
        self.assertEqual(self.do("list", "--json"), "[]\n")

    def test_copy(self):
        self.expect_silence("copy", "2")
        self.assertEqual(self.clipboard.read(), b"two")
        self.assertTrue(self.tessly.owns_clipboard())
        self.expect_still_recording()
        self.assertEqual(self.recorded_texts(), ["one", "two", "three"])

    def test_copy_as_plain_text(self):
        self.clipboard.offer({"UTF8_STRING": b"rich words", "text/html": b"<b>rich words</b>"})
        self.history.wait_for_kind("richText")
        self.expect_silence("copy", "1")
        self.assertIn("text/html", self.clipboard.targets())
        self.expect_silence("copy", "--plain", "1")
        self.assertNotIn("text/html", self.clipboard.targets())
        self.assertEqual(self.clipboard.read(), b"rich words")

    def test_positions_that_are_not_there(self):
        line = "There is no clipboard item at position 4."
        for command in ("paste", "copy", "pin", "unpin", "delete"):
            self.expect_refusal(FAILED, line, command, "4")
        self.expect_refusal(FAILED, line.replace("4", str(2**63 - 1)), "pin", str(2**63 - 1))
        self.assertEqual(self.previews(), ["one", "two", "three"])

    def test_wrong_usage_changes_nothing(self):
        for arguments, line in (
                (["frobnicate"], 'there is no command "frobnicate"; see "tessly --help"'),
                (["delete"], '"tessly delete" needs the position of an entry; '
                             'see "tessly delete --help"'),
                (["delete", "0"], '"0" is no position: positions are numbers from 1; '
                                  'see "tessly delete --help"'),
                (["delete", "1", "2"], '"tessly delete" takes no "2"; see "tessly delete --help"'),
                (["clear", "--all"], '"tessly clear" has no option "--all"; '
                                     'see "tessly clear --help"'),
                (["list", "--kind", "video"], 'there is no kind "video"; '
                                              'see "tessly list --help"')):
            self.expect_refusal(WRONG_USAGE, line, *arguments)
        self.assertEqual(self.previews(), ["one", "two", "three"])

    def test_pause_and_resume(self):
        self.assertIs(self.status()["paused"], False)
        for _ in range(2):
            self.expect_silence("pause")
            self.assertIs(self.status()["paused"], True)
        self.clipboard.copy("while paused")
        for _ in range(2):
            self.expect_silence("resume")
            self.assertIs(self.status()["paused"], False)
        self.expect_still_recording()
        self.assertEqual(self.recorded_texts(), ["one", "two", "three"])

    def test_status(self):
        self.expect_silence("pin", "2")
        status = self.status()
        self.assertGreater(status.pop("bytes"), 10_000)
        # Whether there is an icon or are keys depends on what else the desktop has.
        for key in ("hotKeys", "tray"):
            self.assertIsInstance(status.pop(key), bool)
        self.assertEqual(status, {"running": True, "paused": False, "items": 3, "pinned": 1,
                                  "session": "x11", "capture": True, "paste": True,
                                  "protocols": ["X11"]})
        lines = self.do("status").splitlines()
        self.assertEqual(lines[0], "running   yes")
        self.assertEqual(len(lines), 12)

    def test_show_hide_and_toggle(self):
        self.expect_silence("show")
        self.tessly.wait_for_panel()
        self.expect_silence("show")
        self.assertIsNotNone(self.tessly.panel_window())
        self.expect_silence("hide")
        self.tessly.wait_for_closed_panel()
        self.expect_silence("hide")
        self.expect_silence("toggle")
        self.tessly.wait_for_panel()
        self.expect_silence("toggle")
        self.tessly.wait_for_closed_panel()

    def test_a_start_opens_the_panel(self):
        self.expect_silence()
        self.tessly.wait_for_panel()

    def test_quit_returns_when_tessly_has_ended(self):
        self.expect_silence("quit")
        self.assertFalse(self.tessly.is_running())
        self.assertEqual(self.tessly.process.returncode, 0)
        self.expect_refusal(NOT_RUNNING, "Tessly is not running", "quit")

    def test_a_tessly_that_hangs_is_given_up(self):
        self.tessly.process.send_signal(signal.SIGSTOP)
        try:
            answer = self.tessly.desktop.run([os.environ["TESSLY_PROGRAM"], "show"], check=False,
                                             timeout=60)
        finally:
            self.tessly.process.send_signal(signal.SIGCONT)
        self.assertEqual(answer.stderr, b"tessly: Tessly does not answer\n")
        self.assertEqual((answer.returncode, answer.stdout), (FAILED, b""))


class Pasting(CommandCase):
    settings = {"directPasteShortcuts": False}

    def test_into_what_is_in_front(self):
        for text in ("three", "two", "one"):
            self.record(text)
        terminal = Terminal(self.desktop).start()
        self.expect_silence("paste", "2")
        terminal.wait_for_text("two")
        editor = GtkEditor(self.desktop).start()
        self.expect_silence("paste", "3")
        editor.wait_for_text("three")
        self.assertEqual(self.clipboard.read(), b"three")
        self.assertEqual(terminal.text(), "two")

    def test_from_beyond_the_tenth_position(self):
        for number in range(15, 0, -1):
            self.record(f"entry {number}")
        terminal = Terminal(self.desktop).start()
        self.expect_silence("paste", "14")
        terminal.wait_for_text("entry 14")

    def test_as_plain_text(self):
        self.clipboard.offer({"UTF8_STRING": b"rich words", "text/html": b"<b>rich words</b>"})
        self.history.wait_for_kind("richText")
        editor = GtkEditor(self.desktop).start()
        self.expect_silence("paste", "1", "--plain")
        editor.wait_for_text("rich words")
        self.assertNotIn("text/html", self.clipboard.targets())

    def test_without_a_window_in_front_it_is_only_copied(self):
        self.record("one")
        self.record("two")
        self.expect_refusal(
            FAILED,
            "Copied to the clipboard, but not pasted: no other application was in front.",
            "paste", "2")
        self.assertEqual(self.clipboard.read(), b"one")


class NotRunning(Expecting, DesktopCase):
    def setUp(self):
        super().setUp()
        self.tessly = Tessly(self.desktop)

    def expect_no_action(self):
        for arguments in ACTIONS:
            self.expect_refusal(NOT_RUNNING, "Tessly is not running", *arguments)

    def files(self):
        folder = self.tessly.history.folder
        if not os.path.exists(folder):
            return None
        return {path.name: (stat.S_IMODE(path.stat().st_mode), path.read_bytes())
                for path in pathlib.Path(folder).iterdir()}

    def record_and_end(self, end):
        with Tessly(self.desktop) as tessly:
            for text in ("three", "two", "one"):
                self.clipboard.copy(text)
                tessly.history.wait_for_text(text)
            tessly.command("pin", "2")
            end(tessly)

    def test_before_the_first_start(self):
        self.expect_no_action()
        self.assertEqual(self.entries(), [])
        self.assertEqual(self.do("list"), "")
        self.assertEqual(self.status(), {
            "running": False, "paused": False, "items": 0, "pinned": 0, "bytes": 0,
            "session": "x11", "capture": False, "paste": False, "hotKeys": False, "tray": False,
            "protocols": []})
        self.assertIsNone(self.files(), "nothing was made")

    def test_after_the_end(self):
        self.record_and_end(Tessly.stop)
        before = self.files()
        self.expect_no_action()
        self.assertEqual(self.previews(), ["two", "one", "three"])
        self.assertEqual(self.previews("--query", "thr"), ["three"])
        self.assertEqual(self.entries("--query", "thr")[0]["position"], 3)
        status = self.status()
        self.assertEqual((status["running"], status["items"], status["pinned"], status["bytes"]),
                         (False, 3, 1, len(before["history.sqlite"][1])))
        self.assertEqual(self.files(), before, "nothing was changed")

    def test_after_a_crash(self):
        self.record_and_end(Tessly.kill)
        before = self.files()
        self.assertIn("history.sqlite-wal", before)
        self.expect_no_action()
        self.assertEqual(self.previews(), ["two", "one", "three"])
        self.assertEqual(self.status()["items"], 3)
        after = self.files()
        for name in ("history.sqlite", "history.sqlite-wal"):
            self.assertEqual(after[name], before[name])
        self.assertEqual({mode for mode, _ in after.values()}, {0o600})
        self.tessly = self.start_tessly()
        self.assertEqual(self.previews(), ["two", "one", "three"])

    def test_with_a_damaged_history(self):
        os.makedirs(self.tessly.history.folder)
        with open(self.tessly.history.path, "wb") as file:
            file.write(b"no database" * 1000)
        before = self.files()
        line = "Clipboard database integrity check failed: file is not a database"
        self.expect_refusal(FAILED, line, "list")
        self.expect_refusal(FAILED, line, "list", "--json")
        self.expect_refusal(FAILED, line, "status")
        self.assertEqual(self.files(), before)

    def test_help_and_version(self):
        self.assertRegex(self.do("--version"), r"^tessly \d+\.\d+\.\d+\n$")
        self.assertIn("Usage: tessly", self.do("--help"))
        for command, *_ in ACTIONS + [["list"], ["status"], ["export"], ["import"]]:
            self.assertIn(f"Usage: tessly {command}", self.do(command, "--help"))

    def test_a_full_disk_under_the_output_is_said(self):
        answer = self.desktop.run(
            ["bash", "-c", 'exec "$0" list --json >/dev/full', os.environ["TESSLY_PROGRAM"]],
            check=False)
        self.assertEqual(answer.returncode, FAILED)
        self.assertEqual(answer.stderr, b"tessly: could not print: No space left on device\n")


if __name__ == "__main__":
    unittest.main()
