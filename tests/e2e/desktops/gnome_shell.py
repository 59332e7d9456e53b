"""GNOME Shell, with its own portals and two extensions: Tessly's and that which shows icons."""

import os

import dbus

from services import InstalledServices
from tessly_e2e.mutter import Mutter
from tessly_e2e.waiting import wait_until

_SETTINGS = (
    ("org.gnome.shell", "enabled-extensions",
     "['tessly@brackmoor.com', 'ubuntu-appindicators@ubuntu.com']"),
    ("org.gnome.shell", "welcome-dialog-last-shown-version", "'999'"),
    ("org.gnome.desktop.interface", "enable-animations", "false"),
    ("org.gnome.desktop.session", "idle-delay", "0"),
)
_SHELL = "org.gnome.Shell"
_PERMISSION_STORE = "org.freedesktop.impl.portal.PermissionStore"
_PROPERTIES = "org.freedesktop.DBus.Properties"
# Any will do, as long as it is in Tessly's file too.
_TOKEN = "6b3ac69e-2c3e-4d6f-9d0b-7a8f2c1d5e90"


class GnomeShell(InstalledServices, Mutter):
    def _make_folders(self):
        super()._make_folders()
        self.environment.update(
            GSETTINGS_BACKEND="dconf",
            DBUS_SYSTEM_BUS_ADDRESS="unix:path=/run/dbus/system_bus_socket")

    def _command(self):
        return ["gnome-shell", "--headless", "--wayland"]

    def _homes(self, folder):
        return {}  # its settings are where those of its services are

    def _start_compositor(self):
        for schema, key, value in _SETTINGS:
            self.run(["gsettings", "set", schema, key, value])
        super()._start_compositor()
        self._tell_services()
        # The shell opens its overview when it has started; no window has the keys there. Closed
        # before that, it would still come.
        wait_until(self._is_overview_open, "the overview opens")
        self.call(_SHELL, "/org/gnome/Shell", _PROPERTIES, "Set", "ssv", _SHELL,
                  "OverviewActive", dbus.Boolean(False, variant_level=1))
        wait_until(lambda: not self._is_overview_open(), "the overview is closed")

    def _is_overview_open(self):
        try:
            return bool(self.call(_SHELL, "/org/gnome/Shell", _PROPERTIES, "Get", "ss", _SHELL,
                                  "OverviewActive"))
        except dbus.DBusException:
            return False  # not on the bus yet

    def allow_keys(self):
        """What is left behind where the user has allowed Tessly to press keys, for good."""
        now = dbus.Int64(1_750_000_000_000_000)
        data = dbus.Struct(
            ("GNOME", dbus.UInt32(1), dbus.Struct(
                (now, now, dbus.UInt32(1), False, dbus.Array([], signature="(uuv)")),
                signature=None, variant_level=1)), signature=None, variant_level=1)
        self.call(_PERMISSION_STORE, "/org/freedesktop/impl/portal/PermissionStore",
                  _PERMISSION_STORE, "Set", "sbsa{sas}v", "remote-desktop", True, _TOKEN,
                  {"com.brackmoor.tessly": ["yes"]}, data)
        folder = os.path.join(self.data_home, "Tessly")
        os.makedirs(folder, 0o700, exist_ok=True)
        with open(os.path.join(folder, "remote-desktop-token"), "w") as file:
            file.write(_TOKEN)

    def agree(self):
        """Agrees to what the dialog for global shortcuts asks for; returns what that lists."""
        dialog = self.accessibility.application_named("gnome-control-center-global-shortcuts-provider")
        button = dialog.find("button", "Add")
        listed = dialog.names("list item")
        button.act()
        wait_until(lambda: not dialog.find_all("window"), "the dialog is closed")
        return listed
