# SPDX-License-Identifier: MIT
"""Whole updates by the command line: every byte of the flashes is compared."""
import os

from flashes import A1, A2, C1
from keyboard import Keyboard
from programs import ProgramTest, make_package, update


class CommandLineUpdateTest(ProgramTest):
    def check(self, *flashes, through="--usb-gadget"):
        package = make_package(*flashes)
        with Keyboard(flashes=flashes, through=through) as keyboard:
            self.assert_succeeded(update(package))
            self.assert_written(keyboard, *flashes)
            self.assert_no_temporary_files()

    def test_a1(self):
        self.check(A1())

    def test_a2_word_by_word(self):
        self.check(A2(write_buffer=False))

    def test_a2_through_the_write_buffer(self):
        self.check(A2(write_buffer=True))

    def test_c1(self):
        self.check(C1())

    def test_two_packs(self):
        self.check(A2(write_buffer=False), C1())

    # On one processor: the kernel drops reports when the simulator, elsewhere, does not run for a while.
    def test_a1_through_uhid(self):
        processors = os.sched_getaffinity(0)
        os.sched_setaffinity(0, {min(processors)})
        self.addCleanup(os.sched_setaffinity, 0, processors)
        self.check(A1(), through="--uhid")
