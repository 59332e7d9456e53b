"""Copying and reading as other programs do it, on Wayland."""

import os
import subprocess
import sys

from .clipboard import Offer
from .waiting import wait_until
from .wayland import Selection

_HERE = os.path.dirname(os.path.abspath(__file__))


class WaylandClipboard:
    """The clipboard of a desktop that has data control. Each copy is a program of its own, running
    until it loses the clipboard."""

    def __init__(self, desktop):
        self._desktop = desktop
        self._number = 0
        self.selection = Selection(desktop.connect())

    def file(self, content):
        """Puts the bytes into a new file and returns its path."""
        self._number += 1
        path = self._desktop.path("files", f"copy-{self._number}")
        with open(path, "wb") as file:
            file.write(content)
        return path

    def copy(self, content, type=None, *options, environment=None):
        """Copies with wl-copy: text, or bytes of one type. Returns its process."""
        if isinstance(content, str):
            content = content.encode()
        if type is not None:
            options = ("--type", type, *options)
        before = self.selection.count()
        with open(self.file(content), "rb") as file:
            process = self._desktop.start(["wl-copy", "--foreground", *options], stdin=file,
                                          environment=environment)
        wait_until(lambda: self.selection.count() > before, "wl-copy has the clipboard")
        return process

    def offer(self, flavours, *behaviour):
        """Copies several types at once, with the owner that can be made to misbehave: `behaviour`
        are options of wayland_owner.py."""
        options = []
        for name, content in flavours.items():
            options += ["--type", name, self.file(content)]
        return WaylandOffer(self._desktop, [*options, *behaviour])

    def targets(self):
        """What is offered; nothing when the clipboard is empty."""
        return self.selection.types()

    def read(self, type="text/plain;charset=utf-8", timeout=5):
        """The content, as another program gets it; None when there is none."""
        try:
            answer = self._desktop.run(["wl-paste", "--no-newline", "--type", type], check=False,
                                       timeout=timeout)
        except subprocess.TimeoutExpired:
            return None
        return answer.stdout if answer.returncode == 0 else None


class WaylandOffer(Offer):
    """An owner of the clipboard, and what it was asked for."""

    def _start(self, options):
        return self._desktop.start(
            [sys.executable, "-m", f"{__package__}.wayland_owner", *options], name="owner",
            environment={"PYTHONPATH": os.path.dirname(_HERE), "PYTHONDONTWRITEBYTECODE": "1"})

    def content_requests(self):
        """The types that were asked for; types are told without asking."""
        return self.requests()
