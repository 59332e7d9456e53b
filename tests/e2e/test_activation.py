"""The program as the session bus starts it, and that no command has it started."""

import os
import signal
import unittest

import dbus.bus

from tessly_e2e import Tessly, wait_until
from tessly_e2e.case import DesktopCase
from tessly_e2e.commands import ACTIONS, NOT_RUNNING, Expecting
from tessly_e2e.tessly import BUS_NAME, program

_TEMPLATE = os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "..", "packaging",
                         BUS_NAME + ".service.in")
_PATH = "/com/brackmoor/tessly"


class Activation(Expecting, DesktopCase):
    def setUp(self):
        super().setUp()
        self.tessly = Tessly(self.desktop)
        self.tessly.write_settings()
        self.bus = dbus.bus.BusConnection(self.desktop.environment["DBUS_SESSION_BUS_ADDRESS"])
        self.addCleanup(self.bus.close)
        self.daemon = dbus.Interface(
            self.bus.get_object("org.freedesktop.DBus", "/org/freedesktop/DBus"),
            "org.freedesktop.DBus")
        self.install_service()
        self.addCleanup(self.end)

    def install_service(self):
        """The program's service file, with a program in its place that notes each start."""
        self.starts = self.desktop.path("starts")
        starter = self.desktop.path("starter")
        with open(os.open(starter, os.O_WRONLY | os.O_CREAT, 0o700), "w") as file:
            file.write(f'#!/bin/sh\necho start >>"{self.starts}"\nexec "{program()}" "$@"\n')
        with open(_TEMPLATE) as template, \
                open(os.path.join(self.desktop.bus_services(), BUS_NAME + ".service"), "w") as file:
            file.write(template.read().replace("@TESSLY_INSTALLED_PROGRAM@", starter))
        # What sessions do once their display is there.
        self.daemon.UpdateActivationEnvironment(
            dbus.Dictionary(self.desktop.environment, signature="ss"))
        self.daemon.ReloadConfig()
        self.assertIn(BUS_NAME, self.daemon.ListActivatableNames())

    def started(self):
        """How often the bus has started the program."""
        if not os.path.exists(self.starts):
            return 0
        with open(self.starts) as file:
            return len(file.readlines())

    def activate(self):
        self.bus.get_object(BUS_NAME, _PATH, introspect=False).Activate(
            dbus.Dictionary(signature="sv"), dbus_interface="org.freedesktop.Application")

    def pid(self):
        return int(self.daemon.GetConnectionUnixProcessID(BUS_NAME))

    def wait_for_panel(self):
        wait_until(lambda: [window for window in self.desktop.windows.visible(pid=self.pid())
                            if window.title == "Tessly"], "the panel is open")

    def end(self):
        """Nothing that the bus started outlives the test."""
        if self.daemon.NameHasOwner(BUS_NAME):
            os.kill(self.pid(), signal.SIGKILL)

    def test_no_command_has_the_program_started(self):
        for arguments in ACTIONS:
            self.expect_refusal(NOT_RUNNING, "Tessly is not running", *arguments)
        self.assertIs(self.status()["running"], False)
        self.assertEqual(self.previews(), [])
        self.assertEqual(self.started(), 0)

    def test_the_bus_starts_it_to_open_the_panel(self):
        self.activate()
        self.wait_for_panel()
        self.assertEqual(self.started(), 1)
        self.assertIs(self.status()["running"], True)
        self.expect_silence("quit")
        self.assertFalse(self.desktop.bus_name_exists(BUS_NAME))
        self.expect_refusal(NOT_RUNNING, "Tessly is not running", "show")
        self.assertEqual(self.started(), 1)

    def test_one_that_runs_is_not_started_again(self):
        self.tessly.start()
        self.activate()
        self.wait_for_panel()
        self.assertEqual(self.pid(), self.tessly.pid)
        self.assertEqual(self.started(), 0)
        self.tessly.stop()


if __name__ == "__main__":
    unittest.main()
