# SPDX-License-Identifier: MIT
"""Goes through a whole update by the keyboard alone, and looks at the running program as a screen reader does.

accessibility_test.py BIN STANDIN: the folder of the programs, and that of the stand-in for hidapi. Wants a session bus
of its own, on which the accessibility bus is started.
"""
import os
import subprocess
import sys
import tempfile
import time

import pyatspi
from gi.repository import GLib

CAPTION = "Varnholt TS30 Firmware Update V2.0.0"
CONNECTED = 'The TS30 is connected. Please press the "Update" button now.'
TOO_LONG = 40  # seconds

BIN, STANDIN = sys.argv[1:3]
events = []


def note(event):
    try:
        events.append((event.type, event.source.name, event.any_data))
    except GLib.Error:  # it is gone already
        pass


def eventually(find, what):
    """What `find` gives as soon as that is something; the bus is served meanwhile."""
    end = time.monotonic() + TOO_LONG
    while time.monotonic() < end:
        while GLib.MainContext.default().iteration(False):
            pass
        try:
            found = find()
        except (GLib.Error, RuntimeError):
            found = None
        if found:
            return found
        time.sleep(0.02)
    raise AssertionError(f"never seen: {what}")


def all_below(node):
    yield node
    for child in list(node):
        if child is not None:
            yield from all_below(child)


def application():
    return next((app for app in pyatspi.Registry.getDesktop(0) if app and app.name == "Hollin"), None)


def window(title):
    return next((top for top in application() or () if top and top.name == title), None)


def showing(node):
    return node.getState().contains(pyatspi.STATE_SHOWING)


def element(role, name, title=CAPTION):
    return next((node for node in all_below(window(title)) if node.getRole() == role and node.name == name), None)


def await_element(role, name, title=CAPTION):
    return eventually(lambda: element(role, name, title), f"{name} in {title}")


def is_enabled(node):
    return node.getState().contains(pyatspi.STATE_ENABLED)


def is_focused(node):
    return node.getState().contains(pyatspi.STATE_FOCUSED)


def press(*keys):
    # Without a window manager the new window is not given the focus.
    subprocess.run(["xdotool", "key", *keys], check=True)


def focus(title):
    eventually(lambda: window(title), title)
    # It fails while the server has not shown the window yet.
    command = ["xdotool", "search", "--onlyvisible", "--name", f"^{title}$", "windowfocus", "--sync"]
    eventually(lambda: subprocess.run(command, stdout=subprocess.DEVNULL, check=False).returncode == 0,
               f"the focus on {title}")


def make_package(folder):
    with open(f"{folder}/flash.ini", "w", encoding="utf-8") as description:
        description.write("[Chip Info]\nChip Size=1K\n[Transmission Info]\nData Length=256\n")
    with open(f"{folder}/image.bin", "wb") as image:
        image.write(bytes(range(250)) * 4)
    subprocess.run([f"{BIN}/hollin-cli", "pack", "--model", "TS30", "--firmware-version", "V1", "--key", "Shift",
                    "--pack", f"A1:{folder}/flash.ini:{folder}/image.bin", "-o", f"{folder}/sample.dat"], check=True)


def check_controls():
    """Every control has a role and a name, and nothing that takes the focus is without one."""
    button = pyatspi.ROLE_PUSH_BUTTON
    assert is_enabled(await_element(button, "Open"))
    assert not is_enabled(await_element(button, "Refresh"))
    assert not is_enabled(await_element(button, "Update"))
    await_element(pyatspi.ROLE_TEXT, "Path of the update package")
    await_element(pyatspi.ROLE_PROGRESS_BAR, "Progress of the update")
    for name in ("Step 1 of 3: next", "Step 2 of 3: waiting", "Step 3 of 3: waiting", "Choose the update package"):
        await_element(pyatspi.ROLE_LABEL, name)
    for menu in ("File", "Edit", "Keyboard", "Help"):
        await_element(pyatspi.ROLE_MENU_ITEM, menu)
    for node in all_below(window(CAPTION)):
        if node.getState().contains(pyatspi.STATE_FOCUSABLE) and node.getRole() in (
                button, pyatspi.ROLE_TEXT, pyatspi.ROLE_PROGRESS_BAR):
            assert node.name, node


def open_package(path):
    focus(CAPTION)
    press("ctrl+o")
    focus("Open File")
    await_element(pyatspi.ROLE_LABEL, "Open the update file", "Open File")
    subprocess.run(["xdotool", "type", path], check=True)
    press("Return")
    await_element(pyatspi.ROLE_LABEL, CONNECTED)
    await_element(pyatspi.ROLE_LABEL, "V1")
    for name in ("Step 1 of 3: done", "Step 2 of 3: done", "Step 3 of 3: next"):
        await_element(pyatspi.ROLE_LABEL, name)


def run_update():
    focus(CAPTION)
    for name in ("Refresh", "Update"):
        press("Tab")
        eventually(lambda wanted=name: is_focused(element(pyatspi.ROLE_PUSH_BUTTON, wanted)), f"focus on {name}")
    events.clear()
    press("space")
    await_element(pyatspi.ROLE_LABEL, "Information", "Information")
    await_element(pyatspi.ROLE_LABEL, "Update completed, please use the TS30 power switch to restart the keyboard.",
                  "Information")


def check_progress_was_told():
    bar = element(pyatspi.ROLE_PROGRESS_BAR, "Progress of the update").queryValue()
    assert (bar.minimumValue, bar.currentValue, bar.maximumValue) == (0, 6, 6)
    eventually(lambda: [event for event in events if "accessible-value" in event[0]], "a change of the bar's value")
    eventually(lambda: [event for event in events if "accessible-name" in event[0] and "Step " in str(event)],
               "a change of the step's name")
    await_element(pyatspi.ROLE_LABEL, "Step 3 of 3: done")


def main():
    folder = tempfile.mkdtemp(prefix="hollin-test-")
    make_package(folder)
    for name in ("bus", "config", "runtime"):
        os.mkdir(f"{folder}/{name}", 0o700)
    pyatspi.Registry.registerEventListener(note, "object:property-change:accessible-name",
                                           "object:property-change:accessible-value")
    environment = dict(os.environ, LD_LIBRARY_PATH=STANDIN, TS30_SIMULATOR_DIR=f"{folder}/bus",
                       TS30_STANDIN_SKIP_PAUSES="1", XDG_CONFIG_HOME=f"{folder}/config", HOME=folder,
                       XDG_RUNTIME_DIR=f"{folder}/runtime", XDG_DATA_HOME=f"{folder}/data",
                       QT_QPA_PLATFORM="xcb", QT_LINUX_ACCESSIBILITY_ALWAYS_ON="1", LC_ALL="C.UTF-8")
    keyboard = subprocess.Popen([f"{BIN}/ts30-simulator", "--dir", f"{folder}/bus", "--option", "a1.size=1K"],
                                stdout=subprocess.PIPE, text=True)
    hollin = None
    try:
        assert "ready" in keyboard.stdout.readline()
        hollin = subprocess.Popen([f"{BIN}/hollin"], env=environment)
        eventually(lambda: window(CAPTION), "the window")
        check_controls()
        open_package(f"{folder}/sample.dat")
        run_update()
        check_progress_was_told()
        focus("Information")
        press("Return")
        eventually(lambda: not window("Information"), "the end of the alert")
        for name in ("Refresh", "Update", "Open"):
            eventually(lambda wanted=name: is_enabled(element(pyatspi.ROLE_PUSH_BUTTON, wanted)), f"{name} enabled")
        focus(CAPTION)
        press("ctrl+q")
        assert hollin.wait(TOO_LONG) == 0
        assert not os.path.exists("/tmp/TEMP1.INI")
    finally:
        for process in (hollin, keyboard):
            if process is not None and process.poll() is None:
                process.kill()
        subprocess.run(["rm", "-rf", folder], check=False)


main()
