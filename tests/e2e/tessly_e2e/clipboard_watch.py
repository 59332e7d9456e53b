"""Counts how often the clipboard of an X server changes hands, whoever takes it."""

import Xlib.display
from Xlib.ext import xfixes


class ClipboardWatch:
    """Use it in a `with`."""

    def __init__(self, desktop):
        self._display = Xlib.display.Display(desktop.environment["DISPLAY"])
        self._display.xfixes_query_version()
        root = self._display.screen().root
        self._display.xfixes_select_selection_input(
            root, self._display.intern_atom("CLIPBOARD"), xfixes.XFixesSetSelectionOwnerNotifyMask)
        self._display.sync()
        self._changes = 0

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self._display.close()

    def changes(self):
        self._display.sync()
        while self._display.pending_events():
            self._display.next_event()
            self._changes += 1
        return self._changes
