#!/usr/bin/env python3
"""Puts the journals of each story side by side: what the program asked of the interfaces on
tests/fakes, and what the adapters of macOS asked of the frameworks of tests/macos/frameworks.

side_by_side.py [--update] [FOLDER]
  --update  write FOLDER/side-by-side.md; without it that file must be as it would be written
  FOLDER    of the transcripts; docs/transcripts unless another is given

Says what is wrong, with status 1: a line that differs and that explanations.py does not explain, a
story without its counterpart, an explanation that nothing needs.
"""
import argparse
import difflib
import re
import sys
from pathlib import Path
from typing import NamedTuple

from explanations import EXPLANATIONS

FOLDER = Path(__file__).resolve().parents[3] / "docs" / "transcripts"
DOCUMENT = "side-by-side.md"
INDENT = "    "  # of what happened in answer to a step
LOG = INDENT + "log "

HEAD = """\
# The journals side by side

A session of the whole program and each story of the engine, twice: on the interfaces, as `tests/fakes`
noted their calls, and on macOS, as the frameworks of `tests/macos/frameworks` noted what the adapters
asked of them. The two journals share no code but the program between them. What both tell in the same
words stands once. Where they differ, the line of the interfaces begins with `i` and that of macOS, below
it, with `m`; behind it stands, in brackets, what explains the difference:

"""
FOOT = """
`tests/macos/transcripts/side_by_side.py --update` writes this file, and refuses to while a line differs
that nothing here explains.
"""


class Line(NamedTuple):
    number: int
    text: str
    expected: str  # on the other side
    explained_by: tuple = ()
    is_alone: bool = False


class Unexplained(Exception):
    """The message tells where, and what stands there."""


def is_call(text):
    return text.startswith(INDENT) and not text.startswith(LOG)


def explained(number, text, explanations):
    """A line of the interfaces' journal in the words of macOS."""
    if not is_call(text):
        return Line(number, text, text)
    call = text.removeprefix(INDENT)
    names = []
    for explanation in explanations:
        if re.fullmatch(explanation.only_interface, call):
            return Line(number, text, text, (explanation.name,), True)
        rewritten = explanation.rewritten(call)
        if rewritten != call:
            names.append(explanation.name)
            call = rewritten
    return Line(number, text, INDENT + call, tuple(names))


def lines(path):
    return list(enumerate(path.read_text(encoding="utf-8").splitlines(), start=1))


def unexplained(story, interface, macos):
    """The first place where the two sides differ."""
    matcher = difflib.SequenceMatcher(None, [line.expected for line in interface],
                                      [text for _, text in macos], autojunk=False)
    _, first, end, first_macos, end_macos = next(
        code for code in matcher.get_opcodes() if code[0] != "equal")
    message = f"{story}: nothing explains the difference between"
    for line in interface[first:end]:
        message += f"\n  line {line.number} of the interfaces: {line.text.strip()}"
        if line.explained_by:
            message += f"\n    in the words of macOS: {line.expected.strip()}"
    for number, text in macos[first_macos:end_macos]:
        message += f"\n  line {number} of macOS: {text.strip()}"
    return Unexplained(message)


def pairs(story, interface_path, macos_path, explanations):
    """(line of the interfaces, text of macOS, or None where the line stands alone), in order."""
    interface = [explained(*line, explanations) for line in lines(interface_path)]
    both = [line for line in interface if not line.is_alone]
    macos = lines(macos_path)
    if [line.expected for line in both] != [text for _, text in macos]:
        raise unexplained(story, both, macos)
    texts = iter(text for _, text in macos)
    return [(line, None if line.is_alone else next(texts)) for line in interface]


def section(story, aligned):
    (title, _), *rest = aligned
    text = f"\n## {story}\n\n{title.text}\n\n```\n"
    for line, macos in rest[1:]:
        names = "  [" + ", ".join(line.explained_by) + "]"
        if macos is None:
            text += f"i {line.text}{names}\n"
        elif macos == line.text:
            text += f"  {macos}".rstrip() + "\n"
        else:
            text += f"i {line.text}\nm {macos}{names}\n"
    return text + "```\n"


def stories(folder):
    """(story, its file of the interfaces, its file of macOS): the session, then the engine's."""
    interface = {path.stem for path in folder.glob("engine-*.txt")}
    macos = {path.stem.removeprefix("macos-") for path in folder.glob("macos-engine-*.txt")}
    for story in interface ^ macos:
        raise Unexplained(f"{story} is told on one side alone")
    return [("session", folder / "app-session.txt", folder / "macos-session.txt")] + [
        (story, folder / f"{story}.txt", folder / f"macos-{story}.txt")
        for story in sorted(interface)]


def document(folder, explanations=tuple(EXPLANATIONS)):
    text = HEAD + "".join(f"- **{each.name}**: {each.reason}\n" for each in explanations) + FOOT
    needed = set()
    for story, interface, macos in stories(folder):
        aligned = pairs(story, interface, macos,
                        [each for each in explanations if re.fullmatch(each.stories, story)])
        needed.update(name for line, _ in aligned for name in line.explained_by)
        text += section(story, aligned)
    for explanation in explanations:
        if explanation.name not in needed:
            raise Unexplained(f"nothing needs the explanation '{explanation.name}'")
    return text


def main():
    parser = argparse.ArgumentParser(description=__doc__,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--update", action="store_true")
    parser.add_argument("folder", nargs="?", type=Path, default=FOLDER)
    arguments = parser.parse_args()
    path = arguments.folder / DOCUMENT
    try:
        text = document(arguments.folder)
    except Unexplained as difference:
        sys.exit(str(difference))
    if arguments.update:
        path.write_text(text, encoding="utf-8")
    elif not path.exists() or path.read_text(encoding="utf-8") != text:
        sys.exit(f"{path} is not what the transcripts give: --update writes it")


if __name__ == "__main__":
    main()
