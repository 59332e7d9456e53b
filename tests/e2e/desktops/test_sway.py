"""sway as it is used: keys are bound in its configuration, icons are shown by waybar."""

from columns import Columns, main
from tessly_e2e.editors import GtkEditor, QtEditor, WaylandTerminal
from tessly_e2e.sway import Sway
from tessly_e2e.wayland_case import WaylandCase


class OnSway(Columns, WaylandCase):
    desktop_class = Sway
    programs = (GtkEditor, QtEditor, WaylandTerminal)

    def hold_hot_keys(self):
        self.desktop.messages.command(f"bindsym Mod1+Shift+2 exec {self.tessly.program} paste 2")


if __name__ == "__main__":
    main()
