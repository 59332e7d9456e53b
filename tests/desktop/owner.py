#!/usr/bin/python3
"""A selection owner that can be made to misbehave.

It takes a selection, answers requests for it, and reports each on standard output, one line each:

    owns                     it has taken the selection (again)
    request NAME             another program asked for this target
    served NAME BYTES        that request was answered in full
    lost                     another program took the selection
    count NAME N             the answer to "counts"

Lines on standard input steer it while it runs:

    text TEXT    offer this text and nothing else, and take the selection again
    own          take the selection again, with a new timestamp
    release      give the selection up; it has no owner afterwards
    go           answer what was withheld by "hold"
    replace TEXT as one step that no other program can come into: destroy the window that owns the
                 selection, and offer this text from a new one, in the same moment of the server's
                 clock as far as that can be had
    again TEXT   as "replace", but with the time at which the old window had taken the selection
    remember     note the server's time
    late TEXT    offer this text and take the selection with the time that was noted
    counts       print how often each target was asked for
    quit         end, as a program that was closed

Behaviours (--behave NAME BEHAVIOUR, NAME "*" for all but TARGETS):

    answer       the ordinary way (the default)
    refuse       say no
    silent       never answer
    silent-once  answer each request but the first
    hold         answer once "go" is read
    vanish       end at the request, without an answer
    no-property  say yes, but store nothing
    incr-stall   begin an INCR transfer and fall silent after --after chunks
    incr-vanish  begin an INCR transfer and end after --after chunks
    incr-endless begin an INCR transfer that never ends
    incr-lie     announce four gigabytes, then send the value
"""

import argparse
import collections
import heapq
import itertools
import os
import select
import struct
import sys
import time

from Xlib import X, Xatom, display, error, protocol
from Xlib.protocol import event

# What the core protocol takes in one request, less the request's own fields.
LARGEST_WRITE = 200_000


def say(*words):
    print(*words, flush=True)


def value_bytes(text):
    """A value as the command line gives it."""
    if text.startswith("hex:"):
        return bytes.fromhex(text[4:])
    if text.startswith("file:@"):
        with open(text[6:], "rb") as file:
            return file.read()
    if text.startswith("fill:"):
        size = int(text[5:])
        line = b"0123456789abcdef" * 4
        return (line * (size // len(line) + 1))[:size]
    return os.fsencode(text)


class Transfer:
    """One INCR transfer to one property of one reader."""

    def __init__(self, requestor, prop, name, data_type, data_format, data, behaviour):
        self.requestor = requestor
        self.property = prop
        self.name = name
        self.type = data_type
        self.format = data_format
        self.data = data
        self.behaviour = behaviour
        self.sent = 0
        self.chunks = 0


class Owner:
    def __init__(self, options):
        self.options = options
        self.display = display.Display(options.display)
        self.display.set_error_handler(lambda *_: None)
        self.window = self.new_window()
        self.selection = self.atom(options.selection)
        self.values = collections.OrderedDict()
        for name, value in options.target:
            self.values[name] = value_bytes(value)
        if options.text is not None:
            self.offer_text(options.text)
        self.types = dict(options.type)
        self.formats = {name: int(number) for name, number in options.format}
        self.behaviours = dict(options.behave)
        self.counts = collections.Counter()
        self.transfers = {}
        self.held = []
        self.timers = []
        self.timer_order = itertools.count()
        self.input = b""
        self.watches_input = True

    def atom(self, name):
        return self.display.intern_atom(name)

    def new_window(self):
        screen = self.display.screen()
        return screen.root.create_window(
            0, 0, 1, 1, 0, screen.root_depth, event_mask=X.PropertyChangeMask)

    def offer_text(self, text):
        data = value_bytes(text)
        for name in ("UTF8_STRING", "text/plain;charset=utf-8", "text/plain"):
            self.values[name] = data

    # Owning

    def server_time(self):
        stamp = self.atom("OWNER_TIME")
        self.window.change_property(stamp, Xatom.INTEGER, 32, [], X.PropModeAppend)
        while True:
            got = self.display.next_event()
            if got.type == X.PropertyNotify and got.atom == stamp:
                return got.time
            self.handle(got)

    def replace(self, text, at=X.CurrentTime):
        self.values.clear()
        self.offer_text(text)
        old = self.window
        self.window = self.new_window()
        self.time = at
        # Nothing of this waits for an answer: the server gets it in one piece.
        self.display.grab_server()
        old.destroy()
        self.window.set_selection_owner(self.selection, at)
        self.display.ungrab_server()
        self.display.sync()
        say("owns")

    def own(self, at=None):
        self.time = self.server_time() if at is None else at
        self.window.set_selection_owner(self.selection, self.time)
        self.display.sync()
        if self.display.get_selection_owner(self.selection) != self.window:
            sys.exit("another program holds the selection")
        say("owns")

    def leave(self):
        self.display.flush()
        self.display.sync()
        sys.exit(0)

    # Answering

    def notify(self, request, prop):
        request.requestor.send_event(event.SelectionNotify(
            time=request.time, requestor=request.requestor, selection=request.selection,
            target=request.target, property=prop))
        self.display.flush()

    def store(self, window, prop, data_type, data_format, data):
        """Writes a property of any size, in as many requests as it takes."""
        mode = X.PropModeReplace
        size = data_format // 8
        data = data[:len(data) - len(data) % size]
        code = {1: "B", 2: "H", 4: "I"}[size]
        while True:
            part, data = data[:LARGEST_WRITE], data[LARGEST_WRITE:]
            values = part if size == 1 else list(
                struct.unpack("=%d%s" % (len(part) // size, code), part))
            window.change_property(prop, data_type, data_format, values, mode)
            mode = X.PropModeAppend
            if not data:
                return

    def target_list(self):
        names = ["TARGETS", "TIMESTAMP"] + list(self.values)
        if self.options.claims_everything:
            names += ["STRING", "TEXT", "text/html", "text/rtf", "text/uri-list", "image/png",
                      "image/tiff"]
        names += ["made-up-%d" % number for number in range(self.options.extra_targets)]
        return b"".join(struct.pack("=I", self.atom(name)) for name in names)

    def answer(self, request):
        name = self.display.get_atom_name(request.target)
        self.counts[name] += 1
        say("request", name)
        behaviour = self.behaviours.get(name)
        if behaviour is None and name not in ("TARGETS", "TIMESTAMP"):
            behaviour = self.behaviours.get("*")
        behaviour = behaviour or "answer"
        if behaviour == "silent" or (behaviour == "silent-once" and self.counts[name] == 1):
            return
        if behaviour == "vanish":
            self.leave()
        if behaviour == "hold":
            self.held.append((request, name))
            return
        self.later(lambda: self.convert(request, name, behaviour))

    def later(self, action):
        """Runs the action after --delay."""
        if self.options.delay == 0:
            action()
            return
        due = time.monotonic() + self.options.delay / 1000
        heapq.heappush(self.timers, (due, next(self.timer_order), action))

    def convert(self, request, name, behaviour):
        prop = request.property or request.target
        data_type = self.atom(self.types.get(name, name))
        data_format = self.formats.get(name, 8)
        if name == "TARGETS":
            data = self.target_list()
            data_type = self.atom(self.types.get(name, "ATOM"))
            data_format = self.formats.get(name, 32)
        elif name == "TIMESTAMP":
            data, data_type, data_format = struct.pack("=I", self.time), Xatom.INTEGER, 32
        elif name in self.values:
            data = self.values[name]
        elif self.options.claims_everything:
            data, data_type = next(iter(self.values.values())), self.atom("UTF8_STRING")
        else:
            behaviour = "refuse"
        if behaviour == "refuse":
            self.notify(request, X.NONE)
            return
        if behaviour == "no-property":
            self.notify(request, prop)
            return
        by_incr = self.options.incr > 0 and len(data) > self.options.incr
        if behaviour.startswith("incr-") or (by_incr and data_format == 8):
            self.begin_incr(request, prop, name, data_type, data_format, data, behaviour)
            return
        self.store(request.requestor, prop, data_type, data_format, data)
        self.notify(request, prop)
        self.served(name, len(data))

    def begin_incr(self, request, prop, name, data_type, data_format, data, behaviour):
        transfer = Transfer(request.requestor, prop, name, data_type, data_format, data, behaviour)
        self.transfers[(request.requestor.id, prop)] = transfer
        request.requestor.change_attributes(event_mask=X.PropertyChangeMask)
        size = 0xFFFFFFFF if behaviour == "incr-lie" else len(data)
        self.store(request.requestor, prop, self.atom("INCR"), 32, struct.pack("=I", size))
        self.notify(request, prop)

    def next_chunk(self, transfer):
        if transfer.behaviour == "incr-stall" and transfer.chunks >= self.options.after:
            return
        if transfer.behaviour == "incr-vanish" and transfer.chunks >= self.options.after:
            self.leave()
        if transfer.behaviour == "incr-endless":
            part = b"x" * self.chunk_size()
        else:
            part = transfer.data[transfer.sent:transfer.sent + self.chunk_size()]
        transfer.sent += len(part)
        transfer.chunks += 1
        self.store(transfer.requestor, transfer.property, transfer.type, transfer.format, part)
        self.display.flush()
        if not part:
            self.transfers.pop((transfer.requestor.id, transfer.property), None)
            self.served(transfer.name, transfer.sent)

    def chunk_size(self):
        # A chunk is one request: readers take a value as soon as it is there.
        return min(self.options.chunk, LARGEST_WRITE)

    def served(self, name, size):
        say("served", name, size)
        if self.options.one_shot and name not in ("TARGETS", "TIMESTAMP"):
            self.leave()

    # Events and commands

    def handle(self, got):
        if got.type == X.SelectionRequest:
            self.answer(got)
        elif got.type == X.SelectionClear:
            say("lost")
        elif got.type == X.PropertyNotify and got.state == X.PropertyDelete:
            transfer = self.transfers.get((got.window.id, got.atom))
            if transfer is not None:
                self.later(lambda: self.next_chunk(transfer))

    def command(self, line):
        word, _, rest = line.partition(" ")
        if word == "text":
            self.values.clear()
            self.offer_text(rest)
            self.own()
        elif word == "own":
            self.own()
        elif word == "replace":
            self.replace(rest)
        elif word == "again":
            self.replace(rest, self.time)
        elif word == "remember":
            self.remembered = self.server_time()
            say("remembered")
        elif word == "late":
            self.values.clear()
            self.offer_text(rest)
            self.own(self.remembered)
        elif word == "release":
            # python-xlib has no method of its own for giving a selection up.
            protocol.request.SetSelectionOwner(
                display=self.display.display, window=X.NONE, selection=self.selection,
                time=X.CurrentTime)
            self.display.sync()
        elif word == "go":
            held, self.held = self.held, []
            for request, name in held:
                self.convert(request, name, "answer")
        elif word == "counts":
            for name, count in sorted(self.counts.items()):
                say("count", name, count)
        elif word == "quit":
            self.leave()

    def read_commands(self):
        data = os.read(sys.stdin.fileno(), 65536)
        self.watches_input = bool(data)
        self.input += data
        *lines, self.input = self.input.split(b"\n")
        for line in lines:
            self.command(os.fsdecode(line))

    def run(self):
        self.own()
        while True:
            while self.display.pending_events():
                self.handle(self.display.next_event())
            while self.timers and self.timers[0][0] <= time.monotonic():
                heapq.heappop(self.timers)[2]()
            self.display.flush()
            if self.display.pending_events():
                continue
            files = [self.display.fileno()] + ([sys.stdin] if self.watches_input else [])
            wait = max(0, self.timers[0][0] - time.monotonic()) if self.timers else None
            ready = select.select(files, [], [], wait)[0]
            if sys.stdin in ready:
                self.read_commands()


def main():
    parser = argparse.ArgumentParser(
        description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--display", help="the X server; $DISPLAY by default")
    parser.add_argument("--selection", default="CLIPBOARD")
    parser.add_argument("--text", help="offer this as UTF8_STRING and as text/plain")
    parser.add_argument("--target", nargs=2, action="append", default=[], metavar=("NAME", "VALUE"),
                        help='offer a target; VALUE is literal, "hex:00ff", "fill:BYTES" or '
                             '"file:@PATH"')
    parser.add_argument("--behave", nargs=2, action="append", default=[],
                        metavar=("NAME", "BEHAVIOUR"), help="how a target is answered, see above")
    parser.add_argument("--type", nargs=2, action="append", default=[], metavar=("NAME", "TYPE"),
                        help="the type in which a target is answered; its own name by default")
    parser.add_argument("--format", nargs=2, action="append", default=[], metavar=("NAME", "BITS"),
                        help="the format in which a target is answered; 8 by default")
    parser.add_argument("--claims-everything", action="store_true",
                        help="offer the usual targets of every kind, and answer those that have no "
                             "value with the first value, typed UTF8_STRING")
    parser.add_argument("--extra-targets", type=int, default=0, metavar="N",
                        help="offer N more targets under made-up names")
    parser.add_argument("--one-shot", action="store_true",
                        help="end once one value has been served")
    parser.add_argument("--incr", type=int, default=LARGEST_WRITE, metavar="BYTES",
                        help="values above this size go by INCR; 0: none do, however large")
    parser.add_argument("--chunk", type=int, default=65536, metavar="BYTES",
                        help="size of the chunks of an INCR transfer, %d at the most" % LARGEST_WRITE)
    parser.add_argument("--after", type=int, default=1, metavar="CHUNKS",
                        help="when incr-stall and incr-vanish happen")
    parser.add_argument("--delay", type=int, default=0, metavar="MS",
                        help="wait this long before each answer and each chunk")
    owner = Owner(parser.parse_args())
    try:
        owner.run()
    except (KeyboardInterrupt, BrokenPipeError, error.ConnectionClosedError):
        # The server or the test that started this is gone, and so is the work.
        pass


if __name__ == "__main__":
    main()
