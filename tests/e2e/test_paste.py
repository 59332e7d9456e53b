"""Pasting from the panel into programs of three toolkits, whatever the keyboard is doing."""

import unittest

from tessly_e2e import png, wait_until
from tessly_e2e.case import TesslyCase
from tessly_e2e.editors import GtkEditor, QtEditor, Terminal

HTML = b"<p>rich <b>words</b></p>"


class PasteCase(TesslyCase):
    def expect_focus_back(self, program):
        wait_until(program.is_in_front, "the program pasted into has the focus")

    def expect_nothing_held(self):
        self.assertEqual(self.keyboard.keys_down(), set())


class Into:
    """What holds for every program that is pasted into; `make` starts one."""

    def start_program(self):
        return self.make(self.desktop).start()

    def test_return_pastes_what_was_searched_for(self):
        self.record("needle one")
        self.record("something else")
        program = self.start_program()
        self.choose("needle")
        program.wait_for_text("needle one")
        self.expect_focus_back(program)
        self.expect_nothing_held()

    def test_return_pastes_the_entry_that_the_arrows_chose(self):
        for text in ("oldest", "middle", "newest"):
            self.record(text)
        program = self.start_program()
        self.tessly.open_panel()
        for key in ("Up", "Up", "Up", "Down"):
            self.keyboard.press(key)
        self.keyboard.press("Return")
        self.tessly.wait_for_closed_panel()
        program.wait_for_text("middle")
        self.expect_focus_back(program)

    def test_shift_return_pastes_rich_text_as_plain_text(self):
        self.record("something else")
        self.clipboard.offer({"UTF8_STRING": b"rich words", "text/html": HTML})
        self.history.wait_for_kind("richText")
        program = self.start_program()
        self.choose("rich", "Shift+Return")
        program.wait_for_text("rich words")
        self.expect_focus_back(program)
        targets = self.clipboard.targets()
        self.assertNotIn("text/html", targets)
        self.assertIn("UTF8_STRING", targets)

    def test_what_was_pasted_is_not_recorded_again(self):
        self.record("needle one")
        self.record("something else")
        program = self.start_program()
        self.choose("needle")
        program.wait_for_text("needle one")
        self.expect_still_recording()
        self.assertEqual(self.recorded_texts(), ["something else", "needle one"])
        self.assertEqual(self.history.find("needle one").copy_count, 1)

    def test_alt_and_shift_may_stay_held_down(self):
        self.record("needle one")
        self.record("something else")
        program = self.start_program()
        panel = self.tessly.open_panel()
        panel.search("needle")
        with self.keyboard.held("Alt", "Shift"):
            self.keyboard.press("Return")
            self.tessly.wait_for_closed_panel()
            program.wait_for_arrival()
        program.wait_for_text("needle one")
        self.expect_focus_back(program)
        self.expect_nothing_held()

    def test_alt_and_shift_may_be_let_go_when_the_panel_closes(self):
        self.record("needle one")
        self.record("something else")
        program = self.start_program()
        panel = self.tessly.open_panel()
        panel.search("needle")
        with self.keyboard.held("Alt", "Shift"):
            self.keyboard.press("Return")
            self.tessly.wait_for_closed_panel()
        program.wait_for_text("needle one")
        self.expect_nothing_held()

    def test_locks_do_not_matter_and_stay_as_they_are(self):
        self.record("needle one")
        self.record("something else")
        program = self.start_program()
        self.keyboard.press("NumLock")
        self.keyboard.press("CapsLock")
        locked = self.keyboard.modifiers()
        self.assertNotEqual(locked, 0)
        self.choose("needle")
        program.wait_for_arrival()
        self.assertEqual(self.keyboard.modifiers(), locked)
        self.keyboard.press("CapsLock")
        program.wait_for_text("needle one")

    def test_a_second_layout_may_be_the_one_in_use(self):
        self.record("only entry")
        program = self.start_program()
        self.desktop.run(["setxkbmap", "-layout", "us,ru"])
        self.desktop.run(["xdotool", "key", "ISO_Next_Group"])
        self.paste_the_only_entry_and_expect_the_layout_untouched(program)

    def test_a_layout_without_latin_letters_may_be_the_only_one(self):
        self.record("only entry")
        program = self.start_program()
        self.desktop.run(["setxkbmap", "-layout", "ru"])
        self.paste_the_only_entry_and_expect_the_layout_untouched(program)

    def paste_the_only_entry_and_expect_the_layout_untouched(self, program):
        layout = self.desktop.keyboard_state()
        self.tessly.open_panel()
        self.keyboard.press("Return")
        self.tessly.wait_for_closed_panel()
        program.wait_for_arrival()
        wait_until(lambda: self.desktop.keyboard_state() == layout,
                   lambda: f"the layout is as before:\n{layout}\n{self.desktop.keyboard_state()}")
        self.desktop.run(["setxkbmap", "-layout", "us"])
        program.wait_for_text("only entry")


class IntoTerminal(Into, PasteCase):
    make = Terminal


class IntoGtkEditor(Into, PasteCase):
    make = GtkEditor


class IntoQtEditor(Into, PasteCase):
    make = QtEditor


class OntoTheClipboard(PasteCase):
    """What other programs can read after an entry was chosen."""

    def choose_oldest(self):
        """Nothing is in front, so this copies and does not paste."""
        self.tessly.open_panel()
        for _ in range(3):
            self.keyboard.press("Down")
        self.keyboard.press("Return")
        self.tessly.wait_for_closed_panel()
        self.wait_for_own_content()

    def test_an_image_comes_back_byte_for_byte(self):
        image = png.of_size(3 * 2**20)
        self.clipboard.offer({"image/png": image})
        self.history.wait_for_kind("image")
        self.expect_still_recording()
        self.choose_oldest()
        self.assertEqual(self.clipboard.read("image/png"), image)

    def test_files_come_back_as_every_file_manager_reads_them(self):
        urls = ["file:///tmp/a.txt", "file:///tmp/b%20c.png"]
        self.clipboard.offer({"text/uri-list": ("\r\n".join(urls) + "\r\n").encode()})
        self.history.wait_for_kind("files")
        self.expect_still_recording()
        self.choose_oldest()
        self.assertEqual(self.clipboard.read("text/uri-list").decode().split(), urls)
        self.assertEqual(self.clipboard.read("x-special/gnome-copied-files"),
                         ("copy\n" + "\n".join(urls)).encode())
        self.assertEqual(self.clipboard.read("application/x-kde-cutselection"), b"0")

    def test_rich_text_comes_back_with_its_text_and_its_html(self):
        self.clipboard.offer({"UTF8_STRING": "größer".encode(), "text/html": HTML})
        self.history.wait_for_kind("richText")
        self.expect_still_recording()
        self.choose_oldest()
        self.assertEqual(self.clipboard.read("text/html"), HTML)
        for target in ("UTF8_STRING", "text/plain;charset=utf-8", "text/plain"):
            self.assertEqual(self.clipboard.read(target), "größer".encode())
        self.assertEqual(self.clipboard.read("STRING"), "größer".encode("latin-1"))


class AfterTheOwner(TesslyCase):
    """A copy outlives the program it came from."""

    def test_recorded_text_can_be_pasted_after_its_program_ended(self):
        process = self.clipboard.copy("outlives its program")
        self.history.wait_for_text("outlives its program")
        self.desktop.end(process)
        self.wait_for_own_content()
        self.assertEqual(self.clipboard.read(), b"outlives its program")
        self.expect_still_recording()
        self.assertEqual(self.history.find("outlives its program").copy_count, 1)

    def test_all_recorded_flavours_outlive_their_program(self):
        offer = self.clipboard.offer({"UTF8_STRING": b"rich words", "text/html": HTML})
        self.history.wait_for_kind("richText")
        offer.end()
        self.wait_for_own_content()
        self.assertEqual(self.clipboard.read("text/html"), HTML)
        self.assertEqual(self.clipboard.read(), b"rich words")

    def test_an_owner_that_serves_only_once_does_not_spoil_the_users_paste(self):
        offer = self.clipboard.offer({"UTF8_STRING": b"served once"}, "--one-shot")
        self.history.wait_for_text("served once")
        wait_until(offer.has_ended, "reading used the owner up")
        self.wait_for_own_content()
        self.assertEqual(self.clipboard.read(), b"served once")

    def test_xclip_told_to_serve_once_does_not_spoil_the_users_paste(self):
        with open(self.clipboard.file(b"served once"), "rb") as file:
            process = self.desktop.start(
                ["xclip", "-quiet", "-loops", "1", "-selection", "clipboard", "-i"], stdin=file)
        self.history.wait_for_text("served once")
        wait_until(lambda: process.poll() is not None, "reading used xclip up")
        self.wait_for_own_content()
        self.assertEqual(self.clipboard.read(), b"served once")


if __name__ == "__main__":
    unittest.main()
