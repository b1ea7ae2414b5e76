# SPDX-License-Identifier: MIT
"""The window follows what is plugged in and out by itself: nobody presses Refresh here."""
from flashes import A1
from keyboard import Keyboard
from programs import COMPLETED, CONNECTED, MORE_THAN_ONE, NOT_CONNECTED, ProgramTest, held, make_package
from udevd import Udevd
from window import Window


class HotplugTest(ProgramTest):
    def setUp(self):
        self.addCleanup(Udevd().stop)  # it is udevd that tells programs of devices
        self.flash = A1()
        self.window = Window(make_package(self.flash))
        self.addCleanup(self.window.end)
        self.window.wait_for_status(NOT_CONNECTED)

    def test_arrival_and_removal_act_like_refresh(self):
        with Keyboard(flashes=[self.flash]) as first:
            self.window.wait_for_status(CONNECTED)
            self.window.wait_until_enabled("Update")
            with Keyboard(flashes=[self.flash]):
                self.window.wait_for_status(MORE_THAN_ONE)
                self.assertFalse(self.window.is_enabled("Update"))
            self.window.wait_for_status(CONNECTED)
            first.unplug()
            self.window.wait_for_status(NOT_CONNECTED)
            self.assertFalse(self.window.is_enabled("Update"))
            first.plug()
            self.window.wait_for_status(CONNECTED)
            self.assertIn(COMPLETED, self.window.update())
            self.assert_written(first, self.flash)
        self.window.wait_for_status(NOT_CONNECTED)

    def test_a_second_keyboard_during_an_update_does_not_matter(self):
        with Keyboard(flashes=[self.flash]) as first:
            self.window.press("Update")
            first.wait_for("command 07")
            with held(self.window.process):
                second = Keyboard(flashes=[self.flash])
            with second:
                self.assertIn(COMPLETED, self.window.wait_for_alert())
                self.assertEqual(second.said("command"), [])
            self.assert_written(first, self.flash)
