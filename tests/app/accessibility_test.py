# SPDX-License-Identifier: MIT
"""Goes through a whole update by the keyboard alone, and looks at the running program as a screen reader does.

accessibility_test.py BIN STANDIN: the folder of the programs, and that of the stand-in for hidapi. Wants a session bus
of its own, on which the accessibility bus is started.
"""
import os
import signal
import subprocess
import sys
import tempfile
import time

import pyatspi
from gi.repository import GLib

CAPTION = "Varnholt TS30 Firmware Update V2.0.0"
CONNECTED = 'The TS30 is connected. Please press the "Update" button now.'
NOT_CONNECTED = ('The TS30 is not connected. Please hold down the "Shift" \r\n buttons while powering on the TS30.')
TOO_LONG = 60  # seconds

# All that stands in the window before a package was opened, by role and name. Two texts are still empty; a field
# without a text has the name of its caption.
CONTROLS = [
    ("frame", CAPTION),
    ("label", "Update your TS30"),
    ("label", "Three steps. Leave the keyboard connected and switched on until the last one is done."),
    ("image", "Drawing of a keyboard"),
    ("label", "Step 1 of 3: next"),
    ("label", "Choose the update package"),
    ("push button", "Open"),
    ("text", "Path of the update package"),
    ("label", "Product model"), ("label", "Product model"),
    ("label", "Firmware version"), ("label", "Firmware version"),
    ("label", "Step 2 of 3: waiting"),
    ("label", "Connect the keyboard"),
    ("push button", "Refresh"),
    ("label", ""),
    ("label", "Step 3 of 3: waiting"),
    ("label", "Update the keyboard"),
    ("push button", "Update"),
    ("progress bar", "Progress of the update"),
    ("label", ""),
    ("menu bar", ""),
    ("menu item", "File"), ("menu item", "Edit"), ("menu item", "Keyboard"), ("menu item", "Help"),
]

HINTS = ["Press Open, or drop an update package here.",
         "Comes after the package, which says how to switch the keyboard on."]

BIN, STANDIN = sys.argv[1:3]
events = []


def note(event):
    try:
        events.append((event.type, event.source.getRoleName(), event.source.name, event.any_data))
    except GLib.Error:  # it is gone already
        pass


def eventually(find, what, patience=TOO_LONG):
    """What `find` gives as soon as that is something; the bus is served meanwhile."""
    end = time.monotonic() + patience
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
    """The node and what lies in it; nothing where there is none (yet)."""
    if node is None:
        return
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
    # The server gives the focus before the program knows of it.
    eventually(lambda: any(is_focused(node) for node in all_below(window(title))), f"something with the focus in {title}")


def make_package(folder):
    with open(f"{folder}/flash.ini", "w", encoding="utf-8") as description:
        description.write("[Chip Info]\nChip Size=1K\n[Transmission Info]\nData Length=256\n")
    with open(f"{folder}/image.bin", "wb") as image:
        image.write(bytes(range(250)) * 4)
    subprocess.run([f"{BIN}/hollin-cli", "pack", "--model", "TS30", "--firmware-version", "V1", "--key", "Shift",
                    "--pack", f"A1:{folder}/flash.ini:{folder}/image.bin", "-o", f"{folder}/sample.dat"], check=True)


def check_controls():
    """Every control has its role and its name, and those that come next can be used."""
    eventually(lambda: element(pyatspi.ROLE_MENU_ITEM, "Help"), "the whole window")
    seen = [(node.getRoleName(), node.name) for node in all_below(window(CAPTION)) if showing(node)]
    controls = [control for control in seen if control != ("filler", "")]
    assert controls == CONTROLS, controls
    hints = [node.description for node in all_below(window(CAPTION)) if showing(node)]
    for hint in HINTS:
        assert hint in hints, hints
    button = pyatspi.ROLE_PUSH_BUTTON
    assert is_enabled(await_element(button, "Open"))
    assert not is_enabled(await_element(button, "Refresh"))
    assert not is_enabled(await_element(button, "Update"))


def menu_items():
    """The items of the menu that is open, each a name and whether it can be used."""
    menus = [node for node in all_below(window(CAPTION)) if node.getRoleName() == "popup menu" and showing(node)]
    return [(item.name, is_enabled(item)) for item in menus[0] if item.getRoleName() == "menu item"] if menus else []


def await_menu(*items, patience=TOO_LONG):
    """Until the menu that is open begins with these items."""
    eventually(lambda: menu_items()[:len(items)] == list(items), f"a menu of {items}", patience)


def open_menu(key, *items):
    """News of the focus that comes late closes a menu that is up by then: it is opened again."""
    for _ in range(10):
        press(key)
        try:
            return await_menu(*items, patience=TOO_LONG / 10)
        except AssertionError:
            press("Escape")
    return await_menu(*items)


def use_menus():
    """From menu to menu by the arrows, and into the About box and out of it."""
    focus(CAPTION)
    open_menu("alt+f", ("Open", True), ("Save", True), ("Quit", True))
    press("Right")
    await_menu(("Undo", False), ("Redo", False))
    press("Right")
    await_menu(("Refresh", False), ("Update", False))
    press("Right")
    await_menu(("About", True))
    press("Return")
    await_element(pyatspi.ROLE_LABEL, "Licences", "About Hollin")
    await_element(pyatspi.ROLE_PUSH_BUTTON, "Close", "About Hollin")
    focus("About Hollin")
    press("Escape")
    eventually(lambda: not window("About Hollin"), "the end of the About box")


def was_told(kind, role, name):
    return any(kind in event[0] and event[1:3] == (role, name) for event in events)


def await_told(kind, role, name):
    eventually(lambda: was_told(kind, role, name), f"news of the {role} {name}")


def open_package(path):
    focus(CAPTION)
    press("ctrl+o")
    focus("Open File")
    await_element(pyatspi.ROLE_LABEL, "Open the update file", "Open File")
    subprocess.run(["xdotool", "type", path], check=True)
    events.clear()
    press("Return")
    for name in ("TS30", "V1", CONNECTED):
        await_told("accessible-name", "label", name)
    await_told("text-changed:insert", "text", "Path of the update package")
    for name in ("Refresh", "Update"):
        await_told("state-changed:enabled", "push button", name)
    await_element(pyatspi.ROLE_LABEL, CONNECTED)
    await_element(pyatspi.ROLE_LABEL, "V1")
    for name in ("Step 1 of 3: done", "Step 2 of 3: done", "Step 3 of 3: next"):
        await_element(pyatspi.ROLE_LABEL, name)


def refresh_by_menu():
    open_menu("alt+k", ("Refresh", True))
    press("Return")


def unplug_and_plug(keyboard):
    """Each change of the status is told, whether F5 or the menu has asked for it."""
    focus(CAPTION)
    events.clear()
    keyboard.send_signal(signal.SIGUSR1)
    eventually(lambda: press("F5") or was_told("accessible-name", "label", NOT_CONNECTED), "news of the unplugging")
    events.clear()
    keyboard.send_signal(signal.SIGUSR2)
    eventually(lambda: refresh_by_menu() or was_told("accessible-name", "label", CONNECTED), "news of the plugging")


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
    eventually(lambda: len([event for event in events if "accessible-value" in event[0]]) >= 6, "each step of the bar")
    assert {event[1:3] for event in events if "accessible-value" in event[0]} == {
        ("progress bar", "Progress of the update")}
    await_told("accessible-name", "label", "Step 3 of 3: done")
    eventually(lambda: [event for event in events if "accessible-name" in event[0] and "Completed in " in event[2]],
               "news of the line below the bar")
    for name in ("Refresh", "Update", "Open"):
        await_told("state-changed:enabled", "push button", name)
    await_element(pyatspi.ROLE_LABEL, "Step 3 of 3: done")


def main():
    folder = tempfile.mkdtemp(prefix="hollin-test-")
    make_package(folder)
    for name in ("bus", "config", "runtime"):
        os.mkdir(f"{folder}/{name}", 0o700)
    pyatspi.Registry.registerEventListener(note, "object:property-change:accessible-name",
                                           "object:property-change:accessible-value", "object:state-changed:enabled",
                                           "object:text-changed:insert")
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
        use_menus()
        open_package(f"{folder}/sample.dat")
        unplug_and_plug(keyboard)
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
