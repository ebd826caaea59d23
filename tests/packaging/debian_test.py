#!/usr/bin/env python3
"""Tests the Debian packages that scripts/debian-packages has written: debian_test.py SOURCE_DIRECTORY PACKAGES_DIRECTORY

Installs them in a new Debian 12, and uses the program, the library, the headers and the Python package as docs/embedding.md describes.
"""

import pathlib
import shutil
import subprocess
import sys
import tempfile
import unittest

import counted

SOURCE, PACKAGES = (pathlib.Path(path).resolve() for path in sys.argv[1:3])
NAMES = ["korvelcheck", "libkorvelcheck-dev", "libkorvelcheck0", "python3-korvelcheck"]

# Runs in the new system, where the source tree is not visible.
SCRIPT = """
set -eu
export DEBIAN_FRONTEND=noninteractive LC_ALL=C.UTF-8
apt-get install -y --no-install-recommends /packages/*.deb cmake g++ make pkg-config >/log 2>&1 || { cat /log; exit 1; }
cd /shop
korvelcheck check v6.xml v7-wider-key.xml --table orders | sed -n '/refused \\[/p; /suggestion/p'
python3 -c 'import korvelcheck; print(korvelcheck.check("v6.xml", "v7-wider-key.xml", tables=["orders"]).verdict)'
for example in embed embed-cpp; do
  cmake -S /usr/share/doc/libkorvelcheck-dev/examples/$example -B /build/$example >/log 2>&1 && cmake --build /build/$example >>/log 2>&1 || { cat /log; exit 1; }
done
/build/embed/embed v6.xml v7-wider-key.xml || true
/build/embed-cpp/embed_cpp v6.xml v7-wider-key.xml orders || true
test -s /usr/share/man/man1/korvelcheck.1.gz -a -s /usr/share/bash-completion/completions/korvelcheck
test -s /usr/share/korvelcheck/qmx.rng -a -s /usr/share/korvelcheck/qmx.rnc -a -s /usr/share/korvelcheck/korvelcheck.lua
"""


def can_unshare():
    return subprocess.run(["mmdebstrap", "--mode=unshare", "--variant=custom", "--simulate", "bookworm", "/dev/null"],
                          capture_output=True, check=False).returncode == 0


class Packages(unittest.TestCase):
    def test_all_packages_are_there(self):
        names = sorted(path.name.split("_")[0] for path in PACKAGES.glob("*.deb"))
        self.assertEqual([name for name in names if not name.endswith("-dbgsym")], NAMES)

    def test_lintian_finds_no_error(self):
        done = subprocess.run(["lintian", "--allow-root", "--fail-on", "error,warning", *PACKAGES.glob("*.deb")], capture_output=True,
                              text=True, check=False)
        self.assertEqual(done.returncode, 0, done.stdout + done.stderr)

    def test_program_uses_the_libraries_of_the_system(self):
        with tempfile.TemporaryDirectory() as directory:
            [package] = PACKAGES.glob("korvelcheck_*.deb")
            subprocess.run(["dpkg-deb", "-x", package, directory], check=True)
            needed = subprocess.run(["readelf", "-d", f"{directory}/usr/bin/korvelcheck"], capture_output=True, text=True, check=True).stdout
            self.assertIn("[libexpat.so.1]", needed)

    def test_works_in_a_new_system(self):
        if not can_unshare():
            self.skipTest("this user may not create the namespaces for a new system")
        with tempfile.TemporaryDirectory() as directory:
            base = pathlib.Path(directory)
            base.chmod(0o755)
            (base / "packages").mkdir()
            for package in PACKAGES.glob("*.deb"):
                shutil.copy(package, base / "packages")
            shutil.copytree(SOURCE / "examples/shop", base / "shop")
            (base / "script").write_text(SCRIPT)
            done = subprocess.run(
                ["mmdebstrap", "--mode=unshare", "--variant=apt", "--quiet", "bookworm", "/dev/null",
                 *(f"--customize-hook=copy-in {base / name} /" for name in ("packages", "shop", "script")),
                 '--customize-hook=chroot "$1" sh /script >&2'],
                capture_output=True, text=True, check=False)  # fmt: skip
            self.assertEqual(done.returncode, 0, done.stderr)
            self.assertIn("refused [primary-key.size]", done.stderr)
            self.assertIn("\nrefused\n", done.stderr)
            self.assertGreaterEqual(done.stderr.count("keep order_no as it is"), 2, done.stderr)
            self.assertIn("refused: -3 ERROR_VALUE_FIELD: The size of primarykey", done.stderr)


if __name__ == "__main__":
    counted.main("debian_test.py")
