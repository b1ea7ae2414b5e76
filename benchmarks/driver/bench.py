# SPDX-License-Identifier: MIT
"""Measures Hollin against floors and prints a table. script/bench starts it."""
import argparse
import datetime
import os
import platform
import sys
import time
import traceback
from pathlib import Path

sys.path[:0] = [str(Path(__file__).resolve().parents[1] / "floors")]

import opening  # noqa: E402,F401 (each of these four adds its rows)
import rate  # noqa: E402,F401
import tools  # noqa: E402
import updates  # noqa: E402,F401
import windows  # noqa: E402,F401
from table import ROWS, Line, as_markdown, as_text  # noqa: E402

DOCUMENT = tools.ROOT / "docs/performance.md"
BEGIN, END = "<!-- table -->\n", "<!-- end of table -->\n"


def machine():
    """The machine and the day, in one line."""
    model = next((line.split(":")[1].strip() for line in Path("/proc/cpuinfo").read_text().splitlines()
                  if line.startswith("model name")), platform.machine())
    memory = os.sysconf("SC_PAGE_SIZE") * os.sysconf("SC_PHYS_PAGES") / 2**30
    system = platform.freedesktop_os_release().get("PRETTY_NAME", platform.system())
    return (f"{datetime.date.today():%Y-%m-%d}, {os.cpu_count()} processors ({model}), {memory:.0f} GiB, {system}, "
            f"Linux {platform.release()}")


def measure(names):
    """The lines, and the rows that could not be measured."""
    lines, failed = [], []
    for name in names:
        begin = time.monotonic()
        try:
            found = ROWS[name]()
        except Exception as error:  # whatever it is, the other rows are measured
            traceback.print_exc()
            found = [Line(name, "–", "–", False, f"it could not be measured: {error!r}")]
            failed.append(name)
        print(f"bench: {name} ({time.monotonic() - begin:.0f} s)")
        print("".join(f"bench:   {line.what}: {line.figure} ({line.goal}), {line.verdict()}\n" for line in found), end="",
              flush=True)
        lines += found
    return lines, failed


def write(lines, minutes):
    before, rest = DOCUMENT.read_text().split(BEGIN)
    after = rest.split(END)[1]
    DOCUMENT.write_text(f"{before}{BEGIN}{machine()}; {minutes}.\n\n{as_markdown(lines)}{END}{after}")


def set_up_and_built():
    """What came before this program, where script/bench tells when it began."""
    begin = os.environ.get("HOLLIN_BENCH_BEGIN")
    return f"set up and built in {(time.time() - int(begin)) / 60:.1f} minutes, " if begin else ""


def main():
    parser = argparse.ArgumentParser(prog="script/bench", description="Measures Hollin and prints a table.")
    parser.add_argument("--write", action="store_true", help="put the table into docs/performance.md")
    parser.add_argument("row", nargs="*", help=f"of these rows only: {', '.join(ROWS)}")
    arguments = parser.parse_args()
    unknown = set(arguments.row) - set(ROWS)
    if unknown or (arguments.write and arguments.row):
        parser.error(f"no such row: {', '.join(unknown)}" if unknown else "--write wants every row")
    begin, built = time.monotonic(), set_up_and_built()
    try:
        lines, failed = measure(arguments.row or ROWS)
    finally:
        tools.remove_work()
    minutes = f"{built}measured in {(time.monotonic() - begin) / 60:.1f} minutes"
    print(f"\n{as_text(lines)}\n\n{machine()}; {minutes}")
    if arguments.write and failed:
        sys.exit(f"bench: {DOCUMENT} is left as it is, since something could not be measured: {', '.join(failed)}")
    if arguments.write:
        write(lines, minutes)
    return 1 if any(line.met is False for line in lines) else 0


if __name__ == "__main__":
    sys.exit(main())
