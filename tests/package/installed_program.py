#!/usr/bin/python3
"""Goes through the life of the package in a root that has nothing but what it depends on:

    installed_program.py ROOT PROGRAM BEFORE PACKAGE

ROOT is the root, in which PROGRAM runs the installed program, whatever folder it is called in. BEFORE and
PACKAGE are the packages of two versions. Everything that surrounds the program (X server or compositor,
programs that copy, the test itself) stays outside, so that nothing that a test needs stands in for what
the package forgets. Prints a table; ends with 0 if everything held.

script/test-package calls it.
"""

import json
import os
import subprocess
import sys
import time

HERE = os.path.dirname(os.path.abspath(__file__))
CHECKOUT = os.path.dirname(os.path.dirname(HERE))
sys.path.insert(0, os.path.join(CHECKOUT, "tests", "e2e"))
sys.dont_write_bytecode = True

ROOT, PROGRAM, BEFORE, PACKAGE = sys.argv[1:]
os.environ["TESSLY_PROGRAM"] = PROGRAM

import dbus  # noqa: E402 - the paths come first
import dbus.bus  # noqa: E402

from tessly_e2e import Desktop, Tessly, wait_until  # noqa: E402
from tessly_e2e.editors import Terminal, WaylandTerminal  # noqa: E402
from tessly_e2e.processes import read_log  # noqa: E402
from tessly_e2e.sway import Sway  # noqa: E402
from tessly_e2e.tessly import BUS_NAME  # noqa: E402

NOT_RUNNING = 3
TEXTS = ["The first of all", "https://www.debian.org/", "Lavender needs sun\nand poor soil"]
TOUR_LIMIT = 300.0
INSTALL_LIMIT = 900.0


def expect(condition, failure):
    if not condition:
        raise AssertionError(failure)


def in_root(*arguments, check=True):
    """Runs a program in the root and returns what it printed."""
    ran = subprocess.run(
        ["chroot", ROOT, "env", "-i", "PATH=/usr/sbin:/usr/bin:/sbin:/bin", "HOME=/root", "LANG=C.UTF-8",
         "DEBIAN_FRONTEND=noninteractive", *arguments],
        stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
        timeout=INSTALL_LIMIT, check=False)
    output = ran.stdout.decode(errors="replace")
    expect(not check or ran.returncode == 0,
           f"{' '.join(arguments)} ended with {ran.returncode}:\n{output}")
    return output


def apt(*arguments):
    return in_root("apt-get", "--yes", "--no-install-recommends", "-o", "Dpkg::Use-Pty=0", *arguments)


def installed_version():
    state = in_root("dpkg-query", "--show", "--showformat=${db:Status-Status} ${Version}", "tessly",
                    check=False)
    return state.split()[1] if state.startswith("installed ") else None


def version_of(package):
    return subprocess.run(["dpkg-deb", "--field", package, "Version"], check=True,
                          capture_output=True).stdout.decode().strip()


def path_in_root(package):
    """Where the root sees a package."""
    place = os.path.join(ROOT, "srv", os.path.basename(package))
    subprocess.run(["cp", package, place], check=True)
    return "/srv/" + os.path.basename(package)


def files_of_the_package():
    """Every file of the package, without folders."""
    paths = in_root("dpkg-query", "--listfiles", "tessly").splitlines()
    return [path for path in paths if not os.path.isdir(ROOT + path) or os.path.islink(ROOT + path)]


class BusInRoot(Desktop):
    """A desktop whose session bus runs in the root and knows the services there."""

    bus_program = ["/usr/sbin/chroot", ROOT, "dbus-daemon"]

    def bus_services(self):
        return "/usr/share/dbus-1/services"


class Walk:
    """The steps, in their order; each returns what there is to tell."""

    def __init__(self, desktop):
        self.desktop = desktop
        self.tessly = Tessly(desktop)
        self.kept = None

    def history(self):
        return json.loads(self.tessly.command("list", "--json").stdout)

    def expect_kept(self):
        """That the history is as it was, whatever happened to the package."""
        found = self.tessly.history.clips()
        expect(found == self.kept, f"the history has changed: {found}, not {self.kept}")
        problems = self.tessly.history.problems(self.desktop.path("tmp", "check"))
        expect(not problems, f"the history is damaged: {problems}")

    def install(self):
        apt("install", path_in_root(BEFORE))
        expect(installed_version() == version_of(BEFORE), "it is not installed")
        expect(not in_root("dpkg", "--verify", "tessly"), "a file is not as in the package")
        return f"{version_of(BEFORE)}, {len(files_of_the_package())} files"

    def is_complete(self):
        libraries = ["/usr/bin/tessly", *(path for path in files_of_the_package() if path.endswith(".so"))]
        expect(len(libraries) > 1, f"the package has no library: {libraries}")
        missing = [line for path in libraries for line in in_root("ldd", path).splitlines()
                   if "not found" in line]
        expect(not missing, f"libraries are missing: {missing}")
        programs = 0
        for path in (f"applications/{BUS_NAME}.desktop", f"dbus-1/services/{BUS_NAME}.service"):
            with open(os.path.join(ROOT, "usr/share", path)) as file:
                for line in file:
                    if line.startswith("Exec="):
                        expect(line[5:].split()[0] == "/usr/bin/tessly", f"{path}: {line}")
                        programs += 1
        expect(programs == 6, f"{programs} lines start the program")
        with open(os.path.join(ROOT, "usr/lib/systemd/user/tessly.service")) as file:
            expect("ExecStart=/usr/bin/tessly\n" in file.read(), "the user unit starts something else")
        enabled = [os.path.join(folder, name) for folder, _, names in os.walk(os.path.join(ROOT, "etc"))
                   for name in names if name == "tessly.service"]
        expect(not enabled, f"the user unit is enabled: {enabled}")
        return f"{len(libraries)} programs and libraries find theirs, the unit is not enabled"

    def copies_and_pastes(self):
        status = self.tessly.command("pause", check=False).returncode
        expect(status == NOT_RUNNING, f"a command without Tessly ends with {status}")
        with self.tessly:
            for text in TEXTS:
                self.desktop.clipboard.copy(text)
                self.tessly.history.wait_for_text(text)
            self.tessly.command("pin", "3")
            listed = [entry["preview"] for entry in self.history()]
            expect(listed[0] == TEXTS[0], f"listed: {listed}")
            terminal = Terminal(self.desktop).start()
            panel = self.tessly.open_panel()
            panel.search("lavender")
            self.desktop.keyboard.press("Return")
            terminal.wait_for_text(TEXTS[2])
            terminal.close()
            self.tessly.command("quit")
            wait_until(lambda: not self.tessly.is_running(), "tessly ends")
        self.kept = self.tessly.history.clips()
        expect(len(self.kept) == len(TEXTS), f"recorded: {self.kept}")
        return f"{len(TEXTS)} copies, listed, searched in the panel, pasted"

    def tour(self):
        ran = subprocess.run(["/usr/bin/python3", os.path.join(CHECKOUT, "script", "tour.py")],
                             stdout=subprocess.PIPE, stderr=subprocess.STDOUT, timeout=TOUR_LIMIT,
                             check=False)
        output = ran.stdout.decode(errors="replace")
        expect(ran.returncode == 0, output)
        return output.strip().splitlines()[-1]

    def on_wayland(self):
        text = "copied on Wayland"
        with Sway() as desktop, Tessly(desktop) as tessly:
            status = json.loads(tessly.command("status", "--json").stdout)
            expect(status["session"] == "wayland", f"the session is {status}")
            terminal = WaylandTerminal(desktop).start()
            desktop.clipboard.copy(text)
            tessly.history.wait_for_text(text)
            tessly.open_panel()
            desktop.keyboard.press("Return")
            terminal.wait_for_text(text)
        return "copied, listed in the panel, pasted"

    def upgrade(self):
        """While the program runs, as it does wherever it is used."""
        text = "during the upgrade"
        with self.tessly:
            apt("install", path_in_root(PACKAGE))
            expect(installed_version() == version_of(PACKAGE), "it is not the new version")
            self.expect_kept()
            self.desktop.clipboard.copy(text)
            self.tessly.history.wait_for_text(text)
            self.tessly.open_panel()
        self.kept = self.tessly.history.clips()
        return f"{version_of(BEFORE)} → {version_of(PACKAGE)}, the one that runs goes on, the history as it was"

    def runs_after_the_upgrade(self):
        text = "after the upgrade"
        with self.tessly:
            expect([entry["id"] for entry in self.history()] == [clip.id for clip in self.kept],
                   "other entries are listed")
            self.desktop.clipboard.copy(text)
            self.tessly.history.wait_for_text(text)
            self.tessly.open_panel()
        self.kept = self.tessly.history.clips()
        return f"{len(self.kept)} entries, the panel opens"

    def is_started_by_the_bus(self):
        # Only now: with it come libraries that the program may need.
        apt("install", "dbus-daemon")
        with BusInRoot() as desktop:
            tessly = Tessly(desktop)
            tessly.write_settings()
            bus = dbus.bus.BusConnection(desktop.environment["DBUS_SESSION_BUS_ADDRESS"])
            daemon = dbus.Interface(
                bus.get_object("org.freedesktop.DBus", "/org/freedesktop/DBus"), "org.freedesktop.DBus")
            daemon.UpdateActivationEnvironment(dbus.Dictionary(desktop.environment, signature="ss"))
            expect(BUS_NAME in daemon.ListActivatableNames(), "the bus does not know the service")
            for command in ("show", "toggle", "pause", "resume", "quit"):
                status = tessly.command(command, check=False).returncode
                expect(status == NOT_RUNNING, f"{command} ended with {status}")
            expect(not daemon.NameHasOwner(BUS_NAME), "a command has started the program")
            try:
                bus.get_object(BUS_NAME, "/com/brackmoor/tessly", introspect=False).Activate(
                    dbus.Dictionary(signature="sv"), dbus_interface="org.freedesktop.Application")
            except dbus.DBusException as error:
                # Where what it starts leaves its log.
                raise AssertionError(f"{error}\n{read_log(desktop.bus)}") from error
            pid = int(daemon.GetConnectionUnixProcessID(BUS_NAME))
            wait_until(lambda: desktop.windows.visible(pid=pid), "the panel is open")
            tessly.command("quit")
            bus.close()
        return "Activate opens the panel; commands end with 3 and start nothing"

    def remove(self):
        files = files_of_the_package()
        apt("remove", "tessly")
        left = [path for path in files if os.path.lexists(ROOT + path)]
        expect(not left, f"files are left: {left}")
        self.expect_kept()
        return f"{len(files)} files gone, the history as it was"

    def purge(self):
        apt("purge", "tessly")
        expect(installed_version() is None, "it is still there")
        state = in_root("dpkg-query", "--show", "tessly", check=False)
        expect("no packages found" in state, f"dpkg still knows it: {state}")
        self.expect_kept()
        return "nothing left, the history as it was"

    def install_again(self):
        apt("install", path_in_root(PACKAGE))
        expect([entry["id"] for entry in self.history()] == [clip.id for clip in self.kept],
               "other entries are listed")
        return f"lists the {len(self.kept)} entries"


STEPS = [
    ("install", Walk.install),
    ("what it depends on is there", Walk.is_complete),
    ("copy, list, panel, paste, quit", Walk.copies_and_pastes),
    ("the tour", Walk.tour),
    ("on Wayland (sway)", Walk.on_wayland),
    ("upgrade while it runs", Walk.upgrade),
    ("start after the upgrade", Walk.runs_after_the_upgrade),
    ("started by the session bus", Walk.is_started_by_the_bus),
    ("remove", Walk.remove),
    ("purge", Walk.purge),
    ("install again", Walk.install_again),
]


def main():
    outcomes = []
    failure = None
    with Desktop() as desktop:
        walk = Walk(desktop)
        for name, step in STEPS:
            if failure is not None:
                outcomes.append((name, "not tried", "", 0))
                continue
            start = time.monotonic()
            try:
                outcomes.append((name, "held", step(walk), time.monotonic() - start))
            except (AssertionError, RuntimeError, OSError, subprocess.SubprocessError,
                    dbus.DBusException) as error:
                failure = error
                outcomes.append((name, "FAILED", "", time.monotonic() - start))
    if failure is not None:
        print(f"{type(failure).__name__}: {failure}\n", file=sys.stderr)
    for name, outcome, told, seconds in outcomes:
        print(f"{name:32} {outcome:10} {seconds:4.0f} s  {told}".rstrip())
    return 0 if failure is None else 1


if __name__ == "__main__":
    sys.exit(main())
