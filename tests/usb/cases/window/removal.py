# SPDX-License-Identifier: MIT
"""The keyboard is unplugged at every kind of moment: the window says so, lives on, and its next run succeeds."""
from keyboard import Keyboard
from moments import END, MOMENTS, short_flash
from programs import COMPLETED, CONNECTED, UPDATE_ERROR, ProgramTest, make_package
from window import shared_window


class WindowRemovalTest(ProgramTest):
    """One window lives through all of them: it reports each failure and then updates the keyboard."""

    def test_removal_at_every_moment_and_a_second_run(self):
        flash = short_flash()
        with shared_window() as window:
            window.open(make_package(flash))
            for name, fault in [*MOMENTS.items(), ("end", END)]:
                with self.subTest(name), Keyboard(flashes=[flash], faults=[fault]) as keyboard:
                    self.check(window, keyboard, flash, COMPLETED if name == "end" else UPDATE_ERROR)
                    print(f"{name} ... ", end="")

    def check(self, window, keyboard, flash, outcome):
        window.press("Refresh")
        window.wait_for_status(CONNECTED)
        self.assertIn(outcome, window.update())
        keyboard.plug()
        window.press("Refresh")
        window.wait_for_status(CONNECTED)
        self.assertIn(COMPLETED, window.update())
        self.assert_written(keyboard, flash)
