"""What the desktops bring with them, started by their session bus as on a user's machine."""

import dbus
import dbus.bus

_TIMEOUT = 20  # seconds; a service may have to start

# Of the environment, what a service needs in order to find the desktop.
_TOLD = ("DISPLAY", "WAYLAND_DISPLAY", "XAUTHORITY", "XDG_CURRENT_DESKTOP", "XDG_SESSION_TYPE",
         "XDG_RUNTIME_DIR", "KDE_FULL_SESSION", "KDE_SESSION_VERSION", "XDG_MENU_PREFIX",
         "GSETTINGS_BACKEND", "DBUS_SYSTEM_BUS_ADDRESS", "QT_QPA_PLATFORM")


class InstalledServices:
    """For a desktop: its bus starts the services that are installed."""

    def bus_services(self):
        return "/usr/share/dbus-1/services"

    def call(self, name, path, interface, method, signature, *arguments):
        bus = dbus.bus.BusConnection(self.environment["DBUS_SESSION_BUS_ADDRESS"])
        try:
            return bus.call_blocking(name, path, interface, method, signature, arguments,
                                     timeout=_TIMEOUT)
        finally:
            bus.close()

    def _tell_services(self, **more):
        """Has services that are started from now on find this desktop."""
        told = {name: value for name, value in {**self.environment, **more}.items()
                if name in _TOLD}
        self.call("org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus",
                  "UpdateActivationEnvironment", "a{ss}", told)


def start_bar(desktop):
    """A waybar that shows icons and nothing else."""
    path = desktop.path("files", "bar")
    with open(path, "w") as file:
        file.write('{"modules-right": ["tray"]}')
    return desktop.start(["waybar", "--config", path])
