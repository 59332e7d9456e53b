"""A desktop of the test's own: X server, window manager, session bus, home folder."""

import os
import shutil
import subprocess
import tempfile

import Xlib.display

from .clipboard import Clipboard
from .keyboard import Keyboard, Pointer
from .processes import Processes, read_log
from .screen import Screen
from .waiting import PATIENCE, Timeout, wait_until
from .windows import Windows

BUS_CONFIGURATION = """<!DOCTYPE busconfig PUBLIC "-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN"
 "http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd">
<busconfig>
  <type>session</type>
  <listen>unix:path={socket}</listen>
  <auth>EXTERNAL</auth>
  <policy context="default">
    <allow send_destination="*" eavesdrop="true"/>
    <allow eavesdrop="true"/>
    <allow own="*"/>
  </policy>
</busconfig>
"""

# What the runtime of a sanitizer needs to know is the one thing taken over from outside.
INHERITED = ("ASAN_OPTIONS", "LSAN_OPTIONS", "UBSAN_OPTIONS", "TSAN_OPTIONS", "LLVM_PROFILE_FILE",
             "QT_QUICK_BACKEND", "QML_DISABLE_DISK_CACHE")


class Desktop:
    """Use it in a `with`. Any number can stand side by side; each has folders of its own.

    `bus=False` leaves the session without a D-Bus session bus.
    """

    def __init__(self, *, bus=True, size=(1280, 800)):
        self.has_bus = bus
        self._size = size
        self.folder = None

    def __enter__(self):
        self.folder = tempfile.mkdtemp(prefix="tessly-e2e-")
        try:
            self._make_folders()
            self._processes = Processes(self.path("logs"))
            self._start_server()
            if self.has_bus:
                self._start_bus()
            self._start_window_manager()
        except BaseException:
            self.close()
            raise
        return self

    def __exit__(self, *_):
        self.close()

    def close(self):
        display = self.__dict__.pop("display", None)
        if display is not None:
            try:
                display.close()
            except Exception:  # noqa: BLE001 - a server that died in the test has nothing to close
                pass
        processes = self.__dict__.pop("_processes", None)
        if processes is not None:
            processes.end_all()
        if self.folder and not os.environ.get("TESSLY_E2E_KEEP"):
            shutil.rmtree(self.folder, ignore_errors=True)

    def path(self, *names):
        return os.path.join(self.folder, *names)

    @property
    def data_home(self):
        return self.path("home", ".local", "share")

    @property
    def config_home(self):
        return self.path("home", ".config")

    def _make_folders(self):
        for name in ("logs", "home", "runtime", "tmp", "files"):
            os.mkdir(self.path(name), 0o700)
        for path in (self.data_home, self.config_home, self.path("home", ".cache"),
                     self.path("home", ".local", "state")):
            os.makedirs(path, 0o700)
        home = self.path("home")
        self.environment = {
            "PATH": "/usr/local/bin:/usr/bin:/bin",
            "LANG": "C.UTF-8",
            "LC_ALL": "C.UTF-8",
            "TZ": "UTC",
            "HOME": home,
            "TMPDIR": self.path("tmp"),
            "XDG_RUNTIME_DIR": self.path("runtime"),
            "XDG_DATA_HOME": self.data_home,
            "XDG_CONFIG_HOME": self.config_home,
            "XDG_CACHE_HOME": os.path.join(home, ".cache"),
            "XDG_STATE_HOME": os.path.join(home, ".local", "state"),
            "XDG_DATA_DIRS": "/usr/local/share:/usr/share",
            "XDG_CONFIG_DIRS": "/etc/xdg",
            "XDG_SESSION_TYPE": "x11",
            # Neither the machine's own buses nor its accessibility service.
            "DBUS_SESSION_BUS_ADDRESS": "unix:path=" + self.path("runtime", "no-bus"),
            "DBUS_SYSTEM_BUS_ADDRESS": "unix:path=" + self.path("runtime", "no-system-bus"),
            "NO_AT_BRIDGE": "1",
            "GSETTINGS_BACKEND": "memory",
        }
        for name in INHERITED:
            if name in os.environ:
                self.environment[name] = os.environ[name]

    def _start_server(self):
        reading, writing = os.pipe()
        try:
            server = self.start(
                ["Xvfb", "-displayfd", str(writing), "-screen", "0",
                 "{}x{}x24".format(*self._size), "-nolisten", "tcp", "-noreset"],
                pass_fds=(writing,))
        finally:
            os.close(writing)
        with os.fdopen(reading) as numbers:
            number = numbers.readline().strip()  # written once the server accepts connections
        if not number:
            raise Timeout("Xvfb did not start: " + read_log(server))
        self.server = server
        self.environment["DISPLAY"] = ":" + number
        self.display = Xlib.display.Display(":" + number)
        self.windows = Windows(self.display)
        self.keyboard = Keyboard(self.display)
        self.pointer = Pointer(self.display)
        self.screen = Screen(self.display)
        self.clipboard = Clipboard(self)

    def _start_bus(self):
        socket = self.path("runtime", "bus")
        configuration = self.path("runtime", "bus.conf")
        with open(configuration, "w") as file:
            file.write(BUS_CONFIGURATION.format(socket=socket))
        self.bus = self.start(["dbus-daemon", "--nofork", "--config-file=" + configuration])
        wait_until(lambda: os.path.exists(socket), lambda: read_log(self.bus))
        self.environment["DBUS_SESSION_BUS_ADDRESS"] = "unix:path=" + socket

    def _start_window_manager(self):
        self.start(["openbox", "--sm-disable"])
        wait_until(lambda: self.windows.is_managed, "openbox manages the windows")

    def start(self, arguments, *, environment=None, **options):
        """Starts a program that ends with the desktop; see Processes.start."""
        return self._processes.start(arguments, {**self.environment, **(environment or {})},
                                     **options)

    def end(self, process):
        self._processes.end(process)

    def run(self, arguments, *, input=None, environment=None, check=True, timeout=PATIENCE):
        """Runs a program to its end and returns its subprocess.CompletedProcess, in bytes."""
        finished = subprocess.run(arguments, env={**self.environment, **(environment or {})},
                                  input=input, capture_output=True, timeout=timeout, check=False)
        if check and finished.returncode != 0:
            raise AssertionError("{} ended with {}: {}".format(
                " ".join(arguments), finished.returncode, finished.stderr.decode(errors="replace")))
        return finished

    def keyboard_state(self):
        """The keyboard's layout, its keys' symbols and the layout in use, to compare."""
        xkb = self.run(["setxkbmap", "-query"]).stdout.decode()
        group = (self.display.screen().root.query_pointer().mask >> 13) & 3
        return xkb, self.keyboard.map(), group

    def bus_name_exists(self, name):
        answer = self.run(["dbus-send", "--print-reply", "--dest=org.freedesktop.DBus", "/",
                           "org.freedesktop.DBus.NameHasOwner", "string:" + name])
        return b"boolean true" in answer.stdout
