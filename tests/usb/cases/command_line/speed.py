# SPDX-License-Identifier: MIT
"""How fast an update exchanges its reports, beside a host that does nothing else. Prints, and judges no time."""
import datetime
import json
import pathlib
import statistics

from flashes import A1
from keyboard import Keyboard
from programs import BARE_HOST, COMMAND_LINE, COMPLETED, ProgramTest, make_package, output_of

STEP_PAUSE = 0.5
PAIRS = 9
BLOCKS = 4
BLOCK = 64 * 1024
BLOCK_REPORTS = 2 + 1024 * 2  # the header and its echo, 1024 messages of 64 bytes
REPORTS = 2 + BLOCKS * (BLOCK_REPORTS + 2) + 2 + 2  # mode, the blocks with their two status bytes, verify, end
FIGURES = pathlib.Path("/job/speed.json")  # script/bench takes them over


def ratios(pairs):
    """The median, between the quartiles."""
    low, median, high = statistics.quantiles((rate / bare for rate, bare in pairs), n=4)
    return {"median": median, "low": low, "high": high}


def words(figure):
    return f"{figure['median']:.2f} (the middle half of the pairs: {figure['low']:.2f} to {figure['high']:.2f})"


class ZerosA1(A1):
    """Four blocks of 64 KiB, all zeros as the bare host writes them."""

    size = length = BLOCKS * BLOCK
    options = (f"a1.size={size}",)
    description = (f"[Chip Info]\nChip Name = test\nChip Type = 2\nChip Size = {size:#x}\n"
                   "[Transmission Info]\nStart Address = 0\nData Length = 64K\nTime Over = 1000\n")
    steps = 2 + BLOCKS

    def __init__(self):
        super().__init__()
        self.image = bytes(self.length)


class SpeedTest(ProgramTest):
    def exchanged(self, host):
        """The commands that the keyboard saw, and reports per second: of the blocks, and of everything but the pauses.

        The keyboard's log is one clock for both hosts.
        """
        begin, ends = len(self.keyboard.lines), len(self.keyboard.said("command 09"))
        host()
        self.keyboard.wait_for("command 09", ends + 1)
        times, texts = zip(*self.keyboard.lines[begin:])
        self.assertEqual(len(texts), 1 + 2 * BLOCKS + 2, texts)  # mode, headers and blocks' last reports, verify, end
        block_time = sum(times[2:-2:2]) - sum(times[1:-2:2])
        whole_time = times[-1] - times[0] - self.flash.steps * STEP_PAUSE
        commands = [text for text in texts if text.startswith("command")]
        return commands, (BLOCKS * BLOCK_REPORTS / block_time, REPORTS / whole_time)

    def run_program(self):
        self.assertIn(COMPLETED, output_of(COMMAND_LINE, "update", self.package))
        self.assert_written(self.keyboard, self.flash)

    def run_bare_host(self):
        reports, _ = output_of(BARE_HOST, str(self.flash.length), str(BLOCK)).split()
        self.assertEqual(int(reports), REPORTS)

    def rates(self, turn):
        """Of the program and of the bare host, which take turns in being the first."""
        hosts = [self.run_program, self.run_bare_host]
        found = {host: self.exchanged(host) for host in (hosts if turn % 2 == 0 else reversed(hosts))}
        commands, rates = zip(*(found[host] for host in hosts))
        self.assertEqual(*commands)  # a block that came in other messages would not have been taken
        return rates

    def test_reports_per_second(self):
        self.flash = ZerosA1()
        self.package = make_package(self.flash)
        with Keyboard(flashes=[self.flash]) as self.keyboard:
            pairs = [self.rates(turn) for turn in range(PAIRS)]
        blocks, wholes = ([(program[which], bare[which]) for program, bare in pairs] for which in range(2))
        print("\nreports per second of hollin-cli and of the bare host:",
              ", ".join(f"{rate:.0f} and {bare:.0f}" for rate, bare in blocks))
        figures = {"blocks": ratios(blocks), "whole": ratios(wholes)}
        print("reports per second over the bare host:", words(figures["blocks"]))
        print("the same with what is done between the steps:", words(figures["whole"]))
        FIGURES.write_text(json.dumps({"date": str(datetime.date.today()), "pairs": PAIRS, **figures}) + "\n", encoding="utf-8")
