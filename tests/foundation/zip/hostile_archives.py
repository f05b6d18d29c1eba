"""Writes archives that must be refused, each for a fault of its own, and a list of them.

    hostile_archives.py FOLDER OUTSIDE

FOLDER/list has a line for each: file name, key of the error, "=" and what the error names (in hexadecimal, as names may
hold anything) or "-" where the test does not look. OUTSIDE is a path that some of the archives try to write to.
The tests unpack with small limits: 50 entries, 1 MiB an entry, 2 MiB in all, 20 to 1 after 256 KiB.
"""
import pathlib
import re
import struct
import sys
import zlib

LINK, PIPE, DEVICE, BLOCK, SOCKET = 0o120777, 0o010644, 0o020644, 0o060644, 0o140644
UTF8, DESCRIPTOR, ENCRYPTED = 0x800, 0x8, 0x1


class Entry:
    """One entry as it should be; keywords that begin with `local_` lie in the local record only."""

    def __init__(self, name, data=b"data", *, method=8, mode=0o100644, flags=0, extra=b"", **changes):
        self.name = name.encode() if isinstance(name, str) else name
        self.extra, self.flags, self.method = extra, flags, method
        self.mode = 0o040755 if self.name.endswith(b"/") and mode == 0o100644 else mode
        if self.name.endswith(b"/") and data == b"data":
            data = b""
        packer = zlib.compressobj(9, zlib.DEFLATED, -15)
        self.data = packer.compress(data) + packer.flush() if method == 8 else data
        self.crc, self.csize, self.size = zlib.crc32(data), len(self.data), len(data)
        self.descriptor, self.offset, self.made_by = b"", None, 0x031E
        self.__dict__.update(changes)

    def value(self, field):
        return self.__dict__.get("local_" + field, getattr(self, field))

    def local(self):
        name, extra = self.value("name"), self.__dict__.get("local_extra", b"")
        return (self.__dict__.get("signature", b"PK\3\4") +
                struct.pack("<5H3L2H", 20, self.value("flags"), self.value("method"), 0, 0x21, self.value("crc"),
                            self.value("csize"), self.value("size"), len(name), len(extra)) +
                name + extra + self.data + self.descriptor)

    def central(self, offset):
        offset = offset if self.offset is None else self.offset
        return (b"PK\1\2" + struct.pack("<6H3L5H2L", self.made_by, 20, self.flags, self.method, 0, 0x21, self.crc,
                                        self.csize, self.size, len(self.name), len(self.extra), 0, 0, 0,
                                        self.mode << 16, offset) + self.name + self.extra)


def archive(*entries, count=None, size=None, offset=None, disk=0, comment=b"", tail=b"", before_end=b"", prefix=b"",
            drop=0):
    body, directory = prefix, b""
    for entry in entries:
        directory += entry.central(len(body))
        body += entry.local()
    directory = directory[:len(directory) - drop]
    count = len(entries) if count is None else count
    end = struct.pack("<4H2LH", disk, disk, count, count, len(directory) if size is None else size,
                      len(body) if offset is None else offset, len(comment))
    return body + directory + before_end + b"PK\5\6" + end + comment + tail


def wide_end(directory_end, count=0, size=0, offset=0, at=None, disk=0):
    """A 64-bit end record and its locator."""
    record = b"PK\6\6" + struct.pack("<Q2H2L4Q", 44, 45, 45, disk, disk, count, count, size, offset)
    return record + b"PK\6\7" + struct.pack("<LQL", 0, directory_end if at is None else at, 1)


def noise(count):
    out, state = bytearray(), 1
    for _ in range(count):
        state = (state * 1103515245 + 12345) & 0x7FFFFFFF
        out.append(state >> 16 & 0xFF)
    return bytes(out)


def unicode_path(stored, name):
    return struct.pack("<HHBL", 0x7075, 5 + len(name), 1, zlib.crc32(stored)) + name


def bad_names(outside):
    """(case, name) of names that no entry may have."""
    return [
        ("absoluteName", outside + "/absolute"), ("absoluteName", "/"), ("absoluteName", "//server/share"),
        ("absoluteName", "C:/windows"), ("absoluteName", "c:relative"), ("absoluteName", "C:\\windows"),
        ("parentReference", "../escape"), ("parentReference", "Payload/../../escape"), ("parentReference", ".."),
        ("parentReference", "Payload/.."), ("parentReference", "Payload/../"), ("parentReference", "Payload/x/../y"),
        ("invalidName", ""), ("invalidName", "."), ("invalidName", "./Payload"), ("invalidName", "Payload/./x"),
        ("invalidName", "Payload//x"), ("invalidName", "Payload//"), ("invalidName", "Payload/."),
        ("invalidName", "Payload\\x"), ("invalidName", "..\\escape"), ("invalidName", "Payload\\..\\..\\escape"),
        ("invalidName", "Payload/x\0.png"), ("invalidName", "\0"), ("invalidName", "Payload/" + "x" * 256),
        ("invalidName", "/".join(["12345678"] * 120)),
    ]


def cases(outside):
    """(case, what the error names, bytes of the archive)"""
    good, second = Entry("Payload/good"), Entry("Payload/second")
    for case, name in bad_names(outside):
        yield case, name, archive(good, Entry(name, flags=UTF8))
    yield "invalidName", "Payload/\ufffd", archive(Entry(b"Payload/\xff", flags=UTF8))
    yield "invalidName", "Payload/\ufffd\ufffd", archive(Entry(b"Payload/\xc0\xaf", flags=UTF8))  # an overlong slash
    yield "parentReference", "../é", archive(Entry(b"../\x82"))  # code page 437
    yield "parentReference", "../hidden", archive(Entry("plain", extra=unicode_path(b"plain", b"../hidden")))
    yield "invalidName", "\ufffd", archive(Entry("plain", extra=unicode_path(b"plain", b"\xff")))

    yield "duplicateName", "Payload/good", archive(good, Entry("Payload/good", b"other"))
    yield "duplicateName", "Payload/", archive(Entry("Payload/"), good, Entry("Payload/"))
    yield "duplicateName", "e\u0301", archive(Entry("\u00e9", flags=UTF8), Entry("e\u0301", flags=UTF8))
    yield "duplicateName", "\u00e9/x", archive(Entry("e\u0301/x", flags=UTF8), Entry("\u00e9/x", flags=UTF8))
    yield "duplicateName", "\uac00", archive(Entry("\u1100\u1161", flags=UTF8), Entry("\uac00", flags=UTF8))
    yield "duplicateName", "\u212b", archive(Entry("\u00c5", flags=UTF8), Entry("\u212b", flags=UTF8))
    yield "duplicateName", "é", archive(Entry("é", flags=UTF8), Entry(b"\x82"))  # code page 437
    yield "fileAsFolder", "Payload/good/below", archive(good, Entry("Payload/good/below"))
    yield "fileAsFolder", "Payload", archive(good, Entry("Payload"))
    yield "fileAsFolder", "Payload/good/", archive(good, Entry("Payload/good/"))
    yield "fileAsFolder", "a", archive(Entry("a/"), Entry("a"))
    yield "fileAsFolder", "folder", archive(Entry("folder", mode=0o040755))
    yield "fileAsFolder", "folder/", archive(Entry("folder/", b"bytes"))

    yield "symbolicLink", "link", archive(Entry("link", outside.encode(), mode=LINK))
    yield "symbolicLink", "Payload/l", archive(Entry("Payload/l", outside.encode(), mode=LINK), Entry("Payload/l/evil"))
    yield "symbolicLink", "l/", archive(Entry("l/", mode=LINK), Entry("l/evil"))
    yield "symbolicLink", "dos", archive(Entry("dos", b"/", mode=LINK, made_by=0x0014))
    for name, mode in [("pipe", PIPE), ("device", DEVICE), ("block", BLOCK), ("socket", SOCKET)]:
        yield "specialFile", name, archive(good, Entry(name, b"", mode=mode))

    yield "unsupportedEntry", "secret", archive(Entry("secret", flags=ENCRYPTED))
    yield "unsupportedEntry", "strong", archive(Entry("strong", flags=ENCRYPTED | 0x40))
    yield "unsupportedEntry", "aes", archive(Entry("aes", method=99))
    yield "unsupportedEntry", "patch", archive(Entry("patch", flags=0x20))
    yield "unsupportedEntry", "masked", archive(Entry("masked", flags=0x2000))
    for method in [1, 6, 9, 12, 14, 93, 95, 0xFFFF]:
        yield "unsupportedEntry", f"m{method}", archive(Entry(f"m{method}", method=method))

    def mismatch(**changes):
        return archive(good, Entry("Payload/liar", **changes))
    for changes in [{"local_name": b"Payload/evil"}, {"local_name": b"../../escape"}, {"local_name": b"Payload/liar/"},
                    {"local_method": 0}, {"local_flags": ENCRYPTED}, {"local_flags": UTF8}, {"local_flags": DESCRIPTOR},
                    {"local_crc": 1}, {"local_crc": 0}, {"local_size": 5}, {"local_csize": 2}, {"local_size": 0},
                    {"signature": b"PK\3\5"}, {"signature": b"PK\1\2"}, {"offset": 1}, {"offset": 0x7FFFFFFF}]:
        yield "recordMismatch", "Payload/liar", mismatch(**changes)
    streamed = {"flags": DESCRIPTOR, "local_crc": 0, "local_size": 0, "local_csize": 0}
    yield "recordMismatch", "Payload/liar", mismatch(**streamed)  # no descriptor
    yield "recordMismatch", "Payload/liar", mismatch(**streamed, descriptor=struct.pack("<4s3L", b"PK\7\x08", 1, 6, 4))
    yield "recordMismatch", "Payload/liar", mismatch(**{**streamed, "local_size": 9})
    yield "recordMismatch", "Payload/liar", mismatch(local_size=0xFFFFFFFF, local_csize=0xFFFFFFFF,
                                                     local_extra=struct.pack("<2H2Q", 1, 16, 5, 6))

    yield "overlappingEntry", "two", overlap_same()
    yield "overlappingEntry", "inner", overlap_inside()
    yield "overlappingEntry", "long", archive(Entry("long", method=0, size=100, csize=100))
    yield "overlappingEntry", "far", archive(Entry("far", method=0, size=100000, csize=100000))

    yield "checksumMismatch", "sum", archive(Entry("sum", crc=1))
    yield "checksumMismatch", "stored", archive(Entry("stored", method=0, crc=1))
    yield "checksumMismatch", "Payload/second", archive(good, Entry("Payload/second", b"", crc=1))
    yield "checksumMismatch", "empty", archive(Entry("empty", b"", method=0, crc=1))
    yield "checksumMismatch", "folder/", archive(Entry("folder/", crc=1))
    yield "sizeMismatch", "more", archive(Entry("more", b"x" * 1000, size=5))
    yield "sizeMismatch", "less", archive(Entry("less", b"x" * 10, size=1000))
    yield "sizeMismatch", "none", archive(Entry("none", b"x", size=0))
    yield "sizeMismatch", "stored", archive(Entry("stored", method=0, size=3))
    yield "sizeMismatch", "bomb", archive(Entry("bomb", bytes(1 << 24), size=5))  # lies about its size
    cut = Entry("cut", noise(1000))
    cut.data, cut.csize = cut.data[:500], 500
    yield "sizeMismatch", "cut", archive(cut)
    yield "damagedData", "garbage", archive(garbage())

    many = [Entry(f"{number}") for number in range(51)]
    yield "tooManyEntries", "50", archive(*many)
    yield "tooManyEntries", "50", archive(good, count=0xFFFF)
    yield "tooManyEntries", "50", archive(*(Entry(f"{number}/x") for number in range(26)))  # with their folders
    yield "tooManyEntries", "50", archive(Entry("/".join("d" * 51)))
    whole = archive(good)[:-22]
    start = whole.index(b"PK\1\2")
    yield "tooManyEntries", "50", archive(good, count=0xFFFF, before_end=wide_end(
        len(whole), 1 << 62, len(whole) - start, start))
    yield "entryTooLarge", "big", archive(Entry("big", noise(1 << 10) * 1025))
    yield "entryTooLarge", "huge", archive(Entry("huge", size=0xFFFFFFFE))
    yield "entryTooLarge", "wide", archive(Entry("wide", size=0xFFFFFFFF, extra=(
        wide := struct.pack("<2HQ", 1, 8, 1 << 63)), local_extra=wide))
    part = noise(1 << 20)
    yield "archiveTooLarge", "3", archive(*(Entry(str(i), part) for i in range(1, 4)))
    yield "ratioTooHigh", "zeros", archive(Entry("zeros", bytes(1 << 20)))
    yield "ratioTooHigh", "5", archive(*(Entry(str(i), bytes(60000)) for i in range(1, 9)))

    yield from damaged(good, second)


def overlap_same():
    """Two entries of one local record: names differ only in the directory, by the Unicode path."""
    first = Entry("one")
    return archive(first, Entry("one", extra=unicode_path(b"one", b"two"), offset=0))


def overlap_inside():
    """A whole entry inside the stored data of another."""
    inner = Entry("inner")
    outer = Entry("outer", inner.local(), method=0)
    return archive(outer, Entry("inner", offset=30 + len("outer")))


def garbage():
    entry = Entry("garbage")
    entry.data = b"\xff" * entry.csize
    return entry


def damaged(good, second):
    """Archives whose end or directory is at fault; the errors tell what is wrong, not an entry."""
    whole = archive(good, second)
    start = whole.index(b"PK\1\2")
    size = len(whole) - start - 22
    for data in [
            b"", b"PK", b"PK\3\4", b"not an archive" * 100, whole[:-1], whole[:-22], whole[:start], whole[10:],
            archive(good, tail=b"x"), archive(good, tail=bytes(9) + b"x"), archive(good, tail=bytes(70000)), b"#!/bin/sh\n" + whole, whole[:-22] + bytes(70000) + whole[-22:],
            archive(good, second, count=1), archive(good, second, count=3), archive(good, disk=1),
            archive(good, size=1), archive(good, size=0xFFFFFFF0), archive(good, offset=0), archive(good, drop=1),
            archive(good, offset=0xFFFFFFFF), archive(good, before_end=b"gap"),
            archive(good, comment=b"PK\5\6" + bytes(18)),  # an empty archive at its end
            whole.replace(b"PK\1\2", b"PK\1\1"),
            archive(Entry("wide", size=0xFFFFFFFF, extra=struct.pack("<2HL", 1, 4, 1))),
            archive(good, second, before_end=wide_end(start + size, 2, size, start, at=0)),
            archive(good, second, before_end=wide_end(start + size, 2, size, start, at=1 << 63)),
            archive(good, second, before_end=wide_end(start + size, 3, size, start)),
            archive(good, second, before_end=wide_end(start + size, 2, size + 1, start)),
            archive(good, second, before_end=wide_end(start + size, 2, size, start, disk=1)),
    ]:
        yield "damagedArchive", None, data


def main():
    folder, outside = pathlib.Path(sys.argv[1]), sys.argv[2]
    lines, seen = [], set()
    for number, (case, name, data) in enumerate(cases(outside)):
        assert data not in seen, f"{number} is there twice"
        seen.add(data)
        file = f"{number:03}.zip"
        (folder / file).write_bytes(data)
        key = re.sub("([A-Z])", r"_\1", case).lower()
        lines.append(f"{file} {key} {'-' if name is None else '=' + name.encode().hex()}")
    (folder / "list").write_text("\n".join(lines) + "\n")


if __name__ == "__main__":
    main()
