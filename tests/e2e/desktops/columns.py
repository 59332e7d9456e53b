"""What is seen of a desktop in the table of script/desktops: one test for each of its columns.

A desktop's module makes a case of them and ends with `main`.
"""

import json
import sys
import unittest

import dbus
import dbus.bus

import wayland_tests
from services import start_bar
from tessly_e2e import png, wait_until
from tessly_e2e.commands import DONE, NOT_RUNNING, Expecting
from tessly_e2e.editors import GtkEditor

_WATCHER = "org.kde.StatusNotifierWatcher"
_ITEM = "org.kde.StatusNotifierItem"
_PROPERTIES = "org.freedesktop.DBus.Properties"

COLUMNS = ("start", "capture", "source", "focus", "paste", "hot_keys", "tray", "ends")


class Columns(Expecting):
    """`expected` is what `tessly status` says here; `source` the editor that is copied from and
    `programs` those that are pasted into, as functions that make one of the desktop."""

    expected = {"running": True, "session": "wayland", "capture": True, "paste": True}
    source = staticmethod(GtkEditor)
    programs = (GtkEditor,)

    def start_tray(self):
        """Starts what shows icons."""
        start_bar(self.desktop)

    def hold_hot_keys(self):
        """Has Alt+Shift+2 paste the second entry, as the desktop's user does."""

    def test_start(self):
        status = self.status()
        self.assertEqual({name: status[name] for name in self.expected}, self.expected)

    def test_capture(self):
        self.clipboard.copy("first line\nsecond line größer 日本")
        self.assertEqual(self.history.wait_for_text("first line\nsecond line größer 日本").kind, "text")
        self.clipboard.copy(wayland_tests.HTML, "text/html")
        self.assertEqual(self.history.wait_for_kind("richText").html, wayland_tests.HTML)
        image = png.of_size(2 * 2**20)
        self.clipboard.copy(image, "image/png")
        self.assertEqual(self.history.wait_for_kind("image").image_png, image)
        self.clipboard.copy("file:///tmp/a.txt\r\n", "text/uri-list")
        self.assertEqual(json.loads(self.history.wait_for_kind("files").file_urls),
                         ["file:///tmp/a.txt"])

    def test_source(self):
        editor = self.source(self.desktop).start("from an editor")
        editor.copy_all()
        clip = self.history.wait_for_text("from an editor")
        self.assertEqual((clip.source_app_name, clip.source_bundle_id),
                         (editor.source_name, editor.source_id))

    def test_focus(self):
        editor = self.source(self.desktop).start()
        self.tessly.open_panel()
        # labwc calls a window active also while a layer surface has the keys.
        self.assertTrue(self.tessly.has_layer_panel() or not editor.is_in_front())
        self.tessly.close_panel()
        wait_until(editor.is_in_front, "the editor has the keys")
        self.keyboard.type("typed")
        editor.wait_for_text("typed")

    def test_paste(self):
        self.record("needle one")
        self.record("something else")
        for make in self.programs:
            with self.subTest(make):
                program = make(self.desktop).start()
                self.choose("needle")
                program.wait_for_text("needle one")
                program.close()

    def test_hot_keys(self):
        self.record("needle one")
        self.record("something else")
        self.hold_hot_keys()
        editor = self.source(self.desktop).start()
        self.keyboard.press("Alt+Shift+2")
        editor.wait_for_text("needle one")

    def test_tray(self):
        self.start_tray()
        bus = dbus.bus.BusConnection(self.desktop.environment["DBUS_SESSION_BUS_ADDRESS"])
        self.addCleanup(bus.close)

        def process(name):
            try:
                return bus.call_blocking("org.freedesktop.DBus", "/org/freedesktop/DBus",
                                         "org.freedesktop.DBus", "GetConnectionUnixProcessID", "s",
                                         (name,))
            except dbus.DBusException:
                return None  # an icon that went with its program

        def icon():
            if not bus.name_has_owner(_WATCHER):
                return None
            items = [str(item).partition("/") for item in bus.call_blocking(
                _WATCHER, "/StatusNotifierWatcher", _PROPERTIES, "Get", "ss",
                (_WATCHER, "RegisteredStatusNotifierItems"))]
            return [item for item in items if process(item[0].partition("@")[0]) == self.tessly.pid]
        (name, _, path), = wait_until(icon, "the icon is in the tray")
        # What the tray does when the icon is clicked on.
        bus.call_blocking(name.partition("@")[0], "/" + (path or "StatusNotifierItem"), _ITEM,
                          "Activate", "ii", (0, 0))
        self.tessly.wait_for_panel()

    def test_ends(self):
        self.assertEqual(self.tessly.command("quit").returncode, DONE)
        wait_until(lambda: not self.tessly.is_running(), "tessly ends")
        self.assertEqual(self.tessly.process.returncode, 0)
        self.assertEqual(self.tessly.command("show", check=False).returncode, NOT_RUNNING)
        self.assertTrue(self.desktop.is_alive())
        self.tessly.start()
        self.expect_still_recording()


class _Row(unittest.TextTestResult):
    """Keeps what became of each column."""

    def __init__(self, *arguments, **options):
        super().__init__(*arguments, **options)
        self.columns = dict.fromkeys(COLUMNS, "-")

    def stopTest(self, test):
        super().stopTest(test)
        has_failed = any(failed is test or getattr(failed, "test_case", None) is test
                         for failed, _ in self.failures + self.errors)
        self.columns[test._testMethodName.removeprefix("test_")] = "NO" if has_failed else "yes"


def main():
    """Runs the cases of the module and prints what became of each column, one a line."""
    result = unittest.main(
        exit=False, testRunner=unittest.TextTestRunner(resultclass=_Row, verbosity=2)).result
    for outcome in result.columns.values():
        print("column", outcome, flush=True)
    sys.exit(not result.wasSuccessful())
