"""The two ways in which an image tells the loader what its pointers hold.

A pointer is its offset in the segment, the address that it holds, and None; or its offset, None, and a number in the list of
imports, which are names of symbols with the numbers of their libraries. Pointers are sorted.
"""

import struct

PLAIN, ARM64E = 2, 12  # formats of chained pointers
NO_SLOT = 0xFFFF


def _uleb(value):
    encoded = bytearray()
    while value >= 0x80:
        encoded.append(value & 0x7F | 0x80)
        value >>= 7
    return bytes(encoded) + bytes((value,))


def opcodes(segment, pointers, imports):
    """Writes addresses into the segment's pointers. Returns the opcodes that bind the others."""
    binds = b""
    for offset, address, imported in pointers:
        if imported is None:
            struct.pack_into("<Q", segment.contents, offset, address)
            continue
        symbol, library = imports[imported]
        binds += bytes((0x10 | library, 0x40)) + symbol.encode() + b"\0\x51"  # a pointer
        binds += bytes((0x70 | segment.number,)) + _uleb(offset) + b"\x90"
    return binds + b"\0"


def chains(segment, pointers, imports, pointer_format, base, page):
    """Chains the segment's pointers, page by page. Returns the tables that lead to them."""
    pages = [NO_SLOT] * (-(-len(segment.contents) // page))
    for (offset, address, imported), following in zip(pointers, [*pointers[1:], None]):
        if pages[offset // page] == NO_SLOT:
            pages[offset // page] = offset % page
        is_last = following is None or following[0] // page != offset // page
        step = 0 if is_last else following[0] - offset
        if pointer_format == ARM64E:
            value = step // 8 << 51 | (address - base if imported is None else 1 << 62 | imported)
        else:
            value = step // 4 << 51 | (address if imported is None else 1 << 63 | imported)
        struct.pack_into("<Q", segment.contents, offset, value)
    starts = struct.pack("<I", segment.number + 1) + b"\0\0\0\0" * segment.number
    starts += struct.pack("<I", len(starts) + 4)
    fields = (page, pointer_format, segment.address - base, 0, len(pages))
    starts += struct.pack("<IHHQIH", 22 + 2 * len(pages), *fields) + struct.pack(f"<{len(pages)}H", *pages)
    starts += b"\0" * (-len(starts) % 4)
    table, names = b"", b"\0"
    for symbol, library in imports:
        table += struct.pack("<I", library | len(names) << 9)
        names += symbol.encode() + b"\0"
    starts_at = 28  # after seven words
    imports_at = starts_at + len(starts)
    header = struct.pack("<7I", 0, starts_at, imports_at, imports_at + len(table), len(imports), 1, 0)
    return header + starts + table + names
