#!/usr/bin/env python3
"""The command is red where flushes do nothing, as its first argument sees to."""

import os
import subprocess
import sys
import unittest
from pathlib import Path

COMMAND = Path(__file__).resolve().parents[1] / "power-cut"


class Notices(unittest.TestCase):
    def test_what_a_cut_takes_when_nothing_is_flushed(self):
        run = subprocess.run([sys.executable, COMMAND, "--short", "--build", BUILD, "ext4"],
                             env=os.environ | {"LD_PRELOAD": WITHOUT_FLUSHES}, text=True,
                             stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                             stderr=subprocess.STDOUT, check=False)
        print(run.stdout)
        if run.returncode == 77:
            self.skipTest("it cannot be tried here")
        self.assertEqual(run.returncode, 1)
        broken = run.stdout.split("Not as promised:")[1]
        for file_format in ("WAV", "M4A"):
            for moment in ("4 s", "8 s", "stop returns"):
                self.assertRegex(broken, rf"ext4, {file_format}, {moment}: ")


if __name__ == "__main__":
    WITHOUT_FLUSHES, BUILD = sys.argv[1:]
    result = unittest.main(argv=sys.argv[:1], exit=False).result
    sys.exit(77 if result.skipped else not result.wasSuccessful())
