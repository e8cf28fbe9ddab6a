#!/usr/bin/env python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""Checks the help book and the manual page against the program.

usage: check_help_book.py ROOT LUMAVEX

In the book every link and picture leads somewhere inside it, no picture is left over, and nothing is fetched from
elsewhere. Every option of `lumavex --help` has an entry in the book and in the manual page, which know no others, and
every shortcut of the main window stands in the book's table.
"""
import re
import subprocess
import sys
import xml.etree.ElementTree as xml
from html.parser import HTMLParser
from pathlib import Path

LARGEST_SIZE_OF_ALL_PICTURES = 600_000


class Page(HTMLParser):
    """What a page refers to, what can be referred to in it, and the text of its code and keys."""

    def __init__(self, path):
        super().__init__()
        self.references, self.names, self.pictures_without_text = set(), set(), []
        self.texts = {"code": [], "kbd": []}
        self.open = []
        self.feed(path.read_text(encoding="utf-8"))

    def handle_starttag(self, tag, attrs):
        attributes = dict(attrs)
        self.references.update(attributes[name] for name in ("href", "src", "srcset") if name in attributes)
        self.names.update(attributes[name] for name in ("id",) if name in attributes)
        if tag == "img" and not attributes.get("alt"):
            self.pictures_without_text.append(attributes.get("src"))
        if tag in self.texts or tag == "td":
            self.open.append(tag)
            if tag in self.texts:
                # An entry is in a table cell; elsewhere an option or key is only mentioned.
                self.texts[tag].append([self.open[:-1] == ["td"], ""])

    def handle_endtag(self, tag):
        if self.open and self.open[-1] == tag:
            self.open.pop()

    def handle_data(self, data):
        if self.open and self.open[-1] in self.texts:
            self.texts[self.open[-1]][-1][1] += data

    def entries(self, tag):
        return {text for in_cell, text in self.texts[tag] if in_cell}


def reference_problems(book, pages):
    for path, page in pages.items():
        for reference in sorted(page.references):
            target, _, name = reference.partition("#")
            if ":" in target or target.startswith("/"):
                yield f"{path.name}: {reference} is outside the book"
            elif target and not (book / target).is_file():
                yield f"{path.name}: {reference} does not exist"
            elif name and name not in pages.get(book / target if target else path, page).names:
                yield f"{path.name}: {reference} leads to no place in that page"
        for picture in page.pictures_without_text:
            yield f"{path.name}: {picture} has no text for those who cannot see it"


def picture_problems(book, pages):
    pictures = sorted(path for path in book.rglob("*") if path.suffix in (".png", ".jpg", ".svg", ".webp"))
    used = {book / reference for page in pages.values() for reference in page.references}
    for picture in pictures:
        if picture not in used:
            yield f"{picture.relative_to(book)} is in no page"
    size = sum(picture.stat().st_size for picture in pictures)
    if size > LARGEST_SIZE_OF_ALL_PICTURES:
        yield f"the pictures take {size} bytes"


def style_problems(book):
    for style in book.rglob("*.css"):
        for address in re.findall(r"url\(|@import|https?:", style.read_text(encoding="utf-8")):
            yield f"{style.name}: {address} may lead outside the book"


def options_of_program(program):
    help_text = subprocess.run([program, "--help"], stdin=subprocess.DEVNULL, capture_output=True, text=True, timeout=20,
                               check=True).stdout
    return set(re.findall(r"^\s+(--[a-z-]+)", help_text, re.MULTILINE))


def options_of_manual(manual):
    text = manual.read_text(encoding="utf-8")
    section = re.search(r"^\.SH OPTIONS$(.*?)^\.SH ", text, re.MULTILINE | re.DOTALL).group(1)
    entries = re.findall(r"^\.TP\n(.*)$", section, re.MULTILINE)
    return set(re.findall(r"--[a-z-]+", " ".join(entries).replace("\\-", "-")))


def difference(where, found, wanted):
    for missing in sorted(wanted - found):
        yield f"{where} does not explain {missing}"
    for unknown in sorted(found - wanted):
        yield f"{where} explains {unknown}, which there is not"


def shortcuts_of_window(interface):
    return {text for text in (string.text for string in xml.parse(interface).iterfind(
        ".//action/property[@name='shortcut']/string")) if text}


def problems(root, program):
    book = root / "resources" / "help" / "LumavexHelp.help"
    pages = {path: Page(path) for path in sorted(book.rglob("*.html"))}
    if book / "index.html" not in pages:
        yield "the book has no first page"
        return
    yield from reference_problems(book, pages)
    yield from picture_problems(book, pages)
    yield from style_problems(book)

    options = options_of_program(program)
    if len(options) < 5:
        yield f"{program} --help lists no options"
    codes = set().union(*(page.entries("code") for page in pages.values()))
    yield from difference("the book", {text.split()[0] for text in codes if text.startswith("--")}, options)
    yield from difference("the manual page", options_of_manual(root / "packaging" / "lumavex.1"), options)

    shortcuts = shortcuts_of_window(root / "resources" / "interfaces" / "Window_Main.ui")
    if not shortcuts:
        yield "no shortcuts were found in the main window"
    keys = set().union(*(page.entries("kbd") for page in pages.values()))
    yield from difference("the table of shortcuts", keys, shortcuts)


def main(arguments):
    found = list(problems(Path(arguments[0]).resolve(), arguments[1]))
    print("\n".join(found))
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
