# SPDX-License-Identifier: MIT
"""The flashes that the cases write: each with its description, an image, and what must be in it afterwards."""
import random


def some_bytes(seed, size):
    return random.Random(seed).randbytes(size)


def numbered(key, values):
    return [f"{key}{i + 1} = {value:#x}" for i, value in enumerate(values)]


class A1:
    """Three blocks of 1 KiB, the last of them short, through a window at address 0."""

    kind = name = "a1"
    size = 64 * 1024
    options = (f"a1.size={size}",)
    description = ("[Chip Info]\nChip Name = test\nChip Type = 2\nChip Size = 0x10000\n"
                   "[Transmission Info]\nStart Address = 0\nData Length = 1K\nTime Over = 1000\n")
    steps = 5

    def __init__(self, seed=1, length=2500):
        self.image = some_bytes(seed, length)
        self.before = some_bytes(seed + 1, self.size)

    @property
    def after(self):
        return self.image + self.before[len(self.image):]


class A2:
    """Sectors of 8 KiB, of which the second is reserved; the image ends in the third."""

    kind = name = "a2"
    sector = 8192
    count = 8
    reserved = 1
    options = (f"a2.sectors=0:{sector // 2}:{count}", "a2.erase-time=100")
    steps = 5

    def __init__(self, write_buffer, seed=3, length=20001):
        self.write_buffer = write_buffer
        self.image = some_bytes(seed, length)
        self.before = some_bytes(seed + 1, self.sector * self.count)

    @property
    def description(self):
        words = self.sector // 2
        lines = ["[Chip Type]", "mode = 1", "[Flash Modle]", "test", "[Write Modle]",
                 f"buffer = {int(self.write_buffer)}", "[Reserved Sector]", f"{self.reserved * words:#x}",
                 "[Block Size]", "words = 2048", "[Sector Erase Cycle]", "EraseCycles = 6",
                 *numbered("addr", [0x555, 0x2AA, 0x555, 0x555, 0x2AA, 0]),
                 *numbered("data", [0xAA, 0x55, 0x80, 0xAA, 0x55, 0x30]),
                 "[Program Cycle]", "ProgramCycles = 3", *numbered("Addr", [0x555, 0x2AA, 0x555]),
                 *numbered("Data", [0xAA, 0x55, 0xA0]),
                 "[Write Buffer Cycle]", "WriteBufferCycles = 4", "WriteBufferCount = 15",
                 *numbered("Addr", [0x555, 0x2AA, 0, 0]), *numbered("Data", [0xAA, 0x55, 0x25, 0x0F]),
                 "[Program Buffer Cycle]", "ProgramBufferCycles = 1", *numbered("Addr", [0]),
                 *numbered("Data", [0x29]),
                 "[Sector Address List]", *[f"{i * words:#x}" for i in range(self.count)]]
        return "\n".join(lines) + "\n"

    @property
    def after(self):
        """The reserved sector keeps what it held, its part of the image is not written, nor is an odd last byte."""
        flash = bytearray(self.before)
        even = self.image[:len(self.image) & ~1]
        for start in range(0, len(even), self.sector):
            if start == self.reserved * self.sector:
                continue
            flash[start:start + self.sector] = b"\xff" * self.sector
            part = even[start:start + self.sector]
            flash[start:start + len(part)] = part
        return bytes(flash)


class C1:
    """Sectors of 4 KiB, of which the second is reserved: the image goes into the first and the third."""

    kind = name = "c1"
    sector = 4096
    size = 64 * 1024
    reserved = 1
    options = (f"c1.chip=0:0:{size}", "c1.erase-time=30")

    def __init__(self, seed=5, length=6000):
        self.image = some_bytes(seed, length)
        self.before = some_bytes(seed + 1, self.size)
        self.steps = 2 + (length + self.sector - 1) // self.sector

    description = ("[reserved sector]\n0x1000\n[line mode]\nlines = 4\n[spi number]\nn = 0\n"
                   "[chip select number]\nn = 0\n[sector size]\nbytes = 4K\n")

    @property
    def after(self):
        flash = bytearray(self.before)
        place = 0
        for start in range(0, len(self.image), self.sector):
            if place == self.reserved * self.sector:
                place += self.sector
            part = self.image[start:start + self.sector]
            flash[place:place + self.sector] = part + b"\xff" * (self.sector - len(part))
            place += self.sector
        return bytes(flash)
