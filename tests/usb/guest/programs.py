# SPDX-License-Identifier: MIT
"""The programs under test, as a user has them, and the packages they are given."""
import contextlib
import glob
import pathlib
import signal
import subprocess
import tempfile
import unittest

from waiting import LONG

COMMAND_LINE = "/opt/hollin/Hollin.app/hollin-cli"
PROBE = "/opt/hollin/usb_probe"

COMPLETED = "Update completed, please use the TS30 power switch to restart the keyboard."
UPDATE_ERROR = "Update Error!"
CONNECTED = 'The TS30 is connected. Please press the "Update" button now.'
NOT_CONNECTED = ('The TS30 is not connected. Please hold down the "Shift" and "Play" \r\n buttons while powering on '
                 'the TS30.')
MORE_THAN_ONE = "More than one device! Remove some devices"


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
    subprocess.run(command, check=True, capture_output=True)
    return str(folder / "update.dat")


def start_update(package, **how):
    return subprocess.Popen([COMMAND_LINE, "update", package], stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                            stderr=subprocess.STDOUT, text=True, **how)


@contextlib.contextmanager
def held(process):
    """The process waits until what is done meanwhile is done, however long that takes."""
    process.send_signal(signal.SIGSTOP)
    try:
        yield
    finally:
        process.send_signal(signal.SIGCONT)


def finish(process):
    """The exit code and everything it printed."""
    output, _ = process.communicate(timeout=LONG)
    return process.returncode, output


def update(package, **how):
    return finish(start_update(package, **how))


def probe(*task, **how):
    result = subprocess.run([PROBE, *task], capture_output=True, text=True, check=True, timeout=LONG, **how)
    return result.stdout.strip()


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
