"""Every window looks as it did when somebody looked at it. script/pictures makes the references."""

import os
import subprocess
import tempfile
import unittest
from concurrent.futures import ThreadPoolExecutor

from tessly_e2e import pictures

GALLERY = os.environ.get("TESSLY_GALLERY")
REFERENCES = os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "pictures")
SCALES = ["1", "1.25", "1.5", "2"]


class Pictures(unittest.TestCase):
    def test_they_are_like_their_references(self):
        with open(os.path.join(REFERENCES, "font")) as file:
            expected = file.read().strip()
        if pictures.font() != expected:
            self.skipTest(f"the references are in {expected}")
        with tempfile.TemporaryDirectory() as folder:
            pictures.take(GALLERY, folder, SCALES)
            with ThreadPoolExecutor() as executor:
                differences = list(executor.map(lambda scale: unlike(folder, scale), SCALES))
        for scale, difference in zip(SCALES, differences):
            with self.subTest(scale=scale):
                self.assertEqual(difference, "")


def unlike(folder, scale):
    """What is said of the pictures at a scale that are not like their references."""
    compared = subprocess.run(
        [GALLERY, os.path.join(folder, scale), "--like", os.path.join(REFERENCES, scale)],
        env={**os.environ, "QT_QPA_PLATFORM": "offscreen"}, capture_output=True, check=False)
    if compared.returncode == 0:
        return ""
    return compared.stderr.decode() or f"ended with {compared.returncode}"


if __name__ == "__main__":
    unittest.main()
