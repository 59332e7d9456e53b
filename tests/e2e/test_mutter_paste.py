"""mutter: the panel, and pasting from it, for which the desktop's portal presses the keys."""

import signal
import unittest

import wayland_tests
from tessly_e2e import wait_until
from tessly_e2e.commands import FAILED, Expecting
from tessly_e2e.editors import SeenEditor
from tessly_e2e.mutter import Mutter
from tessly_e2e.portal import Portal
from tessly_e2e.wayland_case import WaylandCase

NOT_ALLOWED = ("Copied to the clipboard, but not pasted: Tessly is not allowed to press keys in other "
               "applications.")
BANNER = "Copied. Allow Automatic paste in Settings."
SHIFT, INSERT = 42, 110  # as the kernel counts keys


class Panel(WaylandCase):
    desktop_class = Mutter
    accessible = True

    def test_escape_closes_it_and_the_window_before_has_the_keys_again(self):
        editor = SeenEditor(self.desktop).start()
        self.tessly.open_panel()
        self.assertFalse(editor.is_in_front())
        self.tessly.close_panel()
        wait_until(editor.is_in_front, "the editor has the keys")
        self.keyboard.type("typed")
        editor.wait_for_text("typed")


class StartsAndEnds(wayland_tests.StartsAndEnds, WaylandCase):
    desktop_class = Mutter
    accessible = True
    editor = SeenEditor


class Pasting(Expecting, WaylandCase):
    desktop_class = Mutter
    accessible = True
    user = "grant"

    def setUp(self):
        super().setUp()
        self.portal = Portal(self.desktop, user=self.user, mutter=True).start()
        self.record("needle one")
        self.record("something else")

    def allow(self):
        """What the first paste leads to."""
        self.expect_refusal(FAILED, NOT_ALLOWED, "paste", "1")
        wait_until(lambda: self.status()["paste"], "pasting is allowed")

    def test_the_user_is_asked_at_the_first_paste_and_not_before(self):
        self.assertFalse(self.status()["paste"])
        self.assertNotIn("Start", self.portal.dialogs())
        self.allow()
        self.assertEqual(self.portal.dialogs().count("Start"), 1)

    def test_return_pastes_once_the_panel_has_given_the_keys_back(self):
        editor = SeenEditor(self.desktop).start()
        self.allow()
        self.choose("needle")
        editor.wait_for_text("needle one")
        wait_until(editor.is_in_front, "the editor has the keys")
        self.assertEqual([key for key in self.portal.keys() if key[1]],
                         [(SHIFT, True), (INSERT, True)])
        self.expect_still_recording()
        self.assertEqual(self.recorded_texts(), ["something else", "needle one"])

    def test_alt_and_shift_may_be_let_go_when_the_panel_closes(self):
        editor = SeenEditor(self.desktop).start()
        self.allow()
        self.tessly.open_panel().search("needle")
        with self.keyboard.held("Alt", "Shift"):
            self.keyboard.press("Return")
            self.tessly.wait_for_closed_panel()
        editor.wait_for_text("needle one")

    def test_a_command_pastes_again_and_again(self):
        editor = SeenEditor(self.desktop).start()
        self.allow()
        self.expect_silence("paste", "2")
        editor.wait_for_text("needle one")
        self.expect_silence("paste", "1")
        editor.wait_for_text("needle onesomething else")
        self.assertEqual(self.portal.dialogs().count("Start"), 1)

    def test_a_hot_key_of_the_portal_pastes(self):
        editor = SeenEditor(self.desktop).start()
        self.allow()
        wait_until(lambda: self.status()["hotKeys"], "hot keys are held")
        self.portal.press("paste-02")
        editor.wait_for_text("needle one")

    def test_the_user_is_not_asked_a_second_time(self):
        editor = SeenEditor(self.desktop).start()
        self.allow()
        self.tessly.stop()
        self.tessly.start()
        wait_until(lambda: self.status()["paste"], "pasting is still allowed")
        self.expect_silence("paste", "2")
        editor.wait_for_text("needle one")
        self.assertEqual(self.portal.dialogs().count("Start"), 1)


class Hanging(Expecting, WaylandCase):
    desktop_class = Mutter
    accessible = True

    def test_a_portal_that_wakes_late_pastes_nothing_into_another_window(self):
        portal = Portal(self.desktop, mutter=True).start()
        self.record("needle one")
        SeenEditor(self.desktop, "behind.txt").start()
        editor = SeenEditor(self.desktop, "front.txt").start()
        self.expect_refusal(FAILED, NOT_ALLOWED, "paste", "1")
        wait_until(lambda: self.status()["paste"], "pasting is allowed")
        portal.process.send_signal(signal.SIGSTOP)
        self.assertEqual(self.tessly.command("paste", "1", check=False).returncode, FAILED)
        self.wait_for_own_content()
        self.desktop.end(editor.process)
        portal.process.send_signal(signal.SIGCONT)
        # What was sent to it before is dealt with before.
        self.desktop.run(["dbus-send", "--print-reply", "--dest=org.freedesktop.portal.Desktop",
                          "/org/freedesktop/portal/desktop", "org.freedesktop.DBus.Peer.Ping"])
        self.assertEqual(portal.keys(), [])


class Refused(Expecting, WaylandCase):
    desktop_class = Mutter
    accessible = True

    def test_the_content_is_copied_and_the_banner_says_what_to_do(self):
        portal = Portal(self.desktop, user="deny").start()
        self.record("needle one")
        self.record("something else")
        editor = SeenEditor(self.desktop).start()
        self.choose("needle")
        self.wait_for_own_content()
        self.assertEqual(self.clipboard.read(), b"needle one")
        self.tessly.open_panel()
        self.wait_for_banner(self.tessly, BANNER)
        self.tessly.close_panel()
        wait_until(editor.is_in_front, "the editor has the keys")
        self.keyboard.press("Control+v")
        editor.wait_for_text("needle one")
        self.assertEqual(portal.keys(), [])
        self.assertFalse(self.status()["paste"])

    def test_without_a_portal_the_content_is_copied(self):
        self.record("needle one")
        self.expect_refusal(FAILED, NOT_ALLOWED, "paste", "1")
        self.wait_for_own_content()
        self.assertEqual(self.clipboard.read(), b"needle one")


if __name__ == "__main__":
    unittest.main()
