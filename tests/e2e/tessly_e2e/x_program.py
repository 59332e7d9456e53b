"""A program of X11 that does, the moment it is told to, what ready programs do in their own time."""

import os

import Xlib.display
from Xlib import X, Xatom
from Xlib.protocol import event

from .serving import ServingThread


class XProgram:
    """It copies within a millisecond, and shows and hides a window. Use it in a `with`.

    Times are the X server's, in milliseconds.
    """

    # What X11 programs offer a text as.
    TEXT = "UTF8_STRING"

    def __init__(self, desktop):
        self._desktop = desktop
        self._display = Xlib.display.Display(desktop.environment["DISPLAY"])
        self._display.set_error_handler(lambda *_: None)
        self._root = self._display.screen().root
        self._clipboard = self._display.intern_atom("CLIPBOARD")
        self._targets = self._display.intern_atom("TARGETS")
        self._stamp = self._display.intern_atom("PROGRAM_TIME")
        self._owner = self._new_window()
        self._shown = None
        self._values = {}
        self._names = {}
        self._requests = []
        self._losses = 0
        self._serving = ServingThread(self._display, self._dispatch)

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self._serving.end()
        try:
            self._display.close()
        except Exception:  # noqa: BLE001 - a server that died in the test has nothing to close
            pass

    # The clipboard

    def copy(self, text):
        self.offer({self.TEXT: text.encode()})

    def offer(self, flavours, time=X.CurrentTime):
        """Takes the clipboard with this content, by target; returns once the server knows."""
        self._serving.do(lambda: self._claim(flavours, time))

    def offer_in_a_row(self, several):
        """Takes the clipboard again and again without waiting in between."""
        def claim_all():
            for flavours in several:
                self._claim(flavours, X.CurrentTime, wait=False)
            self._display.sync()
        self._serving.do(claim_all)

    def offer_from_a_new_window(self, flavours):
        """In one step that no other program can come into: the window that owns the clipboard goes,
        and another one takes it."""
        def move():
            self._owner.destroy()
            self._owner = self._new_window()
            self._claim(flavours, X.CurrentTime)
        self._serving.do(move)

    def leave_clipboard(self):
        """The window that owns the clipboard goes."""
        def leave():
            self._owner.destroy()
            self._owner = self._new_window()
            self._display.sync()
        self._serving.do(leave)

    def time(self):
        """The server's time now, as an event tells it."""
        def ask():
            self._owner.change_attributes(event_mask=X.PropertyChangeMask)
            self._owner.change_property(self._stamp, Xatom.INTEGER, 32, [], X.PropModeAppend)
            while True:
                got = self._display.next_event()
                if got.type == X.PropertyNotify and got.atom == self._stamp:
                    self._owner.change_attributes(event_mask=X.NoEventMask)
                    return got.time
                self._handle(got)
        return self._serving.do(ask)

    def owns_clipboard(self):
        return self._serving.do(
            lambda: self._display.get_selection_owner(self._clipboard) == self._owner)

    def losses(self):
        """How often another program has taken the clipboard from it."""
        return self._serving.do(lambda: self._losses)

    def requests(self):
        """The targets asked for so far, in order."""
        return self._serving.do(lambda: list(self._requests))

    def content_requests(self):
        return [name for name in self.requests() if name != "TARGETS"]

    def forget_requests(self):
        self._serving.do(self._requests.clear)

    # The window

    def show(self, class_name, instance="window"):
        """Shows a window of these names, which gets the keys."""
        def show():
            self._shown = self._root.create_window(60, 60, 200, 100, 0, X.CopyFromParent,
                                                   background_pixel=0xffffff)
            self._shown.set_wm_class(instance, class_name)
            self._shown.set_wm_name("a window")
            self._shown.set_wm_hints(flags=1, input=1, initial_state=1)
            self._shown.change_property(self._display.intern_atom("_NET_WM_PID"),
                                        Xatom.CARDINAL, 32, [os.getpid()])
            self._shown.map()
            self._display.sync()
        self._serving.do(show)

    def is_in_front(self):
        return self._desktop.windows.active == self._shown.id

    def rename(self, class_name, instance="window"):
        """Gives the window other names."""
        def rename():
            self._shown.set_wm_class(instance, class_name)
            self._display.sync()
        self._serving.do(rename)

    def hide(self):
        def hide():
            self._shown.destroy()
            self._display.sync()
        self._serving.do(hide)

    # On the thread

    def _new_window(self):
        return self._root.create_window(0, 0, 1, 1, 0, X.CopyFromParent)

    def _claim(self, flavours, time, wait=True):
        self._values = dict(flavours)
        self._owner.set_selection_owner(self._clipboard, time)
        if wait:
            self._display.sync()

    def _dispatch(self):
        while self._display.pending_events():
            self._handle(self._display.next_event())

    def _handle(self, got):
        if got.type == X.SelectionClear:
            self._losses += 1
        elif got.type == X.SelectionRequest:
            self._answer(got)

    def _answer(self, request):
        name = self._names.get(request.target)
        if name is None:
            name = self._names[request.target] = self._display.get_atom_name(request.target)
        self._requests.append(name)
        kept = request.property or request.target
        if name == "TARGETS":
            atoms = [self._targets] + [self._display.intern_atom(each) for each in self._values]
            request.requestor.change_property(kept, Xatom.ATOM, 32, atoms)
        elif name in self._values:
            request.requestor.change_property(kept, request.target, 8, self._values[name])
        else:
            kept = X.NONE
        request.requestor.send_event(event.SelectionNotify(
            time=request.time, requestor=request.requestor, selection=request.selection,
            target=request.target, property=kept))
        self._display.flush()
