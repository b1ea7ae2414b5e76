# SPDX-License-Identifier: MIT
"""Whole updates by the window: every byte of the flashes is compared."""
from flashes import A1, A2, C1
from keyboard import Keyboard
from programs import (COMPLETED, CONNECTED, MORE_THAN_ONE, NOT_CONNECTED, ProgramTest, listings_of_nested,
                      make_package)
from window import shared_window


class WindowUpdateTest(ProgramTest):
    def check(self, *flashes):
        package = make_package(*flashes)
        with shared_window() as window, Keyboard(flashes=flashes) as keyboard:
            window.open(package)
            window.wait_for_status(CONNECTED)
            self.assertIn(COMPLETED, window.update())
            self.assert_written(keyboard, *flashes)

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
        with shared_window() as window:
            window.open(make_package(flash))
            window.wait_for_status(NOT_CONNECTED)
            with Keyboard(flashes=[flash]):
                window.press("Refresh")
                window.wait_for_status(CONNECTED)
                with Keyboard(flashes=[flash]):
                    window.press("Refresh")
                    window.wait_for_status(MORE_THAN_ONE)
                    self.assertFalse(window.is_enabled("Update"))

    def test_a_keyboard_that_hidapi_lists_twice_counts_as_two(self):
        flash = C1(length=100)
        forms = [{"descriptor": "collections"}, {"second_interface": True}]
        if listings_of_nested() == 2:
            forms.append({"descriptor": "nested"})
        with shared_window() as window:
            window.open(make_package(flash))
            for form in forms:
                with Keyboard(flashes=[flash], **form):
                    window.press("Refresh")
                    window.wait_for_status(MORE_THAN_ONE)
                    self.assertFalse(window.is_enabled("Update"))
                window.press("Refresh")
                window.wait_for_status(NOT_CONNECTED)
