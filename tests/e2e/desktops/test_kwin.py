"""KWin as it is used: with permissions and Plasma's portal. Icons are shown by waybar."""

from columns import Columns, main
from plasma import Plasma
from tessly_e2e import wait_until
from tessly_e2e.editors import GtkEditor, QtEditor, QtTerminal
from tessly_e2e.wayland_case import WaylandCase


class OnPlasma(Columns, WaylandCase):
    desktop_class = Plasma
    desktop_options = {"installed": True}
    accessible = True
    # Nobody is asked before a test wants it.
    settings = {"directPasteShortcuts": False}
    programs = (GtkEditor, QtEditor, QtTerminal)

    def hold_hot_keys(self):
        self.tessly.stop()
        self.tessly = self.start_tessly()
        # Not every version of Plasma asks.
        wait_until(lambda: self.desktop.agree() or self.status()["hotKeys"], "the portal answers")
        wait_until(lambda: self.status()["hotKeys"], "hot keys are held")


if __name__ == "__main__":
    main()
