"""Reads what the checks need of a Mach-O file: load commands, strings and the code signature."""
import hashlib
import struct

FAT = 0xCAFEBABE
THIN = 0xFEEDFACF
CPU_TYPES = {0x01000007: "x86_64", 0x0100000C: "arm64"}

LC_SYMTAB = 0x02
LC_LOAD_DYLIB = 0x0C
LC_SEGMENT_64 = 0x19
LC_CODE_SIGNATURE = 0x1D
LC_BUILD_VERSION = 0x32
LC_RPATH = 0x8000001C
LC_MAIN = 0x80000028
LC_DYLD_CHAINED_FIXUPS = 0x80000034

SUPER_BLOB = 0xFADE0CC0
CODE_DIRECTORY = 0xFADE0C02
ADHOC = 2
SHA256 = 2


class Malformed(Exception):
    pass


def slices(data):
    """Of a universal or a thin file: architecture and bytes of each."""
    if struct.unpack_from(">I", data)[0] != FAT:
        return {CPU_TYPES[struct.unpack_from("<I", data, 4)[0]]: data}
    count = struct.unpack_from(">I", data, 4)[0]
    result = {}
    for index in range(count):
        cpu, _, offset, size, _ = struct.unpack_from(">IIIII", data, 8 + 20 * index)
        result[CPU_TYPES[cpu]] = data[offset : offset + size]
    return result


def text_at(data, offset, end=None):
    return data[offset : data.index(b"\0", offset, end)].decode()


class Image:
    def __init__(self, data):
        if struct.unpack_from("<I", data)[0] != THIN:
            raise Malformed("no 64-bit Mach-O")
        self.data = data
        self.minimum_system = None
        self.dylibs = []
        self.rpaths = []
        self.segments = []  # name, address, size, offset in the file, size there
        self.places = {}  # of sections: address, size
        self.sections = {}
        self.commands = {}  # where each begins; the last of a kind
        self._signature = None
        offset = 32
        for _ in range(struct.unpack_from("<I", data, 16)[0]):
            command, size = struct.unpack_from("<II", data, offset)
            self._read(command, offset, size)
            offset += size

    def _read(self, command, offset, size):
        data = self.data
        self.commands[command] = offset
        if command == LC_BUILD_VERSION:
            platform, version = struct.unpack_from("<II", data, offset + 8)
            self.minimum_system = (platform, f"{version >> 16}.{version >> 8 & 0xFF}")
        elif command in (LC_LOAD_DYLIB, LC_RPATH):
            name = text_at(data, offset + struct.unpack_from("<I", data, offset + 8)[0])
            (self.dylibs if command == LC_LOAD_DYLIB else self.rpaths).append(name)
        elif command == LC_CODE_SIGNATURE:
            self._signature = struct.unpack_from("<II", data, offset + 8)
        elif command == LC_SEGMENT_64:
            name, *place = struct.unpack_from("<16sQQQQ", data, offset + 8)
            self.segments.append((name.rstrip(b"\0").decode(), *place))
            for index in range(struct.unpack_from("<I", data, offset + 64)[0]):
                at = offset + 72 + 80 * index
                name = data[at : at + 16].rstrip(b"\0").decode()
                address, length, start = struct.unpack_from("<QQI", data, at + 32)
                self.places[name] = (address, length)
                self.sections[name] = data[start : start + length]

    def strings(self, section):
        return {text.decode() for text in self.sections.get(section, b"").split(b"\0") if text}

    def signature_complaints(self):
        if self._signature is None:
            yield "it is not signed"
            return
        start, _ = self._signature
        magic, _, count = struct.unpack_from(">III", self.data, start)
        if magic != SUPER_BLOB:
            yield "the signature is malformed"
            return
        directories = 0
        for index in range(count):
            blob = start + struct.unpack_from(">I", self.data, start + 16 + 8 * index)[0]
            if struct.unpack_from(">I", self.data, blob)[0] == CODE_DIRECTORY:
                directories += 1
                yield from self._directory_complaints(blob, start)
        if directories == 0:
            yield "the signature has no code directory"

    def _directory_complaints(self, blob, signature_start):
        fields = struct.unpack_from(">IIIIIIIBBBB", self.data, blob + 8)
        _, flags, hashes, _, _, pages, limit, hash_size, hash_type, _, page_bits = fields
        if not flags & ADHOC:
            yield "the signature is not an ad-hoc one"
        if limit != signature_start:
            yield f"the signature covers {limit} bytes of {signature_start}"
        if hash_type != SHA256 or pages == 0:
            yield "the signature has no SHA-256 of a page"
            return
        for page in range(pages):
            first = page << page_bits
            digest = hashlib.sha256(self.data[first : min(first + (1 << page_bits), limit)]).digest()
            at = blob + hashes + page * hash_size
            if self.data[at : at + hash_size] != digest:
                yield f"page {page} is not the one that was signed"
