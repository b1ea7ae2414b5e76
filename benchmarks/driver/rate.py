# SPDX-License-Identifier: MIT
"""Reports per second over a real hidraw node. The virtual machine of script/usb-test measures them, which takes minutes of its
own; its last figure is taken over."""
import json

import tools
from table import Line, row

FIGURES = tools.ROOT / "build/usb/runs/command_line/speed.json"
COMMAND = "script/usb-test command_line speed"
GOAL = 0.97
WIDEST = 0.15  # from the lower to the upper quartile of the pairs; beside other work it is several times that


@row
def rate():
    what, goal = "reports per second over a real hidraw node, over the bare host", f"≥ {GOAL:g}"
    if not FIGURES.exists():
        return [Line(what, goal, "–", None, f"{COMMAND} measures it")]
    figures = json.loads(FIGURES.read_text())
    found = figures["blocks"]
    spread = f"the middle half of {figures['pairs']} pairs goes from {found['low']:.2f} to {found['high']:.2f}"
    met = found["median"] >= GOAL
    if found["high"] - found["low"] > WIDEST:
        met, spread = None, f"{spread}, so the machine was busy; {COMMAND} measures it anew"
    return [Line(f"{what}, on {figures['date']}", goal, f"{found['median']:.2f}", met, spread)]
