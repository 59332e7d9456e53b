"""A program that offers content on the clipboard of a Wayland desktop and can be made to misbehave.

It reports on standard output, one line each:

    owns                it has taken the clipboard
    request NAME        another program asked for content of this type
    served NAME BYTES   that was written to the end
    lost                another program took the clipboard, or it was emptied

Behaviours (--behave):

    answer    write the content (the default)
    silent    keep the pipe open and write nothing
    vanish    end at the request
    early     write a part of the content and end
    empty     close the pipe at once
    stall     write a part of the content, and keep the pipe open
    drip      write a byte a second
    endless   write for ever
"""

import argparse
import os
import select
import sys
import threading
import time

from .wayland import Connection, ProtocolError

_PART = 1000
_CHUNK = b"x" * 65536


def say(*words):
    print(*words, flush=True)


class Owner:
    def __init__(self, options):
        self._values = {}
        for name, path in options.type:
            with open(path, "rb") as file:
                self._values[name] = file.read()
        self._behaviour = options.behave
        self._one_shot = options.one_shot
        display = os.path.join(os.environ["XDG_RUNTIME_DIR"], os.environ["WAYLAND_DISPLAY"])
        self._connection = Connection(display)
        manager = self._connection.bind_data_control(1)
        device = manager.get_data_device(self._connection.bind("wl_seat", 1))
        source = manager.create_data_source()
        source.on["send"] = self._send
        source.on["cancelled"] = lambda: say("lost")
        for name in self._values:
            source.offer(name)
        device.set_selection(source)
        self._connection.roundtrip()
        say("owns")

    def _send(self, name, pipe):
        say("request", name)
        if self._behaviour == "vanish":
            os._exit(0)
        # Other readers, and the compositor, are served meanwhile.
        threading.Thread(target=self._write, args=(name, pipe), daemon=True).start()

    def _write(self, name, pipe):
        content = self._values.get(name, b"")
        try:
            if self._behaviour in ("silent", "stall", "early"):
                if self._behaviour != "silent":
                    os.write(pipe, content[:_PART])
                if self._behaviour == "early":
                    os._exit(0)
                select.select([], [], [])
            elif self._behaviour == "drip":
                for byte in content:
                    os.write(pipe, bytes([byte]))
                    time.sleep(1)
            elif self._behaviour == "endless":
                while True:
                    os.write(pipe, _CHUNK)
            elif self._behaviour != "empty":
                written = 0
                while written < len(content):
                    written += os.write(pipe, content[written:written + len(_CHUNK)])
                say("served", name, written)
        except BrokenPipeError:
            say("refused", name)  # the reader had enough
        os.close(pipe)
        if self._one_shot:
            os._exit(0)

    def run(self):
        while True:
            self._connection.dispatch(3600)


def main():
    parser = argparse.ArgumentParser(
        description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--type", nargs=2, action="append", default=[], metavar=("NAME", "FILE"),
                        help="offer the content of a file under this type")
    parser.add_argument("--behave", default="answer", metavar="BEHAVIOUR", help="see above")
    parser.add_argument("--one-shot", action="store_true", help="end once content was served")
    try:
        Owner(parser.parse_args()).run()
    except (KeyboardInterrupt, BrokenPipeError):
        pass
    except ProtocolError as error:
        sys.exit(str(error))


if __name__ == "__main__":
    main()
