# SPDX-License-Identifier: MIT
"""The simulated keyboard as a device of the virtual machine."""
import pathlib
import signal
import subprocess
import tempfile
import threading
import time

from waiting import wait_until

SIMULATOR = "/opt/hollin/ts30-simulator"
HIDRAW = pathlib.Path("/sys/class/hidraw")


def nodes():
    """The keyboards that the kernel offers to programs now, as paths under /dev."""
    names = sorted(entry.name for entry in HIDRAW.iterdir()) if HIDRAW.exists() else []
    return [f"/dev/{name}" for name in names if pathlib.Path("/dev", name).exists()]


class Keyboard:
    """Plugged in on construction. Its flashes are files that hold `before` when it is first plugged in."""

    def __init__(self, options=(), faults=(), descriptor="flat", through="--usb-gadget", flashes=()):
        self.folder = pathlib.Path(tempfile.mkdtemp(prefix="keyboard-"))
        self.lines = []  # (time, text) of what the simulator says
        arguments = [SIMULATOR, through, "--verbose", "--report-descriptor", descriptor]
        for flash in flashes:
            (self.folder / flash.name).write_bytes(flash.before)
            arguments += ["--option", f"{flash.name}.file={self.folder / flash.name}"]
            options = [*options, *flash.options]
        for option in options:
            arguments += ["--option", option]
        for fault in faults:
            arguments += ["--fault", fault]
        others = nodes()
        self.process = subprocess.Popen(arguments, stdout=subprocess.PIPE, text=True)
        self.reader = threading.Thread(target=self._read, daemon=True)
        self.reader.start()
        self.wait_for("ready:")
        self._find_node(others)

    def _find_node(self, others):
        self.node = wait_until(lambda: next(iter(set(nodes()) - set(others)), None), "the keyboard's node")

    def _read(self):
        for line in self.process.stdout:
            self.lines.append((time.monotonic(), line.strip()))

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.stop()

    def stop(self):
        """Unplugged for good."""
        self.process.send_signal(signal.SIGTERM)
        self.process.wait()
        self.reader.join()
        self.process.stdout.close()

    def unplug(self):
        self.process.send_signal(signal.SIGUSR1)
        self.wait_until_gone()

    def wait_until_gone(self):
        wait_until(lambda: self.node not in nodes(), "the keyboard's node to go")

    def plug(self):
        """In again, also after a fault that unplugged it."""
        self.wait_until_gone()
        others = nodes()
        self.process.send_signal(signal.SIGUSR2)
        self._find_node(others)

    def said(self, beginning):
        """The times at which lines with this beginning came."""
        return [when for when, line in list(self.lines) if line.startswith(beginning)]

    def wait_for(self, beginning, count=1):
        wait_until(lambda: len(self.said(beginning)) >= count or self.process.poll() is not None,
                   f"the simulator to say '{beginning}'")
        if len(self.said(beginning)) < count:
            raise AssertionError(f"the simulator ended: {self.lines}")

    def contents(self, flash):
        return (self.folder / flash.name).read_bytes()
