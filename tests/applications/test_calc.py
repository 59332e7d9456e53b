"""LibreOffice Calc: its cells stay cells, its charts are pictures."""

import os
import struct
import unittest
import xml.etree.ElementTree

from tessly_e2e import png, wait_until
from tessly_e2e.case import TesslyCase
from tessly_e2e.waiting import holds_for, settled

_OFFICE = "urn:oasis:names:tc:opendocument:xmlns:office:1.0"
_TABLE = "urn:oasis:names:tc:opendocument:xmlns:table:1.0"
_HEAD = """<?xml version="1.0" encoding="UTF-8"?>
<office:document xmlns:office="urn:oasis:names:tc:opendocument:xmlns:office:1.0"
 xmlns:table="urn:oasis:names:tc:opendocument:xmlns:table:1.0"
 xmlns:text="urn:oasis:names:tc:opendocument:xmlns:text:1.0"
 xmlns:draw="urn:oasis:names:tc:opendocument:xmlns:drawing:1.0"
 xmlns:svg="urn:oasis:names:tc:opendocument:xmlns:svg-compatible:1.0"
 xmlns:chart="urn:oasis:names:tc:opendocument:xmlns:chart:1.0"
 office:version="1.3" office:mimetype="application/vnd.oasis.opendocument.spreadsheet">
<office:body><office:spreadsheet><table:table table:name="Sheet1">
"""
_FOOT = "</table:table></office:spreadsheet></office:body></office:document>"
_ROWS = "".join(
    "<table:table-row>" + "".join(
        f'<table:table-cell office:value-type="float" office:value="{value}">'
        f"<text:p>{value}</text:p></table:table-cell>" for value in row) + "</table:table-row>"
    for row in ((11, 12), (21, 22)))
_CHART = """<table:shapes><draw:frame svg:x="1cm" svg:y="2cm" svg:width="22cm" svg:height="14cm">
<draw:object><office:document
 office:mimetype="application/vnd.oasis.opendocument.chart" office:version="1.3"><office:body>
<office:chart><chart:chart chart:class="chart:bar" svg:width="22cm" svg:height="14cm">
<chart:plot-area table:cell-range-address="Sheet1.A1:Sheet1.B2">
<chart:axis chart:dimension="x" chart:name="primary-x"/>
<chart:axis chart:dimension="y" chart:name="primary-y"/>
<chart:series chart:values-cell-range-address="Sheet1.A1:Sheet1.A2" chart:class="chart:bar">
<chart:data-point chart:repeated="2"/></chart:series></chart:plot-area>
</chart:chart></office:chart></office:body></office:document></draw:object>
</draw:frame></table:shapes>"""
# The office takes its time for its first start in a home folder.
_TIMEOUT = 120


class Calc:
    def __init__(self, desktop):
        self._desktop = desktop
        self.path = desktop.path("files", "sheet.fods")

    def start(self, shapes=""):
        with open(self.path, "w") as file:
            file.write(_HEAD + shapes + _ROWS + _FOOT)
        self._process = self._desktop.start(
            ["soffice", "--calc", "--norestore", "--nologo", "--nofirststartwizard", self.path],
            environment={"SAL_USE_VCLPLUGIN": "gen"}, name="calc")
        wait_until(self._find, "the sheet is open", _TIMEOUT)
        wait_until(lambda: self._desktop.windows.active == self._find().id,
                   "the sheet is in front", _TIMEOUT)
        self.window = settled(self._find, 1, "the window of the sheet", _TIMEOUT)
        settled(lambda: self._desktop.screen.picture().rgb, 1, "the sheet is drawn", _TIMEOUT)
        return self

    def _find(self):
        return next((window for window in self._desktop.windows.visible()
                     if "sheet.fods" in window.title), None)

    def press(self, *chords):
        for chord in chords:
            self._desktop.keyboard.press(chord)

    def save(self):
        before = os.stat(self.path).st_mtime_ns
        self.press("Control+s")
        wait_until(lambda: os.stat(self.path).st_mtime_ns != before, "the sheet is saved")
        return wait_until(self._values, "the sheet can be read")

    def _values(self):
        """The numbers in the sheet, by row and column; None while it is written."""
        try:
            root = xml.etree.ElementTree.parse(self.path)
        except xml.etree.ElementTree.ParseError:
            return None
        found, row_number = {}, 0
        for row in root.iter(f"{{{_TABLE}}}table-row"):
            column = 0
            for cell in row:
                value = cell.get(f"{{{_OFFICE}}}value")
                if value is not None:
                    found[row_number, column] = value
                column += int(cell.get(f"{{{_TABLE}}}number-columns-repeated", 1))
            row_number += int(row.get(f"{{{_TABLE}}}number-rows-repeated", 1))
        return found

    def has_pictures(self):
        with open(self.path) as file:
            return "draw:image" in file.read()


class Cells(TesslyCase):
    def copy_cells(self):
        calc = Calc(self.desktop).start()
        calc.press("Shift+Right", "Shift+Down", "Control+c")
        clip = wait_until(lambda: next(iter(self.history.clips()), None), "cells are recorded", 60)
        return calc, clip

    def test_copied_cells_are_rich_text(self):
        _, clip = self.copy_cells()
        self.assertEqual((clip.kind, clip.image_png), ("richText", None))
        self.assertEqual(clip.plain_text.split(), ["11", "12", "21", "22"])
        # Its windows get this name some time after they are there.
        self.assertEqual(clip.source_bundle_id, "libreoffice-calc")

    def test_pasted_back_they_are_cells_again(self):
        calc, _ = self.copy_cells()
        calc.press("Right", "Right", "Right")
        self.tessly.command("paste", "1")
        values = calc.save()
        self.assertFalse(calc.has_pictures())
        corner = min(place for place in values if place[1] > 1)
        self.assertEqual(
            [values.get((corner[0] + row, corner[1] + column))
             for row in (0, 1) for column in (0, 1)], ["11", "12", "21", "22"], values)


class IgnoredOffice(TesslyCase):
    settings = {"ignoredBundleIDs": "libreoffice-calc"}

    def test_its_copies_are_not_recorded(self):
        calc = Calc(self.desktop).start()
        calc.press("Shift+Right", "Shift+Down", "Control+c")
        wait_until(self.clipboard.owner, "the cells are on the clipboard", 60)
        self.assertTrue(holds_for(2, lambda: self.history.clips() == []))


class Chart(TesslyCase):
    def test_a_copied_chart_is_an_image(self):
        calc = Calc(self.desktop).start(_CHART)
        window = calc.window
        self.desktop.pointer.click(window.x + window.width // 2, window.y + window.height // 2)
        calc.press("Control+c")
        clip = self.history.wait_for_kind("image", 60)
        self.assertTrue(clip.image_png.startswith(png.SIGNATURE))
        # The chart, and not the cell that the click may have met instead.
        width, = struct.unpack_from(">I", clip.image_png, len(png.SIGNATURE) + 8)
        self.assertGreater(width, 300)


if __name__ == "__main__":
    unittest.main()
