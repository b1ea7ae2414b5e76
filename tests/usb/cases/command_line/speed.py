# SPDX-License-Identifier: MIT
"""How fast an update exchanges its reports, beside a host that does nothing else. Prints, and judges no time."""
import statistics

from flashes import A1
from keyboard import Keyboard
from programs import BARE_HOST, COMMAND_LINE, COMPLETED, ProgramTest, make_package, output_of

STEP_PAUSE = 0.5
PAIRS = 7
BLOCK_REPORTS = 2 + 768 * 2  # the header and its echo, 768 messages of 64 bytes
REPORTS = 2 + BLOCK_REPORTS + 2 + 2 + 2  # mode, the block, its two status bytes, verify, end


def median_ratio(pairs):
    return statistics.median(rate / bare for rate, bare in pairs)


class ZerosA1(A1):
    """One block of 48 KiB, all zeros as the bare host writes them."""

    length = 48 * 1024
    description = ("[Chip Info]\nChip Name = test\nChip Type = 2\nChip Size = 0x10000\n"
                   "[Transmission Info]\nStart Address = 0\nData Length = 48K\nTime Over = 1000\n")
    steps = 3

    def __init__(self):
        super().__init__()
        self.image = bytes(self.length)


class SpeedTest(ProgramTest):
    def exchanged(self, host):
        """The commands that the keyboard saw, and reports per second: of the block, and of everything but the pauses.

        The keyboard's log is one clock for both hosts.
        """
        begin, ends = len(self.keyboard.lines), len(self.keyboard.said("command 09"))
        host()
        self.keyboard.wait_for("command 09", ends + 1)
        times, texts = zip(*self.keyboard.lines[begin:])
        self.assertEqual(len(texts), 5, texts)  # mode, header, the block's last report, verify, end
        block_rate = BLOCK_REPORTS / (times[2] - times[1])
        whole_rate = REPORTS / (times[4] - times[0] - self.flash.steps * STEP_PAUSE)
        return [text for text in texts if text.startswith("command")], (block_rate, whole_rate)

    def run_program(self):
        self.assertIn(COMPLETED, output_of(COMMAND_LINE, "update", self.package))
        self.assert_written(self.keyboard, self.flash)

    def run_bare_host(self):
        length = str(self.flash.length)
        reports, _ = output_of(BARE_HOST, length, length).split()
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
        print(f"reports per second over the bare host: {median_ratio(blocks):.2f}")
        print(f"the same with what is done between the steps: {median_ratio(wholes):.2f}")
