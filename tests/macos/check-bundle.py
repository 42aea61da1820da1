#!/usr/bin/env python3
"""Checks Audrel.app, and that the lint of its Info.plist can fail.

check-bundle.py BUNDLE VERSION INFO_PLIST FEED KEY
  INFO_PLIST  of a build that was given that feed of updates and that key
"""
import copy
import os
import plistlib
import struct
import subprocess
import sys
import tempfile

import macho

SOURCE = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
LINT = f"{SOURCE}/packaging/macos/lint_plist.py"
sys.path.insert(0, os.path.dirname(LINT))
sys.dont_write_bytecode = True
import lint_plist  # noqa: E402
MINIMUM_SYSTEM = "14.2"
ICON_PIXELS = {"icp4": 16, "icp5": 32, "ic11": 32, "ic12": 64, "ic07": 128, "ic08": 256,
               "ic13": 256, "ic09": 512, "ic14": 512, "ic10": 1024}
FILES = {"Info.plist", "PkgInfo", "MacOS/Audrel", "MacOS/audrel-record", "Resources/Audrel.icns"}


def lint(path, version):
    return subprocess.run([LINT, path, version, MINIMUM_SYSTEM], capture_output=True, text=True)


def damaged(plist):
    """(what is wrong, property list); each must be refused."""
    def with_changes(**changes):
        changed = copy.deepcopy(plist)
        changed.update(changes)
        return changed

    for key, value in plist.items():
        without = {other: plist[other] for other in plist if other != key}
        yield f"{key} missing", without
        yield f"{key} misspelt", {**without, key + "s": value}
        yield f"{key} of another type", with_changes(**{key: 1})
        if isinstance(value, str):
            yield f"{key} empty", with_changes(**{key: " "})
        if isinstance(value, bool):
            yield f"{key} as text", with_changes(**{key: "true"})
    yield "a microphone key", with_changes(NSMicrophoneUsageDescription="Records.")
    yield "an older system", with_changes(LSMinimumSystemVersion="14.0")
    yield "a Dock icon", with_changes(LSUIElement=False)
    yield "another identifier", with_changes(CFBundleIdentifier="com.example.Audrel")
    yield "another version", with_changes(CFBundleVersion="0.9")
    yield "a feed without key", with_changes(SUFeedURL="https://example.invalid/appcast.xml")
    yield "a feed without https", with_changes(SUFeedURL="http://example.invalid/appcast.xml",
                                               SUPublicEDKey="A" * 43 + "=")
    yield "a key cut short", with_changes(SUFeedURL="https://example.invalid/appcast.xml",
                                          SUPublicEDKey="AAAA")


def lint_failures(path, version):
    result = lint(path, version)
    if result.returncode != 0:
        yield f"Info.plist: {result.stderr}"
    with open(path, "rb") as file:
        plist = plistlib.load(file)
    feed = {"SUFeedURL": "https://example.invalid/appcast.xml", "SUPublicEDKey": "A" * 43 + "="}
    if any(lint_plist.complaints({**plist, **feed}, version, MINIMUM_SYSTEM)):
        yield "the lint refuses a feed with its key"
    for what, changed in damaged(plist):
        if not any(lint_plist.complaints(changed, version, MINIMUM_SYSTEM)):
            yield f"the lint does not see {what}"
    with tempfile.TemporaryDirectory() as folder:
        other = f"{folder}/Info.plist"
        with open(other, "wb") as file:
            plistlib.dump({**plist, "NSMicrophoneUsageDescription": "Records."}, file)
        if "NSMicrophoneUsageDescription is unknown" not in lint(other, version).stderr:
            yield "the lint does not speak"
        with open(other, "w", encoding="utf-8") as file:
            file.write("<plist><dict><key>CFBundleName</key>")
        if "is no property list" not in lint(other, version).stderr:
            yield "the lint does not see a file cut short"


def feed_failures(path, version, feed, key):
    with open(path, "rb") as file:
        plist = plistlib.load(file)
    yield from lint_plist.complaints(plist, version, MINIMUM_SYSTEM)
    if (plist.get("SUFeedURL"), plist.get("SUPublicEDKey")) != (feed, key):
        yield f"{path} has not the feed and the key that the build was given"


def icon_failures(path):
    with open(path, "rb") as file:
        data = file.read()
    if data[:4] != b"icns" or struct.unpack(">I", data[4:8])[0] != len(data):
        yield "the icon's size is not what it says"
        return
    found, at = {}, 8
    while at < len(data):
        kind, size = struct.unpack_from(">4sI", data, at)
        found[kind.decode()] = struct.unpack_from(">II", data, at + 8 + 16)
        at += size
    if found != {kind: (pixels, pixels) for kind, pixels in ICON_PIXELS.items()}:
        yield f"the icon has {found}"


def drawing_failures(path):
    with tempfile.TemporaryDirectory() as folder:
        other = f"{folder}/Audrel.icns"
        subprocess.run([f"{SOURCE}/packaging/macos/render-icon", other], check=True)
        with open(path, "rb") as committed, open(other, "rb") as rendered:
            if committed.read() != rendered.read():
                yield "the icon is not what packaging/macos/render-icon makes of the drawing"


def main():
    bundle, version, with_feed, feed, key = sys.argv[1:]
    contents = f"{bundle}/Contents"
    found = []
    files = {os.path.relpath(os.path.join(folder, name), contents)
             for folder, _, names in os.walk(contents) for name in names}
    if files != FILES:
        found.append(f"the bundle has {sorted(files)}")
    with open(f"{contents}/PkgInfo", "rb") as file:
        if file.read() != b"APPL????":
            found.append("PkgInfo is wrong")
    for program in ("Audrel", "audrel-record"):
        with open(f"{contents}/MacOS/{program}", "rb") as file:
            if set(macho.slices(file.read())) != {"arm64", "x86_64"}:
                found.append(f"{program} is not universal")
        if not os.access(f"{contents}/MacOS/{program}", os.X_OK):
            found.append(f"{program} cannot be executed")
    found += lint_failures(f"{contents}/Info.plist", version)
    found += feed_failures(with_feed, version, feed, key)
    found += icon_failures(f"{contents}/Resources/Audrel.icns")
    found += drawing_failures(f"{contents}/Resources/Audrel.icns")
    if found:
        sys.exit("\n".join(found))


main()
