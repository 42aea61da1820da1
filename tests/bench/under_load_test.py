"""What bench/under-load takes for recorded already."""

import importlib.machinery
import importlib.util
import pathlib
import sys
import tempfile
import unittest

BENCH = pathlib.Path(__file__).resolve().parent.parent.parent / "bench"
sys.dont_write_bytecode = True
sys.path.insert(0, str(BENCH))
loader = importlib.machinery.SourceFileLoader("under_load", str(BENCH / "under-load"))
under_load = importlib.util.module_from_spec(importlib.util.spec_from_loader("under_load", loader))
loader.exec_module(under_load)


class UnderLoadTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.results = pathlib.Path(folder.name) / "results.md"

    def test_nothing_is_recorded_where_there_are_no_results(self):
        self.assertEqual(under_load.recorded_seconds(self.results, "root", "abc"), 0)

    def test_pieces_of_the_same_code_and_scheduling_count(self):
        self.results.write_text(under_load.HEADER + "".join(
            f"| {scheduling} | 2026-01-01 00:00 | {code} | {seconds} | none | 0 (0) | 0 | 0 |\n"
            for scheduling, code, seconds in (("root", "abc", 120), ("none", "abc", 60),
                                              ("root", "def", 30), ("root", "abc", 15))))
        self.assertEqual(under_load.recorded_seconds(self.results, "root", "abc"), 135)



if __name__ == "__main__":
    unittest.main()
