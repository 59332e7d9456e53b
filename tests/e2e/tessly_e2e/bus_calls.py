"""Calling Tessly over the bus, as its own command line does, but without a process in between."""

import dbus
import dbus.bus
import dbus.lowlevel

from .tessly import BUS_NAME

_PATH = "/com/brackmoor/tessly"
_TIMEOUT = 20.0


class Call:
    """A call under way."""

    def __init__(self, bus, message):
        self._answers = []
        self._pending = bus.send_message_with_reply(message, self._answers.append, _TIMEOUT,
                                                    require_main_loop=False)
        bus.flush()

    def wait(self):
        """Waits for the answer: None, or the name and the text of the error that it is."""
        self._pending.block()
        answer = self._answers[0]
        if answer.get_type() != dbus.lowlevel.MESSAGE_TYPE_ERROR:
            return None
        return " ".join([answer.get_error_name(), *map(str, answer.get_args_list())])


class BusCalls:
    """The calls over one connection, which arrive in the order in which they are made. Use it in a
    `with`."""

    def __init__(self, desktop):
        self._bus = dbus.bus.BusConnection(desktop.environment["DBUS_SESSION_BUS_ADDRESS"])

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self._bus.close()

    def paste(self, position):
        return self._call("Paste", "xb", position, False)

    def copy(self, position):
        return self._call("Copy", "xb", position, False)

    def _call(self, method, signature, *arguments):
        message = dbus.lowlevel.MethodCallMessage(BUS_NAME, _PATH, BUS_NAME, method)
        message.append(*arguments, signature=signature)
        return Call(self._bus, message)
