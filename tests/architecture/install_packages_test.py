# SPDX-License-Identifier: GPL-3.0-or-later
"""Runs packaging/install-packages with stand-ins for the package tools that note how they are called."""
import os
import subprocess
import tempfile
import unittest
from pathlib import Path

SCRIPT = Path(__file__).resolve().parents[2] / "packaging" / "install-packages"
PACKAGES = "[build]\ng++   # the compiler\ncmake\n\n[test]\nxvfb\n"


class InstallPackages(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.root = Path(folder.name)
        (self.root / "bin").mkdir()
        (self.root / "install-packages").write_text(SCRIPT.read_text())
        (self.root / "debian-packages.txt").write_text(PACKAGES)
        self.tool("apt-get", 'case "$*" in *install*) [ ! -e "$ROOT/broken" ] || { echo "E: no such mirror"; exit 100; } ;; esac\n'
                             'echo "$*" >> "$ROOT/calls"')
        self.tool("sudo", "exit 1")
        self.user(0)

    def tool(self, name, text):
        file = self.root / "bin" / name
        file.write_text(f"#!/bin/sh\n{text}\n")
        file.chmod(0o755)

    def user(self, number):
        self.tool("id", f"echo {number}")

    def run_with(self, installed, *sections):
        self.tool("dpkg-query", "\n".join(f"echo 'installed {name}'" for name in installed) + "\necho 'config-files cmake'")
        environment = dict(os.environ, PATH=f"{self.root}/bin:{os.environ['PATH']}", ROOT=str(self.root))
        environment.pop("LUMAVEX_SKIP_PACKAGES", None)
        result = subprocess.run(["bash", str(self.root / "install-packages"), *sections], env=environment, text=True,
                                stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, timeout=60,
                                check=False)
        calls = self.root / "calls"
        return result.returncode, result.stdout, calls.read_text().splitlines() if calls.exists() else []

    def test_nothing_missing_needs_neither_network_nor_rights(self):
        self.user(1000)
        self.assertEqual(self.run_with(["g++", "cmake"], "build"), (0, "", []))

    def test_only_what_is_missing_in_the_sections_asked_for_is_installed_and_nothing_removed(self):
        status, _, calls = self.run_with(["g++"], "build")
        self.assertEqual(status, 0)
        self.assertEqual([call.split()[-1] for call in calls], ["update", "cmake"])
        self.assertIn("--no-install-recommends --no-remove", calls[1])

    def test_without_rights_it_says_what_to_install(self):
        self.user(1000)
        status, text, calls = self.run_with(["g++"], "build", "test")
        self.assertEqual((status, calls), (1, []))
        self.assertIn("apt-get install --no-install-recommends cmake xvfb", text)

    def test_a_failed_installation_shows_what_apt_said(self):
        (self.root / "broken").touch()
        status, text, _ = self.run_with([], "test")
        self.assertEqual(status, 1)
        self.assertIn("E: no such mirror", text)
        self.assertIn("could not install: xvfb", text)


if __name__ == "__main__":
    unittest.main()
