"""Pauses that are nobody's fault: the program, or everything, is stopped for longer than any
deadline, as on a loaded machine."""

import signal
import unittest
from contextlib import contextmanager

from tessly_e2e.case import TesslyCase
from tessly_e2e.sway import Sway
from tessly_e2e.waiting import holds_for
from tessly_e2e.wayland_case import WaylandCase

# Longer than the deadlines for the list of types, and for the next sign of life, in seconds.
LONGER_THAN_FOR_TYPES = 2
LONGER_THAN_FOR_CONTENT = 7
SHORTER_THAN_ANY = 0.5


@contextmanager
def stopped(process):
    process.send_signal(signal.SIGSTOP)
    try:
        yield
    finally:
        process.send_signal(signal.SIGCONT)


class X11(TesslyCase):
    def offer_slowly(self, text):
        """An owner that takes so long for each answer that the program can be stopped before it."""
        return self.clipboard.offer({"UTF8_STRING": text.encode()}, "--delay", "400")

    def test_a_list_of_types_that_came_meanwhile_is_read(self):
        for number in range(4):
            with self.subTest(number):
                offer = self.offer_slowly(f"copy {number}")
                offer.wait_for_request("TARGETS")
                with stopped(self.tessly.process):
                    offer.wait_until_served("TARGETS")
                    self.assertTrue(holds_for(LONGER_THAN_FOR_TYPES, lambda: not offer.has_ended()))
                self.history.wait_for_text(f"copy {number}")

    def test_content_that_came_meanwhile_is_read(self):
        offer = self.offer_slowly("the content")
        offer.wait_for_request("UTF8_STRING")
        with stopped(self.tessly.process):
            offer.wait_until_served("UTF8_STRING")
            self.assertTrue(holds_for(LONGER_THAN_FOR_CONTENT, lambda: not offer.has_ended()))
        self.history.wait_for_text("the content")

    def test_an_owner_that_was_stopped_too_is_waited_for(self):
        offer = self.offer_slowly("the content")
        offer.wait_for_request("UTF8_STRING")
        with stopped(offer.process):
            with stopped(self.tessly.process):
                self.assertTrue(holds_for(LONGER_THAN_FOR_CONTENT, lambda: not offer.has_ended()))
            # The program comes to itself before the owner does.
            self.assertTrue(holds_for(SHORTER_THAN_ANY, lambda: not offer.has_ended()))
        self.history.wait_for_text("the content")

    def test_a_copy_made_meanwhile_is_recorded(self):
        with stopped(self.tessly.process):
            self.clipboard.copy("made meanwhile")
            self.assertTrue(holds_for(LONGER_THAN_FOR_TYPES, lambda: True))
        self.history.wait_for_text("made meanwhile")


class OnSway(WaylandCase):
    desktop_class = Sway

    def offer_slowly(self):
        return self.clipboard.offer({"text/plain;charset=utf-8": b"abc"}, "--behave", "drip")

    def test_content_that_came_meanwhile_is_read(self):
        offer = self.offer_slowly()
        offer.wait_for_request("text/plain;charset=utf-8")
        with stopped(self.tessly.process):
            self.assertTrue(holds_for(LONGER_THAN_FOR_CONTENT, lambda: not offer.has_ended()))
        self.history.wait_for_text("abc")

    def test_an_owner_that_was_stopped_too_is_waited_for(self):
        offer = self.offer_slowly()
        offer.wait_for_request("text/plain;charset=utf-8")
        with stopped(offer.process):
            with stopped(self.tessly.process):
                self.assertTrue(holds_for(LONGER_THAN_FOR_CONTENT, lambda: not offer.has_ended()))
            # The program comes to itself before the owner does.
            self.assertTrue(holds_for(SHORTER_THAN_ANY, lambda: not offer.has_ended()))
        self.history.wait_for_text("abc")

    def test_a_copy_made_meanwhile_is_recorded(self):
        with stopped(self.tessly.process):
            self.clipboard.copy("made meanwhile")
            self.assertTrue(holds_for(LONGER_THAN_FOR_TYPES, lambda: True))
        self.history.wait_for_text("made meanwhile")


if __name__ == "__main__":
    unittest.main()
