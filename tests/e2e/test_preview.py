"""The preview beside the panel."""

import errno
import os
import socket
import unittest

from tessly_e2e import Desktop, png, wait_until
from tessly_e2e.case import TesslyCase
from tessly_e2e.editors import GtkEditor, Terminal
from tessly_e2e.waiting import holds_for

GREEN = (20, 160, 60)


def is_green(red, green, blue):
    return (red, green, blue) == GREEN


class PreviewCase(TesslyCase):
    def window(self):
        return self.tessly.window("Tessly Preview")

    def wait_for_window(self):
        return wait_until(self.window, "the preview is open")

    def record_green(self, width, height):
        self.clipboard.copy(png.encode(width, height, bytes(GREEN) * (width * height)), "image/png")
        self.history.wait_for_kind("image")

    def green_share(self):
        w = self.wait_for_window()
        return self.desktop.screen.picture(w.x, w.y, w.width, w.height).share(is_green)


class Preview(PreviewCase):
    def test_it_comes_when_the_selection_rests_and_the_panel_keeps_the_keys(self):
        self.record("older words")
        self.record("newer words")
        panel = self.tessly.open_panel().window
        card = self.wait_for_window()
        self.assertTrue(self.tessly.has_keys(panel))
        self.assertEqual((card.y, card.height), (panel.y, panel.height))
        self.assertTrue(card.x >= panel.x + panel.width or card.x + card.width <= panel.x)
        self.keyboard.type("older")
        self.keyboard.press("Return")
        self.tessly.wait_for_closed_panel()
        wait_until(lambda: self.window() is None, "the preview goes with the panel")
        self.wait_for_own_content()
        self.assertEqual(self.clipboard.read(), b"older words")

    def test_escape_closes_it_first(self):
        self.record("some words")
        terminal = Terminal(self.desktop).start()
        self.tessly.open_panel()
        self.wait_for_window()
        self.keyboard.press("Escape")
        wait_until(lambda: self.window() is None, "the preview is closed")
        self.assertIsNotNone(self.tessly.panel_window())
        self.keyboard.press("Escape")
        self.tessly.wait_for_closed_panel()
        wait_until(terminal.is_in_front, "the terminal has the focus back")

    def test_ctrl_space_switches_it_off_for_the_next_openings_too(self):
        self.record("some words")
        self.tessly.open_panel()
        self.wait_for_window()
        self.keyboard.press("Control+space")
        wait_until(lambda: self.window() is None, "the preview is closed")
        self.tessly.close_panel()
        self.tessly.open_panel()
        self.assertTrue(holds_for(1, lambda: self.window() is None))
        self.keyboard.press("Right")
        self.wait_for_window()
        self.tessly.close_panel()
        self.tessly.open_panel()
        self.keyboard.press("Control+space")
        self.wait_for_window()

    def test_a_click_on_it_leaves_all_as_it_is_and_one_beside_it_closes_both(self):
        self.record("some words")
        self.desktop.pointer.move(400, 10)
        panel = self.tessly.open_panel().window
        card = self.wait_for_window()
        for button in (1, 3):
            self.desktop.pointer.click(card.x + card.width // 2, card.y + 200, button)
            self.assertTrue(holds_for(0.5, self.window))
            self.assertTrue(self.tessly.has_keys(panel))
        width, height = self.desktop.screen.size
        self.desktop.pointer.click(width - 5, height - 5)
        self.tessly.wait_for_closed_panel()
        wait_until(lambda: self.window() is None, "the preview is closed")

    def test_it_stands_whole_on_the_screen_wherever_the_pointer_is(self):
        self.record("some words")
        width, height = self.desktop.screen.size
        for place in ((0, 0), (width - 1, 0), (0, height - 1), (width - 1, height - 1),
                      (width // 2, height // 2)):
            with self.subTest(pointer=place):
                self.desktop.pointer.move(*place)
                panel = self.tessly.open_panel().window
                card = self.wait_for_window()
                self.assertGreaterEqual(min(card.x, card.y), 0)
                self.assertLessEqual(card.x + card.width, width)
                self.assertLessEqual(card.y + card.height, height)
                self.assertTrue(card.x >= panel.x + panel.width or card.x + card.width <= panel.x)
                self.tessly.close_panel()

    def test_an_image_is_seen_and_the_next_entry_after_it(self):
        self.record("a text")
        self.record_green(1600, 900)
        self.tessly.open_panel()
        self.wait_for_window()
        wait_until(lambda: self.green_share() > 0.2, "the image is seen")
        self.keyboard.press("Down")
        wait_until(lambda: self.green_share() == 0, "the text is seen")
        self.keyboard.press("Up")
        wait_until(lambda: self.green_share() > 0.2, "the image is seen again")

    def test_a_row_under_the_preview_s_edge_still_pastes_by_a_click(self):
        self.record("older row")
        self.record("newer row")
        editor = GtkEditor(self.desktop).start()
        panel = self.tessly.open_panel()
        self.wait_for_window()
        window = panel.window
        self.desktop.pointer.click(window.x + window.width - 40, window.y + panel.FIRST_ROW)
        self.tessly.wait_for_closed_panel()
        editor.wait_for_text("newer row")


class SmallScreen(PreviewCase):
    def make_desktop(self):
        return Desktop(size=(1024, 700))

    def test_it_comes_only_when_it_is_asked_for_and_leaves_the_search_and_the_rows_beginnings(self):
        self.record("some words")
        self.desktop.pointer.move(512, 10)
        panel = self.tessly.open_panel().window
        self.assertTrue(holds_for(1, lambda: self.window() is None))
        self.keyboard.press("Right")
        card = self.wait_for_window()
        self.assertGreaterEqual(card.x, panel.x + 200)
        self.assertGreaterEqual(card.y, panel.y + 100)
        self.assertLess(card.x + card.width, panel.x + panel.width)
        self.assertLess(card.y + card.height, panel.y + panel.height - 38)
        self.keyboard.press("Escape")
        wait_until(lambda: self.window() is None, "the preview is closed")
        self.assertIsNotNone(self.tessly.panel_window())


class Accessible(PreviewCase):
    accessible = True

    def test_its_content_is_told(self):
        path = self.desktop.path("files", "there.txt")
        with open(path, "w") as file:
            file.write("there")
        self.clipboard.offer({"text/uri-list": f"file://{path}\r\nfile:///gone.txt\r\n".encode()})
        self.history.wait_for_kind("files")
        self.record("first line\nsecond line")
        self.tessly.open_panel()
        ui = self.ui(self.tessly)
        ui.find("label", "first line\nsecond line")
        card = ui.find("panel", "Preview")
        self.assertEqual(card.description, "Text, 22 bytes")
        self.keyboard.press("Down")
        folder = os.path.dirname(path) + "/"
        ui.find("list item", f"there.txt, 5 bytes, {folder}")
        ui.find("list item", "gone.txt, No longer there, /")

    def test_of_html_its_text_is_shown_and_nothing_that_it_names_is_opened(self):
        pipe = self.desktop.path("files", "pipe")
        os.mkfifo(pipe)
        with socket.create_server(("127.0.0.1", 0)) as server:
            remote = f"http://127.0.0.1:{server.getsockname()[1]}/"
            self.clipboard.offer({"text/html": "".join((
                f"<link rel='stylesheet' href='file://{pipe}'>",
                f"<link rel='stylesheet' href='{remote}'>",
                f"<style>@import url('{remote}'); p {{ background: url('file://{pipe}') }}</style>",
                f"<p>words of a page<img src='file://{pipe}'><img src='{remote}'></p>",
                f"<iframe src='{remote}'></iframe><script src='{remote}'></script>")).encode()})
            self.history.wait_for_kind("richText")
            self.tessly.open_panel()
            self.ui(self.tessly).find("label", "words of a page")
            with self.assertRaises(OSError, msg="somebody reads the file") as raised:
                os.close(os.open(pipe, os.O_WRONLY | os.O_NONBLOCK))
            self.assertEqual(raised.exception.errno, errno.ENXIO)
            server.setblocking(False)
            with self.assertRaises(BlockingIOError, msg="somebody has connected"):
                server.accept()


if __name__ == "__main__":
    unittest.main()
