"""What is copied, by whom, and what becomes of it in the history."""

import json
import unittest

from tessly_e2e import png, wait_until
from tessly_e2e.case import TesslyCase
from tessly_e2e.editors import GtkEditor, QtEditor, Terminal
from tessly_e2e.waiting import holds_for

HTML = b"<p>A <b>bold</b> word</p>"


class Copies(TesslyCase):
    def expect_source(self, clip, program):
        self.assertEqual((clip.source_app_name, clip.source_bundle_id),
                         (program.source_name, program.source_id))

    def test_text_of_xclip_is_recorded_without_a_source_where_no_window_is_in_front(self):
        self.clipboard.copy("first line\nsecond line")
        clip = self.history.wait_for_text("first line\nsecond line")
        self.assertEqual((clip.kind, clip.preview), ("text", "first line second line"))
        self.assertEqual((clip.source_app_name, clip.source_bundle_id), (None, None))
        self.assertEqual((clip.is_pinned, clip.copy_count), (0, 1))

    def test_text_of_xsel_is_recorded(self):
        self.clipboard.copy_with_xsel("größer als 日本")
        clip = self.history.wait_for_text("größer als 日本")
        self.assertEqual((clip.kind, clip.preview), ("text", "größer als 日本"))

    def test_a_word_selected_in_a_terminal_is_recorded_with_its_source(self):
        terminal = Terminal(self.desktop).start(shown="terminalword and more")
        terminal.copy_word()
        clip = self.history.wait_for_text("terminalword")
        self.assertEqual(clip.kind, "text")
        self.expect_source(clip, terminal)

    def test_text_of_a_gtk_editor_is_recorded_with_its_source(self):
        editor = GtkEditor(self.desktop).start("from a GTK editor\nits second line")
        editor.copy_all()
        clip = self.history.wait_for_text("from a GTK editor\nits second line")
        self.assertEqual(clip.kind, "text")
        self.expect_source(clip, editor)

    def test_text_of_a_qt_editor_is_recorded_with_its_source(self):
        editor = QtEditor(self.desktop).start("from a Qt editor")
        editor.copy_all()
        clip = self.history.wait_for_text("from a Qt editor")
        self.assertEqual((clip.kind, clip.preview), ("text", "from a Qt editor"))
        self.expect_source(clip, editor)

    def test_a_link_is_recorded_as_a_link(self):
        self.clipboard.copy(" https://example.org/path?q=1 \n")
        clip = self.history.wait_for_kind("link")
        self.assertEqual(clip.preview, "https://example.org/path?q=1")
        self.assertEqual(clip.plain_text, " https://example.org/path?q=1 \n")

    def test_html_beside_text_is_recorded_as_rich_text_with_both(self):
        self.clipboard.offer({"UTF8_STRING": b"A bold word", "text/html": HTML})
        clip = self.history.wait_for_kind("richText")
        self.assertEqual((clip.plain_text, clip.html, clip.preview),
                         ("A bold word", HTML, "A bold word"))

    def test_an_image_is_recorded_byte_for_byte(self):
        image = png.gradient(300, 200)
        self.clipboard.copy(image, "image/png")
        clip = self.history.wait_for_kind("image")
        self.assertEqual(clip.image_png, image)
        self.assertEqual((clip.preview, clip.plain_text), ("Image", None))

    def test_two_files_are_recorded_as_files(self):
        urls = ["file:///tmp/a.txt", "file:///tmp/b%20c.png"]
        self.clipboard.offer({
            "text/uri-list": ("\r\n".join(["# two files", *urls]) + "\r\n").encode(),
            "x-special/gnome-copied-files": ("copy\n" + "\n".join(urls)).encode(),
            "UTF8_STRING": b"/tmp/a.txt\n/tmp/b c.png",
        })
        clip = self.history.wait_for_kind("files")
        self.assertEqual(json.loads(clip.file_urls), urls)
        self.assertEqual(clip.preview, "a.txt, b c.png")

    def test_files_whose_urls_are_written_as_qt_and_others_do_are_recorded_by_their_names(self):
        # Brackets as Qt leaves them, blanks and letters as careless programs do.
        self.clipboard.offer({"text/uri-list": (
            "file:///tmp/Song%20[live].mp3\r\nfile:///tmp/größe 100%.txt\r\n").encode()})
        clip = self.history.wait_for_kind("files")
        self.assertEqual(json.loads(clip.file_urls), [
            "file:///tmp/Song%20%5Blive%5D.mp3", "file:///tmp/gr%C3%B6%C3%9Fe%20100%25.txt"])
        self.assertEqual(clip.preview, "Song [live].mp3, größe 100%.txt")

    def test_what_stood_on_the_clipboard_at_the_start_is_not_recorded(self):
        self.tessly.stop()
        self.clipboard.copy("there before")
        self.tessly.start()
        self.expect_still_recording()
        self.assertIsNone(self.history.find("there before"))

    def test_the_same_text_copied_again_is_counted_and_not_added(self):
        self.record("repeated")
        self.record("another")
        self.clipboard.copy("repeated")
        wait_until(lambda: self.history.find("repeated").copy_count == 2, "the copy is counted")
        self.assertEqual(self.recorded_texts(), ["repeated", "another"])


class IgnoredApplication(TesslyCase):
    settings = {"ignoredBundleIDs": "ORG.xfce.Mousepad"}

    def test_its_copies_are_neither_read_nor_recorded(self):
        editor = GtkEditor(self.desktop).start("from an ignored editor")
        offer = self.clipboard.offer({"UTF8_STRING": b"copied in front of it"})
        offer.wait_for_request("TARGETS")
        editor.copy_all()
        self.assertTrue(holds_for(1, lambda: self.recorded_texts() == []))
        self.assertEqual(offer.content_requests(), [])
        editor.close()
        Terminal(self.desktop).start()
        # It counts as in front for a third of a second more.
        self.assertTrue(holds_for(1, lambda: self.recorded_texts() == []))
        self.expect_still_recording()


class SmallLimit(TesslyCase):
    settings = {"maxItemSizeMB": 1}

    def test_what_is_larger_than_the_limit_is_not_recorded_and_what_fills_it_is(self):
        for size, kept in ((2**20, True), (2**20 + 1, False), (9 * 2**20, False)):
            with self.subTest(size=size):
                text = f"{size} " + "x" * (size - len(str(size)) - 1)
                offer = self.clipboard.offer({"UTF8_STRING": text.encode()})
                offer.wait_for_request("UTF8_STRING")
                if kept:
                    self.history.wait_for_text(text)
                self.expect_still_recording()
                self.assertEqual(self.history.find(text) is not None, kept)

    def test_what_is_larger_than_the_limit_is_not_brought_back_when_its_owner_ends(self):
        offer = self.clipboard.offer({"UTF8_STRING": b"x" * (2**20 + 1)})
        offer.wait_for_request("UTF8_STRING")
        offer.end()
        self.assertTrue(holds_for(1, lambda: self.clipboard.owner() is None))
        self.expect_still_recording()


class NoImages(TesslyCase):
    settings = {"captureImages": False}

    def test_images_are_not_read_and_text_beside_them_is_recorded(self):
        offer = self.clipboard.offer({"image/png": png.gradient(40, 30), "UTF8_STRING": b"caption"})
        clip = self.history.wait_for_text("caption")
        self.assertEqual((clip.kind, clip.image_png), ("text", None))
        self.assertNotIn("image/png", offer.requests())
        offer = self.clipboard.offer({"image/png": png.gradient(40, 30)})
        offer.wait_for_request("TARGETS")
        self.expect_still_recording()
        self.assertEqual(offer.content_requests(), [])
        self.assertEqual(self.recorded_texts(), ["caption"])


class NoFiles(TesslyCase):
    settings = {"captureFiles": False}

    def test_of_copied_files_only_the_text_is_recorded(self):
        self.clipboard.offer({"text/uri-list": b"file:///tmp/a.txt\r\n", "UTF8_STRING": b"/tmp/a.txt"})
        clip = self.history.wait_for_text("/tmp/a.txt")
        self.assertEqual(json.loads(clip.file_urls), [])
        self.assertEqual(clip.kind, "text")


if __name__ == "__main__":
    unittest.main()
