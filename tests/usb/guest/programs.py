# SPDX-License-Identifier: MIT
"""The programs under test, as a user has them, and the packages they are given."""
import contextlib
import glob
import os
import pathlib
import re
import signal
import subprocess
import tempfile
import unittest

from waiting import LONG, wait_until

COMMAND_LINE = "/opt/hollin/Hollin.app/hollin-cli"
PROBE = "/opt/hollin/usb_probe"
BARE_HOST = "/opt/hollin/hollin_bare_host"

USER = 1000  # whoever sits at the computer, without rights of any kind

COMPLETED = "Update completed, please use the TS30 power switch to restart the keyboard."
UPDATE_ERROR = "Update Error!"
CONNECTED = 'The TS30 is connected. Please press the "Update" button now.'
NO_RIGHT = "No right to open the keyboard. Install Hollin's udev rule, then plug the keyboard in again."
NOT_CONNECTED = ('The TS30 is not connected. Please hold down the "Shift" and "Play" \r\n buttons while powering on '
                 'the TS30.')
MORE_THAN_ONE = "More than one device! Remove some devices"
ADVICE_NOT_TO_STOP = "Press Ctrl-C again to stop all the same."


def make_package(*flashes):
    """A package of one pack or two; the buttons to hold are Shift and Play."""
    folder = pathlib.Path(tempfile.mkdtemp(prefix="package-"))
    folder.chmod(0o755)
    command = [COMMAND_LINE, "pack", "--model", "TS30", "--firmware-version", "2.0.1", "--key", "Shift",
               "--key", "Play", "-o", str(folder / "update.dat")]
    for number, flash in enumerate(flashes):
        description = folder / f"{number}.ini"
        image = folder / f"{number}.bin"
        description.write_text(flash.description, encoding="utf-8")
        image.write_bytes(flash.image)
        command += ["--pack", f"{flash.kind.upper()}:{description}:{image}"]
    subprocess.run(command, check=True, capture_output=True, timeout=LONG)
    return str(folder / "update.dat")


class UpdateProcess(subprocess.Popen):
    """An update by the command line. Its output goes to a file, so that it can be read while it grows."""

    def __init__(self, package, **how):
        handle, self.log = tempfile.mkstemp(prefix="output-")
        super().__init__([COMMAND_LINE, "update", package], stdin=subprocess.DEVNULL, stdout=handle,
                         stderr=subprocess.STDOUT, **how)
        os.close(handle)

    def output(self):
        return pathlib.Path(self.log).read_bytes().decode()

    def wait_for_output(self, text):
        wait_until(lambda: text in self.output() or self.poll() is not None, f"the program to print '{text}'")
        if text not in self.output():
            raise AssertionError(f"the program ended with {self.returncode}: {self.output()}")


def start_update(package, **how):
    return UpdateProcess(package, **how)


def is_stopped(process):
    """The state stands behind the name, which is in parentheses."""
    return pathlib.Path(f"/proc/{process.pid}/stat").read_text(encoding="utf-8").rpartition(")")[2].split()[0] == "T"


@contextlib.contextmanager
def held(process):
    """The process waits until what is done meanwhile is done, however long that takes."""
    process.send_signal(signal.SIGSTOP)
    wait_until(lambda: is_stopped(process), "the program to stop")
    try:
        yield
    finally:
        process.send_signal(signal.SIGCONT)


def finish(process):
    """The exit code and everything it printed."""
    return process.wait(LONG), process.output()


def update(package, **how):
    return finish(start_update(package, **how))


def user(number=USER):
    """How a program is started by an ordinary user."""
    return {"user": number, "group": number, "extra_groups": [],
            "env": {"PATH": "/usr/bin:/bin", "HOME": "/nonexistent"}}


def package_version(package):
    return subprocess.run(["dpkg-query", "-W", "-f=${Version}", package], capture_output=True, text=True,
                          check=True, timeout=LONG).stdout


def listings_of_nested():
    """How often hidapi lists a keyboard with a collection within another: once from 0.15 on."""
    version = re.match(r"(\d+)\.(\d+)", package_version("libhidapi-hidraw0"))
    return 2 if (int(version[1]), int(version[2])) < (0, 15) else 1


def probe(*task, **how):
    result = subprocess.run([PROBE, *task], capture_output=True, text=True, check=True, timeout=LONG, **how)
    return result.stdout.strip()


def output_of(*command):
    """What the program printed. Nobody looks after it meanwhile, so that it has the processors to itself."""
    return subprocess.run(command, capture_output=True, text=True, check=True, timeout=LONG).stdout


def temporary_files():
    return glob.glob("/tmp/TEMP*")


class ProgramTest(unittest.TestCase):
    """What the cases ask of programs and keyboards."""

    maxDiff = None

    def assert_succeeded(self, result, text=COMPLETED):
        code, output = result
        self.assertEqual(code, 0, output)
        self.assertIn(text, output)

    def assert_failed(self, result):
        code, output = result
        self.assertEqual(code, 1, output)
        self.assertIn(UPDATE_ERROR, output)
        self.assertNotIn(COMPLETED, output)

    def assert_refused(self, result, text):
        code, output = result
        self.assertEqual(code, 4, output)
        self.assertIn(text, output)

    def assert_written(self, keyboard, *flashes):
        for flash in flashes:
            self.assertTrue(keyboard.contents(flash) == flash.after, f"the {flash.name} flash is not as it must be")

    def assert_no_temporary_files(self):
        self.assertEqual(temporary_files(), [])
