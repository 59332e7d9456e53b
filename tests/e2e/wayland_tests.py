"""What holds on every Wayland desktop that lets programs have the clipboard."""

import json
import os
import random
import signal
import time

import shared_tests
from tessly_e2e import png, procfs, wait_until
from tessly_e2e.commands import DONE, FAILED, Expecting
from tessly_e2e.editors import GtkEditor, QtEditor
from tessly_e2e.hand import BETWEEN_KEYS, pause
from tessly_e2e.tessly import MARKER
from tessly_e2e.wayland_case import Heartbeat
from tessly_e2e.waiting import holds_for

HTML = b"<p>A <b>bold</b> word</p>"
SECRET = b"correct horse battery staple"
TEXT = "text/plain;charset=utf-8"

# Shorter than any deadline for an owner's answer, so that a program that waits cannot pass.
PROMPTLY = 3.0
HEARTBEAT = 0.7
# An owner that leaves this long after Tessly has read it was not one for a single read.
USED_UP = 1.5
# What one more transfer may leave behind, in kilobytes: allocators keep a little.
LEFT_BEHIND = 4 * 1024
# The configured maximum for a content, one chunk, and what decoding and saving hold meanwhile.
LIMIT = 25 * 1024


def is_light(red, green, blue):
    return min(red, green, blue) > 230


class Copies:
    def expect_source(self, clip, program):
        self.assertEqual((clip.source_app_name, clip.source_bundle_id),
                         (program.source_name, program.source_id))

    def test_text_is_recorded_without_a_source_where_no_window_is_in_front(self):
        self.clipboard.copy("first line\nsecond line größer 日本")
        clip = self.history.wait_for_text("first line\nsecond line größer 日本")
        self.assertEqual((clip.kind, clip.preview), ("text", "first line second line größer 日本"))
        self.assertEqual((clip.source_app_name, clip.source_bundle_id), (None, None))
        self.assertEqual((clip.is_pinned, clip.copy_count), (0, 1))

    def test_text_of_a_gtk_editor_is_recorded_with_its_source(self):
        editor = GtkEditor(self.desktop).start("from a GTK editor\nits second line")
        editor.copy_all()
        clip = self.history.wait_for_text("from a GTK editor\nits second line")
        self.assertEqual(clip.kind, "text")
        self.expect_source(clip, editor)

    def test_text_of_a_qt_editor_is_recorded_with_its_source(self):
        editor = QtEditor(self.desktop).start("from a Qt editor")
        editor.copy_all()
        clip = self.history.wait_for_text("from a Qt editor")
        self.assertEqual((clip.kind, clip.preview), ("text", "from a Qt editor"))
        self.expect_source(clip, editor)

    def test_text_of_an_editor_on_x11_is_recorded(self):
        editor = GtkEditor(self.desktop, backend="x11").start("from an editor on X11")
        editor.copy_all()
        clip = self.history.wait_for_text("from an editor on X11")
        self.assertEqual((clip.kind, clip.source_app_name), ("text", "Mousepad"))

    def test_html_is_recorded_as_rich_text(self):
        self.clipboard.offer({TEXT: b"A bold word", "text/html": HTML})
        clip = self.history.wait_for_kind("richText")
        self.assertEqual((clip.plain_text, clip.html, clip.preview),
                         ("A bold word", HTML, "A bold word"))

    def test_html_alone_is_recorded(self):
        self.clipboard.copy(HTML, "text/html")
        self.assertEqual(self.history.wait_for_kind("richText").html, HTML)

    def test_an_image_is_recorded_byte_for_byte(self):
        image = png.of_size(2 * 2**20)
        self.clipboard.copy(image, "image/png")
        clip = self.history.wait_for_kind("image")
        self.assertEqual(clip.image_png, image)
        self.assertEqual((clip.preview, clip.plain_text), ("Image", None))

    def test_files_are_recorded_as_files(self):
        urls = ["file:///tmp/a.txt", "file:///tmp/b%20c.png"]
        self.clipboard.copy("\r\n".join(["# two files", *urls]) + "\r\n", "text/uri-list")
        clip = self.history.wait_for_kind("files")
        self.assertEqual(json.loads(clip.file_urls), urls)
        self.assertEqual(clip.preview, "a.txt, b c.png")

    def test_a_secret_is_neither_asked_for_nor_recorded_nor_brought_back(self):
        for hint in ("x-kde-passwordManagerHint", "org.nspasteboard.ConcealedType"):
            with self.subTest(hint):
                offer = self.clipboard.offer({TEXT: SECRET, "text/html": SECRET, hint: b"secret"})
                self.expect_still_recording()
                self.assertEqual(offer.content_requests(), [])
        # Long enough to be noticed, whatever is copied next.
        offer = self.clipboard.offer({TEXT: SECRET, "x-kde-passwordManagerHint": b"secret"})
        self.assertTrue(holds_for(1, lambda: offer.content_requests() == []))
        offer.end()
        self.assertTrue(holds_for(1, lambda: self.clipboard.targets() == []))
        self.expect_still_recording()
        self.assertEqual(self.recorded_texts(), [])

    def test_an_owner_that_serves_once_does_not_spoil_the_users_paste(self):
        process = self.clipboard.copy("served once", None, "--paste-once")
        self.history.wait_for_text("served once")
        wait_until(lambda: process.poll() is not None, "reading used wl-copy up")
        self.wait_for_own_content()
        self.assertEqual(self.clipboard.read(), b"served once")
        self.expect_still_recording()
        self.assertEqual(self.history.find("served once").copy_count, 1)

    def test_all_recorded_flavours_outlive_their_program(self):
        offer = self.clipboard.offer({TEXT: b"rich words", "text/html": HTML})
        self.history.wait_for_kind("richText")
        offer.end()
        self.wait_for_own_content()
        self.assertEqual(self.clipboard.read("text/html"), HTML)
        self.assertEqual(self.clipboard.read(), b"rich words")

    def test_a_copy_outlives_its_editor(self):
        editor = GtkEditor(self.desktop).start("outlives its editor")
        editor.copy_all()
        self.history.wait_for_text("outlives its editor")
        # Not because it was read a moment ago.
        self.assertTrue(holds_for(USED_UP, self.clipboard.targets))
        editor.close()
        self.wait_for_own_content()
        self.assertEqual(self.clipboard.read(), b"outlives its editor")

    def test_what_is_cleared_while_its_source_is_there_stays_cleared(self):
        editor = GtkEditor(self.desktop).start()
        self.clipboard.copy("cleared on purpose")
        self.expect_source(self.history.wait_for_text("cleared on purpose"), editor)
        self.assertTrue(holds_for(USED_UP, self.clipboard.targets))
        self.desktop.run(["wl-copy", "--clear"])
        wait_until(lambda: self.clipboard.targets() == [], "the clipboard is empty")
        self.assertTrue(holds_for(2, lambda: self.clipboard.targets() == []))
        editor.close()
        self.assertTrue(holds_for(1, lambda: self.clipboard.targets() == []))
        self.expect_still_recording()

    def test_what_stood_on_the_clipboard_at_the_start_is_not_recorded(self):
        self.tessly.stop()
        self.clipboard.copy("there before")
        self.tessly.start()
        self.expect_still_recording()
        self.assertIsNone(self.history.find("there before"))


class Commands(Expecting):
    def test_what_it_puts_on_the_clipboard_is_not_recorded(self):
        self.record("older")
        self.record("newer")
        self.expect_silence("copy", "2")
        self.wait_for_own_content()
        self.assertEqual(self.clipboard.read(), b"older")
        self.expect_still_recording()
        self.assertEqual(sorted(self.recorded_texts()), ["newer", "older"])
        self.assertEqual(self.history.find("older").copy_count, 1)

    def test_every_flavour_is_put_on_the_clipboard(self):
        self.clipboard.offer({TEXT: "größer".encode(), "text/html": HTML})
        self.history.wait_for_kind("richText")
        self.expect_still_recording()
        self.expect_silence("copy", "2")
        self.wait_for_own_content()
        for name in (TEXT, "text/plain", "UTF8_STRING"):
            self.assertEqual(self.clipboard.read(name), "größer".encode())
        self.assertEqual(self.clipboard.read("STRING"), "größer".encode("latin-1"))
        self.assertEqual(self.clipboard.read("text/html"), HTML)

    def test_an_image_comes_back_byte_for_byte(self):
        image = png.of_size(3 * 2**20)
        self.clipboard.copy(image, "image/png")
        self.history.wait_for_kind("image")
        self.expect_still_recording()
        self.expect_silence("copy", "2")
        self.wait_for_own_content()
        self.assertEqual(self.clipboard.read("image/png"), image)

    def test_files_come_back_as_every_file_manager_reads_them(self):
        urls = ["file:///tmp/a.txt", "file:///tmp/b%20c.png"]
        self.clipboard.copy("\r\n".join(urls) + "\r\n", "text/uri-list")
        self.history.wait_for_kind("files")
        self.expect_still_recording()
        self.expect_silence("copy", "2")
        self.wait_for_own_content()
        self.assertEqual(self.clipboard.read("text/uri-list").decode().split(), urls)
        self.assertEqual(self.clipboard.read("x-special/gnome-copied-files"),
                         ("copy\n" + "\n".join(urls)).encode())


class Panel:
    """`desktop.windows` sees the panel."""

    # What the panel's design gives it.
    SIZE = (660, 560)

    # Whether a layer surface that has the keys loses them to windows.
    layer_loses_keys = True

    def setUp(self):
        super().setUp()
        self.is_layer = self.tessly.has_layer_panel()

    def expect_closed_by_loss(self, terminal):
        """Another window is to have the keys now."""
        if self.is_layer and not self.layer_loses_keys:
            self.assertTrue(holds_for(0.5, self.tessly.panel_window))
            self.tessly.close_panel()
        self.tessly.wait_for_closed_panel()
        wait_until(terminal.is_in_front, "the terminal has the keys")

    def open_above_terminal(self):
        self.terminal(self.desktop).start()
        return self.tessly.open_panel().window

    def test_it_floats_whole_on_the_screen_and_has_the_keys(self):
        panel = self.open_above_terminal()
        self.assertTrue(panel.is_active)
        self.assertTrue(panel.is_floating)
        self.assertEqual((panel.width, panel.height), self.SIZE)
        width, height = self.desktop.size
        self.assertTrue(0 <= panel.x <= width - panel.width, panel)
        self.assertTrue(0 <= panel.y <= height - panel.height, panel)

    def test_a_permission_that_the_compositor_has_forgotten_does_no_harm(self):
        self.terminal(self.desktop).start()
        self.desktop.run([self.tessly.program, "show"],
                         environment={**self.tessly.environment, "XDG_ACTIVATION_TOKEN": "old"})
        self.tessly.wait_for_panel()
        self.tessly.close_panel()
        # Nor at the next opening, which has none.
        self.tessly.open_panel()

    def test_escape_closes_it_and_the_window_before_has_the_keys_again(self):
        terminal = self.terminal(self.desktop).start()
        self.tessly.open_panel()
        self.tessly.close_panel()
        wait_until(terminal.is_in_front, "the terminal has the keys")
        self.keyboard.type("typed")
        terminal.wait_for_text("typed")

    def test_a_click_into_another_window_closes_it(self):
        terminal = self.terminal(self.desktop).start()
        # Where the panel opens beside the pointer, it leaves the other corner free.
        self.desktop.pointer.move(self.desktop.size[0] - 10, 10)
        self.tessly.open_panel()
        place = terminal.geometry()
        self.desktop.pointer.click(place.x + 20, place.y + place.height - 20)
        self.tessly.wait_for_closed_panel()
        wait_until(terminal.is_in_front, "the terminal has the keys")

    def test_losing_the_keys_closes_it(self):
        terminal = self.terminal(self.desktop).start()
        self.tessly.open_panel()
        self.desktop.windows.activate(terminal.window)
        self.expect_closed_by_loss(terminal)

    def test_a_window_that_comes_up_closes_it(self):
        if self.is_layer and not self.layer_loses_keys:
            self.skipTest("the panel keeps the keys")
        self.tessly.open_panel()
        terminal = self.terminal(self.desktop).start()
        self.expect_closed_by_loss(terminal)

    def test_it_is_beside_the_pointer_where_it_can_choose_its_place(self):
        if not self.is_layer:
            self.skipTest("the compositor chooses")
        self.terminal(self.desktop).start()
        width, height = self.SIZE
        # Below it, and above where there is no room below; whole on the screen.
        for pointer, place in (((400, 50), (400 - width // 2, 50 + 7)),
                               ((1270, 780), (1280 - width, 780 - 6 - height))):
            self.desktop.pointer.move(*pointer)
            panel = self.tessly.open_panel().window
            self.assertEqual((panel.width, panel.height), self.SIZE)
            self.assertLessEqual(abs(panel.x - place[0]) + abs(panel.y - place[1]), 3, panel)
            self.tessly.close_panel()

    def test_the_preview_stands_beside_it_and_leaves_it_the_keys(self):
        self.record("seen beside it")
        panel = self.open_above_terminal()
        x, y, width, height = self.tessly.wait_for_preview()
        # A window is taken to be in the middle.
        left = panel.x if self.is_layer else (self.desktop.size[0] - panel.width) // 2
        self.assertTrue(x >= left + panel.width or x + width <= left)
        self.assertEqual(height, panel.height)
        self.assertTrue(0 <= x and x + width <= self.desktop.size[0])
        if self.desktop.screen is not None:
            middle = x + width // 2 - 20, y + height // 2 - 20, 40, 40
            wait_until(lambda: self.desktop.screen.picture(*middle).share(is_light) == 1,
                       "the preview is seen there")
        self.desktop.pointer.click(x + width // 2, y + height // 2)
        self.assertTrue(holds_for(0.5, lambda: self.tessly.has_keys(self.tessly.panel_window())))
        self.keyboard.press("Escape")
        wait_until(lambda: self.tessly.preview() is None, "the preview is closed")
        self.assertIsNotNone(self.tessly.panel_window())
        self.keyboard.press("Escape")
        self.tessly.wait_for_closed_panel()

    def test_a_preview_that_is_up_goes_with_it(self):
        self.record("seen beside it")
        terminal = self.terminal(self.desktop).start()
        for _ in range(3):
            self.tessly.open_panel()
            self.tessly.wait_for_preview()
            self.tessly.command("hide")
            self.tessly.wait_for_closed_panel()
            self.assertIsNone(self.tessly.preview())
            wait_until(terminal.is_in_front, "the terminal has the keys")
        self.assertTrue(self.tessly.is_running())

    def test_it_opens_again_and_again(self):
        for _ in range(5):
            self.tessly.command("show")
            window = wait_until(self.tessly.panel_window, "the panel is open")
            wait_until(lambda: self.tessly.has_keys(window), "the panel has the keys")
            self.tessly.command("toggle")
            self.tessly.wait_for_closed_panel()

    def test_it_can_be_searched(self):
        for text in ("alpha", "beta", "gamma"):
            self.record(text)
        panel = self.tessly.open_panel()
        panel.search("beta")
        found = panel.wait_for_rest()
        panel.search("x")
        self.assertNotEqual(panel.wait_for_rest(), found)


class Status(Expecting):
    def test_it_tells_what_works_here(self):
        status = self.status()
        self.assertEqual({name: status[name] for name in (
            "running", "session", "capture", "paste", "hotKeys", "tray")},
            {"running": True, "session": "wayland", "capture": True, "paste": True,
             "hotKeys": False, "tray": False})


class Into:
    """What holds for every program that is pasted into; `make` starts one."""

    def start_program(self):
        return self.make(self.desktop).start()

    def expect_focus_back(self, program):
        wait_until(program.is_in_front, "the program pasted into has the focus")

    def test_return_pastes_what_was_searched_for(self):
        self.record("needle one")
        self.record("something else")
        program = self.start_program()
        self.choose("needle")
        program.wait_for_text("needle one")
        self.expect_focus_back(program)
        self.expect_still_recording()
        self.assertEqual(sorted(self.recorded_texts()), ["needle one", "something else"])
        self.assertEqual(self.history.find("needle one").copy_count, 1)

    def test_shift_return_pastes_rich_text_as_plain_text(self):
        self.record("something else")
        self.clipboard.offer({TEXT: b"rich words", "text/html": HTML})
        self.history.wait_for_kind("richText")
        program = self.start_program()
        self.choose("rich", "Shift+Return")
        program.wait_for_text("rich words")
        self.expect_focus_back(program)
        targets = self.clipboard.targets()
        self.assertNotIn("text/html", targets)
        self.assertIn(TEXT, targets)

    def test_alt_and_shift_may_stay_held_down(self):
        self.record("needle one")
        program = self.start_program()
        self.tessly.open_panel()
        with self.keyboard.held("Alt", "Shift"):
            self.keyboard.press("Return")
            self.tessly.wait_for_closed_panel()
            if self.desktop.lifts_modifiers:
                program.wait_for_arrival()
            else:
                # They are part of every chord here: it is waited for their release.
                self.assertTrue(holds_for(0.5, lambda: not program.text()))
        program.wait_for_text("needle one")

    def test_a_command_pastes_by_position(self):
        self.record("older entry")
        self.record("newer entry")
        program = self.start_program()
        self.tessly.command("paste", "2")
        program.wait_for_text("older entry")
        self.assertTrue(program.is_in_front())


class HeldKeys:
    """What a compositor's own key bindings start."""

    def test_commands_started_while_modifiers_stay_down(self):
        program = self.start_program()
        commands = []
        with self.keyboard.held("Alt", "Shift"):
            for position in (2, 3, 4):
                commands.append(
                    self.desktop.start([self.tessly.program, "paste", str(position)]))
                pause(BETWEEN_KEYS)
        self.assertEqual([command.wait() for command in commands], [DONE] * 3)
        self.expect_in(program, "two;", "three;", "four;")


class Overtaken:
    """Another program copies between the moment at which an entry is put on the clipboard and the
    one at which the keys are pressed."""

    settings = {"moveUsedItemsToTop": True}

    def test_nothing_is_pasted_and_the_command_fails(self):
        self.record("older entry")
        self.record("newer entry")
        terminal = self.make(self.desktop).start()
        other = self.enterContext(self.desktop.program())
        other.copy_when_offered(MARKER, "a password")
        answer = self.tessly.command("paste", "2", check=False)
        self.assertTrue(holds_for(1, lambda: terminal.text() == ""), terminal.text())
        self.assertEqual(answer.returncode, FAILED)
        self.assertEqual(len(answer.stderr.splitlines()), 1)
        self.assertEqual(self.clipboard.read(), b"a password")
        self.assertEqual([clip.plain_text for clip in self.history.clips()
                          if clip.plain_text != "a password"], ["newer entry", "older entry"])


class Leaving:
    """A copy that is made while the owner before it leaves is the newer one."""

    def test_in_the_step_that_withdraws_the_old_one(self):
        program = self.enterContext(self.desktop.program())
        for number in range(6):
            program.copy(f"offered first {number}")
            self.history.wait_for_text(f"offered first {number}")
            program.offer_anew({TEXT: b"offered next %d" % number})
            self.assertTrue(holds_for(0.2, program.owns_clipboard), number)
            self.history.wait_for_text(f"offered next {number}", 3)
            self.assertEqual(self.clipboard.read(), b"offered next %d" % number)

    def test_by_a_program_that_starts_as_the_other_is_killed(self):
        for number in range(20):
            process = self.clipboard.copy(f"the old one {number}")
            self.history.wait_for_text(f"the old one {number}")
            with open(self.clipboard.file(b"the new one %d" % number), "rb") as file:
                process.kill()
                self.desktop.start(["wl-copy", "--foreground"], stdin=file)
            self.history.wait_for_text(f"the new one {number}", 3)
            self.assertEqual(self.clipboard.read(), b"the new one %d" % number)


class Hostile:
    """Owners of the clipboard that hang, flood or vanish. `show` and `hide` are of the module."""

    content = {TEXT: b"y" * 600_000}

    def setUp(self):
        super().setUp()
        # What is loaded once is loaded before anything is measured.
        self.expect_still_recording()
        self.open_and_close_panel()
        self.before = self.memory()
        self.heart = self.enterContext(Heartbeat(self.desktop))

    def memory(self):
        return procfs.memory(self.tessly.pid).anonymous

    def open_and_close_panel(self):
        self.tessly.command("show")
        wait_until(self.tessly.panel_window, "the panel opens at once", PROMPTLY)
        self.tessly.command("hide")
        wait_until(lambda: self.tessly.panel_window() is None, "the panel closes at once", PROMPTLY)

    def expect_alive(self):
        """The main thread is never held, and the panel opens at once."""
        self.heart.beat(0.6)
        self.assertLess(self.heart.longest, HEARTBEAT)
        self.open_and_close_panel()

    def expect_unharmed(self):
        """Nothing of it is recorded, the next copy is recorded at once, and memory comes back."""
        self.expect_alive()
        self.clipboard.copy("after the trouble")
        self.history.wait_for_text("after the trouble", PROMPTLY)
        wait_until(lambda: self.memory() <= self.before + LEFT_BEHIND,
                   lambda: f"memory is back: {self.before} kB before, {self.memory()} kB now")
        self.assertEqual(self.recorded_texts(), ["after the trouble"])

    def misbehave(self, behaviour):
        offer = self.clipboard.offer(self.content, "--behave", behaviour)
        offer.wait_for_request(TEXT)
        return offer

    def test_an_owner_that_is_stopped(self):
        self.tessly.command("pause")
        process = self.clipboard.copy("never served")
        process.send_signal(signal.SIGSTOP)
        self.tessly.command("resume")
        self.expect_unharmed()

    def test_an_owner_that_is_stopped_amid_its_content(self):
        offer = self.misbehave("stall")
        offer.process.send_signal(signal.SIGSTOP)
        self.expect_unharmed()

    def test_an_owner_that_never_delivers(self):
        self.misbehave("silent")
        self.expect_unharmed()

    def test_an_owner_that_ends_when_it_is_asked(self):
        wait_until(self.misbehave("vanish").has_ended, "the owner ended")
        self.expect_unharmed()

    def test_an_owner_that_closes_the_pipe_at_once(self):
        self.misbehave("empty")
        self.expect_unharmed()

    def test_an_owner_that_drips(self):
        self.misbehave("drip")
        self.expect_unharmed()

    def test_an_owner_that_never_ends(self):
        self.misbehave("endless")
        self.assertTrue(holds_for(2, lambda: self.memory() <= self.before + 2 * LIMIT))
        self.expect_unharmed()

    def test_an_owner_of_something_that_is_no_png(self):
        self.clipboard.offer({"image/png": b"GIF89a, or nothing"}).wait_for_request("image/png")
        self.expect_unharmed()

    def test_a_reader_that_takes_nothing_stops_nobody(self):
        image = png.of_size(2 * 2**20)
        offer = self.clipboard.offer({"image/png": image})
        self.history.wait_for_kind("image")
        offer.end()
        self.wait_for_own_content()
        # Nothing is taken out of this pipe either.
        reading, writing = os.pipe()
        self.addCleanup(os.close, reading)
        reader = self.desktop.start(["wl-paste", "--type", "image/png"], stdout=writing)
        os.close(writing)
        reader.send_signal(signal.SIGSTOP)
        self.assertEqual(self.clipboard.read("image/png"), image)
        self.expect_alive()
        self.expect_still_recording()


class Killed:
    ROUNDS = 4

    def test_a_kill_at_any_moment_leaves_a_sound_history_with_all_that_was_saved(self):
        seed = random.randrange(2**32)
        chance = random.Random(seed)
        seen = set()
        for round_number in range(self.ROUNDS):
            with self.subTest(seed=seed, round=round_number):
                if round_number > 0:
                    self.tessly.start()
                end = time.monotonic() + chance.uniform(0.7, 1.9)
                number = 0
                while time.monotonic() < end:
                    number += 1
                    if number % 3:
                        self.clipboard.copy(f"round {round_number} copy {number}")
                    else:
                        self.clipboard.copy(
                            png.of_size(chance.randrange(10_000, 2_000_000), number), "image/png")
                    self.note_saved(seen, min(end, time.monotonic() + 0.4))
                self.tessly.kill()
                self.assertEqual(self.history.problems(self.desktop.path("scratch")), [])
                self.assertLessEqual(seen, {clip.content_hash for clip in self.history.clips()})
        self.assertTrue(seen, "nothing was recorded at all")

    def note_saved(self, seen, until):
        while time.monotonic() < until:
            seen |= {clip.content_hash for clip in self.history.clips()}
            time.sleep(0.01)


class StartsAndEnds:
    """`editor` types into a window; another is open beside it. Compositors tell each program that
    starts of them, and hear of its end in the midst of it."""

    ROUNDS = 10

    def test_the_desktop_outlives_them(self):
        self.editor(self.desktop).start("beside it")
        editor = self.editor(self.desktop).start()
        for round_number in range(self.ROUNDS):
            with self.subTest(round=round_number):
                if round_number > 0:
                    self.tessly.start()
                if round_number % 3 == 0:
                    self.tessly.stop()
                elif round_number % 3 == 1:
                    self.tessly.kill()
                else:
                    self.tessly.command("quit")
                    wait_until(lambda: not self.tessly.is_running(), "tessly ends")
                    self.assertEqual(self.tessly.process.returncode, 0)
                self.assertTrue(self.desktop.is_alive())
        self.tessly.start()
        self.clipboard.copy("after them all")
        self.history.wait_for_text("after them all")
        self.tessly.open_panel()
        self.tessly.close_panel()
        wait_until(editor.is_in_front, "the editor has the keys")
        self.keyboard.type("typed")
        editor.wait_for_text("typed")


class CompositorsEnd(shared_tests.DisplayServersEnd):
    text_type = TEXT

    def end_display_server(self):
        self.desktop.kill_compositor()
