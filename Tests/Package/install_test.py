"""Installing and uninstalling."""
import os
import stat
import sys
import unittest

from installation import (BUILD, BUILD_TYPE, CMAKE, EMULATOR, HEADERS, LIB, PREFIX, ROOT, SOURCE, WORK, empty_directory,
                          fails, install, read, run, tree, write)

HERE = os.path.dirname(os.path.abspath(__file__))
REGISTRY = "/etc/kestrix/registry.reg"
SYSTEM = "Windows" if EMULATOR else "Posix"


def uninstall(root, prefix="/usr/local"):
    return run(CMAKE, "-P", f"{root}{prefix}/share/kestrix/uninstall.cmake")


class PlacesTest(unittest.TestCase):
    """Makes the installation that the other programs of this folder look at."""

    @classmethod
    def setUpClass(cls):
        empty_directory(ROOT)
        install(ROOT)

    def test_everything_lies_where_its_users_look_for_it(self):
        expected = set()
        for line in read(os.path.join(HERE, SYSTEM, "places.txt")).splitlines():
            if not line.startswith("#"):
                expected.add(line.replace("<prefix>", "/usr/local").replace("<lib>", LIB)
                             .replace("<build>", BUILD_TYPE.lower()))
        files = {path for path in tree(ROOT) if not path.endswith("/")}
        headers = HEADERS[len(ROOT):] + "/"
        self.assertEqual(sorted(expected), sorted(path for path in files if not path.startswith(headers)))

    def test_every_public_header_is_there_and_no_other(self):
        expected = set()
        for base, folder in (("Platform/Include", "Platform"), (f"Platform/{SYSTEM}/Include", "Platform"),
                             ("VLK/Include", "VLK"), (".", "Snmp")):
            top = os.path.join(SOURCE, base)
            for directory, _, names in os.walk(os.path.join(top, folder)):
                expected.update(os.path.relpath(os.path.join(directory, name), top) for name in names
                                if name.endswith((".h", ".inc")))
        present = {path[1:] for path in tree(HEADERS) if not path.endswith("/")}
        self.assertEqual(sorted(expected), sorted(present))

    def test_no_file_names_the_tree_it_was_built_in(self):
        for path in tree(PREFIX):
            if path.endswith((".cmake", ".pc", ".service", ".conf", ".txt")):
                self.assertNotIn(SOURCE, read(PREFIX + path), path)


class ConfigurationTest(unittest.TestCase):
    def test_pass_phrases_are_for_the_owner_alone(self):
        self.assertEqual(0o600, stat.S_IMODE(os.stat(ROOT + "/etc/kestrix/kxra-snmpd.conf").st_mode))
        self.assertEqual(0o644, stat.S_IMODE(os.stat(ROOT + REGISTRY).st_mode))


class UninstallTest(unittest.TestCase):
    def setUp(self):
        self.root = empty_directory(os.path.join(WORK, "uninstall"))

    def test_nothing_is_left_of_an_installation_that_nobody_touched(self):
        install(self.root)
        uninstall(self.root)
        self.assertEqual(set(), tree(self.root))

    def test_edited_configuration_stays_and_nothing_else(self):
        install(self.root)
        write(self.root + REGISTRY, "mine")
        said = uninstall(self.root)
        self.assertEqual({"/etc/", "/etc/kestrix/", REGISTRY}, tree(self.root))
        self.assertEqual("mine", read(self.root + REGISTRY))
        self.assertIn("Keeping: " + self.root + REGISTRY, said)

    def test_what_was_there_before_stays_empty_directories_too(self):
        os.makedirs(self.root + "/usr/local/sbin")
        os.makedirs(self.root + "/etc")
        write(self.root + "/usr/local/share/snmp/mibs/OTHER-MIB.txt", "")
        before = tree(self.root)
        install(self.root)
        uninstall(self.root)
        self.assertEqual(before, tree(self.root))

    def test_what_others_put_into_a_directory_of_the_installation_stays(self):
        install(self.root)
        write(self.root + "/usr/local/include/kxra/VLK/.mine", "")
        uninstall(self.root)
        self.assertIn("/usr/local/include/kxra/VLK/.mine", tree(self.root))
        self.assertEqual({"/usr/local/include/kxra/VLK/.mine"},
                         {path for path in tree(self.root) if not path.endswith("/")})

    def test_installing_again_keeps_edited_configuration_and_renews_the_other(self):
        install(self.root)
        write(self.root + REGISTRY, "mine")
        # As an older release would have shipped it, and nobody has changed it since.
        write(self.root + "/etc/kestrix/kxra-snmpd.env", "old")
        write(self.root + "/usr/local/share/kestrix/configuration/kxra-snmpd.env", "old")
        install(self.root)
        self.assertEqual("mine", read(self.root + REGISTRY))
        self.assertEqual(read(SOURCE + "/Service/Install/kxra-snmpd.env"), read(self.root + "/etc/kestrix/kxra-snmpd.env"))
        uninstall(self.root)
        self.assertEqual({"/etc/", "/etc/kestrix/", REGISTRY}, tree(self.root))

    def test_what_an_older_release_left_goes_too(self):
        install(self.root)
        installed = self.root + "/usr/local/share/kestrix/installed.txt"
        write(self.root + "/usr/local/bin/kxra-former", "")
        write(installed, "file /usr/local/bin/kxra-former\n" + read(installed))
        install(self.root)
        uninstall(self.root)
        self.assertEqual(set(), tree(self.root))

    def test_the_target_takes_away_what_lies_at_the_prefix_of_the_build(self):
        for line in read(BUILD + "/CMakeCache.txt").splitlines():
            if line.startswith("CMAKE_INSTALL_PREFIX:"):
                prefix = line.split("=")[1]
        install(self.root, prefix)
        run(CMAKE, "--build", BUILD, "--target", "uninstall", env={**os.environ, "DESTDIR": self.root})
        self.assertEqual(set(), tree(self.root))

    def test_a_prefix_of_ones_own_has_a_configuration_of_its_own(self):
        prefix = os.path.join(self.root, "own place")
        run(CMAKE, "--install", BUILD, "--prefix", prefix, env={**os.environ, "DESTDIR": ""})
        self.assertTrue(os.path.exists(prefix + REGISTRY))
        self.assertIn(prefix + REGISTRY, read(prefix + "/lib/systemd/system/kxra-snmpd.service"))
        run(CMAKE, "-P", prefix + "/share/kestrix/uninstall.cmake")
        self.assertEqual(set(), tree(self.root))

    def test_a_list_that_was_moved_away_takes_nothing_along(self):
        install(self.root)
        before = tree(self.root)
        elsewhere = os.path.join(self.root, "elsewhere")
        os.makedirs(elsewhere)
        for name in ("installed.txt", "uninstall.cmake"):
            write(f"{elsewhere}/{name}", read(f"{self.root}/usr/local/share/kestrix/{name}"))
        self.assertRegex(fails(CMAKE, "-P", elsewhere + "/uninstall.cmake"), r"is\s+not\s+where\s+it\s+was\s+installed")
        self.assertLessEqual(before, tree(self.root))


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1] + ["-v"] + sys.argv[1:])
