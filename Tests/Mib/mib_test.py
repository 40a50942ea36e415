"""The SMI module KESTRIX-RAID-MIB: valid, complete, and understood by the tools that administrators have."""
import os
import re
import subprocess
import tempfile
import unittest

from mib_objects import OBJECTS

MIB_FOLDER = os.environ["KXRA_MIB_FOLDER"]
SMI_FOLDER = os.environ["KXRA_SMI_FOLDER"]
MODULE = os.path.join(MIB_FOLDER, "KESTRIX-RAID-MIB.txt")
ROOT = ".1.3.6.1.4.1.88417.2.49"

# Ranges of the enumerated columns; every other integer may hold any 32-bit number.
RANGES = {
    "kxrCtrlBBUStatus": (1, 7), "kxrCtrlStatus": (1, 3), "kxrCtrlInterface": (1, 7), "kxrCtrlBBUStatusEx": (1, 7),
    "kxrLogicalDriveWriteMode": (1, 8), "kxrLogicalDriveStatus": (1, 9), "kxrLogicalDriveStatusEx": (1, 15),
    "kxrPhysicalDeviceType": (1, 99), "kxrPhysicalDeviceConfiguredDisk": (1, 2),
    "kxrPhysicalDeviceForeignConfig": (1, 2), "kxrPhysicalDeviceInterface": (1, 9),
    "kxrPhysicalDeviceSmartStatus": (1, 4), "kxrPhysicalDeviceStatus": (1, 12), "kxrPhysicalDeviceStatusEx": (1, 20),
}

INDEXES = {
    "kxrCtrlEntry": ["kxrCtrlNr"],
    "kxrLogicalDriveEntry": ["kxrLogicalDriveCtrlNr", "kxrLogicalDriveNr"],
    "kxrPhysicalDeviceEntry": ["kxrPhysicalDeviceCtrlNr", "kxrPhysicalDeviceChannel", "kxrPhysicalDeviceTarget",
                               "kxrPhysicalDeviceLUN"],
    "kxrLogicalDriveContentsEntry": ["kxrLogicalDriveContentsCtrlNr", "kxrLogicalDriveContentsLogicalDriveNr",
                                     "kxrLogicalDriveContentsNr", "kxrLogicalDriveContentsIdx"],
}

TRAP_VARIABLES = ["kxrTrapServerName", "kxrTrapTime", "kxrTrapParam1", "kxrTrapParam2", "kxrTrapParam3", "kxrTrapParam4",
                  "kxrTrapParam5", "kxrTrapParam6"]
NOTIFICATIONS = ["kxrEventUndefined", "kxrEventConnected", "kxrEventDisconnected", "kxrEventUnexpectedDisconnect",
                 "kxrEventTestTrap"]


def tool(*command, mibs="KESTRIX-RAID-MIB"):
    with tempfile.TemporaryDirectory() as state:
        os.mkdir(os.path.join(state, "cert_indexes"))  # or the tools say on standard error that they made it
        environment = dict(os.environ, SNMPCONFPATH=state, SNMP_PERSISTENT_DIR=state, MIBS=mibs,
                           MIBDIRS=SMI_FOLDER + ":" + MIB_FOLDER, SMIPATH=SMI_FOLDER + ":" + MIB_FOLDER)
        done = subprocess.run(command, capture_output=True, text=True, timeout=30, env=environment)
    return done.stdout, done.stderr


def translate(option, names):
    output, errors = tool("snmptranslate", "-IR", option, *names)
    if errors:
        raise AssertionError(errors)
    return [line for line in output.split("\n") if line]


class Module(unittest.TestCase):
    def test_smilint_has_nothing_to_say_but_of_readable_index_columns(self):
        self.assertEqual(("", ""), tool("smilint", "-m", "-s", "-l", "6", "-i", "index-element-accessible", MODULE))

    def test_all_98_objects_stand_where_the_agent_serves_them(self):
        self.assertEqual(98, len(OBJECTS))
        found = translate("-On", [name for name, _, _ in OBJECTS])
        self.assertEqual([ROOT + "." + arc for _, arc, _ in OBJECTS], found)

    def test_every_object_has_its_syntax_and_range_and_is_read_only(self):
        for name, _, is_integer in OBJECTS:
            with self.subTest(object=name):
                text = "\n".join(translate("-Td", [name]))
                self.assertIn("MAX-ACCESS\tread-only", text)
                self.assertIn("SYNTAX\t" + ("Integer32" if is_integer else "OCTET STRING"), text)
                shown = re.search(r"Integer32 \((-?\d+)\.\.(-?\d+)\)", text)
                if name in RANGES:
                    self.assertEqual(RANGES[name], (int(shown.group(1)), int(shown.group(2))))
                elif any(name in columns for columns in INDEXES.values()):
                    self.assertEqual((0, 2147483647), (int(shown.group(1)), int(shown.group(2))))
                else:
                    self.assertIsNone(shown)
                self.assertNotIn("{", text.split("DESCRIPTION")[0], "no labels are made up for enumerated values")

    def test_the_tables_have_their_indexes(self):
        for entry, columns in INDEXES.items():
            with self.subTest(table=entry):
                text = "\n".join(translate("-Td", [entry]))
                self.assertIn("INDEX\t\t{ " + ", ".join(columns) + " }", text)

    def test_the_eight_trap_variables_stand_below_the_enterprise(self):
        self.assertEqual([ROOT + ".2.1." + str(i) for i in range(1, 9)], translate("-On", TRAP_VARIABLES))

    def test_the_notifications_stand_under_enterprise_0_with_the_eight_variables_in_order(self):
        self.assertEqual([ROOT + ".2.0." + str(i) for i in range(1, 6)], translate("-On", NOTIFICATIONS))
        for name in NOTIFICATIONS:
            with self.subTest(notification=name):
                text = "\n".join(translate("-Td", [name]))
                self.assertIn("OBJECTS\t{ " + ", ".join(TRAP_VARIABLES) + " }", text)


if __name__ == "__main__":
    unittest.main(verbosity=2)
