"""Owners of the clipboard that hang, lie, flood or vanish."""

import signal
import unittest

from tessly_e2e import png, procfs, wait_until
from tessly_e2e.case import TesslyCase
from tessly_e2e.waiting import holds_for

# What one more transfer may leave behind, in kilobytes: allocators keep a little.
LEFT_BEHIND = 4 * 1024
# The configured maximum for a content, one chunk, and what decoding and saving hold meanwhile.
LIMIT = 25 * 1024
# Shorter than any deadline for an owner's answer, so that a program that waits cannot pass.
PROMPTLY = 3.0


class Hostile(TesslyCase):
    text = {"UTF8_STRING": b"y" * 600_000}

    def setUp(self):
        super().setUp()
        # What is loaded once is loaded before anything is measured.
        self.expect_still_recording()
        self.open_and_close_panel()
        self.before = self.memory()

    def memory(self):
        return procfs.memory(self.tessly.pid).anonymous

    def open_and_close_panel(self):
        self.tessly.open_panel()
        self.tessly.close_panel()

    def expect_unharmed(self):
        """The panel opens at once, the next copy is recorded at once, and memory comes back."""
        self.tessly.command("show")
        wait_until(self.tessly.panel_window, "the panel opens at once", PROMPTLY)
        self.tessly.wait_for_panel()
        self.tessly.close_panel(PROMPTLY)
        self.clipboard.copy("after the trouble")
        self.history.wait_for_text("after the trouble", PROMPTLY)
        wait_until(lambda: self.memory() <= self.before + LEFT_BEHIND,
                   lambda: f"memory is back: {self.before} kB before, {self.memory()} kB now")

    def expect_nothing_recorded(self):
        self.assertEqual(self.recorded_texts(), ["after the trouble"])

    def test_an_owner_that_does_not_name_its_targets(self):
        offer = self.clipboard.offer(self.text, "--behave", "TARGETS", "silent")
        offer.wait_for_request("TARGETS")
        self.expect_unharmed()
        self.expect_nothing_recorded()

    def test_an_owner_that_is_stopped(self):
        process = self.clipboard.copy("never served")
        process.send_signal(signal.SIGSTOP)
        # It may have answered before it was stopped; the next change of owner finds it hung.
        self.expect_unharmed()

    def test_an_owner_that_ends_between_its_targets_and_its_content(self):
        offer = self.clipboard.offer(self.text, "--behave", "*", "vanish")
        wait_until(offer.has_ended, "the owner was asked for content")
        self.expect_unharmed()
        self.expect_nothing_recorded()

    def test_an_owner_that_never_delivers(self):
        offer = self.clipboard.offer(self.text, "--behave", "*", "silent")
        offer.wait_for_request("UTF8_STRING")
        self.expect_unharmed()
        self.expect_nothing_recorded()

    def test_an_owner_that_falls_silent_amid_its_pieces(self):
        offer = self.clipboard.offer(self.text, "--behave", "*", "incr-stall", "--after", "3")
        offer.wait_for_request("UTF8_STRING")
        self.expect_unharmed()
        self.expect_nothing_recorded()

    def test_an_owner_that_ends_amid_its_pieces(self):
        offer = self.clipboard.offer(self.text, "--behave", "*", "incr-vanish", "--after", "3")
        wait_until(offer.has_ended, "the owner ended amid its pieces")
        self.expect_unharmed()
        self.expect_nothing_recorded()

    def test_an_owner_whose_pieces_never_end(self):
        offer = self.clipboard.offer(self.text, "--behave", "*", "incr-endless", "--chunk", "1000000")
        offer.wait_for_request("UTF8_STRING")
        self.assertTrue(holds_for(
            3, lambda: self.memory() <= self.before + 2 * LIMIT))
        self.expect_unharmed()
        self.expect_nothing_recorded()

    def test_an_owner_that_announces_four_gigabytes(self):
        self.clipboard.offer({"UTF8_STRING": b"not as much"}, "--behave", "*", "incr-lie")
        # The announcement is only a hint; what is sent in the end is in order.
        self.history.wait_for_text("not as much")
        self.expect_unharmed()

    def test_an_owner_that_says_yes_and_gives_nothing(self):
        offer = self.clipboard.offer(self.text, "--behave", "*", "no-property")
        offer.wait_for_request("UTF8_STRING")
        self.expect_unharmed()
        self.expect_nothing_recorded()

    def test_an_owner_that_gives_windows_for_text(self):
        offer = self.clipboard.offer(self.text, "--type", "UTF8_STRING", "WINDOW",
                                     "--format", "UTF8_STRING", "32")
        offer.wait_for_request("UTF8_STRING")
        self.expect_unharmed()
        self.expect_nothing_recorded()

    def test_an_owner_that_gives_its_targets_as_text(self):
        offer = self.clipboard.offer(self.text, "--type", "TARGETS", "UTF8_STRING",
                                     "--format", "TARGETS", "8")
        offer.wait_for_request("TARGETS")
        self.expect_unharmed()
        self.expect_nothing_recorded()

    def test_an_owner_that_claims_everything_and_has_only_text(self):
        self.clipboard.offer({"UTF8_STRING": b"only text"}, "--claims-everything")
        clip = self.history.wait_for_text("only text")
        self.assertEqual((clip.kind, clip.rtf, clip.html, clip.image_png, clip.file_urls),
                         ("text", None, None, None, b"[]"))
        self.expect_unharmed()

    def test_an_owner_of_a_thousand_targets(self):
        offer = self.clipboard.offer({"UTF8_STRING": b"among a thousand"},
                                     "--extra-targets", "1000")
        offer.wait_for_request("TARGETS")
        self.history.wait_for_text("among a thousand")
        self.expect_unharmed()

    def test_an_owner_of_something_that_is_no_png(self):
        offer = self.clipboard.offer({"image/png": b"GIF89a, or nothing at all"})
        offer.wait_for_request("image/png")
        self.expect_unharmed()
        self.expect_nothing_recorded()

    def test_an_owner_that_is_slow_is_waited_for(self):
        self.clipboard.offer({"UTF8_STRING": b"slow " * 40_000}, "--delay", "300")
        self.history.wait_for_text("slow " * 40_000)
        self.expect_unharmed()

    def test_a_picture_of_eight_megabytes_in_pieces_is_recorded_whole(self):
        image = png.of_size(8 * 2**20)
        self.clipboard.offer({"image/png": image})
        self.assertEqual(self.history.wait_for_kind("image").image_png, image)
        self.clipboard.copy("after the trouble")
        self.history.wait_for_text("after the trouble")

    def test_a_reader_that_never_takes_the_pieces_stops_nobody(self):
        image = png.of_size(2 * 2**20)
        offer = self.clipboard.offer({"image/png": image})
        self.history.wait_for_kind("image")
        offer.end()
        self.wait_for_own_content()
        reader = self.desktop.start(
            ["xclip", "-selection", "clipboard", "-o", "-t", "image/png"])
        reader.send_signal(signal.SIGSTOP)
        self.assertEqual(self.clipboard.read("image/png"), image)
        self.open_and_close_panel()
        self.expect_still_recording()


if __name__ == "__main__":
    unittest.main()
