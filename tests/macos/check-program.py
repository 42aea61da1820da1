#!/usr/bin/env python3
"""Checks a program that was linked for macOS; says what is wrong with it, status 0 when nothing is.

check-program.py FILE EXPORTS MENU_ACTIONS [--sparkle]
  FILE          universal Mach-O
  EXPORTS       tests/macos/exports.txt
  MENU_ACTIONS  platform/Selectors.h, which names the selectors of the menu
"""
import argparse
import re
import subprocess
import sys

import macho

MACOS = 1
ARCHITECTURES = {"arm64", "x86_64"}
MINIMUM_SYSTEM = (MACOS, "14.2")
SPARKLE = "@rpath/Sparkle.framework/Versions/B/Sparkle"
FRAMEWORKS = [
    f"/System/Library/Frameworks/{name}.framework/Versions/{version}/{name}"
    for name, version in [
        ("AVFAudio", "A"),
        ("AppKit", "C"),
        ("CoreAudio", "A"),
        ("CoreFoundation", "A"),
        ("CoreGraphics", "A"),
        ("Foundation", "C"),
    ]
]
LIBRARIES = ["/usr/lib/libobjc.A.dylib", "/usr/lib/libc++.1.dylib", "/usr/lib/libSystem.B.dylib"]
CLASSES = {"AudrelApplicationDelegate", "AudrelMenu", "AudrelMenuItemContent"}
PROTOCOLS = {"AudrelMenuActions", "NSApplicationDelegate", "NSMenuDelegate", "NSObject"}
DELEGATE_METHODS = {"applicationDidFinishLaunching:", "applicationWillTerminate:", "menuWillOpen:"}


def exports_by_library(path):
    """Library, as the linker's short name, to what exports.txt says of it."""
    result, names = {}, None
    with open(path, encoding="utf-8") as lines:
        for line in lines:
            words = line.split("#")[0].split()
            if words[:1] == ["library"]:
                names = result.setdefault(words[2], set())
            elif words[:1] == ["symbol"]:
                names.update(words[1:])
            elif words[:1] == ["class"]:
                names.update(f"_OBJC_{kind}_$_{name}" for kind in ("CLASS", "METACLASS")
                             for name in words[1:])
    return result


def imports(path, architecture):
    """(symbol, install name's last part) of each undefined symbol."""
    text = subprocess.run(["llvm-nm-19", "-m", "-u", f"--arch={architecture}", path], check=True,
                          capture_output=True, text=True).stdout
    return re.findall(r"external (\S+) \(from (\S+)\)", text)


def defined_classes(path, architecture):
    text = subprocess.run(["llvm-nm-19", "--defined-only", f"--arch={architecture}", path],
                          check=True, capture_output=True, text=True).stdout
    return set(re.findall(r"_OBJC_CLASS_\$_(\S+)", text))


def short_name(install_name):
    return install_name.rsplit("/", 1)[1].split(".")[0]


def differences(what, found, expected):
    for name in sorted(set(found) - set(expected)):
        yield f"{what} too many: {name}"
    for name in sorted(set(expected) - set(found)):
        yield f"{what} missing: {name}"


def complaints(options):
    with open(options.file, "rb") as file:
        images = macho.slices(file.read())
    yield from differences("architecture", images, ARCHITECTURES)
    with open(options.menu_actions, encoding="utf-8") as file:
        actions = set(re.findall(r'"(\w+:)"', file.read()))
    if len(actions) != 10:
        yield f"the menu has {len(actions)} actions, not 10"
    exports = exports_by_library(options.exports)
    for architecture, data in images.items():
        for complaint in image_complaints(options, architecture, data, actions, exports):
            yield f"{architecture}: {complaint}"


def image_complaints(options, architecture, data, actions, exports):
    image = macho.Image(data)
    if image.minimum_system != MINIMUM_SYSTEM:
        yield f"built for {image.minimum_system}, not {MINIMUM_SYSTEM}"
    expected = FRAMEWORKS + LIBRARIES + ([SPARKLE] if options.sparkle else [])
    yield from differences("library", image.dylibs, expected)
    rpaths = ["@executable_path/../Frameworks"] if options.sparkle else []
    yield from differences("search path", image.rpaths, rpaths)
    yield from image.signature_complaints()

    libraries = {short_name(name): names for name, names in exports.items()}
    found = imports(options.file, architecture)
    if not found:
        yield "it imports nothing"
    for symbol, library in found:
        if symbol not in libraries.get(library, set()):
            yield f"{symbol} is not known to come from {library}"

    yield from differences("class", defined_classes(options.file, architecture), CLASSES)
    # The linker keeps names of protocols where it likes.
    names = image.strings("__objc_classname") | image.strings("__cstring")
    yield from differences("protocol", PROTOCOLS & names, PROTOCOLS)
    needed = actions | DELEGATE_METHODS
    yield from differences("selector", needed & image.strings("__objc_methname"), needed)


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("file")
    parser.add_argument("exports")
    parser.add_argument("menu_actions")
    parser.add_argument("--sparkle", action="store_true")
    try:
        found = list(complaints(parser.parse_args()))
    except macho.Malformed as error:
        found = [str(error)]
    if found:
        sys.exit("\n".join(found))


main()
