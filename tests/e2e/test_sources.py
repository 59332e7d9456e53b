"""Which application a copy belongs to, while windows come, go and change their names."""

import unittest

import shared_tests
from tessly_e2e import wait_until
from tessly_e2e.case import TesslyCase
from tessly_e2e.editors import Terminal
from tessly_e2e.waiting import holds_for


class IgnoredInFront(shared_tests.IgnoredInFront, TesslyCase):
    make = Terminal


class SourceCase(TesslyCase):
    def setUp(self):
        super().setUp()
        self.program = self.enterContext(self.desktop.program())

    def show(self, class_name, instance="window"):
        self.program.show(class_name, instance)
        wait_until(self.program.is_in_front, "the window is in front")


class Renamed(shared_tests.Renamed, TesslyCase):
    pass


class RenamedAndIgnored(shared_tests.RenamedAndIgnored, TesslyCase):
    pass


class Named(SourceCase):
    """An entry of the list is any name of the application."""

    settings = {"ignoredBundleIDs": "INSTANCE-name\\nclass-NAME"}

    def expect_ignored(self, class_name, instance):
        self.show(class_name, instance)
        self.program.copy("secret")
        wait_until(self.program.requests, "the names of what is offered are read")
        self.assertTrue(holds_for(1, lambda: self.program.content_requests() == []))
        self.assertEqual(self.recorded_texts(), [])

    def test_the_instance(self):
        self.expect_ignored("Other", "instance-Name")

    def test_the_class(self):
        self.expect_ignored("Class-Name", "other")

    def test_nothing_else(self):
        self.show("Class-Name-2", "other-instance-name")
        self.program.copy("no secret")
        self.history.wait_for_text("no secret")


class IgnoredFromTheStart(SourceCase):
    """The list as nobody has changed it knows the programs by what they are called here."""

    def expect_ignored(self, class_name, instance):
        self.show(class_name, instance)
        self.program.copy(f"secret of {class_name}")
        wait_until(self.program.requests, "the names of what is offered are read")
        self.assertTrue(holds_for(1, lambda: self.program.content_requests() == []))
        self.assertEqual(self.recorded_texts(), [])

    def test_1password(self):
        self.expect_ignored("1Password", "1password")

    def test_bitwarden(self):
        self.expect_ignored("Bitwarden", "bitwarden")

    def test_the_desktops_own_wallets(self):
        self.expect_ignored("org.kde.kwalletmanager5", "kwalletmanager5")


if __name__ == "__main__":
    unittest.main()
