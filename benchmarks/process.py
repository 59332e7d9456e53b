#!/usr/bin/python3
"""Measures the whole program on a desktop of its own, and prints each figure beside its aim.

Start, opening, memory, what it costs at rest, how fast a copy is recorded, and for how long an
owner of the clipboard that misbehaves can hold the main thread.
"""

import argparse
import hashlib
import os
import sqlite3
import statistics
import sys
import time
import uuid
from contextlib import closing

import dbus

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
sys.path.insert(0, os.path.join(ROOT, "tests", "e2e"))
sys.dont_write_bytecode = True
os.environ.setdefault("TESSLY_PROGRAM", os.path.join(ROOT, "build", "release", "bin", "tessly"))

from tessly_e2e import Desktop, Tessly, procfs  # noqa: E402 - the path comes first
from tessly_e2e.hand import pace  # noqa: E402
from tessly_e2e.tessly import program  # noqa: E402


class Report:
    """A table with the aim beside each figure; figures and aims share their unit."""

    def __init__(self):
        self.missed = 0
        print(f"{'what':52} {'measured':>12} {'aim':>12}")

    def add(self, what, value, unit, aim=None, digits=1):
        met = aim is None or value <= aim
        self.missed += not met
        print(f"{what:52} {f'{value:.{digits}f} {unit}':>12} "
              f"{'' if aim is None else f'≤ {aim} {unit}':>12}{'' if met else '  missed'}", flush=True)


def measure_starts(desktop, report, rounds):
    """Starts with the files in the system's memory, as all are but the first of a day."""
    times = []
    for _ in range(rounds):
        with Tessly(desktop) as tessly:
            times.append(tessly.wait_for_trace("recording").time - tessly.started)
    report.add(f"start of the process → recording, median of {rounds}",
               statistics.median(times) * 1000, "ms", 120)


def fill(desktop, tessly, count):
    for number in range(count):
        desktop.clipboard.copy(f"entry {number} of the history")
        tessly.history.wait_for_text(f"entry {number} of the history")


def prepare(desktop):
    """A history of a dozen texts; returns where the panel shows the first of them."""
    with Tessly(desktop) as tessly:
        fill(desktop, tessly, 12)
        return FirstRow(desktop, tessly)


class FirstRow:
    """The place of the list's first row on the screen, which a panel at rest has taught.

    The pointer stays where it is, so every panel comes up there. What is on the screen tells when
    a frame is there, to about a millisecond.
    """

    def __init__(self, desktop, tessly):
        self._screen = desktop.screen
        window = tessly.open_panel().window
        self._place = (window.x + 60, window.y + 105, 300, 45)
        close_panel(desktop, tessly)

    def picture(self):
        return self._screen.picture(*self._place)

    def is_drawn(self):
        """Whether text is there: neither what lies under the panel nor a panel still empty."""
        rgb = self.picture().rgb
        return len({rgb[start:start + 3] for start in range(0, len(rgb), 3)}) > 8


def watch(condition, what):
    """The time at which the condition comes true, looking as often as can be."""
    end = time.monotonic() + 20
    while not condition():
        if time.monotonic() > end:
            raise RuntimeError("not within 20 s: " + what)
    return time.monotonic()


def close_panel(desktop, tessly):
    tessly.close_panel()


def open_and_close(desktop, tessly, row):
    """Opens and closes the panel; seconds from `show` to its first frame with the list."""
    before = len(tessly.traces("show-requested"))
    desktop.start([program(), "show"])
    drawn = watch(row.is_drawn, "the panel shows its list")
    asked = tessly.wait_for_trace("show-requested", before + 1)
    tessly.wait_for_panel()
    close_panel(desktop, tessly)
    return drawn - asked.time


MEGABYTE = 1_000_000


def content_hash(plain_text, image):
    """What the program knows a content by: its flavours, each with its name and length."""
    digest = hashlib.sha256()
    for label, data in ((b"text", plain_text), (b"rtf", b""), (b"html", b""), (b"png", image),
                        (b"files", b"[]")):
        digest.update(label + len(data).to_bytes(8, "big") + data)
    return digest.hexdigest()


def enlarge(path, size):
    """Adds so many bytes of images to a history, in fewer entries than it holds at the most."""
    count = 400
    with closing(sqlite3.connect(path)) as history, history:
        # Else the file would be as large again while it is filled.
        history.execute("PRAGMA wal_autocheckpoint = 1000")
        now = time.time()
        for number in range(count):
            image = b"\x89PNG\r\n\x1a\n" + os.urandom(max(0, size // count - 8))
            used = now - count + number
            history.execute(
                "INSERT INTO clips (id, created_at, last_used_at, kind, preview, search_text, "
                "image_png, file_urls, content_hash) VALUES (?, ?, ?, 'image', 'Image', 'image', "
                "?, '[]', ?)",
                (str(uuid.uuid4()).upper(), used, used, image, content_hash(b"", image)))
            history.commit()


def measure_large_histories(report, rounds, sizes):
    """From the start to recording, and until the file has been looked through."""
    for size in sizes:
        with Desktop() as desktop:
            with Tessly(desktop) as tessly:
                pass
            enlarge(tessly.history.path, size)
            recording, checked = [], []
            for _ in range(rounds):
                with Tessly(desktop) as tessly:
                    recording.append(tessly.wait_for_trace("recording").time - tessly.started)
                    checked.append(tessly.wait_for_trace("checked").time - tessly.started)
            name = f"history of {size // MEGABYTE:,} MB"
            report.add(f"{name}: start → recording, median of {rounds}",
                       statistics.median(recording) * 1000, "ms", 300)
            report.add(f"{name}: start → checked, median of {rounds}",
                       statistics.median(checked) * 1000, "ms")


def measure_openings(desktop, report, rounds, row):
    first, later = [], []
    for _ in range(rounds):
        with Tessly(desktop) as tessly:
            first.append(open_and_close(desktop, tessly, row))
            later += [open_and_close(desktop, tessly, row) for _ in range(4)]
    report.add(f"show → first frame, first time, median of {len(first)}",
               statistics.median(first) * 1000, "ms", 80)
    report.add(f"show → first frame, later, median of {len(later)}",
               statistics.median(later) * 1000, "ms", 16)
    report.add(f"show → first frame, later, longest of {len(later)}", max(later) * 1000, "ms")


def measure_memory(report, tessly, when, aim=None):
    memory = procfs.memory(tessly.pid)
    report.add(f"proportional memory {when}", memory.proportional / 1024, "MB", aim)
    report.add(f"resident memory {when}", memory.resident / 1024, "MB")


def measure_rest(report, tessly, when, seconds):
    activity = procfs.activity(tessly.pid, seconds)
    report.add(f"CPU {when}, over {seconds} s", activity.cpu_share * 100, "%", 0, digits=3)
    report.add(f"wake-ups a second {when}", activity.wakeups_per_second, "", 0, digits=2)


def measure_resting(desktop, report, seconds, settling, row):
    with Tessly(desktop) as tessly:
        time.sleep(2)  # what starting leaves to do is not rest
        measure_memory(report, tessly, "before the first opening", 22)
        measure_rest(report, tessly, "before the first opening", seconds)
        open_and_close(desktop, tessly, row)
        measure_memory(report, tessly, "after one opening")
        time.sleep(settling)
        measure_memory(report, tessly, f"{settling} s after closing", 36)
        measure_rest(report, tessly, "after closing", seconds)


def measure_captures(desktop, report, rounds, row):
    """From the moment at which a copy's owner is asked, and from the copy itself, to its row in the
    open panel."""
    times = []
    copied = []
    with Tessly(desktop) as tessly, desktop.program() as source:
        panel = tessly.open_panel()
        def picture_before():
            # The list keeps the selected entry in sight: the newest one, so that the top is shown.
            for _ in range(20):
                desktop.keyboard.press("Up")
            panel.wait_for_rest()
            return row.picture()

        for number in range(rounds):
            before = picture_before()
            offer = desktop.clipboard.offer({"UTF8_STRING": f"measured copy {number}".encode()})
            asked = watch(offer.requests, "the owner is asked")
            times.append(watch(lambda: row.picture() != before, "the row appears") - asked)
        for number in range(rounds):
            before = picture_before()
            start = time.monotonic()
            source.copy(f"measured from the copy {number}")
            copied.append(watch(lambda: row.picture() != before, "the row appears") - start)
    report.add(f"short text, asked → row, median of {rounds}", statistics.median(times) * 1000,
               "ms", 8)
    report.add(f"short text, asked → row, longest of {rounds}", max(times) * 1000, "ms")
    report.add(f"short text, copy → row, median of {rounds}", statistics.median(copied) * 1000,
               "ms", 40)
    report.add(f"short text, copy → row, longest of {rounds}", max(copied) * 1000, "ms")


def measure_rates(desktop, report, scale):
    """How many of distinct copies at a steady pace are not in the history afterwards."""
    with Tessly(desktop) as tessly, desktop.program() as source:
        for rate, count in ((5, 200 // scale), (20, 50)):
            texts = [f"{rate} a second, copy {number}" for number in range(count)]
            for number in pace(1 / rate, count):
                source.copy(texts[number])
            tessly.history.wait_for_text(texts[-1])
            missing = sum(not tessly.history.contains(text) for text in texts)
            report.add(f"not recorded of {count} copies at {rate} a second", missing, "", 0, 0)


class BusCaller:
    """Calls on the program's main thread, over one connection."""

    def __init__(self, tessly):
        self._bus = dbus.bus.BusConnection(tessly.desktop.environment["DBUS_SESSION_BUS_ADDRESS"])
        program = self._bus.get_object("com.brackmoor.tessly", "/com/brackmoor/tessly",
                                       introspect=False)
        # Hiding a panel that is closed does nothing, on the main thread.
        self._hide = program.get_dbus_method("Hide", "com.brackmoor.tessly")

    def longest_wait(self, seconds):
        """The longest that a call waited for its answer, in seconds, over a stretch of time.

        No time in which the main thread attends to nothing can be longer.
        """
        longest = 0.0
        end = time.monotonic() + seconds
        while time.monotonic() < end:
            start = time.monotonic()
            self._hide()
            longest = max(longest, time.monotonic() - start)
            time.sleep(0.001)
        return longest

    def close(self):
        self._bus.close()


# Owners that misbehave, as options of tests/desktop/owner.py.
HOSTILE = {
    "names no targets": ("--behave", "TARGETS", "silent"),
    "never delivers": ("--behave", "*", "silent"),
    "stalls amid its pieces": ("--behave", "*", "incr-stall"),
    "sends pieces without end": ("--behave", "*", "incr-endless", "--chunk", "1000000"),
    "offers 20 MB at once": ("--incr", "0"),
}


def measure_hostile_owners(desktop, report, seconds):
    with Tessly(desktop) as tessly:
        caller = BusCaller(tessly)
        try:
            report.add("longest wait of a call, nothing happening",
                       caller.longest_wait(seconds) * 1000, "ms", 16)
            for behaviour, options in HOSTILE.items():
                size = 20_000_000 if "at once" in behaviour else 500_000
                offer = desktop.clipboard.offer({"UTF8_STRING": b"text " * (size // 5)}, *options)
                report.add(f"… while an owner {behaviour}", caller.longest_wait(seconds) * 1000,
                           "ms", 16)
                offer.end()
        finally:
            caller.close()


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--quick", action="store_true", help="fewer rounds and shorter rests")
    parser.add_argument("--large", action="store_true", help="also a history of 5 GB")
    options = parser.parse_args()
    quick = options.quick
    rounds, rest, settling, stretch, scale = (3, 5, 5, 2, 4) if quick else (11, 20, 30, 7, 1)

    report = Report()
    with Desktop() as desktop:
        row = prepare(desktop)
        measure_starts(desktop, report, rounds)
        measure_openings(desktop, report, rounds, row)
        measure_captures(desktop, report, 2 * rounds, row)
        measure_rates(desktop, report, scale)
        measure_hostile_owners(desktop, report, stretch)
    # What those owners had to offer is in that history, and so in memory.
    with Desktop() as desktop:
        measure_resting(desktop, report, rest, settling, prepare(desktop))
    sizes = [MEGABYTE, 1000 * MEGABYTE] + [5000 * MEGABYTE] * options.large
    measure_large_histories(report, rounds, sizes)
    if report.missed:
        print(f"\n{report.missed} aims missed.")


if __name__ == "__main__":
    main()
