"""KWin as Plasma starts it: it checks permissions, and has its own global shortcuts and portal."""

import os
import sys

from services import InstalledServices
from tessly_e2e.kwin import KWin
from tessly_e2e.waiting import holds_for, wait_until

PORTAL = "org.freedesktop.impl.portal.desktop.kde"

# The tests are trusted as a task bar is: by a desktop entry that names their program.
_ENTRY = """[Desktop Entry]
Type=Application
Name=Tests
Exec={}
NoDisplay=true
X-KDE-Wayland-Interfaces=org_kde_plasma_window_management,org_kde_kwin_fake_input,org_kde_kwin_keystate
"""


class Plasma(InstalledServices, KWin):
    checks_permissions = True
    arguments = ("--no-lockscreen",)

    def _prepare(self, environment):
        entries = os.path.join(environment["XDG_DATA_HOME"], "applications")
        os.makedirs(entries)
        with open(os.path.join(entries, "tests.desktop"), "w") as file:
            file.write(_ENTRY.format(os.path.realpath(sys.executable)))
        environment["XDG_MENU_PREFIX"] = self.environment["XDG_MENU_PREFIX"] = "plasma-"
        self.run(["kbuildsycoca6"], environment=environment)
        # KWin itself may be the first to ask for the portal.
        self._tell_services(QT_QPA_PLATFORM="wayland",
                            WAYLAND_DISPLAY=self.path("compositor", "kwin"))

    def _start_compositor(self):
        super()._start_compositor()
        # Not for KWin itself, which ends where it then misses the theme of Plasma.
        self.environment.update(KDE_FULL_SESSION="true", KDE_SESSION_VERSION="6")
        self._tell_services(QT_QPA_PLATFORM="wayland")

    def agree(self):
        """Agrees to what a dialog of the portal asks for, if there is one; returns whether it was
        asked."""
        def dialog():
            return next((window for window in self.windows.all() if window.app_id == PORTAL), None)

        def is_closed():
            # It has the keys some time before it knows.
            self.keyboard.press("Return")
            return not holds_for(0.5, dialog)
        window = dialog()
        if window is None:
            return False
        wait_until(lambda: self.windows.active == window.id, "the dialog has the keys")
        wait_until(is_closed, "the dialog is closed")
        return True
