"""Icons as they lie in app bundles, drawn here: a rounded tile with a disc, its edges smooth."""

import math
import struct
import zlib

SIGNATURE = b"\x89PNG\r\n\x1a\n"
RGBA = 6


def _chunk(kind, contents):
    body = kind + contents
    return struct.pack(">I", len(contents)) + body + struct.pack(">I", zlib.crc32(body))


def _coverage(distance, pixel):
    """How much of a pixel lies inside an edge: `distance` is its centre's, negative inside."""
    return min(max(0.5 - distance / pixel, 0), 1)


def _pixels(width, height, tile, disc):
    """Yields red, green, blue, multiplied by the alpha that follows, row by row; the tile is 1 by 1."""
    corner, radius, pixel = 0.22, 0.28, 1 / width
    for row in range(height):
        y = (row + 0.5) / height
        shade = 1 - 0.35 * y  # darker downwards
        for column in range(width):
            x = (column + 0.5) / width
            from_corner = math.hypot(max(abs(x - 0.5) - 0.5 + corner, 0), max(abs(y - 0.5) - 0.5 + corner, 0))
            alpha = _coverage(from_corner - corner, pixel)
            share = _coverage(math.hypot(x - 0.5, y - 0.5) - radius, pixel)
            mixed = (alpha * (below * shade * (1 - share) + above * share) for below, above in zip(tile, disc))
            yield *(round(part) for part in mixed), round(255 * alpha)


def _rows(width, samples):
    """The rows, each after the number of its filter: the difference from the pixel to the left."""
    rows = bytearray()
    for start in range(0, len(samples), width * 4):
        row = samples[start : start + width * 4]
        rows.append(1)
        rows += row[:4]
        rows += bytes((byte - left) & 255 for byte, left in zip(row[4:], row))
    return bytes(rows)


def _header(width, height):
    return _chunk(b"IHDR", struct.pack(">IIBBBBB", width, height, 8, RGBA, 0, 0, 0))


def cgbi(width, height, tile, disc):
    """The device's own form: blue, green, red, multiplied by alpha, in a deflate stream without a frame."""
    samples = bytearray()
    for red, green, blue, alpha in _pixels(width, height, tile, disc):
        samples += bytes((blue, green, red, alpha))
    deflate = zlib.compressobj(9, wbits=-zlib.MAX_WBITS)
    data = deflate.compress(_rows(width, samples)) + deflate.flush()
    marker = _chunk(b"CgBI", b"\x50\x00\x20\x02")
    return SIGNATURE + marker + _header(width, height) + _chunk(b"IDAT", data) + _chunk(b"IEND", b"")


def png(width, height, tile, disc):
    """The same picture in the ordinary form."""
    samples = bytearray()
    for *color, alpha in _pixels(width, height, tile, disc):
        samples += bytes(min(255, (part * 255 + alpha // 2) // alpha) if alpha else 0 for part in color)
        samples.append(alpha)
    data = zlib.compress(_rows(width, samples), 9)
    return SIGNATURE + _header(width, height) + _chunk(b"IDAT", data) + _chunk(b"IEND", b"")
