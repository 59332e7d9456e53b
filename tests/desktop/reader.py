#!/usr/bin/python3
"""A reader of a selection that does what ordinary readers do not, and a few other rude things.

    reader.py TARGET...                  asks for each target, one after the other
    reader.py --multiple TARGET...       asks for all of them in one MULTIPLE request
    reader.py --parallel TARGET...       asks for all of them at the same time
    reader.py --stall N TARGET           takes N chunks of an INCR transfer, says so, and goes on
                                         once a line comes on standard input
    reader.py --vanish N TARGET          takes N chunks of an INCR transfer, and ends
    reader.py --impersonate TARGET       asks the owner in the name of the owner's own window
    reader.py --grab                     grabs the server until a line comes on standard input

For each target it prints one line: "TARGET TYPE FORMAT BYTES SHA256", the hash of the bytes, or
"TARGET refused". With --grab it prints "grabbed", with --stall "stalled".
"""

import argparse
import hashlib
import struct
import sys

from Xlib import X, display


class Reader:
    def __init__(self, options):
        self.options = options
        self.display = display.Display(options.display)
        self.selection = self.atom(options.selection)
        self.events = []

    def atom(self, name):
        return self.display.intern_atom(name)

    def window(self):
        screen = self.display.screen()
        return screen.root.create_window(
            0, 0, 1, 1, 0, screen.root_depth, event_mask=X.PropertyChangeMask)

    def ask(self, window, target, prop):
        window.convert_selection(self.selection, self.atom(target), self.atom(prop), X.CurrentTime)
        self.display.flush()

    def wait(self, matches):
        """The next event that matches; others are kept for later."""
        for index, early in enumerate(self.events):
            if matches(early):
                return self.events.pop(index)
        while True:
            got = self.display.next_event()
            if matches(got):
                return got
            self.events.append(got)

    def answer(self, window, target):
        """Waits until the owner has answered; whether it agreed."""
        got = self.wait(lambda e: e.type == X.SelectionNotify and e.requestor == window and
                        e.target == self.atom(target))
        return got.property != X.NONE

    def take(self, window, prop):
        """A property's value, which is deleted: its type, format and bytes."""
        # In one request: the owner may write the next value at any moment.
        got = window.get_property(self.atom(prop), X.AnyPropertyType, 0, 1 << 28, delete=True)
        if got is None:
            return None, 0, b""
        data = bytes(got.value) if got.format == 8 else b"".join(
            struct.pack("=I", value) for value in got.value)
        return self.display.get_atom_name(got.property_type), got.format, data

    def read(self, window, prop):
        """A whole value, however it comes."""
        data_type, data_format, data = self.take(window, prop)
        if data_type != "INCR":
            return data_type, data_format, data
        data = b""
        chunks = 0
        while True:
            if chunks == self.options.stall:
                print("stalled", flush=True)
                sys.stdin.readline()
            if chunks == self.options.vanish:
                sys.exit(0)
            self.wait(lambda e: e.type == X.PropertyNotify and e.window == window and
                      e.atom == self.atom(prop) and e.state == X.PropertyNewValue)
            data_type, data_format, chunk = self.take(window, prop)
            if data_type is None:
                # The event was about a value that was taken before it.
                continue
            chunks += 1
            if not chunk:
                return data_type, data_format, data
            data += chunk

    def show(self, target, value):
        data_type, data_format, data = value
        print(target, data_type, data_format, len(data), hashlib.sha256(data).hexdigest(),
              flush=True)

    def run(self):
        targets = self.options.targets
        if self.options.grab:
            self.display.grab_server()
            self.display.sync()
            print("grabbed", flush=True)
            sys.stdin.readline()
            self.display.ungrab_server()
            self.display.sync()
        elif self.options.impersonate:
            owner = self.display.get_selection_owner(self.selection)
            self.ask(owner, targets[0], "READER")
            self.display.sync()
        elif self.options.multiple:
            self.run_multiple(targets)
        elif self.options.parallel:
            windows = [self.window() for _ in targets]
            for window, target in zip(windows, targets):
                self.ask(window, target, "READER")
            for window, target in zip(windows, targets):
                self.report(window, target, "READER")
        else:
            window = self.window()
            for target in targets:
                self.ask(window, target, "READER")
                self.report(window, target, "READER")

    def report(self, window, target, prop):
        if self.answer(window, target):
            self.show(target, self.read(window, prop))
        else:
            print(target, "refused", flush=True)

    def run_multiple(self, targets):
        window = self.window()
        pairs = []
        for number, target in enumerate(targets):
            pairs += [self.atom(target), self.atom("READER_%d" % number)]
        window.change_property(self.atom("READER"), self.atom("ATOM_PAIR"), 32, pairs)
        self.ask(window, "MULTIPLE", "READER")
        if not self.answer(window, "MULTIPLE"):
            print("MULTIPLE refused", flush=True)
            return
        answers = window.get_full_property(self.atom("READER"), self.atom("ATOM_PAIR")).value
        for number, target in enumerate(targets):
            if answers[2 * number + 1] == X.NONE:
                print(target, "refused", flush=True)
            else:
                self.show(target, self.read(window, "READER_%d" % number))


def main():
    parser = argparse.ArgumentParser(
        description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--display")
    parser.add_argument("--selection", default="CLIPBOARD")
    parser.add_argument("--multiple", action="store_true")
    parser.add_argument("--parallel", action="store_true")
    parser.add_argument("--grab", action="store_true")
    parser.add_argument("--stall", type=int, default=-1, metavar="N")
    parser.add_argument("--vanish", type=int, default=-1, metavar="N")
    parser.add_argument("--impersonate", action="store_true")
    parser.add_argument("targets", nargs="*", metavar="TARGET")
    Reader(parser.parse_args()).run()


if __name__ == "__main__":
    main()
