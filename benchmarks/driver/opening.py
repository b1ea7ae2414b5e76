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


def starts(kind):
    """What the two take for next to nothing."""
    return [statistics.median(column) for column in zip(*tools.pairs(9, *programs(kind, 2 * 0x10000)))]


def over_floor(kind, size, count):
    own, floor = starts(kind)
    return tools.median_ratio([(a - own, b - floor) for a, b in tools.pairs(count, *programs(kind, size))])


def growth(kind):
    """Of the time per MiB; the two sizes in turn, each large package against the median of five small."""
    own, _ = starts(kind)
    large, small = (programs(kind, size)[0] for size in (256 * MIB, 16 * MIB))
    found = tools.pairs(9, large, lambda: statistics.median(small() for _ in range(5)))
    return tools.median_ratio([((a - own) / 16, b - own) for a, b in found])


@row
def opening():
    lines = [at_most(f"opening a package of 16 MiB, over the floor, {kind}", over_floor(kind, 16 * MIB, 9), 1.25)
             for kind in KINDS]
    for kind in KINDS:
        lines += [at_most(f"opening a package of 256 MiB, over the floor, {kind}", over_floor(kind, 256 * MIB, 3), 1.25),
                  at_most(f"opening: time per MiB at 256 MiB over 16 MiB, {kind}", growth(kind), 1.15)]
    return lines


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
