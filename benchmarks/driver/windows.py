# SPDX-License-Identifier: MIT
"""The window: its start, its memory, its rest, its main thread. And what the programs are made of."""
import contextlib
import itertools
import shutil
import time
from pathlib import Path

import packages
import tools
from table import Line, at_most, row

EMPTY = tools.OWN / "hollin_empty_window"
FURNISHED = tools.OWN / "hollin_furnished_window"
PICTURE = (tools.ROOT / "src/app/images/keyboard.svg", 290)  # as wide as the program draws it
CAPTION = "Varnholt TS30 Firmware Update V2.0.0"
serial = itertools.count()


class Window:
    """A running window program, looked into by the probe."""

    def __init__(self, process, probe):
        self.process, self.probe = process, probe

    def told(self, what):
        lines = [line.split() for line in self.probe.read_text().splitlines() if line.startswith(what)]
        return [(int(time) / 1e9, int(length) / 1e9) for _, time, length in lines]

    def painted(self):
        """Seconds from the start, less those in which others had the processor, as far as no thread of its own can have had it."""
        (end, waited), (begin, before) = tools.await_true(lambda: self.told("painted"), "the first picture")[0], self.told("begun")[0]
        return end - begin - max(0, waited - before)

    def proc(self, pattern):
        return [path.read_text() for path in Path(f"/proc/{self.process.pid}").glob(pattern)]

    def kib(self, name):
        return next(int(line.split()[1]) for line in self.proc("status")[0].splitlines() if line.startswith(name + ":"))

    def spent(self):
        """Context switches and nanoseconds of the processor so far, of all threads."""
        switches = sum(int(line.split()[1]) for text in self.proc("task/*/status")
                       for line in text.splitlines() if "ctxt_switches" in line)
        return switches, sum(int(text.split()[0]) for text in self.proc("task/*/schedstat"))

    def settle(self):
        """Waits until nothing has happened for a second, and every timer of the start has run out."""
        self.painted()
        time.sleep(2)
        last = None
        while last != (last := self.spent()):
            time.sleep(1)


def nanoseconds_waited():
    """By this thread, from its making, for a processor."""
    return int(Path("/proc/thread-self/schedstat").read_text().split()[1])


@contextlib.contextmanager
def started(program, env, *arguments, keyboard=tools.QUICK):
    probe = tools.work() / f"probe{next(serial)}"
    own = {"LD_PRELOAD": f"{tools.OWN}/libhollin_window_probe.so", "WINDOW_PROBE": str(probe)} | keyboard
    begun = lambda: probe.write_text(f"begun {time.monotonic_ns()} {nanoseconds_waited()}\n")
    with tools.background(program, *arguments, env=env | own, at_start=begun) as process:
        yield Window(process, probe)


def time_to_painted(program, env, *arguments):
    with started(program, env, *arguments) as window:
        return window.painted()


@row
def start():
    with tools.desktop() as env:
        time_to_painted(tools.WINDOW, env), time_to_painted(EMPTY, env)  # files are read from the disk once
        results = tools.pairs(41, lambda: time_to_painted(tools.WINDOW, env), lambda: time_to_painted(EMPTY, env))
        furnished = tools.pairs(41, lambda: time_to_painted(FURNISHED, env, *PICTURE), lambda: time_to_painted(EMPTY, env))
    ratio, shown = tools.median_ratio(results), tools.median_ratio(furnished)
    note = f"the empty window takes {shown:.2f} times as long itself with the same menus, cards, texts and picture in plain Qt"
    return [at_most("start to painted window, over an empty window", ratio, 1.25, note=note if ratio <= 1.05 * shown else "")]


def peak_after_start(program, env):
    with started(program, env) as window:
        window.settle()
        return window.kib("VmHWM")


@row
def start_memory():
    with tools.desktop() as env:
        results = tools.pairs(3, lambda: peak_after_start(tools.WINDOW, env), lambda: peak_after_start(EMPTY, env))
    return [at_most("peak memory after start, over an empty window", tools.median_ratio(results), 1.20)]


def in_user_namespace():
    """As the program looks whether the kernel will tell it of devices."""
    return Path("/proc/self/ns/user").readlink() != Path("user:[4026531837]")


@row
def idle():
    what, goal = "idle for 5 s with a package loaded: context switches, CPU", "0, 0 ms"
    if in_user_namespace():
        return [Line(what, goal, "–", None, "wants root: in a user's namespace the kernel tells of no devices, and the window has to look")]
    package = packages.write("idle", packages.a1(packages.MIB))
    with tools.desktop() as env, started(tools.WINDOW, env, package) as window:
        window.settle()
        before = window.spent()
        time.sleep(5)
        switches, cpu = (after - start for after, start in zip(window.spent(), before))
    return [Line(what, goal, f"{switches}, {cpu / 1e6:.2f} ms", switches == 0 and cpu == 0)]


def is_shown(title, env):
    return tools.run("xdotool", "search", "--onlyvisible", "--name", f"^{title}$", env=env).code == 0


def press(key, title, env):
    window = tools.output("xdotool", "search", "--onlyvisible", "--name", f"^{title}$", env=env).split()[0]
    tools.check("xdotool", "windowfocus", "--sync", window, "key", key, env=env)


def longest_stretch(package, env, keyboard):
    with started(tools.WINDOW, env, package, keyboard=tools.QUICK | keyboard) as window:
        window.settle()
        begin = time.monotonic()
        press("ctrl+u", CAPTION, env)
        tools.await_true(lambda: is_shown("Information", env), "the end of the update", 60)
        time.sleep(0.5)  # until the alert is painted and the probe has told of it
        stretches = [length for end, length in window.told("busy") if end > begin]
        if not stretches:
            raise RuntimeError("no stretch of the main thread was told")
        return max(stretches)


@row
def main_thread():
    package = packages.write("window", packages.a1(16 * packages.MIB), zeros=True)
    paced = packages.write("paced", packages.a1(0x30000), zeros=True)
    with tools.desktop() as env:
        longest_stretch(paced, env, {"QUICK_SKIP_PAUSES": "1"})  # what the alert wants is read from the disk once
        steps = [longest_stretch(package, env, {"QUICK_SKIP_PAUSES": "1"}) for _ in range(3)]
        waits = [longest_stretch(paced, env, {"QUICK_FRAME_NS": "125000"}) for _ in range(3)]
    return [at_most("main thread while an update runs: longest time without answering",
                    max(steps + waits) * 1000, 50, " ms", 1,
                    "of six updates: " + ", ".join(f"{length * 1000:.0f}" for length in steps + waits))]


def stripped(program):
    copy = tools.work() / program.name
    shutil.copy(program, copy)
    tools.check("strip", copy)
    return copy.stat().st_size / packages.MIB


def libraries(program):
    return len(tools.output("ldd", program).splitlines())


@row
def programs():
    return [
        at_most("hollin: stripped size", stripped(tools.WINDOW), 1, " MiB"),
        at_most("hollin: libraries", libraries(tools.WINDOW), 55, "", 0),
        at_most("hollin-cli: stripped size", stripped(tools.CLI), 1, " MiB"),
        at_most("hollin-cli: libraries", libraries(tools.CLI), 14, "", 0),
    ]
