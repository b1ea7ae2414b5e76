# SPDX-License-Identifier: MIT
"""The window is ended or disturbed in the middle of an update: the next run works."""
import signal

from flashes import A1
from keyboard import Keyboard
from programs import COMPLETED, CONNECTED, ProgramTest, make_package, temporary_files
from storm import Storm
from window import Window, end_shared_window


class WindowInterruptionTest(ProgramTest):
    """Starting the window takes long in here, so the run that must succeed after one case begins the next."""

    def start(self, window, keyboard):
        """An update that is in its first block."""
        begun = len(keyboard.said("command 07"))
        window.press("Update")
        keyboard.wait_for("command 07", begun + 1)

    def check_run(self, window, keyboard, flash):
        window.wait_for_status(CONNECTED)
        self.assertIn(COMPLETED, window.update())
        self.assert_written(keyboard, flash)

    def test_killed_then_asked_to_quit_then_in_a_storm_of_signals(self):
        end_shared_window()
        flash = A1()
        package = make_package(flash)
        with Keyboard(flashes=[flash]) as keyboard:
            with Window(package) as window:
                window.wait_for_status(CONNECTED)
                self.start(window, keyboard)
                window.quit(signal.SIGKILL)
            self.assertNotEqual(temporary_files(), [])  # nobody could remove them
            with Window(package) as window:
                self.check_run(window, keyboard, flash)
                completed = len(keyboard.said("command 09 00"))
                self.start(window, keyboard)
                took = window.quit(signal.SIGTERM)
                print(f"quit in {took:.2f} s ... ", end="")
                self.assertEqual(window.process.returncode, 0)
                self.assertEqual(len(keyboard.said("command 09 00")), completed)
                self.assert_no_temporary_files()
            with Window(package, ignoring_signals=True) as window:
                self.check_run(window, keyboard, flash)
                ended = len(keyboard.said("command 09"))
                window.press("Update")
                with Storm(window.process) as storm:
                    keyboard.wait_for("command 09", ended + 1)
                print(f"{storm.signals} signals ... ", end="")
                self.assertIn(COMPLETED, window.wait_for_alert())
                self.assert_written(keyboard, flash)
