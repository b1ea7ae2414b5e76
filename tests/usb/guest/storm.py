# SPDX-License-Identifier: MIT
"""A storm of signals on a program. It ignores those that would end it from its start, as a shell's job does."""
import signal
import threading
import time

from waiting import LONG

HARMLESS = [signal.SIGCHLD, signal.SIGWINCH, signal.SIGURG, signal.SIGCONT]
IGNORED = [signal.SIGALRM, signal.SIGUSR1, signal.SIGUSR2]


def ignore_signals():
    """To be run in a new process before its program."""
    for number in IGNORED:
        signal.signal(number, signal.SIG_IGN)


class Storm:
    """Blows as long as its block runs; stops the program for a moment each time, too."""

    def __init__(self, process):
        self.process = process
        self.signals = 0
        self.over = threading.Event()
        self.thread = threading.Thread(target=self._blow, daemon=True)

    def __enter__(self):
        self.thread.start()
        return self

    def __exit__(self, *_):
        self.over.set()
        self.thread.join(LONG)

    def _blow(self):
        while not self.over.is_set() and self.process.poll() is None:
            for number in [*HARMLESS, *IGNORED, signal.SIGSTOP, signal.SIGCONT]:
                self.process.send_signal(number)
                self.signals += 1
            time.sleep(0.02)
