"""Traps of extensions on their way to the receivers."""

import time
import unittest

from snmp_harness import (REGION, SNMP_TRAP_ENTERPRISE, SNMP_TRAP_OID, SYS_DESCR, SYS_UP_TIME, SnmpTest, dotted, free_port,
                          holds_within)

BURST = REGION + (1, 13, 0)
TEXT = REGION + (1, 2, 0)
COLD_START = (1, 3, 6, 1, 6, 3, 1, 1, 5, 1)
WRITERS = "rwcommunity private 127.0.0.1\n"


class TrapTest(SnmpTest):
    VARIABLES = [REGION + (1, 1, 0), TEXT]

    def start(self, *arguments, config="", **settings):
        self.service = self.start_service("--config", self.file("service.conf", WRITERS + config), *arguments, **settings)
        self.writer = self.manager(community="private")

    def burst(self, count):
        self.assertEqual(0, self.writer.set_integer(BURST, count).status)

    def test_a_trap_is_a_version_2_notification_with_its_own_time(self):
        receiver = self.receiver()
        self.start("--trap-sink", receiver.address)
        self.burst(1)
        self.assertTrue(holds_within(lambda: receiver.messages))
        (message,) = receiver.messages
        self.assertEqual((1, "public"), (message.version, message.community))
        self.assertEqual([SYS_UP_TIME, SNMP_TRAP_OID] + self.VARIABLES, message.names)
        ticks, trap, number, text = message.values
        self.assertEqual((REGION + (2, 0, 7), 1, b"trap 1"), (trap, number, text))
        self.assertLess(ticks, self.writer.get(SYS_UP_TIME).values[0] + 100)

    def test_the_enterprise_of_a_generic_trap_follows_its_variables(self):
        first, second = self.receiver(), self.receiver()
        self.start(config=f"trapsink 127.0.0.1:{first.port}\ntrap2sink 127.0.0.1:{second.port}\n", FAKE_GENERIC="0")
        self.burst(1)
        self.assertTrue(holds_within(lambda: first.messages and second.messages))
        old, new = first.messages[0], second.messages[0]
        self.assertEqual((0, REGION + (2,)), (old.generic, old.enterprise))
        self.assertEqual([SYS_UP_TIME, SNMP_TRAP_OID] + self.VARIABLES + [SNMP_TRAP_ENTERPRISE], new.names)
        self.assertEqual([COLD_START, REGION + (2,)], [new.values[1], new.values[-1]])

    def test_traps_carry_the_community(self):
        receiver = self.receiver()
        self.start("--trap-sink", receiver.address, "--community", "mine")
        self.burst(1)
        self.assertTrue(holds_within(lambda: receiver.messages))
        self.assertEqual("mine", receiver.messages[0].community)

    def test_a_burst_arrives_whole_and_in_order_at_every_sink(self):
        receivers = [self.receiver(), self.receiver()]
        self.start("--trap-sink", receivers[0].address, "--trap-sink", receivers[1].address)
        self.burst(1000)
        for receiver in receivers:
            self.assertTrue(holds_within(lambda: len(receiver.messages) >= 1000))
            self.assertEqual(list(range(1, 1001)), receiver.numbers())

    def test_sinks_of_the_configuration_work_too_in_both_versions(self):
        first, second = self.receiver(), self.receiver()
        self.start(config=f"trapsink 127.0.0.1:{first.port} one\ntrap2sink 127.0.0.1:{second.port}\n")
        self.burst(1)
        self.assertTrue(holds_within(lambda: first.messages and second.messages))
        old, new = first.messages[0], second.messages[0]
        self.assertEqual((0, "one", REGION + (2,), 6, 7),
                         (old.version, old.community, old.enterprise, old.generic, old.specific))
        self.assertEqual(self.VARIABLES, old.names)
        self.assertEqual((1, "public"), (new.version, new.community))

    def logged(self, service):
        return [line for line in service.errors().splitlines() if line.startswith("kxra-snmpd: trap ")]

    def test_a_trap_is_logged_only_where_that_is_asked_for(self):
        receiver = self.receiver()
        self.start("--trap-sink", receiver.address)
        self.burst(1)
        self.assertTrue(holds_within(lambda: receiver.messages))
        self.service.stop()
        self.assertEqual([], self.logged(self.service))

    def test_each_trap_is_one_line_of_the_log_without_a_name_as_long_as_none_is_known(self):
        self.start("--log-traps")
        self.burst(40)
        self.assertTrue(holds_within(lambda: len(self.logged(self.service)) >= 40))
        self.assertEqual(["kxra-snmpd: trap " + dotted(REGION + (2, 0, 7))] * 40, self.logged(self.service))

    def test_a_logged_trap_has_the_name_that_a_module_of_the_extension_gives_it(self):
        for arcs, name in ((REGION + (2, 0, 7), " (FAKE-MIB::fakeTrap)"), (REGION + (2, 0), ""),
                           (REGION + (2, 0, 7, 0), "")):
            with self.subTest(arcs=arcs):
                self.file("FAKE-MIB.txt", "FAKE-MIB DEFINITIONS ::= BEGIN\n"
                          "fakeTrap OBJECT IDENTIFIER ::= { " + " ".join(("iso",) + tuple(map(str, arcs[1:]))) + " }\nEND\n")
                self.start("--log-traps", MIBS="FAKE-MIB", MIBDIRS=self.directory)
                self.burst(1)
                self.assertTrue(holds_within(lambda: self.logged(self.service)), self.service.errors())
                self.assertEqual(["kxra-snmpd: trap " + dotted(REGION + (2, 0, 7)) + name], self.logged(self.service))

    def test_snmptrapd_understands_them(self):
        port = free_port()
        log = self.file("traps.log")
        config = self.file("snmptrapd.conf", "disableAuthorization yes\n")
        self.launch(["snmptrapd", "-f", "-C", "-c", config, "-n", "-On", "-Lf", log, "-F", "%v\\n",
                     f"udp:127.0.0.1:{port}"])
        self.start("--trap-sink", f"udp:127.0.0.1:{port}")

        def lines():
            with open(log) as stream:
                return stream.read()
        self.burst(1)
        self.assertTrue(holds_within(lambda: self.burst(1) or dotted(REGION + (2, 0, 7)) in lines()))


class AgentXTrapTest(SnmpTest):
    def start(self, receiver, *settings):
        self.start_master(sinks=[f"127.0.0.1:{receiver.port}"])
        self.start_service("--agentx", self.agentx, listen=False)
        self.writer = self.manager(self.master_port, community="private")
        self.assertTrue(holds_within(lambda: self.answers(self.master_port, TEXT)))

    def test_a_burst_arrives_whole_and_in_order_while_the_master_answers(self):
        receiver = self.receiver()
        self.start(receiver)
        self.assertEqual(0, self.writer.set_integer(BURST, 1000).status)
        times = []
        while len(receiver.numbers()) < 1000 and len(times) < 100000:
            begin = time.monotonic()
            self.assertIn(b"Linux", self.writer.get(SYS_DESCR).values[0])
            times.append(time.monotonic() - begin)
        self.assertEqual(list(range(1, 1001)), receiver.numbers())
        times.sort()
        # A machine that others use as well may keep a single answer waiting; the burst may not.
        self.assertLess(times[len(times) * 95 // 100], 0.05)


if __name__ == "__main__":
    unittest.main()
