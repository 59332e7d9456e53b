"""The desktop's portal, with a user who answers as the test says.

    portal = Portal(desktop, mutter=True).start()     # before or after the program; either way
    portal.wait_for_call("Start")                     # the program asked to press keys
    portal.wait_for_keys(4)                           # and pressed some

`desktop` is anything with `start(arguments, stdin=, name=)`, `end(process)` and `environment`, in
which DBUS_SESSION_BUS_ADDRESS names the session bus; with `mutter=True`, the one that Mutter is on
(that of its dbus-run-session), as the portal presses the keys by org.gnome.Mutter.RemoteDesktop.
A session of that kind, which gives Mutter's headless seat its keyboard, is opened when access is
granted; a test that needs a keyboard before opens one of its own.

What the program saved, it may take up again: `tokens` gives those handed out, and a portal started
with `tokens=[...]` accepts them without asking. The user presses a hot key with
`press("paste-03")`; hot keys have no keys here, so their modifiers are held by the test's own
keyboard where that matters.
"""

import json
import os
import subprocess
import sys

from .processes import read_log
from .waiting import wait_until

MOCK = os.path.normpath(os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "..",
                                     "desktop", "portal.py"))

REMOTE_DESKTOP = "org.freedesktop.portal.RemoteDesktop"
GLOBAL_SHORTCUTS = "org.freedesktop.portal.GlobalShortcuts"
REGISTRY = "org.freedesktop.host.portal.Registry"


class Portal:
    """A portal on the desktop's session bus. It ends with the desktop, or with `end`."""

    def __init__(self, desktop, *, user="grant", tokens=(), without=(), mutter=False):
        """`user`: "grant", "deny", "fail" (the desktop refuses), or "hang" to leave questions open;
        `without`: interfaces that this portal lacks."""
        self._desktop = desktop
        self._arguments = ["--user", user]
        for token in tokens:
            self._arguments += ["--token", token]
        for interface in without:
            self._arguments += ["--without", interface]
        if mutter:
            self._arguments.append("--mutter")
        self.process = None

    def start(self):
        self.process = self._desktop.start([sys.executable, MOCK, *self._arguments], name="portal",
                                           stdin=subprocess.PIPE)
        wait_until(lambda: self._has("ready") or self.process.poll() is not None,
                   "the portal starts")
        if not self._has("ready"):
            raise AssertionError("the portal could not start: " + read_log(self.process))
        return self

    def end(self):
        """Ends it, as a crash would."""
        self._desktop.end(self.process)

    # What the user and the desktop do

    def set_user(self, user):
        """What the user does when asked, from now on."""
        self._steer(user=user)

    def answer(self, answer):
        """Answers the questions that a hanging user left open."""
        self._steer(answer=answer)

    def set_taken(self, *shortcuts):
        """Shortcuts, by their ids, that are not given from now on."""
        self._steer(taken=list(shortcuts))

    def press(self, shortcut):
        self.hold(shortcut)
        self.let_go(shortcut)

    def hold(self, shortcut):
        self._steer(down=shortcut)

    def let_go(self, shortcut):
        self._steer(up=shortcut)

    def revoke(self):
        """The user takes all access back."""
        self._steer(revoke=True)

    def set_scheme(self, scheme):
        """How programs are to look: 1 dark, 2 light, 0 as they like."""
        self._steer(scheme=scheme)

    # What the program did

    def calls(self, method=None):
        """The arguments of each call, in order: of one method, or as (method, arguments)."""
        calls = [(event["call"], event["arguments"]) for event in self._events() if "call" in event]
        return calls if method is None else [about for name, about in calls if name == method]

    def dialogs(self):
        """The methods by which the user was asked something, in order."""
        return [event["dialog"] for event in self._events() if "dialog" in event]

    def tokens(self):
        return [event["token"] for event in self._events() if "token" in event]

    def keys(self):
        """(evdev code, whether it was pressed) of each key."""
        return [(event["key"], event["pressed"]) for event in self._events() if "key" in event]

    def bound(self):
        """The ids of the shortcuts that the program asked for last."""
        calls = self.calls("BindShortcuts")
        return [name for name, _about in calls[-1][1]] if calls else []

    def wait_for_call(self, method, count=1):
        return wait_until(lambda: self.calls(method)[count - 1:], f"the program calls {method}")

    def wait_for_keys(self, count):
        return wait_until(lambda: len(self.keys()) >= count and self.keys(),
                          lambda: f"{count} keys; there were {self.keys()}")

    def _steer(self, **command):
        self.process.stdin.write((json.dumps(command) + "\n").encode())
        self.process.stdin.flush()

    def _has(self, name):
        return any(name in event for event in self._events())

    def _events(self):
        with open(self.process.output_path) as file:
            # The last line may be half written.
            return [json.loads(line) for line in file if line.endswith("\n")]
