#!/usr/bin/env python3
"""How ./run and ./test build: beside tools that only write down how they are called, where
warnings are errors, and what the README says of them."""

import os
import re
import shutil
import subprocess
import tempfile
import unittest
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
DEBIAN_12 = 'ID=debian\nVERSION_ID="12"\n'
DEBIAN_13 = 'ID=debian\nVERSION_ID="13"\n'
MISSING = ("Missing, or too old:\n{}"
           "Install it and try again; docs/distributions.md names packages of other systems.\n")


def call(command, **options):
    return subprocess.run(command, text=True, stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                          stdin=subprocess.DEVNULL, check=False, **options)


class ScratchTest(unittest.TestCase):
    def setUp(self):
        scratch = tempfile.TemporaryDirectory()
        self.addCleanup(scratch.cleanup)
        self.scratch = Path(scratch.name)
        self.tools = self.scratch / "tools"
        self.tools.mkdir()

    def tool(self, name, commands, folder=None):
        path = (folder or self.tools) / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text(f"#!/bin/sh\n{commands}\n", encoding="utf-8")
        path.chmod(0o755)

    def compilers(self, gcc, clang):
        self.tool("g++", f"echo '{gcc}'")
        self.tool("clang++", f"echo {clang}")

    def environment(self):
        variables = {name: value for name, value in os.environ.items()
                     if name not in ("DISPLAY", "WAYLAND_DISPLAY")}
        return {**variables, "PATH": f"{self.tools}:{os.environ['PATH']}"}


class ProvenSystemsTest(ScratchTest):
    def is_proven(self, release, gcc, clang):
        self.compilers(gcc, clang)
        (self.scratch / "os-release").write_text(release, encoding="utf-8")
        script = f'source "{ROOT}/packaging/linux/packages.sh"\n' \
                 f'system=$(thisSystem "{self.scratch}/os-release")\n' \
                 'echo "$system"; isProven "$system"'
        result = call(["bash", "-euc", script], env=self.environment())
        self.assertIn(result.returncode, (0, 1), result.stdout)
        return result.stdout.strip(), result.returncode == 0

    def test_a_system_is_its_release_and_its_compilers(self):
        self.assertEqual(self.is_proven(DEBIAN_12, "12", "14.0.6"),
                         ("debian 12, g++ 12, clang 14", True))
        self.assertEqual(self.is_proven(DEBIAN_13, "14", "19.1.7"),
                         ("debian 13, g++ 14, clang 19", True))

    def test_another_release_or_compiler_is_not_proven(self):
        for release, gcc, clang, name in (
                (DEBIAN_12, "13", "14.0.6", "debian 12, g++ 13, clang 14"),
                (DEBIAN_12, "12", "19.1.7", "debian 12, g++ 12, clang 19"),
                (DEBIAN_13, "12", "19.1.7", "debian 13, g++ 12, clang 19"),
                ("ID=ubuntu\nVERSION_ID=12\n", "12", "14.0.6", "ubuntu 12, g++ 12, clang 14"),
                ("ID=debian\n", "12", "14.0.6", "debian , g++ 12, clang 14")):
            with self.subTest(name):
                self.assertEqual(self.is_proven(release, gcc, clang), (name, False))


class CopyTest(ScratchTest):
    """A copy of the scripts alone, where everything is there that they ask for."""

    def setUp(self):
        super().setUp()
        self.calls = self.scratch / "calls"
        self.calls.touch()
        self.copy = self.scratch / "copy"
        shutil.copytree(ROOT / "packaging" / "linux", self.copy / "packaging" / "linux")
        for script in ("run", "test"):
            shutil.copy(ROOT / script, self.copy / script)
        for program in ("build/run/audrel", "build/run/audrel-record", "tests/panel/show-menu"):
            self.tool(Path(program).name, "exit 0", self.copy / Path(program).parent)
        self.compilers("g++ (Name) 12.1.0", "14.0.6")
        self.make_cmake("3.25.0")
        for name in ("ninja", "pkg-config", "pipewire", "ffmpeg", "ffprobe", "Xvfb", "dbus-daemon",
                     "xfce4-panel", "xdotool", "gdbus"):
            self.tool(name, "exit 0")

    def make_cmake(self, version):
        self.tool("cmake", f"""[ "$1" != --version ] || exec echo "cmake version {version}"
printf '%s\\n' "$*" >>"{self.calls}" """)

    def run_command(self, *words):
        result = call([self.copy / words[0], *words[1:]], env=self.environment())
        return result, self.calls.read_text(encoding="utf-8").splitlines()


class CommandsTest(CopyTest):
    """Where every package is installed."""

    def setUp(self):
        super().setUp()
        self.tool("dpkg-query", "printf 'install ok installed'")
        for name in ("ctest", "clang-format-19", "mandoc", "desktop-file-validate",
                     "appstreamcli", "xmllint", "rsvg-convert"):
            self.tool(name, "exit 0")
        self.tool("fetch-libcxx", "exit 0", self.copy / "tests/macos")

    def test_everywhere_else_the_tests_are_built_with_warnings_that_stop_nobody(self):
        self.compilers("99", "99")
        _, calls = self.run_command("test")
        configured = [line for line in calls if line.startswith("--preset")]
        self.assertEqual([line.split()[1] for line in configured],
                         ["release", "asan", "tsan", "macos", "macos-tsan", "lint"])
        for line in configured:
            self.assertIn(" -DAUDREL_STRICT=OFF ", line)

    def test_where_release_and_compilers_are_proven_warnings_are_errors(self):
        packages = self.copy / "packaging" / "linux" / "packages.sh"
        self.compilers("99.2.0", "98.1.0")
        with open(packages, "a", encoding="utf-8") as file:
            file.write('provenSystems+=("$(. /etc/os-release; echo "$ID ${VERSION_ID-}"), '
                       'g++ 99, clang 98")\n')
        _, calls = self.run_command("test")
        configured = [line for line in calls if line.startswith("--preset")]
        self.assertEqual(len(configured), 6)
        for line in configured:
            self.assertIn(" -DAUDREL_STRICT=ON ", line)

    def totals(self, skipped):
        self.tool("ctest", f"""for last; do :; done
printf '<testsuite name="x"\\n\\ttests="7"\\n\\tfailures="2"\\n\\tdisabled="0"\\n' >"$last"
printf '\\tskipped="{skipped}"\\n' >>"$last" """)
        for build in ("release", "asan", "tsan", "macos", "macos-tsan"):
            (self.copy / "build" / build).mkdir(parents=True, exist_ok=True)
        result, _ = self.run_command("test")
        return result.stdout.splitlines()[-1]

    def test_the_last_line_counts_what_was_skipped_apart(self):
        self.assertEqual(self.totals(skipped=1), "20 passed, 10 failed, 5 skipped")
        self.assertEqual(self.totals(skipped=0), "25 passed, 10 failed")

    def test_what_is_run_is_built_in_a_folder_of_its_own(self):
        result, calls = self.run_command("run", "--headless")
        self.assertEqual(result.returncode, 0, result.stdout)
        self.assertEqual([line.split()[:3] for line in calls], [
            ["--preset", "run", "--log-level=WARNING"], ["--build", "--preset", "run"]])

    def test_what_is_too_old_of_the_packages_is_named(self):
        self.make_cmake("3.22.1")
        result, calls = self.run_command("run", "--headless")
        self.assertEqual((result.returncode, result.stdout, calls), (1, MISSING.format(
            "  command cmake, 3.25 or later (Debian's package cmake)\n"), []))


class WithoutAptTest(CopyTest):
    """A system that has other packages."""

    def setUp(self):
        super().setUp()
        self.others = self.scratch / "others"
        self.others.mkdir()
        for path in Path("/usr/bin").iterdir():
            if path.name not in ("apt-get", "dpkg-query", "sudo") and not path.name.endswith("g++"):
                (self.others / path.name).symlink_to(path)

    def environment(self):
        return {**super().environment(), "PATH": f"{self.tools}:{self.others}"}

    def test_what_is_there_is_used(self):
        result, calls = self.run_command("run", "--headless")
        self.assertEqual(result.returncode, 0, result.stdout)
        self.assertEqual(len(calls), 2, calls)
        self.assertNotIn("ackage", result.stdout)

    def test_what_is_missing_is_named_and_nothing_else(self):
        self.compilers("g++ (Name 11.4.0-1) 11.4.0", "14.0.6")
        self.tool("pkg-config", """[ "$*" != '--exists libpipewire-0.3 >= 0.3.65' ]""")
        for name in ("ninja", "pipewire"):
            (self.tools / name).unlink()
            (self.others / name).unlink(missing_ok=True)
        result, calls = self.run_command("run", "--headless")
        self.assertEqual((result.returncode, result.stdout, calls), (1, MISSING.format(
            "  command g++, 12 or later (Debian's package g++)\n"
            "  command ninja (Debian's package ninja-build)\n"
            "  library libpipewire-0.3, 0.3.65 or later (Debian's package libpipewire-0.3-dev)\n"
            "  command pipewire (Debian's package pipewire)\n"), []))

    def test_a_desktop_needs_no_other(self):
        for name in ("Xvfb", "xfce4-panel", "xdotool"):
            (self.tools / name).unlink()
            (self.others / name).unlink(missing_ok=True)
        variables = {**self.environment(), "DISPLAY": ":0"}
        variables.pop("CI", None)
        result = call([self.copy / "run"], env=variables)
        self.assertEqual(result.returncode, 0, result.stdout)


class ReadmeTest(unittest.TestCase):
    """The commands of the README, as somebody types them after ./run."""

    README = (ROOT / "README.md").read_text(encoding="utf-8")

    def commands(self):
        for block in self.README.split("```sh\n")[1:]:
            yield from (line.split() for line in block.split("```")[0].splitlines())

    def test_programs_are_called_where_run_leaves_them(self):
        called = [words[0] for words in self.commands() if words and "audrel" in words[0]]
        self.assertIn("build/run/audrel-record", called)
        self.assertLessEqual(set(called), {"build/run/audrel", "build/run/audrel-record"})

    def test_files_of_the_sources_are_there(self):
        named = re.findall(r"`(?:man )?((?:packaging|tests|docs)/[^` ]+)`", self.README)
        self.assertGreater(len(named), 2)
        for path in named:
            self.assertTrue((ROOT / path).exists(), path)

    def test_least_versions_are_those_that_are_asked_for(self):
        packages = (ROOT / "packaging/linux/packages.sh").read_text(encoding="utf-8")
        for name, sign in (("g++", "g++"), ("CMake", "cmake"), ("PipeWire", "libpipewire-0.3")):
            version = re.search(rf"='\w+ {re.escape(sign)} ([\d.]+)'", packages).group(1)
            self.assertIn(f"{name} {version}", self.README)


class DistributionsTest(ScratchTest):
    """How the trial on bare systems is called; the systems themselves need root and hours."""

    SCRIPT = ROOT / "tests" / "distributions"

    def test_it_explains_itself(self):
        result = call([self.SCRIPT, "--help"])
        self.assertEqual(result.returncode, 0)
        self.assertTrue(result.stdout.startswith("Usage: tests/distributions "), result.stdout)

    def test_an_unknown_release_is_refused_before_anything_is_made(self):
        result = call([self.SCRIPT, "12", "11"])
        self.assertEqual((result.returncode, result.stdout),
                         (2, 'tests/distributions: "11" is not known. Try --help.\n'))

    def test_its_table_has_a_row_for_each_system_and_account(self):
        table = (ROOT / "docs" / "distributions.md").read_text(encoding="utf-8")
        for release in ("12", "13", "sid"):
            for account in ("root", "user"):
                self.assertEqual(table.count(f"\n| Debian {release} | {account} |"), 1)


class WarningsTest(ScratchTest):
    """A source with a warning, built with the options of every target of ours."""

    def build(self, *options):
        source = self.scratch / "source"
        source.mkdir(exist_ok=True)
        (source / "shadow.cpp").write_text(
            "int twice(int i) { { int i = 2; return i; } }\n", encoding="utf-8")
        (source / "CMakeLists.txt").write_text(
            "cmake_minimum_required(VERSION 3.25)\nproject(shadow CXX)\n"
            f"include({ROOT}/cmake/BuildOptions.cmake)\n"
            "add_library(shadow OBJECT shadow.cpp)\n"
            "target_link_libraries(shadow PRIVATE audrel_options)\n", encoding="utf-8")
        folder = self.scratch / "build"
        configured = call(["cmake", "-S", source, "-B", folder, "-G", "Ninja", *options])
        self.assertEqual(configured.returncode, 0, configured.stdout)
        return call(["cmake", "--build", folder])

    def test_a_warning_stops_nobody_by_default(self):
        result = self.build()
        self.assertEqual(result.returncode, 0, result.stdout)
        self.assertIn("warning", result.stdout)

    def test_a_warning_is_an_error_where_the_build_is_strict(self):
        result = self.build("-DAUDREL_STRICT=ON")
        self.assertNotEqual(result.returncode, 0)
        self.assertIn("-Werror", result.stdout)

    def test_the_preset_of_what_is_run_is_never_strict(self):
        listed = call(["cmake", "--preset", "run", "-N", "-B", self.scratch / "unused"], cwd=ROOT)
        self.assertIn('AUDREL_STRICT="OFF"', listed.stdout)
        self.assertIn('AUDREL_TESTS="OFF"', listed.stdout)


if __name__ == "__main__":
    unittest.main()
