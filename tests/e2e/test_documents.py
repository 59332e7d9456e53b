"""Every command that README and the guide show, as their readers type it."""

import os
import re
import subprocess
import unittest

from tessly_e2e import wait_until
from tessly_e2e.case import TesslyCase
from tessly_e2e.editors import Terminal

ROOT = os.path.normpath(os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", ".."))
DOCUMENTS = ("README.md", "docs/guide.md")

# What needs another desktop or a machine of its own; some of it has tests in other places.
ELSEWHERE = ("script/", "sudo apt ", "gnome-extensions ", "systemctl ", "bindsym ", "bind = ",
             "riverctl ", "<keybind ")
# Which does not come back.
STARTS = "tessly"


def shown(document):
    """The lines of code of a document, without what is said about them behind two blanks."""
    with open(os.path.join(ROOT, document)) as file:
        for line in file:
            if match := re.match(r" {4,}(\S.*)$", line):
                yield match[1].split("  ")[0].rstrip()


class Versions(unittest.TestCase):
    def test_all_documents_speak_of_the_same(self):
        found = {}
        for document, pattern in (("CMakeLists.txt", r"^ +VERSION (\S+)$"),
                                  ("debian/changelog", r"^tessly \(([^)-]+)"),
                                  ("packaging/com.brackmoor.tessly.metainfo.xml",
                                   r'<release version="([^"]+)"'),
                                  ("CHANGELOG.md", r"^## (\d\S*) ")):
            with open(os.path.join(ROOT, document)) as file:
                found[document] = re.search(pattern, file.read(), re.MULTILINE)[1]
        self.assertEqual(len(set(found.values())), 1, found)


class Documents(TesslyCase):
    def setUp(self):
        super().setUp()
        for number in range(4):
            self.record(f"invoice {number}")
        Terminal(self.desktop).start()
        os.mkdir(self.desktop.path("bin"))
        os.symlink(self.tessly.program, self.desktop.path("bin", "tessly"))

    def run_as_shown(self, command):
        environment = {**self.desktop.environment,
                       "PATH": self.desktop.path("bin") + ":/usr/bin:/bin"}
        return subprocess.run(["bash", "-o", "pipefail", "-c", command], env=environment,
                              capture_output=True, text=True, timeout=30, check=False)

    def start_again_if_it_ended(self):
        if not self.tessly.is_running():
            self.tessly.start()
            self.record("invoice as well")

    def test_every_command_does_what_is_said(self):
        for document in DOCUMENTS:
            for command in shown(document):
                if command.startswith(ELSEWHERE) or command == STARTS:
                    continue
                with self.subTest(document=document, command=command):
                    if command.startswith("tessly "):
                        self.start_again_if_it_ended()
                    answer = self.run_as_shown(command)
                    self.assertEqual((answer.returncode, answer.stderr), (0, ""))
                    if command == "tessly quit":
                        wait_until(lambda: not self.tessly.is_running(), "it ends")
                    elif command in ("tessly show", "tessly toggle"):
                        self.run_as_shown("tessly hide")

    def test_a_backup_brings_the_history_back(self):
        recorded = self.recorded_texts()
        commands = [command for command in shown("docs/guide.md") if "~" in command]
        for command in ["tessly quit", *commands]:
            self.assertEqual(self.run_as_shown(command).stderr, "", command)
        self.assertFalse(os.path.exists(os.path.join(self.desktop.data_home, "Tessly")))
        unpack, = (command for command in commands if "-xzf" in command)
        self.assertEqual(self.run_as_shown(unpack).stderr, "")
        self.tessly.start()
        self.assertEqual(self.recorded_texts(), recorded)


if __name__ == "__main__":
    unittest.main()
