"""The keyboard and the mouse of a test's desktop: what a hand does, key by key."""

from contextlib import contextmanager

from Xlib import X
from Xlib.ext import xtest

# Keys by what stands on a US keyboard, as X key codes: positions, whatever the layout makes of them.
KEYS = {
    "Escape": 9, "BackSpace": 22, "Tab": 23, "Return": 36, "Control": 37, "Shift": 50, "Alt": 64,
    "space": 65, "CapsLock": 66, "NumLock": 77, "KP_Enter": 104, "Home": 110, "Up": 111,
    "Left": 113, "Right": 114, "End": 115, "Down": 116, "Insert": 118, "Delete": 119,
}
for _first, _row in ((10, "1234567890-="), (24, "qwertyuiop[]"), (38, "asdfghjkl;'"),
                     (52, "zxcvbnm,./")):
    for _place, _character in enumerate(_row):
        KEYS[_character] = _first + _place
KEYS[" "] = KEYS["space"]


class Keyboard:
    """What a hand does on any desktop; how a key gets there is for the classes below to say."""

    def _send(self, code, is_down):
        """Presses a key, or lets go of it, by its X key code."""
        raise NotImplementedError

    def down(self, key):
        self._send(KEYS[key], True)

    def up(self, key):
        self._send(KEYS[key], False)

    def press(self, chord):
        """Presses a chord such as "Control+Shift+v" and lets go of it."""
        *modifiers, key = chord.split("+")
        with self.held(*modifiers):
            self.down(key)
            self.up(key)

    @contextmanager
    def held(self, *modifiers):
        """Holds modifiers down meanwhile."""
        for modifier in modifiers:
            self.down(modifier)
        try:
            yield
        finally:
            for modifier in reversed(modifiers):
                self.up(modifier)

    def type(self, text):
        """Types letters, digits and blanks, on a US layout."""
        for character in text:
            self.press("Shift+" + character.lower() if character.isupper() else character)


class XKeyboard(Keyboard):
    """The keyboard of an X server, and what the server holds of it."""

    def __init__(self, display):
        self._display = display

    def _send(self, code, is_down):
        xtest.fake_input(self._display, X.KeyPress if is_down else X.KeyRelease, code)
        self._display.sync()

    def keys_down(self):
        """The key codes that the server holds to be down."""
        down = self._display.query_keymap()
        return {code for code in range(256) if down[code // 8] & (1 << (code % 8))}

    def modifiers(self):
        """The effective modifier mask, locks included."""
        return self._display.screen().root.query_pointer().mask & 0xFF

    def map(self):
        """The whole keyboard mapping, to see whether it was touched."""
        first = self._display.display.info.min_keycode
        last = self._display.display.info.max_keycode
        return [tuple(symbols)
                for symbols in self._display.get_keyboard_mapping(first, last - first + 1)]


class Pointer:
    def __init__(self, display):
        self._display = display

    def move(self, x, y):
        xtest.fake_input(self._display, X.MotionNotify, x=x, y=y)
        self._display.sync()

    def click(self, x, y, button=1, times=1):
        self.move(x, y)
        for _ in range(times):
            xtest.fake_input(self._display, X.ButtonPress, button)
            xtest.fake_input(self._display, X.ButtonRelease, button)
        self._display.sync()
