# SPDX-License-Identifier: MIT
"""Waiting for what happens elsewhere in the virtual machine."""
import time

LONG = 180  # seconds; only a failure takes that long, however slow the emulation is


def wait_until(condition, what, interval=0.02):
    """The condition's first true value; it is asked for again after each interval, in seconds."""
    end = time.monotonic() + LONG
    while True:
        value = condition()
        if value:
            return value
        if time.monotonic() > end:
            raise AssertionError(f"waited {LONG} s in vain for {what}")
        time.sleep(interval)
