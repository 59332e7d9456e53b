"""A program of Wayland that does, the moment it is told to, what ready programs do in their own
time."""

import os
import threading

from .serving import ServingThread
from .wayland import Connection, PlainWindow


class WaylandProgram:
    """It copies within a millisecond, and shows and hides a window. Use it in a `with`."""

    # What Wayland programs offer a text as.
    TEXT = "text/plain;charset=utf-8"

    def __init__(self, desktop):
        self._desktop = desktop
        self._connection = Connection(desktop.socket)
        self._manager = self._connection.bind_data_control(1)
        self._device = self._manager.get_data_device(self._connection.bind("wl_seat", 1))
        self._device.on["data_offer"] = self._offered
        self._device.on["selection"] = self._selected
        self._types = {}
        self._source = None
        self._cancelled_sources = set()
        self._waits_for = None
        self._requests = []
        self._losses = 0
        self._window = None
        self._connection.roundtrip()
        self._serving = ServingThread(self._connection, lambda: self._connection.roundtrip())

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self._serving.end()
        self.hide()
        self._connection.close()

    # The clipboard

    def copy(self, text):
        self.offer({self.TEXT: text.encode()})

    def offer(self, flavours):
        """Takes the clipboard with this content, by type; returns once the compositor knows."""
        self._serving.do(lambda: self._claim(flavours))

    def offer_in_a_row(self, several):
        """Takes the clipboard again and again without waiting in between."""
        def claim_all():
            with self._connection.in_one_step():
                for flavours in several:
                    self._claim(flavours, wait=False)
            self._connection.roundtrip()
        self._serving.do(claim_all)

    def offer_anew(self, flavours):
        """In one step: what it offered is withdrawn, and this offered."""
        def move():
            with self._connection.in_one_step():
                self._source.destroy()
                self._cancelled_sources.add(self._source)
                self._claim(flavours, wait=False)
            self._connection.roundtrip()
        self._serving.do(move)

    def copy_when_offered(self, type, text):
        """Copies as soon as another program offers this type."""
        self._serving.do(lambda: setattr(self, "_waits_for", (type, {self.TEXT: text.encode()})))

    def owns_clipboard(self):
        return self._serving.do(lambda: self._source is not None)

    def losses(self):
        """How often another program has taken the clipboard from it."""
        return self._serving.do(lambda: self._losses)

    def requests(self):
        """The types asked for so far, in order."""
        return self._serving.do(lambda: list(self._requests))

    content_requests = requests

    # The window

    def show(self, app_id):
        """Shows a window of this application, which gets the keys."""
        self._window = Connection(self._desktop.socket)
        self._app_id = app_id
        self._plain = PlainWindow(self._window, app_id)

    def is_in_front(self):
        return any(window.is_active for window in self._desktop.windows.visible(app_id=self._app_id))

    def rename(self, app_id):
        """Gives the window another application."""
        self._plain.set_app_id(app_id)

    def hide(self):
        if self._window is not None:
            self._window.close()
            self._window = None

    # On the thread

    def _claim(self, flavours, wait=True):
        source = self._manager.create_data_source()
        values = dict(flavours)
        source.on["send"] = lambda name, pipe: self._send(values, name, pipe)
        source.on["cancelled"] = lambda: self._cancelled(source)
        for name in values:
            source.offer(name)
        self._device.set_selection(source)
        self._source = source
        if wait:
            self._connection.roundtrip()

    def _send(self, values, name, pipe):
        self._requests.append(name)

        def write():
            try:
                with os.fdopen(pipe, "wb") as file:
                    file.write(values.get(name, b""))
            except BrokenPipeError:
                pass  # the reader had enough
        threading.Thread(target=write, daemon=True).start()

    def _cancelled(self, source):
        # KWin says it more than once.
        if source in self._cancelled_sources:
            return
        self._cancelled_sources.add(source)
        source.destroy()
        if source is self._source:
            self._source = None
            self._losses += 1

    def _offered(self, offer):
        self._types[offer.number] = []
        offer.on["offer"] = self._types[offer.number].append

    def _selected(self, offer):
        types = self._types.get(offer.number, []) if offer else []
        self._types = {}
        if self._waits_for and self._waits_for[0] in types:
            flavours, self._waits_for = self._waits_for[1], None
            self._claim(flavours, wait=False)
