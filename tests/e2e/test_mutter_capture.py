"""mutter: Tessly on XWayland records what Wayland programs and those of X11 copy, and offers to both
what it puts on the clipboard."""

import json
import os
import signal
import unittest

from tessly_e2e import png, wait_until
from tessly_e2e.commands import Expecting
from tessly_e2e.editors import SeenEditor
from tessly_e2e.mutter import Mutter
from tessly_e2e.tessly import BUS_NAME
from tessly_e2e.wayland_case import Heartbeat, WaylandCase
from tessly_e2e.waiting import holds_for
from wayland_tests import HEARTBEAT, PROMPTLY, CompositorsEnd as _CompositorsEnd

HTML = b"<p>A <b>bold</b> word</p>"
SECRET = b"correct horse battery staple"


def copy_natively(desktop, content, *options):
    """Copies with wl-copy, which is a program of Wayland."""
    before = desktop.clipboard_changes()
    with open(desktop.clipboard.file(content), "rb") as file:
        process = desktop.start(["wl-copy", "--foreground", *options], stdin=file)
    wait_until(lambda: desktop.clipboard_changes() > before, "wl-copy has the clipboard")
    return process


class Copies(Expecting, WaylandCase):
    desktop_class = Mutter
    accessible = True

    def copy_natively(self, content, *options):
        return copy_natively(self.desktop, content, *options)

    def test_text_of_a_wayland_program_is_recorded(self):
        self.copy_natively("first line\nsecond line größer 日本".encode())
        clip = self.history.wait_for_text("first line\nsecond line größer 日本")
        self.assertEqual((clip.kind, clip.copy_count), ("text", 1))
        self.assertEqual((clip.source_app_name, clip.source_bundle_id), (None, None))

    def test_text_of_a_program_of_x11_is_recorded(self):
        self.clipboard.copy("by way of X11")
        clip = self.history.wait_for_text("by way of X11")
        self.assertEqual((clip.source_app_name, clip.source_bundle_id), (None, None))

    def test_text_of_an_editor_is_recorded(self):
        SeenEditor(self.desktop).start("from an editor\nits second line").copy_all()
        clip = self.history.wait_for_text("from an editor\nits second line")
        self.assertEqual((clip.kind, clip.source_app_name), ("text", None))

    def test_html_an_image_and_files_are_recorded(self):
        image = png.of_size(2 * 2**20)
        self.copy_natively(HTML, "--type", "text/html")
        self.assertEqual(self.history.wait_for_kind("richText").html, HTML)
        self.copy_natively(image, "--type", "image/png")
        self.assertEqual(self.history.wait_for_kind("image").image_png, image)
        urls = ["file:///tmp/a.txt", "file:///tmp/b%20c.png"]
        self.copy_natively("\r\n".join(urls).encode(), "--type", "text/uri-list")
        self.assertEqual(json.loads(self.history.wait_for_kind("files").file_urls), urls)

    def test_a_secret_is_neither_asked_for_nor_recorded(self):
        offer = self.clipboard.offer({"UTF8_STRING": SECRET, "x-kde-passwordManagerHint": b"secret"})
        # The compositor reads everything once, to keep it.
        offer.wait_for_request("UTF8_STRING")
        self.assertTrue(holds_for(1, lambda: offer.content_requests() == ["UTF8_STRING"]))
        self.copy_natively(SECRET, "--type", "x-kde-passwordManagerHint")
        self.expect_still_recording()
        self.assertEqual(offer.content_requests(), ["UTF8_STRING"])
        self.assertEqual(self.recorded_texts(), [])

    def test_what_it_puts_on_the_clipboard_reaches_a_wayland_program_and_is_not_recorded(self):
        self.record("older")
        self.record("newer")
        editor = SeenEditor(self.desktop).start()
        self.expect_silence("copy", "2")
        self.wait_for_own_content()
        self.keyboard.press("Control+v")
        editor.wait_for_text("older")
        self.expect_still_recording()
        self.assertEqual(sorted(self.recorded_texts()), ["newer", "older"])
        self.assertEqual(self.history.find("older").copy_count, 1)

    def test_a_copy_outlives_its_program(self):
        process = self.copy_natively(b"outlives its program")
        self.history.wait_for_text("outlives its program")
        self.desktop.end(process)
        # The compositor keeps it, as soon as it has noticed; where it did not, Tessly would.
        wait_until(lambda: self.clipboard.read() == b"outlives its program", "it is kept")
        self.assertTrue(holds_for(1, lambda: self.clipboard.read() == b"outlives its program"))


class Hostile(WaylandCase):
    """Owners that hang, behind the compositor that stands between."""

    desktop_class = Mutter

    def expect_unharmed(self):
        with Heartbeat(self.desktop) as heart:
            heart.beat(0.6)
        self.assertLess(heart.longest, HEARTBEAT)
        self.tessly.command("show")
        wait_until(self.tessly.panel_window, "the panel opens at once", PROMPTLY)
        self.tessly.command("hide")
        wait_until(lambda: self.tessly.panel_window() is None, "the panel closes at once", PROMPTLY)
        self.clipboard.copy("after the trouble")
        self.history.wait_for_text("after the trouble", PROMPTLY)
        self.assertEqual(self.recorded_texts(), ["after the trouble"])

    def test_an_owner_of_wayland_that_is_stopped(self):
        self.tessly.command("pause")
        process = copy_natively(self.desktop, b"never served")
        process.send_signal(signal.SIGSTOP)
        self.tessly.command("resume")
        self.expect_unharmed()

    def test_an_owner_of_x11_that_never_delivers(self):
        offer = self.clipboard.offer({"UTF8_STRING": b"y" * 600_000}, "--behave", "*", "silent")
        offer.wait_for_request("UTF8_STRING")
        self.expect_unharmed()

    def test_an_owner_of_x11_that_falls_silent_amid_its_pieces(self):
        offer = self.clipboard.offer({"UTF8_STRING": b"y" * 600_000}, "--behave", "*", "incr-stall",
                                     "--after", "3")
        offer.wait_for_request("UTF8_STRING")
        self.expect_unharmed()


class SilentXWayland(Expecting, WaylandCase):
    """XWayland is there and serves nobody."""

    desktop_class = Mutter

    def setUp(self):
        super().setUp()
        self.tessly.stop()
        server = self.desktop.x_server()
        os.kill(server, signal.SIGSTOP)
        self.addCleanup(os.kill, server, signal.SIGCONT)
        self.tessly.start()
        self.server = server

    def test_tessly_is_there_without_the_clipboard_until_it_serves(self):
        status = self.status()
        self.assertFalse(status["capture"])
        self.assertIn("XWayland (does not answer yet)", status["protocols"])
        self.assertEqual(self.previews(), [])
        os.kill(self.server, signal.SIGCONT)
        wait_until(lambda: "starts again" in self.tessly.log(), "it is noticed")
        self.tessly.wait_for_trace("recording", 2)
        wait_until(lambda: self.desktop.bus_name_exists(BUS_NAME), "tessly is on the bus again")
        self.assertTrue(self.status()["capture"])
        self.record("as ever")

    def test_it_can_be_ended_meanwhile(self):
        self.expect_silence("quit")
        wait_until(lambda: not self.tessly.is_running(), "tessly ends")
        self.assertEqual(self.tessly.process.returncode, 0)


class CompositorsEnd(_CompositorsEnd, WaylandCase):
    desktop_class = Mutter
    text_type = "UTF8_STRING"


if __name__ == "__main__":
    unittest.main()
