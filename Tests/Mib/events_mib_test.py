"""The SMI module KESTRIX-RAID-EVENTS-MIB as the build writes it: valid, complete, and at one with KESTRIX-RAID-MIB."""
import filecmp
import os
import re
import unittest

from event_names import LAST_OWN, full_name, notification_name, read_events
from mib_test import MIB_FOLDER, ROOT, TRAP_VARIABLES, tool

SOURCE_FOLDER = os.environ["KXRA_MIB_SOURCES"]
BASE = os.path.join(MIB_FOLDER, "KESTRIX-RAID-MIB.txt")
MODULE = os.path.join(MIB_FOLDER, "KESTRIX-RAID-EVENTS-MIB.txt")
NOTIFICATIONS = ROOT + ".2.0."
EVENTS = read_events()


def defined_in(path):
    """The descriptors that a module defines; types, which have a capital, are another matter."""
    with open(path) as text:
        return re.findall(r"^([a-z][\w-]*) +(?:OBJECT|MODULE|NOTIFICATION|TEXTUAL|::=)", text.read(), re.M)


def translate(option, names, mibs="KESTRIX-RAID-EVENTS-MIB"):
    output, errors = tool("snmptranslate", option, *names, mibs=mibs)
    if errors:
        raise AssertionError(errors)
    return [line for line in output.split("\n") if line]


class EventsModule(unittest.TestCase):
    def test_smilint_has_nothing_to_say(self):
        self.assertEqual(("", ""), tool("smilint", "-m", "-s", "-l", "6", MODULE))

    def test_smilint_has_nothing_to_say_to_both_together_but_of_readable_index_columns(self):
        self.assertEqual(("", ""), tool("smilint", "-m", "-s", "-l", "6", "-i", "index-element-accessible", BASE, MODULE))

    def test_the_folder_holds_both_modules_and_nothing_else(self):
        self.assertEqual(["KESTRIX-RAID-EVENTS-MIB.txt", "KESTRIX-RAID-MIB.txt"], sorted(os.listdir(MIB_FOLDER)))
        self.assertTrue(filecmp.cmp(os.path.join(SOURCE_FOLDER, "KESTRIX-RAID-MIB.txt"), BASE, shallow=False))

    def test_every_event_has_its_name_and_every_name_its_event(self):
        self.assertEqual(1346, len(EVENTS))
        oids = [NOTIFICATIONS + str(number) for number in sorted(EVENTS)]
        names = [full_name(number, EVENTS[number]) for number in sorted(EVENTS)]
        for mibs in ("KESTRIX-RAID-EVENTS-MIB", "KESTRIX-RAID-MIB:KESTRIX-RAID-EVENTS-MIB",
                     "KESTRIX-RAID-EVENTS-MIB:KESTRIX-RAID-MIB"):
            with self.subTest(mibs=mibs):
                self.assertEqual(names, translate("-OS", oids, mibs))
                self.assertEqual(oids, translate("-On", names, mibs))

    def test_every_notification_has_the_eight_variables_and_says_which_event_it_is(self):
        numbers = [number for number in sorted(EVENTS) if number > LAST_OWN]
        texts = "\n".join(translate("-Td", [full_name(number, EVENTS[number]) for number in numbers]))
        texts = re.split(r"^KESTRIX-RAID-EVENTS-MIB::", texts, flags=re.M)[1:]
        self.assertEqual(len(numbers), len(texts))
        for number, text in zip(numbers, texts):
            with self.subTest(event=number):
                self.assertIn("OBJECTS\t{ " + ", ".join(TRAP_VARIABLES) + " }", text)
                said = re.search(r'DESCRIPTION\t"Event (\d+) of the core service,\s+(\w+)\."', text)
                self.assertEqual((str(number), EVENTS[number]), said.groups())

    def test_the_names_are_valid_descriptors_and_no_two_are_alike(self):
        names = defined_in(MODULE)
        self.assertEqual(1341 + 5, len(names), "the events, and the module's identity, branches, compliance and group")
        for name in names:
            self.assertRegex(name, r"^[a-z][A-Za-z0-9]{0,63}$")
        both = [name.lower() for name in names + defined_in(BASE)]
        self.assertEqual([], sorted(name for name in set(both) if both.count(name) > 1))

    def test_the_agents_own_notifications_are_named_alike_in_the_other_module(self):
        own = [notification_name(number, EVENTS[number]) for number in range(1, LAST_OWN + 1)]
        self.assertTrue(set(own) <= set(defined_in(BASE)))


if __name__ == "__main__":
    unittest.main(verbosity=2)
