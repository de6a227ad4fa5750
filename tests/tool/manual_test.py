#!/usr/bin/env python3
"""The cycbcr command against its package: `cycbcr --version` and the README's
version line against the version lines of the public header, and the manual
page against the command's own usage text (every subcommand the usage names is
described on the page). The installed page, its roff and the other installed
files are checked by the install test (tests/consumer).

Usage: manual_test.py PATH_TO_CYCBCR PATH_TO_HEADER PATH_TO_PAGE_SOURCE [unittest arguments]
"""
import os
import re
import subprocess
import sys
import unittest

TOOL = HEADER = PAGE = None


def run(*args):
    return subprocess.run([TOOL, *args], stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                          timeout=60, check=False)


def header_version():
    with open(HEADER, encoding="utf-8") as f:
        text = f.read()
    parts = []
    for part in ("MAJOR", "MINOR", "PATCH"):
        m = re.search(r"^#define CYCBCR_VERSION_%s (\d+)$" % part, text, re.M)
        if m is None:
            raise AssertionError("no CYCBCR_VERSION_%s line in %s" % (part, HEADER))
        parts.append(m.group(1))
    return ".".join(parts)


def page_text():
    with open(PAGE, encoding="utf-8") as f:
        return f.read()


def page_section(name):
    """The roff lines of one .SH section of the page."""
    m = re.search(r"^\.SH %s\n(.*?)(?=^\.SH |\Z)" % re.escape(name), page_text(), re.M | re.S)
    if m is None:
        raise AssertionError("the page has no %s section" % name)
    return m.group(1)


class Version(unittest.TestCase):
    def test_version_is_the_headers(self):
        res = run("--version")
        self.assertEqual(res.returncode, 0, res.stderr)
        self.assertEqual(res.stdout.decode(), "cycbcr %s\n" % header_version())
        self.assertEqual(res.stderr, b"")


    def test_readme_names_the_headers_version(self):
        readme = os.path.join(os.path.dirname(os.path.dirname(HEADER)), "README.md")
        with open(readme, encoding="utf-8") as f:
            said = re.findall(r"^Version (\d+\.\d+\.\d+),", f.read(), re.M)
        self.assertEqual(said, [header_version()])


class ManualPage(unittest.TestCase):
    def usage_commands(self):
        res = run("--help")
        self.assertEqual(res.returncode, 0, res.stderr)
        names = re.findall(r"^\s*cycbcr ([a-z][a-z0-9-]*)\b", res.stdout.decode(), re.M)
        self.assertGreaterEqual(len(set(names)), 5, "the usage names too few commands")
        return sorted(set(names))

    def test_every_command_of_the_usage_is_described(self):
        described = re.findall(r"^\.TP\n\.B ([a-z][a-z0-9\\-]*)\n", page_section("COMMANDS"),
                               re.M)
        described = {d.replace("\\-", "-") for d in described}
        for name in self.usage_commands():
            self.assertIn(name, described, "cycbcr.1 does not describe '%s'" % name)


if __name__ == "__main__":
    TOOL = os.path.abspath(sys.argv.pop(1))
    HEADER = os.path.abspath(sys.argv.pop(1))
    PAGE = os.path.abspath(sys.argv.pop(1))
    unittest.main(verbosity=2)
