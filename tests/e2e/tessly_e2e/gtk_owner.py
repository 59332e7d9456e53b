"""A program of the GTK toolkit that copies the lines of its standard input."""

import sys

import gi

gi.require_version("Gtk", "3.0")
from gi.repository import Gdk, GLib, Gtk  # noqa: E402 - the version comes first


def copy_line(source, _condition):
    line = source.readline()
    if not line:
        Gtk.main_quit()
        return False
    Gtk.Clipboard.get(Gdk.SELECTION_CLIPBOARD).set_text(line.rstrip("\n"), -1)
    print("copied", flush=True)
    return True


def main():
    GLib.io_add_watch(sys.stdin, GLib.PRIORITY_DEFAULT, GLib.IO_IN | GLib.IO_HUP, copy_line)
    Gtk.main()


if __name__ == "__main__":
    main()
