"""GNOME Shell as it is used: with its own portals, Tessly's extension, and the one that shows icons."""

from columns import Columns, main
from gnome_shell import GnomeShell
from tessly_e2e import wait_until
from tessly_e2e.editors import SeenEditor, WaylandTerminal
from tessly_e2e.wayland_case import WaylandCase


class NamedEditor(SeenEditor):
    source_id = "org.xfce.mousepad"
    source_name = "Mousepad"


class OnGnome(Columns, WaylandCase):
    desktop_class = GnomeShell
    accessible = True
    # Nobody is asked before a test wants it.
    settings = {"directPasteShortcuts": False}
    expected = {"running": True, "session": "wayland", "capture": True}
    source = NamedEditor
    programs = (NamedEditor, WaylandTerminal)

    def setUp(self):
        super().setUp()
        self.tessly.stop()
        self.desktop.allow_keys()
        self.tessly.start()
        wait_until(lambda: self.status()["paste"], "pasting is allowed")

    def start_tray(self):
        pass  # the extension for icons is there

    def hold_hot_keys(self):
        self.tessly.stop()
        self.tessly = self.start_tessly()
        self.assertEqual(self.desktop.agree(),
                         [f"Paste entry {number:02}" for number in range(1, 11)])
        wait_until(lambda: self.status()["hotKeys"], "hot keys are held")
        wait_until(lambda: self.status()["paste"], "pasting is allowed again")


if __name__ == "__main__":
    main()
