"""What every desktop of a test has: folders of its own, a session bus, and programs that end with
it."""

import os
import shutil
import subprocess
import tempfile

from .processes import Processes, read_log
from .waiting import TIMEOUT, wait_until

BUS_CONFIGURATION = """<!DOCTYPE busconfig PUBLIC "-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN"
 "http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd">
<busconfig>
  <type>session</type>
  <listen>unix:path={socket}</listen>
  <servicedir>{services}</servicedir>
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


class Session:
    """Use it in a `with`. Any number can stand side by side; each has folders of its own.

    `bus=False` leaves the session without a D-Bus session bus. What kind of desktop it is, is for
    the classes below to say: they start it in `_start_desktop`.
    """

    # "x11" or "wayland"
    kind = None
    # Whether `windows` knows of all windows that there are.
    tells_windows = True
    # What is seen, as pixels; None where no program may look.
    screen = None
    bus_program = ["dbus-daemon"]

    def __init__(self, *, bus=True):
        self.has_bus = bus
        self.folder = None

    def __enter__(self):
        self.folder = tempfile.mkdtemp(prefix="tessly-e2e-")
        try:
            self._make_folders()
            self._processes = Processes(self.path("logs"))
            if self.has_bus:
                self._start_bus()
            self._start_desktop()
        except BaseException:
            self.close()
            raise
        return self

    def __exit__(self, *_):
        self.close()

    def _start_desktop(self):
        raise NotImplementedError

    def _disconnect(self):
        """Gives up the connections to the desktop, before its programs end. It may be gone."""

    def close(self):
        self._disconnect()
        processes = self.__dict__.pop("_processes", None)
        if processes is not None:
            processes.end_all()
        if self.folder and not os.environ.get("TESSLY_E2E_KEEP"):
            shutil.rmtree(self.folder, ignore_errors=True)

    def path(self, *names):
        return os.path.join(self.folder, *names)

    @property
    def data_home(self):
        return self.environment["XDG_DATA_HOME"]

    @property
    def config_home(self):
        return self.environment["XDG_CONFIG_HOME"]

    def _make_folders(self):
        for name in ("logs", "runtime", "tmp", "files", "services"):
            os.mkdir(self.path(name), 0o700)
        self.environment = {
            "PATH": "/usr/local/bin:/usr/bin:/bin",
            "LANG": "C.UTF-8",
            "LC_ALL": "C.UTF-8",
            "TZ": "UTC",
            "TMPDIR": self.path("tmp"),
            "XDG_RUNTIME_DIR": self.path("runtime"),
            "XDG_DATA_DIRS": "/usr/local/share:/usr/share",
            "XDG_CONFIG_DIRS": "/etc/xdg",
            "XDG_SESSION_TYPE": self.kind,
            # Neither the machine's own buses nor its accessibility service.
            "DBUS_SESSION_BUS_ADDRESS": "unix:path=" + self.path("runtime", "no-bus"),
            "DBUS_SYSTEM_BUS_ADDRESS": "unix:path=" + self.path("runtime", "no-system-bus"),
            "NO_AT_BRIDGE": "1",
            "GSETTINGS_BACKEND": "memory",
        }
        for name in INHERITED:
            if name in os.environ:
                self.environment[name] = os.environ[name]
        self.move_into("home")

    def move_into(self, name):
        """Gives the programs that are started from now on a home folder of this name, made when it
        is new."""
        home = self.path(name)
        folders = {"XDG_DATA_HOME": os.path.join(home, ".local", "share"),
                   "XDG_CONFIG_HOME": os.path.join(home, ".config"),
                   "XDG_CACHE_HOME": os.path.join(home, ".cache"),
                   "XDG_STATE_HOME": os.path.join(home, ".local", "state")}
        if not os.path.exists(home):
            os.mkdir(home, 0o700)
            for folder in folders.values():
                os.makedirs(folder, 0o700)
        self.environment.update(folders, HOME=home)

    def _start_bus(self):
        socket = self.path("runtime", "bus")
        configuration = self.path("runtime", "bus.conf")
        with open(configuration, "w") as file:
            file.write(BUS_CONFIGURATION.format(socket=socket, services=self.bus_services()))
        self.bus = self.start([*self.bus_program, "--nofork", "--config-file=" + configuration])
        wait_until(lambda: os.path.exists(socket), lambda: read_log(self.bus))
        self.environment["DBUS_SESSION_BUS_ADDRESS"] = "unix:path=" + socket

    def bus_services(self):
        """The folder of the services that the session bus can start."""
        return self.path("services")

    def start(self, arguments, *, environment=None, **options):
        """Starts a program that ends with the desktop; see Processes.start."""
        return self._processes.start(arguments, {**self.environment, **(environment or {})},
                                     **options)

    def install(self, program):
        """The path at which this desktop runs the program that was built."""
        return program

    def end(self, process):
        self._processes.end(process)

    def end_all_but(self, processes):
        """Ends the programs that are not among these."""
        self._processes.end_all_but(processes)

    @property
    def running(self):
        """The programs that were started and not ended, in order."""
        return self._processes.running

    def run(self, arguments, *, input=None, environment=None, check=True, timeout=TIMEOUT):
        """Runs a program to its end and returns its subprocess.CompletedProcess, in bytes."""
        finished = subprocess.run(arguments, env={**self.environment, **(environment or {})},
                                  input=input, capture_output=True, timeout=timeout, check=False)
        if check and finished.returncode != 0:
            raise AssertionError("{} ended with {}: {}".format(
                " ".join(arguments), finished.returncode, finished.stderr.decode(errors="replace")))
        return finished

    def bus_name_exists(self, name):
        answer = self.run(["dbus-send", "--print-reply", "--dest=org.freedesktop.DBus", "/",
                           "org.freedesktop.DBus.NameHasOwner", "string:" + name])
        return b"boolean true" in answer.stdout
