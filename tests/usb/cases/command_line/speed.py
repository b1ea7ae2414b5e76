# SPDX-License-Identifier: MIT
"""What an update costs over what the wire and the pauses cost anyway. Prints, and judges nothing but the flash."""
import time

from flashes import A1
from keyboard import Keyboard
from programs import ProgramTest, make_package, probe, update

BLOCK = 65536
REPORTS = BLOCK // 64 * 2  # a message of 64 bytes takes two reports
STEP_PAUSE = 0.5
ROUNDS = 5


class BigA1(A1):
    """One block of 64 KiB."""

    size = 256 * 1024
    options = (f"a1.size={size}",)
    description = ("[Chip Info]\nChip Name = test\nChip Type = 2\nChip Size = 0x40000\n"
                   "[Transmission Info]\nStart Address = 0\nData Length = 64K\nTime Over = 1000\n")
    steps = 3

    def __init__(self):
        super().__init__(length=BLOCK)


def middle(measured):
    """The round in the middle by its ratio: a busy machine spoils single ones."""
    return sorted(measured)[len(measured) // 2]


class SpeedTest(ProgramTest):
    def test_ratios(self):
        flash = BigA1()
        package = make_package(flash)
        rates, times = [], []
        with Keyboard(flashes=[flash]) as keyboard:
            for _ in range(ROUNDS):
                bare_rate = float(probe("rate", str(REPORTS)))
                start = time.monotonic()
                self.assert_succeeded(update(package))
                run_time = time.monotonic() - start
                self.assert_written(keyboard, flash)
                data_rate = REPORTS / (keyboard.said("block")[-1] - keyboard.said("command 07")[-1])
                floor = flash.steps * STEP_PAUSE + REPORTS / bare_rate
                rates.append((data_rate / bare_rate, data_rate, bare_rate))
                times.append((run_time / floor, run_time, floor))
        print("\nreports a second: ratio {:.2f}, data phase {:.0f}, bare loop {:.0f}".format(*middle(rates)))
        print("seconds: ratio {:.2f}, update {:.2f}, pauses and transfer {:.2f}".format(*middle(times)))
