"""Pasting into programs that know no Ctrl+V, and entries that some programs take only as text."""

import unittest

from tessly_e2e import wait_until
from tessly_e2e.case import TesslyCase
from tessly_e2e.editors import Emacs, GtkEditor, GVim, Terminal


class IntoCommandEditor:
    """What holds for editors to which Ctrl+V is a command; `make` starts one."""

    def test_the_panel_pastes_into_it(self):
        self.record("needle one")
        self.record("something else")
        editor = self.make(self.desktop).start()
        self.choose("needle")
        editor.wait_for_text("needle one")
        wait_until(editor.is_in_front, "the editor has the focus")

    def test_the_command_line_pastes_into_it(self):
        self.record("needle one")
        editor = self.make(self.desktop).start()
        self.tessly.command("paste", "1")
        editor.wait_for_text("needle one")


class IntoEmacs(IntoCommandEditor, TesslyCase):
    make = Emacs


class IntoGVim(IntoCommandEditor, TesslyCase):
    make = GVim


class Files(TesslyCase):
    """Copied files, pasted into programs that take text."""

    urls = ("file:///tmp/a.txt", "file:///tmp/Song%20%5Blive%5D.mp3")
    paths = "/tmp/a.txt\n/tmp/Song [live].mp3"

    def setUp(self):
        super().setUp()
        self.clipboard.offer({"text/uri-list": ("\r\n".join(self.urls) + "\r\n").encode()})
        self.history.wait_for_kind("files")

    def test_a_terminal_gets_their_paths(self):
        terminal = Terminal(self.desktop).start()
        self.tessly.command("paste", "1")
        terminal.wait_for_text(self.paths)

    def test_an_editor_gets_their_paths(self):
        editor = GtkEditor(self.desktop).start()
        self.tessly.command("paste", "1")
        editor.wait_for_text(self.paths)

    def test_file_managers_get_the_files_first(self):
        self.tessly.command("copy", "1")
        self.wait_for_own_content()
        targets = self.clipboard.targets()
        self.assertLess(targets.index("text/uri-list"), targets.index("UTF8_STRING"))
        self.assertEqual(self.clipboard.read("text/uri-list").decode().split(), list(self.urls))
        self.assertEqual(self.clipboard.read().decode(), self.paths)


if __name__ == "__main__":
    unittest.main()
