# SPDX-License-Identifier: MIT
"""Reports that nobody asked for, old ones and late ones: a run ends by what it reads in place of its answers, and a run
behind it, whose open begins with an empty queue, succeeds."""
import os
import signal
import threading

from flashes import A1
from keyboard import Keyboard
from programs import ProgramTest, finish, held, is_stopped, make_package, start_update, update
from waiting import wait_until

SIZE = 64  # of a report
KEPT = 63  # reports that the kernel keeps for a program that does not read
STRAYS = KEPT + 1

# What the keyboard answers to an update of two blocks of A1, by report: 1 mode, 2 header, 3 and 4 the block's status
# bytes, 5 header, 6 and 7, 8 verify, 9 end. The program's commands: 1 mode, 2 and 3 headers, 4 verify, 5 end.
SECOND_HEADER = 5
BEHIND_THE_VERIFY = 9
BLOCK = 1024
ERASED = b"\xff"


def is_end(report):
    """What a report carries stands behind nine bytes of its own."""
    return report[9] == 0x09


class Listener:
    """Another program that has the keyboard's node open until that goes. Meanwhile the kernel fetches whatever the keyboard
    has to say, whether or not the program under test still listens."""

    def __init__(self, node):
        self.reports = []
        self.file = os.open(node, os.O_RDONLY)
        threading.Thread(target=self._listen, daemon=True).start()

    def _listen(self):
        try:
            while True:
                self.reports.append(os.read(self.file, SIZE))
        except OSError:
            os.close(self.file)

    def wait_for(self, count):
        wait_until(lambda: len(self.reports) >= count, f"{count} reports of the keyboard")

    def wait_for_end(self):
        """Behind its answer to the end command the keyboard has nothing to say."""
        wait_until(lambda: any(is_end(each) for each in self.reports), "the answer to the end command")


class UnreadQueue:
    """What the kernel keeps for a program that has the node open and does not read."""

    def __init__(self, node):
        self.file = os.open(node, os.O_RDONLY | os.O_NONBLOCK)

    def take(self):
        reports = []
        try:
            while True:
                reports.append(os.read(self.file, SIZE))
        except BlockingIOError:
            os.close(self.file)
        return reports


class StrayReportTest(ProgramTest):
    def plug_in(self, *faults):
        self.flash = A1(length=1500)
        self.package = make_package(self.flash)
        self.keyboard = Keyboard(flashes=[self.flash], faults=faults)
        self.addCleanup(self.keyboard.stop)
        self.listener = Listener(self.keyboard.node)

    def wait_until_keyboard_holds(self):
        self.addCleanup(self.keyboard.process.send_signal, signal.SIGCONT)
        wait_until(lambda: is_stopped(self.keyboard.process), "the keyboard to hold")

    def assert_flash_begins(self, beginning):
        """With these bytes; all others are as they were."""
        self.assertTrue(self.keyboard.contents(self.flash) == beginning + self.flash.before[len(beginning):],
                        "the flash is not as this run must leave it")

    def assert_second_block_is_erased(self):
        image = self.flash.image
        self.assert_flash_begins(image[:BLOCK] + ERASED * (len(image) - BLOCK))

    def assert_succeeds(self):
        self.assert_succeeded(update(self.package))
        self.assert_written(self.keyboard, self.flash)
        self.assert_no_temporary_files()

    def assert_told(self, ends):
        """The end codes of all runs; and the faults have struck, or nothing was tried."""
        self.keyboard.wait_for("command 09", len(ends))
        told = [text.split()[2] for _, text in self.keyboard.lines if text.startswith("command 09")]
        self.assertEqual(told, ends)
        self.assertNotEqual(self.keyboard.said("fault"), [])

    def test_a_stale_report_before_an_answer(self):
        self.plug_in(f"stale@r{SECOND_HEADER}")
        self.assert_failed(update(self.package))
        self.listener.wait_for_end()
        self.assert_second_block_is_erased()
        self.assert_succeeds()
        self.assert_told(["01", "00"])

    # The program does not run while they arrive, so that its own queue overflows and the answer is lost.
    def test_more_unsolicited_reports_than_are_kept(self):
        self.plug_in("hold@c3", f"unsolicited={STRAYS}@r{SECOND_HEADER}")
        program = start_update(self.package)
        self.wait_until_keyboard_holds()
        unread = UnreadQueue(self.keyboard.node)
        with held(program):
            self.keyboard.process.send_signal(signal.SIGCONT)
            self.listener.wait_for(SECOND_HEADER + STRAYS)
        arrived = self.listener.reports[SECOND_HEADER - 1:SECOND_HEADER + STRAYS]
        self.assertNotEqual(arrived[-1], arrived[-2])  # the answer, and the last stray report
        self.assertEqual(unread.take(), arrived[:KEPT])
        self.assert_failed(finish(program))
        self.listener.wait_for_end()
        self.assert_second_block_is_erased()
        self.assert_succeeds()
        self.assert_told(["01", "00"])

    # Deliberate: all is written and verified by then, so the update counts as done.
    def test_more_than_are_kept_before_the_last_answer(self):
        self.plug_in(f"unsolicited={STRAYS}@r{BEHIND_THE_VERIFY}")
        self.assert_succeeds()
        self.listener.wait_for_end()
        self.assertEqual(len(self.listener.reports), BEHIND_THE_VERIFY + STRAYS)
        self.assert_succeeds()
        self.assert_told(["00", "00"])

    def test_a_late_answer_that_comes_with_the_next(self):
        self.plug_in("late@r3")
        self.assert_succeeds()
        self.listener.wait_for_end()
        self.assert_succeeds()
        self.assert_told(["00", "00"])

    def test_a_late_answer_to_a_program_that_is_gone(self):
        self.plug_in("hold@c3")
        program = start_update(self.package)
        self.wait_until_keyboard_holds()
        program.kill()
        finish(program)
        self.keyboard.process.send_signal(signal.SIGCONT)
        self.listener.wait_for(SECOND_HEADER)
        self.assert_second_block_is_erased()
        self.assert_succeeds()
        self.assert_told(["00"])

    # The keyboard still has it to say when the next program opens it, which gets it for its own first command.
    def test_a_late_answer_that_meets_the_next_run(self):
        self.plug_in(f"late@r{SECOND_HEADER}")
        program = start_update(self.package)
        self.keyboard.wait_for("command 07", 2)
        program.kill()
        finish(program)
        self.assert_second_block_is_erased()
        self.assert_failed(update(self.package))
        self.listener.wait_for_end()
        self.assert_flash_begins(ERASED * len(self.flash.image))
        self.assert_succeeds()
        self.assert_told(["01", "00"])
