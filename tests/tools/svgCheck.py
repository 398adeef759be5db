#!/usr/bin/env python3
"""Checks for the pictures zusg draws, with the standard library only.

  svgCheck.py count FILE.svg       parses the SVG as XML; prints "TAG COUNT" per element tag
  svgCheck.py pixels FILE.png X,Y  prints "R G B A" of each pixel (8-bit RGB or RGBA PNG)
"""
import struct
import sys
import xml.etree.ElementTree as ElementTree
import zlib
from collections import Counter


def count(path):
    tags = Counter(element.tag.split('}')[-1] for element in ElementTree.parse(path).iter())
    for tag, n in sorted(tags.items()):
        print(tag, n)


def pixels(path, points):
    data = open(path, 'rb').read()
    assert data[:8] == b'\x89PNG\r\n\x1a\n', 'not a PNG'
    position, idat = 8, b''
    while position < len(data):
        length, kind = struct.unpack('>I4s', data[position:position + 8])
        body = data[position + 8:position + 8 + length]
        if kind == b'IHDR':
            width, height, depth, colour, _, _, interlace = struct.unpack('>IIBBBBB', body)
            assert depth == 8 and colour in (2, 6) and interlace == 0, 'unsupported PNG'
        elif kind == b'IDAT':
            idat += body
        position += 12 + length
    channels = 4 if colour == 6 else 3
    raw, stride, rows, previous = zlib.decompress(idat), width * channels, [], bytearray(width * channels)
    for y in range(height):
        kind, line = raw[y * (stride + 1)], bytearray(raw[y * (stride + 1) + 1:(y + 1) * (stride + 1)])
        for i in range(stride):
            a = line[i - channels] if i >= channels else 0
            b, c = previous[i], previous[i - channels] if i >= channels else 0
            p = a + b - c
            nearest = a if abs(p - a) <= min(abs(p - b), abs(p - c)) else b if abs(p - b) <= abs(p - c) else c
            line[i] = (line[i] + (0, a, b, (a + b) // 2, nearest)[kind]) & 0xFF
        rows.append(line)
        previous = line
    for point in points:
        x, y = map(int, point.split(','))
        pixel = list(rows[y][x * channels:(x + 1) * channels]) + ([] if channels == 4 else [255])
        print(*pixel)


if __name__ == '__main__':
    count(sys.argv[2]) if sys.argv[1] == 'count' else pixels(sys.argv[2], sys.argv[3:])
