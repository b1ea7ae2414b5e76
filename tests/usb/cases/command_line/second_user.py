# SPDX-License-Identifier: MIT
"""Another user prepares or swaps the temporary files, with and without what the kernel does against that by itself."""
import pathlib
import subprocess
import unittest

TESTS = "/opt/hollin/hollin_faults_tests"
CASES = "*PreparedFilesTest.InAFolderAsTmp*/1:*SwapRaceTest.*/Stranger"
PROTECTIONS = ("fifos", "hardlinks", "regular", "symlinks")


class SecondUserTest(unittest.TestCase):
    def check(self, value):
        for name in PROTECTIONS:
            pathlib.Path(f"/proc/sys/fs/protected_{name}").write_text(f"{value}\n", encoding="ascii")
        ended = subprocess.run([TESTS, f"--gtest_filter={CASES}"], stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                               text=True, check=False)
        seen = [line for line in ended.stdout.splitlines() if line.startswith("protected_")]
        print("\n".join(seen))
        self.assertEqual(ended.returncode, 0, ended.stdout)
        self.assertEqual(len(seen), 2)
        for line in seen:
            for name in PROTECTIONS:
                self.assertIn(f"protected_{name}={value} ", line)

    def test_nobody_is_harmed_with_the_kernels_protections(self):
        self.check(1)

    def test_nobody_is_harmed_without_them(self):
        self.check(0)
