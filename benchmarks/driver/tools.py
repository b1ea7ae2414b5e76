# SPDX-License-Identifier: MIT
"""Running and measuring programs."""
import contextlib
import ctypes
import functools
import mmap
import os
import shutil
import signal
import statistics
import subprocess
import tempfile
import time
from dataclasses import dataclass
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
BUILD = ROOT / "build/bench"
CLI = BUILD / "Hollin.app/hollin-cli"
WINDOW = BUILD / "Hollin.app/hollin"
SIMULATOR = BUILD / "bin/ts30-simulator"
OWN = BUILD / "benchmarks"
QUICK = {"LD_LIBRARY_PATH": f"{OWN}/quick"}  # a keyboard that answers at once
NO_KEYBOARD = {"LD_LIBRARY_PATH": f"{BUILD}/simulator/standin", "TS30_SIMULATOR_DIR": ""}


@functools.cache
def work():
    """A folder for what is made on the way; gone in the end."""
    return Path(tempfile.mkdtemp(prefix="hollin-bench-"))


def remove_work():
    shutil.rmtree(work(), ignore_errors=True)


def environment(extra=()):
    """The same for every program: nothing of the user's own settings."""
    home = work() / "home"
    home.mkdir(mode=0o700, exist_ok=True)
    own = {"HOME": str(home), "XDG_RUNTIME_DIR": str(home), "LC_ALL": "C.UTF-8", "PATH": os.environ["PATH"]}
    return own | dict(extra)


@dataclass
class Run:
    seconds: float
    cpu: float  # seconds of the processor, of all threads
    peak: int  # bytes
    code: int


def run(*command, env=()):
    """Runs a program to its end, unseen."""
    begin = time.monotonic()
    process = subprocess.Popen(
        [str(part) for part in command], env=environment(env), stdin=subprocess.DEVNULL,
        stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    _, status, usage = os.wait4(process.pid, 0)
    seconds = time.monotonic() - begin
    process.returncode = os.waitstatus_to_exitcode(status)
    return Run(seconds, usage.ru_utime + usage.ru_stime, usage.ru_maxrss * 1024, process.returncode)


def check(*command, env=(), code=0):
    """The same for one that must end with this exit code."""
    result = run(*command, env=env)
    if result.code != code:
        raise RuntimeError(f"{command[0]} ended with {result.code}: {' '.join(str(part) for part in command)}")
    return result


def output(*command, env=()):
    return subprocess.run(
        [str(part) for part in command], env=environment(env), stdin=subprocess.DEVNULL, capture_output=True, text=True,
        check=True).stdout


def touch_memory(size):
    """On a virtual machine the host may have taken free memory back. To give it again takes longer than all that is
    done with it, so as much as the next runs need is taken, written to and freed before they begin. By a process of its own:
    what this one ever had would count as the peak of every program that it starts."""
    child = os.fork()
    if child == 0:
        code = 1
        try:
            memory = mmap.mmap(-1, size, flags=mmap.MAP_PRIVATE | mmap.MAP_ANONYMOUS)
            with contextlib.suppress(OSError):  # of kernels without
                memory.madvise(mmap.MADV_HUGEPAGE)
            memory[::mmap.PAGESIZE] = bytes(size // mmap.PAGESIZE)
            code = 0
        finally:
            os._exit(code)
    if os.waitpid(child, 0)[1] != 0:
        raise RuntimeError(f"{size // 2**20} MiB of memory could not be had")


def pairs(count, measure, floor, before=lambda: None):
    """Both in turn, each first every other time."""
    results = []
    for number in range(count):
        before()
        if number % 2:
            second = floor()
            results.append((measure(), second))
        else:
            first = measure()
            results.append((first, floor()))
    return results


def median_ratio(results):
    return statistics.median(a / b for a, b in results)


LIBC = ctypes.CDLL(None)


@contextlib.contextmanager
def background(*command, env=(), at_start=lambda: None, **options):
    """A program that runs meanwhile, and ends with this one at the latest. `at_start` is called in its process, just before."""
    def prepare():
        LIBC.prctl(1, signal.SIGTERM)  # PR_SET_PDEATHSIG
        at_start()
    process = subprocess.Popen(
        [str(part) for part in command], env=environment(env), stdin=subprocess.DEVNULL, preexec_fn=prepare, **options)
    try:
        yield process
    finally:
        process.terminate()
        process.wait()


def await_true(condition, what, limit=30):
    end = time.monotonic() + limit
    while not (value := condition()):
        if time.monotonic() > end:
            raise RuntimeError(f"waited {limit} s for {what}")
        time.sleep(0.005)
    return value


@contextlib.contextmanager
def desktop():
    """An X server and a session bus; gives the environment of their programs."""
    quiet = {"stdout": subprocess.PIPE, "stderr": subprocess.DEVNULL}
    server = ("Xvfb", "-displayfd", "1", "-screen", "0", "1280x1024x24", "-noreset", "-nolisten", "tcp")
    bus = ("dbus-daemon", "--session", "--nofork", "--print-address")
    with background(*server, **quiet) as x, background(*bus, **quiet) as daemon:
        display, address = x.stdout.readline().decode().strip(), daemon.stdout.readline().decode().strip()
        yield {"DISPLAY": f":{display}", "DBUS_SESSION_BUS_ADDRESS": address}
