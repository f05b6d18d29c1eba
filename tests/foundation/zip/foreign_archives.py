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


def by_hand(flags, encoded, wide=False):
    """Folder entries, all stored. `encoded` gives a name as it is stored and its extra fields; `wide` says that the
    directory and the end tell every size and place in 64 bits."""
    body, directory = b"", b""
    most = 0xFFFFFFFF
    for path in TREE:
        data = b"" if path.is_dir() else path.read_bytes()
        name, extra = encoded(f"{path}/" if path.is_dir() else str(path))
        mode = 0o040755 if path.is_dir() else 0o100644

        def common(size, fields):
            return struct.pack("<5H3L2H", 20, flags, 0, 0, 0x5821, zlib.crc32(data), size, size, len(name), len(fields))
        fields = extra + struct.pack("<2H3Q", 1, 24, len(data), len(data), len(body)) if wide else extra
        directory += (b"PK\1\2" + struct.pack("<H", 0x0314) + common(most if wide else len(data), fields) +
                      struct.pack("<3H2L", 0, 0, 0, mode << 16, most if wide else len(body)) + name + fields)
        body += b"PK\3\4" + common(len(data), extra) + name + extra + data
    whole, count = body + directory, len(TREE)
    if wide:
        whole += b"PK\6\6" + struct.pack("<Q2H2L4Q", 44, 45, 45, 0, 0, count, count, len(directory), len(body))
        whole += b"PK\6\7" + struct.pack("<LQL", 0, len(body) + len(directory), 1)
        return whole + b"PK\5\6" + struct.pack("<4H2LH", 0, 0, 0xFFFF, 0xFFFF, most, most, 0)
    return whole + b"PK\5\6" + struct.pack("<4H2LH", 0, 0, count, count, len(directory), len(body), 0)


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
    elif kind == "wide":
        pathlib.Path(file).write_bytes(by_hand(0x800, lambda name: (name.encode(), b""), wide=True))
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
