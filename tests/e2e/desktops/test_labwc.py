"""labwc as it is used: keys are bound in its configuration, icons are shown by waybar."""

from columns import Columns, main
from labwc import Labwc
from tessly_e2e.editors import GtkEditor, QtEditor, WaylandTerminal
from tessly_e2e.tessly import program
from tessly_e2e.wayland_case import WaylandCase


class OnLabwc(Columns, WaylandCase):
    desktop_class = Labwc
    desktop_options = {"bindings": [("A-S-2", program() + " paste 2")]}
    accessible = True
    programs = (GtkEditor, QtEditor, WaylandTerminal)


if __name__ == "__main__":
    main()
