"""Contents for which there is not enough memory, and how much memory contents take."""

import hashlib
import os
import resource
import sqlite3
import struct
import unittest
from contextlib import closing

from tessly_e2e import bmp, png, procfs, wait_until
from tessly_e2e.case import TesslyCase
from tessly_e2e.sway import Sway
from tessly_e2e.wayland_case import WaylandCase

MB = 1 << 20
# The latter is tried again, a few times.
SAID = ("A copy was not recorded", "A copy could not be saved")


class ShortOfMemory:
    """The program may have only so much more than it has after its start."""

    settings = {"maxItemSizeMB": 250}
    # More than enough for the pieces in which contents arrive.
    LITTLE = 64 * MB

    def allow(self, room):
        self.record(f"recorded before, with {room}")
        with open(f"/proc/{self.tessly.pid}/statm") as file:
            size = int(file.read().split()[0]) * resource.getpagesize()
        resource.prlimit(self.tessly.pid, resource.RLIMIT_AS, (size + room, size + room))

    def losses(self):
        return sum(any(words in line for words in SAID) for line in self.tessly.log().splitlines())

    def expect_end_of_copy(self, content, type, is_lost):
        losses = self.losses()
        items = len(self.history.clips())
        owner = self.clipboard.offer({type: content})
        wait_until(lambda: self.losses() > losses or len(self.history.clips()) > items
                   or not self.tessly.is_running(), "it is recorded or said to be lost", 60)
        self.assertTrue(self.tessly.is_running(), self.tessly.log())
        if is_lost:
            self.assertGreater(self.losses(), losses)
        self.record(f"recorded after {type} of {len(content)}, {losses}")
        owner.end()

    def test_an_image_that_does_not_fit_is_dropped(self):
        self.allow(self.LITTLE)
        self.expect_end_of_copy(png.SIGNATURE + os.urandom(200 * MB), "image/png", True)

    def test_a_text_that_does_not_fit_is_dropped(self):
        self.allow(self.LITTLE)
        self.expect_end_of_copy(b"word " * (40 * MB), self.TEXT, True)

    def test_wherever_the_memory_ends_on_the_way_of_a_copy(self):
        for room in (48, 64, 96, 128, 192):
            text = b"%d words " % room + b"word " * (6 * MB)
            picture = bmp.of_one_colour(3000, 3000, (room, 0, 0))
            self.tessly.stop()
            self.tessly.start()
            self.allow(room * MB)
            for type, content in ((self.TEXT, text), ("image/bmp", picture)):
                with self.subTest(room=room, type=type):
                    self.expect_end_of_copy(content, type, False)


class OnX11(ShortOfMemory, TesslyCase):
    TEXT = "UTF8_STRING"


class OnSway(ShortOfMemory, WaylandCase):
    desktop_class = Sway
    TEXT = "text/plain;charset=utf-8"


class ManyLargeImages(TesslyCase):
    """A list of the largest images there usually are, none of which is held for it."""

    IMAGES = 50
    SIZE = 25 * MB
    # In kilobytes. One image may be in memory at a time, for its paste.
    PEAK = 120 * 1024
    SOME = 4 * 1024

    def image(self, number):
        return png.SIGNATURE + number.to_bytes(4, "big") * (self.SIZE // 4)

    def content_hash(self, image):
        found = hashlib.sha256()
        for label, data in ((b"text", b""), (b"rtf", b""), (b"html", b""), (b"png", image),
                            (b"files", b"[]")):
            found.update(label + struct.pack(">Q", len(data)) + data)
        return found.hexdigest()

    def fill_history(self, size):
        """As the program would have, but for the time that it takes."""
        self.tessly.stop()
        with closing(sqlite3.connect(self.history.path)) as connection:
            connection.execute("PRAGMA synchronous = OFF")
            for number in range(self.IMAGES):
                image = self.image(number)[:size]
                with connection:
                    connection.execute(
                        "INSERT INTO clips (id, created_at, last_used_at, kind, preview, "
                        "search_text, image_png, file_urls, content_hash) "
                        "VALUES (?, ?, ?, 'image', 'Image', 'image screenshot photo', ?, "
                        "CAST('[]' AS BLOB), ?)",
                        (f"{number:08X}-0000-4000-8000-000000000000", 1e9 + number, 1e9 + number,
                         image, self.content_hash(image)))
        self.tessly.start()
        # The store does one thing after the other: it has read the list by its answer.
        self.tessly.command("status")

    def look_through_and_copy(self, size):
        """Pastes one from the end, and lets go of it; the highest and the last amount of memory."""
        panel = self.tessly.open_panel()
        before = panel.wait_for_rest()
        for _ in range(self.IMAGES - 1):
            self.keyboard.press("Down")
        panel.wait_for_rest(unlike=before)
        self.keyboard.press("Return")
        self.tessly.wait_for_closed_panel()
        self.wait_for_own_content()
        content = self.clipboard.read("image/png", timeout=60) or b""
        number = int.from_bytes(content[len(png.SIGNATURE):][:4], "big")
        self.assertLess(number, self.IMAGES - 1, "not the first that was listed")
        self.assertTrue(content == self.image(number)[:size], f"the whole image {number}")
        peak = procfs.peak_memory(self.tessly.pid)
        # Whose entry is looked for without a look at all the others.
        text = f"copied after images of {size}"
        self.clipboard.copy(text)
        wait_until(lambda: self.history.contains(text), "the next copy is recorded")
        return peak, procfs.memory(self.tessly.pid)

    def test_are_listed_and_pasted_within_little_memory(self):
        # What program and toolkit take without them.
        self.fill_history(1000)
        small_peak, small = self.look_through_and_copy(1000)
        self.tessly.command("clear", "--everything")
        self.fill_history(self.SIZE)
        peak, after = self.look_through_and_copy(self.SIZE)
        print(f"resident at the peak {peak // 1024} MB ({small_peak // 1024} MB with small images),"
              f" after it {after.resident // 1024} MB ({small.resident // 1024} MB)")
        self.assertLess(peak, self.PEAK)
        self.assertLess(after.anonymous, small.anonymous + self.SOME)


if __name__ == "__main__":
    unittest.main()
