# SPDX-License-Identifier: MIT
"""An update so short that every moment of it has a number, and the faults that unplug the keyboard there."""
from flashes import C1

# What a C1 update of one short sector sends. Commands: 1 mode, 2 configure, 3 erase, 4 the question whether it is
# erased, 5 block header, 6 verify, 7 end. Reports: 1 to 5 are those commands, 6 and 7 the data, 8 verify, 9 end.
MOMENTS = {
    "mode": "remove-at@c1",
    "configure": "remove-at@c2",
    "erase": "remove-at@c3",
    "poll": "remove-at@c4",
    "header": "remove-at@c5",
    "data": "remove-at@h6",
    "status": "remove-at@h7",
    "verify": "remove-at@c6",
}
END = "remove-at@c7"


def short_flash():
    flash = C1(length=100)
    flash.options = (*flash.options, "c1.erase-time=0")
    return flash
