# SPDX-License-Identifier: MIT
"""Packages to measure with, each with what the model says of its update."""
from dataclasses import dataclass
from pathlib import Path

import tools
import update_model as model

KIB, MIB = 1 << 10, 1 << 20


@dataclass
class Pack:
    type: str
    description: str
    size: int  # of the image
    effort: model.Effort
    options: tuple = ()  # of the simulator


def a1(size, block=0x10000):
    description = f"[Chip Info]\nChip Size = 0x40000000\n[Transmission Info]\nData Length = {block}\n"
    return Pack("A1", description, size, model.a1(size, min(block, size)), ("a1.size=1M",))


A2_HEAD = """[Flash Modle]
Sample
[Write Modle]
Mode = {buffered}
[Block Size]
Size = {block}
[Time]
MaxWriteBack = 1000
MaxSectorEraseTime = 2000
[Data]
Erased = 0xFFFF
"""

CYCLES = {
    "Sector Erase Cycle": ("Erase", "555:AA 2AA:55 555:80 555:AA 2AA:55 0:30"),
    "Program Cycle": ("Program", "555:AA 2AA:55 555:A0"),
    "Write Buffer Cycle": ("WriteBuffer", "555:AA 2AA:55 0:25 0:0F"),
    "Program Buffer Cycle": ("ProgramBuffer", "0:29"),
}
PARAMETERS = {
    "WriteBuffer": "WriteBufferCount = 15\nWriteBufferPA1 = 3\nWriteBufferPA2 = 0xFF\nWriteBufferSA1 = 4\n"
    "WriteBufferSA2 = 0xFF\n",
    "ProgramBuffer": "ProgramBufferSA1 = 1\nProgramBufferSA2 = 0xFF\n",
}


def cycle_sections():
    text = ""
    for section, (name, pairs) in CYCLES.items():
        text += f"[{section}]\n{name}Cycles = {len(pairs.split())}\n" + PARAMETERS.get(name, "")
        for number, pair in enumerate(pairs.split(), 1):
            address, data = pair.split(":")
            text += f"{name}Addr{number} = 0x{address}\n{name}Data{number} = 0x{data}\n"
    return text


def listed(section, addresses):
    return f"[{section}]\n" + "".join(f"0x{address:X}\n" for address in addresses)


def a2(size, sector=0x10000, buffered=False, block=4096, reserved=(1,), reserved_entries=None):
    """`sector` in bytes; `reserved`: the numbers of the sectors that are not written."""
    words, count = sector // 2, max(2, -(-size // sector))
    entries = [number * words for number in reserved] if reserved_entries is None else reserved_entries
    description = (
        A2_HEAD.format(buffered=int(buffered), block=block)
        + cycle_sections()
        + listed("Reserved Sector", entries)
        + listed("Sector Address List", range(0, count * words, words))
    )
    start = (7 + 4 * 4, 4 + 4 * 1) if buffered else (2 + 4 * 3,)
    effort = model.a2(size, sector, block, 6, start, reserved)
    return Pack("A2", description, size, effort, (f"a2.sectors=0:{words}:{max(2, MIB // sector)}", "a2.erase-time=0"))


def c1(size, sector=0x10000, reserved=(0,)):
    description = listed("Reserved Sector", (number * sector for number in reserved))
    description += f"[Line Mode]\nLines = 4\n[Sector Size]\nSize = {sector}\n"
    return Pack("C1", description, size, model.c1(size, sector), ("c1.erase-time=0", "c1.chip=0:0:2M"))


def effort_of(packs):
    return sum((pack.effort for pack in packs), model.Effort()) + model.END


def write(name, *packs, zeros=False):
    """A package with these packs, in the folder for temporary files."""
    path = tools.work() / f"{name}.dat"
    arguments = []
    for number, pack in enumerate(packs):
        description, image = path.with_suffix(f".{number}.ini"), path.with_suffix(f".{number}.bin")
        description.write_text(pack.description)
        fill(image, pack.size, zeros)
        arguments += ["--pack", f"{pack.type}:{description}:{image}"]
    tools.check(tools.CLI, "pack", "--model", "TS30", "--firmware-version", "1", *arguments, "-o", path)
    for part in path.parent.glob(f"{name}.[01].bin"):
        part.unlink()
    return path


def fill(image: Path, size, zeros):
    noise = bytes(MIB) if zeros else bytes((number * 167 + (number >> 8) * 59) & 0xFF for number in range(MIB))
    with image.open("wb") as file:
        for start in range(0, size, MIB):
            file.write(noise[: min(MIB, size - start)])
