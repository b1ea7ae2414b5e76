# SPDX-License-Identifier: MIT
"""The simulated keyboard as a device of the virtual machine."""
import contextlib
import os
import pathlib
import signal
import subprocess
import tempfile
import threading
import time

from waiting import LONG, wait_until

SIMULATOR = "/opt/hollin/ts30-simulator"
HIDRAW = pathlib.Path("/sys/class/hidraw")
GADGETS = pathlib.Path("/sys/kernel/config/usb_gadget")


def devices():
    """The paths under /dev of the keyboards that the kernel offers now, by their places in sysfs, which never recur."""
    found = {}
    for entry in list(HIDRAW.iterdir()) if HIDRAW.exists() else []:
        with contextlib.suppress(FileNotFoundError):  # one that goes meanwhile is not offered
            if pathlib.Path("/dev", entry.name).exists():
                found[str(HIDRAW / os.readlink(entry))] = f"/dev/{entry.name}"
    return found


def nodes():
    return sorted(devices().values())


def gadgets():
    """The names of the gadgets that the kernel knows, plugged in or not."""
    return sorted(entry.name for entry in GADGETS.iterdir())


class Keyboard:
    """Plugged in on construction. Its flashes are files that hold `before` when it is first plugged in."""

    def __init__(self, options=(), faults=(), descriptor="flat", through="--usb-gadget", flashes=(),
                 second_interface=False, prefix=()):
        self.folder = pathlib.Path(tempfile.mkdtemp(prefix="keyboard-"))
        self.lines = []  # (time, text) of what the simulator says
        arguments = [*prefix, SIMULATOR, through, "--verbose", "--report-descriptor", descriptor]
        if second_interface:
            arguments.append("--second-interface")
        for flash in flashes:
            (self.folder / flash.name).write_bytes(flash.before)
            arguments += ["--option", f"{flash.name}.file={self.folder / flash.name}"]
            options = [*options, *flash.options]
        for option in options:
            arguments += ["--option", option]
        for fault in faults:
            arguments += ["--fault", fault]
        others = devices()
        self.process = subprocess.Popen(arguments, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True)
        self.gadget = f"ts30-{self.process.pid}"
        self.reader = threading.Thread(target=self._read, daemon=True)
        self.reader.start()
        try:
            self.wait_for("ready:")
            self._find_node(others)
        except BaseException:
            self.kill()  # a second simulator clears up behind it
            raise

    def _find_node(self, others):
        self.device, self.node = wait_until(lambda: next(iter(devices().items() - others.items()), None),
                                            "the keyboard's node")

    def _read(self):
        for line in self.process.stdout:
            self.lines.append((time.monotonic(), line.strip()))

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.stop()

    def controller(self):
        """The USB device controller that it is plugged into; empty while it is unplugged."""
        return (GADGETS / self.gadget / "UDC").read_text(encoding="utf-8").strip()

    def stop(self, number=signal.SIGTERM):
        """Unplugged for good; nothing of it is left in the system."""
        self.process.send_signal(number)
        code = self._wait()
        self.wait_until_gone()
        if code != 0 or self.gadget in gadgets():
            raise AssertionError(f"the simulator ended with {code} and left {gadgets()}: {self.lines}")

    def kill(self):
        """The simulator has no time to clear up."""
        self.process.kill()
        self._wait()

    def _wait(self):
        code = self.process.wait(LONG)
        self.reader.join(LONG)
        self.process.stdout.close()
        return code

    def unplug(self):
        self.process.send_signal(signal.SIGUSR1)
        self.wait_until_gone()

    def wait_until_gone(self):
        wait_until(lambda: self.device not in devices(), "the keyboard's node to go")

    def plug(self):
        """In again, also after a fault that unplugged it."""
        self.wait_until_gone()
        others = devices()
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
