#!/usr/bin/env python3
"""Proves that the checks of the macOS build can fail.

check-negatives.py SDK PROGRAM
  SDK      the folder that makesdk.py made
  PROGRAM  a universal program that check-program.py has nothing to say about, without updater

Every file of negatives/ must be refused, for the reason in its first line; right.mm must not.
Then copies of PROGRAM, each damaged in one way, must be refused by check-program.py.
"""
import os
import re
import struct
import subprocess
import sys
import tempfile

import macho

HERE = os.path.dirname(os.path.abspath(__file__))
SOURCE = os.path.dirname(os.path.dirname(HERE))
FRAMEWORKS = ["AppKit", "AVFAudio", "CoreAudio", "CoreFoundation", "Foundation"]


def compile_and_link(sdk, source, out):
    command = ["clang++-19", "--target=arm64-apple-macos14.2", "-isysroot", sdk, "-nostdinc++",
               "-isystem", f"{sdk}/usr/include/c++/v1", "-std=c++20", "-O2", "-Wall", "-Wextra",
               "-Werror", "-fuse-ld=lld", "-Wl,-fatal_warnings,--error-limit=0", "-lobjc", source, "-o",
               out]
    if source.endswith(".mm"):
        command += ["-fobjc-arc", "-fblocks"]
    for framework in FRAMEWORKS:
        command += ["-framework", framework]
    return subprocess.run(command, capture_output=True, text=True)


def source_failures(sdk, folder):
    names = sorted(os.listdir(f"{HERE}/negatives"))
    for name in names:
        path = f"{HERE}/negatives/{name}"
        result = compile_and_link(sdk, path, f"{folder}/program")
        with open(path, encoding="utf-8") as file:
            expected = re.match(r"// expected: (.*)\n", file.read())
        if expected is None:
            if result.returncode != 0:
                yield f"{name} is right, but was refused:\n{result.stderr}"
        elif result.returncode == 0:
            yield f"{name} was not refused"
        elif expected[1] not in result.stderr:
            yield f"{name} was refused, but not for its reason:\n{result.stderr}"
    if len(names) < 9:
        yield f"only {len(names)} files in negatives/"


def check_program(path, menu=f"{SOURCE}/platform/Selectors.h", exports=f"{HERE}/exports.txt"):
    return subprocess.run([f"{HERE}/check-program.py", path, exports, menu], capture_output=True,
                          text=True)


def changed(data, what, replacement):
    assert data.count(what) > 0 and len(what) == len(replacement)
    return data.replace(what, replacement)


def flipped(data, offset):
    return data[:offset] + bytes([data[offset] ^ 1]) + data[offset + 1 :]


def damaged(data):
    """(name, a part of the complaint, damaged bytes)."""
    minimum = struct.pack("<IIII", macho.LC_BUILD_VERSION, 32, 1, 14 << 16 | 2 << 8)
    older = struct.pack("<IIII", macho.LC_BUILD_VERSION, 32, 1, 13 << 16)
    yield "an older system", "built for (1, '13.0')", changed(data, minimum, older)
    yield "a changed byte", "is not the one that was signed", flipped(data, first_slice(data) + 0x5000)
    yield "another library", "library too many", changed(data, b"/AppKit\0", b"/AppKat\0")
    yield "another selector", "selector missing: quit:", changed(data, b"\0quit:\0", b"\0quat:\0")
    yield "one architecture", "architecture missing", macho.slices(data)["arm64"]
    signature = struct.pack(">I", macho.CODE_DIRECTORY)
    yield "no code directory", "no code directory", changed(data, signature, b"\0\0\0\0")


def first_slice(data):
    return struct.unpack_from(">I", data, 16)[0]


def program_failures(program, folder):
    with open(program, "rb") as file:
        data = file.read()
    if check_program(program).returncode != 0:
        yield f"{program} itself is refused"
    for name, reason, damage in damaged(data):
        path = f"{folder}/damaged"
        with open(path, "wb") as file:
            file.write(damage)
        result = check_program(path)
        if result.returncode == 0 or reason not in result.stderr:
            yield f"a program with {name}: expected {reason!r}, got {result.stderr!r}"
    with open(f"{HERE}/exports.txt", encoding="utf-8") as file:
        exports = file.read()
    path = f"{folder}/exports.txt"
    with open(path, "w", encoding="utf-8") as file:
        file.write(changed(exports, "_AudioDeviceStart", "_AudioDeviceStatt"))
    if "_AudioDeviceStart is not known" not in check_program(program, exports=path).stderr:
        yield "an import that exports.txt does not have is not seen"


def main():
    sdk, program = sys.argv[1:]
    with tempfile.TemporaryDirectory() as folder:
        found = list(source_failures(sdk, folder)) + list(program_failures(program, folder))
    if found:
        sys.exit("\n".join(found))


main()
