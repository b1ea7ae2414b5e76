# SPDX-License-Identifier: MIT
"""The keyboard is unplugged at every kind of moment: the window says so, lives on, and its next run succeeds."""
from keyboard import Keyboard
from moments import END, MOMENTS, short_flash
from programs import COMPLETED, CONNECTED, UPDATE_ERROR, ProgramTest, make_package
from window import shared_window


class WindowRemovalTest(ProgramTest):
    """One window lives through all of them: it reports each failure and then updates the keyboard."""

    @classmethod
    def setUpClass(cls):
        cls.flash = short_flash()
        cls.package = make_package(cls.flash)

    def check(self, fault, outcome=UPDATE_ERROR):
        with shared_window() as window, Keyboard(flashes=[self.flash], faults=[fault]) as keyboard:
            if window.package != self.package:
                window.open(self.package)
            self.check_run(window, outcome)
            keyboard.plug()
            self.check_run(window, COMPLETED)
            self.assert_written(keyboard, self.flash)

    def check_run(self, window, outcome):
        window.press("Refresh")
        window.wait_for_status(CONNECTED)
        self.assertIn(outcome, window.update())

    # Deliberate: nothing but the acknowledgement is missing, so the update counts as done.
    def test_at_the_end_command_it_counts_as_done(self):
        self.check(END, COMPLETED)


for name, moment in MOMENTS.items():
    setattr(WindowRemovalTest, f"test_at_{name}", lambda self, moment=moment: self.check(moment))
