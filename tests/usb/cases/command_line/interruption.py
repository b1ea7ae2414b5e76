# SPDX-License-Identifier: MIT
"""The command line is ended, stopped and disturbed in the middle of an update: the next run works."""
import signal
import time

from flashes import A1
from keyboard import Keyboard
from programs import (ADVICE_NOT_TO_STOP, ProgramTest, finish, held, make_package, probe, start_update,
                      temporary_files, update)
from storm import Storm, ignore_signals

INTERRUPTED = 130


class InterruptionTest(ProgramTest):
    def setUp(self):
        self.flash = A1()
        self.package = make_package(self.flash)
        self.keyboard = Keyboard(flashes=[self.flash])
        self.addCleanup(self.keyboard.stop)

    def start(self, **how):
        """An update that is in its first block."""
        program = start_update(self.package, **how)
        self.keyboard.wait_for("command 07")
        return program

    def check_next_run(self):
        self.assert_succeeded(update(self.package))
        self.assert_written(self.keyboard, self.flash)
        self.assert_no_temporary_files()

    def test_killed(self):
        program = self.start()
        program.kill()
        finish(program)
        self.assertNotEqual(temporary_files(), [])  # nobody could remove them
        self.check_next_run()

    def test_asked_to_end(self):
        program = self.start()
        start = time.monotonic()
        program.terminate()
        code, _ = finish(program)
        print(f"gone in {time.monotonic() - start:.2f} s ... ", end="")
        self.assertEqual(code, INTERRUPTED)
        self.assertEqual(self.keyboard.said("command 09 00"), [])
        self.assert_no_temporary_files()
        self.check_next_run()

    def test_interrupted_twice_it_ends_behind_its_step(self):
        program = self.start()
        program.send_signal(signal.SIGINT)
        program.wait_for_output(ADVICE_NOT_TO_STOP)
        program.send_signal(signal.SIGINT)
        code, output = finish(program)
        self.assertEqual(code, INTERRUPTED, output)
        self.assertEqual(len(self.keyboard.said("command 09 01")), 1)
        self.check_next_run()

    def test_stopped_and_continued_it_succeeds(self):
        program = self.start()
        with held(program):
            self.assertEqual(probe("count"), "1")
        self.assert_succeeded(finish(program))
        self.assert_written(self.keyboard, self.flash)

    def test_in_a_storm_of_signals_it_succeeds(self):
        program = start_update(self.package, preexec_fn=ignore_signals)
        with Storm(program) as storm:
            result = finish(program)
        print(f"{storm.signals} signals ... ", end="")
        self.assert_succeeded(result)
        self.assert_written(self.keyboard, self.flash)
