"""KWin: pasting from the panel and by command, into programs of two toolkits and a terminal."""

import unittest

import wayland_tests
from tessly_e2e import wait_until
from tessly_e2e.commands import FAILED, Expecting
from tessly_e2e.editors import GtkEditor, QtEditor, QtTerminal
from tessly_e2e.kwin import KWin
from tessly_e2e.portal import Portal
from tessly_e2e.wayland_case import WaylandCase


class IntoTerminal(wayland_tests.Into, WaylandCase):
    desktop_class = KWin
    accessible = True
    make = QtTerminal


class IntoGtkEditor(wayland_tests.Into, WaylandCase):
    desktop_class = KWin
    accessible = True
    make = GtkEditor


class IntoQtEditor(wayland_tests.Into, WaylandCase):
    desktop_class = KWin
    accessible = True
    make = QtEditor


NOT_ALLOWED = ("Copied to the clipboard, but not pasted: Tessly is not allowed to press keys in other "
               "applications.")
PROTOCOLS = {"org_kde_plasma_window_management", "org_kde_kwin_fake_input"}
SHIFT, INSERT = 42, 110  # as the kernel counts keys


class Trusted(Expecting, WaylandCase):
    """Permissions are checked, and Tessly is installed as its package does it."""

    desktop_class = KWin
    desktop_options = {"trusting": False, "installed": True}

    def test_it_may_press_keys_and_see_what_is_in_front(self):
        status = self.status()
        self.assertTrue(status["paste"])
        self.assertLessEqual(PROTOCOLS, set(status["protocols"]))


class Refused(Expecting, WaylandCase):
    """Permissions are checked, and Tessly is not installed."""

    desktop_class = KWin
    desktop_options = {"trusting": False}

    def test_the_portal_presses_the_keys(self):
        portal = Portal(self.desktop).start()
        self.record("needle one")
        status = self.status()
        self.assertFalse(PROTOCOLS & set(status["protocols"]), status)
        self.assertIs(status["paste"], False)
        self.expect_refusal(FAILED, NOT_ALLOWED, "paste", "1")
        wait_until(lambda: self.status()["paste"], "pasting is allowed")
        self.expect_silence("paste", "1")
        self.assertEqual([key for key in portal.keys() if key[1]], [(SHIFT, True), (INSERT, True)])
        self.assertEqual(portal.dialogs().count("Start"), 1)

    def test_a_hot_key_of_the_portal_pastes(self):
        portal = Portal(self.desktop).start()
        self.record("older")
        self.record("newer")
        wait_until(lambda: self.status()["hotKeys"], "hot keys are held")
        self.expect_refusal(FAILED, NOT_ALLOWED, "paste", "1")
        wait_until(lambda: self.status()["paste"], "pasting is allowed")
        portal.press("paste-02")
        wait_until(lambda: self.clipboard.read() == b"older", "the entry is on the clipboard")
        portal.wait_for_keys(4)


if __name__ == "__main__":
    unittest.main()
