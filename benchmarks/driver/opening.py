# SPDX-License-Identifier: MIT
"""Opening a package: `hollin-cli update` with no keyboard there opens it, and ends."""
import statistics
from pathlib import Path

import packages
import tools
from table import Line, at_most, row
from windows import started

FLOOR = tools.OWN / "hollin_examine_floor"
NO_KEYBOARD = 4  # the exit code
MIB = packages.MIB
KINDS = {"A1": packages.a1, "A2": packages.a2, "C1": packages.c1}


def package(kind, size):
    path = tools.work() / f"{kind}-{size}.dat"
    pack = KINDS[kind](size)
    return (path if path.exists() else packages.write(path.stem, pack)), len(pack.description)


def opened(path):
    return tools.check(tools.CLI, "update", path, env=tools.NO_KEYBOARD, code=NO_KEYBOARD)


def programs(kind, size):
    """Seconds of the processor, which is all that it takes on a tmpfs, of the program and of the floor."""
    path, description = package(kind, size)
    return lambda: opened(path).cpu, lambda: tools.check(FLOOR, path, description).cpu


def least(kind, size):
    """The smallest of three runs of each: nothing but the machine makes one of them take longer."""
    touch = lambda: tools.touch_memory(3 * size + 64 * MIB)  # the package, its image and the temporary file
    return [min(column) for column in zip(*tools.pairs(3, *programs(kind, size), before=touch))]


def starts(kind):
    """What the two take for next to nothing."""
    return [statistics.median(column) for column in zip(*tools.pairs(9, *programs(kind, 2 * 0x10000)))]


def rounds(kind, *sizes, count=7):
    """Both programs with every size in turn, their starts taken off; a list of rounds for each size."""
    own, floor = starts(kind)
    found = [[least(kind, size) for size in sizes] for _ in range(count)]
    return [[(a - own, b - floor) for a, b in column] for column in zip(*found)]


def over_floor(kind, size, results):
    program, floor = (min(column) for column in zip(*results))
    note = f"the quickest of all runs took {program / floor:.2f} times as long as the floor's quickest, so it is not the program alone"
    return at_most(f"opening a package of {size} MiB, over the floor, {kind}", tools.median_ratio(results), 1.25,
                   note=note if program / floor <= 1.25 else "")


def lines_of(kind):
    small, large = rounds(kind, 16 * MIB, 256 * MIB)
    growth, of_floor = (statistics.median(b[which] / a[which] / 16 for a, b in zip(small, large)) for which in range(2))
    return [over_floor(kind, 16, small), over_floor(kind, 256, large),
            at_most(f"opening: time per MiB at 256 MiB over 16 MiB, {kind}", growth, 1.15,
                    note=f"the floor's grew {of_floor:.2f} times in the same rounds" if growth / of_floor <= 1.15 else "")]


@row
def opening():
    return [line for kind in KINDS for line in lines_of(kind)]


@row
def opening_memory():
    lines = []
    for kind in KINDS:
        small, large = (opened(package(kind, size)[0]).peak for size in (16 * MIB, 256 * MIB))
        growth = (large - small - 2 * MIB) / (240 * MIB)
        lines.append(at_most(f"memory from 16 to 256 MiB, less 2 MiB, over the image's growth, {kind}", growth, 2.0))
    return [*lines, *reopening()]


def hand_over(path, env):
    """To the window that is there, which writes its temporary files anew."""
    written = Path("/tmp/TEMP1.BIN")
    before = written.stat().st_mtime_ns
    tools.check(tools.WINDOW, path, env=env | tools.QUICK)
    tools.await_true(lambda: written.stat().st_mtime_ns != before, "the package to be opened again")


def reopening():
    """In one window."""
    path, _ = package("A2", 16 * MIB)
    with tools.desktop() as env, started(tools.WINDOW, env, path) as window:
        window.settle()
        hand_over(path, env)
        window.settle()
        first = window.kib("VmHWM")
        for _ in range(18):
            hand_over(path, env)
        window.settle()
        growth = (window.kib("VmHWM") - first) / 1024
    return [at_most("memory: growth from the 2nd to the 20th opening of one file", growth, 1, " MiB")]


@row
def largest():
    path, _ = package("A1", 1024 * MIB)
    code = tools.run(tools.CLI, "update", path, env=tools.NO_KEYBOARD).code
    path.unlink()
    return [Line("a package of 1 GiB opens", "yes", "yes" if code == NO_KEYBOARD else f"exit code {code}",
                 code == NO_KEYBOARD)]
