"""What only shows after a while: memory, long waits, rest. Runs with all tests only."""

import time
import unittest

from snmp_harness import GET, REGION, SYS_DESCR, SnmpTest, holds_within

NUMBER, TEXT, SLOW = (REGION + (1, i, 0) for i in (1, 2, 5))
TABLE = REGION + (2,)


class EnduranceTest(SnmpTest):
    def ask_many(self, count):
        manager = self.manager()
        for i in range(count // 4):
            manager.get(NUMBER, TEXT, REGION + (1, 99, 0))
            manager.get_next(TABLE + (1, 1 + i % 31, i % 10))
            manager.get_bulk(0, 10, TABLE + (1, 1 + i % 31))
            manager.set_integer(NUMBER, i)

    def test_100000_requests_do_not_grow_the_process(self):
        service = self.start_service("--config", self.file("snmpd.conf", "rwcommunity public 127.0.0.1\n"))
        self.ask_many(20000)
        before = service.resident_kib()
        self.ask_many(100000)
        self.assertLessEqual(service.resident_kib(), before + 256)

    def test_sys_descr_is_answered_while_an_object_waits_for_a_minute(self):
        self.start_service("--answer-within", "90", FAKE_SLOW_MS="60000")
        slow = self.manager(timeout=90)
        slow.send(GET, [SLOW])
        other = self.manager()
        end = time.monotonic() + 59
        while time.monotonic() < end:
            self.assertIn(b"Linux", other.get(SYS_DESCR).values[0])
            time.sleep(0.05)
        self.assertEqual(5, slow.receive().values[0])

    def test_rest_stand_alone_costs_at_most_3_wake_ups_a_minute(self):
        service = self.start_service()
        self.assertEqual(42, self.manager().get(NUMBER).values[0])
        self.assertLessEqual(self.switches_in_a_minute(service), 3)

    def test_rest_as_a_subagent_costs_at_most_2_wake_ups_a_second(self):
        self.start_master()
        service = self.start_service("--agentx", self.agentx, listen=False)
        self.assertTrue(holds_within(lambda: self.answers(self.master_port, TEXT)))
        self.assertLessEqual(self.switches_in_a_minute(service), 2 * 60 + 3)

    def switches_in_a_minute(self, service):
        time.sleep(1)  # what the last request began
        before = service.switches()
        time.sleep(60)
        return service.switches() - before


if __name__ == "__main__":
    unittest.main()
