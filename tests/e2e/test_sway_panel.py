"""sway: the panel, the state of things, and what is left when the compositor goes."""

import unittest

import wayland_tests
from tessly_e2e import Tessly, procfs, wait_until
from tessly_e2e.commands import Expecting
from tessly_e2e.editors import WaylandTerminal
from tessly_e2e.sway import RIGHT, Sway
from tessly_e2e.waiting import holds_for, settled
from tessly_e2e.wayland_case import WaylandCase, WaylandDesktopCase


class Panel(wayland_tests.Panel, WaylandCase):
    desktop_class = Sway
    terminal = WaylandTerminal
    layer_loses_keys = False

    def test_a_window_is_in_the_middle(self):
        if self.is_layer:
            self.skipTest("the panel chooses its place itself")
        panel = self.open_above_terminal()
        width, height = self.desktop.size
        self.assertLess(abs(panel.x + panel.width / 2 - width / 2), 2)
        self.assertLess(abs(panel.y + panel.height / 2 - height / 2), 20)

    def full_screen_terminal(self):
        terminal = WaylandTerminal(self.desktop).start()
        self.desktop.messages.command("fullscreen enable")
        wait_until(lambda: terminal.geometry().width == self.desktop.size[0], "it is full-screen")
        return terminal

    def test_before_a_full_screen_window_it_is_seen_and_pastes_into_it(self):
        if not self.is_layer:
            self.skipTest("it is a window, and so behind it")
        self.record("pasted into it")
        terminal = self.full_screen_terminal()
        self.desktop.pointer.move(640, 50)
        before = settled(self.desktop.screen.picture, 0.3, "the screen")
        panel = self.tessly.open_panel().window
        # Down the middle of the panel, which has an edge above and below.
        middle = panel.x + panel.width // 2
        after = self.desktop.screen.picture()
        columns = [[picture.rgb[3 * (y * picture.width + middle):3 * (y * picture.width + middle) + 3]
                    for y in range(picture.height)] for picture in (before, after)]
        changed = [y for y, (old, new) in enumerate(zip(*columns)) if old != new]
        self.assertLessEqual(abs(changed[0] - panel.y), 2)
        self.assertLessEqual(abs(changed[-1] - (panel.y + panel.height - 1)), 2)
        self.keyboard.press("Return")
        self.tessly.wait_for_closed_panel()
        terminal.wait_for_text("pasted into it")

    def test_behind_a_full_screen_window_it_closes_again(self):
        if self.is_layer:
            self.skipTest("it is before it")
        terminal = self.full_screen_terminal()
        self.tessly.command("show")
        wait_until(lambda: any("did not get the keyboard" in line
                               for line in self.tessly.remarks()), "Tessly says why")
        self.keyboard.type("typed")
        wait_until(lambda: terminal.text() == "typed", "the terminal has the keys")
        # It opens again as soon as it can be seen.
        self.desktop.messages.command("fullscreen disable")
        wait_until(lambda: terminal.geometry().width < self.desktop.size[0], "it is a tile")
        self.assertIsNone(self.tessly.panel_window())
        self.tessly.open_panel()

    def test_it_loads_nothing_for_drawing_with_a_graphics_card(self):
        self.tessly.open_panel()
        self.tessly.close_panel()
        loaded = procfs.libraries(self.tessly.pid)
        self.assertTrue(any(name.startswith("libQt6Quick.") for name in loaded), loaded)
        # The toolkit is linked with the small libraries that would load these.
        self.assertEqual([name for name in loaded
                          if name.startswith(("libEGL_", "libGLX_", "libLLVM"))], [])


class OtherWindows(WaylandDesktopCase):
    desktop_class = Sway
    accessible = True

    def test_the_first_run_leads_into_the_panel_and_from_there_to_the_settings(self):
        tessly = Tessly(self.desktop, settings={"hasCompletedOnboarding": False})
        self.addCleanup(tessly.kill)
        tessly.launch()
        welcome = tessly.wait_for_window("Welcome to Tessly")
        self.assertTrue(welcome.is_floating)
        self.assertEqual((welcome.width, welcome.height), (650, 510))

        def is_enabled():
            # The keyboard that Tessly makes at its start takes the keys from every window for a
            # moment.
            self.keyboard.press("Return")
            return not holds_for(0.5, lambda: tessly.window("Welcome to Tessly"))
        wait_until(is_enabled, "the welcome window is gone")
        tessly.wait_for_panel()
        self.clipboard.copy("copied after")
        tessly.history.wait_for_text("copied after")
        button = self.ui(tessly).find("push button", "Settings")
        button.act(button.actions[0])
        self.assertTrue(tessly.wait_for_window("Tessly Settings").is_floating)
        tessly.wait_for_closed_panel()
        tessly.stop()


class Status(wayland_tests.Status, WaylandCase):
    desktop_class = Sway


class Tray(Expecting, WaylandCase):
    """The bar's tray is there, in the lower right corner."""

    desktop_class = Sway

    def setUp(self):
        super().setUp()
        self.desktop.messages.command("bar bar-0 mode dock")
        self.addCleanup(self.desktop.messages.command, "bar bar-0 mode invisible")
        self.desktop.start(["swaybar", "--bar_id", "bar-0"])

    def corner(self):
        width, height = self.desktop.size
        return self.desktop.screen.picture(width - 22, height - 22, 22, 22)

    def menu(self):
        return next((window for window in self.desktop.windows.all()
                     if window.title == "Tessly Menu"), None)

    def icon(self):
        """Where it is, once it is seen."""
        wait_until(lambda: self.status()["tray"], "there is a tray")
        wait_until(lambda: self.corner().share(lambda red, green, blue: blue > 100) > 0.1,
                   "the icon is seen")
        return [size - 10 for size in self.desktop.size]

    def test_a_bar_that_asks_for_a_window_gets_a_menu_of_its_own_size(self):
        terminal = WaylandTerminal(self.desktop).start()
        width = terminal.geometry().width
        self.desktop.pointer.click(*self.icon(), button=RIGHT)
        menu = wait_until(self.menu, "the menu is open")
        self.assertTrue(menu.is_floating)
        self.assertLess(menu.height, 300)
        self.assertEqual(terminal.geometry().width, width, "it is no tile beside it")
        wait_until(lambda: self.menu().is_active, "the menu has the keys")
        self.desktop.pointer.move(menu.x + 20, menu.y + 20)
        self.desktop.windows.activate(terminal.window)
        wait_until(lambda: not self.menu(), "it goes with the focus")

    def test_where_the_focus_follows_the_pointer_the_menu_waits_for_it(self):
        terminal = WaylandTerminal(self.desktop).start()
        self.desktop.messages.command("focus_follows_mouse yes")
        self.addCleanup(self.desktop.messages.command, "focus_follows_mouse no")
        x, y = self.icon()
        self.desktop.pointer.click(x, y, button=RIGHT)
        menu = wait_until(self.menu, "the menu is open")
        wait_until(lambda: self.menu().is_active, "the menu has the keys")
        # Over the terminal, which gets the focus on the way.
        for step in range(1, 6):
            self.desktop.pointer.move(x - step * 20, y - step * 20)
        wait_until(lambda: self.desktop.windows.active == terminal.window,
                   "the terminal has the focus")
        self.assertTrue(holds_for(0.5, self.menu))
        self.desktop.pointer.move(menu.x + 20, menu.y + 20)
        wait_until(lambda: self.menu().is_active, "the menu has the focus back")
        self.desktop.pointer.move(20, 20)
        wait_until(lambda: not self.menu(), "it goes with the pointer")

    def test_a_click_on_the_icon_opens_the_panel_and_another_closes_it(self):
        place = self.icon()
        self.desktop.pointer.click(*place)
        window = wait_until(self.tessly.panel_window, "the panel is open")
        wait_until(lambda: self.tessly.has_keys(window), "the panel has the keys")
        self.desktop.pointer.click(*place)
        self.tessly.wait_for_closed_panel()


class StartsAndEnds(wayland_tests.StartsAndEnds, WaylandCase):
    desktop_class = Sway
    editor = WaylandTerminal


class CompositorsEnd(wayland_tests.CompositorsEnd, WaylandCase):
    desktop_class = Sway


class Killed(wayland_tests.Killed, WaylandCase):
    desktop_class = Sway


if __name__ == "__main__":
    unittest.main()
