"""Copying and reading as other programs do it."""

import os
import subprocess
import sys

from .processes import read_log
from .waiting import wait_until

OWNER = os.path.normpath(os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "..",
                                      "desktop", "owner.py"))


class Clipboard:
    """CLIPBOARD of one desktop. Each copy is a program of its own, running until it loses it."""

    def __init__(self, desktop):
        self._desktop = desktop
        self._number = 0

    def file(self, content):
        """Puts the bytes into a new file and returns its path."""
        self._number += 1
        path = self._desktop.path("files", f"copy-{self._number}")
        with open(path, "wb") as file:
            file.write(content)
        return path

    def copy(self, content, target=None):
        """Copies with xclip: text, or bytes of one target. Returns its process."""
        if isinstance(content, str):
            content = content.encode()
        options = ["-t", target] if target else []
        return self._copy_with(["xclip", "-quiet", "-selection", "clipboard", *options, "-i"],
                               content)

    def copy_with_xsel(self, text):
        return self._copy_with(["xsel", "--clipboard", "--input", "--nodetach"], text.encode())

    def _copy_with(self, arguments, content):
        before = self.owner()
        with open(self.file(content), "rb") as file:
            process = self._desktop.start(arguments, stdin=file)
        wait_until(lambda: self.owner() not in (None, before), f"{arguments[0]} owns the clipboard")
        return process

    def offer(self, flavours, *behaviour):
        """Copies several targets at once, with the owner that can be made to misbehave: `behaviour`
        are options of tests/desktop/owner.py."""
        options = []
        for target, content in flavours.items():
            options += ["--target", target, "file:@" + self.file(content)]
        return Offer(self._desktop, [*options, *behaviour])

    def owner(self):
        """The window that owns the clipboard, or None."""
        display = self._desktop.display
        owner = display.get_selection_owner(display.get_atom("CLIPBOARD"))
        return owner.id if owner else None

    def targets(self, timeout=5):
        """What is offered; nothing when there is no owner or it does not answer."""
        answer = self.read("TARGETS", timeout)
        return answer.decode().split() if answer else []

    def read(self, target="UTF8_STRING", timeout=5):
        """The content, as another program gets it; None when there is none."""
        try:
            answer = self._desktop.run(
                ["xclip", "-selection", "clipboard", "-o", "-t", target], check=False,
                timeout=timeout)
        except subprocess.TimeoutExpired:
            return None
        return answer.stdout if answer.returncode == 0 else None


class Offer:
    """An owner of the clipboard, and what it was asked for."""

    def __init__(self, desktop, options):
        self._desktop = desktop
        self.process = self._start(options)
        wait_until(lambda: "owns" in self._lines() or self.has_ended(), "the owner starts")
        if "owns" not in self._lines():
            raise AssertionError("the owner could not start: " + read_log(self.process))

    def _start(self, options):
        return self._desktop.start([sys.executable, OWNER, *options], name="owner")

    def _lines(self):
        with open(self.process.output_path) as file:
            return file.read().splitlines()

    def requests(self):
        """The targets asked for so far, in order."""
        return [line.split(" ", 1)[1] for line in self._lines() if line.startswith("request ")]

    def content_requests(self):
        """The requests that ask for content."""
        return [target for target in self.requests() if target not in ("TARGETS", "TIMESTAMP")]

    def wait_for_request(self, target):
        wait_until(lambda: target in self.requests(), f"the owner is asked for {target}")

    def wait_until_served(self, target):
        wait_until(lambda: any(line.startswith(f"served {target} ") for line in self._lines()),
                   f"the owner has answered {target}")

    def has_ended(self):
        return self.process.poll() is not None

    def end(self):
        self._desktop.end(self.process)
