#!/usr/bin/env python3
"""Makes JPEG files record 72 dots per inch, changing only the density bytes in place.

Every tool then converts one pixel to one pixel: Ormidon draws a file at its recorded size
(pixels x 72 / dpi at 72 dpi output), the other tools ignore the field. Both places a JPEG may
record its resolution are rewritten: the JFIF header's density and the EXIF X/Y resolution with
its unit. Nothing else of the file changes, so the pixels and the compressed data stay the same.

    set_density_72.py FILE...
"""
import struct
import sys


def patch_exif(data, start, length):
    tiff = start + 10  # after the segment length and "Exif\0\0"
    if data[tiff:tiff + 2] == b"II":
        e = "<"
    elif data[tiff:tiff + 2] == b"MM":
        e = ">"
    else:
        return
    (ifd,) = struct.unpack_from(e + "I", data, tiff + 4)
    pos = tiff + ifd
    if pos + 2 > start + length + 2:
        return
    (count,) = struct.unpack_from(e + "H", data, pos)
    for i in range(count):
        entry = pos + 2 + 12 * i
        tag, kind, n, value = struct.unpack_from(e + "HHII", data, entry)
        if tag in (0x011A, 0x011B) and kind == 5 and n == 1:  # X/YResolution, one RATIONAL
            struct.pack_into(e + "II", data, tiff + value, 72, 1)
        elif tag == 0x0128 and kind == 3:  # ResolutionUnit, SHORT: 2 = inch
            struct.pack_into(e + "H", data, entry + 8, 2)


def patch(path):
    with open(path, "rb") as f:
        data = bytearray(f.read())
    if data[:2] != b"\xff\xd8":
        return False
    pos = 2
    while pos + 4 <= len(data) and data[pos] == 0xFF:
        marker = data[pos + 1]
        if marker in (0xD9, 0xDA):  # end of image, start of scan: no header segment follows
            break
        (length,) = struct.unpack_from(">H", data, pos + 2)
        body = pos + 4
        if marker == 0xE0 and data[body:body + 5] == b"JFIF\0":
            data[body + 7] = 1  # units: dots per inch
            struct.pack_into(">HH", data, body + 8, 72, 72)
        elif marker == 0xE1 and data[body:body + 6] == b"Exif\0\0":
            patch_exif(data, pos, length)
        pos += 2 + length
    with open(path, "wb") as f:
        f.write(data)
    return True


if __name__ == "__main__":
    for p in sys.argv[1:]:
        if not patch(p):
            print(f"not a JPEG: {p}", file=sys.stderr)
