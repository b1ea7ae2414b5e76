# SPDX-License-Identifier: MIT
"""The window of an ordinary user, first under a udevd without the project's rule, then with it."""
from flashes import A1
from keyboard import Keyboard
from programs import (COMPLETED, CONNECTED, NO_RIGHT, NOT_CONNECTED, UPDATE_ERROR, USER, ProgramTest, make_package,
                      probe, user)
from udevd import RULE, Udevd
from waiting import wait_until
from window import Window, end_shared_window


class WindowAccessTest(ProgramTest):
    def test_an_ordinary_user_updates_with_the_rule_and_not_without(self):
        end_shared_window()  # on one bus a second window would hand its package to the first
        udevd = Udevd(USER)
        self.addCleanup(udevd.stop)
        flash = A1()
        with Keyboard(flashes=[flash]) as keyboard, Window(make_package(flash), user=USER) as window:
            window.wait_for_status(CONNECTED)
            window.wait_for_status(NO_RIGHT)
            self.assertIn(UPDATE_ERROR, window.update())
            self.assertEqual(keyboard.said("command"), [])
            keyboard.unplug()
            window.wait_for_status(NOT_CONNECTED)
            udevd.add_rule(RULE)
            keyboard.plug()
            wait_until(lambda: probe("open", **user()) == "yes", "the rule to open the keyboard")
            window.wait_for_status(CONNECTED)
            self.assertIn(COMPLETED, window.update())
            self.assert_written(keyboard, flash)
