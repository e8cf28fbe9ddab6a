#!/usr/bin/env python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""Checks the rules of ARCHITECTURE.md that a compiler does not: who includes whom, where the headers of other systems
may appear, how long a file may be, that no two headers have one name, and that every file names its licence.

usage: check_architecture.py [ROOT]
Prints one line per broken rule, as file:line: what is wrong, and ends with status 1 if there is any.
"""
import os
import re
import sys
from pathlib import Path

MIDDLE = ("settings_dialog", "recording", "compose", "camera", "capture")
BACKENDS = ("movie", "platform/qt", "platform/x11", "media/camera", "media/sound", "media/loader")

# Each room may include itself and these rooms. "platform" means the interfaces at the top of that folder,
# "platform/x11" a backend.
MAY_INCLUDE = {
    "base": (),
    "platform": ("base",),
    **{room: ("platform", "base") for room in MIDDLE + BACKENDS},
    "app": ("platform", "base") + MIDDLE,
    "packaging": (),
    "media": BACKENDS[-3:],
    "media/gstreamer": ("platform", "base"),
}
MAY_INCLUDE["media/camera"] += ("media/gstreamer",)
MAY_INCLUDE["media/sound"] += ("media/gstreamer",)
# The only file that chooses backends.
CHOOSER = "app/createPlatform.cpp"
# Tests and benchmarks may include every room, and no room may include them.
OBSERVERS = ("tests", "bench")

# Headers of other systems and the only rooms that may include them.
FOREIGN = (
    (re.compile(r"^(xcb/|X11/)"), ("platform/x11",)),
    (re.compile(r"^gst/"), ("media/gstreamer", "media/camera", "media/sound")),
    (re.compile(r"^(turbojpeg\.h|jpeglib\.h)$"), ("camera", "movie")),
    (re.compile(r"^libyuv(\.h|/)"), ("compose", "camera", "platform/x11")),
    (re.compile(r"^(dbus/|pulse/|pipewire/|linux/)"), BACKENDS),
    (re.compile(r"^(gtest/|gmock/|benchmark/)"), ()),
    (re.compile(r"/private/|^private/|_p\.h$"), ()),
)
GENERATED = re.compile(r"^(ui_\w+\.h|moc_\w+\.cpp|\w+\.moc)$")
INCLUDE = re.compile(r'^\s*#\s*include\s*([<"])([^>"]+)[>"]')
SYSTEM_CONDITION = re.compile(r"^\s*#\s*(if|ifdef|ifndef|elif)\b.*(__linux__|__APPLE__|_WIN32|__FreeBSD__|Q_OS_)")

LINES_ALLOWED = {".cpp": 400, ".h": 300}
SPDX = "SPDX-License-Identifier:"
NAMES_LICENCE = (".cpp", ".h", ".py", ".cmake", ".svg", ".1")
SKIPPED_FOLDERS = {"build", ".git", "__pycache__", ".cache", ".vscode", ".idea"}


def files_below(root):
    for folder, names, files in os.walk(root):
        names[:] = sorted(name for name in names if name not in SKIPPED_FOLDERS)
        for name in sorted(files):
            yield Path(folder, name).relative_to(root)


def room_of(path):
    """The row of the include table a file belongs to."""
    parts = path.parts
    if parts[0] in ("platform", "media") and len(parts) > 2:
        return f"{parts[0]}/{parts[1]}"
    return parts[0] if len(parts) > 1 else ""


def check_own_include(root, path, room, name):
    if ".." in Path(name).parts:
        return f'"{name}" climbs up; write paths from the root'
    if GENERATED.match(name):
        return None
    if not (root / name).is_file():
        return f'"{name}" is not a file of this project; use <> for others\' headers and paths from the root for ours'
    target = room_of(Path(name))
    if room in OBSERVERS:
        return None
    if str(path) == CHOOSER and target in BACKENDS:
        return None
    if target != room and target not in MAY_INCLUDE.get(room, ()):
        return f'{room or "this folder"} must not include "{name}"'
    return None


def check_foreign_include(room, name):
    if room in OBSERVERS:
        return None
    for pattern, rooms in FOREIGN:
        if pattern.search(name) and room not in rooms:
            where = ", ".join(rooms) if rooms else "tests and benchmarks at most"
            return f"<{name}> belongs in {where}"
    return None


def check_source(root, path, lines):
    room = room_of(path)
    allowed = LINES_ALLOWED[path.suffix]
    if len(lines) > allowed:
        yield allowed, f"{len(lines)} lines, where {allowed} are allowed; make two rooms of it"
    if path.suffix == ".h" and not any(line.strip() == "#pragma once" for line in lines[:3]):
        yield 1, "a header starts with #pragma once after its licence"
    for number, line in enumerate(lines, 1):
        if SYSTEM_CONDITION.match(line) and str(path) != CHOOSER:
            yield number, f"systems are told apart in CMake and {CHOOSER} only"
        found = INCLUDE.match(line)
        if not found:
            continue
        quote, name = found.groups()
        broken = check_foreign_include(room, name)
        if not broken and quote == '"':
            broken = check_own_include(root, path, room, name)
        if broken:
            yield number, broken


def must_name_licence(path, lines):
    return path.suffix in NAMES_LICENCE or path.name == "CMakeLists.txt" or (bool(lines) and lines[0].startswith("#!"))


def broken_rules(root):
    """Yields (path, line, text) for every broken rule below root."""
    root = Path(root)
    headers = {}
    for path in files_below(root):
        # A class has the name of its header. The linker would silently merge two classes of one name.
        if path.suffix == ".h" and headers.setdefault(path.name, path) != path:
            yield path, 1, f"{headers[path.name]} has the same name"
        try:
            lines = (root / path).read_text(encoding="utf-8").splitlines()
        except UnicodeDecodeError:
            continue
        if must_name_licence(path, lines) and not any(SPDX in line for line in lines[:2]):
            yield path, 1, f"no {SPDX} line at the top"
        if path.suffix in LINES_ALLOWED:
            for number, text in check_source(root, path, lines):
                yield path, number, text


def main(arguments):
    root = Path(arguments[0]) if arguments else Path(__file__).resolve().parents[1]
    broken = list(broken_rules(root))
    for path, number, text in broken:
        print(f"{path}:{number}: {text}")
    return 1 if broken else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
