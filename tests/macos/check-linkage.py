#!/usr/bin/env python3
"""Links the adapter of the hardware layer with a header of process taps that says of its functions that
they are C's, and with one that leaves it out: Apple's is not here to be looked at.

check-linkage.py SDK
  SDK  the folder that makesdk.py made
"""
import os
import re
import shutil
import subprocess
import sys
import tempfile

SOURCE = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
FRAMEWORK = "CoreAudio.framework"
HEADER = f"{FRAMEWORK}/Headers/AudioHardwareTapping.h"
FUNCTIONS = {"_AudioHardwareCreateProcessTap", "_AudioHardwareDestroyProcessTap"}
ADAPTER = f"{SOURCE}/platform/macos/AudioHardware.mm"
# What the header does to code that trusts it.
TRUSTING = """#import <CoreAudio/AudioHardwareTapping.h>
OSStatus destroy(AudioObjectID tap) { return AudioHardwareDestroyProcessTap(tap); }
"""


def compiler(sdk, frameworks):
    return ["clang++-19", "--target=arm64-apple-macos14.2", "-isysroot", sdk, "-F", frameworks,
            "-nostdinc++", "-isystem", f"{sdk}/usr/include/c++/v1", "-std=c++20", "-O2", "-fobjc-arc",
            "-fblocks", "-I", SOURCE]


def undefined(sdk, frameworks, source, folder):
    """What the source needs and the linker does not find, as the linker says it."""
    out = f"{folder}/linked.dylib"
    command = compiler(sdk, frameworks) + ["-dynamiclib", "-fuse-ld=lld", "-lobjc", source, "-o", out]
    for framework in ("CoreAudio", "CoreFoundation", "Foundation"):
        command += ["-framework", framework]
    result = subprocess.run(command, capture_output=True, text=True)
    if "error:" in result.stderr and "undefined symbol" not in result.stderr:
        sys.exit(result.stderr)
    return re.findall(r"undefined symbol: (.*)", result.stderr)


def failures(sdk, folder):
    shutil.copytree(f"{sdk}/System/Library/Frameworks/{FRAMEWORK}", f"{folder}/{FRAMEWORK}")
    with open(f"{folder}/{HEADER}", encoding="utf-8") as file:
        declared = file.read()
    if declared.count("CF_EXPORT") != len(FUNCTIONS):
        yield f"{HEADER} declares other functions than {sorted(FUNCTIONS)}"
    trusting = f"{folder}/trusting.mm"
    with open(trusting, "w", encoding="utf-8") as file:
        file.write(TRUSTING)
    for linkage, is_trusty in (('extern "C"', True), ("extern", False)):
        with open(f"{folder}/{HEADER}", "w", encoding="utf-8") as file:
            file.write(declared.replace("CF_EXPORT", linkage))
        # The adapter's own other files are not here.
        missing = [name for name in undefined(sdk, folder, ADAPTER, folder) if "audrel::" not in name]
        if missing:
            yield f"with {linkage} the adapter lacks {missing}"
        missing = undefined(sdk, folder, trusting, folder)
        if missing != ([] if is_trusty else ["AudioHardwareDestroyProcessTap(unsigned int)"]):
            yield f"with {linkage} what trusts the header lacks {missing}"


def main():
    with tempfile.TemporaryDirectory() as folder:
        found = list(failures(sys.argv[1], folder))
    if found:
        sys.exit("\n".join(found))


main()
