# SPDX-License-Identifier: MIT
"""The keyboard is unplugged at every kind of moment: the command line says so, and its next run succeeds."""
from flashes import A1, A2
from keyboard import Keyboard
from moments import END, MOMENTS, short_flash
from programs import ProgramTest, make_package, update


class RemovalTest(ProgramTest):
    def check_second_run(self, package, keyboard, flash):
        keyboard.plug()
        self.assert_succeeded(update(package))
        self.assert_written(keyboard, flash)
        self.assert_no_temporary_files()

    def check(self, flash, fault):
        package = make_package(flash)
        with Keyboard(flashes=[flash], faults=[fault]) as keyboard:
            self.assert_failed(update(package))
            self.assert_no_temporary_files()
            self.check_second_run(package, keyboard, flash)

    # Deliberate: nothing but the acknowledgement is missing, so the update counts as done.
    def test_at_the_end_command_it_counts_as_done(self):
        flash = short_flash()
        package = make_package(flash)
        with Keyboard(flashes=[flash], faults=[END]) as keyboard:
            self.assert_succeeded(update(package))
            self.assert_written(keyboard, flash)
            self.check_second_run(package, keyboard, flash)

    def test_in_a_block_of_a1(self):
        self.check(A1(), "remove-at@h20")

    def test_while_a2_erases(self):
        self.check(A2(write_buffer=False), "remove-at@c8")  # behind the mode and six cycles: the first poll


for name, moment in MOMENTS.items():
    setattr(RemovalTest, f"test_at_{name}", lambda self, moment=moment: self.check(short_flash(), moment))
