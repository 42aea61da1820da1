#!/usr/bin/env python3
"""tests/endurance on a repository of a few files, with a suite that only says what it was told."""

import pathlib
import re
import shutil
import subprocess
import unittest
from linux_scripts_test import ROOT, ScratchTest, call

FOLDERS = ("app", "cli", "cmake", "discovery", "engine", "model", "platform", "ui")
FAILED = '<testcase name="red_test" time="1" status="fail">'


class EnduranceTest(ScratchTest):
    def setUp(self):
        super().setUp()
        self.copy = self.scratch / "copy"
        for name in ("tests/endurance", "packaging/linux/supervise.sh", "docs/endurance.md"):
            (self.copy / name).parent.mkdir(parents=True, exist_ok=True)
            shutil.copy(ROOT / name, self.copy / name)
        results = self.copy / "docs/endurance.md"
        results.write_text(re.sub(r"^\| suite .*\n", "", results.read_text(), flags=re.M))
        (self.copy / "CMakeLists.txt").write_text("")
        for folder in FOLDERS:
            (self.copy / folder).mkdir()
            (self.copy / folder / "Code.cpp").write_text(folder)
        (self.copy / "build/release").mkdir(parents=True)
        self.git("init", "--quiet")
        self.commit()
        self.tool("cmake", "exit 0")
        self.suite("exit 0")

    def git(self, *arguments):
        subprocess.run(["git", "-c", "user.name=x", "-c", "user.email=x@example.invalid", *arguments],
                       cwd=self.copy, check=True, capture_output=True)

    def commit(self):
        self.git("add", ".")
        self.git("commit", "--quiet", "-m", "x")

    def suite(self, commands):
        self.tool("ctest", commands)

    def endurance(self, *arguments):
        return call([str(self.copy / "tests/endurance"), *arguments], env=self.environment())

    def outcomes(self):
        rows = re.findall(r"^\| suite \|(.*)\|$", (self.copy / "docs/endurance.md").read_text(), re.M)
        return [row.split("|")[4].strip() for row in rows]

    def test_it_makes_the_runs_that_are_missing(self):
        self.assertEqual(self.endurance("suite", "--runs", "2").returncode, 0)
        self.assertEqual(self.outcomes(), ["good"] * 2)
        result = self.endurance("suite", "--runs", "3")
        self.assertEqual(self.outcomes(), ["good"] * 3)
        self.assertIn("3 of 3 good", result.stdout)

    def test_other_code_begins_again_and_other_tests_do_not(self):
        self.endurance("suite", "--runs", "1")
        (self.copy / "tests/Test.cpp").write_text("x")
        self.commit()
        self.endurance("suite", "--runs", "1")
        self.assertEqual(self.outcomes(), ["good"])
        (self.copy / "engine/Code.cpp").write_text("x")
        self.assertIn("commit it first", self.endurance("suite").stdout)
        self.commit()
        self.endurance("suite", "--runs", "1")
        self.assertEqual(self.outcomes(), ["good"] * 2)

    def test_a_failure_is_named_and_stays(self):
        self.suite(f"""for last; do :; done; echo '{FAILED}' >"$last"; exit 8""")
        self.assertEqual(self.endurance("suite", "--runs", "1").returncode, 1)
        self.assertEqual(self.outcomes(), ["failed: red_test"])
        self.suite("exit 0")
        result = self.endurance("suite", "--runs", "2")
        self.assertEqual((result.returncode, self.outcomes()[1:]), (1, ["good"]))
        self.assertIn("1 of 2 good", result.stdout)

    def test_the_suite_runs_beside_twice_as_many_loops_as_cores_and_they_end(self):
        self.tool("nproc", "echo 2")
        self.suite('ps -o pid= --ppid "$PPID" >"$OLDPWD/beside"'.replace("$OLDPWD", str(self.scratch)))
        self.assertEqual(self.endurance("suite", "--runs", "1").returncode, 0)
        beside = (self.scratch / "beside").read_text().split()
        self.assertEqual(len(beside), 4 + 1, "and the suite itself")
        for pid in beside:
            self.assertFalse(pathlib.Path("/proc", pid).exists())

    def test_what_it_does_not_know_is_refused(self):
        for arguments in ((), ("day",), ("suite", "3"), ("suite", "--runs"), ("suite", "--runs", "0")):
            with self.subTest(arguments):
                self.assertEqual(self.endurance(*arguments).returncode, 2)
        self.assertEqual(self.outcomes(), [])


if __name__ == "__main__":
    unittest.main()
