# SPDX-License-Identifier: MIT
"""The window follows what is plugged in and out by itself: nobody presses Refresh here."""
from flashes import A1
from keyboard import Keyboard
from programs import COMPLETED, CONNECTED, MORE_THAN_ONE, NOT_CONNECTED, ProgramTest, held, make_package
from udevd import Udevd
from window import Window, end_shared_window, shared_window


class HotplugTest(ProgramTest):
    @classmethod
    def setUpClass(cls):
        end_shared_window()  # a window chooses at its start whom it hears

    @classmethod
    def tearDownClass(cls):
        end_shared_window()

    def setUp(self):
        self.addCleanup(Udevd().stop)  # it is udevd that tells programs of devices
        self.flash = A1()
        self.package = make_package(self.flash)

    def test_arrival_and_removal_act_like_refresh(self):
        with shared_window() as window:
            window.open(self.package)
            window.wait_for_status(NOT_CONNECTED)
            with Keyboard(flashes=[self.flash]) as first:
                window.wait_for_status(CONNECTED)
                window.wait_until_enabled("Update")
                with Keyboard(flashes=[self.flash]):
                    window.wait_for_status(MORE_THAN_ONE)
                    self.assertFalse(window.is_enabled("Update"))
                window.wait_for_status(CONNECTED)
                first.unplug()
                window.wait_for_status(NOT_CONNECTED)
                self.assertFalse(window.is_enabled("Update"))
                first.plug()
                window.wait_for_status(CONNECTED)
                self.assertIn(COMPLETED, window.update())
                self.assert_written(first, self.flash)
            window.wait_for_status(NOT_CONNECTED)

    def test_a_second_keyboard_during_an_update_does_not_matter(self):
        with shared_window() as window, Keyboard(flashes=[self.flash]) as first:
            window.open(self.package)
            window.press("Update")
            first.wait_for("command 07")
            with held(window.process):
                second = Keyboard(flashes=[self.flash])
            with second:
                self.assertIn(COMPLETED, window.wait_for_alert())
                window.dismiss_alert()
                self.assertEqual(second.said("command"), [])
            self.assert_written(first, self.flash)


class HotplugWithoutUdevTest(ProgramTest):
    def test_the_kernel_itself_tells_of_what_comes_and_goes(self):
        end_shared_window()
        flash = A1()
        with Window(make_package(flash)) as window:
            window.wait_for_status(NOT_CONNECTED)
            with Keyboard(flashes=[flash]):
                window.wait_for_status(CONNECTED)
            window.wait_for_status(NOT_CONNECTED)
