"""sway: what is copied, by whom, and what becomes of it in the history."""

import signal
import unittest

import wayland_tests
from tessly_e2e import wait_until
from tessly_e2e.editors import QtEditor, Terminal, WaylandTerminal
from tessly_e2e.sway import Sway
from tessly_e2e.waiting import holds_for
from tessly_e2e.wayland import PlainWindow
from tessly_e2e.wayland_case import WaylandCase


class Copies(wayland_tests.Copies, WaylandCase):
    desktop_class = Sway

    def test_a_word_selected_in_a_terminal_is_recorded_with_its_source(self):
        terminal = WaylandTerminal(self.desktop).start(shown="terminalword and more")
        terminal.copy_word()
        clip = self.history.wait_for_text("terminalword")
        self.assertEqual(clip.kind, "text")
        self.expect_source(clip, terminal)

    def test_text_of_xclip_is_recorded_while_a_program_of_x11_is_in_front(self):
        # The compositor takes over what X11 programs copy only then.
        terminal = Terminal(self.desktop).start()
        self.desktop.x_clipboard.copy("by way of X11")
        self.expect_source(self.history.wait_for_text("by way of X11"), terminal)


class IgnoredApplication(WaylandCase):
    desktop_class = Sway
    settings = {"ignoredBundleIDs": "FeatherPad"}

    def test_its_copies_are_neither_read_nor_recorded(self):
        editor = QtEditor(self.desktop).start("from an ignored editor")
        offer = self.clipboard.offer({"text/plain;charset=utf-8": b"copied in front of it"})
        self.assertTrue(holds_for(1, lambda: offer.content_requests() == []))
        editor.copy_all()
        self.assertTrue(holds_for(1, lambda: self.recorded_texts() == []))
        self.assertEqual(offer.content_requests(), [])
        editor.close()
        WaylandTerminal(self.desktop).start()
        # A copy made just after leaving the application still counts as its own.
        self.assertTrue(holds_for(1, lambda: self.recorded_texts() == []))
        self.expect_still_recording()


class WithoutTheWindows(WaylandCase):
    """The connection by which Tessly learns of windows breaks; that of the clipboard does not."""

    desktop_class = Sway
    settings = {"ignoredBundleIDs": "foot"}

    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        if cls._shared.version >= (1, 12):
            raise unittest.SkipTest("it keeps the connection of a program that reads nothing")

    def break_connection(self, connection, window):
        """Tells more of a window than the connection of a stopped program holds."""
        self.tessly.process.send_signal(signal.SIGSTOP)
        for number in range(1000):
            window.set_title(f"{number} " + "x" * 1900)
        connection.close()
        wait_until(lambda: not self.desktop.windows.visible(app_id="noisy"), "the window is gone")
        self.tessly.process.send_signal(signal.SIGCONT)
        wait_until(lambda: "connection" in self.tessly.log(), "the connection breaks")

    def test_an_ignored_application_stays_ignored_and_others_are_recorded_again(self):
        connection = self.desktop.connect()
        window = PlainWindow(connection, "noisy")
        wait_until(lambda: self.desktop.windows.visible(app_id="noisy"), "the window is open")
        terminal = WaylandTerminal(self.desktop).start()
        self.clipboard.copy("secret one")
        self.assertTrue(holds_for(1, lambda: self.recorded_texts() == []))
        self.break_connection(connection, window)
        self.assertTrue(terminal.is_in_front())
        self.clipboard.copy("secret two")
        self.assertTrue(holds_for(2, lambda: self.recorded_texts() == []))
        self.clipboard.copy("secret three")
        self.assertTrue(holds_for(1, lambda: self.recorded_texts() == []))
        terminal.close()

        def is_recorded():
            self.clipboard.copy("no secret")
            return not holds_for(1, lambda: self.history.find("no secret") is None)
        QtEditor(self.desktop).start()
        wait_until(is_recorded, "windows are known again")
        self.assertEqual(self.history.find("no secret").source_app_name, "FeatherPad")
        self.assertEqual(self.recorded_texts(), ["no secret"])


class Commands(wayland_tests.Commands, WaylandCase):
    desktop_class = Sway


if __name__ == "__main__":
    unittest.main()
