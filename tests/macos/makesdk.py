#!/usr/bin/env python3
"""Makes a folder that a cross compiler takes for a macOS SDK.

makesdk.py SDK LIBCXX OUT
  SDK     the project's own declarations (tests/macos/sdk)
  LIBCXX  headers of LLVM's libc++, the folder that holds __config_site
  OUT     the result; replaced

The headers are copied, and a linker stub is written for each library of exports.txt beside SDK.
Debian's libc++ leaves Apple's availability out; the copy's configuration has it on, so that what
macOS 14.2 lacks does not compile.
"""
import os
import shutil
import sys

TARGETS = "[ arm64-macos, x86_64-macos ]"
NO_AVAILABILITY = "_LIBCPP_HAS_NO_VENDOR_AVAILABILITY_ANNOTATIONS"


def read_exports(path):
    """The libraries of exports.txt: (path of the stub, install name, classes, symbols)."""
    libraries = []
    with open(path, encoding="utf-8") as lines:
        for number, line in enumerate(lines, 1):
            words = line.split("#")[0].split()
            if not words:
                continue
            if words[0] == "library" and len(words) == 3:
                libraries.append((words[1], words[2], [], []))
            elif words[0] == "class" and libraries:
                libraries[-1][2].extend(words[1:])
            elif words[0] == "symbol" and libraries:
                libraries[-1][3].extend(words[1:])
            else:
                sys.exit(f"{path}:{number}: not understood: {line.strip()}")
    return libraries


def stub(install_name, classes, symbols):
    lines = [
        "--- !tapi-tbd",
        "tbd-version: 4",
        f"targets: {TARGETS}",
        f"install-name: '{install_name}'",
        "exports:",
        f"  - targets: {TARGETS}",
    ]
    if symbols:
        lines.append("    symbols: [ " + ", ".join(f"'{name}'" for name in symbols) + " ]")
    if classes:
        lines.append("    objc-classes: [ " + ", ".join(classes) + " ]")
    return "\n".join(lines + ["...", ""])


def main():
    sdk, libcxx, out = sys.argv[1:]
    shutil.rmtree(out, ignore_errors=True)
    shutil.copytree(sdk, out)
    headers = os.path.join(out, "usr/include/c++/v1")
    shutil.copytree(libcxx, headers)
    site = os.path.join(headers, "__config_site")
    with open(site, encoding="utf-8") as config:
        kept = [line for line in config if NO_AVAILABILITY not in line]
    with open(site, "w", encoding="utf-8") as config:
        config.writelines(kept)
    exports = os.path.join(os.path.dirname(os.path.abspath(sdk)), "exports.txt")
    for path, install_name, classes, symbols in read_exports(exports):
        target = os.path.join(out, path)
        os.makedirs(os.path.dirname(target), exist_ok=True)
        with open(target, "w", encoding="utf-8") as file:
            file.write(stub(install_name, classes, symbols))


main()
