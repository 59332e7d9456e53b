"""The labwc desktop, without a screen."""

import os
import shutil
import struct

from tessly_e2e.processes import read_log
from tessly_e2e.sway import VirtualKeyboard
from tessly_e2e.waiting import wait_until
from tessly_e2e.wayland_clipboard import WaylandClipboard
from tessly_e2e.wayland_session import (
    ORDINARY_USER, Toplevel, Toplevels, WaylandSession, become_ordinary_user)

_ACTIVATED = 2

# A program is run by a key in the way its manual tells.
_CONFIGURATION = """<?xml version="1.0"?>
<labwc_config>
  <core><xwaylandPersistence>yes</xwaylandPersistence></core>
  <keyboard>{}</keyboard>
</labwc_config>
"""
_BINDING = """
    <keybind key="{}"><action name="Execute" command="{}"/></keybind>"""


class ForeignToplevels(Toplevels):
    """The windows as a task bar of wlroots sees them: without places and processes. A window counts
    as that of the program by whose name its application's id ends."""

    def __init__(self, connection):
        self._connection = connection
        self._windows = {}
        manager = connection.bind("zwlr_foreign_toplevel_manager_v1", 1)
        manager.on["toplevel"] = self._add
        self._seat = connection.bind("wl_seat", 1)
        connection.roundtrip()

    def _add(self, window):
        facts = {"app_id": "", "title": "", "state": (), "window": window}
        self._windows[window.number] = facts
        window.on.update({
            "title": lambda title: facts.update(title=title),
            "app_id": lambda app_id: facts.update(app_id=app_id),
            "state": lambda data: facts.update(state=struct.unpack(f"={len(data) // 4}I", data)),
            "closed": lambda: self._windows.pop(window.number, None),
        })

    def all(self):
        self._connection.roundtrip()
        return [Toplevel(number, facts["app_id"], facts["title"], None, 0, 0, 0, 0,
                         _ACTIVATED in facts["state"], True)
                for number, facts in self._windows.items()]

    def visible(self, *, pid=None, app_id=None):
        windows = super().visible(app_id=app_id)
        return windows if pid is None else [
            window for window in windows
            if window.app_id.lower().rpartition(".")[2] == _name(pid)]

    def activate(self, window):
        self._windows[window]["window"].activate(self._seat)
        self._connection.roundtrip()


def _name(pid):
    try:
        with open(f"/proc/{pid}/comm") as file:
            return file.read().strip()
    except FileNotFoundError:
        return None


class Labwc(WaylandSession):
    """`bindings` are keys in its own words and the commands that they run."""

    name = "labwc:wlroots"

    def __init__(self, *, bindings=()):
        super().__init__()
        self._bindings = bindings

    def _start_compositor(self):
        folder = self.path("compositor")
        ready = os.path.join(folder, "ready")
        os.mkdir(os.path.join(folder, "labwc"))
        with open(os.path.join(folder, "labwc", "rc.xml"), "w") as file:
            file.write(_CONFIGURATION.format("".join(
                _BINDING.format(key, command) for key, command in self._bindings)))
        if os.geteuid() == 0:
            os.chmod(self.folder, 0o711)
            shutil.chown(folder, ORDINARY_USER, ORDINARY_USER)
        self.compositor = self.start(
            ["labwc", "-C", os.path.join(folder, "labwc"), "-s",
             f"sh -c 'echo $WAYLAND_DISPLAY $DISPLAY > {ready}.part && mv {ready}.part {ready}'"],
            before=become_ordinary_user,
            environment={"XDG_RUNTIME_DIR": folder, "WLR_BACKENDS": "headless",
                         "WLR_RENDERER": "pixman", "WLR_LIBINPUT_NO_DEVICES": "1"})
        wait_until(lambda: os.path.exists(ready) or self.compositor.poll() is not None,
                   lambda: "labwc starts: " + read_log(self.compositor))
        if self.compositor.poll() is not None:
            raise AssertionError("labwc cannot run here: " + read_log(self.compositor))
        with open(ready) as file:
            wayland, x11 = file.read().split()
        self._use(os.path.join(folder, wayland), x11)
        self.windows = ForeignToplevels(self.connect())
        self.keyboard = VirtualKeyboard(self.connect())
        self.clipboard = WaylandClipboard(self)
