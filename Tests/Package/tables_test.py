"""The tables of KXRA_MIB.dll: what it exports, and what it asks the system for."""
import os
import re
import sys
import unittest

import exports

HERE = os.path.dirname(os.path.abspath(__file__))
OBJDUMP = os.environ["KXRA_OBJDUMP"]
LIBRARY = os.environ["KXRA_LIBRARY"]
PROBE = os.environ["KXRA_PROBE"]

# The loader finds DllMain by the file's entry point, not by a name.
HOST_FUNCTIONS = exports.HOST_FUNCTIONS - {"DllMain"}

# Libraries that every Windows has had since 10, and nothing that would have to be installed.
SYSTEM_LIBRARIES = {"advapi32.dll", "kernel32.dll", "msvcrt.dll", "ole32.dll", "oleaut32.dll", "psapi.dll",
                    "snmpapi.dll", "user32.dll", "version.dll", "ws2_32.dll"}

# Classes that stand in a header whole: a module that uses one has it all, and whether this library shows it too is the
# object format's choice.
IN_HEADERS = {("class", "VLK::Strings::CStringEx"), ("class", "VLK::Threading::CSyncCounter")}


class ExportTableTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.entries = exports.read_list(os.path.join(HERE, "exported.txt")) | IN_HEADERS
        cls.symbols = exports.exported_by_dll(OBJDUMP, LIBRARY)

    def test_the_five_functions_are_there_and_no_dllmain(self):
        self.assertEqual(HOST_FUNCTIONS, {symbol for symbol in self.symbols if "::" not in symbol})

    def test_what_is_exported_besides_stands_in_the_list(self):
        strange = [symbol for symbol in self.symbols if symbol not in HOST_FUNCTIONS and
                   exports.entry_of(exports.qualified_name(symbol), self.entries) is None]
        self.assertEqual([], strange)

    def test_what_stands_in_the_list_is_exported(self):
        present = {exports.entry_of(exports.qualified_name(symbol), self.entries) for symbol in self.symbols}
        self.assertEqual([], sorted(self.entries - present - IN_HEADERS))

    def test_an_extension_without_the_foundation_exports_the_five_functions_alone(self):
        self.assertEqual(sorted(HOST_FUNCTIONS), sorted(exports.exported_by_dll(OBJDUMP, PROBE)))


class ImportTableTest(unittest.TestCase):
    def test_only_libraries_of_the_system_are_asked_for(self):
        for library in (LIBRARY, PROBE):
            needed = {name.lower() for name in re.findall(r"DLL Name: (\S+)", exports.headers_of_dll(OBJDUMP, library))}
            self.assertIn("kernel32.dll", needed)
            self.assertEqual(set(), needed - SYSTEM_LIBRARIES, library)


if __name__ == "__main__":
    sys.exit(unittest.main())
