"""Programs that own the clipboard in ways of their own."""

import unittest

from tessly_e2e import png, wait_until
from tessly_e2e.bmp import of_one_colour
from tessly_e2e.case import TesslyCase
from tessly_e2e.editors import Terminal
from tessly_e2e.tk import TkProgram
from tessly_e2e.waiting import holds_for

HTML = b"<table><tr><td>1</td><td>2</td></tr></table>"
RTF = rb"{\rtf1\ansi\trowd\cellx1000\intbl 1\cell\row}"


class Leaving(TesslyCase):
    """A copy that is made while the owner before it leaves is the newer one."""

    def test_from_a_new_window_in_the_step_that_destroys_the_old_one(self):
        program = self.enterContext(self.desktop.program())
        for number in range(6):
            program.copy(f"from the first window {number}")
            self.history.wait_for_text(f"from the first window {number}")
            program.offer_from_a_new_window({program.TEXT: b"from the next window %d" % number})
            self.history.wait_for_text(f"from the next window {number}", 3)
            self.assertTrue(program.owns_clipboard(), number)
            self.assertEqual(self.clipboard.read(), b"from the next window %d" % number)

    def test_by_a_program_that_starts_as_the_other_is_killed(self):
        for number in range(20):
            process = self.clipboard.copy(f"the old one {number}")
            self.history.wait_for_text(f"the old one {number}")
            with open(self.clipboard.file(b"the new one %d" % number), "rb") as file:
                process.kill()
                self.desktop.start(["xclip", "-quiet", "-selection", "clipboard", "-i"], stdin=file)
            self.history.wait_for_text(f"the new one {number}", 3)
            self.assertEqual(self.clipboard.read(), b"the new one %d" % number)

    def test_with_the_time_of_an_event_before_the_other_left(self):
        leaving = self.enterContext(self.desktop.program())
        program = self.enterContext(self.desktop.program())
        leaving.copy("left behind")
        self.history.wait_for_text("left behind")
        time = program.time()
        # The server counts milliseconds, and this must be an older one.
        wait_until(lambda: program.time() > time, "the server's clock has moved on")
        leaving.leave_clipboard()
        self.wait_for_own_content()
        program.offer({program.TEXT: b"copied late"}, time)
        self.assertTrue(program.owns_clipboard())
        self.history.wait_for_text("copied late")

    def test_what_it_left_can_still_be_pasted(self):
        leaving = self.enterContext(self.desktop.program())
        leaving.copy("left behind")
        self.history.wait_for_text("left behind")
        leaving.leave_clipboard()
        self.wait_for_own_content()
        self.assertEqual(self.clipboard.read(), b"left behind")


class Rendered(TesslyCase):
    """An image beside text and rich text is a picture of that text."""

    image = png.gradient(60, 40)

    def test_cells_with_their_picture_are_rich_text(self):
        offer = self.clipboard.offer({
            "image/png": self.image, "text/html": HTML, "text/rtf": RTF, "UTF8_STRING": b"1\t2\n",
            "image/bmp": of_one_colour(10, 10)})
        clip = self.history.wait_for_text("1\t2\n")
        self.assertEqual((clip.kind, clip.image_png, clip.html, clip.rtf),
                         ("richText", None, HTML, RTF))
        self.assertNotIn("image/png", offer.requests())
        self.assertNotIn("image/bmp", offer.requests())

    def test_an_image_with_a_caption_stays_an_image(self):
        self.clipboard.offer({"image/png": self.image, "UTF8_STRING": b"a caption"})
        clip = self.history.wait_for_kind("image")
        self.assertEqual((clip.image_png, clip.plain_text), (self.image, "a caption"))

    def test_an_image_of_a_web_page_stays_an_image(self):
        self.clipboard.offer({"image/png": self.image, "text/html": b'<img src="a.png">'})
        clip = self.history.wait_for_kind("image")
        self.assertEqual(clip.image_png, self.image)


class RawImages(TesslyCase):
    """What counts is what is kept of an image, not what it is read as."""

    settings = {"maxItemSizeMB": 1}

    def test_one_that_is_large_only_as_it_is_sent_is_recorded_with_its_caption(self):
        image = of_one_colour(700, 750)
        self.assertGreater(len(image), 3 * 2**20 // 2)
        self.clipboard.offer({"image/bmp": image, "UTF8_STRING": b"a caption"})
        clip = self.history.wait_for_kind("image")
        self.assertEqual(clip.plain_text, "a caption")
        self.assertTrue(clip.image_png.startswith(png.SIGNATURE))

    def test_one_that_is_too_large_to_be_read_is_left_out(self):
        # More than 64 MB.
        self.clipboard.offer({"image/bmp": of_one_colour(5000, 5000), "UTF8_STRING": b"a caption"})
        clip = self.history.wait_for_text("a caption")
        self.assertEqual((clip.kind, clip.image_png), ("text", None))


class Tk(TesslyCase):
    """A toolkit that changes what it offers without taking the clipboard again."""

    def setUp(self):
        super().setUp()
        self.terminal = Terminal(self.desktop).start()
        self.tk = TkProgram(self.desktop).start()

    def test_a_second_copy_is_recorded_when_its_window_loses_the_focus(self):
        self.tk.copy("one")
        self.history.wait_for_text("one")
        self.tk.copy("two")
        self.terminal.bring_to_front()
        self.history.wait_for_text("two", 5)

    def test_a_second_copy_is_recorded_when_the_panel_opens(self):
        self.tk.copy("one")
        self.history.wait_for_text("one")
        self.tk.copy("two")
        self.tessly.open_panel()
        self.history.wait_for_text("two", 5)

    def test_a_second_copy_is_recorded_before_a_paste(self):
        self.tk.copy("one")
        self.history.wait_for_text("one")
        self.tk.copy("two")
        self.tessly.command("paste", "1")
        self.history.wait_for_text("two", 5)

    def test_what_it_had_first_does_not_come_back_when_it_ends(self):
        self.tk.copy("one")
        self.history.wait_for_text("one")
        self.tk.copy("two")
        self.tk.end()
        self.assertTrue(holds_for(1, lambda: self.clipboard.read() != b"one"))

    def test_what_was_read_last_outlives_it(self):
        self.tk.copy("one")
        self.history.wait_for_text("one")
        self.tk.copy("two")
        self.terminal.bring_to_front()
        self.history.wait_for_text("two", 5)
        self.tk.end()
        wait_until(lambda: self.clipboard.read() == b"two", "what it had last can be pasted")


if __name__ == "__main__":
    unittest.main()
