"""Giving commands to Tessly, running or not, and what holds for each of them."""

import json

DONE, FAILED, WRONG_USAGE, NOT_RUNNING = range(4)

ENTRY_KEYS = ["position", "id", "kind", "preview", "createdAt", "lastUsedAt", "sourceAppName",
              "sourceBundleID", "isPinned", "pinOrder", "copyCount", "byteCount"]
STATUS_KEYS = ["running", "paused", "items", "pinned", "bytes", "session", "capture", "paste",
               "hotKeys", "tray", "protocols"]

# Every command that only a running Tessly can carry out.
ACTIONS = [["show"], ["hide"], ["toggle"], ["pause"], ["resume"], ["quit"], ["paste", "1"],
           ["paste", "1", "--plain"], ["copy", "1"], ["copy", "1", "--plain"], ["pin", "1"],
           ["unpin", "1"], ["delete", "1"], ["clear"], ["clear", "--everything"]]


class Expecting:
    """What holds for every command; `tessly` is the program, running or not."""

    def do(self, *arguments):
        """A command that is carried out. Returns what it printed; nothing is said about it."""
        answer = self.tessly.command(*arguments, check=False)
        self.assertEqual((answer.returncode, answer.stderr), (DONE, b""), arguments)
        return answer.stdout.decode()

    def expect_silence(self, *arguments):
        self.assertEqual(self.do(*arguments), "", arguments)

    def expect_refusal(self, status, line, *arguments):
        """A command that prints nothing and says in one line why not."""
        answer = self.tessly.command(*arguments, check=False)
        self.assertEqual(answer.stderr.decode(), f"tessly: {line}\n", arguments)
        self.assertEqual((answer.returncode, answer.stdout), (status, b""), arguments)

    def entries(self, *options):
        entries = json.loads(self.do("list", "--json", *options))
        for entry in entries:
            self.assertEqual(list(entry), ENTRY_KEYS)
        return entries

    def previews(self, *options):
        return [entry["preview"] for entry in self.entries(*options)]

    def status(self):
        status = json.loads(self.do("status", "--json"))
        self.assertEqual(list(status), STATUS_KEYS)
        return status
