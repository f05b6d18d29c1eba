"""Mach-O images without code: a header, a segment that maps it, and perhaps Objective-C classes."""

import dataclasses
import struct

from device_parts import fixups, objc

EXECUTE, DYLIB, BUNDLE = 2, 6, 8
ARM64 = 0x0100000C
SUBTYPE_ALL, SUBTYPE_ARM64E = 0, 0x80000002
PAGE = 0x4000

MAGIC_64, FAT_MAGIC = 0xFEEDFACF, 0xCAFEBABE
SEGMENT_64, ID_DYLIB, LOAD_DYLIB, RUN_PATH, BUILD_VERSION = 0x19, 0x0D, 0x0C, 0x8000001C, 0x32
DYLD_INFO, CHAINED_FIXUPS = 0x80000022, 0x80000034
NO_UNDEFINED, DYLD_LINKED, TWO_LEVEL, PIE = 0x1, 0x4, 0x80, 0x200000
IOS = 2
READ_EXECUTE, READ_WRITE, READ = 5, 3, 1
HEADER_SIZE = 32
TEXTS = "__cstring"  # the section of all texts


@dataclasses.dataclass
class Segment:
    """A part of the file with its address in memory; `sections` are offsets and sizes in it, by name."""

    number: int
    name: bytes
    protection: int
    address: int
    offset: int = 0
    contents: bytearray = dataclasses.field(default_factory=bytearray)
    sections: dict = dataclasses.field(default_factory=dict)

    def next(self, name, protection, page, **fields):
        """The segment on the page after this one."""
        self.contents += b"\0" * (-len(self.contents) % page)
        size = len(self.contents)
        return Segment(self.number + 1, name, protection, self.address + size, self.offset + size, **fields)


def _version(major, minor):
    return major << 16 | minor << 8


def _command(number, contents):
    size = (8 + len(contents) + 7) // 8 * 8
    return struct.pack("<II", number, size) + contents.ljust(size - 8, b"\0")


def _segment(segment, page):
    size = len(segment.contents)
    name = segment.name.ljust(16, b"\0")
    contents = name + struct.pack("<QQQQ", segment.address, -(-size // page) * page, segment.offset, size)
    contents += struct.pack("<IIII", segment.protection, segment.protection, len(segment.sections), 0)
    for section, (start, length) in segment.sections.items():
        contents += section.encode().ljust(16, b"\0") + name
        contents += struct.pack("<QQ8I", segment.address + start, length, segment.offset + start, 3, *([0] * 6))
    return _command(SEGMENT_64, contents)


def _dylib(number, name):
    name_offset = 24  # from the start of the command
    fields = struct.pack("<IIII", name_offset, 0, _version(1, 0), _version(1, 0))
    return _command(number, fields + name.encode() + b"\0")


def _commands(segments, page, install_name, libraries, run_paths, tables):
    """`tables` are the fixups' load command and its words, or None."""
    commands = [_segment(each, page) for each in segments]
    if install_name:
        commands.append(_dylib(ID_DYLIB, install_name))
    commands.append(_command(BUILD_VERSION, struct.pack("<IIII", IOS, _version(14, 0), _version(15, 0), 0)))
    commands += [_dylib(LOAD_DYLIB, each) for each in libraries]
    for each in run_paths:
        name_offset = 12  # from the start of the command
        commands.append(_command(RUN_PATH, struct.pack("<I", name_offset) + each.encode() + b"\0"))
    if tables:
        number, words = tables
        commands.append(_command(number, struct.pack(f"<{len(words)}I", *words)))
    return commands


def _pointers(metadata, addresses, data_address):
    """What fixups need of the metadata: the pointers, and the imports."""
    pointers, imports = [], {}
    for offset, target in sorted(metadata.pointers.items()):
        if isinstance(target, objc.Import):
            number = imports.setdefault((target.symbol, target.library), len(imports))
            pointers.append((offset, None, number))
        else:
            pointers.append((offset, addresses[target] if isinstance(target, str) else data_address + target, None))
    return pointers, list(imports)


def _add_metadata(text, metadata, commands_size, pointer_format, page):
    """Fills the text segment up with the texts. Returns the other segments, and the load command of the fixups."""
    base = text.address
    text.contents += b"\0" * (HEADER_SIZE + commands_size - len(text.contents))
    start = len(text.contents)
    addresses = {}
    for each in metadata.texts():
        addresses[each] = base + len(text.contents)
        text.contents += each.encode() + b"\0"
    text.sections[TEXTS] = (start, len(text.contents) - start)
    data = text.next(b"__DATA", READ_WRITE, page, contents=bytearray(metadata.data), sections=metadata.sections)
    pointers, imports = _pointers(metadata, addresses, data.address)
    if pointer_format is None:
        tables = fixups.opcodes(data, pointers, imports)
        linker_data = data.next(b"__LINKEDIT", READ, page, contents=bytearray(tables))
        return [data, linker_data], (DYLD_INFO, (0, 0, linker_data.offset, len(tables), *([0] * 6)))
    tables = fixups.chains(data, pointers, imports, pointer_format, base, page)
    linker_data = data.next(b"__LINKEDIT", READ, page, contents=bytearray(tables))
    return [data, linker_data], (CHAINED_FIXUPS, (linker_data.offset, len(tables)))


def thin(
    file_type,
    install_name=None,
    libraries=(),
    run_paths=(),
    subtype=SUBTYPE_ALL,
    metadata=None,
    pointer_format=None,
    page=PAGE,
):
    """One arm64 image. `install_name` is a dylib's own. `metadata` are objc.Metadata, in which libraries count from 1; their
    pointers are of a format of fixups, or without one bound by opcodes."""
    libraries = (*libraries, "/usr/lib/libSystem.B.dylib")
    text = Segment(0, b"__TEXT", READ_EXECUTE, 0x100000000 if file_type == EXECUTE else 0)
    segments, tables = [text], None
    if metadata:
        text.sections[TEXTS] = (0, 0)  # the sizes of commands do not depend on the numbers in them
        sections = Segment(1, b"", 0, 0, sections=metadata.sections)
        command = (DYLD_INFO, [0] * 10) if pointer_format is None else (CHAINED_FIXUPS, [0] * 2)
        sketch = _commands([text, sections, text], page, install_name, libraries, run_paths, command)
        more, tables = _add_metadata(text, metadata, len(b"".join(sketch)), pointer_format, page)
        segments += more
    else:
        text.contents += b"\0" * page
    commands = _commands(segments, page, install_name, libraries, run_paths, tables)
    body = b"".join(commands)
    flags = NO_UNDEFINED | DYLD_LINKED | TWO_LEVEL | (PIE if file_type == EXECUTE else 0)
    header = struct.pack("<8I", MAGIC_64, ARM64, subtype, file_type, len(commands), len(body), flags, 0)
    text.contents[: len(header) + len(body)] = header + body
    return b"".join(bytes(each.contents) for each in segments)


def joined(images, page=PAGE):
    """A fat file of these images."""
    file, slices = struct.pack(">II", FAT_MAGIC, len(images)), b""
    for image in images:
        place = (page + len(slices), len(image), page.bit_length() - 1)
        file += struct.pack(">5I", *struct.unpack_from("<II", image, 4), *place)
        slices += image + b"\0" * (-len(image) % page)
    return file.ljust(page, b"\0") + slices


def fat(file_type, **options):
    """The image for arm64 and for arm64e."""
    arm64e = {"subtype": SUBTYPE_ARM64E, "pointer_format": fixups.ARM64E}
    return joined([thin(file_type, **options), thin(file_type, **arm64e, **options)])
