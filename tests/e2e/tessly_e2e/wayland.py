"""A Wayland client for tests: it speaks the protocol byte by byte, so that it can do what toolkits
do not do.

What it knows of each interface is the list of its requests and of its events, in the order of the
protocol (the place in the list is the number on the wire), as far as tests use them.
"""

import contextlib
import os
import socket
import struct
import time
from collections import namedtuple

from .waiting import TIMEOUT, Timeout

Interface = namedtuple("Interface", "requests events", defaults=((), ()))

# Arguments: u and i numbers, s a string, o an object, a an array, h a file descriptor, and
# "new:INTERFACE" an object that the message makes.
INTERFACES = {
    "wl_display": Interface(("sync new:wl_callback", "get_registry new:wl_registry"),
                            ("error o u s", "delete_id u")),
    "wl_registry": Interface(("bind u s u o",), ("global u s u", "global_remove u")),
    "wl_callback": Interface(events=("done u",)),
    "wl_seat": Interface(events=("capabilities u", "name s")),

    "wl_compositor": Interface(("create_surface new:wl_surface",)),
    "wl_surface": Interface(
        ("destroy", "attach o i i", "damage i i i i", "frame new:wl_callback",
         "set_opaque_region o", "set_input_region o", "commit")),
    "wl_shm": Interface(("create_pool new:wl_shm_pool h i",)),
    "wl_shm_pool": Interface(("create_buffer new:wl_buffer i i i i u",)),
    "wl_buffer": Interface(),
    "xdg_wm_base": Interface(
        ("destroy", "create_positioner new:xdg_positioner", "get_xdg_surface new:xdg_surface o",
         "pong u"), ("ping u",)),
    "xdg_surface": Interface(
        ("destroy", "get_toplevel new:xdg_toplevel", "get_popup new:xdg_popup o o",
         "set_window_geometry i i i i", "ack_configure u"), ("configure u",)),
    "xdg_toplevel": Interface(("destroy", "set_parent o", "set_title s", "set_app_id s")),

    "zwlr_data_control_manager_v1": Interface(
        ("create_data_source new:zwlr_data_control_source_v1",
         "get_data_device new:zwlr_data_control_device_v1 o")),
    "zwlr_data_control_device_v1": Interface(
        ("set_selection o", "destroy", "set_primary_selection o"),
        ("data_offer new:zwlr_data_control_offer_v1", "selection o", "finished",
         "primary_selection o")),
    "zwlr_data_control_source_v1": Interface(("offer s", "destroy"), ("send s h", "cancelled")),
    "zwlr_data_control_offer_v1": Interface(("receive s h", "destroy"), ("offer s",)),

    "zwp_virtual_keyboard_manager_v1": Interface(
        ("create_virtual_keyboard o new:zwp_virtual_keyboard_v1",)),
    "zwp_virtual_keyboard_v1": Interface(
        ("keymap u h u", "key u u u", "modifiers u u u u", "destroy")),

    "zwlr_foreign_toplevel_manager_v1": Interface(
        events=("toplevel new:zwlr_foreign_toplevel_handle_v1", "finished")),
    "zwlr_foreign_toplevel_handle_v1": Interface(
        ("set_maximized", "unset_maximized", "set_minimized", "unset_minimized", "activate o",
         "close"),
        ("title s", "app_id s", "output_enter o", "output_leave o", "state a", "done", "closed")),

    "zwlr_virtual_pointer_manager_v1": Interface(
        ("create_virtual_pointer o new:zwlr_virtual_pointer_v1",)),
    "zwlr_virtual_pointer_v1": Interface(
        ("motion u i i", "motion_absolute u u u u u", "button u u u", "axis u u i", "frame")),

    "org_kde_kwin_fake_input": Interface(
        ("authenticate s s", "pointer_motion i i", "button u u", "axis u i", "touch_down u i i",
         "touch_motion u i i", "touch_up u", "touch_cancel", "touch_frame",
         "pointer_motion_absolute i i", "keyboard_key u u")),

    "org_kde_plasma_window_management": Interface(
        ("show_desktop u", "get_window new:org_kde_plasma_window u",
         "get_window_by_uuid new:org_kde_plasma_window s"),
        ("show_desktop_changed u", "window u", "stacking_order_changed a",
         "stacking_order_uuid_changed s", "window_with_uuid u s")),
    "org_kde_plasma_window": Interface(
        ("set_state u u",),
        ("title_changed s", "app_id_changed s", "state_changed u", "virtual_desktop_changed i",
         "themed_icon_name_changed s", "unmapped", "initial_state", "parent_window o",
         "geometry i i u u", "icon_changed", "pid_changed u")),
}

# The same under the name that it got when it became a standard.
for _name in [name for name in INTERFACES if name.startswith("zwlr_data_control")]:
    _theirs = INTERFACES[_name]
    INTERFACES[_name.replace("zwlr", "ext")] = Interface(
        *([message.replace("zwlr", "ext") for message in messages] for messages in _theirs))


class ProtocolError(Exception):
    """The compositor refused a request, or went away."""


class Object:
    """An object of the protocol. A request is a method of its name; an event calls the function
    that was put into `on` under its name."""

    def __init__(self, connection, number, interface):
        self._connection = connection
        self.number = number
        self.interface = interface
        self.on = {}

    def __getattr__(self, name):
        for opcode, request in enumerate(INTERFACES[self.interface].requests):
            request_name, *signature = request.split()
            if request_name == name:
                return lambda *arguments: self._connection.send(self, opcode, signature, arguments)
        raise AttributeError(f"{self.interface} has no request {name}")


class Connection:
    """One connection to a compositor. Events are dealt with while one waits for something."""

    def __init__(self, path):
        self._socket = socket.socket(socket.AF_UNIX, socket.SOCK_STREAM | socket.SOCK_CLOEXEC)
        self._socket.connect(path)
        self._objects = {}
        self._input = b""
        self._descriptors = []
        self._held_back = None
        self.globals = {}
        self.display = self._new("wl_display")
        self.display.on["error"] = self._refused
        self.display.on["delete_id"] = lambda number: self._objects.pop(number, None)
        self._registry = self.display.get_registry()
        self._registry.on["global"] = lambda name, interface, version: self.globals.setdefault(
            interface, (name, version))
        self.roundtrip()

    def fileno(self):
        return self._socket.fileno()

    def close(self):
        self._socket.close()
        for descriptor in self._descriptors:
            os.close(descriptor)
        self._descriptors = []

    def bind(self, interface, version):
        """A global of the compositor, at the version given at the most."""
        if interface not in self.globals:
            raise ProtocolError(f"the compositor has no {interface}")
        name, offered = self.globals[interface]
        version = min(version, offered)
        made = self._new(interface)
        body = (struct.pack("=I", name) + _string(interface)
                + struct.pack("=II", version, made.number))
        self._write(self._registry.number, 0, body, [])
        return made

    def bind_data_control(self, version):
        """Under the one of its names that the compositor knows."""
        is_standard = "ext_data_control_manager_v1" in self.globals
        return (self.bind("ext_data_control_manager_v1", 1) if is_standard
                else self.bind("zwlr_data_control_manager_v1", version))

    def _new(self, interface):
        # Numbers are not used twice: these connections are short.
        made = Object(self, getattr(self, "_last", 0) + 1, interface)
        self._last = made.number
        self._objects[made.number] = made
        return made

    def send(self, sender, opcode, signature, arguments):
        """Sends a request; returns the object that it makes, if it makes one."""
        arguments = list(arguments)
        body, descriptors, made = b"", [], None
        for kind in signature:
            if kind.startswith("new:"):
                made = self._new(kind[4:])
                body += struct.pack("=I", made.number)
                continue
            value = arguments.pop(0)
            if kind == "h":
                descriptors.append(value)
            elif kind == "s":
                body += _string(value)
            elif kind == "o":
                body += struct.pack("=I", value.number if value is not None else 0)
            else:
                body += struct.pack("=i" if kind == "i" else "=I", value)
        self._write(sender.number, opcode, body, descriptors)
        return made

    @contextlib.contextmanager
    def in_one_step(self):
        """Requests that carry no descriptors go together when this ends, so that the compositor
        deals with them without a pause, as with those that a toolkit sends at once."""
        self._held_back = b""
        try:
            yield
        finally:
            message, self._held_back = self._held_back, None
            self._send_all(message, [])

    def _write(self, number, opcode, body, descriptors):
        message = struct.pack("=II", number, (len(body) + 8) << 16 | opcode) + body
        if self._held_back is not None and not descriptors:
            self._held_back += message
        else:
            self._send_all(message, descriptors)

    def _send_all(self, message, descriptors):
        try:
            sent = socket.send_fds(self._socket, [message], descriptors)
            if sent < len(message):
                self._socket.sendall(message[sent:])
        except OSError as error:
            raise ProtocolError(f"the compositor does not listen: {error}") from error

    def roundtrip(self, timeout=TIMEOUT):
        """Returns once the compositor has dealt with all requests, and its events were handled."""
        done = []
        self.display.sync().on["done"] = done.append
        deadline = time.monotonic() + timeout
        while not done:
            self.dispatch(deadline - time.monotonic())

    def dispatch(self, timeout):
        """Waits for events and handles them."""
        if timeout <= 0:
            raise Timeout("the compositor does not answer")
        self._socket.settimeout(timeout)
        try:
            data, descriptors, _, _ = socket.recv_fds(self._socket, 65536, 28)
        except TimeoutError:
            raise Timeout("the compositor does not answer") from None
        except OSError as error:
            raise ProtocolError(f"the compositor went away: {error}") from error
        finally:
            self._socket.settimeout(None)
        if not data:
            raise ProtocolError("the compositor closed the connection")
        self._input += data
        self._descriptors += descriptors
        while len(self._input) >= 8:
            number, word = struct.unpack_from("=II", self._input)
            size = word >> 16
            if len(self._input) < size:
                break
            body, self._input = self._input[8:size], self._input[size:]
            self._handle(number, word & 0xFFFF, body)

    def _handle(self, number, opcode, body):
        receiver = self._objects.get(number)
        if receiver is None:
            return
        events = INTERFACES[receiver.interface].events
        if opcode >= len(events):
            return  # of no interest, and without file descriptors
        name, *signature = events[opcode].split()
        arguments, offset = [], 0
        for kind in signature:
            if kind == "h":
                arguments.append(self._descriptors.pop(0))
                continue
            value, = struct.unpack_from("=i" if kind == "i" else "=I", body, offset)
            offset += 4
            if kind in "sa":
                content = body[offset:offset + value]
                offset += (value + 3) & ~3
                value = content if kind == "a" else content[:-1].decode(errors="replace")
            elif kind == "o":
                value = self._objects.get(value)
            elif kind.startswith("new:"):
                made = Object(self, value, kind[4:])
                self._objects[value] = made
                value = made
            arguments.append(value)
        handler = receiver.on.get(name)
        if handler is not None:
            handler(*arguments)
        elif "h" in signature:
            os.close(arguments[signature.index("h")])

    def _refused(self, culprit, code, message):
        name = culprit.interface if culprit is not None else "an object that is gone"
        raise ProtocolError(f"{name}: error {code}: {message}")


def _string(value):
    data = os.fsencode(value) + b"\0"
    return struct.pack("=I", len(data)) + data + b"\0" * (-len(data) % 4)


class PlainWindow:
    """A window without anything in it, whose title can be changed as fast as one likes."""

    _WIDTH, _HEIGHT = 64, 64
    _XRGB = 1

    def __init__(self, connection, app_id):
        self._connection = connection
        surface = connection.bind("wl_compositor", 1).create_surface()
        role = connection.bind("xdg_wm_base", 1).get_xdg_surface(surface)
        role.on["configure"] = role.ack_configure
        self._toplevel = role.get_toplevel()
        self._toplevel.set_app_id(app_id)
        surface.commit()
        connection.roundtrip()

        size = self._WIDTH * self._HEIGHT * 4
        descriptor = os.memfd_create("pixels", os.MFD_CLOEXEC)
        os.truncate(descriptor, size)
        pool = connection.bind("wl_shm", 1).create_pool(descriptor, size)
        surface.attach(pool.create_buffer(0, self._WIDTH, self._HEIGHT, self._WIDTH * 4,
                                          self._XRGB), 0, 0)
        surface.commit()
        connection.roundtrip()
        os.close(descriptor)

    def set_app_id(self, app_id):
        self._toplevel.set_app_id(app_id)
        self._connection.roundtrip()

    def set_title(self, title):
        self._toplevel.set_title(title)
        self._connection.roundtrip()


class Selection:
    """What is on the clipboard, as a compositor tells it to a program with data control: asking
    for it requests no content."""

    def __init__(self, connection):
        self._connection = connection
        self._types = {}
        self.changes = 0
        self._current = None
        manager = connection.bind_data_control(2)
        device = manager.get_data_device(connection.bind("wl_seat", 1))
        device.on["data_offer"] = self._offered
        device.on["selection"] = self._selected
        connection.roundtrip()

    def _offered(self, offer):
        self._types[offer.number] = []
        offer.on["offer"] = self._types[offer.number].append

    def _selected(self, offer):
        self.changes += 1
        self._types = {offer.number: self._types.get(offer.number, [])} if offer else {}
        self._current = offer

    def types(self):
        """The types that are offered now; none when the clipboard is empty."""
        self._connection.roundtrip()
        return list(self._types.get(self._current.number, [])) if self._current else []

    def count(self):
        """How often the clipboard has changed."""
        self._connection.roundtrip()
        return self.changes
