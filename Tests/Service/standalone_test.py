"""What managers get from kxra-snmpd as a master of its own."""

import os
import unittest

from snmp_harness import (END_OF_MIB_VIEW, GET, GETNEXT, NO_SUCH_INSTANCE, NO_SUCH_OBJECT, REGION, SYS_DESCR, SnmpTest,
                          dotted, encode_integer, tlv)

NUMBER, TEXT, VOID, SLOW = (REGION + (1, i, 0) for i in (1, 2, 3, 5))
CALLS, LONGEST, OVERLAP, READ_ONLY, PICKY, SETS = (REGION + (1, i, 0) for i in (14, 15, 16, 18, 19, 21))
UNKNOWN = REGION + (1, 99, 0)
TABLE = REGION + (2,)
WRITERS = "rwcommunity private 127.0.0.1\n"


class ReadTest(SnmpTest):
    def setUp(self):
        super().setUp()
        self.start_service()
        self.one = self.manager()

    def test_get_gives_each_type_its_wire_form(self):
        expected = {1: (0x02, 42), 2: (0x04, b"fake"), 4: (0x46, 0x123456789ABCDEF0), 6: (0x06, REGION),
                    7: (0x40, b"\x0a\x01\x02\x03"), 8: (0x42, 4000000000), 9: (0x43, 123456), 11: (0x04, b"\xa0"),
                    12: (0x42, 77)}
        for number, (tag, value) in expected.items():
            (binding,) = self.one.get(REGION + (1, number, 0)).bindings
            self.assertEqual((tag, value), binding[1:], number)

    def test_unknown_names_are_no_such_instance_and_the_rest_is_answered(self):
        answer = self.one.get(NUMBER, UNKNOWN, TEXT, UNKNOWN + (1,), VOID, NUMBER)
        self.assertEqual(0, answer.status)
        self.assertEqual([0x02, NO_SUCH_INSTANCE, 0x04, NO_SUCH_INSTANCE, NO_SUCH_INSTANCE, 0x02], answer.tags)

    def test_version_1_stops_at_the_first_unknown_name(self):
        manager = self.manager(version=0)
        answer = manager.get(NUMBER, UNKNOWN, UNKNOWN, TEXT)
        self.assertEqual((2, 2), (answer.status, answer.index))
        self.assertEqual(42, manager.get(NUMBER).values[0])

    def test_version_1_has_no_object_without_a_value(self):
        answer = self.manager(version=0).get(NUMBER, VOID)
        self.assertEqual((2, 2), (answer.status, answer.index))

    def test_a_list_goes_to_the_extension_whole(self):
        self.one.get(*[NUMBER] * 7)
        self.assertEqual(7, self.one.get(LONGEST).values[0])

    def test_getnext_passes_over_an_object_without_a_value(self):
        self.assertEqual([REGION + (1, 4, 0)], self.one.get_next(TEXT).names)

    def test_getnext_from_before_the_region_finds_its_first_object(self):
        for start in (REGION[:-1], REGION[:-1] + (48,), REGION[:-1] + (48, 5, 5), REGION, REGION + (1,)):
            self.assertEqual([NUMBER], self.one.get_next(start).names, start)

    def test_getnext_behind_the_region_goes_on_in_the_mib(self):
        last = TABLE + (1, 31, 10)
        (name,) = self.one.get_next(last).names
        self.assertGreater(name, REGION)
        self.assertNotEqual(REGION, name[:len(REGION)])

    def test_a_list_of_getnext_is_answered_binding_by_binding(self):
        answer = self.one.get_next(NUMBER, TABLE + (1, 31, 10), TABLE, SYS_DESCR[:-1])
        self.assertEqual(TEXT, answer.names[0])
        self.assertGreater(answer.names[1], REGION + (3,))
        self.assertEqual([TABLE + (1, 1, 1), SYS_DESCR], answer.names[2:])

    def test_walks_by_getbulk_and_by_getnext_are_the_same(self):
        expected = self.one.walk(TABLE)
        self.assertEqual(310, len(expected))
        for repetitions in (1, 2, 7, 10, 11, 50, 100, 1000):
            self.assertEqual(expected, self.one.walk(TABLE, repetitions), repetitions)

    def test_walks_of_everything_are_the_same_beyond_the_region(self):
        start = REGION[:-1]

        def names(repetitions):
            found = self.one.walk((1, 3, 6, 1), repetitions)
            return [name for name, _, _ in found if name >= start]
        expected = names(0)
        self.assertGreater(len(expected), 340)
        for repetitions in (3, 25):
            self.assertEqual(expected, names(repetitions), repetitions)

    def test_getbulk_answers_non_repeaters_once_and_columns_interlaced(self):
        columns = [TABLE + (1, column) for column in (1, 2, 3)]
        answer = self.one.get_bulk(1, 4, NUMBER, *columns)
        rows = [TABLE + (1, column, row) for row in (1, 2, 3, 4) for column in (1, 2, 3)]
        self.assertEqual([TEXT] + rows, answer.names)

    def test_getbulk_over_the_end_of_the_region_goes_on_in_the_mib(self):
        answer = self.one.get_bulk(0, 8, TABLE + (1, 31, 7))
        self.assertEqual([TABLE + (1, 31, row) for row in (8, 9, 10)], answer.names[:3])
        self.assertEqual(8, len(answer.names))
        self.assertEqual(sorted(answer.names), answer.names)

    def test_getbulk_of_nothing_asks_nothing(self):
        self.assertEqual([], self.one.get_bulk(0, 0, TABLE).names)
        self.assertEqual([TEXT], self.one.get_bulk(5, 10, NUMBER).names)

    def test_getbulk_is_one_list_for_each_row(self):
        before = self.one.get(CALLS).values[0]
        self.one.get_bulk(0, 10, *[TABLE + (1, column) for column in range(1, 6)])
        after = self.one.get(CALLS).values[0]
        self.assertEqual(11, after - before)

    def test_an_answer_that_is_too_long_is_cut_or_refused(self):
        long = REGION + (1, 20, 0)
        answer = self.one.get(*[long] * 60)
        self.assertEqual((1, 0), (answer.status, answer.index))
        answer = self.one.get_bulk(0, 100, REGION + (1, 19, 0))
        self.assertEqual(0, answer.status)
        self.assertEqual(long, answer.names[0])

    def test_arcs_wider_than_32_bits_ask_for_nothing_that_exists(self):
        wide = REGION + (1, 1, 2**32)
        for kind in (GET, GETNEXT):
            self.one.send(kind, [wide])
        self.assertEqual(42, self.one.get(NUMBER).values[0])

    def test_the_system_group_is_there(self):
        self.assertIn(b"Linux", self.one.get(SYS_DESCR).values[0])

    def test_the_default_community_may_not_write(self):
        self.assertNotEqual(0, self.one.set_integer(NUMBER, 1).status)
        self.assertEqual(42, self.one.get(NUMBER).values[0])

    def test_net_snmps_own_tools_walk_and_show_the_same(self):
        common = ("-v2c", "-c", "public", "-On", f"udp:127.0.0.1:{self.port}", dotted(TABLE))
        walk = self.tool("snmpwalk", *common)
        self.assertEqual(310, walk.count("\n"))
        self.assertEqual(walk, self.tool("snmpbulkwalk", "-Cr25", *common))


class WriteTest(SnmpTest):
    def setUp(self):
        super().setUp()
        self.start_service("--config", self.file("snmpd.conf", WRITERS))
        self.one = self.manager(community="private")

    def test_set_changes_a_value(self):
        self.assertEqual(0, self.one.set_integer(NUMBER, -7).status)
        self.assertEqual(-7, self.one.get(NUMBER).values[0])

    def test_set_of_several_is_one_call(self):
        calls = self.one.get(CALLS).values[0]
        answer = self.one.set((NUMBER, encode_integer(5)), (TEXT, tlv(0x04, b"new")))
        self.assertEqual(0, answer.status)
        self.assertEqual([calls + 2, 5, b"new"], self.one.get(CALLS, NUMBER, TEXT).values)

    def test_set_with_one_bad_binding_sets_nothing(self):
        answer = self.one.set((NUMBER, encode_integer(5)), (READ_ONLY, encode_integer(5)))
        self.assertEqual(4, answer.status)
        self.assertEqual([42, 0], self.one.get(NUMBER, SETS).values)

    def test_set_of_an_unknown_name_passes_the_extensions_status(self):
        self.assertEqual((2, 1), (lambda a: (a.status, a.index))(self.one.set_integer(UNKNOWN, 1)))

    def test_set_of_a_wrong_type_passes_the_extensions_status(self):
        self.assertEqual(7, self.one.set((NUMBER, tlv(0x04, b"x"))).status)

    def test_all_statuses_pass_as_they_are(self):
        for status in range(1, 19):
            answer = self.one.set((NUMBER, encode_integer(1)), (PICKY, encode_integer(status)))
            self.assertEqual((status, 2), (answer.status, answer.index))

    def test_a_status_that_does_not_exist_is_generr(self):
        for status in (19, 99, 2**31 - 1):
            self.assertEqual(5, self.one.set_integer(PICKY, status).status)

    def test_version_1_gets_its_own_statuses(self):
        manager = self.manager(community="private", version=0)
        expected = {7: 3, 10: 3, 12: 3, 6: 2, 11: 2, 17: 2, 13: 5, 14: 5, 15: 5, 3: 3}
        for status, translated in expected.items():
            self.assertEqual(translated, manager.set_integer(PICKY, status).status, status)


class AccessTest(SnmpTest):
    V3 = "createUser reader SHA authsecret1 AES privsecret1\nrouser reader priv\n"

    def v3(self, *arguments, auth="authsecret1", priv="privsecret1", check=True):
        return self.tool("snmpget", "-v3", "-u", "reader", "-l", "authPriv", "-a", "SHA", "-A", auth, "-x", "AES", "-X",
                         priv, "-On", "-r", "1", "-t", "2", f"udp:127.0.0.1:{self.port}", *arguments, check=check)

    def test_version_3_users_of_the_configuration_read_with_authentication_and_privacy(self):
        self.start_service("--config", self.file("snmpd.conf", self.V3))
        self.assertIn("INTEGER: 42", self.v3(dotted(NUMBER)))
        self.assertIn("No Such Instance", self.v3(dotted(UNKNOWN)))
        self.assertNotIn("42", self.v3(dotted(NUMBER), auth="wrongsecret", check=False))

    def test_a_version_3_walk_equals_a_version_2_walk(self):
        self.start_service("--config", self.file("snmpd.conf", self.V3))
        options = ("-v3", "-u", "reader", "-l", "authPriv", "-a", "SHA", "-A", "authsecret1", "-x", "AES", "-X",
                   "privsecret1", "-On", f"udp:127.0.0.1:{self.port}", dotted(TABLE))
        expected = self.tool("snmpwalk", "-v2c", "-c", "public", "-On", *options[-2:])
        self.assertEqual(expected, self.tool("snmpwalk", *options))
        self.assertEqual(expected, self.tool("snmpbulkwalk", *options))

    def test_the_engine_counts_its_starts(self):
        config = self.file("snmpd.conf", self.V3)
        boots = dotted((1, 3, 6, 1, 6, 3, 10, 2, 1, 2, 0))
        seen = []
        port = None
        for _ in range(2):
            service = self.start_service("--config", config, *(["--listen", f"udp:127.0.0.1:{port}"] if port else []),
                                         listen=port is None)
            port = self.port
            seen.append(int(self.v3(boots).split("INTEGER:")[1]))
            self.assertEqual(0, service.stop())
        self.assertEqual(seen[0] + 1, seen[1])

    def test_views_hold_for_every_kind_of_request(self):
        hidden = TABLE + (1, 2)
        visible = REGION + (1, 4)
        config = self.file("snmpd.conf", f"view part included {dotted(TABLE)}\nview part excluded {dotted(hidden)}\n"
                           f"view part included {dotted(visible)}\nview part excluded {dotted(TABLE + (1, 3, 4))}\n"
                           "rocommunity limited 127.0.0.1 -V part\n")
        self.start_service("--config", config)
        everything = self.manager().walk(REGION)
        expected = [b for b in everything
                    if (b[0][:len(TABLE)] == TABLE and b[0][:len(hidden)] != hidden and b[0] != TABLE + (1, 3, 4))
                    or b[0][:len(visible)] == visible]
        self.assertEqual(300, len(expected))
        manager = self.manager(community="limited")
        self.assertEqual(expected, manager.walk(REGION))
        for repetitions in (1, 2, 7, 10, 50, 100):
            self.assertEqual(expected, manager.walk(REGION, repetitions), repetitions)
        self.assertEqual([NO_SUCH_OBJECT], manager.get(NUMBER).tags)
        answer = manager.get_bulk(0, 4, TABLE + (1, 1, 8), TABLE + (1, 3, 2))
        self.assertEqual([TABLE + (1, 1, 9), TABLE + (1, 3, 3), TABLE + (1, 1, 10), TABLE + (1, 3, 5),
                          TABLE + (1, 3, 1), TABLE + (1, 3, 6), TABLE + (1, 3, 2), TABLE + (1, 3, 7)], answer.names)

    def test_a_view_without_the_region_shows_nothing_of_it(self):
        config = self.file("snmpd.conf", "view system included .1.3.6.1.2.1.1\nrocommunity limited 127.0.0.1 -V system\n")
        self.start_service("--config", config)
        manager = self.manager(community="limited")
        self.assertEqual([END_OF_MIB_VIEW], manager.get_next(REGION).tags)
        self.assertEqual([END_OF_MIB_VIEW], manager.get_bulk(0, 1, REGION).tags)

    def test_the_configurations_word_on_the_community_comes_first(self):
        config = self.file("snmpd.conf", "view system included .1.3.6.1.2.1.1\nrocommunity public 127.0.0.1 -V system\n")
        self.start_service("--config", config)
        self.assertEqual([NO_SUCH_OBJECT], self.manager().get(NUMBER).tags)

    def test_another_community_takes_the_place_of_the_default(self):
        self.start_service("--community", "other word")
        self.assertEqual(42, self.manager(community="other word").get(NUMBER).values[0])
        with self.assertRaises(TimeoutError):
            self.manager(timeout=1).get(NUMBER)


class FaultTest(SnmpTest):
    """Whatever an extension answers, the service goes on, and so does the walk of the rest of the MIB."""

    FAULTS = ("nullname", "hugename", "emptyname", "outside", "backwards", "standstill", "hugevalue", "nullvalue",
              "badaddress", "badtype", "fail", "status99", "badindex", "longerlist")

    def test_no_fault_hurts(self):
        for fault in self.FAULTS:
            with self.subTest(fault):
                service = self.start_service("--config", self.file("snmpd.conf", WRITERS), FAKE_FAULT=fault)
                manager = self.manager()
                manager.get(NUMBER, TEXT, UNKNOWN)
                manager.get_next(REGION, NUMBER)
                manager.get_bulk(0, 20, REGION, TABLE, NUMBER)
                self.manager(version=0).get_next(NUMBER)
                self.manager(community="private").set_integer(NUMBER, 1)
                self.assertIn(b"Linux", manager.get(SYS_DESCR).values[0])
                self.assertEqual(0, service.stop())

    def test_an_extension_that_stands_still_ends_its_region(self):
        for fault in ("outside", "backwards", "standstill", "nullname"):
            with self.subTest(fault):
                service = self.start_service(FAKE_FAULT=fault)
                (name,) = self.manager().get_next(TEXT).names
                self.assertGreater(name, REGION + (3,))
                service.stop()

    def test_a_failure_as_a_whole_is_generr(self):
        self.start_service(FAKE_FAULT="fail")
        self.assertEqual(5, self.manager().get(NUMBER).status)
        self.assertEqual(5, self.manager().get_next(NUMBER).status)


class SeveralTest(SnmpTest):
    def test_several_libraries_are_served_side_by_side(self):
        # The same file under another name is another library, with another region in its environment.
        service = self.start_service("--library", self.second_library())
        manager = self.manager()
        self.assertEqual(42, manager.get(NUMBER).values[0])
        second = (1, 3, 6, 1, 4, 1, 88417, 3)
        self.assertEqual([second + (1, 1, 0)], manager.get_next(second).names)
        answer = manager.get_bulk(0, 3, TABLE + (1, 31, 9), second)
        self.assertEqual([TABLE + (1, 31, 10), second + (1, 1, 0), second + (1, 1, 0), second + (1, 2, 0),
                          second + (1, 2, 0), second + (1, 4, 0)], answer.names)
        self.assertEqual(0, service.stop())

    def second_library(self):
        return os.environ["KXRA_SECOND_EXTENSION"]


if __name__ == "__main__":
    unittest.main()
