"""Many copies, as fast as they are recorded, of owners of every kind, some of which die.

TESSLY_SOAK_COPIES says how many; script/soak runs the long one.
"""

import itertools
import os
import random
import subprocess
import sys
import time
import unittest

import tessly_e2e
from tessly_e2e import procfs, wait_until
from tessly_e2e.bus_calls import BusCalls
from tessly_e2e.case import TesslyCase
from tessly_e2e.editors import Terminal
from tessly_e2e.tk import TkProgram

COPIES = int(os.environ.get("TESSLY_SOAK_COPIES", "150"))
# What may come and go in memory, in kilobytes, and in descriptors.
SOME_MEMORY = 4 * 1024
SOME_DESCRIPTORS = 4


class Soak(TesslyCase):
    settings = {"maxHistory": 10000}

    def setUp(self):
        super().setUp()
        self.chance = random.Random(COPIES)
        self.calls = self.enterContext(BusCalls(self.desktop))
        self.program = self.enterContext(self.desktop.program())
        self.terminal = Terminal(self.desktop).start()
        self.tk = TkProgram(self.desktop).start()
        self.gtk = self.desktop.start(
            [sys.executable, "-m", "tessly_e2e.gtk_owner"], stdin=subprocess.PIPE, name="gtk",
            environment={"PYTHONPATH": os.path.dirname(os.path.dirname(tessly_e2e.__file__)),
                         "PYTHONDONTWRITEBYTECODE": "1"})
        self.process = None

    # The kinds of owner

    def by_xclip(self, text):
        self.process = self.clipboard.copy(text)

    def by_xsel(self, text):
        self.process = self.clipboard.copy_with_xsel(text)

    def in_pieces(self, text):
        self.process = self.clipboard.offer({"UTF8_STRING": text.encode()}, "--incr", "1000",
                                            "--chunk", "3000").process

    def by_gtk(self, text):
        self.gtk.stdin.write(text.encode() + b"\n")
        self.gtk.stdin.flush()

    def by_one_that_dies(self, text):
        self.program.copy(text)
        if self.chance.random() < 0.5:
            wait_until(self.program.content_requests, "it is asked for its content")
        self.program.leave_clipboard()
        self.program.forget_requests()

    def by_tk(self, text):
        self.tk.copy("{" + text + "}")

    def test_every_copy_is_recorded_or_has_its_line_and_nothing_grows(self):
        kinds = [self.by_xclip, self.by_xsel, self.in_pieces, self.by_gtk, self.by_one_that_dies,
                 self.by_tk]
        texts, sizes = [], []
        remarks = len(self.tessly.remarks())
        started = time.monotonic()
        for number, kind in zip(range(COPIES), itertools.cycle(kinds)):
            text = f"soak {number} " + "word " * self.chance.randrange(3000)
            texts.append(text)
            said = len(self.tessly.remarks())
            kind(text)
            wait_until(
                lambda: self.history.contains(text) or len(self.tessly.remarks()) > said,
                lambda: f"copy {number}, {kind.__name__}, is recorded or has its line")
            self.do_something_else(number)
            if number % (COPIES // 10) == 0:
                sizes.append(self.sizes())
        seconds = time.monotonic() - started

        missing = [text.split("word")[0] for text in texts if not self.history.contains(text)]
        lines = self.tessly.remarks()[remarks:]
        print(f"{COPIES} copies in {seconds:.0f} s, {len(missing)} not recorded, {len(lines)} "
              f"lines; kilobytes and descriptors: {sizes}", file=sys.stderr)
        self.assertGreaterEqual(len(lines), len(missing), missing)
        self.assertEqual(self.history.count(), COPIES - len(missing))
        # The first of them are for what is loaded once.
        (memory, descriptors), (memory_now, descriptors_now) = sizes[2], self.sizes()
        self.assertLessEqual(memory_now, memory + SOME_MEMORY, sizes)
        self.assertLessEqual(descriptors_now, descriptors + SOME_DESCRIPTORS, sizes)

    def do_something_else(self, number):
        if self.process is not None and number % 7 == 3:
            self.desktop.end(self.process)
        if number % 11 == 5:
            self.assertIsNone(self.calls.copy(2).wait())
        if number % 13 == 7:
            self.assertIsNone(self.calls.paste(2).wait())
        if number % 50 == 25:
            self.tessly.open_panel()
            self.tessly.close_panel()

    def sizes(self):
        return (procfs.memory(self.tessly.pid).anonymous, len(procfs.descriptors(self.tessly.pid)))


if __name__ == "__main__":
    unittest.main()
