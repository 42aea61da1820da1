#!/usr/bin/env python3
"""Writes a program that was linked for macOS so that Linux links and loads it, unchanged.

makeelf.py FILE NAME OUT
  FILE  a Mach-O program, universal or for x86-64 alone
  NAME  of what OUT defines, a LoadedProgram
  OUT   assembly; OUT.bytes, which it refers to, is the program as it lies in memory

Code and data keep their bytes and their distances. Only the pointers that macOS sets when it loads a
program are written again, as what the linker and the loader of Linux set: an import is the symbol of
its name, without the underscore that macOS puts in front. What the program's unwind table says of a
function stands around it in the assembler's words; functions without a frame pointer are left out, for
macOS keeps one wherever there is a call: an exception that met one would end the process.

Static initialisers, thread-local variables and categories are refused, as is every format that the
linker does not write today.
"""
import collections
import os
import struct
import sys

sys.path.insert(0, os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
sys.dont_write_bytecode = True
import macho  # noqa: E402

MAPPED = ("__TEXT", "__DATA_CONST", "__DATA")
UNKNOWN_SECTIONS = {"__mod_init_func", "__init_offsets", "__thread_vars", "__objc_catlist"}
# What Linux calls otherwise, and what it has in another shape: HostSymbols.cpp has those of macOS.
HOST_NAMES = {
    "__bzero": "bzero",
    "__error": "__errno_location",
    "__exp10": "exp10",
    "__stack_chk_guard": "macosStackGuard",
    "getopt_long": "macosGetoptLong",
    "sigaction": "macosSigaction",
    "sigemptyset": "macosSigemptyset",
    "_ZNSt3__15mutex4lockEv": "macosMutexLock",
    "_ZNSt3__15mutex6unlockEv": "macosMutexUnlock",
    "_ZNSt3__15mutexD1Ev": "macosMutexDestroy",
    "_ZNSt3__16chrono12system_clock3nowEv": "macosSystemClockNow",
}

POINTERS_ARE_ADDRESSES = 2
NO_FIXUP = 0xFFFF
PLAIN_IMPORTS = 1
COMPRESSED_PAGE = 3
HAS_EXCEPTION_TABLE = 0x40000000
FRAME_MODE, FRAME_POINTER = 0x0F000000, 0x01000000
# What an encoding calls 1 to 5.
SAVED_REGISTERS = ("", "rbx", "r12", "r13", "r14", "r15")


class Program:
    def __init__(self, image):
        self.image = image
        self.base = self._segment("__TEXT")[0]
        self.memory = bytearray()
        for address, size, offset, length in map(self._segment, MAPPED):
            self.memory = self.memory.ljust(address - self.base, b"\0")
            self.memory += image.data[offset : offset + length].ljust(size, b"\0")
        if UNKNOWN_SECTIONS & image.places.keys():
            raise macho.Malformed("static initialisers, thread-local variables or categories")

    def _segment(self, name):
        return next(place for found, *place in self.image.segments if found == name)

    def bounds(self, segment):
        address, size, _, _ = self._segment(segment)
        return address - self.base, address - self.base + size

    def section(self, name):
        address, size = self.image.places[name]
        return address - self.base, address - self.base + size

    def entry(self):
        return struct.unpack_from("<Q", self.image.data, self.image.commands[macho.LC_MAIN] + 8)[0]

    def exports(self):
        """What it defines itself, and libraries may too: the program's own comes first."""
        data = self.image.data
        symbols, count, strings = struct.unpack_from(
            "<III", data, self.image.commands[macho.LC_SYMTAB] + 8)
        for index in range(count):
            name, kind, _, _, value = struct.unpack_from("<IBBHQ", data, symbols + 16 * index)
            if not kind & 0xE0 and kind & 0x0F == 0x0F:  # no debugging; external, in a section
                yield macho.text_at(data, strings + name), value - self.base

    def pointers(self):
        """(offset, symbol or None, addend) of each pointer that is set when the program is loaded."""
        data, at = self.image.data, self.image.commands[macho.LC_DYLD_CHAINED_FIXUPS]
        start = struct.unpack_from("<I", data, at + 8)[0]
        _, starts, imports, strings, count, kind, _ = struct.unpack_from("<7I", data, start)
        if kind != PLAIN_IMPORTS:
            raise macho.Malformed("imports of an unknown format")
        names = [macho.text_at(data, start + strings + (number >> 9))
                 for number in struct.unpack_from(f"<{count}I", data, start + imports)]
        starts += start
        for offset in struct.unpack_from(f"<{len(self.image.segments)}I", data, starts + 4):
            if offset != 0:
                yield from self._pointers_of_segment(starts + offset, names)

    def _pointers_of_segment(self, at, names):
        data = self.image.data
        _, page_size, kind, segment, _, pages = struct.unpack_from("<IHHQIH", data, at)
        if kind != POINTERS_ARE_ADDRESSES:
            raise macho.Malformed("pointers of an unknown format")
        for page, first in enumerate(struct.unpack_from(f"<{pages}H", data, at + 22)):
            place = segment + page * page_size + first
            step = 0 if first == NO_FIXUP else 1
            while step != 0:
                value = struct.unpack_from("<Q", self.memory, place)[0]
                if value >> 63:
                    yield place, names[value & 0xFFFFFF], value >> 24 & 0xFF
                else:
                    yield place, None, (value & 0xFFFFFFFFF) - self.base
                step = value >> 51 & 0xFFF
                place += 4 * step

    def functions(self):
        """(begin, end, encoding, personality's place, exception table) of each; 0 where there is none."""
        table = self.image.sections["__unwind_info"]
        _, common, common_count, personalities, _, index, count = struct.unpack_from("<7I", table)
        entries = [struct.unpack_from("<III", table, index + 12 * i) for i in range(count)]
        found = []
        for (first, page, tables), (_, _, tables_end) in zip(entries, entries[1:]):
            kind, at, length, own, _ = struct.unpack_from("<IHHHH", table, page)
            if kind != COMPRESSED_PAGE:
                raise macho.Malformed("an unwind table of an unknown format")
            exception_tables = dict(struct.iter_unpack("<II", table[tables:tables_end]))
            for entry in struct.unpack_from(f"<{length}I", table, page + at):
                number, begin = entry >> 24, first + (entry & 0xFFFFFF)
                place = (common + 4 * number if number < common_count
                         else page + own + 4 * (number - common_count))
                encoding = struct.unpack_from("<I", table, place)[0]
                number = encoding >> 28 & 3
                personality = struct.unpack_from("<I", table, personalities + 4 * number - 4)[0]
                found.append((begin, encoding, personality if number else 0,
                              exception_tables[begin] if encoding & HAS_EXCEPTION_TABLE else 0))
        ends = [begin for begin, *_ in found[1:]] + [entries[-1][0]]
        return [(begin, end, *rest) for (begin, *rest), end in zip(found, ends)]


def frame_description(encoding, personality, exception_table):
    """The registers lie upwards from 8 * offset below where the frame pointer points, which is 16 bytes
    below the frame's end."""
    yield ".cfi_startproc"
    if personality:
        yield f".cfi_personality 0x9b, .Lat{personality}"
    if exception_table:
        yield f".cfi_lsda 0x1b, .Lat{exception_table}"
    yield from (".cfi_def_cfa rbp, 16", ".cfi_offset rbp, -16")
    offset = encoding >> 16 & 0xFF
    for index in range(5):
        saved = encoding >> (3 * index) & 7
        if saved:
            yield f".cfi_offset {SAVED_REGISTERS[saved]}, {-16 - 8 * (offset - index)}"


def assembly(program, name, file):
    lines = collections.defaultdict(list)  # by offset: what stands there, in front of the bytes
    skips = set()  # where a pointer stands instead of eight bytes
    labels = set()
    for begin, end, encoding, personality, table in program.functions():
        if encoding & FRAME_MODE == FRAME_POINTER:
            lines[begin] += frame_description(encoding, personality, table)
            lines[end].append(".cfi_endproc")
            labels |= {personality, table} - {0}
    for place in labels:
        lines[place].append(f".Lat{place}:")
    exports = dict(program.exports())
    for place, symbol, addend in program.pointers():
        target = f"{name}_begin"
        if symbol in exports:
            addend += exports[symbol]
        elif symbol is not None:
            target = HOST_NAMES.get(symbol[1:], symbol[1:])
        lines[place].append(f'.quad "{target}" + {addend}')
        skips.add(place)
    yield from (".intel_syntax noprefix", f'.section .{name}, "aw", @progbits', ".p2align 12",
                f"{name}_begin:")
    at = 0
    for place in [*sorted(lines), len(program.memory)]:
        if at < place:
            yield f'.incbin "{file}", {at}, {place - at}'
        yield from lines[place]
        at = max(at, place + 8 if place in skips else place)
    sections = map(program.section, ("__objc_selrefs", "__objc_classlist"))
    parts = [*sections, *map(program.bounds, ("__TEXT", "__DATA_CONST"))]
    yield from ('.section .data.rel.ro, "aw", @progbits', ".p2align 3", f".globl {name}", f"{name}:")
    for offset in (program.entry(), *(bound for part in parts for bound in part)):
        yield f".quad {name}_begin + {offset}"
    yield '.section .note.GNU-stack, "", @progbits'


def main():
    path, name, out = sys.argv[1:]
    with open(path, "rb") as file:
        program = Program(macho.Image(macho.slices(file.read())["x86_64"]))
    with open(f"{out}.bytes", "wb") as file:
        file.write(program.memory)
    with open(out, "w", encoding="utf-8") as file:
        file.writelines(f"{line}\n" for line in assembly(program, name, f"{out}.bytes"))


main()
