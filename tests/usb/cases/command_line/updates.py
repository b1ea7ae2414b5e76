# SPDX-License-Identifier: MIT
"""Whole updates by the command line: every byte of the flashes is compared."""
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

    # No message of these blocks is longer than what the kernel keeps.
    def test_a1_through_uhid(self):
        self.check(A1(), through="--uhid")
