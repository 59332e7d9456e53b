"""Copies that follow each other or something else at once, and what commands promise."""

import unittest

import shared_tests
from tessly_e2e.case import TesslyCase
from tessly_e2e.editors import Terminal


class QuickCopies(shared_tests.QuickCopies, TesslyCase):
    pass


class CommandsAtTheirWord(shared_tests.CommandsAtTheirWord, TesslyCase):
    make = Terminal


class PendingCopies(shared_tests.PendingCopies, TesslyCase):
    make = Terminal


if __name__ == "__main__":
    unittest.main()
