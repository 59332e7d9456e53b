"""Every window looks as it did when somebody looked at it. script/pictures makes the references."""

import os
import subprocess
import tempfile
import unittest

from tessly_e2e import pictures

GALLERY = os.environ.get("TESSLY_GALLERY")
REFERENCES = os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "pictures")
SCALE = "1.5"


class Pictures(unittest.TestCase):
    def test_they_are_like_their_references(self):
        with open(os.path.join(REFERENCES, "font")) as file:
            expected = file.read().strip()
        if pictures.font() != expected:
            self.skipTest(f"the references are in {expected}")
        with tempfile.TemporaryDirectory() as folder:
            pictures.take(GALLERY, folder, SCALE)
            compared = subprocess.run(
                [GALLERY, folder, "--like", os.path.join(REFERENCES, SCALE)],
                env={**os.environ, "QT_QPA_PLATFORM": "offscreen"}, capture_output=True,
                check=False)
        self.assertEqual(compared.returncode, 0, compared.stderr.decode())


if __name__ == "__main__":
    unittest.main()
