# SPDX-License-Identifier: MIT
"""Runs the cases of a folder in the virtual machine: run.py FOLDER [GROUP]... Ends with 0 when all pass."""
import importlib
import os
import pathlib
import shutil
import subprocess
import sys
import time
import unittest

from programs import package_version

JOB = "/job"


class TimedResult(unittest.TextTestResult):
    """Prints the time that each case took, and a failure when it happens: the machine may be ended before the last."""

    def startTest(self, test):
        self.started = time.monotonic()
        super().startTest(test)

    def addSuccess(self, test):
        unittest.TestResult.addSuccess(self, test)
        self.stream.writeln(f"ok ({time.monotonic() - self.started:.1f} s)")

    def addFailure(self, test, err):
        super().addFailure(test, err)
        self.stream.writeln(self.failures[-1][1])

    def addError(self, test, err):
        super().addError(test, err)
        self.stream.writeln(self.errors[-1][1])

    def printErrors(self):
        pass


def first_line(path):
    with open(path, encoding="utf-8") as file:
        return file.readline().strip()


def load(machine, groups):
    folder = pathlib.Path(JOB, "cases", machine)
    sys.path[:0] = [f"{JOB}/guest", str(folder)]
    modules = [importlib.import_module(group) for group in groups or sorted(file.stem for file in folder.glob("*.py"))]
    return unittest.TestSuite(unittest.defaultTestLoader.loadTestsFromModule(module) for module in modules)


def main():
    sys.stdout.reconfigure(line_buffering=True)
    system = os.uname()
    print(f"guest: Linux {system.release} ({system.version}), hidapi {package_version('libhidapi-hidraw0')}, "
          f"udev {package_version('udev')}, up after {first_line('/proc/uptime').split()[0]} s")
    # Every user may run the programs, wherever the project lies on the host.
    shutil.copytree(f"{JOB}/programs", "/opt/hollin", symlinks=True)
    runner = unittest.TextTestRunner(stream=sys.stdout, verbosity=2, resultclass=TimedResult)
    result = runner.run(load(sys.argv[1], sys.argv[2:]))
    return 0 if result.wasSuccessful() and result.testsRun > 0 and not result.skipped else 1


sys.exit(main())
