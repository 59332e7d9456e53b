"""The sway desktop, without a screen."""

import ctypes
import json
import os
import re
import shutil
import socket
import struct

from .keyboard import Keyboard
from .processes import read_log
from .screen import Picture
from .waiting import wait_until
from .wayland_clipboard import WaylandClipboard
from .wayland_session import Toplevel, Toplevels, WaylandSession, become_ordinary_user
from .wayland_session import ORDINARY_USER

# The programs of the test may belong to another user than the compositor.
_CONFIGURATION = """
xwayland enable
output * resolution {width}x{height} background #336699 solid_color
focus_follows_mouse no
bar bar-0 {{
    position bottom
    mode invisible
    swaybar_command true
}}
exec sh -c 'xhost +si:localuser:{user} >/dev/null; \
echo "$WAYLAND_DISPLAY $DISPLAY $SWAYSOCK" > {ready}.part && mv {ready}.part {ready}'
"""

_XKB_V1 = 1


class VirtualKeyboard(Keyboard):
    """A keyboard plugged into a compositor that lets programs do so, until it is unplugged."""

    def __init__(self, connection, layout="us"):
        self._connection = connection
        manager = connection.bind("zwp_virtual_keyboard_manager_v1", 1)
        self._keyboard = manager.create_virtual_keyboard(connection.bind("wl_seat", 1))
        self._xkb = _XkbState(layout)
        text = self._xkb.text()
        descriptor = os.memfd_create("keymap", os.MFD_CLOEXEC)
        os.write(descriptor, text)
        self._keyboard.keymap(_XKB_V1, descriptor, len(text))
        connection.roundtrip()
        os.close(descriptor)
        self._time = 0

    def unplug(self):
        self._keyboard.destroy()
        self._connection.roundtrip()

    def _send(self, code, is_down):
        self._time += 1
        self._keyboard.key(self._time, code - 8, int(is_down))
        self._keyboard.modifiers(*self._xkb.update(code, is_down), 0)
        self._connection.roundtrip()


class _XkbState:
    """What the keys that are down make of the modifiers, by the library that every desktop uses."""

    class _Names(ctypes.Structure):
        _fields_ = [(name, ctypes.c_char_p)
                    for name in ("rules", "model", "layout", "variant", "options")]

    def __init__(self, layout):
        self._library = ctypes.CDLL("libxkbcommon.so.0")
        for name in ("context_new", "keymap_new_from_names", "keymap_get_as_string", "state_new"):
            getattr(self._library, "xkb_" + name).restype = ctypes.c_void_p
        context = ctypes.c_void_p(self._library.xkb_context_new(0))
        names = self._Names(layout=layout.encode())
        self._keymap = ctypes.c_void_p(
            self._library.xkb_keymap_new_from_names(context, ctypes.byref(names), 0))
        self._state = ctypes.c_void_p(self._library.xkb_state_new(self._keymap))

    def text(self):
        made = self._library.xkb_keymap_get_as_string(self._keymap, _XKB_V1)
        return ctypes.string_at(made) + b"\0"

    def update(self, code, is_down):
        """The depressed, latched and locked modifiers after a key."""
        self._library.xkb_state_update_key(self._state, code, int(is_down))
        return [self._library.xkb_state_serialize_mods(self._state, 1 << part)
                for part in range(3)]


class SwayMessages:
    """sway's own way of being asked and told."""

    _MAGIC = b"i3-ipc"
    _COMMAND, _TREE = 0, 4

    def __init__(self, path):
        self._socket = socket.socket(socket.AF_UNIX, socket.SOCK_STREAM)
        self._socket.settimeout(10)
        self._socket.connect(path)

    def close(self):
        self._socket.close()

    def _ask(self, kind, payload=b""):
        self._socket.sendall(self._MAGIC + struct.pack("=II", len(payload), kind) + payload)
        header = self._read(len(self._MAGIC) + 8)
        return json.loads(self._read(struct.unpack_from("=I", header, len(self._MAGIC))[0]))

    def _read(self, size):
        data = b""
        while len(data) < size:
            part = self._socket.recv(size - len(data))
            if not part:
                raise ConnectionError("sway went away")
            data += part
        return data

    def tree(self):
        return self._ask(self._TREE)

    def command(self, text):
        for answer in self._ask(self._COMMAND, text.encode()):
            if not answer["success"]:
                raise AssertionError(f"sway: {text}: {answer}")


class SwayWindows(Toplevels):
    def __init__(self, messages):
        self._messages = messages

    def all(self):
        found = []
        self._collect(self._messages.tree(), found)
        return found

    def _collect(self, node, found):
        if node.get("pid") and node.get("visible"):
            place, inside = node["rect"], node["window_rect"]
            names = node.get("window_properties") or {}
            found.append(Toplevel(
                node["id"], node["app_id"] or names.get("class"), node["name"] or "", node["pid"],
                place["x"] + inside["x"], place["y"] + inside["y"], inside["width"],
                inside["height"], node["focused"], node["type"] == "floating_con"))
        for child in node["nodes"] + node["floating_nodes"]:
            self._collect(child, found)

    def activate(self, window):
        self._messages.command(f"[con_id={window}] focus")

    def close(self, window):
        """What the close button of a window does."""
        self._messages.command(f"[con_id={window}] kill")

    def focus_nothing(self):
        """Goes to a workspace without windows."""
        self._messages.command("workspace empty")

    def focus_again(self):
        self._messages.command("workspace 1")


# As Linux numbers buttons.
LEFT, RIGHT = 0x110, 0x111


class VirtualPointer:
    """A mouse plugged into a compositor that lets programs do so."""

    def __init__(self, connection, size):
        self._connection = connection
        self.size = size
        manager = connection.bind("zwlr_virtual_pointer_manager_v1", 1)
        self._pointer = manager.create_virtual_pointer(connection.bind("wl_seat", 1))
        connection.roundtrip()
        self._time = 0

    def _did(self, request, *arguments):
        self._time += 1
        request(self._time, *arguments)
        self._pointer.frame()
        self._connection.roundtrip()

    def move(self, x, y):
        self._did(self._pointer.motion_absolute, x, y, *self.size)

    def click(self, x, y, times=1, button=LEFT):
        self.move(x, y)
        for _ in range(times):
            self._did(self._pointer.button, button, 1)
            self._did(self._pointer.button, button, 0)


class SwayScreen:
    """What is on the screen, as pixels."""

    def __init__(self, desktop):
        self._desktop = desktop

    def picture(self, x=None, y=0, width=0, height=0):
        part = [] if x is None else ["-g", f"{x},{y} {width}x{height}"]
        data = self._desktop.run(["grim", "-t", "ppm", *part, "-"]).stdout
        _, size, _, rgb = data.split(b"\n", 3)
        width, height = map(int, size.split())
        return Picture(width, height, rgb)


class Sway(WaylandSession):
    """The keyboard and the clipboard are there from the start."""

    name = "sway"

    def __init__(self, *, bus=True, size=(1280, 800)):
        super().__init__(bus=bus)
        self.size = size

    def _start_compositor(self):
        folder = self.path("compositor")
        ready = os.path.join(folder, "ready")
        configuration = os.path.join(folder, "config")
        with open(configuration, "w") as file:
            file.write(_CONFIGURATION.format(
                width=self.size[0], height=self.size[1], user="#%d" % os.getuid(), ready=ready))
        os.chmod(configuration, 0o644)
        if os.geteuid() == 0:
            os.chmod(self.folder, 0o711)
            shutil.chown(folder, ORDINARY_USER, ORDINARY_USER)
        self.compositor = self.start(
            ["sway", "--config", configuration], before=become_ordinary_user,
            environment={"XDG_RUNTIME_DIR": folder, "HOME": folder, "TMPDIR": folder,
                         "XDG_CACHE_HOME": folder, "WLR_BACKENDS": "headless",
                         "WLR_RENDERER": "pixman", "WLR_LIBINPUT_NO_DEVICES": "1"})
        wait_until(lambda: os.path.exists(ready) or self.compositor.poll() is not None,
                   lambda: "sway starts: " + read_log(self.compositor))
        if self.compositor.poll() is not None:
            raise AssertionError("sway cannot run here: " + read_log(self.compositor))
        with open(ready) as file:
            wayland, x11, messages = file.read().split()
        self._use(os.path.join(folder, wayland), x11)
        self.environment["SWAYSOCK"] = messages
        self.messages = SwayMessages(messages)
        self.windows = SwayWindows(self.messages)
        self.screen = SwayScreen(self)
        self.keyboard = VirtualKeyboard(self.connect())
        self.pointer = VirtualPointer(self.connect(), self.size)
        self.clipboard = WaylandClipboard(self)

    @property
    def version(self):
        told = self.run(["sway", "--version"]).stdout.decode()
        return tuple(int(part) for part in re.search(r"(\d+)\.(\d+)", told).groups())

    def _disconnect(self):
        messages = self.__dict__.pop("messages", None)
        if messages is not None:
            messages.close()
        super()._disconnect()
