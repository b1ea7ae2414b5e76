# SPDX-License-Identifier: MIT
"""The window follows what is plugged in and out by itself: nobody presses Refresh here."""
import glob
import os
import pathlib

from flashes import A1
from keyboard import Keyboard
from programs import COMPLETED, CONNECTED, MORE_THAN_ONE, NOT_CONNECTED, ProgramTest, held, make_package
from udevd import Udevd
from window import Window, end_shared_window, shared_window

KERNEL, UDEV = 1, 2  # who tells of devices, as netlink numbers them


def groups_heard(process):
    """Of the news of devices (protocol 15), by the sockets of a process."""
    sockets = {os.readlink(link) for link in glob.glob(f"/proc/{process}/fd/*") if os.path.islink(link)}
    heard = 0
    for line in pathlib.Path(f"/proc/{process}/net/netlink").read_text(encoding="utf-8").splitlines()[1:]:
        _, protocol, _, groups, *_, inode = line.split()
        if protocol == "15" and f"socket:[{inode}]" in sockets:
            heard |= int(groups, 16)
    return {group for group in (KERNEL, UDEV) if heard & group}


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
            self.assertEqual(groups_heard(window.process.pid), {UDEV})
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
            self.assertEqual(groups_heard(window.process.pid), {KERNEL})
            window.wait_for_status(NOT_CONNECTED)
            with Keyboard(flashes=[flash]):
                window.wait_for_status(CONNECTED)
            window.wait_for_status(NOT_CONNECTED)
