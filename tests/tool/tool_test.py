#!/usr/bin/env python3
"""End-to-end checks of the cycbcr command: the built-in frames, the codes and
their aliases, files, pipes and outputs, the rounding rules a level selects,
the pair listing against what convert does, RGB output and its options, PNG
previews (read back with zlib alone), and the refusal of every bad request
with status 2 and no file left behind. (Every pair's frames are read back by
FFmpeg in standard_frames_test; the RGB frames of every format, matrix and
layout are checked against FFmpeg in rgb_frames_test; the YCbCr frames made
from RGB sources against the library and the standards in from_rgb_test.)

Usage: tool_test.py PATH_TO_CYCBCR [unittest arguments]
"""
import math
import os
import pty
import random
import re
import stat
import struct
import subprocess
import sys
import tempfile
import threading
import time
import unittest
import zlib

TOOL = None

# The classic 75% colour bars in BT.601 studio range (Y, Cb, Cr): white,
# yellow, cyan, green, magenta, red, blue, black.
BARS_75 = [(180, 128, 128), (162, 44, 142), (131, 156, 44), (112, 72, 58),
           (84, 184, 198), (65, 100, 212), (35, 212, 114), (16, 128, 128)]
# The same bars at 10 bits (the published values of 75% bars).
BARS_75_10 = [(721, 512, 512), (646, 176, 567), (525, 625, 176), (450, 289, 231),
              (335, 735, 793), (260, 399, 848), (139, 848, 457), (64, 512, 512)]

YCBCR = ["UYVY", "YUY2", "YVYU", "cyuv", "I420", "YV12", "P422", "v210"]
RGB_DEPTHS = ["rgb555", "rgb565", "rgb24", "rgb32"]
# The pair table: a row per format (RGB, then the formats named rather than
# coded, last), a column per YCbCr format and per RGB depth.
NAMED_ROWS = ["yuv420p10", "yuv420p12", "yuv420p16", "yuv422p10", "yuv422p12", "yuv422p16",
              "yuv444p10", "yuv444p12", "NV12", "NV10", "NV12p16"]
ROWS = YCBCR + ["rgb32"] + NAMED_ROWS
COLUMNS = YCBCR + RGB_DEPTHS
# The code (for named formats the name) to give each format by on the command line.
FORMAT_CODE = {f: f for f in COLUMNS + NAMED_ROWS}
FORMAT_CODE["rgb32"] = "0"
PIXEL_BYTES = {"rgb555": 2, "rgb565": 2, "rgb24": 3, "rgb32": 4}


def run(*args, stdin=None):
    return subprocess.run([TOOL, *args], input=stdin, capture_output=True, timeout=120)


def fnv1a64(data):
    h = 0xCBF29CE484222325
    for b in data:
        h = ((h ^ b) * 0x100000001B3) & 0xFFFFFFFFFFFFFFFF
    return h


def word_swap(data):
    out = bytearray(data)
    out[0::2], out[1::2] = data[1::2], data[0::2]
    return bytes(out)




def reorder(data, order):
    """Each 4-byte pair rebuilt from the bytes of the source pair at the
    positions in order."""
    out = bytearray(len(data))
    for i, j in enumerate(order):
        out[i::4] = data[j::4]
    return bytes(out)


# YVYU Y0 Cr Y1 Cb to UYVY Cb Y0 Cr Y1.
YVYU_TO_UYVY = (3, 0, 1, 2)


def v210_row_bytes(width):
    """Rows of whole 48-pixel blocks of 128 bytes."""
    return (width + 47) // 48 * 128


def v210_words(data):
    return [int.from_bytes(data[i:i + 4], "little") for i in range(0, len(data), 4)]


def v210_samples(row):
    """The 10-bit samples of a v210 row in address order (Cb0 Y0 Cr0 Y1 Cb1
    ...), and the bits 30-31 of every word."""
    samples, top = [], []
    for w in v210_words(row):
        samples += [w & 0x3FF, (w >> 10) & 0x3FF, (w >> 20) & 0x3FF]
        top.append(w >> 30)
    return samples, top


def v210_row(samples, width):
    """Packs samples in address order (a multiple of 12) into one v210 row."""
    out = bytearray()
    for i in range(0, len(samples), 3):
        a, b, c = samples[i:i + 3]
        out += (a | b << 10 | c << 20).to_bytes(4, "little")
    return bytes(out).ljust(v210_row_bytes(width), b"\0")


def studio_to_rgb(y, cb, cr, kr=0.299, kb=0.114):
    """Full-range R, G, B of studio-range Y, Cb, Cr as the standards write it
    (the default BT.601 weights), unrounded and saturated."""
    kg = 1 - kr - kb
    l = (y - 16) * 255 / 219
    u, v = (cb - 128) * 255 / 224, (cr - 128) * 255 / 224
    rgb = (l + 2 * (1 - kr) * v, l - 2 * (1 - kb) * kb / kg * u - 2 * (1 - kr) * kr / kg * v,
           l + 2 * (1 - kb) * u)
    return [min(max(c, 0.0), 255.0) for c in rgb]


def bars_rgb(width, ten_bit=False):
    """One row of the built-in bars as R, G, B per pixel: each pixel's Y, the
    chroma of the even pixel of its pair. v210 keeps its 10-bit samples (a
    quarter of each is the 8-bit value), and an odd pixel takes the mean
    (a + b) >> 1 of the pairs on either side (the last pixel its own pair), as
    the library's converters from v210 are documented to."""
    if not ten_bit:
        row = []
        for x in range(width):
            y = BARS_75[x * 8 // width][0]
            _, cb, cr = BARS_75[(x - x % 2) * 8 // width]
            row.append(studio_to_rgb(y, cb, cr))
        return row
    row = []
    for x in range(width):
        y = BARS_75_10[x * 8 // width][0]
        _, cb, cr = BARS_75_10[(x - x % 2) * 8 // width]
        if x % 2 == 1 and x + 1 < width:
            _, cb2, cr2 = BARS_75_10[(x + 1) * 8 // width]
            cb, cr = (cb + cb2) >> 1, (cr + cr2) >> 1
        row.append(studio_to_rgb(y / 4, cb / 4, cr / 4))
    return row


def png_chunks(data):
    """(type, body) of every chunk, each CRC checked."""
    assert data[:8] == b"\x89PNG\r\n\x1a\n", "no PNG signature"
    chunks, at = [], 8
    while at < len(data):
        length = int.from_bytes(data[at:at + 4], "big")
        kind, body = data[at + 4:at + 8], data[at + 8:at + 8 + length]
        crc = int.from_bytes(data[at + 8 + length:at + 12 + length], "big")
        assert zlib.crc32(kind + body) == crc, f"bad CRC in {kind}"
        chunks.append((kind.decode("ascii"), body))
        at += 12 + length
    return chunks


def read_png(data):
    """(width, height, R G B rows) of an 8-bit RGB PNG, read with zlib alone
    (filters undone as the PNG format defines them)."""
    chunks = png_chunks(data)
    assert chunks[0][0] == "IHDR" and chunks[-1][0] == "IEND", [c[0] for c in chunks]
    ihdr = chunks[0][1]
    width, height = int.from_bytes(ihdr[0:4], "big"), int.from_bytes(ihdr[4:8], "big")
    depth, colour, _, _, interlace = ihdr[8:13]
    assert (depth, colour, interlace) == (8, 2, 0), (depth, colour, interlace)
    raw = zlib.decompress(b"".join(body for kind, body in chunks if kind == "IDAT"))
    stride = width * 3
    assert len(raw) == height * (stride + 1), len(raw)
    rows, prev = [], bytearray(stride)
    for r in range(height):
        kind = raw[r * (stride + 1)]
        line = bytearray(raw[r * (stride + 1) + 1:(r + 1) * (stride + 1)])
        for i in range(stride):
            a = line[i - 3] if i >= 3 else 0
            b = prev[i]
            c = prev[i - 3] if i >= 3 else 0
            if kind == 1:
                line[i] = (line[i] + a) & 255
            elif kind == 2:
                line[i] = (line[i] + b) & 255
            elif kind == 3:
                line[i] = (line[i] + (a + b) // 2) & 255
            elif kind == 4:
                p = a + b - c
                pa, pb, pc = abs(p - a), abs(p - b), abs(p - c)
                pred = a if pa <= pb and pa <= pc else b if pb <= pc else c
                line[i] = (line[i] + pred) & 255
            else:
                assert kind == 0, f"filter {kind}"
        rows.append(bytes(line))
        prev = line
    return width, height, b"".join(rows)


def chosen_level():
    res = run("cpu")
    return int(re.search(r"^chosen level: +(\d)", res.stdout.decode(), re.M).group(1))




class ToolCase(unittest.TestCase):
    def setUp(self):
        self._dir = tempfile.TemporaryDirectory(prefix="cycbcr-tool-")
        self.dir = self._dir.name
        self.rng = random.Random(20240611)

    def tearDown(self):
        self._dir.cleanup()

    def path(self, name):
        return os.path.join(self.dir, name)

    def write(self, name, data):
        with open(self.path(name), "wb") as f:
            f.write(data)
        return self.path(name)

    def read(self, name):
        with open(self.path(name), "rb") as f:
            return f.read()

    def random_bytes(self, n):
        return bytes(self.rng.getrandbits(8) for _ in range(n))

    def assert_bars(self, pixels):
        """The R, G, B of one pixel of each of the eight 75% bars: 191 (0.75 *
        255) in the lit channels, 0 in the others; the 8-bit samples and the
        library's truncation give 190 to 192."""
        lit = [(1, 1, 1), (1, 1, 0), (0, 1, 1), (0, 1, 0), (1, 0, 1), (1, 0, 0), (0, 0, 1),
               (0, 0, 0)]
        self.assertEqual(len(pixels), len(lit))
        for pixel, on in zip(pixels, lit):
            for got, want in zip(pixel, on):
                self.assertLessEqual(abs(got - 191 * want), 1, (list(pixel), on))

    def convert(self, src, dst, size, data, *extra):
        """Converts data through files and returns the output bytes."""
        inp = self.write("in.raw", data)
        res = run("convert", "--from", src, "--to", dst, "--size", size, "--in", inp,
                  "--out", self.path("out.raw"), *extra)
        self.assertEqual(res.returncode, 0, res.stderr.decode())
        self.assertEqual(res.stdout, b"")
        return self.read("out.raw")


class BuiltInFrame(ToolCase):
    def test_summary_without_output_file(self):
        res = run("convert", "--from", "UYVY", "--to", "YUY2")
        self.assertEqual(res.returncode, 0, res.stderr.decode())
        self.assertRegex(res.stdout.decode(),
                         r"^UYVY -> YUY2 1920x1080: frames=1 bytes=4147200 fnv1a64=[0-9a-f]{16}\n$")
        self.assertEqual(os.listdir(self.dir), [])

    def test_uyvy_frame_holds_the_75_percent_bars(self):
        # Bars 5 pixels wide, so some pairs straddle two bars: chroma is sited
        # with the even pixel of the pair.
        width, height = 40, 3
        res = run("convert", "--from", "UYVY", "--to", "UYVY", "--size", f"{width}x{height}",
                  "--out", self.path("bars.uyvy"))
        self.assertEqual(res.returncode, 0, res.stderr.decode())
        data = self.read("bars.uyvy")
        self.assertEqual(len(data), width * 2 * height)
        expected = bytearray()
        for x in range(0, width, 2):
            y0, cb, cr = BARS_75[x * 8 // width]
            expected += bytes([cb, y0, cr, BARS_75[(x + 1) * 8 // width][0]])
        for row in range(height):
            self.assertEqual(data[row * width * 2:(row + 1) * width * 2], bytes(expected))

    def test_every_source_format_carries_the_same_picture(self):
        # The bars made in each 8-bit format, brought to UYVY, must agree (the
        # bars are the same on every row, so 4:2:0 chroma cannot differ).
        size = "48x4"
        sources = ("UYVY", "YUY2", "YVYU", "cyuv", "I420", "YV12", "P422", "422P")
        pictures = {}
        for src in sources:
            out = self.path(src + ".uyvy")
            res = run("convert", "--from", src, "--to", "UYVY", "--size", size, "--out", out)
            self.assertEqual(res.returncode, 0, res.stderr.decode())
            with open(out, "rb") as f:
                pictures[src] = f.read()
        for src in sources[1:]:
            self.assertEqual(pictures[src], pictures["UYVY"], src)

    def test_summary_checksum_is_fnv1a_of_the_output(self):
        # One library call, two calls through YUY2, and calls on padded rows.
        for src, dst, size in (("YUY2", "cyuv", "320x8"), ("YVYU", "UYVY", "320x8"),
                               ("v210", "I420", "1276x8"), ("YUY2", "v210", "1276x8")):
            args = ["convert", "--from", src, "--to", dst, "--size", size]
            res = run(*args)
            self.assertEqual(res.returncode, 0, res.stderr.decode())
            reported = int(re.search(r"fnv1a64=([0-9a-f]{16})", res.stdout.decode()).group(1),
                           16)
            self.assertEqual(run(*args, "--out", self.path("o")).returncode, 0)
            self.assertEqual(reported, fnv1a64(self.read("o")), (src, dst))


class FileConversions(ToolCase):
    def test_aliases_and_numeric_codes_pick_the_canonical_formats(self):
        data = self.random_bytes(2 * 16 * 2)
        for src, dst in (("YUNV", "2vuy"), ("YUY2", "0x8800001E"), ("YUY2", "2282749982"),
                         ("YUNV", "yuV2"), ("YUY2", "AJYU")):
            self.assertEqual(self.convert(src, dst, "16x2", data), word_swap(data), (src, dst))

    def test_output_may_not_replace_the_input(self):
        data = self.random_bytes(2 * 2 * 8 * 2)
        name = self.write("frames.raw", data)
        res = run("convert", "--from", "YUY2", "--to", "UYVY", "--size", "8x2",
                  "--in", name, "--out", name)
        self.assertEqual(res.returncode, 2)
        self.assertIn("same file", res.stderr.decode())
        self.assertEqual(self.read("frames.raw"), data)
        self.assertEqual(os.listdir(self.dir), ["frames.raw"])

    def test_output_through_a_link_or_into_a_fifo(self):
        data = self.random_bytes(2 * 2 * 6 * 2)
        inp = self.write("in.raw", data)
        args = ["convert", "--from", "YUY2", "--to", "UYVY", "--size", "6x2", "--in", inp]
        # A symbolic link stays a link; the file it names gets the frames.
        self.write("target.raw", b"old")
        os.symlink("target.raw", self.path("link.raw"))
        res = run(*args, "--out", self.path("link.raw"))
        self.assertEqual(res.returncode, 0, res.stderr.decode())
        self.assertTrue(os.path.islink(self.path("link.raw")))
        self.assertEqual(self.read("target.raw"), word_swap(data))
        # A FIFO is written as it is, not replaced by a regular file.
        fifo = self.path("fifo")
        os.mkfifo(fifo)
        received = []

        def drain():
            with open(fifo, "rb") as f:
                received.append(f.read())

        reader = threading.Thread(target=drain)
        reader.start()
        res = run(*args, "--out", fifo)
        reader.join(timeout=60)
        self.assertEqual(res.returncode, 0, res.stderr.decode())
        self.assertEqual(received, [word_swap(data)])
        self.assertTrue(stat.S_ISFIFO(os.stat(fifo).st_mode))
        self.assertEqual(sorted(os.listdir(self.dir)), ["fifo", "in.raw", "link.raw", "target.raw"])

    def test_frames_from_a_pipe(self):
        data = self.random_bytes(5 * 2 * 6 * 2)
        res = run("convert", "--from", "YUY2", "--to", "UYVY", "--size", "6x2",
                  "--in", "/dev/stdin", "--out", self.path("o"), stdin=data)
        self.assertEqual(res.returncode, 0, res.stderr.decode())
        self.assertEqual(self.read("o"), word_swap(data))


class V210Conversions(ToolCase):
    def test_v210_files_hold_whole_128_byte_blocks_per_row(self):
        # Any width for v210 itself, odd ones included.
        for width in (1, 7, 47, 48, 49, 720, 1281):
            res = run("convert", "--from", "v210", "--to", "012v", "--size", f"{width}x3",
                      "--out", self.path("o"))
            self.assertEqual(res.returncode, 0, res.stderr.decode())
            self.assertEqual(len(self.read("o")), v210_row_bytes(width) * 3, width)
        data = self.random_bytes(v210_row_bytes(7) * 3 * 2)
        self.assertEqual(self.convert("v210", "v210", "7x3", data), data)

    def test_v210_to_rgb_last_pixel_of_whole_groups_takes_its_own_pair(self):
        # Rows of whole groups: the last pixel's chroma is its own pair's,
        # whatever follows the row's groups (padding, or at 48 pixels the next
        # row). Y is the same everywhere, so pixels 4 and 5 of the last group
        # have the same colour; the words after the groups, and the next
        # row's first pair, hold other chroma.
        grey = [512, 500, 512, 500] * 3
        last = grey[:8] + [800, 500, 300, 500]  # pair 4: Cb 800, Cr 300
        other = [0, 500, 1023]  # Cb 0, Cr 1023
        for width in (6, 42, 48):
            groups, row_bytes = width // 6, v210_row_bytes(width)
            samples = grey * (groups - 1) + last + other * ((row_bytes - groups * 16) // 4)
            data = v210_row(samples, width) + v210_row(other + samples[3:], width)
            for depth, size in (("rgb24", 3), ("rgb32", 4), ("rgb565", 2)):
                for level in ("0", "5"):
                    out = self.convert("v210", depth, f"{width}x2", data, "--level", level)
                    for r in (0, 1):
                        px = out[(r * width + width - 2) * size:(r * width + width) * size]
                        self.assertEqual(px[:size], px[size:], (width, depth, level, r))
                        self.assertNotEqual(px[:size], out[r * width * size:][:size])

    def test_v210_to_uyvy_rounds_by_the_level_rule(self):
        # One group, Y samples on the rounding edges, chroma 512 (128 at 8 bits).
        ys = [513, 514, 1020, 1021, 1022, 1023]

        def uyvy(y):
            return bytes(v for i in (0, 2, 4) for v in (128, y[i], 128, y[i + 1]))

        data = v210_row([v for i in (0, 2, 4) for v in (512, ys[i], 512, ys[i + 1])], 6)
        self.assertEqual(self.convert("v210", "UYVY", "6x1", data, "--level", "0"),
                         uyvy([128, 129, 255, 255, 255, 255]))
        if chosen_level() == 5:
            # The AVX2 path rounds without saturating: 1022 and 1023 wrap to 0.
            self.assertEqual(self.convert("v210", "UYVY", "6x1", data),
                             uyvy([128, 129, 255, 255, 0, 0]))

    def test_aliases_reach_the_same_converters(self):
        data = self.random_bytes(2 * 2 * 24 * 2)
        packed = self.convert("UYVY", "v210", "24x2", data)
        for src, dst in (("2vuy", "012v"), ("0x8810001E", "v210"), ("yuV2", "012v")):
            self.assertEqual(self.convert(src, dst, "24x2", data), packed, (src, dst))
        back = self.convert("012v", "AJYU", "24x2", packed)
        self.assertEqual(back, data)

    def test_built_in_v210_frame_holds_the_10bit_bars(self):
        width, height = 40, 2
        res = run("convert", "--from", "v210", "--to", "v210", "--size", f"{width}x{height}",
                  "--out", self.path("bars.v210"))
        self.assertEqual(res.returncode, 0, res.stderr.decode())
        data = self.read("bars.v210")
        expected = []
        for x in range(0, width, 2):
            y0, cb, cr = BARS_75_10[x * 8 // width]
            expected += [cb, y0, cr, BARS_75_10[(x + 1) * 8 // width][0]]
        row = v210_row_bytes(width)
        for r in range(height):
            samples, _ = v210_samples(data[r * row:(r + 1) * row])
            self.assertEqual(samples[:2 * width], expected, r)


class PlanarConversions(ToolCase):
    LEVELS = (("--level", "0"), ())  # the plain paths, then the best level

    @staticmethod
    def split_uyvy(data, width, height):
        """Rows of (Y, Cb, Cr) byte strings of a UYVY frame."""
        rows = []
        for r in range(height):
            row = data[r * 2 * width:(r + 1) * 2 * width]
            rows.append((row[1::2], row[0::4], row[2::4]))
        return rows

    def test_uyvy_to_i420_keeps_chroma_of_one_row_per_pair(self):
        # Chroma row k comes from picture row 2k when k is even and 2k + 1
        # when k is odd (the two fields alternate); no averaging.
        width, height = 36, 8
        data = self.random_bytes(2 * width * height)
        rows = self.split_uyvy(data, width, height)
        source_row = [2 * k if k % 2 == 0 else 2 * k + 1 for k in range(height // 2)]
        expected = (b"".join(r[0] for r in rows) +
                    b"".join(rows[i][1] for i in source_row) +
                    b"".join(rows[i][2] for i in source_row))
        for level in self.LEVELS:
            self.assertEqual(self.convert("UYVY", "I420", f"{width}x{height}", data, *level),
                             expected, level)

    def test_420_to_packed_chroma_rows_up_to_the_last_row(self):
        # The converters to YUY2 and YVYU, and to UYVY and cyuv at level 5,
        # take chroma by field: row r from chroma row 2 * (r / 4) + r % 2. At
        # heights 4n + 2 that names a row past the frame for the last row,
        # which must take the frame's last chroma row instead. UYVY and cyuv
        # below level 5 take chroma row r / 2.
        width = 10
        for height in (6, 10, 8):
            y = self.random_bytes(width * height)
            cb = self.random_bytes(width // 2 * height // 2)
            cr = self.random_bytes(width // 2 * height // 2)
            half = width // 2

            def chroma(plane, row):
                return plane[row * half:(row + 1) * half]

            for level in self.LEVELS:
                best = level == ()
                for dst in ("UYVY", "YUY2", "YVYU", "cyuv"):
                    by_field = dst in ("YUY2", "YVYU") or best
                    rows = []
                    for r in range(height):
                        c = 2 * (r // 4) + r % 2 if by_field else r // 2
                        c = min(c, height // 2 - 1)
                        ys, bs, rs = y[r * width:(r + 1) * width], chroma(cb, c), chroma(cr, c)
                        row = bytearray()
                        for k in range(half):
                            y0, y1, b, v = ys[2 * k], ys[2 * k + 1], bs[k], rs[k]
                            row += {"UYVY": bytes((b, y0, v, y1)), "cyuv": bytes((b, y0, v, y1)),
                                    "YUY2": bytes((y0, b, y1, v)),
                                    "YVYU": bytes((y0, v, y1, b))}[dst]
                        rows.append(bytes(row))
                    if dst == "cyuv":
                        rows.reverse()
                    self.assertEqual(self.convert("I420", dst, f"{width}x{height}", y + cb + cr,
                                                  *level), b"".join(rows), (dst, height, level))


class FormatListing(ToolCase):
    def formats(self):
        res = run("formats")
        self.assertEqual(res.returncode, 0, res.stderr.decode())
        return res.stdout.decode()

    def matrix(self, text):
        """{(source, destination): cell} from the pair table."""
        lines = text.splitlines()
        head = next(i for i, l in enumerate(lines) if l.split()[:1] == ["from\\to"])
        columns = lines[head].split()[1:]
        self.assertEqual(columns, COLUMNS)
        cells = {}
        for line in lines[head + 1:head + 1 + len(ROWS)]:
            name, *row = line.split()
            self.assertEqual(len(row), len(COLUMNS), line)
            cells.update({(name, to): cell for to, cell in zip(COLUMNS, row)})
        self.assertEqual(sorted({src for src, _ in cells}), sorted(ROWS))
        return cells

    def test_lists_every_code_with_its_format(self):
        text = self.formats()
        codes = {"UYVY": "UYVY UYNV AJYU yuv2 yuV2 2vuy 2Vuy 0x8800001E 0x8810001E",
                 "YUY2": "YUY2 YUNV", "YVYU": "YVYU", "cyuv": "cyuv", "I420": "I420 IYUV",
                 "YV12": "YV12", "P422": "P422 422P", "v210": "v210 012v", "rgb32": "0"}
        for fmt, listed in codes.items():
            block = re.search(r"^  " + fmt + r" .*\n +code (.*)$", text, re.M)
            self.assertIsNotNone(block, fmt)
            self.assertEqual(block.group(1).replace("; aliases", "").replace(
                " (source only)", "").split(), listed.split(), fmt)
        self.assertIn("422P (source only)", text)

    def test_pair_table_holds_the_pairs_built(self):
        # Every pair the library converted when this test was written; the
        # table may grow, but RGB to RGB is never converted.
        cells = self.matrix(self.formats())
        eight_bit = ["UYVY", "YUY2", "YVYU", "cyuv", "I420", "YV12", "P422"]
        built = {(a, b) for a in eight_bit for b in eight_bit}
        built |= {("UYVY", "v210"), ("v210", "UYVY"), ("v210", "v210")}
        # Every YCbCr format to every RGB depth.
        built |= {(a, b) for a in YCBCR for b in RGB_DEPTHS}
        # RGB to every 8-bit YCbCr format and v210.
        built |= {("rgb32", b) for b in eight_bit + ["v210"]}
        for pair in built:
            self.assertEqual(cells[pair], "yes", pair)
        for depth in RGB_DEPTHS:
            self.assertEqual(cells[("rgb32", depth)], "-")
        # The named formats reach every coded format and RGB depth through
        # v210 or UYVY.
        for name in NAMED_ROWS:
            for fmt in COLUMNS:
                self.assertEqual(cells[(name, fmt)], "yes", (name, fmt))

    def test_pair_table_agrees_with_convert(self):
        # Every pair the table marks is converted; every other one is refused
        # with one message and no output file.
        for (src, dst), cell in self.matrix(self.formats()).items():
            out = self.path("out.raw")
            res = run("convert", "--from", FORMAT_CODE[src], "--to", FORMAT_CODE[dst],
                      "--size", "48x2", "--out", out)
            if cell == "yes":
                self.assertEqual(res.returncode, 0, (src, dst, res.stderr.decode()))
                os.remove(out)
            else:
                self.assertEqual(res.returncode, 2, (src, dst))
                self.assertEqual(len(res.stderr.decode().splitlines()), 1, (src, dst))
                self.assertEqual(os.listdir(self.dir), [], (src, dst))


class RgbOutput(ToolCase):
    """RGB destinations: sizes at odd and even widths and heights, the built-in
    bars against the standards, options by name and number, and the summary.
    (Every format, matrix and layout against FFmpeg: rgb_frames_test.)"""

    def test_every_source_and_depth_at_odd_and_even_sizes(self):
        for src in YCBCR + ["422P", "NV12"]:
            for width, height in ((1, 1), (2, 3), (3, 2), (17, 5), (64, 4), (721, 3)):
                size = f"{width}x{height}"
                for depth in RGB_DEPTHS:
                    res = run("convert", "--from", src, "--to", depth, "--size", size,
                              "--out", self.path("o"))
                    self.assertEqual(res.returncode, 0, (src, size, depth, res.stderr.decode()))
                    self.assertEqual(len(self.read("o")), width * height * PIXEL_BYTES[depth],
                                     (src, size, depth))

    def test_built_in_bars_are_the_75_percent_bars_in_rgb(self):
        # Every row of every format's bars at widths that split pairs across
        # bars, against the standard BT.601 conversion (the library truncates:
        # within 2).
        for src in YCBCR + ["NV12"]:
            for width, height in ((21, 3), (40, 2), (723, 5)):
                res = run("convert", "--from", src, "--to", "rgb24", "--rgb-type", "rgba",
                          "--size", f"{width}x{height}", "--out", self.path("o"))
                self.assertEqual(res.returncode, 0, res.stderr.decode())
                data = self.read("o")
                want = bars_rgb(width, ten_bit=src == "v210")
                for r in range(height):
                    row = data[r * width * 3:(r + 1) * width * 3]
                    for x in range(width):
                        for c in range(3):
                            self.assertLessEqual(abs(row[3 * x + c] - want[x][c]), 2,
                                                 (src, width, r, x, c, row[3 * x:3 * x + 3],
                                                  want[x]))
        # And near 191 or 0 in each channel.
        res = run("convert", "--from", "UYVY", "--to", "rgb24", "--rgb-type", "rgba",
                  "--size", "16x1", "--out", self.path("o"))
        data = self.read("o")
        self.assert_bars([data[6 * i:6 * i + 3] for i in range(8)])

    def test_matrix_and_layout_names_and_numbers_agree(self):
        def out(*extra):
            res = run("convert", "--from", "I420", "--to", "rgb32", "--size", "34x6",
                      "--out", self.path("o"), *extra)
            self.assertEqual(res.returncode, 0, (extra, res.stderr.decode()))
            return self.read("o")

        names = ["601", "601-studio", "709", "709-studio", "709-precise",
                 "709-precise-studio", "2020", "2020-studio"]
        pictures = [out("--matrix", str(n)) for n in range(8)]
        for n, name in enumerate(names):
            self.assertEqual(out("--matrix", name), pictures[n], name)
        self.assertEqual(out(), pictures[0])  # the default
        # 601, 709 and 2020 differ on the bars; the studio forms keep black
        # at 16 instead of 0.
        self.assertEqual(len({pictures[0], pictures[2], pictures[6]}), 3)
        self.assertEqual(pictures[0][-4:], bytes([0, 0, 0, 255]))
        self.assertEqual(pictures[1][-4:], bytes([16, 16, 16, 255]))

        for spelled, number in (("bgra", "0"), ("ABGR", "1"), ("rgba", "2"), ("argb", "0x3"),
                                ("bgra,bottom-up", "32768"), ("rgba,BOTTOM-UP", "0x8002")):
            self.assertEqual(out("--rgb-type", spelled), out("--rgb-type", number), spelled)
        self.assertEqual(out("--rgb-type", "argb", "--bottom-up"),
                         out("--rgb-type", "0x8003"))
        # Bottom-up is the same rows in the other order.
        row = 34 * 4
        top, bottom = out("--rgb-type", "rgba"), out("--rgb-type", "rgba,bottom-up")
        self.assertEqual(bottom, b"".join(top[i:i + row] for i in range(len(top) - row, -1, -row)))

    def test_rgb_destination_names(self):
        data = self.random_bytes(2 * 8 * 2)
        want = self.convert("YUY2", "rgb32", "8x2", data)
        for name in ("RGB32", "0", "0x0", "Rgb32"):
            self.assertEqual(self.convert("YUY2", name, "8x2", data), want, name)

    def test_summary_checksum_of_rgb_output(self):
        args = ["convert", "--from", "v210", "--to", "rgb565", "--size", "17x3", "--matrix", "709"]
        res = run(*args)
        self.assertEqual(res.returncode, 0, res.stderr.decode())
        self.assertRegex(res.stdout.decode(),
                         r"^v210 -> rgb565 17x3: frames=1 bytes=102 fnv1a64=[0-9a-f]{16}\n$")
        reported = int(re.search(r"fnv1a64=([0-9a-f]{16})", res.stdout.decode()).group(1), 16)
        self.assertEqual(run(*args, "--out", self.path("o")).returncode, 0)
        self.assertEqual(reported, fnv1a64(self.read("o")))

    def test_odd_sized_files_hold_whole_pairs(self):
        # 3x2 UYVY: rows of two pairs (8 bytes); I420 3x3: 9 + 2 * 4 bytes.
        for src, size, frame in (("UYVY", "3x2", 16), ("I420", "3x3", 17), ("P422", "3x2", 14),
                                 ("v210", "3x2", 256)):
            data = self.random_bytes(frame * 2)
            out = self.convert(src, "rgb24", size, data)
            w, h = map(int, size.split("x"))
            self.assertEqual(len(out), 2 * w * h * 3, src)
            # The second frame alone converts to the second half.
            self.assertEqual(self.convert(src, "rgb24", size, data[frame:]), out[len(out) // 2:])
            res = run("convert", "--from", src, "--to", "rgb24", "--size", size,
                      "--in", self.write("short.raw", data[:-1]), "--out", self.path("x"))
            self.assertEqual(res.returncode, 2, src)
            self.assertFalse(os.path.exists(self.path("x")))


class Nv12Source(ToolCase):
    """NV12 files (a Y plane, then ceil(width / 2) Cb, Cr pairs a row for
    ceil(height / 2) rows) against the same samples as I420, whose converters
    to every depth write the engine's bytes through the command (I420 to bgra
    rgb32 included: the command takes it off the library's fixed-point route);
    rgb_frames_test holds I420 to FFmpeg. (The built-in NV12 bars: RgbOutput;
    the pair table: FormatListing; previews of the bars: Preview.)"""

    def frame(self, width, height):
        """One random frame as (NV12 bytes, I420 bytes)."""
        chroma = ((width + 1) // 2) * ((height + 1) // 2)
        y, cb, cr = (self.random_bytes(n) for n in (width * height, chroma, chroma))
        pairs = bytearray(2 * chroma)
        pairs[0::2], pairs[1::2] = cb, cr
        return y + bytes(pairs), y + cb + cr

    def test_same_picture_as_the_i420_frame_of_its_samples(self):
        for width, height in ((17, 5), (34, 6)):
            size = f"{width}x{height}"
            frames = [self.frame(width, height) for _ in range(2)]
            nv12 = b"".join(f[0] for f in frames)
            i420 = b"".join(f[1] for f in frames)
            for depth in RGB_DEPTHS:
                for extra in ([], ["--rgb-type", "argb,bottom-up", "--matrix", "709-studio"]):
                    got = self.convert("NV12", depth, size, nv12, *extra)
                    self.assertEqual(len(got), 2 * width * height * PIXEL_BYTES[depth])
                    self.assertEqual(got, self.convert("I420", depth, size, i420, *extra),
                                     (size, depth, extra))
            # The preview of the second frame: the rgb24 rgba picture.
            inp = self.write("in.nv12", nv12)
            res = run("preview", "--from", "nv12", "--size", size, "--in", inp, "--frame", "1",
                      "--out", self.path("p.png"))
            self.assertEqual(res.returncode, 0, res.stderr.decode())
            rgb = self.convert("I420", "rgb24", size, i420, "--rgb-type", "rgba")
            self.assertEqual(read_png(self.read("p.png")),
                             (width, height, rgb[width * height * 3:]), size)

class RgbSource(ToolCase):
    """RGB sources converted to 8-bit YCbCr and v210: the built-in bars in
    every depth and layout, refusals of what the library cannot convert whole,
    and previews of 16-bit, float and 10-bit pixels (hand-worked values).
    (Every depth, format, layout and matrix against the library and the
    standards: from_rgb_test.)"""

    DEPTHS = {"rgb24": 3, "rgb32": 4, "rgb48": 6, "rgb64": 8, "rgb32f": 16}
    # The sources of v210: those above, and rgb10 (to v210 only).
    V210_DEPTHS = dict(DEPTHS, rgb10=4)
    EIGHT_BIT = ["UYVY", "YUY2", "YVYU", "cyuv", "I420", "YV12", "P422"]

    def test_built_in_bars_in_every_depth_and_layout(self):
        for depth in self.DEPTHS:
            for layout in (["--rgb-type", "rgba"], [], ["--rgb-type", "abgr", "--bottom-up"],
                           ["--rgb-type", "0x8003"]):
                if depth == "rgb48" and layout[1:2] in (["abgr"], ["0x8003"]):
                    layout = ["--rgb-type", "rgba,bottom-up"]
                res = run("convert", "--from", depth, "--to", "UYVY", "--size", "64x2",
                          "--out", self.path("bars.uyvy"), *layout)
                self.assertEqual(res.returncode, 0, (depth, layout, res.stderr.decode()))
                data = self.read("bars.uyvy")
                self.assertEqual(len(data), 64 * 2 * 2)
                for row in (0, 1):
                    for bar, want in enumerate(BARS_75):
                        pair = data[row * 128 + bar * 16:row * 128 + bar * 16 + 4]
                        got = (pair[1], pair[0], pair[2])  # Y, Cb, Cr
                        for g, w in zip(got, want):
                            self.assertLessEqual(abs(g - w), 2, (depth, layout, bar, got, want))
                # The preview of the same bars: the 75% bars in R, G, B.
                res = run("preview", "--from", depth, "--size", "64x2", "--out",
                          self.path("bars.png"), *layout)
                self.assertEqual(res.returncode, 0, res.stderr.decode())
                width, height, pixels = read_png(self.read("bars.png"))
                self.assertEqual((width, height), (64, 2))
                self.assert_bars([pixels[24 * i:24 * i + 3] for i in range(8)])
        # The summary names the depth; the code 0 is rgb32.
        for src, name in (("rgb32f", "rgb32f"), ("0", "rgb32"), ("RGB48", "rgb48")):
            res = run("convert", "--from", src, "--to", "I420", "--size", "16x4")
            self.assertEqual(res.returncode, 0, res.stderr.decode())
            self.assertRegex(res.stdout.decode(),
                             "^" + name + r" -> I420 16x4: frames=1 bytes=96 fnv1a64=")

    def test_built_in_bars_to_v210_in_every_depth_and_layout(self):
        # Bars of 12 pixels: the pair at a bar's middle (pixels 6 and 7) has
        # its chroma filtered over pixels 5 to 8, all of that bar, so it holds
        # the bar's 10-bit samples (191 / 255 is 0.749, not 0.75; 16-bit
        # words are read as 1/64ths: within 6).
        width = 96
        for depth in self.V210_DEPTHS:
            for layout in (["--rgb-type", "rgba"], [], ["--rgb-type", "abgr", "--bottom-up"],
                           ["--rgb-type", "0x8003"]):
                if depth == "rgb48" and layout[1:2] in (["abgr"], ["0x8003"]):
                    layout = ["--rgb-type", "rgba,bottom-up"]
                for code in ("v210", "012v"):
                    res = run("convert", "--from", depth, "--to", code, "--size", f"{width}x2",
                              "--out", self.path("bars.v210"), *layout)
                    self.assertEqual(res.returncode, 0, (depth, layout, res.stderr.decode()))
                    data = self.read("bars.v210")
                    row = v210_row_bytes(width)
                    self.assertEqual(len(data), 2 * row)
                    for r in (0, 1):
                        samples, top = v210_samples(data[r * row:(r + 1) * row])
                        self.assertEqual(set(top), {0})
                        for bar, want in enumerate(BARS_75_10):
                            x = 12 * bar + 6
                            got = (samples[2 * x + 1], samples[2 * x], samples[2 * x + 2])
                            for g, w in zip(got, want):
                                self.assertLessEqual(abs(g - w), 6, (depth, layout, bar, got))
            # The preview of the same bars: the 75% bars in R, G, B.
            res = run("preview", "--from", depth, "--size", "64x2", "--out",
                      self.path("bars.png"), *layout)
            self.assertEqual(res.returncode, 0, res.stderr.decode())
            _, _, pixels = read_png(self.read("bars.png"))
            self.assert_bars([pixels[24 * i:24 * i + 3] for i in range(8)])
        res = run("convert", "--from", "rgb10", "--to", "012v", "--size", "48x2")
        self.assertEqual(res.returncode, 0, res.stderr.decode())
        self.assertRegex(res.stdout.decode(), r"^rgb10 -> 012v 48x2: frames=1 bytes=256 fnv1a64=")

    def test_v210_widths_refused_and_nothing_written(self):
        # The converters to v210 write whole groups of six pixels and one last
        # pixel pair: any other width would leave pixels unwritten. rgb32f
        # goes through UYVY: any even width.
        for depth, size in self.V210_DEPTHS.items():
            for w in (1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 50, 51, 53, 98):
                whole = w % 2 == 0 if depth == "rgb32f" else w % 6 in (0, 2)
                inp = self.write("in.rgb", bytes(size * w * 3))
                before = sorted(os.listdir(self.dir))
                for args in (["--in", inp], []):
                    res = run("convert", "--from", depth, "--to", "v210", "--size", f"{w}x3",
                              "--out", self.path("v.raw"), *args)
                    err = res.stderr.decode()
                    if whole:
                        self.assertEqual(res.returncode, 0, (depth, w, err))
                        self.assertEqual(len(self.read("v.raw")), v210_row_bytes(w) * 3)
                        os.remove(self.path("v.raw"))
                        continue
                    self.assertEqual(res.returncode, 2, (depth, w, err))
                    self.assertEqual(len(err.splitlines()), 1, err)
                    self.assertIn("even width" if depth == "rgb32f" else "multiple of 6", err)
                    self.assertEqual(sorted(os.listdir(self.dir)), before, (depth, w))

    def test_v210_rows_end_after_the_last_pixels(self):
        # 8 pixels: one group and a last pair, whose chroma and Y0 fill one
        # word and Y1 the low field of the next; the rest of the 128-byte row
        # is zero, and the samples come from the pixels asked for (white and
        # black, BT.601 full range to studio: 940 and 64 at 10 bits).
        white = bytes([255] * 3)
        black = bytes(3)
        data = (white * 6 + black * 2) * 2
        out = self.convert("rgb24", "v210", "8x2", data)
        self.assertEqual(len(out), 256)
        for r in (0, 1):
            samples, _ = v210_samples(out[128 * r:128 * (r + 1)])
            self.assertTrue(all(abs(v - 940) <= 2 for v in samples[1:12:2]), samples[:12])
            self.assertTrue(all(abs(v - 64) <= 2 for v in (samples[13], samples[15])),
                            samples[12:16])
            self.assertEqual(samples[16:], [0] * (len(samples) - 16))
            self.assertEqual(out[128 * r + 24:128 * (r + 1)], bytes(104))

    def test_every_depth_to_every_8bit_format(self):
        for depth, size in self.DEPTHS.items():
            data = self.random_bytes(size * 6 * 4 * 2) if depth != "rgb32f" else \
                b"".join(struct.pack("<f", self.rng.uniform(-0.1, 1.1)) for _ in range(4 * 24 * 2))
            for fmt in self.EIGHT_BIT:
                out = self.convert(depth, fmt, "6x4", data, "--matrix", "extra-9")
                self.assertEqual(len(out), 2 * 6 * 4 * 2 if fmt in ("UYVY", "YUY2", "YVYU",
                                 "cyuv", "P422") else 2 * 36, (depth, fmt))
                self.assertEqual(out, self.convert(depth, fmt, "6x4", data, "--matrix", "9"))

    def test_odd_sizes_are_refused_and_nothing_written(self):
        for depth, size in self.DEPTHS.items():
            for fmt, dims, word in (("UYVY", (5, 2), "even width"), ("I420", (5, 2), "even width"),
                                    ("P422", (3, 4), "even width"), ("I420", (4, 3), "even height"),
                                    ("YV12", (2, 1), "even height")):
                w, h = dims
                inp = self.write("in.rgb", bytes(size * w * h))
                before = sorted(os.listdir(self.dir))
                for args in (["--in", inp], []):
                    res = run("convert", "--from", depth, "--to", fmt, "--size", f"{w}x{h}",
                              "--out", self.path("refused.raw"), *args)
                    err = res.stderr.decode()
                    self.assertEqual(res.returncode, 2, (depth, fmt, dims, err))
                    self.assertEqual(len(err.splitlines()), 1, err)
                    self.assertIn(word, err)
                    self.assertEqual(sorted(os.listdir(self.dir)), before, (depth, fmt, dims))
            # An odd height is whole for the 4:2:2 formats.
            self.assertEqual(len(self.convert(depth, "P422", "4x3", bytes(size * 12))), 24)
            self.assertEqual(len(self.convert(depth, "YUY2", "2x1", bytes(size * 2))), 4)

    def test_preview_of_16bit_and_float_pixels(self):
        def words(*values):
            return b"".join(v.to_bytes(2, "little") for v in values)

        def floats(*values):
            return struct.pack("<%df" % len(values), *values)

        # Two pixels, rows of one: R, G, B 0x12AB, 0xFF01, 0x0080 then
        # 0x0000, 0x7FFF, 0xFFFF; alpha 0x3456. High bytes shown.
        want = bytes([0x12, 0xFF, 0x00, 0x00, 0x7F, 0xFF])
        px = [(0x12AB, 0xFF01, 0x0080), (0x0000, 0x7FFF, 0xFFFF)]
        a = 0x3456
        cases = [
            ("rgb64", "rgba", b"".join(words(r, g, b, a) for r, g, b in px)),
            ("rgb64", "bgra", b"".join(words(b, g, r, a) for r, g, b in px)),
            ("rgb64", "abgr", b"".join(words(a, b, g, r) for r, g, b in px)),
            ("rgb64", "argb", b"".join(words(a, r, g, b) for r, g, b in px)),
            ("rgb48", "rgba", b"".join(words(r, g, b) for r, g, b in px)),
            ("rgb48", "bgra", b"".join(words(b, g, r) for r, g, b in px)),
        ]
        for depth, layout, data in cases:
            inp = self.write("in.rgb", data)
            self.assertEqual(self.preview_bytes(depth, "2x1", inp, layout), want, (depth, layout))
            # Stored last of two rows bottom-up: the top row.
            inp = self.write("in.rgb", bytes(len(data)) + data)
            self.assertEqual(self.preview_bytes(depth, "2x2", inp, layout + ",bottom-up")[:6],
                             want, (depth, layout))
        # Floats: clamped to 0..1 (NaN as 0), times 255, rounded.
        f = [(0.5, -1.0, 2.0), (0.2, 1.0, float("nan")), (0.9981, 0.0019, 0.002)]
        want = bytes([128, 0, 255, 51, 255, 0, 255, 0, 1])
        for layout, order in (("rgba", lambda r, g, b: (r, g, b, 0.3)),
                              ("bgra", lambda r, g, b: (b, g, r, 0.3)),
                              ("abgr", lambda r, g, b: (0.3, b, g, r)),
                              ("argb", lambda r, g, b: (0.3, r, g, b))):
            data = b"".join(floats(*order(*p)) for p in f)
            inp = self.write("in.rgb", data)
            self.assertEqual(self.preview_bytes("rgb32f", "3x1", inp, layout), want, layout)
        # Bottom-up: rows stored last first.
        top, bottom = floats(*(1.0, 0.0, 0.0, 1.0) * 2), floats(*(0.0, 0.0, 1.0, 1.0) * 2)
        inp = self.write("in.rgb", bottom + top)
        self.assertEqual(self.preview_bytes("rgb32f", "2x2", inp, "rgba,bottom-up"),
                         bytes([255, 0, 0] * 2 + [0, 0, 255] * 2))

    def test_preview_of_10bit_pixels(self):
        # Two pixels: R, G, B 0x3FF, 0x200, 0x003 then 0x155, 0x0FF, 0x2AA,
        # bits 0-1 set (unused); the top 8 bits of each channel are shown. R
        # lies in bits 22-31 for rgba and argb, in bits 2-11 for bgra and abgr.
        def word(top, g, low):
            return (top << 22 | g << 12 | low << 2 | 3).to_bytes(4, "little")

        px = [(0x3FF, 0x200, 0x003), (0x155, 0x0FF, 0x2AA)]
        want = bytes([0xFF, 0x80, 0x00, 0x55, 0x3F, 0xAA])
        for layout, red_top in (("rgba", True), ("argb", True), ("bgra", False), ("abgr", False)):
            data = b"".join(word(r, g, b) if red_top else word(b, g, r) for r, g, b in px)
            inp = self.write("in.rgb", data)
            self.assertEqual(self.preview_bytes("rgb10", "2x1", inp, layout), want, layout)
            inp = self.write("in.rgb", bytes(len(data)) + data)
            self.assertEqual(self.preview_bytes("rgb10", "2x2", inp, layout + ",bottom-up")[:6],
                             want, layout)

    def preview_bytes(self, depth, size, inp, layout):
        res = run("preview", "--from", depth, "--size", size, "--in", inp, "--rgb-type", layout,
                  "--out", self.path("p.png"))
        self.assertEqual(res.returncode, 0, res.stderr.decode())
        return read_png(self.read("p.png"))[2]

    def test_bad_rgb_source_requests(self):
        inp = self.write("in.rgb", bytes(6 * 4 * 2))
        for src, dst, extra, said in (
                ("rgb48", "UYVY", ["--rgb-type", "argb"], "no alpha"),
                ("rgb48", "UYVY", ["--rgb-type", "abgr,bottom-up"], "no alpha"),
                ("rgb24", "v210", [], "multiple of 6"),
                ("rgb10", "UYVY", [], "v210 only"),
                ("rgb10", "I420", [], "v210 only"),
                ("rgb10", "v210", ["--rgb-type", "rgba"], "multiple of 6"),
                ("rgb24", "rgb32", [], "not supported"),
                ("rgb32f", "NV12", [], "no converter from rgb32f"),
                ("rgb565", "UYVY", [], "not a source"),
                ("rgb24", "UYVY", ["--matrix", "11"], "0 to 10"),
                ("rgb24", "UYVY", ["--matrix", "010"], "0 to 10"),
                ("rgb24", "UYVY", ["--matrix", "extra-11"], "0 to 10"),
                ("UYVY", "rgb24", ["--matrix", "extra-8"], "RGB sources only"),
                ("UYVY", "rgb24", ["--matrix", "10"], "RGB sources only")):
            res = run("convert", "--from", src, "--to", dst, "--size", "4x2", "--in", inp,
                      "--out", self.path("out.raw"), *extra)
            err = res.stderr.decode()
            self.assertEqual(res.returncode, 2, (src, dst, extra, err))
            self.assertEqual(len(err.splitlines()), 1, err)
            self.assertIn(said, err, (src, dst, extra))
            self.assertEqual(os.listdir(self.dir), ["in.rgb"])


class Preview(ToolCase):
    """cycbcr preview: PNG files read back with zlib alone."""

    def preview(self, *args, stdin=None):
        out = self.path("p.png")
        res = run("preview", *args, "--out", out, stdin=stdin)
        self.assertEqual(res.returncode, 0, (args, res.stderr.decode()))
        self.assertEqual(res.stdout, b"")
        return read_png(self.read("p.png"))

    def test_built_in_bars(self):
        width, height, pixels = self.preview("--from", "UYVY", "--size", "64x3")
        self.assertEqual((width, height), (64, 3))
        # Eight bars of eight pixels on every row.
        for x in range(64):
            self.assertEqual({pixels[r * 192 + 3 * x:r * 192 + 3 * x + 3] for r in range(3)},
                             {pixels[3 * (x - x % 8):3 * (x - x % 8) + 3]}, x)
        self.assert_bars([pixels[24 * i:24 * i + 3] for i in range(8)])
        # The default size, and every YCbCr format, odd sizes included.
        self.assertEqual(self.preview("--from", "I420")[:2], (1920, 1080))
        for src in YCBCR + ["2vuy", "0x8800001E", "NV12"]:
            for size in ("1x1", "17x5", "721x3"):
                w, h = map(int, size.split("x"))
                res = run("convert", "--from", src, "--to", "rgb24", "--rgb-type", "rgba",
                          "--size", size, "--out", self.path("c.rgb"))
                self.assertEqual(res.returncode, 0, res.stderr.decode())
                self.assertEqual(self.preview("--from", src, "--size", size),
                                 (w, h, self.read("c.rgb")), (src, size))

    def test_frame_of_a_file_with_a_matrix(self):
        width, height = 18, 5
        # I420 18x5: 90 + 2 * 9 * 3 bytes.
        frame = width * height + 2 * 9 * 3
        frames = [self.random_bytes(frame) for _ in range(3)]
        inp = self.write("in.i420", b"".join(frames))
        rgb = self.convert("I420", "rgb24", f"{width}x{height}", b"".join(frames),
                           "--rgb-type", "rgba", "--matrix", "2020")
        one = width * height * 3
        for n in range(3):
            self.assertEqual(self.preview("--from", "I420", "--size", f"{width}x{height}",
                                          "--in", inp, "--frame", str(n), "--matrix", "6"),
                             (width, height, rgb[n * one:(n + 1) * one]), n)
        # From a pipe, frames read up to the one asked for.
        self.assertEqual(self.preview("--from", "I420", "--size", f"{width}x{height}",
                                      "--in", "/dev/stdin", "--frame", "2", "--matrix", "2020",
                                      stdin=b"".join(frames)),
                         (width, height, rgb[2 * one:]))

    def test_rgb_sources(self):
        width, height = 5, 3
        # rgb24 as written, in both channel orders and bottom-up.
        pixels = self.random_bytes(width * height * 3)
        rows = [pixels[r * width * 3:(r + 1) * width * 3] for r in range(height)]
        swapped = b"".join(bytes([p[2], p[1], p[0]]) for p in
                           (pixels[i:i + 3] for i in range(0, len(pixels), 3)))
        for data, args in ((pixels, ["--rgb-type", "rgba"]),
                           (swapped, []),
                           (b"".join(reversed(rows)), ["--rgb-type", "rgba", "--bottom-up"]),
                           (b"".join(reversed(rows)), ["--rgb-type", "0x8002"])):
            inp = self.write("in.rgb", data)
            self.assertEqual(self.preview("--from", "rgb24", "--size", f"{width}x{height}",
                                          "--in", inp, *args),
                             (width, height, pixels), args)
        # rgb32 ARGB drops alpha; rgb565 and rgb555 widen their channels.
        argb = b"".join(bytes([7]) + pixels[i:i + 3] for i in range(0, len(pixels), 3))
        inp = self.write("in.rgb", argb)
        self.assertEqual(self.preview("--from", "0", "--rgb-type", "argb", "--size",
                                      f"{width}x{height}", "--in", inp)[2], pixels)
        word565 = (0b10101 << 11 | 0b110011 << 5 | 0b00011).to_bytes(2, "little")
        word555 = (0b10101 << 10 | 0b11001 << 5 | 0b00011).to_bytes(2, "little")
        for depth, word, green in (("rgb565", word565, 0b11001111), ("rgb555", word555, 0b11001110)):
            inp = self.write("in.rgb", word * 2)
            red_top = self.preview("--from", depth, "--rgb-type", "rgba", "--size", "2x1",
                                   "--in", inp)[2]
            self.assertEqual(red_top, bytes([0b10101101, green, 0b00011000]) * 2, depth)
            blue_top = self.preview("--from", depth, "--size", "2x1", "--in", inp)[2]
            self.assertEqual(blue_top, bytes([0b00011000, green, 0b10101101]) * 2, depth)

    def test_refusals_leave_no_file(self):
        inp = self.write("in.uyvy", bytes(2 * 4 * 2 * 2))  # two 4x2 frames
        rgb = self.write("in.rgb", bytes(4 * 2 * 3))
        self.write("keep.png", b"previous contents")
        out = ["--out", self.path("new.png")]
        good = ["--from", "UYVY", "--size", "4x2", "--in", inp]
        bad = [
            ["preview", *good],  # no --out
            ["preview", "--size", "4x2", "--in", inp, *out],  # no --from
            ["preview", "--from", "UYVY", "--in", inp, *out],  # no --size with --in
            ["preview", *good, "--frame", "2", *out],  # past the end
            ["preview", *good, "--frame", "-1", *out],
            ["preview", *good, "--frame", "x", *out],
            ["preview", *good, "--frame", "", *out],
            ["preview", *good, "--matrix", "8", *out],
            ["preview", *good, "--matrix", "601-full", *out],
            ["preview", *good, "--rgb-type", "rgba", *out],  # not an RGB source
            ["preview", *good, "--bottom-up", *out],
            ["preview", "--from", "rgb24", "--size", "4x2", "--in", rgb, "--matrix", "709", *out],
            ["preview", "--from", "rgb24", "--size", "4x2", "--in", rgb, "--rgb-type", "4", *out],
            ["preview", "--from", "UYVY", "--frame", "1", *out],  # the bars are one frame
            ["preview", "--from", "UYVY", "--size", "5x2", "--in", inp, *out],  # wrong size
            ["preview", "--from", "rgb48", "--size", "4x2", "--in", rgb, *out],  # short
            ["preview", "--from", "rgb48", "--size", "2x2", "--in", rgb, "--rgb-type", "argb",
             *out],  # rgb48 has no alpha
            ["preview", "--from", "rgb96", "--size", "4x2", "--in", rgb, *out],
            ["preview", "--from", "422P", "--size", "4x2", "--in", self.path("missing"), *out],
            ["preview", *good, "--level", "7", *out],
            ["preview", *good, "--bogus", *out],
            ["preview", *good, "--out", self.path("no/such/dir/x.png")],
            ["preview", *good, "--out", self.dir],
        ]
        for args in bad:
            before = sorted(os.listdir(self.dir))
            res = run(*args)
            err = res.stderr.decode()
            self.assertEqual(res.returncode, 2, (args, err))
            self.assertEqual(len(err.splitlines()), 1, (args, err))
            self.assertTrue(err.startswith("cycbcr: "), err)
            self.assertEqual(sorted(os.listdir(self.dir)), before, args)
        self.assertEqual(self.read("keep.png"), b"previous contents")
        # A pipe that ends before the frame asked for: nothing written.
        res = run("preview", *good[:4], "--in", "/dev/stdin", "--frame", "2",
                  "--out", self.path("keep.png"), stdin=bytes(2 * 4 * 2 * 2))
        self.assertEqual(res.returncode, 2)
        self.assertIn("no frame 2", res.stderr.decode())
        self.assertEqual(self.read("keep.png"), b"previous contents")


class Progress(ToolCase):
    def test_progress_line_only_on_a_terminal(self):
        # Frames trickle in through a pipe, so the run outlasts a second; the
        # same run with stderr on a pipe must stay silent.
        frame = bytes(2 * 8 * 2)
        args = [TOOL, "convert", "--from", "YUY2", "--to", "UYVY", "--size", "8x2",
                "--in", "/dev/stdin"]
        master, slave = pty.openpty()
        on_tty = subprocess.Popen(args + ["--out", self.path("a")], stdin=subprocess.PIPE,
                                  stdout=subprocess.DEVNULL, stderr=slave)
        os.close(slave)
        on_pipe = subprocess.Popen(args + ["--out", self.path("b")], stdin=subprocess.PIPE,
                                   stdout=subprocess.DEVNULL, stderr=subprocess.PIPE)
        # Frames 1 and 2 come within the first second, 3 and 4 at 1.3 s, 5 at 1.7 s.
        for chunk, pause in ((frame, 0.5), (frame, 0.8), (frame * 2, 0.4), (frame, 0)):
            for p in (on_tty, on_pipe):
                p.stdin.write(chunk)
                p.stdin.flush()
            time.sleep(pause)
        for p in (on_tty, on_pipe):
            p.stdin.close()
            self.assertEqual(p.wait(timeout=60), 0)
        shown = b""
        while True:
            try:
                data = os.read(master, 4096)
            except OSError:
                break
            if not data:
                break
            shown += data
        os.close(master)
        self.assertEqual(on_pipe.stderr.read(), b"")
        on_pipe.stderr.close()
        text = shown.decode()
        self.assertRegex(text, r"^\rcycbcr: frame [34]")  # nothing in the first second
        self.assertIn("\rcycbcr: frame 5", text)
        self.assertRegex(text, r"\rcycbcr: frame 5, [0-9]+\.[0-9] MB/s")
        self.assertTrue(text.endswith("\r\x1b[K"), repr(text))
        self.assertEqual(self.read("a"), frame * 5)


class Refusals(ToolCase):
    """Every bad request: status 2, one line on stderr, and the output
    directory exactly as it was (an existing output file untouched)."""

    KEEP = b"previous contents"

    def refuse(self, *args, stdin=None):
        before = {n: self.read(n) for n in os.listdir(self.dir)
                  if os.path.isfile(self.path(n))}
        res = run(*args, stdin=stdin)
        err = res.stderr.decode()
        self.assertEqual(res.returncode, 2, f"{args}: {err}")
        self.assertEqual(len(err.splitlines()), 1, f"{args}: {err!r}")
        self.assertTrue(err.startswith("cycbcr: "), err)
        after = {n: self.read(n) for n in os.listdir(self.dir)
                 if os.path.isfile(self.path(n))}
        self.assertEqual(after, before, args)
        return err

    def setUp(self):
        super().setUp()
        self.write("out.raw", self.KEEP)
        self.good = self.write("good.raw", bytes(2 * 4 * 2 * 3))  # three 4x2 frames

    def convert_args(self, **overrides):
        opts = {"--from": "YUY2", "--to": "UYVY", "--size": "4x2", "--in": self.good,
                "--out": self.path("out.raw")}
        opts.update(overrides)
        args = ["convert"]
        for k, v in opts.items():
            if v is not None:
                args += [k, v]
        return args

    def test_a_good_request_works_in_this_setting(self):
        # Guards the cases below against failing for an unrelated reason.
        res = run(*self.convert_args())
        self.assertEqual(res.returncode, 0, res.stderr.decode())

    def test_bad_rgb_requests(self):
        for to, extra in (("rgb24", ["--matrix", "8"]), ("rgb24", ["--matrix", "-1"]),
                          ("rgb24", ["--matrix", "0x2"]), ("rgb24", ["--matrix", "709-full"]),
                          ("rgb24", ["--rgb-type", "4"]), ("rgb24", ["--rgb-type", "0x8004"]),
                          ("rgb24", ["--rgb-type", "0x10000"]), ("rgb24", ["--rgb-type", "bgrx"]),
                          ("rgb24", ["--rgb-type", "bgra,top-down"]),
                          ("rgb24", ["--rgb-type", "bgra,"]), ("rgb24", ["--bottom-up=1"]),
                          ("rgb24", ["--bottom-up", "--bottom-up"]),
                          ("rgb48", []), ("rgb10", []), ("rgb", []),
                          ("UYVY", ["--matrix", "709"]), ("UYVY", ["--rgb-type", "rgba"]),
                          ("UYVY", ["--bottom-up"])):
            self.refuse(*self.convert_args(**{"--to": to}), *extra)
        # RGB to RGB is never converted.
        self.assertIn("not supported", self.refuse(*self.convert_args(
            **{"--from": "0", "--to": "rgb24"})))
        # Frames too large for the converters' 32-bit byte counts.
        self.refuse("convert", "--from", "I420", "--to", "rgb32", "--size", "32768x32768",
                    "--out", self.path("big.rgb"))

    def test_bad_arguments(self):
        self.refuse("frobnicate")
        self.refuse("cpu", "--extra")
        self.refuse(*self.convert_args(), "--bogus", "1")
        self.refuse(*self.convert_args(), "--to", "YUY2")  # given twice
        self.refuse(*self.convert_args(**{"--from": None}))
        self.refuse(*self.convert_args(**{"--to": None}))
        self.refuse(*self.convert_args(**{"--size": None}))
        self.refuse(*self.convert_args(**{"--level": "9"}))
        self.refuse("convert", "--from", "YUY2", "--to")

    def test_unknown_or_unsupported_codes(self):
        self.assertIn("unknown", self.refuse(*self.convert_args(**{"--from": "NV21"})))
        # NV12 is a source only: the library writes no NV12.
        nv12 = self.write("in.nv12", bytes(4 * 2 + 4))
        for src in ("YUY2", "NV12"):
            self.assertIn("no converters", self.refuse(*self.convert_args(
                **{"--from": src, "--to": "NV12"})))
        self.refuse(*self.convert_args(  # a short frame
            **{"--from": "NV12", "--to": "rgb24", "--size": "4x4", "--in": nv12}))
        self.refuse("preview", "--from", "NV12", "--size", "4x2", "--in", nv12, "--rgb-type",
                    "rgba", "--out", self.path("p.png"))
        self.refuse(*self.convert_args(**{"--to": "YUV2"}))  # case matters
        self.refuse(*self.convert_args(**{"--to": "2VUY"}))
        self.refuse(*self.convert_args(**{"--to": "0x12345678"}))
        self.refuse(*self.convert_args(**{"--to": "UYVYY"}))
        self.refuse(*self.convert_args(**{"--to": "0x"}))
        self.refuse(*self.convert_args(**{"--to": "0x100000000"}))
        self.assertIn("source", self.refuse(*self.convert_args(**{"--to": "422P"})))
        # RGB to RGB, which the library never converts.
        self.assertIn("not supported", self.refuse(*self.convert_args(
            **{"--from": "0", "--to": "0"})))
        self.assertIn("source", self.refuse(*self.convert_args(
            **{"--from": "2vuy", "--to": "422P"})))

    def test_bad_sizes(self):
        for size in ("0x2", "4x0", "4", "4x", "x2", "-4x2", "+4x2", "4x2x", " 4x2", "4X2",
                     "40000x2", "3x2"):
            self.refuse(*self.convert_args(**{"--size": size}))
        # Odd heights for 4:2:0, odd widths for any planar format.
        for size in ("4x3", "3x2"):
            self.refuse(*self.convert_args(**{"--to": "I420", "--size": size}))
        self.refuse(*self.convert_args(**{"--to": "P422", "--size": "3x2"}))
        # Odd widths: refused on a packed 8-bit side even when the other is v210.
        v210 = self.write("v.raw", bytes(v210_row_bytes(3) * 2))
        self.refuse(*self.convert_args(**{"--from": "v210", "--to": "UYVY", "--size": "3x2",
                                          "--in": v210}))

    def test_bad_inputs(self):
        self.refuse(*self.convert_args(**{"--in": self.path("missing.raw")}))
        self.refuse(*self.convert_args(**{"--in": self.dir}))
        self.refuse(*self.convert_args(**{"--in": self.write("empty.raw", b"")}))
        short = self.write("short.raw", bytes(2 * 4 * 2 * 3 - 1))
        self.assertIn("whole number", self.refuse(*self.convert_args(**{"--in": short})))
        self.refuse(*self.convert_args(**{"--in": self.good, "--size": "10x2"}))

    def test_partial_frame_from_a_pipe_removes_the_started_output(self):
        # Two whole frames are written before the short third one shows.
        self.refuse(*self.convert_args(**{"--in": "/dev/stdin"}), stdin=bytes(2 * 4 * 2 * 3 - 2))
        self.refuse(*self.convert_args(**{"--in": "/dev/stdin"}), stdin=b"")

    def test_bad_outputs(self):
        self.refuse(*self.convert_args(**{"--out": self.dir}))
        self.refuse(*self.convert_args(**{"--out": self.path("no/such/dir/out.raw")}))
        self.assertFalse(os.path.exists(self.path("no")))


def words(data):
    return [int.from_bytes(data[i:i + 2], "little") for i in range(0, len(data), 2)]


def word_bytes(values):
    return b"".join(v.to_bytes(2, "little") for v in values)


# The formats named rather than coded: (chroma x step, chroma y step, bits).
PLANAR_NAMED = {"yuv420p10": (2, 2, 10), "yuv420p12": (2, 2, 12), "yuv420p16": (2, 2, 16),
                "yuv422p10": (2, 1, 10), "yuv422p12": (2, 1, 12), "yuv422p16": (2, 1, 16),
                "yuv444p10": (1, 1, 10), "yuv444p12": (1, 1, 12)}
NAMED = list(PLANAR_NAMED) + ["NV12", "NV10", "NV12p16"]


def planar_split(name, data, width, height):
    """The Y, Cb and Cr planes of a named planar frame as lists of rows of
    sample values."""
    cx, cy, _ = PLANAR_NAMED[name]
    cw, ch = -(-width // cx), -(-height // cy)
    values = words(data)
    assert len(values) == width * height + 2 * cw * ch, (name, len(values))
    y = [values[r * width:(r + 1) * width] for r in range(height)]
    at = width * height
    cb = [values[at + r * cw:at + (r + 1) * cw] for r in range(ch)]
    at += cw * ch
    cr = [values[at + r * cw:at + (r + 1) * cw] for r in range(ch)]
    return y, cb, cr


def v210_pixels(data, width, height):
    """(Y, Cb, Cr) of every pixel of a v210 file, each pixel taking its
    pair's chroma."""
    pitch = v210_row_bytes(width)
    frame = []
    for r in range(height):
        s, _ = v210_samples(data[r * pitch:(r + 1) * pitch])
        frame.append([(s[2 * x + 1], s[4 * (x // 2)], s[4 * (x // 2) + 2]) for x in range(width)])
    return frame


class NamedFormats(ToolCase):
    """The formats without codes, converted through the library's named
    converters, their files checked against models of the formats."""

    def random_planar(self, name, width, height):
        cx, cy, bits = PLANAR_NAMED[name]
        n = width * height + 2 * -(-width // cx) * -(-height // cy)
        return word_bytes(self.rng.getrandbits(bits) for _ in range(n))

    def test_planar_to_v210_holds_each_pixels_samples(self):
        for name, (cx, cy, bits) in PLANAR_NAMED.items():
            if name == "yuv420p12":
                continue  # the library packs it to NV12p16 only (below)
            for size in ("12x2", "17x3", "50x5"):
                w, h = map(int, size.split("x"))
                data = self.random_planar(name, w, h)
                got = v210_pixels(self.convert(name, "v210", size, data), w, h)
                y, cb, cr = planar_split(name, data, w, h)
                # 10 bits kept: 12-bit samples lose two, 16-bit six; a v210
                # pair takes the chroma of its even pixel, a row the chroma
                # row of its 4:2:0 pair.
                down = {10: lambda v: v & 0x3FF, 12: lambda v: (v >> 2) & 0x3FF,
                        16: lambda v: v >> 6}[bits]
                for r in range(h):
                    for x in range(w):
                        c = (x - x % 2) // cx
                        want = (down(y[r][x]), down(cb[r // cy][c]), down(cr[r // cy][c]))
                        self.assertEqual(got[r][x], want, (name, size, r, x))

    def test_round_trips_through_v210(self):
        for size in ("12x2", "17x3", "50x5"):
            w, h = map(int, size.split("x"))
            for name in ("yuv422p10", "yuv420p10"):
                data = self.random_planar(name, w, h)
                v210 = self.convert(name, "v210", size, data)
                self.assertEqual(self.convert("v210", name, size, v210), data, (name, size))
            # To 16 bits: the 10-bit samples shifted up.
            data = self.random_planar("yuv422p10", w, h)
            v210 = self.convert("yuv422p10", "v210", size, data)
            self.assertEqual(self.convert("v210", "yuv422p16", size, v210),
                             word_bytes(v << 6 for v in words(data)), size)
            # To 4:4:4: each odd pixel takes its pair's chroma.
            y, cb, cr = planar_split("yuv422p10", data, w, h)
            wide = [[row[x // 2] for x in range(w)] for row in cb + cr]
            want = word_bytes(sum(y, []) + sum(wide, []))
            self.assertEqual(self.convert("v210", "yuv444p10", size, v210), want, size)

    def test_semi_planar_sources(self):
        w, h = 14, 5
        cw, ch = 7, 3
        nv12 = self.random_bytes(w * h + 2 * cw * ch)
        uyvy = self.convert("NV12", "UYVY", f"{w}x{h}", nv12)
        for r in range(h):
            for x in range(0, w, 2):
                c = w * h + (r // 2) * 2 * cw + x
                pair = uyvy[r * 2 * w + 2 * x:r * 2 * w + 2 * x + 4]
                self.assertEqual(pair, bytes([nv12[c], nv12[r * w + x], nv12[c + 1],
                                              nv12[r * w + x + 1]]), (r, x))
        got = v210_pixels(self.convert("NV12", "v210", f"{w}x{h}", nv12), w, h)
        for r in range(h):
            for x in range(w):
                c = w * h + (r // 2) * 2 * cw + (x - x % 2)
                want = (nv12[r * w + x] << 2, nv12[c] << 2, nv12[c + 1] << 2)
                self.assertEqual(got[r][x], want, (r, x))
        # NV10 masks its words to 10 bits; NV12p16 is read as NV10 of the top
        # ten bits.
        values = [self.rng.getrandbits(16) for _ in range(w * h + 2 * cw * ch)]
        for name, down in (("NV10", lambda v: v & 0x3FF), ("NV12p16", lambda v: v >> 6)):
            got = v210_pixels(self.convert(name, "v210", f"{w}x{h}", word_bytes(values)), w, h)
            for r in range(h):
                for x in range(w):
                    c = w * h + (r // 2) * 2 * cw + (x - x % 2)
                    want = (down(values[r * w + x]), down(values[c]), down(values[c + 1]))
                    self.assertEqual(got[r][x], want, (name, r, x))

    def test_planar_420_to_nv12p16(self):
        # Odd sizes too: their last chroma column and row are the source's.
        for w, h in ((10, 4), (11, 5)):
            for name, shift in (("yuv420p10", 6), ("yuv420p12", 4), ("yuv420p16", 0)):
                data = self.random_planar(name, w, h)
                y, cb, cr = planar_split(name, data, w, h)
                want = [v << shift for v in sum(y, [])]
                for r in range(-(-h // 2)):
                    for k in range(-(-w // 2)):
                        want += [cb[r][k] << shift, cr[r][k] << shift]
                got = words(self.convert(name, "NV12p16", f"{w}x{h}", data))
                self.assertEqual(got, [v & 0xFFFF for v in want], (name, w, h))

    def test_every_named_format_previews_the_bars(self):
        for name in NAMED:
            for size in ("64x2", "31x3"):
                w, h = map(int, size.split("x"))
                res = run("preview", "--from", name, "--size", size, "--out", self.path("p.png"))
                self.assertEqual(res.returncode, 0, (name, res.stderr.decode()))
                width, height, pixels = read_png(self.read("p.png"))
                self.assertEqual((width, height), (w, h))
                if w == 64:
                    # The middle of each bar, away from chroma shared across
                    # a bar edge.
                    self.assert_bars([pixels[3 * (8 * i + 4):3 * (8 * i + 4) + 3]
                                      for i in range(8)])

    def test_named_requests_refused_and_nothing_written(self):
        inp = self.write("in.raw", bytes(4 * 2 * 2 * 3))
        for src, dst, said in (("UYVY", "yuv422p12", "no converters"),
                               ("rgb24", "yuv422p10", "no converter from rgb24"),
                               ("v210", "NV12", "no converters"),
                               ("yuv422p10", "UYVY", "even")):
            res = run("convert", "--from", src, "--to", dst, "--size",
                      "3x2" if dst == "UYVY" else "4x2", "--in", inp,
                      "--out", self.path("out.raw"))
            err = res.stderr.decode()
            self.assertEqual(res.returncode, 2, (src, dst, err))
            self.assertEqual(len(err.splitlines()), 1, err)
            self.assertIn(said, err, (src, dst))
            self.assertEqual(os.listdir(self.dir), ["in.raw"])


class ColourConverters(ToolCase):
    """The high-bit-depth colour converters as the command calls them, held to
    each other where the rules make two routes give the same bytes, and to the
    library's 8-bit engine."""

    def planar(self, name, w, h, samples):
        """A named planar frame from per-plane sample functions of (x, y)."""
        cx, cy, _ = PLANAR_NAMED[name]
        cw, ch = -(-w // cx), -(-h // cy)
        y = [samples[0](x, r) for r in range(h) for x in range(w)]
        cb = [samples[1](x, r) for r in range(ch) for x in range(cw)]
        cr = [samples[2](x, r) for r in range(ch) for x in range(cw)]
        return word_bytes(y + cb + cr)

    def random_samples(self, bits, w, h, cw, ch):
        n = w * h + 2 * cw * ch
        return [self.rng.getrandbits(bits) for _ in range(n)]

    def test_ten_bit_black_through_the_8bit_offset(self):
        data = self.planar("yuv422p10", 8, 2, [lambda x, r: 64, lambda x, r: 512,
                                                 lambda x, r: 512])
        # The 8-bit offset 16 on raw 10-bit luma: (64 - 16) * 11640 / 40000 = 13.
        self.assertEqual(self.convert("yuv422p10", "rgb24", "8x2", data), bytes([13]) * 48)

    def test_sixteen_bit_planes_are_the_8bit_engine_on_their_high_bytes(self):
        w, h = 18, 6
        values = self.random_samples(16, w, h, w // 2, h // 2)
        i420 = bytes(v >> 8 for v in values)
        for depth in ("rgb24", "rgb32", "rgb565"):
            self.assertEqual(self.convert("yuv420p16", depth, f"{w}x{h}", word_bytes(values)),
                             self.convert("I420", depth, f"{w}x{h}", i420), depth)

    def test_twelve_bit_is_ten_bit_scaled(self):
        w, h = 16, 3
        values = self.random_samples(10, w, h, w // 2, h)
        p10 = word_bytes(values)
        p12 = word_bytes(v << 2 for v in values)
        for depth in ("rgb48", "rgb64"):
            self.assertEqual(self.convert("yuv422p12", depth, f"{w}x{h}", p12),
                             self.convert("yuv422p10", depth, f"{w}x{h}", p10), depth)
        self.assertEqual(self.convert("yuv422p12", "rgbp16", f"{w}x{h}", p12),
                         self.convert("yuv422p10", "rgbp16", f"{w}x{h}", p10))

    def test_rgb_planes_hold_the_packed_pixels(self):
        w, h = 20, 4
        # 8-bit planar to three planes: the 8-bit engine's rgb24 pixels, split.
        i420 = self.random_bytes(w * h * 3 // 2)
        packed = self.convert("I420", "rgb24", f"{w}x{h}", i420, "--rgb-type", "rgba")
        planes = self.convert("I420", "rgbp8", f"{w}x{h}", i420)
        self.assertEqual(planes, packed[0::3] + packed[1::3] + packed[2::3])
        floats = self.convert("I420", "rgbpf", f"{w}x{h}", i420)
        # Floats on the 8-bit scale, not cut to integers.
        got = struct.unpack(f"<{3 * w * h}f", floats)
        for a, b in zip(got, planes):
            # The float set is unrounded, the 8-bit one its x 10000 rounding
            # truncated: within a unit and a half.
            self.assertTrue(abs(a - (b + 0.5)) <= 1.0, (a, b))
        # 10-bit planes to 16-bit planes: the 16-bit-per-channel pixels, split.
        p10 = word_bytes(self.random_samples(10, w, h, w // 2, h))
        rgb48 = words(self.convert("yuv422p10", "rgb48", f"{w}x{h}", p10, "--rgb-type", "rgba"))
        planes16 = words(self.convert("yuv422p10", "rgbp16", f"{w}x{h}", p10))
        self.assertEqual(planes16, rgb48[0::3] + rgb48[1::3] + rgb48[2::3])

    def test_rgb_sources_to_planar(self):
        w, h = 14, 3
        rgb32 = self.random_bytes(w * h * 4)
        rgb64 = b"".join(bytes([0, b]) for b in rgb32)  # each byte as the word b << 8
        for name in ("yuv444p10",):
            self.assertEqual(self.convert("rgb64", name, f"{w}x{h}", rgb64),
                             self.convert("rgb32", name, f"{w}x{h}", rgb32), name)
        words10 = self.random_bytes(w * h * 4)
        p10 = words(self.convert("rgb10", "yuv422p10", f"{w}x{h}", words10))
        p16 = words(self.convert("rgb10", "yuv422p16", f"{w}x{h}", words10))
        self.assertEqual(p16, [v << 6 for v in p10])
        self.assertTrue(all(v < 1024 for v in p10))

    def test_bars_survive_every_route(self):
        """The built-in bars through each colour converter, then previewed:
        the eight bars come back. (10-bit luma through cycbcr_10ToRGBInt, and
        RGB through cycbcr_RGB64_to_YCbCrPlanar16, keep their deliberate
        10-bit luma offsets and are left out. The 16-bit planes' samples are
        the 10-bit bars shifted up, so their top 8 bits truncate before the
        engine truncates again: more slack for them.)"""
        for src, dst in (("yuv422p10", "rgbp16"), ("yuv420p12", "rgb48"), ("yuv422p12", "rgbp16"),
                         ("yuv420p16", "rgb32"), ("P422", "rgbp8"), ("I420", "rgbpf"),
                         ("rgb32", "yuv444p10"), ("rgb64", "yuv422p12"),
                         ("rgb10", "yuv422p10")):
            # 66: the six-pixel blocks of the RGB10 converter fill the row.
            w = 66 if src == "rgb10" else 64
            res = run("convert", "--from", src, "--to", dst, "--size", f"{w}x2", "--out",
                      self.path("o.raw"))
            self.assertEqual(res.returncode, 0, (src, dst, res.stderr.decode()))
            res = run("preview", "--from", dst, "--size", f"{w}x2", "--in", self.path("o.raw"),
                      "--out", self.path("p.png"))
            self.assertEqual(res.returncode, 0, (src, dst, res.stderr.decode()))
            _, _, pixels = read_png(self.read("p.png"))
            mids = [(2 * i + 1) * w // 16 for i in range(8)]
            lit = [(1, 1, 1), (1, 1, 0), (0, 1, 1), (0, 1, 0), (1, 0, 1), (1, 0, 0), (0, 0, 1),
                   (0, 0, 0)]
            slack = 3 if src == "yuv420p16" else 1
            for x, on in zip(mids, lit):
                for got, want in zip(pixels[3 * x:3 * x + 3], on):
                    self.assertLessEqual(abs(got - 191 * want), slack, (src, dst, x))

    def test_converter_option(self):
        w, h = 12, 2
        p12 = word_bytes(self.random_samples(12, w, h, w // 2, h))
        self.convert("yuv422p12", "rgb48", f"{w}x{h}", p12, "--converter", "cycbcr_12ToRGBInt16")
        res = run("convert", "--from", "yuv422p12", "--to", "rgb48", "--size", "12x2",
                  "--converter", "cycbcr_10ToRGBInt16", "--out", self.path("x.raw"))
        self.assertEqual(res.returncode, 2)
        self.assertIn("does not convert", res.stderr.decode())
        self.assertFalse(os.path.exists(self.path("x.raw")))


class Scale(ToolCase):
    """cycbcr scale: the reduction by 1.5 against a model of its rule, the
    refusals, and the output previewed."""

    def scale(self, src, size, data, *extra):
        inp = self.write("in.raw", data)
        res = run("scale", "--from", src, "--size", size, "--scale", "150", "--in", inp,
                  "--out", self.path("out.raw"), *extra)
        self.assertEqual(res.returncode, 0, res.stderr.decode())
        return self.read("out.raw")

    def test_uyvy_reduced_by_one_and_a_half(self):
        w, h = 12, 7
        data = self.random_bytes(2 * w * h)
        for is422 in (False, True):
            out = self.scale("UYVY", f"{w}x{h}", data, *(["--422"] if is422 else []))
            W, H = 2 * w // 3, 2 * h // 3
            cw, ch = -(-W // 2), H if is422 else -(-H // 2)
            self.assertEqual(len(out), W * H + 2 * cw * ch)
            ys, cbs, crs = [], [], []
            for j in range(H):
                row = data[(((3 * j) >> 1) & ~1) * 2 * w:][:2 * w]
                luma, cb, cr = [], [], []
                for g in range(0, w, 6):
                    b = row[2 * g:2 * g + 12]
                    Y = [b[1], b[3], b[5], b[7], b[9], b[11]]
                    luma += [(Y[0] + Y[1]) >> 1, Y[2], (Y[3] + Y[4]) >> 1, Y[5]]
                    cb += [b[0], b[8]]
                    cr += [b[2], b[10]]
                ys.append(bytes(luma[:W]))
                if is422 or j % 2 == 0:
                    cbs.append(bytes(cb[:cw]))
                    crs.append(bytes(cr[:cw]))
            self.assertEqual(out, b"".join(ys + cbs + crs), is422)

    def test_v210_reduced_by_one_and_a_half(self):
        w, h = 48, 4
        samples = [[self.rng.getrandbits(10) for _ in range(2 * w)] for _ in range(h)]
        data = b"".join(v210_row(row, w) for row in samples)
        out = self.scale("v210", f"{w}x{h}", data)
        W, H = 32, 2
        ys, cbs, crs = [], [], []
        for j in range(H):
            s = samples[((3 * j) >> 1) & ~1]
            luma, cb, cr = [], [], []
            for g in range(0, 2 * w, 12):
                b = s[g:g + 12]
                Y = [b[1], b[3], b[5], b[7], b[9], b[11]]
                luma += [(Y[0] + Y[1]) >> 3, Y[2] >> 2, (Y[3] + Y[4]) >> 3, Y[5] >> 2]
                cb += [b[0] >> 2, b[8] >> 2]
                cr += [b[2] >> 2, b[10] >> 2]
            ys.append(bytes(luma[:W]))
            if j % 2 == 0:
                cbs.append(bytes(cb[:W // 2]))
                crs.append(bytes(cr[:W // 2]))
        self.assertEqual(out, b"".join(ys + cbs + crs))

    def test_every_scale_previews(self):
        for scale in ("100", "150", "200", "300", "400"):
            res = run("scale", "--from", "v210", "--size", "96x12", "--scale", scale, "--422",
                      "--out", self.path("s.raw"))
            self.assertEqual(res.returncode, 0, (scale, res.stderr.decode()))
            size = re.search(r"-> (\d+x\d+) P422", res.stderr.decode()).group(1)
            p = run("preview", "--from", "P422", "--size", size, "--in", self.path("s.raw"),
                    "--out", self.path("s.png"))
            self.assertEqual(p.returncode, 0, (scale, p.stderr.decode()))

    def test_uyvy_at_other_scales_is_refused(self):
        for scale in ("200", "300", "400"):
            res = run("scale", "--from", "UYVY", "--size", "12x6", "--scale", scale, "--out",
                      self.path("s.raw"))
            self.assertEqual(res.returncode, 2, scale)
            self.assertIn("150 only", res.stderr.decode())
            self.assertEqual(os.listdir(self.dir), [])
        res = run("scale", "--from", "v210", "--scale", "125", "--out", self.path("s.raw"))
        self.assertEqual(res.returncode, 2)
        self.assertEqual(os.listdir(self.dir), [])



def psnr(weighted, samples):
    """10 log10(samples / weighted), where weighted sums each squared
    difference over its plane's peak squared; inf when nothing differs."""
    return math.inf if weighted == 0 else 10 * math.log10(samples / weighted)


def uyvy_planes(data, width, height):
    """The Y, Cb, Cr samples of a UYVY frame of even width, each plane a flat
    list, rows top first."""
    y, cb, cr = [], [], []
    for i in range(0, width * height * 2, 4):
        cb.append(data[i])
        y += [data[i + 1], data[i + 3]]
        cr.append(data[i + 2])
    return [y, cb, cr]


class Compare(ToolCase):
    """cycbcr compare: the PSNR and differences it prints against the same
    worked out here from the files' samples, its exit statuses, and which
    file it converts to the other's format."""

    # A height of whole 4-row groups: the library's 4:2:0 chroma rows serve
    # rows of two interlaced fields.
    W, H = 14, 8
    SIZE = "14x8"

    def compare(self, a, b, fmt, *extra, status=None):
        """Runs compare on two byte strings; returns the status, the frame
        lines' fields and the summary line (its text before the colon and its
        fields)."""
        res = run("compare", self.write("a.raw", a), self.write("b.raw", b), "--format", fmt,
                  "--size", self.SIZE, *extra)
        self.assertIn(res.returncode, (0, 1), res.stderr.decode())
        if status is not None:
            self.assertEqual(res.returncode, status, res.stdout.decode())
        self.assertEqual(res.stderr, b"")
        lines = res.stdout.decode().splitlines()
        frames = []
        for n, line in enumerate(lines[:-1]):
            m = re.fullmatch(r"frame (\d+): (.*)", line)
            self.assertTrue(m, line)
            self.assertEqual(int(m.group(1)), n)
            frames.append(dict(re.findall(r"([\w-]+)=(\S+)", m.group(2))))
        head, _, rest = lines[-1].partition(": ")
        return res.returncode, frames, head, dict(re.findall(r"([\w-]+)=(\S+)", rest))

    def assert_psnr(self, text, want, what=""):
        if want == math.inf:
            self.assertEqual(text, "inf", what)
        else:
            self.assertRegex(text, r"^-?\d+\.\d\d$", what)
            self.assertLessEqual(abs(float(text) - want), 0.005 + 1e-9, (what, text, want))

    def assert_planes(self, fields, names, a_planes, b_planes, peaks, copies=1):
        """The PSNR of each plane and overall and the largest difference of
        planes a against b (each plane's errors counted `copies` times, as in
        a summary over that many equal frames). Returns the overall PSNR."""
        weighted, samples, largest = 0.0, 0, 0
        for name, pa, pb, peak in zip(names, a_planes, b_planes, peaks):
            self.assertEqual(len(pa), len(pb))
            sq = sum((x - y) ** 2 for x, y in zip(pa, pb)) * copies
            n = len(pa) * copies
            self.assert_psnr(fields[name], psnr(sq / peak ** 2, n), name)
            weighted += sq / peak ** 2
            samples += n
            largest = max([largest] + [abs(x - y) for x, y in zip(pa, pb)])
        self.assertEqual(int(fields["max-diff"]), largest)
        return psnr(weighted, samples)

    def test_identical_files_exit_0_with_inf(self):
        w, h = self.W, self.H
        cases = [("UYVY", w * h * 2, ["Y", "Cb", "Cr"]),
                 ("yuv420p16", 2 * (w * h + 2 * 7 * 4), ["Y", "Cb", "Cr"]),
                 ("rgb24", w * h * 3, ["R", "G", "B"])]
        for fmt, frame_bytes, names in cases:
            data = self.random_bytes(3 * frame_bytes)
            status, frames, head, summary = self.compare(data, bytes(data), fmt, status=0)
            self.assertEqual(len(frames), 3, fmt)
            for f in frames:
                self.assertEqual(list(f), names + ["overall", "max-diff"], fmt)
                self.assertEqual(set(f.values()), {"inf", "0"}, fmt)
            self.assertEqual(head, f"{fmt} vs {fmt} {self.SIZE}")
            self.assertEqual(summary, {"frames": "3", **{n: "inf" for n in names},
                                       "mean": "inf", "min": "inf", "max-diff": "0"})

    def test_changed_samples_give_their_psnr_and_difference(self):
        w, h = self.W, self.H
        cw = w // 2

        def uyvy():
            frame = bytearray(self.random_bytes(w * h * 2))
            changed = bytearray(frame)
            at = 3 * w * 2 + 4 * 5 + 2  # row 3, pair 5, Cr
            changed[at] = (frame[at] + 77) % 256
            return ("UYVY", [], frame, changed, ["Y", "Cb", "Cr"], [255] * 3,
                    lambda f: uyvy_planes(f, w, h))

        def yuv422p10():
            values = [self.rng.getrandbits(10) for _ in range(w * h + 2 * cw * h)]
            changed = list(values)
            changed[2 * w + 9] ^= 0x2A5  # Y of row 2, pixel 9
            split = lambda f: [words(f)[:w * h], words(f)[w * h:w * h + cw * h],
                               words(f)[w * h + cw * h:]]
            return ("yuv422p10", [], word_bytes(values), word_bytes(changed), ["Y", "Cb", "Cr"],
                    [1023] * 3, split)

        def v210():
            # Samples in address order, Cb Y Cr Y per pixel pair, padded with
            # zeros to whole 6-pixel groups.
            rows = [[self.rng.getrandbits(10) for _ in range(4 * cw)] + [0] * 8
                    for _ in range(h)]
            changed = [list(r) for r in rows]
            changed[4][4 * 6] ^= 0x3FF  # Cb of row 4, pair 6 (pixels 12 and 13)

            def pack(rs):
                return b"".join(v210_row(r, w) for r in rs)

            def split(f):
                planes = [[], [], []]
                for r in range(h):
                    s, _ = v210_samples(f[r * 128:(r + 1) * 128])
                    for p in range(cw):
                        planes[1].append(s[4 * p])
                        planes[0] += [s[4 * p + 1], s[4 * p + 3]]
                        planes[2].append(s[4 * p + 2])
                return planes
            return ("v210", [], pack(rows), pack(changed), ["Y", "Cb", "Cr"], [1023] * 3, split)

        def rgb48():
            values = [self.rng.getrandbits(16) for _ in range(3 * w * h)]
            changed = list(values)
            changed[3 * (w + 4) + 1] ^= 0x8421  # G of row 1, pixel 4
            split = lambda f: [words(f)[2::3], words(f)[1::3], words(f)[0::3]]  # B G R
            return ("rgb48", [], word_bytes(values), word_bytes(changed), ["R", "G", "B"],
                    [65535] * 3, split)

        def rgb565():
            # rgba: red in the top 5 bits, then 6 of green, 5 of blue. Two
            # channels of one pixel change, by 5 (green, of 63) and 3 (blue,
            # of 31): the overall PSNR weighs each by its own peak.
            values = [self.rng.getrandbits(16) for _ in range(w * h)]
            changed = list(values)
            values[20] = 10 << 11 | 20 << 5 | 7
            changed[20] = 10 << 11 | 25 << 5 | 10
            split = lambda f: [[v >> 11 for v in words(f)], [v >> 5 & 63 for v in words(f)],
                               [v & 31 for v in words(f)]]
            return ("rgb565", ["--rgb-type", "rgba"], word_bytes(values), word_bytes(changed),
                    ["R", "G", "B"], [31, 63, 31], split)

        for make in (uyvy, yuv422p10, v210, rgb48, rgb565):
            fmt, extra, frame, changed, names, peaks, split = make()
            frame, changed = bytes(frame), bytes(changed)
            status, frames, head, summary = self.compare(frame + frame, frame + changed, fmt,
                                                         *extra, status=1)
            self.assertEqual(len(frames), 2)
            self.assertEqual(set(frames[0].values()), {"inf", "0"}, fmt)
            a, b = split(frame), split(changed)
            overall = self.assert_planes(frames[1], names, a, b, peaks)
            self.assert_psnr(frames[1]["overall"], overall, fmt)
            self.assertLess(overall, math.inf)
            # Over both frames: twice the samples, the same errors.
            weighted = sum(sum((x - y) ** 2 for x, y in zip(pa, pb)) / pk ** 2
                           for pa, pb, pk in zip(a, b, peaks))
            n = sum(len(pa) for pa in a)
            for name, pa, pb, pk in zip(names, a, b, peaks):
                sq = sum((x - y) ** 2 for x, y in zip(pa, pb))
                self.assert_psnr(summary[name], psnr(sq / pk ** 2, 2 * len(pa)), (fmt, name))
            self.assert_psnr(summary["mean"], psnr(weighted, 2 * n), fmt)
            self.assertEqual(summary["min"], frames[1]["overall"], fmt)
            self.assertEqual(summary["max-diff"], frames[1]["max-diff"], fmt)
            self.assertEqual(summary["frames"], "2")
            # --max-diff: the largest difference passes, one less does not.
            d = int(summary["max-diff"])
            self.compare(frame + frame, frame + changed, fmt, *extra, "--max-diff", str(d),
                         status=0)
            self.compare(frame + frame, frame + changed, fmt, *extra, "--max-diff", str(d - 1),
                         status=1)

    def test_layouts_of_the_same_planes_compare_sample_for_sample(self):
        w, h = self.W, self.H
        uyvy = self.random_bytes(w * h * 2)
        rows = [uyvy[r * 2 * w:(r + 1) * 2 * w] for r in range(h)]
        yuy2 = reorder(uyvy, (1, 0, 3, 2))
        cyuv = b"".join(reversed(rows))  # bottom row first
        i420 = self.random_bytes(w * h * 3 // 2)
        yvyu = reorder(uyvy, (1, 2, 3, 0))
        y, cb, cr = uyvy_planes(uyvy, w, h)
        p422 = bytes(y + cb + cr)
        quarter = w * h // 4
        yv12 = i420[:w * h] + i420[w * h + quarter:] + i420[w * h:w * h + quarter]
        nv12 = bytearray(i420[:w * h + 2 * quarter])
        nv12[w * h::2], nv12[w * h + 1::2] = i420[w * h:w * h + quarter], i420[w * h + quarter:]
        # R, G, B planes against abgr pixels (A B G R), alpha not compared.
        planes = self.random_bytes(3 * w * h)
        abgr = bytearray(self.random_bytes(4 * w * h))
        for c, at in ((0, 3), (1, 2), (2, 1)):
            abgr[at::4] = planes[c * w * h:(c + 1) * w * h]
        for fmt, a, fmt_b, b, extra in [
                ("UYVY", uyvy, "YUY2", yuy2, []), ("UYVY", uyvy, "YVYU", yvyu, []),
                ("UYVY", uyvy, "cyuv", cyuv, []), ("UYVY", uyvy, "P422", p422, []),
                ("I420", i420, "YV12", yv12, []), ("I420", i420, "NV12", bytes(nv12), []),
                ("rgbp8", planes, "rgb32", bytes(abgr), ["--rgb-type", "abgr"])]:
            status, frames, head, summary = self.compare(a, b, fmt, "--format-b", fmt_b, *extra,
                                                         status=0)
            self.assertEqual(head, f"{fmt} vs {fmt_b} {self.SIZE}")
            self.assertEqual(summary["mean"], "inf")
        # The same bytes as cyuv are the picture upside down: the rows differ.
        status, frames, head, summary = self.compare(uyvy, uyvy, "UYVY", "--format-b", "cyuv",
                                                     status=1)
        self.assert_planes(frames[0], ["Y", "Cb", "Cr"], uyvy_planes(uyvy, w, h),
                           uyvy_planes(cyuv, w, h), [255] * 3)
        # v210 against 10-bit planes: the same samples, one Cr changed by 300.
        cw = w // 2
        y, cb, cr = ([self.rng.getrandbits(10) for _ in range(n)] for n in (w * h, cw * h,
                                                                            cw * h))
        planar = word_bytes(y + cb + cr)
        cr2 = list(cr)
        cr2[3 * cw + 2] = (cr[3 * cw + 2] + 300) % 1024
        v210 = b"".join(
            v210_row(sum(([cb[r * cw + p], y[r * w + 2 * p], cr2[r * cw + p],
                           y[r * w + 2 * p + 1]] for p in range(cw)), []) + [0] * 8, w)
            for r in range(h))
        status, frames, head, summary = self.compare(v210, planar, "v210", "--format-b",
                                                     "yuv422p10", status=1)
        self.assertEqual(head, f"v210 vs yuv422p10 {self.SIZE}")
        self.assert_planes(frames[0], ["Y", "Cb", "Cr"], [y, cb, cr2], [y, cb, cr], [1023] * 3)
        self.assertEqual(frames[0]["Y"], "inf")

    def test_other_formats_are_converted_to_the_first_files(self):
        w, h = self.W, self.H
        names = ["Y", "Cb", "Cr"]
        # A picture whose chroma is the same down every column is the same
        # picture in UYVY and in I420, both ways.
        row = self.random_bytes(2 * w)
        luma = self.random_bytes(w * h)
        flat = bytearray(row * h)
        flat[1::2] = luma
        flat = bytes(flat)
        i420 = self.convert("UYVY", "I420", self.SIZE, flat)
        for fmt, a, fmt_b, b in [("UYVY", flat, "I420", i420), ("I420", i420, "UYVY", flat)]:
            status, frames, head, summary = self.compare(a, b, fmt, "--format-b", fmt_b,
                                                         status=0)
            self.assertEqual(head, f"{fmt} vs {fmt_b} {self.SIZE} ({fmt_b} converted to {fmt})")
            self.assertEqual(summary["mean"], "inf")
        # Any UYVY picture against its I420 frame: the I420 frame as the
        # library's converter brings it back to UYVY, compared here.
        uyvy = self.random_bytes(w * h * 2)
        i420 = self.convert("UYVY", "I420", self.SIZE, uyvy)
        back = self.convert("I420", "UYVY", self.SIZE, i420)
        status, frames, head, summary = self.compare(uyvy, i420, "UYVY", "--format-b", "I420",
                                                     status=1)
        overall = self.assert_planes(frames[0], names, uyvy_planes(uyvy, w, h),
                                     uyvy_planes(back, w, h), [255] * 3)
        self.assertEqual(frames[0]["Y"], "inf")
        self.assert_psnr(summary["mean"], overall)
        # RGB against YCbCr: the YCbCr file converted with --matrix.
        rgb = self.convert("UYVY", "rgb24", self.SIZE, uyvy, "--matrix", "709")
        self.compare(rgb, uyvy, "rgb24", "--format-b", "UYVY", "--matrix", "709", status=0)
        status, frames, head, summary = self.compare(rgb, uyvy, "rgb24", "--format-b", "UYVY",
                                                     status=1)
        self.assertEqual(head, f"rgb24 vs UYVY {self.SIZE} (UYVY converted to rgb24)")
        # No converter from UYVY writes rgb48: the rgb48 file is converted.
        rgb48 = self.random_bytes(w * h * 6)
        yuv = self.convert("rgb48", "UYVY", self.SIZE, rgb48)
        status, frames, head, summary = self.compare(uyvy, rgb48, "UYVY", "--format-b", "rgb48")
        self.assertEqual(head, f"UYVY vs rgb48 {self.SIZE} (rgb48 converted to UYVY)")
        self.assert_planes(frames[0], names, uyvy_planes(uyvy, w, h), uyvy_planes(yuv, w, h),
                           [255] * 3)

    def test_v210_against_its_8bit_frame_by_the_rounding_rule(self):
        # Y samples on the rounding edges, chroma 512: at level 0 the UYVY
        # frame holds 128, 129, 255, 255, 255, 255 (saturating), which widen
        # back (v << 2) to 512, 516, 1020, ...: differences 1, 2, 0, 1, 2, 3.
        ys = [513, 514, 1020, 1021, 1022, 1023]
        v210 = v210_row([v for i in (0, 2, 4) for v in (512, ys[i], 512, ys[i + 1])], 6) * 4
        self.SIZE = "6x4"
        uyvy = self.convert("v210", "UYVY", self.SIZE, v210, "--level", "0")
        status, frames, head, summary = self.compare(v210, uyvy, "v210", "--format-b", "UYVY",
                                                     status=1)
        self.assertEqual(head, "v210 vs UYVY 6x4 (UYVY converted to v210)")
        self.assertEqual(frames[0]["max-diff"], "3")
        self.assert_psnr(frames[0]["Y"], psnr(19 / 1023 ** 2, 6))
        self.assertEqual((frames[0]["Cb"], frames[0]["Cr"]), ("inf", "inf"))
        # All 48 samples of the frame count overall: 24 Y, 12 Cb, 12 Cr.
        self.assert_psnr(frames[0]["overall"], psnr(4 * 19 / 1023 ** 2, 48))
        self.compare(v210, uyvy, "v210", "--format-b", "UYVY", "--max-diff", "3", status=0)
        # The other way round the v210 frame is rounded to 8 bits, at the
        # level asked for: the same frame at level 0; at level 5, where 1022
        # and 1023 wrap to 0, differences of 255.
        self.compare(uyvy, v210, "UYVY", "--format-b", "v210", "--level", "0", status=0)
        if chosen_level() == 5:
            status, frames, head, summary = self.compare(uyvy, v210, "UYVY", "--format-b",
                                                         "v210", "--level", "5", status=1)
            self.assertEqual(summary["max-diff"], "255")

    def test_bad_input_exits_2_with_a_message(self):
        w, h = self.W, self.H
        frame = self.random_bytes(w * h * 2)
        a = self.write("a.uyvy", frame * 2)
        one = self.write("one.uyvy", frame)
        short = self.write("short.uyvy", frame[:-1])
        rgb = self.write("a.rgb24", self.random_bytes(w * h * 3))
        base = ["--format", "UYVY", "--size", self.SIZE]
        cases = [
            ([a, self.path("missing"), *base], "missing"),
            ([a, short, *base], "not a whole number"),
            ([a, one, *base], "as many frames"),
            ([a, a, "--format", "ABCD", "--size", self.SIZE], "ABCD"),
            ([a, *base], "two files"),
            ([a, a, a, *base], "two files"),
            ([a, a, "--size", self.SIZE], "--format is required"),
            ([a, a, "--format", "UYVY"], "--size is required"),
            ([a, a, *base, "--max-diff", "-1"], "--max-diff"),
            ([a, a, *base, "--matrix", "709"], "--matrix"),
            ([a, a, *base, "--rgb-type", "rgba"], "--rgb-type"),
            ([a, a, *base, "--format-b", "rgb32f"], "rgb32f"),
            ([rgb, rgb, "--format", "rgb24", "--format-b", "rgb48", "--size", self.SIZE],
             "one format"),
        ]
        for args, message in cases:
            res = run("compare", *args)
            self.assertEqual(res.returncode, 2, args)
            self.assertEqual(res.stdout, b"", args)
            self.assertRegex(res.stderr.decode(), r"^cycbcr: .*\n$", args)
            self.assertIn(message, res.stderr.decode(), args)
        # From a pipe the shorter input is found at its end, after the frames
        # both hold.
        res = run("compare", a, "/dev/stdin", *base, stdin=frame)
        self.assertEqual(res.returncode, 2)
        self.assertRegex(res.stdout.decode(), r"^frame 0: .*\n$")
        self.assertIn("has no frame 1", res.stderr.decode())


# Frames with padded rows: the layout of each plane as the usage text gives it
# (bytes a row, rows), and the pitch of every plane for the first plane's.
def half_up(n):
    return (n + 1) // 2


def tight_planes(fmt, w, h):
    """(row bytes, rows) of each plane of a tightly packed frame."""
    if fmt in ("UYVY", "YUY2", "YVYU", "cyuv"):
        return [(4 * half_up(w), h)]
    if fmt == "v210":
        return [(v210_row_bytes(w), h)]
    if fmt in ("I420", "YV12"):
        return [(w, h)] + [(half_up(w), half_up(h))] * 2
    if fmt == "P422":
        return [(w, h)] + [(half_up(w), h)] * 2
    if fmt == "NV12":
        return [(w, h), (2 * half_up(w), half_up(h))]
    if fmt in ("NV10", "NV12p16"):
        return [(2 * w, h), (4 * half_up(w), half_up(h))]
    if fmt.startswith("yuv420p"):
        return [(2 * w, h)] + [(2 * half_up(w), half_up(h))] * 2
    if fmt.startswith("yuv422p"):
        return [(2 * w, h)] + [(2 * half_up(w), h)] * 2
    if fmt.startswith("yuv444p"):
        return [(2 * w, h)] * 3
    planes = {"rgbp8": 1, "rgbp16": 2, "rgbpf": 4}
    if fmt in planes:
        return [(planes[fmt] * w, h)] * 3
    pixel = {"rgb555": 2, "rgb565": 2, "rgb24": 3, "rgb32": 4, "rgb48": 6, "rgb64": 8,
             "rgb32f": 16, "rgb10": 4, "rgb10p": 4}
    return [(pixel[fmt] * w, h)]


def plane_pitches(fmt, pitch, count):
    """The usage text's rule: 8-bit 4:2:0 and 4:2:2 chroma rows ceil(P / 2)
    apart, 16-bit ones 2 * ceil(P / 4); NV12's pairs P rounded up to even,
    NV10's and NV12p16's to a multiple of 4; every other plane at P."""
    if fmt in ("I420", "YV12", "P422"):
        chroma = -(-pitch // 2)
    elif fmt.startswith("yuv420p") or fmt.startswith("yuv422p"):
        chroma = 2 * -(-pitch // 4)
    elif fmt == "NV12":
        chroma = pitch + pitch % 2
    elif fmt in ("NV10", "NV12p16"):
        chroma = -(-pitch // 4) * 4
    else:
        chroma = pitch
    return [pitch] + [chroma] * (count - 1)


def pad_frames(data, fmt, w, h, pitch, fill=lambda n: bytes(n)):
    """Every frame of data (tightly packed) with its rows at the pitch, the
    padding made by fill."""
    planes = tight_planes(fmt, w, h)
    frame = sum(r * n for r, n in planes)
    assert len(data) % frame == 0, (fmt, len(data), frame)
    out = bytearray()
    at = 0
    while at < len(data):
        for (row, rows), p in zip(planes, plane_pitches(fmt, pitch, len(planes))):
            for _ in range(rows):
                out += data[at:at + row] + fill(p - row)
                at += row
    return bytes(out)


class StandardStreams(ToolCase):
    """--in - and --out -: the same bytes as through files, frames from a pipe
    read one by one, a partial last frame named, no binary on a terminal."""

    def test_pipes_carry_the_same_bytes_as_files(self):
        data = self.random_bytes(5 * 2 * 6 * 2)
        inp = self.write("in.yuy2", data)
        args = ["convert", "--from", "YUY2", "--to", "UYVY", "--size", "6x2"]
        # A pipe in, a pipe out.
        res = run(*args, "--in", "-", "--out", "-", stdin=data)
        self.assertEqual(res.returncode, 0, res.stderr.decode())
        self.assertEqual(res.stdout, word_swap(data))
        # Standard input redirected from a file, and a file to standard output.
        with open(inp, "rb") as f:
            res = subprocess.run([TOOL, *args, "--in", "-", "--out", "-"], stdin=f,
                                 capture_output=True, timeout=60)
        self.assertEqual(res.returncode, 0, res.stderr.decode())
        self.assertEqual(res.stdout, word_swap(data))
        # Conversions on padded working rows and to RGB: the same bytes as the files.
        v210 = self.random_bytes(3 * v210_row_bytes(14) * 4)
        self.write("in.v210", v210)
        for dst in ("I420", "rgb24", "yuv422p10"):
            args = ["convert", "--from", "v210", "--to", dst, "--size", "14x4"]
            res = run(*args, "--in", self.path("in.v210"), "--out", self.path("o"))
            self.assertEqual(res.returncode, 0, res.stderr.decode())
            res = run(*args, "--in", "-", "--out", "-", stdin=v210)
            self.assertEqual(res.returncode, 0, res.stderr.decode())
            self.assertEqual(res.stdout, self.read("o"), dst)
        self.assertEqual(sorted(os.listdir(self.dir)), ["in.v210", "in.yuy2", "o"])

    def test_frames_from_a_pipe_are_converted_as_they_come(self):
        # The first frame's output shows before the input ends.
        frame = self.random_bytes(2 * 4 * 2)
        p = subprocess.Popen([TOOL, "convert", "--from", "YUY2", "--to", "UYVY", "--size",
                              "4x2", "--in", "-", "--out", "-", "--threads", "1"],
                             stdin=subprocess.PIPE, stdout=subprocess.PIPE,
                             stderr=subprocess.PIPE)
        try:
            p.stdin.write(frame)
            p.stdin.flush()
            self.assertEqual(os.read(p.stdout.fileno(), 4096), word_swap(frame))
            p.stdin.write(frame[::-1])
        finally:
            p.stdin.close()
        self.assertEqual(p.stdout.read(), word_swap(frame[::-1]))
        self.assertEqual(p.wait(timeout=60), 0)
        p.stdout.close()
        p.stderr.close()

    def test_partial_last_frame_names_the_input(self):
        frames = bytes(2 * 4 * 2 * 2 + 3)
        args = ["convert", "--from", "YUY2", "--to", "UYVY", "--size", "4x2"]
        res = run(*args, "--in", "-", "--out", self.path("o"), stdin=frames)
        self.assertEqual(res.returncode, 2)
        self.assertIn("standard input ends 3 bytes into frame 3", res.stderr.decode())
        self.assertEqual(os.listdir(self.dir), [])
        inp = self.write("short.raw", frames)
        res = run(*args, "--in", inp, "--out", "-")
        self.assertEqual(res.returncode, 2)
        self.assertIn(f"input '{inp}'", res.stderr.decode())
        self.assertEqual(res.stdout, b"")

    def test_binary_output_refused_on_a_terminal(self):
        master, slave = pty.openpty()
        try:
            for args in (["convert", "--from", "UYVY", "--to", "I420", "--size", "4x2"],
                         ["preview", "--from", "UYVY", "--size", "4x2"],
                         ["scale", "--from", "v210", "--size", "12x2", "--scale", "150"]):
                res = subprocess.run([TOOL, *args, "--out", "-"], stdout=slave,
                                     stderr=subprocess.PIPE, timeout=60)
                self.assertEqual(res.returncode, 2, args)
                self.assertIn("standard output is a terminal", res.stderr.decode())
            os.set_blocking(master, False)
            try:
                shown = os.read(master, 4096)
            except BlockingIOError:
                shown = b""
            self.assertEqual(shown, b"")
        finally:
            os.close(slave)
            os.close(master)

    def test_preview_png_and_scale_frames_on_standard_output(self):
        uyvy = self.random_bytes(2 * 2 * 12 * 6)
        inp = self.write("in.uyvy", uyvy)
        res = run("preview", "--from", "UYVY", "--size", "12x6", "--in", inp, "--frame", "1",
                  "--out", self.path("p.png"))
        self.assertEqual(res.returncode, 0, res.stderr.decode())
        res = run("preview", "--from", "UYVY", "--size", "12x6", "--in", "-", "--frame", "1",
                  "--out", "-", stdin=uyvy)
        self.assertEqual(res.returncode, 0, res.stderr.decode())
        self.assertEqual(res.stdout, self.read("p.png"))
        self.assertEqual(read_png(res.stdout)[:2], (12, 6))
        args = ["scale", "--from", "UYVY", "--size", "12x6", "--scale", "150"]
        res = run(*args, "--in", inp, "--out", self.path("s.raw"))
        self.assertEqual(res.returncode, 0, res.stderr.decode())
        res = run(*args, "--in", "-", "--out", "-", stdin=uyvy)
        self.assertEqual(res.returncode, 0, res.stderr.decode())
        self.assertEqual(res.stdout, self.read("s.raw"))
        self.assertEqual(len(res.stdout), 2 * (8 * 4 + 2 * 4 * 2))
        self.assertIn("frames=2", res.stderr.decode())


class FrameSelection(ToolCase):
    """--skip and --frames pick the right frames from files, from standard
    input on a file and from pipes, and refuse a --skip past the end."""

    FRAME = 2 * 4 * 2  # YUY2 4x2

    def frames(self, n):
        # Each frame distinguishable from every other one.
        return [bytes([k]) * 2 + self.random_bytes(self.FRAME - 2) for k in range(n)]

    def select(self, frames, *options, how="file"):
        data = b"".join(frames)
        args = ["convert", "--from", "YUY2", "--to", "UYVY", "--size", "4x2", *options]
        if how == "file":
            res = run(*args, "--in", self.write("in.raw", data), "--out", "-")
        elif how == "pipe":
            res = run(*args, "--in", "-", "--out", "-", stdin=data)
        else:
            with open(self.write("in.raw", data), "rb") as f:
                res = subprocess.run([TOOL, *args, "--in", "-", "--out", "-"], stdin=f,
                                     capture_output=True, timeout=60)
        return res

    def test_skip_and_frames(self):
        frames = self.frames(6)
        for how in ("file", "pipe", "stdin-file"):
            for options, chosen in ((["--skip", "2", "--frames", "3"], frames[2:5]),
                                    (["--skip", "5"], frames[5:]),
                                    (["--frames", "1"], frames[:1]),
                                    (["--skip", "0", "--frames", "9"], frames),
                                    (["--skip", "4", "--frames", "9"], frames[4:])):
                for threads in ("1", "3"):
                    res = self.select(frames, *options, "--threads", threads, how=how)
                    self.assertEqual(res.returncode, 0, res.stderr.decode())
                    self.assertEqual(res.stdout, word_swap(b"".join(chosen)),
                                     (how, options, threads))

    def test_skip_past_the_end_is_refused(self):
        frames = self.frames(3)
        for how in ("file", "pipe", "stdin-file"):
            for skip in ("3", "4", "100"):
                res = self.select(frames, "--skip", skip, how=how)
                self.assertEqual(res.returncode, 2, (how, skip))
                self.assertIn("--skip " + skip, res.stderr.decode())
                self.assertEqual(res.stdout, b"")
        self.write("keep", b"kept")
        for bad in (["--frames", "0"], ["--frames", "-1"], ["--skip", "x"], ["--skip", "-1"],
                    ["--frames", "1.5"]):
            res = self.select(frames, *bad)
            self.assertEqual(res.returncode, 2, bad)
        # Selection applies to frames read from a file only.
        for option in ("--skip", "--frames"):
            res = run("convert", "--from", "YUY2", "--to", "UYVY", option, "1")
            self.assertEqual(res.returncode, 2, option)
            self.assertIn("--in", res.stderr.decode())

    def test_scale_and_preview_select_the_same_frames(self):
        frames = [self.random_bytes(2 * 12 * 6) for _ in range(4)]
        self.write("all.uyvy", b"".join(frames))
        args = ["scale", "--from", "UYVY", "--size", "12x6", "--scale", "150"]
        res = run(*args, "--in", "-", "--skip", "1", "--frames", "2", "--out", "-",
                  stdin=b"".join(frames))
        self.assertEqual(res.returncode, 0, res.stderr.decode())
        each = []
        for k in (1, 2):
            self.write("one.uyvy", frames[k])
            one = run(*args, "--in", self.path("one.uyvy"), "--out", "-")
            self.assertEqual(one.returncode, 0, one.stderr.decode())
            each.append(one.stdout)
        self.assertEqual(res.stdout, b"".join(each))
        res = run(*args, "--in", self.path("all.uyvy"), "--skip", "4", "--out", "-")
        self.assertEqual(res.returncode, 2)
        # preview --frame from a pipe: frames read and dropped up to it.
        self.write("one.uyvy", frames[3])
        one = run("preview", "--from", "UYVY", "--size", "12x6", "--in", self.path("one.uyvy"),
                  "--out", "-")
        piped = run("preview", "--from", "UYVY", "--size", "12x6", "--in", "-", "--frame", "3",
                    "--out", "-", stdin=b"".join(frames))
        self.assertEqual(piped.returncode, 0, piped.stderr.decode())
        self.assertEqual(piped.stdout, one.stdout)


class PaddedRows(ToolCase):
    """--src-pitch and --dst-pitch against a model of the padded layout: a
    padded input converts as its tight frames do, padded output is the tight
    output with zero padding, in every plane arrangement."""

    # (source, destination, size, the source's samples' bits for 16-bit words)
    CASES = (("UYVY", "UYVY", "6x3", 8), ("I420", "YV12", "6x4", 8), ("P422", "UYVY", "6x3", 8),
             ("UYVY", "P422", "10x2", 8), ("v210", "I420", "14x4", 8), ("v210", "v210", "7x2", 8),
             ("NV12", "rgb24", "5x3", 8), ("I420", "rgb32", "5x3", 8),
             ("yuv420p10", "v210", "5x3", 10), ("yuv422p12", "v210", "6x2", 12),
             ("yuv444p10", "v210", "5x2", 10), ("NV10", "v210", "7x3", 10),
             ("NV12p16", "v210", "5x3", 16), ("v210", "NV12p16", "7x3", 8),
             ("v210", "yuv422p16", "5x2", 8), ("v210", "yuv444p10", "7x2", 8),
             ("yuv420p10", "rgbp16", "6x2", 10), ("I420", "rgbp8", "6x2", 8),
             ("I420", "rgbpf", "4x2", 8), ("rgb24", "UYVY", "6x2", 8),
             ("rgb48", "yuv422p12", "4x3", 8))

    def tight_source(self, fmt, w, h, bits, frames=2):
        size = sum(r * n for r, n in tight_planes(fmt, w, h))
        if bits > 8:
            return word_bytes(self.rng.getrandbits(bits) for _ in range(frames * size // 2))
        return self.random_bytes(frames * size)

    def pitches(self, fmt, w, h):
        row = tight_planes(fmt, w, h)[0][0]
        # Whole samples of 16-bit words and floats.
        unit = 4 if fmt == "rgbpf" else 2 if fmt.startswith("yuv") or fmt in (
            "NV10", "NV12p16", "rgbp16") else 1
        return (row, row + unit, row + 10 * unit, row + 25 * unit)

    def test_padded_input_converts_as_tight(self):
        for src, dst, size, bits in self.CASES:
            w, h = map(int, size.split("x"))
            tight = self.tight_source(src, w, h, bits)
            want = self.convert(src, dst, size, tight)
            for pitch in self.pitches(src, w, h):
                padded = pad_frames(tight, src, w, h, pitch, self.random_bytes)
                for threads in ("1", "2"):
                    got = self.convert(src, dst, size, padded, "--src-pitch", str(pitch),
                                       "--threads", threads)
                    self.assertEqual(got, want, (src, dst, size, pitch, threads))

    def test_padded_output_is_the_tight_output_with_zero_padding(self):
        for src, dst, size, bits in self.CASES:
            w, h = map(int, size.split("x"))
            tight = self.tight_source(src, w, h, bits, frames=3)
            want = self.convert(src, dst, size, tight)
            for pitch in self.pitches(dst, w, h):
                got = self.convert(src, dst, size, tight, "--dst-pitch", str(pitch),
                                   "--threads", "3")
                self.assertEqual(got, pad_frames(want, dst, w, h, pitch),
                                 (src, dst, size, pitch))

    def test_repadding_round_trip(self):
        # From one padding to another, on a format converted to itself.
        w, h = 10, 3
        tight = self.random_bytes(4 * 2 * w * h)
        padded = pad_frames(tight, "UYVY", w, h, 33, self.random_bytes)
        got = self.convert("UYVY", "UYVY", f"{w}x{h}", padded, "--src-pitch", "33",
                           "--dst-pitch", "48")
        self.assertEqual(got, pad_frames(tight, "UYVY", w, h, 48))
        # The built-in frame written padded: its summary counts padded bytes.
        res = run("convert", "--from", "UYVY", "--to", "I420", "--size", "8x2", "--dst-pitch",
                  "11")
        self.assertEqual(res.returncode, 0, res.stderr.decode())
        self.assertIn("bytes=%d " % (11 * 2 + 2 * 6 * 1), res.stdout.decode())

    def test_preview_and_scale_with_padded_rows(self):
        w, h = 12, 6
        uyvy = self.random_bytes(2 * 2 * w * h)
        padded = pad_frames(uyvy, "UYVY", w, h, 40, self.random_bytes)
        self.write("tight.uyvy", uyvy)
        self.write("padded.uyvy", padded)
        common = ["--from", "UYVY", "--size", f"{w}x{h}"]
        tight_png = run("preview", *common, "--in", self.path("tight.uyvy"), "--frame", "1",
                        "--out", "-")
        padded_png = run("preview", *common, "--in", self.path("padded.uyvy"), "--frame", "1",
                         "--src-pitch", "40", "--out", "-")
        self.assertEqual(padded_png.returncode, 0, padded_png.stderr.decode())
        self.assertEqual(padded_png.stdout, tight_png.stdout)
        scale = ["scale", *common, "--scale", "150", "--out", "-"]
        tight = run(*scale, "--in", self.path("tight.uyvy"))
        self.assertEqual(tight.returncode, 0, tight.stderr.decode())
        got = run(*scale, "--in", self.path("padded.uyvy"), "--src-pitch", "40",
                  "--dst-pitch", "13")
        self.assertEqual(got.returncode, 0, got.stderr.decode())
        self.assertEqual(got.stdout, pad_frames(tight.stdout, "I420", 8, 4, 13))

    def test_bad_pitches_are_refused(self):
        self.write("out.raw", b"kept")
        uyvy = self.write("in.uyvy", bytes(2 * 6 * 2))
        ten = self.write("in.p10", bytes(2 * (6 * 2 + 2 * 3 * 1)))
        for args in (["--from", "UYVY", "--to", "I420", "--in", uyvy, "--src-pitch", "11"],
                     ["--from", "UYVY", "--to", "I420", "--in", uyvy, "--dst-pitch", "5"],
                     ["--from", "UYVY", "--to", "I420", "--in", uyvy, "--src-pitch", "0"],
                     ["--from", "UYVY", "--to", "I420", "--in", uyvy, "--src-pitch", "x"],
                     ["--from", "yuv420p10", "--to", "v210", "--in", ten, "--src-pitch", "13"],
                     ["--from", "UYVY", "--to", "I420", "--src-pitch", "16"]):
            res = run("convert", "--size", "6x2", *args, "--out", self.path("out.raw"))
            self.assertEqual(res.returncode, 2, args)
            self.assertEqual(len(res.stderr.decode().splitlines()), 1, res.stderr)
        self.assertIn("less than the 12-byte rows", run(
            "convert", "--size", "6x2", "--from", "UYVY", "--to", "I420", "--in", uyvy,
            "--src-pitch", "11").stderr.decode())
        self.assertEqual(self.read("out.raw"), b"kept")
        self.assertEqual(sorted(os.listdir(self.dir)), ["in.p10", "in.uyvy", "out.raw"])


class SubcommandHelp(ToolCase):
    """Every subcommand's --help and -h: its own usage on stdout, status 0,
    each a part of the whole usage."""

    COMMANDS = ("convert", "preview", "scale", "formats", "cpu")

    def test_each_subcommand_prints_its_own_usage(self):
        whole = run("--help")
        self.assertEqual(whole.returncode, 0)
        whole = whole.stdout.decode()
        for command in self.COMMANDS:
            for flag in ("--help", "-h"):
                for extra in ([], ["--from", "UYVY"] if command == "convert" else []):
                    res = run(command, *extra, flag)
                    self.assertEqual(res.returncode, 0, (command, flag, res.stderr))
                    self.assertEqual(res.stderr, b"")
                    text = res.stdout.decode()
                    self.assertTrue(text.startswith("usage:\n  cycbcr " + command), text[:80])
                    for other in self.COMMANDS:
                        if other != command:
                            self.assertNotIn("\n  cycbcr " + other + " ", text, command)
                    # Its synopsis and description are those of the whole usage.
                    synopsis, description = text.split("\n\n")[0:2]
                    self.assertIn(synopsis.split("\n", 1)[1], whole)
                    self.assertIn(description, whole)
        self.assertIn("--threads", run("convert", "--help").stdout.decode())
        self.assertIn("--src-pitch", run("scale", "-h").stdout.decode())


class SameFileAndReadOnlyOutputs(ToolCase):
    """An output that is the input itself, by any name, and an existing file
    without write permission: refused, nothing touched."""

    def assert_refused(self, res, words):
        self.assertEqual(res.returncode, 2, res.stderr.decode())
        self.assertIn(words, res.stderr.decode())

    def test_output_naming_the_input_is_refused(self):
        data = self.random_bytes(2 * 4 * 2 * 3)
        name = self.write("frames.raw", data)
        os.symlink("frames.raw", self.path("link.raw"))
        os.link(name, self.path("hard.raw"))
        convert = ["convert", "--from", "YUY2", "--to", "UYVY", "--size", "4x2"]
        for out in (name, self.path("link.raw"), self.path("hard.raw"),
                    self.path("./frames.raw"), self.path("../" + os.path.basename(self.dir)
                                                         + "/frames.raw")):
            self.assert_refused(run(*convert, "--in", name, "--out", out), "same file")
            self.assert_refused(run(*convert, "--in", self.path("link.raw"), "--out", out),
                                "same file")
        # Standard input that is the output file, and standard output that is
        # the input (opened for appending, so not emptied before the command runs).
        with open(name, "rb") as f:
            res = subprocess.run([TOOL, *convert, "--in", "-", "--out", name], stdin=f,
                                 capture_output=True, timeout=60)
        self.assert_refused(res, "same file")
        with open(name, "ab") as f:
            res = subprocess.run([TOOL, *convert, "--in", name, "--out", "-"], stdout=f,
                                 stderr=subprocess.PIPE, timeout=60)
        self.assert_refused(res, "same file")
        for args in (["scale", "--from", "UYVY", "--size", "4x2", "--scale", "100"],
                     ["preview", "--from", "UYVY", "--size", "4x2"]):
            self.assert_refused(run(*args, "--in", name, "--out", self.path("hard.raw")),
                                "same file")
        self.assertEqual(self.read("frames.raw"), data)
        self.assertEqual(sorted(os.listdir(self.dir)), ["frames.raw", "hard.raw", "link.raw"])

    def test_read_only_output_is_kept(self):
        # The mode bits are checked, so this holds for the superuser too.
        inp = self.write("in.raw", bytes(2 * 4 * 2))
        for mode in (0o444, 0o400, 0o000):
            out = self.write("out.raw", b"read-only contents")
            os.chmod(out, mode)
            for args in (["convert", "--from", "YUY2", "--to", "UYVY", "--size", "4x2",
                          "--in", inp],
                         ["preview", "--from", "UYVY", "--size", "4x2"],
                         ["scale", "--from", "v210", "--size", "12x2", "--scale", "150"]):
                self.assert_refused(run(*args, "--out", out), "not writable")
            self.assertEqual(stat.S_IMODE(os.stat(out).st_mode), mode)
            os.chmod(out, 0o644)
            self.assertEqual(self.read("out.raw"), b"read-only contents")
            self.assertEqual(sorted(os.listdir(self.dir)), ["in.raw", "out.raw"])
        # Writable again, it is replaced.
        res = run("convert", "--from", "YUY2", "--to", "UYVY", "--size", "4x2", "--in", inp,
                  "--out", out)
        self.assertEqual(res.returncode, 0, res.stderr.decode())
        self.assertEqual(self.read("out.raw"), bytes(2 * 4 * 2))


class Threads(ToolCase):
    """--threads: the same bytes at every count, frames in input order, the
    first error stopping the run with nothing written."""

    def test_every_count_writes_the_same_bytes(self):
        cases = (("v210", "UYVY", "96x6", lambda n: self.random_bytes(n * v210_row_bytes(96) * 6)),
                 ("v210", "I420", "50x4", lambda n: self.random_bytes(n * v210_row_bytes(50) * 4)),
                 ("YUY2", "rgb24", "10x3", lambda n: self.random_bytes(n * 2 * 10 * 3)),
                 ("yuv422p10", "v210", "14x2",
                  lambda n: word_bytes(self.rng.getrandbits(10) for _ in range(n * 2 * 14 * 2))),
                 ("rgb24", "yuv444p10", "8x2", lambda n: self.random_bytes(n * 3 * 8 * 2)))
        for src, dst, size, make in cases:
            data = make(7)
            self.write("in.raw", data)
            outputs = {}
            for threads in ("1", "2", "3", "8"):
                outputs[threads] = self.convert(src, dst, size, data, "--threads", threads)
                res = run("convert", "--from", src, "--to", dst, "--size", size, "--in", "-",
                          "--out", "-", "--threads", threads, stdin=data)
                self.assertEqual(res.returncode, 0, res.stderr.decode())
                self.assertEqual(res.stdout, outputs[threads], (src, dst, threads))
                summary = run("convert", "--from", src, "--to", dst, "--size", size, "--in",
                              self.path("in.raw"), "--threads", threads)
                self.assertIn("frames=7 ", summary.stdout.decode())
                self.assertIn("fnv1a64=%016x" % fnv1a64(outputs[threads]),
                              summary.stdout.decode())
            for threads in ("2", "3", "8"):
                self.assertEqual(outputs[threads], outputs["1"], (src, dst, threads))
            # Each frame alone gives its part of the output.
            frame = len(data) // 7
            part = len(outputs["1"]) // 7
            for k in (0, 3, 6):
                one = self.convert(src, dst, size, data[k * frame:(k + 1) * frame])
                self.assertEqual(outputs["3"][k * part:(k + 1) * part], one, (src, dst, k))

    def test_order_kept_over_many_frames(self):
        frames = [self.random_bytes(2 * 4 * 2) for _ in range(200)]
        data = b"".join(frames)
        res = run("convert", "--from", "YUY2", "--to", "UYVY", "--size", "4x2", "--in", "-",
                  "--out", "-", "--threads", "4", stdin=data)
        self.assertEqual(res.returncode, 0, res.stderr.decode())
        self.assertEqual(res.stdout, word_swap(data))

    def test_errors_and_bad_counts(self):
        # A partial last frame, met while the workers convert: no output file.
        data = bytes(2 * 4 * 2 * 9 + 5)
        for threads in ("2", "4"):
            res = run("convert", "--from", "YUY2", "--to", "UYVY", "--size", "4x2", "--in", "-",
                      "--out", self.path("o"), "--threads", threads, stdin=data)
            self.assertEqual(res.returncode, 2)
            self.assertIn("ends 5 bytes into frame 10", res.stderr.decode())
            self.assertEqual(os.listdir(self.dir), [])
        for bad in ("0", "-1", "x", "257", ""):
            res = run("convert", "--from", "UYVY", "--to", "I420", "--threads", bad)
            self.assertEqual(res.returncode, 2, bad)


if __name__ == "__main__":
    TOOL = os.path.abspath(sys.argv.pop(1))
    unittest.main(verbosity=2)
