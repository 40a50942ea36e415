"""kxra-snmpd as a subagent: masters that come late, go, and come back."""

import shutil
import time
import unittest

from snmp_harness import GET, REGION, SYS_DESCR, SnmpTest, free_port, holds_within
import socket

NUMBER, TEXT, SLOW = (REGION + (1, i, 0) for i in (1, 2, 5))
TABLE = REGION + (2,)
BURST = REGION + (1, 13, 0)


class AgentXTest(SnmpTest):
    def start(self, *arguments, **settings):
        return self.start_service("--agentx", self.agentx, *arguments, listen=False, **settings)

    def is_back(self):
        return holds_within(lambda: self.answers(self.master_port, TEXT))

    def test_the_region_is_served_through_the_master(self):
        self.start_master()
        self.start()
        self.assertTrue(self.is_back())
        manager = self.manager(self.master_port)
        self.assertEqual([42, b"fake"], manager.get(NUMBER, TEXT).values)
        self.assertEqual([NUMBER], manager.get_next(REGION).names)
        self.assertEqual(1, manager.get(NUMBER, REGION + (1, 99, 0)).tags.count(0x81))
        walk = manager.walk(REGION + (2,))
        self.assertEqual(310, len(walk))
        for repetitions in (1, 7, 50):
            self.assertEqual(walk, manager.walk(TABLE, repetitions), repetitions)

    def test_the_end_of_the_region_leads_on(self):
        self.start_master()
        self.start()
        self.assertTrue(self.is_back())
        (name,) = self.manager(self.master_port).get_next(TABLE + (1, 31, 10)).names
        self.assertGreater(name, REGION + (3,))

    def test_set_goes_through_the_master(self):
        self.start_master()
        self.start()
        self.assertTrue(self.is_back())
        manager = self.manager(self.master_port, community="private")
        self.assertEqual(0, manager.set_integer(NUMBER, 77).status)
        self.assertEqual(77, manager.get(NUMBER).values[0])
        self.assertNotEqual(0, manager.set_integer(REGION + (1, 18, 0), 1).status)

    def test_a_subagent_without_a_master_stays_and_waits_for_it(self):
        port = free_port(socket.SOCK_STREAM)
        self.agentx = f"tcp:127.0.0.1:{port}"
        service = self.start()
        self.start_master(socket_port=port)
        self.assertTrue(self.is_back())
        self.assertEqual(0, service.stop())

    def test_a_subagent_without_a_master_ends_in_order(self):
        self.agentx = f"tcp:127.0.0.1:{free_port(socket.SOCK_STREAM)}"
        self.assertEqual(0, self.start().stop())

    def test_a_start_that_fails_beside_a_master_is_one_line_and_a_status(self):
        self.start_master()
        copy = self.file("copy.so")
        shutil.copyfile(self.extension, copy)
        result = self.run_service("--library", self.extension, "--library", copy, "--agentx", self.agentx)
        self.assertEqual((1, 1), (result.returncode, result.stderr.count("\n")), result.stderr)
        self.assertIn("taken already", result.stderr)

    def test_a_restarted_master_gets_the_region_back(self):
        port = free_port(socket.SOCK_STREAM)
        master = self.start_master(socket_port=port)
        self.start()
        self.assertTrue(self.is_back())
        master.stop()
        self.start_master(port=self.master_port, socket_port=port)
        self.assertTrue(self.is_back())

    def test_traps_wait_for_the_master(self):
        receiver = self.receiver()
        port = free_port(socket.SOCK_STREAM)
        sinks = [f"127.0.0.1:{receiver.port}"]
        master = self.start_master(socket_port=port, sinks=sinks)
        self.start()
        self.assertTrue(self.is_back())
        stream = REGION + (1, 17, 0)
        self.assertEqual(0, self.manager(self.master_port, community="private").set_integer(stream, 60).status)
        master.stop()
        time.sleep(1.3)  # the sixty traps are made meanwhile, at 50 a second
        before = receiver.numbers()
        self.start_master(port=self.master_port, socket_port=port, sinks=sinks)
        self.assertTrue(holds_within(lambda: receiver.numbers()[-1:] == [60]))
        numbers = receiver.numbers()
        self.assertLess(len(before), 60)
        self.assertEqual(sorted(set(numbers)), numbers)
        self.assertGreaterEqual(len(numbers), 57)

    def test_a_request_that_outlives_its_session_hurts_nobody(self):
        port = free_port(socket.SOCK_STREAM)
        master = self.start_master(socket_port=port)
        service = self.start(FAKE_SLOW_MS="3000")
        self.assertTrue(self.is_back())
        manager = self.manager(self.master_port)
        for name in (SLOW, NUMBER, SLOW):
            manager.send(GET, [name])
        self.assertIn(b"Linux", self.manager(self.master_port).get(SYS_DESCR).values[0])
        master.stop()
        self.start_master(port=self.master_port, socket_port=port)
        self.assertTrue(self.is_back())
        self.assertEqual(0, service.stop())


class LongAgentXTest(SnmpTest):
    """Takes its time: runs with all tests only."""

    def test_a_call_that_blocks_for_20_seconds_costs_no_session(self):
        self.start_master()
        service = self.start_service("--agentx", self.agentx, listen=False, FAKE_SLOW_MS="20000")
        self.assertTrue(holds_within(lambda: self.answers(self.master_port, TEXT)))
        manager = self.manager(self.master_port)
        manager.send(GET, [SLOW])
        end = time.monotonic() + 20
        while time.monotonic() < end:
            self.assertTrue(self.answers(self.master_port, SYS_DESCR, seconds=1))
            time.sleep(0.1)
        self.assertEqual(5, manager.receive().status)
        self.assertTrue(holds_within(lambda: self.answers(self.master_port, TEXT)))
        self.assertNotIn("disconnected", service.errors())

    def test_ten_restarts_under_traps_lose_none_but_those_in_flight(self):
        receiver = self.receiver()
        port = free_port(socket.SOCK_STREAM)
        sinks = [f"127.0.0.1:{receiver.port}"]
        master = self.start_master(socket_port=port, sinks=sinks)
        self.start_service("--agentx", self.agentx, listen=False)
        self.assertTrue(holds_within(lambda: self.answers(self.master_port, TEXT)))
        self.assertEqual(0, self.manager(self.master_port, community="private")
                         .set_integer(REGION + (1, 17, 0), 2000).status)
        restarts = []
        for _ in range(10):
            seen = len(receiver.messages)
            self.assertTrue(holds_within(lambda: len(receiver.messages) > seen + 20))
            master.stop()
            master = self.start_master(port=self.master_port, socket_port=port, sinks=sinks)
            answered = time.monotonic()
            self.assertTrue(holds_within(lambda: self.answers(self.master_port, TEXT)))
            restarts.append(time.monotonic() - answered)
        self.assertTrue(holds_within(lambda: receiver.numbers()[-1:] == [2000], 60))
        numbers = receiver.numbers()
        self.assertEqual(sorted(set(numbers)), numbers)
        # In flight at the moment of an end: what the master had read no more or not sent yet.
        self.assertGreaterEqual(len(numbers), 2000 - 10 * 3)
        self.assertLess(max(restarts), 2.5, restarts)


if __name__ == "__main__":
    unittest.main()
