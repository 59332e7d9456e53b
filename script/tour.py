#!/usr/bin/python3
"""Shows Tessly at work on a machine without a display.

Starts a desktop of its own, Tessly on it, and programs that copy; opens the panel, searches it and
pastes an older entry into an editor. Prints what was recorded and what arrived, and leaves
pictures in build/demo/. Ends with 0 only if everything arrived.
"""

import os
import sys
import time

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
sys.path.insert(0, os.path.join(ROOT, "tests", "e2e"))
sys.dont_write_bytecode = True
os.environ.setdefault("TESSLY_PROGRAM", os.path.join(ROOT, "build", "release", "bin", "tessly"))

from tessly_e2e import Desktop, Tessly, png  # noqa: E402 - the path comes first
from tessly_e2e.editors import GtkEditor, QtEditor, Terminal  # noqa: E402

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


def tour(desktop):
    os.makedirs(PICTURES, exist_ok=True)
    with Tessly(desktop) as tessly:
        print(f"Tessly runs and records on display {desktop.environment['DISPLAY']}.")
        recorded = list(copies(desktop, tessly.history))
        show_recorded(recorded)

        editor = QtEditor(desktop, "letter.txt").start()
        panel = tessly.open_panel()
        desktop.screen.picture().save(os.path.join(PICTURES, "1-panel.png"))
        panel.picture().save(os.path.join(PICTURES, "panel.png"))
        panel.search("lavender")
        desktop.screen.picture().save(os.path.join(PICTURES, "2-search.png"))
        desktop.keyboard.press("Return")
        tessly.wait_for_closed_panel()
        editor.wait_for_text(recorded[0].plain_text)
        desktop.screen.picture().save(os.path.join(PICTURES, "3-pasted.png"))
        print("\nSearched for “lavender”, pressed Return; the editor got: " + editor.text().strip())

        kept = [clip.id for clip in tessly.history.clips()]
        if sorted(kept) != sorted(clip.id for clip in recorded):
            raise AssertionError("the history holds something else than what was copied")
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
