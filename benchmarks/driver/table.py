# SPDX-License-Identifier: MIT
"""The rows of the table: each is a function that measures and gives its lines."""
from dataclasses import dataclass

ROWS = {}  # name: function, in the order of the table


@dataclass
class Line:
    what: str
    goal: str
    figure: str
    met: bool | None  # None: not measured here, which is no failure
    note: str = ""  # why a goal is missed, or who measures it

    def verdict(self):
        if self.met:
            return "met"
        return "not measured: " + self.note if self.met is None else "missed: " + (self.note or "the reason is not known")


def row(function):
    ROWS[function.__name__.replace("_", "-")] = function
    return function


def rounded(figure, limit, digits=2):
    """With more digits where it would look like the limit, and is not."""
    while float(text := f"{figure:.{digits}f}") == limit != figure:
        digits += 1
    return text


def at_most(what, figure, limit, unit="", digits=2, note=""):
    return Line(what, f"≤ {limit:g}{unit}", rounded(figure, limit, digits) + unit, figure <= limit, note)


def as_text(lines):
    cells = [("what", "goal", "figure", "verdict")]
    cells += [(line.what, line.goal, line.figure, line.verdict()) for line in lines]
    widths = [max(len(row[column]) for row in cells) for column in range(3)]
    return "\n".join("  ".join([*(cell.ljust(width) for cell, width in zip(row, widths)), row[3]]) for row in cells)


def as_markdown(lines):
    text = "| what | goal | figure | verdict |\n|---|--:|--:|---|\n"
    return text + "".join(f"| {line.what} | {line.goal} | {line.figure} | {line.verdict()} |\n" for line in lines)
