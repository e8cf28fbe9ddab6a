# SPDX-License-Identifier: GPL-3.0-or-later
"""Breaks each rule in a small tree of its own and expects the checker to say so, at the right line."""
import tempfile
import unittest
from pathlib import Path

from check_architecture import broken_rules

LICENCE = "// SPDX-License-Identifier: GPL-3.0-or-later\n"
HEADER = LICENCE + "#pragma once\n"


class BrokenRules(unittest.TestCase):
    def setUp(self):
        self.folder = tempfile.TemporaryDirectory()
        self.addCleanup(self.folder.cleanup)
        self.root = Path(self.folder.name)
        for header in ("app/Delegate.h", "compose/Layout.h", "camera/Camera.h", "platform/Clock.h", "platform/x11/Grab.h",
                       "platform/qt/Dialog.h", "tests/support/Screen.h"):
            self.write(header, HEADER)

    def write(self, path, text):
        file = self.root / path
        file.parent.mkdir(parents=True, exist_ok=True)
        file.write_text(text)

    def broken(self):
        return [(str(path), line) for path, line, _ in broken_rules(self.root)]

    def expect(self, path, text, *lines):
        with self.subTest(path=path, text=text):
            self.write(path, LICENCE + text)
            self.assertEqual(self.broken(), [(path, line) for line in lines])
        (self.root / path).unlink()

    def test_what_is_allowed(self):
        self.expect("app/a.cpp", '#include "app/Delegate.h"\n#include "compose/Layout.h"\n#include "platform/Clock.h"\n')
        self.expect("compose/a.cpp", '#include "compose/Layout.h"\n#include "platform/Clock.h"\n#include <libyuv.h>\n')
        self.expect("compose/a.cpp", '#include "ui_Window_Preview.h"\n#include "a.moc"\n')
        self.expect("platform/x11/a.cpp", '#include "platform/x11/Grab.h"\n#include <xcb/xcb.h>\n')
        self.expect("platform/createPlatform.cpp", '#include "platform/x11/Grab.h"\n#ifdef __linux__\n#endif\n')
        self.expect("tests/unit/a.cpp", '#include "tests/support/Screen.h"\n#include "app/Delegate.h"\n#include <xcb/xcb.h>\n')
        self.expect("build/dev/a.cpp", '#include "nowhere.h"\n')

    def test_includes_go_one_way(self):
        self.expect("compose/a.cpp", '\n#include "app/Delegate.h"\n', 3)
        self.expect("compose/a.cpp", '#include "camera/Camera.h"\n', 2)
        self.expect("platform/a.cpp", '#include "compose/Layout.h"\n', 2)
        self.expect("platform/a.cpp", '#include "platform/x11/Grab.h"\n', 2)
        self.expect("app/a.cpp", '#include "platform/x11/Grab.h"\n', 2)
        self.expect("platform/qt/a.cpp", '#include "platform/x11/Grab.h"\n', 2)
        self.expect("camera/a.cpp", '#include "tests/support/Screen.h"\n', 2)
        self.expect("newfolder/a.cpp", '#include "platform/Clock.h"\n', 2)

    def test_paths_start_at_the_root(self):
        self.expect("compose/a.cpp", '#include "../platform/Clock.h"\n', 2)
        self.expect("compose/a.cpp", '#include "Layout.h"\n', 2)

    def test_other_systems_stay_in_their_room(self):
        self.expect("capture/a.cpp", "#include <xcb/shm.h>\n", 2)
        self.expect("platform/qt/a.cpp", "#include <gst/gst.h>\n", 2)
        self.expect("compose/a.cpp", "#include <turbojpeg.h>\n", 2)
        self.expect("app/a.cpp", "#include <libyuv/scale.h>\n", 2)
        self.expect("app/a.cpp", "#include <gtest/gtest.h>\n", 2)
        self.expect("app/a.cpp", "#  if defined(__linux__)\n#endif\n", 2)

    def test_files_name_their_licence_and_stay_short(self):
        self.write("app/a.cpp", "int a;\n")
        self.write("app/script", "#!/bin/sh\n")
        self.write("app/CMakeLists.txt", "\n")
        self.write("app/long.h", HEADER + "\n" * 299)
        self.write("app/long.cpp", LICENCE + "\n" * 400)
        self.write("app/noguard.h", LICENCE + "int b;\n")
        self.assertEqual(self.broken(), [("app/CMakeLists.txt", 1), ("app/a.cpp", 1), ("app/long.cpp", 400),
                                         ("app/long.h", 300), ("app/noguard.h", 1), ("app/script", 1)])

    def test_no_two_headers_have_one_name(self):
        self.write("compose/Camera.h", HEADER)
        self.assertEqual(self.broken(), [("compose/Camera.h", 1)])


if __name__ == "__main__":
    unittest.main()
