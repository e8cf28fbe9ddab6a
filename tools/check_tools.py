#!/usr/bin/env python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""Lets the tools that are installed judge what they know: the formatting of the sources, the desktop entry, the
AppStream data, the manual page and the shell scripts.

usage: check_tools.py ROOT
"""
import re
import shutil
import subprocess
import sys
from pathlib import Path

# Other versions of clang-format format differently. Debian 12 provides this one; Debian 13 does not.
CLANG_FORMAT_VERSION = "14"
FORMATTED_FOLDERS = ("app", "bench", "camera", "capture", "compose", "packaging", "platform", "recording",
                     "settings_dialog", "tests")


def output_of(command):
    result = subprocess.run(command, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                            text=True, errors="replace", timeout=120, check=False)
    return result.returncode, result.stdout


def formatting(root):
    sources = [str(file) for folder in FORMATTED_FOLDERS for file in sorted((root / folder).rglob("*"))
               if file.suffix in (".cpp", ".h")]
    clang_format = shutil.which(f"clang-format-{CLANG_FORMAT_VERSION}") or "clang-format"
    _, version = output_of([clang_format, "--version"])
    found = re.search(r"version (\d+)", version)
    if not found or found.group(1) != CLANG_FORMAT_VERSION:
        print(f"skipped: formatting is checked with clang-format {CLANG_FORMAT_VERSION}, this is {version.strip()}")
        return 0, ""
    return output_of([clang_format, "--dry-run", "--Werror"] + sources)


def desktop_entry(root):
    status, text = output_of(["desktop-file-validate", *map(str, (root / "packaging").glob("*.desktop"))])
    return status or bool(text.strip()), text


def appstream(root):
    return output_of(["appstreamcli", "validate", "--no-net", *map(str, (root / "packaging").glob("*.metainfo.xml"))])


def manual_page(root):
    status, text = output_of(["man", "--local-file", "--warnings", "-Tutf8", str(root / "packaging" / "lumavex.1")])
    warnings = [line for line in text.splitlines() if re.search(r"\bwarning\b|\berror\b.*:", line)]
    return status or bool(warnings), "\n".join(warnings)


def shell_scripts(root):
    scripts = [root / "run", root / "test"]
    for folder in (".ci", "packaging", "tests", "tools"):
        scripts += sorted(file for file in (root / folder).rglob("*") if file.is_file())
    scripts = [str(script) for script in scripts if script.read_bytes().startswith((b"#!/usr/bin/env bash", b"#!/bin/bash",
                                                                                    b"#!/bin/sh"))]
    # SC2174: mkdir -p -m applies its mode only to the last folder, which is intended.
    return output_of(["shellcheck", "--severity=warning", "--exclude=SC2174"] + scripts)


CHECKS = (("clang-format", formatting), ("desktop-file-validate", desktop_entry), ("appstreamcli", appstream),
          ("man", manual_page), ("shellcheck", shell_scripts))


def main(arguments):
    root = Path(arguments[0]).resolve()
    failed = False
    for tool, check in CHECKS:
        if not shutil.which(tool):
            print(f"skipped: {tool} is not installed")
            continue
        status, text = check(root)
        if status:
            failed = True
            print(f"{tool}:\n{text}")
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
