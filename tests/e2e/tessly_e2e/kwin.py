"""The KDE Plasma desktop's compositor, without a screen."""

import os
import shutil

from .keyboard import Keyboard
from .processes import read_log
from .tessly import program as program_of_tests
from .waiting import wait_until
from .wayland_clipboard import WaylandClipboard
from .wayland_session import Toplevel, Toplevels, WaylandSession

_LAYOUTS = """[Layout]
Use=true
LayoutList={}
VariantList={}
Options={}
ResetOldOptions=true
"""

# What Plasma brings along: earlier versions of its libraries know no program that is in no menu.
_MENU = """<!DOCTYPE Menu PUBLIC "-//freedesktop//DTD Menu 1.0//EN"
  "http://www.freedesktop.org/standards/menu-spec/menu-1.0.dtd">
<Menu><Name>Applications</Name><DefaultAppDirs/><Include><All/></Include></Menu>
"""

_ACTIVE = 1 << 0
_MINIMIZED = 1 << 1


class FakeKeyboard(Keyboard):
    """Keys by the interface with which KWin lets programs it trusts press them."""

    def __init__(self, connection):
        self._connection = connection
        self._input = connection.bind("org_kde_kwin_fake_input", 4)
        self._input.authenticate("a hand", "tests")
        connection.roundtrip()

    def _send(self, code, is_down):
        self._input.keyboard_key(code - 8, int(is_down))
        self._connection.roundtrip()


class FakePointer:
    def __init__(self, connection):
        self._connection = connection
        self._input = connection.bind("org_kde_kwin_fake_input", 4)
        self._input.authenticate("a hand", "tests")

    def move(self, x, y):
        self._input.pointer_motion_absolute(x * 256, y * 256)
        self._connection.roundtrip()

    def click(self, x, y, times=1):
        left = 0x110
        self.move(x, y)
        for _ in range(times):
            self._input.button(left, 1)
            self._input.button(left, 0)
        self._connection.roundtrip()


class PlasmaWindows(Toplevels):
    """The windows as a task bar sees them."""

    def __init__(self, connection):
        self._connection = connection
        self._windows = {}
        self._management = connection.bind("org_kde_plasma_window_management", 13)
        self._management.on["window_with_uuid"] = lambda number, uuid: self._add(
            number, self._management.get_window_by_uuid(uuid))
        connection.roundtrip()

    def _add(self, number, window):
        facts = {"app_id": "", "title": "", "state": 0, "pid": None, "place": (0, 0, 0, 0),
                 "window": window}
        self._windows[number] = facts
        window.on.update({
            "title_changed": lambda title: facts.update(title=title),
            "app_id_changed": lambda app_id: facts.update(app_id=app_id),
            "state_changed": lambda state: facts.update(state=state),
            "pid_changed": lambda pid: facts.update(pid=pid),
            "geometry": lambda *place: facts.update(place=place),
            "unmapped": lambda: self._windows.pop(number, None),
        })

    def all(self):
        self._connection.roundtrip()
        self._connection.roundtrip()  # for windows that the first one told of
        return [Toplevel(number, facts["app_id"], facts["title"], facts["pid"], *facts["place"],
                         bool(facts["state"] & _ACTIVE), True)
                for number, facts in self._windows.items() if not facts["state"] & _MINIMIZED]

    def activate(self, window):
        self._windows[window]["window"].set_state(_ACTIVE, _ACTIVE)
        self._connection.roundtrip()


class KWin(WaylandSession):
    """`trusting=False` leaves the interfaces for task bars and for pressing keys to the programs
    that KWin trusts, since an installed desktop entry asks for that; the tests then have neither
    keyboard nor windows. With `installed` Tessly is one of those, installed as its package does it.
    `keyboard` is what the settings of the desktop say of layouts: their names, variants, options."""

    name = "KDE"
    # Whether permissions are checked although the tests have both.
    checks_permissions = False
    arguments = ("--no-lockscreen", "--no-global-shortcuts")

    def __init__(self, *, bus=True, size=(1280, 800), trusting=True, installed=False,
                 keyboard=None):
        super().__init__(bus=bus)
        self.size = size
        self.tells_windows = trusting
        self.keyboard = self.windows = None
        self._installed = None
        self._is_package = installed
        self._layouts = keyboard

    def _start_compositor(self):
        folder = self.path("compositor")
        # A copy has none of the capabilities of the original, which not every user may use.
        program = os.path.join(folder, "kwin_wayland")
        shutil.copyfile("/usr/bin/kwin_wayland", program)
        os.chmod(program, 0o755)
        ready = os.path.join(folder, "ready")
        report = os.path.join(folder, "report")
        with open(report, "w") as file:
            file.write(f'#!/bin/sh\necho "$DISPLAY" > {ready}.part && mv {ready}.part {ready}\n')
        os.chmod(report, 0o755)
        width, height = map(str, self.size)
        environment = {"XDG_RUNTIME_DIR": folder, "KWIN_COMPOSE": "Q",
                       "XDG_CURRENT_DESKTOP": "KDE", "KDE_FULL_SESSION": "true",
                       "XDG_CONFIG_HOME": folder, "XDG_CACHE_HOME": folder, "HOME": folder,
                       "XDG_DATA_HOME": os.path.join(folder, "data")}
        if self._layouts is not None:
            with open(os.path.join(folder, "kxkbrc"), "w") as file:
                file.write(_LAYOUTS.format(*self._layouts))
        os.mkdir(os.path.join(folder, "menus"))
        with open(os.path.join(folder, "menus", "applications.menu"), "w") as file:
            file.write(_MENU)
        if self._is_package:
            self._install_package(program_of_tests())
            environment["XDG_DATA_DIRS"] = self.path("usr", "share") + ":/usr/share"
        if self.tells_windows and not self.checks_permissions:
            environment["KWIN_WAYLAND_NO_PERMISSION_CHECKS"] = "1"
        self._prepare(environment)
        self.compositor = self.start(
            [program, "--virtual", "--width", width, "--height", height, "--socket", "kwin",
             *self.arguments, "--xwayland", report],
            environment=environment, name="kwin")
        wait_until(lambda: os.path.exists(ready) or self.compositor.poll() is not None,
                   lambda: "KWin starts: " + read_log(self.compositor))
        if self.compositor.poll() is not None:
            raise AssertionError("KWin cannot run here: " + read_log(self.compositor))
        with open(ready) as file:
            self._use(os.path.join(folder, "kwin"), file.read().strip())
        self.clipboard = WaylandClipboard(self)
        if self.tells_windows:
            # From the version on that tells of modifiers it does not lift them.
            _, version = self.connect().globals["org_kde_kwin_keystate"]
            self.lifts_modifiers = version < 5
        if self.tells_windows:
            self.windows = PlasmaWindows(self.connect())
            self.keyboard = FakeKeyboard(self.connect())
            self.pointer = FakePointer(self.connect())

    def _prepare(self, environment):
        """Called with what KWin finds in its environment before it starts."""

    def _install_package(self, program):
        build = os.path.join(os.path.dirname(program), "..")
        if not os.path.exists(os.path.join(build, "cmake_install.cmake")):
            self._installed = program  # as it is
            return
        self.run(["cmake", "--install", build, "--strip", "--prefix", self.path("usr")])
        self._installed = self.path("usr", "bin", "tessly")

    def _install_path(self, name):
        return self.path("bin", name)

    def install(self, program):
        """Without what debuggers need, as packages have it: KWin reads every program that connects
        to it from end to end, twice, and does nothing else meanwhile."""
        if self._installed is None:
            self._installed = self._install_path(os.path.basename(program))
            os.mkdir(self.path("bin"))
            self.run(["strip", "-o", self._installed, program])
            os.symlink(os.path.join(os.path.dirname(program), "..", "lib"), self.path("lib"))
        return self._installed
