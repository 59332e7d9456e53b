#!/usr/bin/python3
"""A desktop portal with which programs ask to press keys and to hear hot keys.

It answers for the user, tells every call on standard output, one JSON object on each line, and can
pass the keys on to a compositor:

    {"ready": true}                           it has its name on the session bus
    {"call": METHOD, "arguments": [...]}      a program called a method of an interface
    {"dialog": METHOD}                        the user is being asked
    {"token": TOKEN}                          access was granted, and may be taken up again with this
    {"key": CODE, "pressed": BOOLEAN}         a key was pressed or released, and passed on if asked
    {"closed": HANDLE}                        a session has ended

Lines on standard input, JSON objects too, steer it while it runs:

    {"user": "grant" | "deny" | "fail" | "hang"}     what the user does when asked, from now on; with
                                                     "hang", nothing; with "fail", the desktop
                                                     refuses before they can
    {"answer": "grant" | "deny" | "fail"}            answers the questions that are open
    {"taken": [ID, ...]}                             shortcuts that are not given, from now on
    {"down": ID}, {"up": ID}                         the user presses a shortcut, lets it go
    {"revoke": true}                                 ends all sessions
    {"scheme": NUMBER}                               how programs are to look: 1 dark, 2 light, 0 as
                                                     they like

Options: see --help.
"""

import argparse
import itertools
import json
import os
import sys

import dbus
import dbus.lowlevel
import dbus.mainloop.glib
import dbus.service
from gi.repository import GLib

NAME = "org.freedesktop.portal.Desktop"
PATH = "/org/freedesktop/portal/desktop"
REMOTE_DESKTOP = "org.freedesktop.portal.RemoteDesktop"
SHORTCUTS = "org.freedesktop.portal.GlobalShortcuts"
SETTINGS = "org.freedesktop.portal.Settings"
REGISTRY = "org.freedesktop.host.portal.Registry"
REQUEST = "org.freedesktop.portal.Request"
SESSION = "org.freedesktop.portal.Session"
PROPERTIES = "org.freedesktop.DBus.Properties"
APPEARANCE = "org.freedesktop.appearance"
FAILED = "org.freedesktop.portal.Error.Failed"

KEYBOARD, POINTER, TOUCHSCREEN = 1, 2, 4
# What people say no by is 1; 2 is that it ended in another way.
RESPONSES = {"grant": 0, "deny": 1, "fail": 2}


def tell(**event):
    print(json.dumps(event), flush=True)


def plain(value):
    """A D-Bus value as JSON has it."""
    if isinstance(value, dict):
        return {str(key): plain(entry) for key, entry in value.items()}
    if isinstance(value, (list, tuple)):
        return [plain(entry) for entry in value]
    if isinstance(value, dbus.Boolean):
        return bool(value)
    if isinstance(value, str):
        return str(value)
    return float(value) if isinstance(value, float) else int(value)


class Failure(dbus.DBusException):
    def __init__(self, text, name=FAILED):
        super().__init__(text, name=name)


class Compositor:
    """The keyboard of org.gnome.Mutter.RemoteDesktop, for one session of the portal."""

    NAME = "org.gnome.Mutter.RemoteDesktop"

    def __init__(self, bus):
        manager = bus.get_object(self.NAME, "/org/gnome/Mutter/RemoteDesktop")
        path = manager.CreateSession(dbus_interface=self.NAME)
        self._session = dbus.Interface(bus.get_object(self.NAME, path), self.NAME + ".Session")
        self._session.Start()

    def key(self, code, pressed):
        self._session.NotifyKeyboardKeycode(dbus.UInt32(code), dbus.Boolean(pressed))

    def close(self):
        try:
            self._session.Stop()
        except dbus.DBusException:
            pass  # the compositor has gone, and the session with it


class Session(dbus.service.Object):
    """A session of a program, which ends it, or is told of its end."""

    def __init__(self, portal, path, owner, interface):
        super().__init__(portal.bus, path)
        self.portal = portal
        self.path = path
        self.owner = owner
        self.interface = interface
        self.devices = None
        self.options = {}
        self.shortcuts = None
        self.compositor = None
        self.is_started = False

    @dbus.service.method(SESSION, in_signature="", out_signature="", sender_keyword="sender")
    def Close(self, sender=None):
        self.portal.call("Close", sender, self.path)
        self.end()

    def end(self):
        if self.portal.sessions.pop(self.path, None) is None:
            return
        if self.compositor:
            self.compositor.close()
        self.remove_from_connection()
        tell(closed=self.path)

    def revoke(self):
        self.portal.send(self.path, SESSION, "Closed", self.owner, "a{sv}", {})
        self.end()


class Portal(dbus.service.Object):
    """The object of all the interfaces."""

    def __init__(self, bus, options):
        super().__init__(bus, PATH)
        self.bus = bus
        self.options = options
        self.user = options.user
        self.taken = set()
        self.sessions = {}
        self.tokens = set(options.token)
        self.open_questions = []
        self.scheme = 0
        self._numbers = itertools.count(1)
        bus.add_signal_receiver(self._owner_changed, "NameOwnerChanged", "org.freedesktop.DBus",
                                "org.freedesktop.DBus", "/org/freedesktop/DBus")

    def _owner_changed(self, name, _before, owner):
        if not owner:
            for session in [s for s in self.sessions.values() if s.owner == name]:
                session.end()

    # What all calls have in common

    def call(self, method, sender, *arguments):
        tell(call=method, sender=str(sender), arguments=plain(arguments))

    def send(self, path, interface, name, destination, signature, *arguments):
        message = dbus.lowlevel.SignalMessage(path, interface, name)
        message.set_destination(destination)
        message.append(*arguments, signature=signature)
        self.bus.send_message(message)

    def expect(self, interface):
        if interface in self.options.without:
            raise Failure("No such interface “%s”" % interface,
                          "org.freedesktop.DBus.Error.UnknownMethod")

    def handle(self, kind, sender, token):
        return dbus.ObjectPath("%s/%s/%s/%s" % (
            PATH, kind, sender[1:].replace(".", "_"), token or "mock%d" % next(self._numbers)))

    def respond(self, handle, sender, response, results):
        """Sends the response, after the answer to the call has gone out."""
        def send():
            self.send(handle, REQUEST, "Response", sender, "ua{sv}", dbus.UInt32(response),
                      dbus.Dictionary(results, signature="sv"))
        GLib.idle_add(send)

    def request(self, sender, options):
        return self.handle("request", sender, options.get("handle_token"))

    def question(self, method, handle, sender, granted):
        """Asks the user. `granted` does what they allow and returns the results."""
        tell(dialog=method)
        self.open_questions.append((handle, sender, granted))
        if self.user != "hang":
            self.answer_questions(self.user)

    def answer_questions(self, answer):
        questions, self.open_questions = self.open_questions, []
        for handle, sender, granted in questions:
            results = granted() if answer == "grant" else {}
            self.respond(handle, sender, RESPONSES[answer], results)

    def session(self, handle, sender, interface):
        session = self.sessions.get(handle)
        if not session or session.owner != sender or session.interface != interface:
            raise Failure("Invalid session", "org.freedesktop.DBus.Error.AccessDenied")
        return session

    def create_session(self, sender, options, interface):
        self.expect(interface)
        path = self.handle("session", sender, options.get("session_handle_token"))
        self.sessions[path] = Session(self, path, sender, interface)
        handle = self.request(sender, options)
        self.respond(handle, sender, 0, {"session_handle": str(path)})
        return handle

    # The program's name

    @dbus.service.method(REGISTRY, in_signature="sa{sv}", out_signature="",
                         sender_keyword="sender")
    def Register(self, app_id, options, sender=None):
        self.call("Register", sender, app_id, options)
        self.expect(REGISTRY)

    # Properties

    def _properties(self, interface):
        self.expect(interface)
        return {
            REMOTE_DESKTOP: {
                "version": dbus.UInt32(2),
                "AvailableDeviceTypes": dbus.UInt32(KEYBOARD | POINTER | TOUCHSCREEN)},
            SHORTCUTS: {"version": dbus.UInt32(1)},
            REGISTRY: {"version": dbus.UInt32(1)},
        }.get(interface, {})

    @dbus.service.method(PROPERTIES, in_signature="ss", out_signature="v")
    def Get(self, interface, name):
        try:
            return self._properties(interface)[name]
        except KeyError:
            raise Failure("No such property", "org.freedesktop.DBus.Error.InvalidArgs") from None

    @dbus.service.method(PROPERTIES, in_signature="s", out_signature="a{sv}")
    def GetAll(self, interface):
        return self._properties(interface)

    # Sessions. Two interfaces have a method of this name; the message tells them apart.

    @dbus.service.method(REMOTE_DESKTOP, in_signature="a{sv}", out_signature="o",
                         sender_keyword="sender")
    def CreateSession(self, options, sender=None):
        self.call("RemoteDesktop.CreateSession", sender, options)
        return self.create_session(sender, options, REMOTE_DESKTOP)

    # Keys

    @dbus.service.method(REMOTE_DESKTOP, in_signature="oa{sv}", out_signature="o",
                         sender_keyword="sender")
    def SelectDevices(self, handle, options, sender=None):
        self.call("SelectDevices", sender, handle, options)
        session = self.session(handle, sender, REMOTE_DESKTOP)
        session.devices = int(options.get("types", KEYBOARD | POINTER | TOUCHSCREEN))
        session.options = options
        request = self.request(sender, options)
        self.respond(request, sender, 0, {})
        return request

    @dbus.service.method(REMOTE_DESKTOP, in_signature="osa{sv}", out_signature="o",
                         sender_keyword="sender")
    def Start(self, handle, parent, options, sender=None):
        self.call("Start", sender, handle, parent, options)
        session = self.session(handle, sender, REMOTE_DESKTOP)
        if session.devices is None or session.is_started:
            raise Failure("Devices are to be selected first, and a session is started once")
        request = self.request(sender, options)

        def granted():
            session.is_started = True
            results = {"devices": dbus.UInt32(session.devices)}
            if self.options.mutter:
                session.compositor = Compositor(self.bus)
            if session.options.get("persist_mode", 0) > 0:
                token = "token-%d-%s" % (next(self._numbers), self.bus.get_unique_name())
                self.tokens.add(token)
                results["restore_token"] = token
                tell(token=token)
            return results

        token = session.options.get("restore_token")
        if token in self.tokens:
            self.tokens.remove(token)  # each serves once
            self.respond(request, sender, 0, granted())
        else:
            self.question("Start", request, sender, granted)
        return request

    @dbus.service.method(REMOTE_DESKTOP, in_signature="oa{sv}iu", out_signature="",
                         sender_keyword="sender")
    def NotifyKeyboardKeycode(self, handle, options, code, state, sender=None):
        session = self.session(handle, sender, REMOTE_DESKTOP)
        if not session.is_started or not session.devices & KEYBOARD:
            raise Failure("Session is not allowed to call NotifyKeyboard methods")
        if session.compositor:
            session.compositor.key(code, state != 0)
        tell(key=int(code), pressed=state != 0)

    # Hot keys

    @dbus.service.method(SHORTCUTS, in_signature="oa(sa{sv})sa{sv}", out_signature="o",
                         sender_keyword="sender")
    def BindShortcuts(self, handle, shortcuts, parent, options, sender=None):
        self.call("BindShortcuts", sender, handle, shortcuts, parent, options)
        session = self.session(handle, sender, SHORTCUTS)
        if session.shortcuts is not None:
            raise Failure("Session already has bound shortcuts")
        session.shortcuts = []
        request = self.request(sender, options)

        def granted():
            session.shortcuts = [
                (str(name), {"description": about["description"],
                             "trigger_description": about.get("preferred_trigger", "")})
                for name, about in shortcuts if name not in self.taken]
            return {"shortcuts": dbus.Array(session.shortcuts, signature="(sa{sv})")}

        self.question("BindShortcuts", request, sender, granted)
        return request

    @dbus.service.method(SHORTCUTS, in_signature="oa{sv}", out_signature="o",
                         sender_keyword="sender")
    def ListShortcuts(self, handle, options, sender=None):
        self.call("ListShortcuts", sender, handle, options)
        session = self.session(handle, sender, SHORTCUTS)
        request = self.request(sender, options)
        self.respond(request, sender, 0, {
            "shortcuts": dbus.Array(session.shortcuts or [], signature="(sa{sv})")})
        return request

    def tell_of_shortcut(self, signal, name):
        for session in self.sessions.values():
            if name in [bound for bound, _ in session.shortcuts or []]:
                self.send(PATH, SHORTCUTS, signal, session.owner, "osta{sv}",
                          dbus.ObjectPath(session.path), name,
                          dbus.UInt64(GLib.get_monotonic_time() // 1000), {})

    # How programs are to look

    @dbus.service.method(SETTINGS, in_signature="as", out_signature="a{sa{sv}}")
    def ReadAll(self, namespaces):
        self.expect(SETTINGS)
        settings = {"color-scheme": dbus.UInt32(self.scheme)}
        return {APPEARANCE: settings} if APPEARANCE in namespaces else {}

    @dbus.service.signal(SETTINGS, signature="ssv")
    def SettingChanged(self, namespace, key, value):
        pass

    # The test

    def steer(self, line):
        for command, value in json.loads(line).items():
            if command == "user":
                self.user = value
            elif command == "answer":
                self.answer_questions(value)
            elif command == "taken":
                self.taken = set(value)
            elif command == "down":
                self.tell_of_shortcut("Activated", value)
            elif command == "up":
                self.tell_of_shortcut("Deactivated", value)
            elif command == "revoke":
                for session in list(self.sessions.values()):
                    session.revoke()
            elif command == "scheme":
                self.scheme = value
                self.SettingChanged(APPEARANCE, "color-scheme", dbus.UInt32(value))
            else:
                raise ValueError(line)


def route_by_interface(portal):
    """dbus-python knows a class's methods by their names alone, and two interfaces here have a
    CreateSession; calls of the second are answered before it looks."""
    def answer(connection, message):
        is_it = (message.get_type() == 1 and message.get_path() == PATH
                 and message.get_interface() == SHORTCUTS
                 and message.get_member() == "CreateSession")
        if not is_it:
            return dbus.lowlevel.HANDLER_RESULT_NOT_YET_HANDLED
        options = message.get_args_list()[0]
        sender = message.get_sender()
        portal.call("GlobalShortcuts.CreateSession", sender, options)
        try:
            handle = portal.create_session(sender, options, SHORTCUTS)
            reply = dbus.lowlevel.MethodReturnMessage(message)
            reply.append(handle, signature="o")
        except Failure as failure:
            reply = dbus.lowlevel.ErrorMessage(message, failure.get_dbus_name(), str(failure))
        connection.send_message(reply)
        return dbus.lowlevel.HANDLER_RESULT_HANDLED
    portal.bus.add_message_filter(answer)


def main():
    parser = argparse.ArgumentParser(description="A desktop portal that a test steers.")
    parser.add_argument("--user", choices=[*RESPONSES, "hang"], default="grant",
                        help="what the user does when asked")
    parser.add_argument("--token", action="append", default=[],
                        help="a restore token that is good for one silent start")
    parser.add_argument("--without", action="append", default=[], metavar="INTERFACE",
                        help="an interface that this portal does not have")
    parser.add_argument("--mutter", action="store_true",
                        help="pass the keys on to Mutter, on the same bus")
    options = parser.parse_args()

    dbus.mainloop.glib.DBusGMainLoop(set_as_default=True)
    bus = dbus.SessionBus()
    portal = Portal(bus, options)
    route_by_interface(portal)
    name = dbus.service.BusName(NAME, bus, do_not_queue=True)
    loop = GLib.MainLoop()

    unread = bytearray()

    def read(source, _condition):
        # Not by lines: what a buffer holds would not wake anyone.
        received = os.read(source, 65536)
        if not received:
            return False  # nobody steers it, as when the bus has started it
        unread.extend(received)
        while b"\n" in unread:
            line, _, rest = bytes(unread).partition(b"\n")
            unread[:] = rest
            portal.steer(line)
        return True

    GLib.io_add_watch(sys.stdin.fileno(), GLib.PRIORITY_DEFAULT, GLib.IO_IN | GLib.IO_HUP, read)
    tell(ready=True)
    loop.run()
    del name


if __name__ == "__main__":
    main()
