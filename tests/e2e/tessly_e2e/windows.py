"""The windows of a test's desktop."""

from collections import namedtuple

from Xlib import X, error
from Xlib.protocol import event

# Geometry on the screen, without the frame.
Window = namedtuple("Window", "id instance class_name title pid x y width height")


class Windows:
    def __init__(self, display):
        self._display = display
        self._root = display.screen().root

    @property
    def is_managed(self):
        return bool(self._property(self._root, "_NET_SUPPORTING_WM_CHECK"))

    @property
    def active(self):
        """The id of the active window; None when nothing is in front."""
        value = self._property(self._root, "_NET_ACTIVE_WINDOW")
        return value[0] if value and value[0] else None

    def shadow(self, window):
        """How far a window says that it reaches beyond what is seen of it as a window: left, right, top
        and bottom. None if it says nothing."""
        value = self._property(self._display.create_resource_object("window", window),
                               "_GTK_FRAME_EXTENTS")
        return tuple(value) if value else None

    @property
    def focused(self):
        """The id of the window that the keys go to; None for none and for the root."""
        focus = self._display.get_input_focus().focus
        return focus.id if hasattr(focus, "id") and focus.id != self._root.id else None

    def visible(self, *, pid=None, class_name=None):
        """The mapped top-level windows of a program, bottom to top."""
        found = []
        self._collect(self._root, 0, found)
        return [window for window in found
                if (pid is None or window.pid == pid)
                and (class_name is None or window.class_name == class_name)]

    def top(self, *, pid):
        """The topmost window of a program, or None."""
        windows = self.visible(pid=pid)
        return windows[-1] if windows else None

    def activate(self, window):
        """What a task bar does with a window."""
        self._ask(window, "_NET_ACTIVE_WINDOW", [2, X.CurrentTime, 0, 0, 0])

    def close(self, window):
        """What the close button of a window does."""
        self._ask(window, "_NET_CLOSE_WINDOW", [X.CurrentTime, 2, 0, 0, 0])

    def _ask(self, window, request, data):
        message = event.ClientMessage(
            window=self._display.create_resource_object("window", window),
            client_type=self._display.get_atom(request), data=(32, data))
        self._root.send_event(message,
                              event_mask=X.SubstructureRedirectMask | X.SubstructureNotifyMask)
        self._display.sync()

    def _collect(self, parent, depth, found):
        try:
            children = parent.query_tree().children
        except error.XError:
            return
        for child in children:
            try:
                attributes = child.get_attributes()
                if attributes.map_state != X.IsViewable or attributes.win_class != X.InputOutput:
                    continue
                names = child.get_wm_class()
                if names:
                    found.append(self._describe(child, names))
                elif depth < 2:  # a frame of the window manager
                    self._collect(child, depth + 1, found)
            except error.XError:
                continue  # it went away meanwhile

    def _describe(self, window, names):
        geometry = window.get_geometry()
        place = self._root.translate_coords(window, 0, 0)
        pid = self._property(window, "_NET_WM_PID")
        title = self._property(window, "_NET_WM_NAME")
        return Window(window.id, names[0], names[1],
                      bytes(title).decode(errors="replace") if title else (window.get_wm_name() or ""),
                      pid[0] if pid else None, place.x, place.y, geometry.width, geometry.height)

    def _property(self, window, name):
        value = window.get_full_property(self._display.get_atom(name), X.AnyPropertyType)
        return value.value if value else None
