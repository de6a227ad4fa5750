#!/usr/bin/env python3
"""End-to-end checks of the cycbcr command: conversions of raw frame files
against byte operations computed here, and the refusal of every bad request
with status 2 and no file left behind.

Usage: tool_test.py PATH_TO_CYCBCR [unittest arguments]
"""
import os
import random
import re
import stat
import subprocess
import sys
import tempfile
import threading
import unittest

TOOL = None

# The classic 75% colour bars in BT.601 studio range (Y, Cb, Cr): white,
# yellow, cyan, green, magenta, red, blue, black.
BARS_75 = [(180, 128, 128), (162, 44, 142), (131, 156, 44), (112, 72, 58),
           (84, 184, 198), (65, 100, 212), (35, 212, 114), (16, 128, 128)]


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


def chroma_exchange(data, first=1, second=3):
    """Exchanges two bytes of every 4-byte pair: by default Cb and Cr of YUY2
    or YVYU; 0 and 2 for UYVY."""
    out = bytearray(data)
    out[first::4], out[second::4] = data[second::4], data[first::4]
    return bytes(out)


def reverse_rows(data, pitch, height):
    frame = pitch * height
    out = bytearray()
    for f in range(0, len(data), frame):
        rows = [data[f + r * pitch:f + (r + 1) * pitch] for r in range(height)]
        out += b"".join(reversed(rows))
    return bytes(out)


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

    def test_every_source_order_carries_the_same_picture(self):
        # The bars made in each byte order, brought back to UYVY, must agree;
        # YVYU goes through a converter that exchanges chroma, so undo that.
        size = "48x4"
        pictures = {}
        for src in ("UYVY", "YUY2", "YVYU", "cyuv"):
            out = self.path(src + ".uyvy")
            res = run("convert", "--from", src, "--to", "UYVY", "--size", size, "--out", out)
            self.assertEqual(res.returncode, 0, res.stderr.decode())
            with open(out, "rb") as f:
                pictures[src] = f.read()
        pictures["YVYU"] = chroma_exchange(pictures["YVYU"], 0, 2)
        for src in ("YUY2", "YVYU", "cyuv"):
            self.assertEqual(pictures[src], pictures["UYVY"], src)

    def test_summary_checksum_is_fnv1a_of_the_output(self):
        args = ["convert", "--from", "YUY2", "--to", "cyuv", "--size", "320x8"]
        res = run(*args)
        self.assertEqual(res.returncode, 0, res.stderr.decode())
        reported = int(re.search(r"fnv1a64=([0-9a-f]{16})", res.stdout.decode()).group(1), 16)
        self.assertEqual(run(*args, "--out", self.path("o")).returncode, 0)
        self.assertEqual(reported, fnv1a64(self.read("o")))


class FileConversions(ToolCase):
    def test_yuy2_to_uyvy_swaps_every_word(self):
        data = self.random_bytes(3 * 2 * 50 * 7)  # three 50x7 frames
        self.assertEqual(self.convert("YUY2", "UYVY", "50x7", data), word_swap(data))

    def test_uyvy_cyuv_round_trip_and_row_order(self):
        width, height = 38, 5
        data = self.random_bytes(4 * 2 * width * height)
        flipped = self.convert("UYVY", "cyuv", f"{width}x{height}", data)
        self.assertEqual(flipped, reverse_rows(data, 2 * width, height))
        self.write("flipped.raw", flipped)
        back = run("convert", "--from", "cyuv", "--to", "UYVY", "--size", f"{width}x{height}",
                   "--in", self.path("flipped.raw"), "--out", self.path("back.raw"))
        self.assertEqual(back.returncode, 0, back.stderr.decode())
        self.assertEqual(self.read("back.raw"), data)

    def test_byte_order_quirks_of_yvyu(self):
        data = self.random_bytes(2 * 2 * 20 * 3)
        self.assertEqual(self.convert("YUY2", "YVYU", "20x3", data), chroma_exchange(data))
        # YVYU <-> UYVY is a plain word swap: Cb and Cr trade places.
        self.assertEqual(self.convert("YVYU", "UYVY", "20x3", data), word_swap(data))
        self.assertEqual(self.convert("UYVY", "YVYU", "20x3", data), word_swap(data))
        self.assertEqual(self.convert("YVYU", "cyuv", "20x3", data),
                         reverse_rows(word_swap(data), 40, 3))

    def test_aliases_and_numeric_codes_pick_the_canonical_formats(self):
        data = self.random_bytes(2 * 16 * 2)
        for src, dst in (("YUNV", "2vuy"), ("YUY2", "0x8800001E"), ("YUY2", "2282749982"),
                         ("YUNV", "yuV2"), ("YUY2", "AJYU")):
            self.assertEqual(self.convert(src, dst, "16x2", data), word_swap(data), (src, dst))

    def test_plain_and_avx2_levels_agree(self):
        data = self.random_bytes(2 * 2 * 130 * 3)
        for pair in (("UYVY", "YUY2"), ("YUY2", "YVYU"), ("YVYU", "cyuv")):
            plain = self.convert(*pair, "130x3", data, "--level", "0")
            best = self.convert(*pair, "130x3", data)
            self.assertEqual(plain, best, pair)

    def test_output_may_replace_the_input(self):
        data = self.random_bytes(2 * 2 * 8 * 2)
        name = self.write("frames.raw", data)
        for _ in range(2):
            res = run("convert", "--from", "YUY2", "--to", "UYVY", "--size", "8x2",
                      "--in", name, "--out", name)
            self.assertEqual(res.returncode, 0, res.stderr.decode())
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
        self.assertIn("unknown", self.refuse(*self.convert_args(**{"--from": "NV12"})))
        self.refuse(*self.convert_args(**{"--to": "YUV2"}))  # case matters
        self.refuse(*self.convert_args(**{"--to": "2VUY"}))
        self.refuse(*self.convert_args(**{"--to": "0x12345678"}))
        self.refuse(*self.convert_args(**{"--to": "UYVYY"}))
        self.refuse(*self.convert_args(**{"--to": "0x"}))
        self.refuse(*self.convert_args(**{"--to": "0x100000000"}))
        self.assertIn("source", self.refuse(*self.convert_args(**{"--to": "422P"})))
        self.assertIn("not supported", self.refuse(*self.convert_args(**{"--from": "I420"})))
        self.refuse(*self.convert_args(**{"--to": "0"}))
        self.refuse(*self.convert_args(**{"--to": "v210"}))

    def test_bad_sizes(self):
        for size in ("0x2", "4x0", "4", "4x", "x2", "-4x2", "+4x2", "4x2x", " 4x2", "4X2",
                     "40000x2", "3x2"):
            self.refuse(*self.convert_args(**{"--size": size}))

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


if __name__ == "__main__":
    TOOL = os.path.abspath(sys.argv.pop(1))
    unittest.main(verbosity=2)
