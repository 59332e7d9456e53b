"""mutter: nobody can lift keys there that the user holds on another keyboard, so that a paste waits
until they are up."""

import unittest

from tessly_e2e import wait_until
from tessly_e2e.commands import Expecting
from tessly_e2e.editors import SeenEditor
from tessly_e2e.mutter import Mutter
from tessly_e2e.portal import Portal
from tessly_e2e.waiting import holds_for
from tessly_e2e.wayland_case import WaylandCase


class HeldKeys(Expecting, WaylandCase):
    desktop_class = Mutter
    accessible = True

    def setUp(self):
        super().setUp()
        self.portal = Portal(self.desktop, mutter=True).start()
        self.record("needle one")
        self.record("something else")
        self.editor = SeenEditor(self.desktop).start()
        self.tessly.command("paste", "1", check=False)  # asks the user
        wait_until(lambda: self.status()["paste"] and self.status()["hotKeys"], "the user agrees")

    def test_a_hot_key_pastes_when_it_and_its_modifiers_are_up(self):
        with self.keyboard.held("Alt", "Shift"):
            self.portal.hold("paste-02")
            self.assertTrue(holds_for(0.3, lambda: not self.portal.keys()))
        self.portal.let_go("paste-02")
        self.editor.wait_for_text("needle one")


if __name__ == "__main__":
    unittest.main()
