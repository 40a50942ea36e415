"""The dictionaries lie in the file as they are used: in a section that can't be written, and without a relocation."""
import os
import re
import subprocess
import unittest

PROGRAM = os.environ["KXRA_PROGRAM"]
TABLES = ["kResultCodes", "kEvents", "kCommands", "kProperties", "kPropertyValues"]


def readelf(option):
    return subprocess.run(["readelf", "-W", "-C", option, PROGRAM], capture_output=True, text=True, timeout=60,
                          check=True).stdout


class ReadOnlyData(unittest.TestCase):
    def setUp(self):
        self.sections = {number: (name, flags) for number, name, flags in re.findall(
            r"^ *\[ *(\d+)\] (\S+) +\S+ +[0-9a-f]+ [0-9a-f]+ [0-9a-f]+ [0-9a-f]+ +([A-Za-z]*)", readelf("-S"), re.M)}
        self.tables = {name: (int(address, 16), int(size, 0), section) for address, size, section, name in re.findall(
            r"^ *\d+: ([0-9a-f]+) +(\S+) OBJECT .* (\d+) SNMP::Dictionaries::(\w+)$", readelf("-s"), re.M)}

    def test_the_tables_are_in_a_section_that_is_only_read(self):
        self.assertEqual(sorted(TABLES), sorted(self.tables), "and nothing else of theirs")
        for name, (_, _, section) in self.tables.items():
            with self.subTest(table=name):
                self.assertEqual((".rodata", "A"), self.sections[section])

    def test_nothing_in_them_is_relocated(self):
        places = [int(place, 16) for place in re.findall(r"^([0-9a-f]{12,16}) ", readelf("-r"), re.M)]
        self.assertTrue(places)
        for name, (address, size, _) in self.tables.items():
            with self.subTest(table=name):
                self.assertGreater(size, 0)
                self.assertEqual([], [place for place in places if address <= place < address + size])


if __name__ == "__main__":
    unittest.main(verbosity=2)
