"""The whole product as an administrator meets it: a simulated core service, the agent as it is shipped, kxra-snmpd, and
real SNMP tools. What the managers must see is worked out here from the scenario and from the table of objects, not asked of
the agent."""
import os
import re
import signal
import unittest

from core_harness import CoreUser
from estate import INTEGER, OCTETS, PROGRESS, SCENARIO, STATUS_OVERALL, expected_estate, scenario_rows
from event_names import full_name, read_events
from snmp_harness import REGION, SNMP_TRAP_OID, SYS_DESCR, SnmpTest, dotted, free_port, holds_within


class ProductTest(CoreUser, SnmpTest):
    """The agent, configured as an installed product is."""

    def configure(self, core_port):
        os.makedirs(self.file("product/bin"), exist_ok=True)
        self.file("product/bin/orDPatch.ini", f"[orDPatch]\r\nPort = {core_port}\r\n")
        return self.file("registry.reg", "Windows Registry Editor Version 5.00\n\n"
                         "[HKEY_LOCAL_MACHINE\\SOFTWARE\\Norvane\\Kestrix RAID]\n"
                         f"\"Path\"=\"{self.file('product')}\"\n")

    def start_product(self, *arguments, core=None, fast=False, **options):
        library = os.environ["KXRA_FAST_AGENT"] if fast else None
        core = core or self.core
        service = self.start_service("--registry", self.configure(core.port), *arguments, library=library, **options)
        return service

    def load_modules(self, names):
        """Lets the tools that are started from now on know these modules."""
        self.environment.update(MIBS=names, MIBDIRS=os.environ["KXRA_SMI_FOLDER"] + ":" + os.environ["KXRA_MIB_FOLDER"])

    def start_snmptrapd(self, *arguments):
        """A receiver that prints what it takes; its address."""
        address = f"udp:127.0.0.1:{free_port()}"
        config = self.file("snmptrapd.conf", "authCommunity log public\n")
        with open(self.file("received"), "w") as log:
            self.launch(["snmptrapd", "-f", "-Lo", "-n", "-C", "-c", config, *arguments, address], stdout=log)
        return address

    def received(self):
        with open(self.file("received")) as text:
            return text.read()

    def wait_for_estate(self, manager=None):
        manager = manager or self.manager()
        last = REGION + (1, 6, 3, 1, 8)
        self.assertTrue(holds_within(lambda: bool(manager.walk(last))), "the estate did not arrive")
        return manager


class EstateTest(ProductTest):
    def setUp(self):
        super().setUp()
        self.core = self.start_core("--scenario", SCENARIO)
        self.start_product()
        self.wait_for_estate()

    def test_a_walk_shows_every_object_of_the_estate_with_its_value(self):
        manager = self.manager()
        own = REGION + (1, 1)
        found = [(name, tag, value) for name, tag, value in manager.walk(REGION)
                 if name[:len(own)] != own and name[:len(PROGRESS)] != PROGRESS]
        self.assertEqual(expected_estate(), found)
        agent = manager.walk(own)
        self.assertEqual([own + (i, 0) for i in range(1, 5)], [name for name, _, _ in agent])
        self.assertEqual([b"Kestrix RAID SNMP agent", b"Norvane", b"7.10.2"], [value for _, _, value in agent[:3]])
        self.assertRegex(agent[3][2].decode(), r"^Build: [A-Z][a-z]{2} [ \d]\d \d{4}, \d\d:\d\d:\d\d$")
        progress = [name for name, _, _ in manager.walk(PROGRESS)]
        self.assertEqual([PROGRESS + index for index, _ in scenario_rows()["kxrLogicalDrive"]], progress)

    def test_a_walk_by_getbulk_equals_a_walk_by_getnext(self):
        manager = self.manager()
        for drive in ("0 0", "0 1", "1 0"):
            self.tell(self.core, f"progress {drive} 100")
        one = manager.walk(REGION)
        for repetitions in (1, 7, 50):
            self.assertEqual(one, manager.walk(REGION, repetitions))

    def test_the_tools_show_tables_by_name(self):
        self.load_modules("KESTRIX-RAID-MIB")
        access = ["-v2c", "-c", "public", "-t", "5"]
        where = f"udp:127.0.0.1:{self.port}"
        for table, column, texts in (("kxrCtrlTable", "ModelName", ["Kestrix 9560-8i", "Kestrix 9540-4i"]),
                                     ("kxrLogicalDriveTable", "RaidLevelStr", ["RAID-1", "RAID-5"]),
                                     ("kxrPhysicalDeviceTable", "SerialNumber", ["2031E4A1B0C1", "WBM0ACE3"])):
            shown = self.tool("snmptable", *access, "-Cb", where, "KESTRIX-RAID-MIB::" + table)
            self.assertIn(column, shown)
            for text in texts:
                self.assertIn(text, shown)
        walk = self.tool("snmpwalk", *access, "-Oqs", where, "KESTRIX-RAID-MIB::kxrStatus")
        self.assertIn("kxrStatusOverall.0 2", walk)
        model = self.tool("snmpget", *access, "-Oqv", where, "KESTRIX-RAID-MIB::kxrCtrlModelName.0")
        self.assertEqual("Kestrix 9560-8i", model.strip().strip('"'))

    def test_a_change_in_the_estate_reaches_the_manager(self):
        manager = self.manager()
        self.tell(self.core, "set device:0.0.3.0 Status 5", "set status Overall 4")
        status = REGION + (1, 5, 2, 1, 15, 0, 0, 3, 0)
        self.assertTrue(holds_within(lambda: manager.get(status, STATUS_OVERALL).values == [5, 4]))

    def test_a_value_out_of_its_range_is_shown_as_its_fallback(self):
        manager = self.manager()
        self.tell(self.core, "set controller:0 Status 9", "set controller:0 CacheSize 1")
        cache = REGION + (1, 4, 2, 1, 13, 0)
        self.assertTrue(holds_within(lambda: manager.get(cache).values == [1]))
        self.assertEqual([3], manager.get(REGION + (1, 4, 2, 1, 15, 0)).values)

    def test_the_progress_is_asked_for_at_every_read(self):
        manager = self.manager()
        for value in (7, 42, 99):
            self.tell(self.core, f"progress 1 0 {value}")
            self.assertTrue(holds_within(lambda: manager.get(PROGRESS + (1, 0)).values == [value]))

    def test_nothing_can_be_written(self):
        config = self.file("rw.conf", "rwcommunity private 127.0.0.0/8\n")
        self.start_product("--config", config)
        self.wait_for_estate()
        manager = self.manager(community="private")
        for name in (STATUS_OVERALL, PROGRESS + (0, 0)):
            before = None if name[:len(PROGRESS)] == PROGRESS else manager.get(name).values
            answer = manager.set_integer(name, 7)
            self.assertIn(answer.status, (4, 17), dotted(name))
            if before is not None:
                self.assertEqual(before, manager.get(name).values)


class TrapTest(ProductTest):
    def setUp(self):
        super().setUp()
        self.core = self.start_core("--scenario", SCENARIO)
        self.sink = self.receiver()
        self.start_product("--trap-sink", self.sink.address)
        self.wait_for_estate()

    def specific(self):
        return [dict((n, v) for n, _, v in message.bindings)[SNMP_TRAP_OID][-1] for message in list(self.sink.messages)
                if SNMP_TRAP_OID in message.names and
                dict((n, v) for n, _, v in message.bindings)[SNMP_TRAP_OID][:len(REGION)] == REGION]

    def test_connecting_is_reported_once(self):
        self.assertTrue(holds_within(lambda: self.specific() == [2]), self.specific())

    def test_an_event_is_a_trap_with_eight_variables(self):
        self.tell(self.core, 'event 10022 "Kestrix 9560-8i (0)" "" c d e f atlas')
        self.assertTrue(holds_within(lambda: 10022 in self.specific()))
        message = self.sink.messages[-1]
        variables = message.bindings[2:]
        self.assertEqual([REGION + (2, 1, i, 0) for i in range(1, 9)], [name for name, _, _ in variables])
        self.assertEqual([OCTETS, INTEGER] + [OCTETS] * 6, [tag for _, tag, _ in variables])
        values = [value for _, _, value in variables]
        self.assertEqual([b"atlas", b"Kestrix 9560-8i (0)", b"", b"c", b"d", b"e", b"f"], values[:1] + values[2:])
        self.assertEqual(REGION + (2, 0, 10022), dict((n, v) for n, _, v in message.bindings)[SNMP_TRAP_OID])

    def test_a_receiver_with_the_module_prints_names(self):
        self.load_modules("KESTRIX-RAID-MIB:SNMPv2-MIB")
        sink = self.start_snmptrapd()
        core = self.start_core()
        self.start_product("--trap-sink", sink, core=core)
        self.assertTrue(holds_within(lambda: "KESTRIX-RAID-MIB::kxrEventConnected" in self.received()), self.received())
        self.tell(core, "event 5 hello")
        self.assertTrue(holds_within(lambda: "KESTRIX-RAID-MIB::kxrEventTestTrap" in self.received()))
        self.assertRegex(self.received(), r'KESTRIX-RAID-MIB::kxrTrapParam1\.0 = STRING: "?hello"?')

    def test_ten_thousand_events_at_once_are_ten_thousand_traps_in_order(self):
        self.assertTrue(holds_within(lambda: self.specific() == [2]))
        first = 100000
        self.tell(self.core, *(f"event {first + i}" for i in range(10000)))
        self.assertTrue(holds_within(lambda: len(self.sink.messages) >= 10001, 90), len(self.sink.messages))
        self.assertEqual([2] + [first + i for i in range(10000)], self.specific())

    def test_an_orderly_end_is_reported(self):
        service = self.start_product("--trap-sink", self.sink.address)
        self.wait_for_estate()
        self.assertEqual(0, service.stop())
        self.assertTrue(holds_within(lambda: 3 in self.specific()), self.specific())


class EventNamesTest(ProductTest):
    """Every event that the core service knows, with the modules as the build leaves them."""

    BATCH = 64  # as many as fit into a receiver's buffer while it is busy

    def setUp(self):
        super().setUp()
        self.load_modules("KESTRIX-RAID-EVENTS-MIB:SNMPv2-MIB")
        self.core = self.start_core("--controllers", "0")

    def test_an_event_of_every_identifier_arrives_with_its_name(self):
        sink = self.start_snmptrapd("-F", "%v\\n", "-OQ")
        self.start_product("--trap-sink", sink)
        self.assertTrue(holds_within(lambda: self.traps() == [("KESTRIX-RAID-MIB::kxrEventConnected", "")]), self.traps())
        events = read_events()
        self.assertEqual(1346, len(events))
        expected = self.traps()
        for numbers in self.batches(list(events)):
            self.tell(self.core, *(f"event {number} \"event {number}\"" for number in numbers))
            expected += [(full_name(number, events[number]), f"event {number}") for number in numbers]
            holds_within(lambda: len(self.traps()) >= len(expected))
            self.assertEqual(expected, self.traps())

    def test_the_log_of_the_service_names_what_it_sends(self):
        service = self.start_product("--log-traps")
        self.assertTrue(holds_within(lambda: " trap " in service.errors()), service.errors())
        self.tell(self.core, "event 10022", "event 5", "event 99")
        branch = "kxra-snmpd: trap " + dotted(REGION + (2, 0)) + "."
        expected = [branch + "2 (KESTRIX-RAID-MIB::kxrEventConnected)",
                    branch + "10022 (KESTRIX-RAID-EVENTS-MIB::kxrEventDiskOffline)",
                    branch + "5 (KESTRIX-RAID-MIB::kxrEventTestTrap)", branch + "99"]
        logged = lambda: [line for line in service.errors().splitlines() if " trap " in line]
        self.assertTrue(holds_within(lambda: len(logged()) >= len(expected)), service.errors())
        self.assertEqual(expected, logged())

    def batches(self, numbers):
        return [numbers[at:at + self.BATCH] for at in range(0, len(numbers), self.BATCH)]

    def traps(self):
        """What the receiver has printed: the name of each trap, and its first parameter."""
        return re.findall(r'snmpTrapOID\.0 = (\S+)\t.*kxrTrapParam1\.0 = "?([^"\t]*)"?\t', self.received())


class LossTest(ProductTest):
    """The core service goes and comes back; the agent's intervals are shortened."""

    def setUp(self):
        super().setUp()
        self.core = self.start_core("--scenario", SCENARIO)
        self.sink = self.receiver()
        self.start_product("--trap-sink", self.sink.address, fast=True)
        self.wait_for_estate()

    def trap_numbers(self):
        return [value[-1] for message in list(self.sink.messages) for name, _, value in message.bindings
                if name == SNMP_TRAP_OID and value[:len(REGION)] == REGION]

    def test_the_old_values_stay_and_the_agent_comes_back(self):
        manager = self.manager()
        self.assertTrue(holds_within(lambda: 2 in self.trap_numbers()))
        port = self.core.port
        self.core.send_signal(signal.SIGKILL)
        self.core.wait()
        self.assertTrue(holds_within(lambda: any(n in (3, 4) for n in self.trap_numbers())), self.trap_numbers())
        self.assertEqual([2], manager.get(STATUS_OVERALL).values)
        self.core = self.start_core("--controllers", "1", port=port)
        self.assertTrue(holds_within(lambda: self.trap_numbers().count(2) >= 2), self.trap_numbers())
        self.assertTrue(holds_within(lambda: len(manager.walk(REGION + (1, 4, 2, 1, 1))) == 1))

    def test_a_dropped_connection_is_reported_and_opened_again(self):
        self.tell(self.core, "drop")
        self.assertTrue(holds_within(lambda: self.trap_numbers().count(2) >= 2), self.trap_numbers())
        self.assertEqual([2], self.manager().get(STATUS_OVERALL).values)

    def test_a_refusing_service_is_asked_again_until_it_accepts(self):
        self.tell(self.core, "refuse on", "drop")
        self.assertTrue(holds_within(lambda: any(n in (3, 4) for n in self.trap_numbers())))
        self.tell(self.core, "refuse off")
        self.assertTrue(holds_within(lambda: self.trap_numbers().count(2) >= 2), self.trap_numbers())


class AgentXTest(ProductTest):
    def test_a_master_shows_the_estate_and_sends_the_traps(self):
        self.core = self.start_core("--scenario", SCENARIO)
        sink = self.receiver()
        self.start_master(sinks=[sink.address])
        self.start_product("--agentx", self.agentx, listen=False)
        manager = self.wait_for_estate(self.manager(self.master_port))
        found = [(name, tag, value) for name, tag, value in manager.walk(REGION)
                 if name[:len(REGION) + 2] != REGION + (1, 1) and name[:len(PROGRESS)] != PROGRESS]
        self.assertEqual(expected_estate(), found)
        self.tell(self.core, "event 10022 a")
        self.assertTrue(holds_within(lambda: any(
            value == REGION + (2, 0, 10022) for message in list(sink.messages) for _, _, value in message.bindings)))
        self.assertTrue(manager.get(SYS_DESCR).values)


if __name__ == "__main__":
    unittest.main(verbosity=2)
