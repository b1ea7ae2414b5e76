# SPDX-License-Identifier: MIT
"""Which keyboards are there, and who may open them."""
import os
import stat

from flashes import A1, C1
from keyboard import Keyboard, nodes
from programs import (MORE_THAN_ONE, USER, ProgramTest, finish, held, listings_of_nested, make_package, probe,
                      start_update, update, user)
from udevd import RULE, Udevd
from waiting import wait_until

NOT_CONNECTED = 'The TS30 is not connected. Please hold down the "Shift" and "Play"'


class DevicesTest(ProgramTest):
    def test_without_a_keyboard_it_names_the_buttons_to_hold(self):
        self.assertEqual(probe("count"), "0")
        self.assert_refused(update(make_package(A1())), NOT_CONNECTED)

    def test_two_keyboards_are_refused_and_not_written(self):
        flash = A1()
        with Keyboard(flashes=[flash]) as first, Keyboard(flashes=[flash]) as second:
            self.assertEqual(probe("count"), "2")
            self.assert_refused(update(make_package(flash)), MORE_THAN_ONE)
            for keyboard in first, second:
                self.assertEqual(keyboard.said("command"), [])
                self.assertTrue(keyboard.contents(flash) == flash.before)

    def test_a_second_keyboard_during_an_update_does_not_matter(self):
        flash = A1()
        package = make_package(flash)
        with Keyboard(flashes=[flash]) as first:
            program = start_update(package)
            first.wait_for("command 07")
            with held(program):
                second = Keyboard(flashes=[flash])
            with second:
                self.assert_succeeded(finish(program))
                self.assertEqual(second.said("command"), [])
            self.assert_written(first, flash)

    def test_a_keyboard_that_left_and_came_back_is_updated(self):
        flash = C1()
        package = make_package(flash)
        with Keyboard(flashes=[flash]) as keyboard:
            keyboard.unplug()
            self.assert_refused(update(package), NOT_CONNECTED)
            keyboard.plug()
            self.assert_succeeded(update(package))
            self.assert_written(keyboard, flash)


class ListingTest(ProgramTest):
    """hidapi lists a keyboard once for every interface and collection that it tells apart; the program goes by that."""

    def check(self, **form):
        flash = C1(length=100)
        with Keyboard(flashes=[flash], **form) as keyboard:
            count = int(probe("count"))
            print(f"hidapi lists it {count} times ... ", end="")
            result = update(make_package(flash))
            if count > 1:
                self.assert_refused(result, MORE_THAN_ONE)
                self.assertEqual(keyboard.said("command"), [])
            else:
                self.assert_succeeded(result)
                self.assert_written(keyboard, flash)
            return count

    def test_one_interface_with_one_collection(self):
        self.assertEqual(self.check(), 1)

    def test_two_collections(self):
        self.assertEqual(self.check(descriptor="collections"), 2)

    def test_a_collection_within_another(self):
        self.assertEqual(self.check(descriptor="nested"), listings_of_nested())

    def test_a_second_interface(self):
        self.assertEqual(self.check(second_interface=True), 2)


class RightsTest(ProgramTest):
    """An ordinary user, first as it is everywhere, then with the project's udev rule."""

    def setUp(self):
        self.flash = A1()
        self.package = make_package(self.flash)

    def mode(self):
        return stat.S_IMODE(os.stat(nodes()[0]).st_mode)

    def assert_seen_but_closed(self):
        self.assertEqual(probe("count", **user()), "1")
        self.assertEqual(probe("open", **user()), "no")
        self.assert_failed(update(self.package, **user()))

    def test_a_keyboard_without_the_rule_is_seen_but_cannot_be_opened(self):
        with Keyboard(flashes=[self.flash]) as keyboard:
            self.assertEqual(self.mode(), 0o600)
            self.assert_seen_but_closed()
            self.assertEqual(keyboard.said("command"), [])

    def test_udevd_alone_does_not_open_it_and_the_rule_does(self):
        udevd = Udevd(USER)
        self.addCleanup(udevd.stop)
        with Keyboard(flashes=[self.flash]) as keyboard:
            udevd.wait_for(keyboard.node)
            self.assert_seen_but_closed()
            keyboard.unplug()
            udevd.add_rule(RULE)
            keyboard.plug()
            wait_until(lambda: probe("open", **user()) == "yes", "the rule to open the keyboard")
            # The right of one user shows as the group's bits of an access list.
            self.assertEqual(self.mode() & 0o007, 0, "others may open the keyboard")
            self.assertEqual(probe("open", **user(USER + 1)), "no")
            self.assert_succeeded(update(self.package, **user()))
            self.assert_written(keyboard, self.flash)
