# SPDX-License-Identifier: MIT
"""Whole updates by the window: every byte of the flashes is compared."""
from flashes import A1, A2, C1
from keyboard import Keyboard
from programs import COMPLETED, CONNECTED, MORE_THAN_ONE, NOT_CONNECTED, ProgramTest, make_package
from window import Window


class WindowUpdateTest(ProgramTest):
    """One window opens and writes package after package; after a case that failed there is a new one."""

    shared = None

    def setUp(self):
        self.window = WindowUpdateTest.shared or Window()
        WindowUpdateTest.shared = None
        self.is_sound = False

    def tearDown(self):
        if self.is_sound:
            WindowUpdateTest.shared = self.window
        else:
            self.window.end()

    @classmethod
    def tearDownClass(cls):
        if cls.shared:
            cls.shared.end()

    def check(self, *flashes):
        package = make_package(*flashes)
        with Keyboard(flashes=flashes) as keyboard:
            self.window.open(package)
            self.window.wait_for_status(CONNECTED)
            self.assertIn(COMPLETED, self.window.update())
            self.assert_written(keyboard, *flashes)
        self.is_sound = True

    def test_a1(self):
        self.check(A1())

    def test_a2_word_by_word(self):
        self.check(A2(write_buffer=False))

    def test_a2_through_the_write_buffer(self):
        self.check(A2(write_buffer=True))

    def test_c1(self):
        self.check(C1())

    def test_two_packs(self):
        self.check(A2(write_buffer=True), C1())

    def test_refresh_finds_what_is_there(self):
        flash = C1(length=100)
        self.window.open(make_package(flash))
        self.window.wait_for_status(NOT_CONNECTED)
        with Keyboard(flashes=[flash]):
            self.window.press("Refresh")
            self.window.wait_for_status(CONNECTED)
            with Keyboard(flashes=[flash]):
                self.window.press("Refresh")
                self.window.wait_for_status(MORE_THAN_ONE)
                self.assertFalse(self.window.is_enabled("Update"))
        self.is_sound = True

    def test_a_keyboard_that_hidapi_lists_twice_counts_as_two(self):
        flash = C1(length=100)
        with Keyboard(flashes=[flash], descriptor="collections"):
            self.window.open(make_package(flash))
            self.window.wait_for_status(MORE_THAN_ONE)
            self.assertFalse(self.window.is_enabled("Update"))
        self.is_sound = True
