"""Exporting the history and importing it, whether Tessly runs or not."""

import base64
import hashlib
import json
import os
import stat
import unittest

from tessly_e2e import Tessly, wait_until
from tessly_e2e.case import DesktopCase, TesslyCase
from tessly_e2e.commands import FAILED, Expecting
from tessly_e2e.png import gradient


def lines(path):
    with open(path, encoding="utf-8") as file:
        return [json.loads(line) for line in file]


class TransferCase(Expecting, TesslyCase):
    def setUp(self):
        super().setUp()
        self.file = self.desktop.path("export.jsonl")
        self.png = gradient(40, 30)

    def record_of_every_kind(self):
        self.record("plain text é 😀")
        self.record("https://example.org/")
        self.clipboard.offer({"UTF8_STRING": b"rich words", "text/html": b"<b>rich words</b>",
                              "text/rtf": b"{\\rtf1 rich words}"})
        self.history.wait_for_kind("richText")
        self.clipboard.offer({"text/uri-list": b"file:///tmp/a%20b\r\nfile:///tmp/c\r\n"})
        self.history.wait_for_kind("files")
        self.clipboard.offer({"image/png": self.png})
        self.history.wait_for_kind("image")
        self.expect_silence("pin", "5")
        self.expect_silence("pin", "4")

    def stored(self):
        """All that the history holds, in its order."""
        return [clip._asdict() for clip in self.history.clips()]

    def forget_and_start(self):
        """Another machine, so to speak."""
        self.tessly.stop()
        for name in os.listdir(self.history.folder):
            os.remove(os.path.join(self.history.folder, name))
        self.tessly.start()
        self.assertEqual(self.entries(), [])


class Transfer(TransferCase):
    def test_everything_comes_back_while_tessly_runs(self):
        self.record_of_every_kind()
        before = self.stored()
        self.expect_silence("export", self.file)
        first, *entries, last = lines(self.file)
        self.assertEqual(first, {"format": "tessly-history", "version": 1})
        self.assertEqual(last, {"end": True})
        self.assertEqual([entry["kind"] for entry in entries],
                         ["richText", "text", "image", "files", "link"])
        self.assertEqual(base64.b64decode(entries[2]["imagePNG"]), self.png)
        self.forget_and_start()
        panel = self.tessly.open_panel()
        self.assertEqual(self.do("import", self.file), "5 added, 0 there already, 0 refused\n")
        self.assertEqual(self.stored(), before)
        # The panel that is open has heard of it.
        panel.search("rich")
        self.keyboard.press("Return")
        self.tessly.wait_for_closed_panel()
        wait_until(lambda: self.clipboard.read() == b"rich words", "it can be pasted")

    def test_texts_from_elsewhere_come_in_their_order_below_what_is_there(self):
        self.record("copied here")
        with open(self.file, "wb") as file:
            file.write("newest é\nof two lines\0copied here\0\0older".encode())
        self.assertEqual(self.do("import", "--null", self.file),
                         "2 added, 1 there already, 0 refused\n")
        self.assertEqual([entry["preview"] for entry in self.entries()],
                         ["copied here", "newest é of two lines", "older"])
        self.record("copied afterwards")
        self.tessly.stop()
        self.assertEqual(self.do("import", "--null", self.file),
                         "0 added, 3 there already, 0 refused\n")
        self.assertEqual([entry["preview"] for entry in self.entries()],
                         ["copied afterwards", "copied here", "newest é of two lines", "older"])

    def test_everything_comes_back_while_tessly_does_not_run(self):
        self.record_of_every_kind()
        before = self.stored()
        self.tessly.stop()
        self.expect_silence("export", self.file)
        for name in os.listdir(self.history.folder):
            os.remove(os.path.join(self.history.folder, name))
        os.rmdir(self.history.folder)
        self.assertEqual(self.do("import", self.file), "5 added, 0 there already, 0 refused\n")
        self.assertEqual(self.do("import", self.file), "0 added, 5 there already, 0 refused\n")
        self.assertEqual(self.stored(), before)
        modes = {stat.S_IMODE(os.stat(os.path.join(self.history.folder, name)).st_mode)
                 for name in os.listdir(self.history.folder)}
        self.assertEqual(modes, {0o600})
        self.assertEqual(stat.S_IMODE(os.stat(self.history.folder).st_mode), 0o700)
        self.tessly.start()
        self.assertEqual(self.stored(), before)
        self.assertEqual([entry["kind"] for entry in self.entries("--query", "rich")], ["richText"])

    def test_what_was_copied_just_now_is_exported(self):
        for number in range(5):
            self.clipboard.copy(f"copied just now {number}")
            self.expect_silence("export", self.file)
            self.assertEqual(base64.b64decode(lines(self.file)[1]["plainText"]).decode(),
                             f"copied just now {number}")

    def test_nobody_else_can_read_the_file(self):
        self.record("text")
        with open(self.file, "w", encoding="utf-8") as file:
            file.write("old")
        os.chmod(self.file, 0o666)
        self.expect_silence("export", self.file)
        self.assertEqual(stat.S_IMODE(os.stat(self.file).st_mode), 0o600)
        self.assertEqual(len(lines(self.file)), 3)

    def test_pipes_on_both_sides(self):
        self.record("text")
        answer = self.desktop.run(
            ["bash", "-o", "pipefail", "-c", '"$0" export - | "$0" import - && '
             '"$0" import <("$0" export -)', self.tessly.program],
            environment=self.tessly.environment)
        self.assertEqual(answer.stderr, b"")
        self.assertEqual(answer.stdout, b"0 added, 1 there already, 0 refused\n" * 2)

    def test_what_is_refused_is_said_and_the_rest_added(self):
        for number in range(3):
            self.record(f"text {number}")
        self.expect_silence("export", self.file)
        with open(self.file, encoding="utf-8") as file:
            text = file.read().splitlines(keepends=True)
        text[2] = text[2].replace('"kind":"text"', '"kind":"\x1b[31m"')
        with open(self.file, "w", encoding="utf-8") as file:
            file.writelines(text)
        self.forget_and_start()
        answer = self.tessly.command("import", self.file, check=False)
        self.assertEqual(answer.returncode, FAILED)
        self.assertEqual(answer.stdout, b"2 added, 0 there already, 1 refused\n")
        self.assertEqual(answer.stderr.decode(),
                         f"{self.file}:3: it is no entry: not a JSON object of the right form\n")
        self.assertEqual(self.previews(), ["text 2", "text 0"])

    def test_a_full_disk_leaves_the_file_of_before(self):
        self.record("text")
        self.expect_silence("export", self.file)
        with open(self.file, "rb") as file:
            before = file.read()
        answer = self.desktop.run(
            ["bash", "-c", 'ulimit -f 0; trap "" XFSZ; exec "$0" export "$1"',
             self.tessly.program, self.file],
            environment=self.tessly.environment, check=False)
        self.assertEqual(answer.returncode, FAILED)
        self.assertIn("File too large", answer.stderr.decode())
        with open(self.file, "rb") as file:
            self.assertEqual(file.read(), before)
        self.assertFalse([name for name in os.listdir(os.path.dirname(self.file))
                          if name.startswith(".tessly-")])


class Killed(TransferCase):
    settings = {"maxHistory": 10000}

    def test_an_import_that_is_killed_leaves_whole_entries_and_can_be_repeated(self):
        self.record("text")
        self.expect_silence("export", self.file)
        first, entry, last = lines(self.file)
        self.tessly.stop()
        reader, writer = os.pipe()
        importing = self.desktop.start([self.tessly.program, "import", "-"], stdin=reader)
        os.close(reader)
        text = [json.dumps(first)] + entries_like(entry, 2000) + [json.dumps(last)]
        with os.fdopen(writer, "w") as pipe:
            pipe.write("\n".join(text[:1200]) + "\n")
            pipe.flush()
            # Two parts of five hundred entries, and the rest of a third that is not added.
            wait_until(lambda: len(self.history.clips()) > 900, "some of it is there")
            self.desktop.end(importing)
        self.assertEqual(len(self.history.clips()), 1001)
        with open(self.file, "w", encoding="utf-8") as file:
            file.write("\n".join(text) + "\n")
        self.assertEqual(self.do("import", self.file),
                         "1000 added, 1000 there already, 0 refused\n")
        self.tessly.start()
        self.assertEqual(self.status()["items"], 2001)


def entries_like(entry, count):
    """Lines of other entries."""
    made = []
    for number in range(count):
        text = f"made {number}".encode()
        made.append(json.dumps({**entry, "id": f"00000000-0000-4000-8000-{number:012X}",
                                "plainText": base64.b64encode(text).decode(),
                                "contentHash": content_hash(text)}))
    return made


def content_hash(text):
    sections = ((b"text", text), (b"rtf", b""), (b"html", b""), (b"png", b""), (b"files", b"[]"))
    hashed = hashlib.sha256()
    for label, data in sections:
        hashed.update(label + len(data).to_bytes(8, "big") + data)
    return hashed.hexdigest()


class NeverStarted(Expecting, DesktopCase):
    def setUp(self):
        super().setUp()
        self.tessly = Tessly(self.desktop)
        self.file = self.desktop.path("export.jsonl")

    def test_an_export_of_nothing_is_an_export(self):
        self.expect_silence("export", self.file)
        self.assertEqual(lines(self.file), [{"format": "tessly-history", "version": 1},
                                            {"end": True}])
        self.assertFalse(os.path.exists(self.tessly.history.folder))
        self.assertEqual(self.do("import", self.file), "0 added, 0 there already, 0 refused\n")


if __name__ == "__main__":
    unittest.main()
