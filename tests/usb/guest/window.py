# SPDX-License-Identifier: MIT
"""Drives the window as a screen reader would: on a display without hardware, through the accessibility bus."""
import contextlib
import os
import pathlib
import subprocess
import tempfile
import time

from storm import ignore_signals
import waiting
from waiting import LONG

PROGRAM = "/opt/hollin/Hollin.app/hollin"


BUSES = ("/usr/share/dbus-1/session.conf", "/usr/share/defaults/at-spi2/accessibility.conf")


BUS_FOLDER = pathlib.Path("/run/buses")


def open_buses():
    """Lets the windows of all users onto the buses of this one. What it changes goes with the virtual machine."""
    for each in BUSES:
        file = pathlib.Path(each)
        text = file.read_text(encoding="utf-8")
        file.write_text(text.replace('<policy context="default">', '<policy context="default"><allow user="*"/>'),
                        encoding="utf-8")
    sockets = BUS_FOLDER / "at-spi"
    sockets.mkdir(parents=True)
    sockets.chmod(0o711)


def start_display():
    """A display and a session bus, which end with the virtual machine."""
    read_end, write_end = os.pipe()
    subprocess.Popen(["Xvfb", "-displayfd", str(write_end), "-screen", "0", "1024x768x24", "-nolisten", "tcp",
                      "-ac"], pass_fds=[write_end], stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    os.close(write_end)
    with os.fdopen(read_end) as number:
        os.environ["DISPLAY"] = ":" + number.readline().strip()
    bus = subprocess.run(["dbus-daemon", "--session", "--fork", "--print-address"], stdout=subprocess.PIPE, text=True,
                         check=True, timeout=LONG, env={**os.environ, "XDG_RUNTIME_DIR": str(BUS_FOLDER)})
    os.environ["DBUS_SESSION_BUS_ADDRESS"] = bus.stdout.strip()
    # The accessibility bus begins when it is asked for; others ask with less patience.
    subprocess.run(["dbus-send", "--session", "--print-reply", f"--reply-timeout={1000 * LONG}", "--dest=org.a11y.Bus",
                    "/org/a11y/bus", "org.a11y.Bus.GetAddress"], check=True, stdout=subprocess.DEVNULL)
    os.environ["QT_LINUX_ACCESSIBILITY_ALWAYS_ON"] = "1"
    os.environ["QT_QPA_PLATFORM"] = "xcb"
    os.environ["XDG_RUNTIME_DIR"] = "/run/user/0"
    os.makedirs("/run/user/0", mode=0o700, exist_ok=True)


open_buses()
start_display()

import gi  # noqa: E402  (the bus is chosen when it is loaded)

gi.require_version("Atspi", "2.0")
from gi.repository import Atspi, GLib  # noqa: E402

Atspi.init()
Atspi.set_timeout(1000 * LONG, 1000 * LONG)  # what is slow here is the emulation, not the program


def wait_until(condition, what):
    """Asking through the bus keeps the program busy, so not too often."""
    return waiting.wait_until(condition, what, interval=0.2)


DIALOGS = (Atspi.Role.ALERT, Atspi.Role.DIALOG, Atspi.Role.FILE_CHOOSER)
LISTS = (Atspi.Role.LIST, Atspi.Role.TREE, Atspi.Role.TREE_TABLE, Atspi.Role.TABLE)


def children(node):
    return [node.get_child_at_index(i) for i in range(node.get_child_count())]


def all_below(node):
    """The node and what lies in it, but not the items of lists: asking takes time."""
    if node is None:
        return
    yield node
    if node.get_role() in LISTS:
        return
    for child in children(node):
        yield from all_below(child)


def find(node, role, name):
    for each in all_below(node):
        if each.get_role() == role and each.get_name() == name:
            return each
    raise AssertionError(f"there is no {role.value_nick} '{name}'")


def texts(nodes):
    for node in nodes:
        node.clear_cache()
    return [node.get_name() for node in nodes]


def ordinary(user):
    """How the window is started by an ordinary user, on the same display."""
    environment = {name: value for name, value in os.environ.items() if name != "XDG_RUNTIME_DIR"}
    environment["HOME"] = tempfile.mkdtemp(prefix="home-")
    os.chown(environment["HOME"], user, user)
    return {"user": user, "group": user, "extra_groups": [], "env": environment}


def answer(question):
    """The answer; none while what is asked about comes or goes."""
    try:
        return question()
    except GLib.Error:
        return None


class Window:
    """The program, until it ends or is ended; with a package or without."""

    def __init__(self, package=None, ignoring_signals=False, user=None):
        self.package = package  # the one that was opened last
        self.process = subprocess.Popen([PROGRAM, *([package] if package else [])], stdin=subprocess.DEVNULL,
                                        stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL,
                                        preexec_fn=ignore_signals if ignoring_signals else None,
                                        **(ordinary(user) if user else {}))
        self.application = wait_until(self._find_application, "the program to reach the accessibility bus")
        self.main = wait_until(lambda: next(iter(self._top_levels()), None), "the window")
        parts = list(all_below(self.main))
        self.labels = [part for part in parts if part.get_role() == Atspi.Role.LABEL]
        self.buttons = {part.get_name(): part for part in parts if part.get_role() == Atspi.Role.PUSH_BUTTON}

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.end()

    def end(self):
        """Asks it to end, so that it leaves no temporary files, which would keep every other user's window from opening
        a package."""
        if self.process.poll() is None:
            self.process.terminate()
        try:
            self.process.wait(LONG)
        except subprocess.TimeoutExpired:
            self.process.kill()
            self.process.wait(LONG)
            raise

    def _find_application(self):
        if self.process.poll() is not None:
            raise AssertionError(f"the program ended with {self.process.returncode}")
        for node in answer(lambda: children(Atspi.get_desktop(0))) or []:
            if node is not None and answer(node.get_process_id) == self.process.pid:
                return node
        return None

    def _top_levels(self):
        self.application.clear_cache()
        return [node for node in answer(lambda: children(self.application)) or [] if node is not None]

    def _dialog(self):
        """An alert or the open panel; none when there is neither. The program's windows come in no certain order."""
        return next((node for node in self._top_levels() if answer(node.get_role) in DIALOGS), None)

    def is_enabled(self, name):
        self.buttons[name].clear_cache()
        return self.buttons[name].get_state_set().contains(Atspi.StateType.ENABLED)

    def wait_until_enabled(self, name):
        wait_until(lambda: self.is_enabled(name), f"the button {name}")

    def press(self, name):
        self.wait_until_enabled(name)
        self.buttons[name].get_action_iface().do_action(0)

    def open(self, package):
        """Types the package's path into the open panel."""
        self.press("Open")
        wait_until(self._dialog, "the open panel")
        waiting.wait_until(lambda: self._choose(package), "the open panel to go", interval=2)
        self.package = package

    def _choose(self, package):
        """Whether the open panel is gone; else it is told what to open. One that is still being built, or already going,
        may not heed it, so it is looked for anew each time."""
        panel = self._dialog()
        if panel is None:
            return True
        if answer(panel.get_role) == Atspi.Role.ALERT:
            raise AssertionError(f"instead of opening {package}, the window says {texts(list(all_below(panel)))}")
        try:
            find(panel, Atspi.Role.TEXT, "File name:").get_editable_text_iface().set_text_contents(package)
            find(panel, Atspi.Role.PUSH_BUTTON, "Open").get_action_iface().do_action(0)
        except (AssertionError, GLib.Error):
            pass
        return False

    def wait_for_status(self, text):
        """Until the window shows the text somewhere."""
        wait_until(lambda: text in texts(self.labels), f"the window to show '{text}'")

    def wait_for_alert(self):
        """The texts of the alert, which is left open."""
        alert = wait_until(self._dialog, "an alert")
        return wait_until(lambda: answer(lambda: texts(list(all_below(alert)))), "the alert's texts")

    def dismiss_alert(self):
        find(self._dialog(), Atspi.Role.PUSH_BUTTON, "OK").get_action_iface().do_action(0)
        wait_until(lambda: self._dialog() is None, "the alert to go")

    def update(self):
        """Presses Update; the texts of the final alert, which is dismissed."""
        self.press("Update")
        shown = self.wait_for_alert()
        self.dismiss_alert()
        return shown

    def quit(self, number):
        """Sends the signal; how long the program took to be gone."""
        start = time.monotonic()
        self.process.send_signal(number)
        self.process.wait(LONG)
        return time.monotonic() - start


shared = []  # the window that waits for the next case, if there is one


@contextlib.contextmanager
def shared_window():
    """Starting a window takes long in here, so one serves many cases, whatever their groups, until a case fails."""
    window = shared.pop() if shared else Window()
    try:
        yield window
    except BaseException:
        window.end()
        raise
    shared.append(window)


def end_shared_window():
    """Only one Hollin runs at a time."""
    while shared:
        shared.pop().end()
