#!/usr/bin/env python3
"""Proves that each word of the declarations that says who owns what has a test that fails without it.

check-declarations.py SDK COMMANDS LINK...
  SDK       the project's own declarations (tests/macos/sdk)
  COMMANDS  the build's compile_commands.json, which says how Declared.mm is compiled
  LINK      the command that links DeclarationsTest, without Declared.mm and without a result

Each word is taken out of a copy of SDK, one at a time, and the test is run with Declared.mm compiled
against that copy. Some test must fail; with nothing taken out, none; and there must be no test that
never fails. Two kinds of words are let be, since no generated code depends on them: `strong`, which
a property is without a word too, and what a property that is only read says to its implementor.
"""
import json
import os
import re
import shlex
import shutil
import subprocess
import sys
import tempfile

ATTRIBUTE = (r"__attribute__\(\((?:objc_returns_inner_pointer|objc_method_family\(\w+\)"
             r"|(?:ns|cf|os)_(?:returns|consume)\w+)\)\)")
QUALIFIER = r"__(?:autoreleasing|strong|weak|unsafe_unretained)\b"
PROPERTY = re.compile(r"@property\(([^)]*)\)\s*([^;]*);")
OF_PROPERTIES = ["weak", "copy", "assign", "retain", "unsafe_unretained"]
ENVIRONMENT = {**os.environ, "CCACHE_DISABLE": "1"}


def without_comments(text):
    return re.sub(r"//.*", lambda comment: " " * len(comment[0]), text)


def macros(texts):
    """Names that stand for an attribute."""
    for text in texts:
        yield from re.findall(rf"#define (\w+) {ATTRIBUTE}", text)


def words(text, names):
    """(description, text without that word) of each."""
    code = re.sub(r"(?m)^#define (?:.*\\\n)*.*", lambda line: re.sub(r"[^\n]", " ", line[0]),
                  without_comments(text))
    for found in re.finditer("|".join([ATTRIBUTE, QUALIFIER] + [rf"\b{name}\b" for name in names]),
                             code):
        yield described(code, found), text[: found.start()] + text[found.end() :]
    for found in re.finditer(r"__bridge_(?:transfer|retained)\b", code):
        changed = text[: found.start()] + "__bridge" + text[found.end() :]
        yield described(code, found), changed
    for found in PROPERTY.finditer(code):
        said = [word.strip() for word in found[1].split(",")]
        for word in said:
            if word in OF_PROPERTIES and "readonly" not in said:
                kept = ", ".join(other for other in said if other != word)
                changed = text[: found.start(1)] + kept + text[found.end(1) :]
                yield f"{word} of {' '.join(found[2].split())}", changed


def described(code, found):
    line = code.count("\n", 0, found.start()) + 1
    return f"{found[0]} in line {line}"


class Test:
    def __init__(self, sdk, commands, link, folder):
        with open(commands, encoding="utf-8") as file:
            command = next(one["command"] for one in json.load(file)
                           if one["file"].endswith("/Declared.mm"))
        self.compile = re.sub(r" -o \S+", "", command)
        self.sdk = sdk
        self.link = link
        self.folder = folder

    def failure(self, sdk):
        """The first test that fails with that copy; nothing when none does."""
        result = f"{self.folder}/Declared.o"
        compiling = shlex.split(self.compile.replace(self.sdk, sdk)) + ["-o", result]
        subprocess.run(compiling, check=True, env=ENVIRONMENT)
        program = f"{self.folder}/test"
        subprocess.run(self.link + [result, "-o", program], check=True)
        run = subprocess.run([program, "--gtest_break_on_failure"], capture_output=True, text=True,
                             timeout=60)
        begun = re.findall(r"\[ RUN      \] (\S+)", run.stdout)
        return begun[-1] if run.returncode != 0 else None

    def names(self):
        listed = subprocess.run([f"{self.folder}/test", "--gtest_list_tests"], check=True,
                                capture_output=True, text=True).stdout
        suite, *tests = re.findall(r"(?m)^ *(\S+)$", listed.split("\n", 1)[1])
        return {suite + test for test in tests}


def headers(sdk):
    for folder, _, files in os.walk(sdk):
        yield from (os.path.join(folder, name) for name in files)


def complaints(test, folder):
    if test.failure(test.sdk) is not None:
        yield "the test fails with the declarations as they are"
        return
    never = test.names()
    copy = f"{folder}/sdk"
    shutil.copytree(test.sdk, copy)
    texts = {}
    for path in headers(copy):
        with open(path, encoding="utf-8") as file:
            texts[path] = file.read()
    names = sorted(macros(texts.values()))
    for path, text in texts.items():
        for word, changed in words(text, names):
            with open(path, "w", encoding="utf-8") as file:
                file.write(changed)
            failure = test.failure(copy)
            print(f"{os.path.basename(path)}: {word}: {failure}", flush=True)
            if failure is None:
                yield f"{os.path.basename(path)}: no test needs {word}"
            never.discard(failure)
        with open(path, "w", encoding="utf-8") as file:
            file.write(text)
    yield from (f"{name} never fails" for name in sorted(never))


def main():
    sdk, commands, *link = sys.argv[1:]
    with tempfile.TemporaryDirectory() as folder:
        found = list(complaints(Test(sdk, commands, link, folder), folder))
    if found:
        sys.exit("\n".join(found))


main()
