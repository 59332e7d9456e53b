#!/usr/bin/python3
"""Shows Tessly at work on a machine without a display.

Starts a desktop of its own, Tessly on it for the first time, and programs that copy; opens the
panel, searches it and pastes an older entry into an editor; pastes another by its key; opens the
icon's menu and from there the settings. Prints what was recorded and what arrived, and leaves
pictures in build/demo/. Ends with 0 only if everything arrived.
"""

import os
import sys
import time

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
sys.path.insert(0, os.path.join(ROOT, "tests", "e2e"))
sys.dont_write_bytecode = True
os.environ.setdefault("TESSLY_PROGRAM", os.path.join(ROOT, "build", "release", "bin", "tessly"))

from tessly_e2e import Desktop, Tessly, png, wait_until  # noqa: E402 - the path comes first
from tessly_e2e.editors import GtkEditor, QtEditor, Terminal  # noqa: E402
from tessly_e2e.tray import Tray  # noqa: E402
from tessly_e2e.waiting import settled  # noqa: E402

PICTURES = os.path.join(ROOT, "build", "demo")
WANTED = "Lavender needs sun"


def copies(desktop, history):
    """Copies one thing after the other; yields each entry once it is recorded."""
    clipboard = desktop.clipboard

    editor = GtkEditor(desktop, "notes.txt").start(f"{WANTED}, little water and poor soil.")
    editor.copy_all()
    yield history.wait_for_text(f"{WANTED}, little water and poor soil.")
    editor.close()

    terminal = Terminal(desktop).start(shown="gardening-list")
    terminal.copy_word()
    yield history.wait_for_text("gardening")
    clipboard.copy("https://www.debian.org/releases/bookworm/")
    yield history.wait_for_kind("link")
    terminal.close()

    clipboard.offer({"UTF8_STRING": b"Seeds to order", "text/html": b"<h1>Seeds to order</h1>"})
    yield history.wait_for_kind("richText")
    clipboard.copy(png.gradient(480, 320), "image/png")
    yield history.wait_for_kind("image")
    clipboard.offer({"text/uri-list": b"file:///srv/plan.pdf\r\nfile:///srv/beds%20north.ods\r\n"})
    yield history.wait_for_kind("files")


def show_recorded(clips):
    print(f"\n{'kind':10} {'preview':46} source")
    for clip in clips:
        print(f"{clip.kind:10} {clip.preview[:46]:46} {clip.source_app_name or '–'}")


class Pictures:
    """Pictures of the whole screen, numbered in the order they are taken."""

    def __init__(self, desktop):
        self._screen = desktop.screen
        self._number = 0
        os.makedirs(PICTURES, exist_ok=True)

    def take(self, name):
        self._number += 1
        self._screen.picture().save(os.path.join(PICTURES, f"{self._number}-{name}.png"))


def welcome(tessly, pictures):
    """The first run: Return enables the history and leads into the panel."""
    tessly.wait_for_window("Welcome to Tessly")
    pictures.take("welcome")
    tessly.desktop.keyboard.press("Return")
    tessly.wait_for_trace("recording")
    tessly.wait_for_panel()
    tessly.close_panel()
    print(f"Tessly runs and records on display {tessly.desktop.environment['DISPLAY']}.")


def paste_by_search(tessly, pictures, wanted):
    editor = QtEditor(tessly.desktop, "letter.txt").start()
    panel = tessly.open_panel()
    pictures.take("panel")
    panel.picture().save(os.path.join(PICTURES, "panel.png"))
    panel.search("lavender")
    pictures.take("search")
    tessly.desktop.keyboard.press("Return")
    tessly.wait_for_closed_panel()
    editor.wait_for_text(wanted)
    pictures.take("pasted")
    print("\nSearched for “lavender”, pressed Return; the editor got: " + editor.text().strip())
    editor.close()


def paste_by_key(tessly, wanted):
    position = 1 + [clip.plain_text for clip in tessly.history.clips()].index(wanted)
    terminal = Terminal(tessly.desktop, "terminal-2.txt").start()
    tessly.desktop.keyboard.press(f"Alt+Shift+{position}")
    terminal.wait_for_text(wanted)
    print(f"Pressed Alt+Shift+{position}; the terminal got: {terminal.text()}")
    terminal.close()


def menu_and_settings(tessly, tray, pictures):
    tray.click(tessly.pid, button=3)
    # It takes the keys without being the active window.
    wait_until(lambda: tessly.window("Tessly Menu"), "the menu is open")
    settled(tessly.desktop.screen.picture, 0.3, "the menu")
    pictures.take("menu")
    # Its fourth line.
    for key in ("Down", "Down", "Down", "Down", "Return"):
        tessly.desktop.keyboard.press(key)
    settings = tessly.wait_for_window("Tessly Settings")
    pictures.take("settings")
    print("The icon's menu led to the settings.")
    tessly.desktop.windows.close(settings.id)
    wait_until(lambda: tessly.window("Tessly Settings") is None, "the settings are closed")


def tour(desktop):
    pictures = Pictures(desktop)
    tray = Tray(desktop).start()
    tessly = Tessly(desktop, settings={"hasCompletedOnboarding": False})
    try:
        tessly.launch()
        tray.wait_for_icon(tessly.pid)
        welcome(tessly, pictures)
        recorded = list(copies(desktop, tessly.history))
        show_recorded(recorded)
        paste_by_search(tessly, pictures, recorded[0].plain_text)
        paste_by_key(tessly, recorded[1].plain_text)
        menu_and_settings(tessly, tray, pictures)

        kept = [clip.id for clip in tessly.history.clips()]
        if sorted(kept) != sorted(clip.id for clip in recorded):
            raise AssertionError("the history holds something else than what was copied")
        tessly.stop()
    finally:
        tessly.kill()
    print(f"Pictures: {os.path.relpath(PICTURES)}/")


def main():
    start = time.monotonic()
    try:
        with Desktop() as desktop:
            tour(desktop)
    except (AssertionError, RuntimeError, OSError) as error:
        print(f"The tour ended early: {error}", file=sys.stderr)
        return 1
    print(f"All of it arrived, in {time.monotonic() - start:.0f} seconds.")
    return 0


if __name__ == "__main__":
    sys.exit(main())
