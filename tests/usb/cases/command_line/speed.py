# SPDX-License-Identifier: MIT
"""What an update costs over what the wire and the pauses cost anyway. Prints, and judges nothing but the flash."""
import statistics
import time

from flashes import A1
from keyboard import Keyboard
from programs import ProgramTest, make_package, probe, update

BLOCK = 65536
REPORTS = BLOCK // 64 * 2  # a message of 64 bytes takes two reports
STEP_PAUSE = 0.5
ROUNDS = 3


class BigA1(A1):
    """One block of 64 KiB."""

    size = 256 * 1024
    options = (f"a1.size={size}",)
    description = ("[Chip Info]\nChip Name = test\nChip Type = 2\nChip Size = 0x40000\n"
                   "[Transmission Info]\nStart Address = 0\nData Length = 64K\nTime Over = 1000\n")
    steps = 3

    def __init__(self):
        super().__init__(length=BLOCK)


class SpeedTest(ProgramTest):
    def test_ratios(self):
        flash = BigA1()
        package = make_package(flash)
        bare, data, whole = [], [], []
        with Keyboard(flashes=[flash]) as keyboard:
            for _ in range(ROUNDS):
                bare.append(float(probe("rate", str(REPORTS))))
                start = time.monotonic()
                self.assert_succeeded(update(package))
                whole.append(time.monotonic() - start)
                self.assert_written(keyboard, flash)
                data.append(REPORTS / (keyboard.said("block")[-1] - keyboard.said("command 07")[-1]))
        bare_rate, data_rate, run_time = map(statistics.median, (bare, data, whole))
        floor = flash.steps * STEP_PAUSE + REPORTS / bare_rate
        print(f"\nreports a second: bare loop {bare_rate:.0f}, data phase {data_rate:.0f}; "
              f"ratio {data_rate / bare_rate:.2f}")
        print(f"seconds: update {run_time:.2f}, pauses and transfer {floor:.2f}; ratio {run_time / floor:.2f}")
