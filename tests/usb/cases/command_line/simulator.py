# SPDX-License-Identifier: MIT
"""What the simulator does to the system it shows its keyboard to, and that nothing of it stays."""
import signal
import subprocess

from flashes import C1
from keyboard import SIMULATOR, Keyboard, gadgets, nodes
from programs import ProgramTest, make_package, probe, update
from waiting import LONG, wait_until


class SimulatorTest(ProgramTest):
    def assert_nothing_is_left(self):
        self.assertEqual(gadgets(), [])
        wait_until(lambda: nodes() == [], "the last keyboard to go")

    def test_ended_it_leaves_nothing(self):
        for through in "--usb-gadget", "--uhid":
            for number in signal.SIGTERM, signal.SIGINT:
                keyboard = Keyboard(through=through)
                self.assertEqual(gadgets(), [keyboard.gadget] if through == "--usb-gadget" else [])
                keyboard.stop(number)
                self.assert_nothing_is_left()

    def test_ended_while_unplugged_it_leaves_nothing(self):
        with Keyboard() as keyboard:
            keyboard.unplug()
            self.assertEqual(gadgets(), [keyboard.gadget])
        self.assert_nothing_is_left()

    def test_what_a_killed_one_left_goes_with_the_next_start(self):
        killed = Keyboard(second_interface=True)
        killed.kill()
        self.assertEqual(gadgets(), [killed.gadget])
        flash = C1(length=100)
        with Keyboard(flashes=[flash]) as keyboard:
            self.assertEqual(gadgets(), [keyboard.gadget])
            self.assert_succeeded(update(make_package(flash)))
            self.assert_written(keyboard, flash)
        self.assert_nothing_is_left()

    def test_where_every_controller_is_taken_it_fails_and_leaves_nothing(self):
        with Keyboard() as first, Keyboard() as second:
            third = subprocess.run([SIMULATOR, "--usb-gadget"], capture_output=True, text=True, timeout=LONG)
            self.assertEqual(third.returncode, 1)
            self.assertIn("no free USB device controller", third.stderr)
            self.assertEqual(gadgets(), sorted([first.gadget, second.gadget]))

    def test_where_its_node_cannot_be_opened_it_is_not_plugged_in(self):
        with Keyboard(prefix=("unshare", "--mount")) as keyboard:
            keyboard.unplug()
            subprocess.run(["nsenter", "--target", str(keyboard.process.pid), "--mount", "--root",
                            "mount", "-t", "tmpfs", "none", "/dev"], check=True, timeout=LONG)
            keyboard.process.send_signal(signal.SIGUSR2)
            keyboard.wait_for("ts30-simulator: cannot open the gadget's device")
            self.assertEqual(keyboard.controller(), "")
            self.assertEqual(probe("count"), "0")
