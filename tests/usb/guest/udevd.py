# SPDX-License-Identifier: MIT
"""A real udevd, with the user who sits at the computer, as logind would say it."""
import os
import pathlib
import shutil
import signal
import subprocess

from waiting import LONG, wait_until

SEAT = pathlib.Path("/run/systemd/seats/seat0")
RULES = pathlib.Path("/run/udev/rules.d")
RULE = "/job/udev/70-ts30.rules"  # the project's


def udevadm(*task):
    """It would do nothing below another root than process 1 has."""
    subprocess.run(["udevadm", *task], check=True, timeout=LONG, env={**os.environ, "SYSTEMD_IGNORE_CHROOT": "1"})


class Udevd:
    """Runs until it is stopped; then everything is as before."""

    def __init__(self, user=0):
        SEAT.parent.mkdir(parents=True, exist_ok=True)
        SEAT.write_text(f"IS_SEAT0=1\nCAN_MULTI_SESSION=1\nACTIVE=1\nACTIVE_UID={user}\n", encoding="utf-8")
        self.process = subprocess.Popen(["/lib/systemd/systemd-udevd"], stdout=subprocess.DEVNULL,
                                        stderr=subprocess.DEVNULL)
        wait_until(pathlib.Path("/run/udev/control").exists, "udevd")

    def add_rule(self, path):
        RULES.mkdir(parents=True, exist_ok=True)
        shutil.copy(path, RULES)
        udevadm("control", "--reload")

    def wait_for(self, node):
        """Until udevd has applied its rules to the device and keeps a record of it."""
        number = os.stat(node).st_rdev
        record = pathlib.Path(f"/run/udev/data/c{os.major(number)}:{os.minor(number)}")
        wait_until(record.exists, f"udevd's record of {node}")

    def stop(self):
        self.process.send_signal(signal.SIGTERM)
        self.process.wait(LONG)
        SEAT.unlink()
        shutil.rmtree("/run/udev")
