"""What assistive technology learns of every window, through AT-SPI."""

import unittest

from tessly_e2e import png, wait_until
from tessly_e2e.case import TesslyCase
from tessly_e2e.tray import Tray

# What a person acts on; each has to be told apart by its name.
CONTROLS = {"check box", "list item", "menu item", "page tab", "push button", "radio button",
            "spin box", "text"}


class Tree(TesslyCase):
    accessible = True

    def expect_every_control_named(self, ui):
        for control in ui.find_all():
            if control.role in CONTROLS:
                self.assertNotEqual(control.name, "", f"a {control.role} in:\n{ui.describe()}")

    def focused(self, ui):
        """What has the focus, windows aside."""
        return [control for control in ui.find_all()
                if "focused" in control.states and control.role in CONTROLS]

    def test_the_panel(self):
        self.record("older words")
        self.clipboard.copy("https://www.example.org/")
        self.history.wait_for_kind("link")
        self.tessly.open_panel()
        ui = self.ui(self.tessly)
        rows = ["Link, https://www.example.org/", "Text, older words"]
        wait_until(lambda: ui.names("list item") == rows, "the rows are told")
        self.expect_every_control_named(ui)

        self.assertEqual([control.name for control in self.focused(ui)],
                         ["Search clipboard history"])
        self.assertIn("editable", ui.find("text", "Search clipboard history").states)
        self.assertEqual(ui.names("radio button"),
                         ["All", "Text", "Rich Text", "Image", "Files", "Link"])
        self.assertIn("checked", ui.find("radio button", "All").states)
        self.assertEqual(ui.names("push button"), ["Pause clipboard recording", "Settings"])

        selected = [row.name for row in ui.find_all("list item") if "selected" in row.states]
        self.assertEqual(len(selected), 1)
        self.keyboard.press("Up")
        first = ui.find("list item", rows[0])
        wait_until(lambda: "selected" in first.states, "the first row is selected")
        self.keyboard.press("Down")
        wait_until(lambda: "selected" in ui.find("list item", rows[1]).states
                   and "selected" not in first.states, "the selection moved")

        self.keyboard.type("older")
        wait_until(lambda: ui.names("list item") == rows[1:], "the list follows the search")
        self.assertEqual(ui.find("text", "Search clipboard history").text, "older")

    def test_the_panel_can_be_worked_without_pointer_and_keys(self):
        self.record("some words")
        self.tessly.open_panel()
        ui = self.ui(self.tessly)
        image = ui.find("radio button", "Image")
        image.act("Press")
        wait_until(lambda: "checked" in image.states, "the filter is chosen")
        ui.find("label", "Clipboard is empty")
        ui.find("radio button", "All").act("Press")
        ui.find("push button", "Pause clipboard recording").act("Press")
        self.wait_for_banner(self.tessly, "Clipboard recording paused.")
        ui.find("push button", "Resume clipboard recording").act("Press")
        ui.find("list item", "Text, some words").act("Press")
        self.tessly.wait_for_closed_panel()
        self.wait_for_own_content()

    def expect_gone(self, ui, role, name):
        wait_until(lambda: not ui.find_all(role, name), lambda: f"{name} is gone:\n{ui.describe()}")

    def test_the_preview(self):
        image = png.encode(300, 200, bytes(3 * 300 * 200))
        self.clipboard.copy(image, "image/png")
        self.history.wait_for_kind("image")
        self.clipboard.offer({"text/html": b"<p>of <b>HTML</b></p><img src='file:///gone.png'>"})
        self.history.wait_for_kind("richText")
        self.record("first line\nsecond line")
        self.tessly.open_panel()
        ui = self.ui(self.tessly)
        ui.find("label", "first line\nsecond line")
        self.keyboard.press("Control+space")
        self.expect_gone(ui, "panel", "Preview")
        self.keyboard.press("Control+space")
        ui.find("label", "first line\nsecond line")
        self.assertIn("Text", ui.find("panel", "Preview").description)
        self.assertEqual([control.name for control in self.focused(ui)],
                         ["Search clipboard history"])

        self.keyboard.press("Down")
        ui.find("label", "of HTML")
        self.expect_gone(ui, "label", "first line\nsecond line")
        self.keyboard.press("Down")
        picture = f"Image, 300 × 200 pixels • {len(image)} bytes"
        ui.find("graphic", picture)
        self.expect_every_control_named(ui)

        self.keyboard.press("Escape")
        self.expect_gone(ui, "panel", "Preview")
        self.expect_gone(ui, "graphic", picture)
        self.assertIsNotNone(self.tessly.panel_window())

    def test_the_settings(self):
        self.tessly.open_panel()
        ui = self.ui(self.tessly)
        self.click(ui.find("push button", "Settings"))
        for tab in ("General", "Privacy", "Shortcuts", "About"):
            self.click(ui.find("page tab", tab))
            wait_until(lambda: "selected" in ui.find("page tab", tab).states, f"{tab} is shown")
            self.expect_every_control_named(ui)
        self.assertEqual(ui.names("page tab"), ["General", "Privacy", "Shortcuts", "About"])

        self.click(ui.find("page tab", "General"))
        box = ui.find("check box", "Remember images")
        self.assertIn("checked", box.states)
        box.act("Toggle" if "Toggle" in box.actions else "Press")
        wait_until(lambda: "checked" not in box.states, "the box is switched")
        box.take_focus()
        wait_until(lambda: "focused" in box.states, "the box has the focus")
        spin = ui.find("spin box", "Maximum item size: 25 MB")
        self.assertEqual(spin.value, 25)
        spin.act("Increase")
        ui.find("spin box", "Maximum item size: 26 MB")

    def test_the_menu(self):
        tray = Tray(self.desktop).start()
        tray.click(self.tessly.pid, button=3)
        ui = self.ui(self.tessly)
        ui.find("menu item", "Quit Tessly")
        self.expect_every_control_named(ui)
        ui.find("menu item", "Open Quick Paste").act("Press")
        self.tessly.wait_for_panel()


if __name__ == "__main__":
    unittest.main()
