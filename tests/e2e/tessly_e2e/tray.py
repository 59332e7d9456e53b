"""A system tray of the older kind, which takes the windows of icons into its own."""

from collections import namedtuple

from Xlib import error

from .waiting import settled, wait_until

Icon = namedtuple("Icon", "x y width height")

_HEIGHT = 28


class Tray:
    """A trayer in the top right corner."""

    def __init__(self, desktop):
        self._desktop = desktop
        self.process = None

    def start(self):
        self.process = self._desktop.start(
            ["trayer", "--edge", "top", "--align", "right", "--widthtype", "request",
             "--height", str(_HEIGHT)])
        return self

    def end(self):
        self._desktop.end(self.process)

    def icon(self, pid):
        """The icon of a program, or None."""
        return self._search(self._desktop.display.screen().root, pid, inside=False)

    def wait_for_icon(self, pid):
        """The icon, once it is there and the tray has found its place."""
        wait_until(lambda: self.icon(pid), "the icon is in the tray")
        return settled(lambda: self.icon(pid), 0.3, "the place of the icon")

    def click(self, pid, button=1):
        """Clicks on the icon of a program."""
        icon = self.wait_for_icon(pid)
        self._desktop.pointer.click(icon.x + icon.width // 2, icon.y + icon.height // 2, button)

    def _search(self, window, pid, inside):
        try:
            for child in window.query_tree().children:
                names = child.get_wm_class()
                is_trays = inside or (names and names[0] == "panel" and names[1] == "trayer")
                if inside and self._pid(child) == pid:
                    return self._describe(child)
                found = self._search(child, pid, is_trays)
                if found:
                    return found
        except error.XError:
            pass  # a window went away meanwhile
        return None

    def _pid(self, window):
        display = self._desktop.display
        value = window.get_full_property(display.get_atom("_NET_WM_PID"), 0)
        return value.value[0] if value else None

    def _describe(self, window):
        geometry = window.get_geometry()
        place = self._desktop.display.screen().root.translate_coords(window, 0, 0)
        return Icon(place.x, place.y, geometry.width, geometry.height)
