"""The windows of a test's desktop as assistive technology sees them: through AT-SPI, on the bus.

Controls are found by role and name, so tests neither know nor care where they are drawn.
"""

from collections import namedtuple

import dbus
import dbus.bus

from .waiting import TIMEOUT, wait_until

_ACCESSIBLE = "org.a11y.atspi.Accessible"
_COMPONENT = "org.a11y.atspi.Component"
_ACTION = "org.a11y.atspi.Action"
_VALUE = "org.a11y.atspi.Value"
_TEXT = "org.a11y.atspi.Text"
_PROPERTIES = "org.freedesktop.DBus.Properties"
_ROOT = "/org/a11y/atspi/accessible/root"
_ON_SCREEN = dbus.UInt32(0)
_TIMEOUT = 5  # seconds, for one call

# Bits of the state set, by the protocol's enumeration.
STATES = {"active": 1, "checked": 4, "editable": 7, "enabled": 8, "expanded": 10, "focusable": 11,
          "focused": 12, "selectable": 22, "selected": 23, "sensitive": 24, "showing": 25,
          "checkable": 41}

Extents = namedtuple("Extents", "x y width height")


class Control:
    """One object of the tree. Its properties are asked for anew each time."""

    def __init__(self, bus, name, path):
        self._bus = bus
        self._address = (str(name), str(path))

    @property
    def bus_name(self):
        return self._address[0]

    def __eq__(self, other):
        return isinstance(other, Control) and self._address == other._address

    def __hash__(self):
        return hash(self._address)

    def __repr__(self):
        return f"{self.role} “{self.name}”"

    def _call(self, interface, method, signature="", *arguments):
        return self._bus.call_blocking(*self._address, interface, method, signature, arguments,
                                       timeout=_TIMEOUT)

    def _property(self, interface, name):
        return self._call(_PROPERTIES, "Get", "ss", interface, name)

    @property
    def name(self):
        return str(self._property(_ACCESSIBLE, "Name"))

    @property
    def description(self):
        return str(self._property(_ACCESSIBLE, "Description"))

    @property
    def role(self):
        return str(self._call(_ACCESSIBLE, "GetRoleName"))

    @property
    def states(self):
        low, high = self._call(_ACCESSIBLE, "GetState")
        bits = int(low) | int(high) << 32
        return {state for state, bit in STATES.items() if bits & 1 << bit}

    @property
    def value(self):
        return float(self._property(_VALUE, "CurrentValue"))

    @property
    def text(self):
        return str(self._call(_TEXT, "GetText", "ii", 0, -1))

    @property
    def extents(self):
        return Extents(*(int(part) for part in
                         self._call(_COMPONENT, "GetExtents", "u", _ON_SCREEN)))

    @property
    def centre(self):
        place = self.extents
        return place.x + place.width // 2, place.y + place.height // 2

    @property
    def actions(self):
        return [str(name) for name, *_ in self._call(_ACTION, "GetActions")]

    def act(self, name=None):
        """Performs an action that the control offers; without a name the first, which need not
        have one."""
        self._call(_ACTION, "DoAction", "i", self.actions.index(name) if name else 0)

    def take_focus(self):
        self._call(_COMPONENT, "GrabFocus")

    @property
    def children(self):
        return [Control(self._bus, name, path)
                for name, path in self._call(_ACCESSIBLE, "GetChildren")]

    def walk(self):
        """This control and everything in it, in order."""
        yield self
        try:
            children = self.children
        except dbus.DBusException:
            return  # it went away meanwhile
        for child in children:
            yield from child.walk()

    def find_all(self, role=None, name=None):
        """What is seen of this role and this name."""
        found = []
        for control in self.walk():
            try:
                if ((role is None or control.role == role) and (name is None or control.name == name)
                        and "showing" in control.states):
                    found.append(control)
            except dbus.DBusException:
                continue  # it went away meanwhile
        return found

    def names(self, role):
        """The names of what is seen of this role, in order; None while the tree changes."""
        try:
            return [control.name for control in self.find_all(role)]
        except dbus.DBusException:
            return None

    def find(self, role=None, name=None, timeout=TIMEOUT):
        """The one control of this role and name, once it is there."""
        return wait_until(lambda: self.find_all(role, name),
                          lambda: f"a {role} “{name}” in:\n{self.describe()}", timeout)[0]

    def describe(self, depth=0):
        """The tree as text, for failures."""
        try:
            lines = ["  " * depth + f"{self!r} {' '.join(sorted(self.states))}"]
            lines += [child.describe(depth + 1) for child in self.children]
        except dbus.DBusException as error:
            return "  " * depth + error.get_dbus_name()
        return "\n".join(lines)


class Accessibility:
    """The accessibility bus of a desktop, which has to have a session bus."""

    def __init__(self, desktop):
        self._launcher = desktop.start(
            ["/usr/libexec/at-spi-bus-launcher", "--launch-immediately"])
        session = dbus.bus.BusConnection(desktop.environment["DBUS_SESSION_BUS_ADDRESS"])
        wait_until(lambda: session.name_has_owner("org.a11y.Bus"), "the accessibility bus is there")
        address = str(session.call_blocking("org.a11y.Bus", "/org/a11y/bus", "org.a11y.Bus",
                                            "GetAddress", "", (), timeout=_TIMEOUT))
        session.close()
        self._bus = dbus.bus.BusConnection(address)
        desktop.start(["/usr/libexec/at-spi2-registryd"],
                      environment={"DBUS_SESSION_BUS_ADDRESS": address,
                                   "AT_SPI_BUS_ADDRESS": address})
        wait_until(lambda: self._bus.name_has_owner("org.a11y.atspi.Registry"),
                   "the registry of accessible programs is there")
        # Programs of the toolkit are otherwise silent until a reader asks.
        desktop.environment["QT_LINUX_ACCESSIBILITY_ALWAYS_ON"] = "1"

    def close(self):
        self._bus.close()
        # Killed, it would leave its bus behind.
        self._launcher.terminate()
        wait_until(lambda: self._launcher.poll() is not None, "the accessibility bus ends")

    def _process(self, control):
        return self._bus.call_blocking("org.freedesktop.DBus", "/", "org.freedesktop.DBus",
                                       "GetConnectionUnixProcessID", "s", (control.bus_name,),
                                       timeout=_TIMEOUT)

    def application(self, pid):
        """The root of a program's tree, once the program has registered."""
        return self._application(lambda control: self._process(control) == pid)

    def application_named(self, name):
        return self._application(lambda control: control.name == name)

    def _application(self, is_wanted):
        registry = Control(self._bus, "org.a11y.atspi.Registry", _ROOT)

        def look():
            for application in registry.children:
                try:
                    if is_wanted(application):
                        return application
                except dbus.DBusException:
                    continue  # a program that has just ended
            return None
        return wait_until(look, "the program is in the accessibility tree")
