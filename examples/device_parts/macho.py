"""Mach-O images with a header, one segment that maps it, and no code."""

import struct

EXECUTE, DYLIB, BUNDLE = 2, 6, 8
ARM64 = 0x0100000C
SUBTYPE_ALL, SUBTYPE_ARM64E = 0, 0x80000002
PAGE = 0x4000

MAGIC_64, FAT_MAGIC = 0xFEEDFACF, 0xCAFEBABE
SEGMENT_64, ID_DYLIB, LOAD_DYLIB, BUILD_VERSION = 0x19, 0x0D, 0x0C, 0x32
NO_UNDEFINED, DYLD_LINKED, TWO_LEVEL, PIE = 0x1, 0x4, 0x80, 0x200000
IOS = 2
READ_EXECUTE = 5


def _version(major, minor):
    return major << 16 | minor << 8


def _command(number, contents):
    size = (8 + len(contents) + 7) // 8 * 8
    return struct.pack("<II", number, size) + contents.ljust(size - 8, b"\0")


def _segment(name, address):
    ranges = struct.pack("<QQQQ", address, PAGE, 0, PAGE)
    return _command(SEGMENT_64, name.ljust(16, b"\0") + ranges + struct.pack("<IIII", READ_EXECUTE, READ_EXECUTE, 0, 0))


def _dylib(number, name):
    name_offset = 24  # from the start of the command
    fields = struct.pack("<IIII", name_offset, 0, _version(1, 0), _version(1, 0))
    return _command(number, fields + name.encode() + b"\0")


def thin(file_type, install_name=None, libraries=(), subtype=SUBTYPE_ALL):
    """One arm64 image of a page; `install_name` is a dylib's own."""
    commands = [_segment(b"__TEXT", 0x100000000 if file_type == EXECUTE else 0)]
    if install_name:
        commands.append(_dylib(ID_DYLIB, install_name))
    commands.append(_command(BUILD_VERSION, struct.pack("<IIII", IOS, _version(14, 0), _version(15, 0), 0)))
    for library in (*libraries, "/usr/lib/libSystem.B.dylib"):
        commands.append(_dylib(LOAD_DYLIB, library))
    flags = NO_UNDEFINED | DYLD_LINKED | TWO_LEVEL | (PIE if file_type == EXECUTE else 0)
    body = b"".join(commands)
    header = struct.pack("<8I", MAGIC_64, ARM64, subtype, file_type, len(commands), len(body), flags, 0)
    return (header + body).ljust(PAGE, b"\0")


def fat(file_type, **options):
    """The image for arm64 and for arm64e."""
    page_bits = PAGE.bit_length() - 1
    file = struct.pack(">II", FAT_MAGIC, 2)
    slices = b""
    for subtype in (SUBTYPE_ALL, SUBTYPE_ARM64E):
        image = thin(file_type, subtype=subtype, **options)
        file += struct.pack(">5I", ARM64, subtype, PAGE + len(slices), len(image), page_bits)
        slices += image
    return file.ljust(PAGE, b"\0") + slices
