"""Writes archives of the folder Payload in ways of other programs that their commands have no option for.

    foreign_archives.py KIND ARCHIVE
"""
import pathlib
import struct
import sys
import zipfile
import zlib

TREE = [pathlib.Path("Payload"), *sorted(pathlib.Path("Payload").rglob("*"))]


def by_library(archive, wide):
    for path in TREE:
        info = zipfile.ZipInfo.from_file(path)
        info.compress_type = zipfile.ZIP_DEFLATED
        with archive.open(info, "w", force_zip64=wide) as out:
            out.write(b"" if path.is_dir() else path.read_bytes())


class OneWay:
    """A file that cannot go back, as a pipe."""

    def __init__(self, file):
        self.file = file

    def write(self, data):
        return self.file.write(data)

    def flush(self):
        self.file.flush()


def by_hand(flags, encoded):
    """Folder entries, all stored. `encoded` gives a name as it is stored and its extra fields."""
    body, directory = b"", b""
    for path in TREE:
        data = b"" if path.is_dir() else path.read_bytes()
        name, extra = encoded(f"{path}/" if path.is_dir() else str(path))
        mode = 0o040755 if path.is_dir() else 0o100644
        common = struct.pack("<5H3L2H", 20, flags, 0, 0, 0x5821, zlib.crc32(data), len(data), len(data), len(name), len(extra))
        directory += (b"PK\1\2" + struct.pack("<H", 0x0314) + common + struct.pack("<3H2L", 0, 0, 0, mode << 16, len(body)) +
                      name + extra)
        body += b"PK\3\4" + common + name + extra + data
    return body + directory + b"PK\5\6" + struct.pack("<4H2LH", 0, 0, len(TREE), len(TREE), len(directory), len(body), 0)


def in_old_letters(name):
    stored = name.encode("cp437")
    path = name.encode()
    return stored, struct.pack("<HHBL", 0x7075, 5 + len(path), 1, zlib.crc32(stored)) + path


def main():
    kind, file = sys.argv[1:]
    if kind == "zip64":
        with zipfile.ZipFile(file, "w") as archive:
            by_library(archive, True)
    elif kind == "stream":
        with open(file, "wb") as out, zipfile.ZipFile(OneWay(out), "w") as archive:
            by_library(archive, False)
    elif kind == "mobile":
        pathlib.Path(file).write_bytes(by_hand(0x800, lambda name: (name.encode(), b"")))
    elif kind == "unicodepath":
        pathlib.Path(file).write_bytes(by_hand(0, in_old_letters))
    elif kind == "nested":
        # An empty archive, stored last, whose end may be taken for that of the whole.
        pathlib.Path("Payload/z.zip").write_bytes(b"PK\5\6" + bytes(18))
        TREE.append(pathlib.Path("Payload/z.zip"))
        pathlib.Path(file).write_bytes(by_hand(0x800, lambda name: (name.encode(), b"")))
    else:
        sys.exit(f"unknown kind {kind}")


if __name__ == "__main__":
    main()
