"""The registry files by which the SNMP service gets to know the library, in the registry editor that reads them.

KXRA_EMULATOR: what runs programs of Windows here. KXRA_REGISTRATION: the folder of the two files."""
import os
import re
import shutil
import subprocess
import sys
import tempfile
import unittest

EMULATOR = os.environ["KXRA_EMULATOR"]
FILES = os.environ["KXRA_REGISTRATION"]
REGISTER, UNREGISTER = "KXRA_MIB-register.reg", "KXRA_MIB-unregister.reg"

MACHINE = "HKEY_LOCAL_MACHINE\\"
EXTENSION_AGENTS = MACHINE + "SYSTEM\\CurrentControlSet\\Services\\SNMP\\Parameters\\ExtensionAgents"
PRODUCT = MACHINE + "SOFTWARE\\Norvane\\Kestrix RAID"
VERSION = PRODUCT + "\\KXRA_MIB\\CurrentVersion"


class RegistrationTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.prefix = tempfile.mkdtemp(prefix="kxra-")
        cls.environment = dict(os.environ, WINEPREFIX=cls.prefix)
        cls.run_program("wineboot", "--init")

    @classmethod
    def tearDownClass(cls):
        subprocess.run(["wineserver", "-k"], env=cls.environment, check=False)
        shutil.rmtree(cls.prefix, ignore_errors=True)

    @classmethod
    def run_program(cls, *command):
        return subprocess.run([EMULATOR, *command], env=cls.environment, check=False, capture_output=True, timeout=120,
                              stdin=subprocess.DEVNULL)

    def merge(self, name):
        result = self.run_program("regedit", "/S", "Z:" + os.path.join(FILES, name).replace("/", "\\"))
        self.assertEqual(0, result.returncode, result.stderr)

    def add(self, key, name, number):
        result = self.run_program("reg", "add", key, "/v", name, "/t", "REG_DWORD", "/d", str(number), "/f")
        self.assertEqual(0, result.returncode, result.stderr)

    def values(self, key):
        """The values of a key: name and text."""
        text = self.run_program("reg", "query", key).stdout.decode("ascii", "replace")
        return {match[1]: match[2].strip() for match in re.finditer(r"^ {4}(\S.*?) {4}REG_\w+ {4}(.*)$", text,
                                                                    re.MULTILINE)}

    def test_the_library_is_found_as_the_service_looks_for_it_and_is_gone_afterwards(self):
        self.assertEqual({}, self.values(EXTENSION_AGENTS))
        self.merge(REGISTER)
        agents = self.values(EXTENSION_AGENTS)
        self.assertEqual({"KXRA_MIB": VERSION[len(MACHINE):]}, agents)
        library = self.values(MACHINE + agents["KXRA_MIB"])["Pathname"]
        self.assertEqual("C:\\Program Files\\Kestrix RAID\\bin\\KXRA_MIB.dll", library)
        self.assertEqual(library, self.values(PRODUCT)["Path"] + "\\bin\\KXRA_MIB.dll")

        self.add(VERSION, "PWait", 5)
        self.merge(UNREGISTER)
        self.assertEqual({}, self.values(EXTENSION_AGENTS))
        self.assertEqual({"PWait": "0x5"}, self.values(VERSION), "what was set by hand stays")

    def test_the_files_are_in_the_form_that_every_registry_editor_reads(self):
        for name in (REGISTER, UNREGISTER):
            with open(os.path.join(FILES, name), "rb") as stream:
                octets = stream.read()
            self.assertTrue(octets.startswith(b"Windows Registry Editor Version 5.00\r\n"), name)
            self.assertEqual(octets.count(b"\n"), octets.count(b"\r\n"), name)
            octets.decode("ascii")


if __name__ == "__main__":
    sys.exit(unittest.main())
