"""Contents for which there is not enough memory."""

import os
import resource
import unittest

from tessly_e2e import bmp, png, wait_until
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


if __name__ == "__main__":
    unittest.main()
