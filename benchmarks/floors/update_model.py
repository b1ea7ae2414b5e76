# SPDX-License-Identifier: MIT
"""The least that an update takes: what docs/protocol.md prescribes where everything succeeds at the first attempt."""
from collections import Counter
from dataclasses import dataclass, field

AFTER_STEP = 500  # milliseconds
FIRST_POLL, LATER_POLL = 700, 20


@dataclass
class Effort:
    writes: int = 0  # reports to the keyboard
    reads: int = 0  # reports from it
    pauses: Counter = field(default_factory=Counter)  # by length in milliseconds

    def __add__(self, other):
        return Effort(self.writes + other.writes, self.reads + other.reads, self.pauses + other.pauses)

    def __mul__(self, count):
        return Effort(self.writes * count, self.reads * count, Counter({k: v * count for k, v in self.pauses.items()}))

    def seconds(self, frame):
        return sum(length * count for length, count in self.pauses.items()) / 1000 + (self.writes + self.reads) * frame


def reports(size):
    return -(-size // 55)


def pause(length):
    return Effort(pauses=Counter({length: 1}))


def echoed(size):
    return Effort(reports(size), reports(size))


EXCHANGE = Effort(1, 1)
STATUS = Effort(0, 1)
STEP = pause(AFTER_STEP)


def pieces(size, largest):
    return [largest] * (size // largest) + ([size % largest] if size % largest else [])


def a1(image, block):
    effort = EXCHANGE + STEP + EXCHANGE + STEP  # mode, verify
    for size in pieces(image, block):
        data = sum(reports(message) for message in pieces(size, 64))
        effort += EXCHANGE + Effort(data, 0) + STATUS * 2 + STEP
    return effort


def a2(image, sector, block, cycles, start, reserved=()):
    """Sizes in bytes but `block`, in words; `cycles` of an erase; `start`: the bytes of the commands before the blocks."""
    effort = EXCHANGE + STEP + STEP
    for index, size in enumerate(pieces(image, sector)):
        effort += STEP
        if index in reserved:
            continue
        effort += EXCHANGE * cycles
        effort += EXCHANGE + pause(FIRST_POLL) + EXCHANGE + pause(LATER_POLL)  # erased, and erased once more
        for command in start:
            effort += echoed(command)
        for data in pieces(size // 2 * 2, block * 2):
            effort += EXCHANGE + Effort(reports(data), 0) + STATUS * 2
        effort += EXCHANGE  # verify
    return effort


def c1(image, sector):
    effort = EXCHANGE * 2 + STEP + STEP  # mode, configure
    for size in pieces(image, sector):
        effort += STEP + EXCHANGE + EXCHANGE + pause(LATER_POLL)
        for data in pieces(size, 8192):
            effort += EXCHANGE + Effort(reports(data), 0) + STATUS
        effort += EXCHANGE  # verify
    return effort


END = EXCHANGE
