"""How kxra-snmpd starts, refuses to start, and ends."""

import os
import signal
import socket
import subprocess
import unittest

from snmp_harness import DEADLINE, REGION, SnmpTest, free_port, holds_within


class StartTest(SnmpTest):
    def assert_refuses(self, *arguments, says, **settings):
        result = self.run_service(*arguments, **settings)
        self.assertNotEqual(0, result.returncode)
        self.assertEqual(1, result.stderr.count("\n"), result.stderr)
        self.assertIn(says, result.stderr)

    def test_version_and_help_go_to_standard_output_with_status_0(self):
        version = self.run_service("--version")
        self.assertEqual((0, ""), (version.returncode, version.stderr))
        self.assertRegex(version.stdout, r"^kxra-snmpd \d+\.\d+\.\d+\n$")
        text = self.run_service("--help")
        self.assertEqual((0, ""), (text.returncode, text.stderr))
        for option in ("--library", "--listen", "--agentx", "--community", "--trap-sink", "--config", "--registry",
                       "--system-directory", "--answer-within", "--watchdog", "--log-traps", "--check",
                       "--version", "--help"):
            self.assertIn(option, text.stdout)

    def test_an_unknown_option_is_one_line_and_a_status(self):
        self.assert_refuses("--nonsense", says="--nonsense")

    def test_a_bad_number_is_one_line_and_a_status(self):
        for value in ("soon", "-1", "0"):
            self.assert_refuses("--answer-within", value, says="--answer-within")

    def test_listen_and_agentx_exclude_each_other(self):
        self.assert_refuses("--listen", "udp:127.0.0.1:1", "--agentx", "x", says="--listen")

    def test_a_missing_library_is_one_line_and_a_status(self):
        self.assert_refuses("--library", self.file("missing.so"), says="missing.so")

    def test_a_file_that_is_no_library_is_one_line_and_a_status(self):
        self.assert_refuses("--library", self.file("text.so", "text"), says="text.so")

    def test_a_library_without_the_five_functions_is_one_line_and_a_status(self):
        self.assert_refuses("--library", os.environ["KXRA_NO_EXTENSION"], says="SnmpExtensionInit is missing")

    def test_an_address_in_use_is_one_line_and_a_status(self):
        with socket.socket(socket.AF_INET, socket.SOCK_DGRAM) as taken:
            taken.bind(("127.0.0.1", 0))
            address = f"udp:127.0.0.1:{taken.getsockname()[1]}"
            self.assert_refuses("--library", self.extension, "--listen", address, says="Address already in use")

    def test_a_bad_address_is_one_line_and_a_status(self):
        self.assert_refuses("--library", self.extension, "--listen", "udp:no.such.host.invalid:1", says="no.such.host")

    def test_a_bad_sink_is_one_line_and_a_status(self):
        self.assert_refuses("--library", self.extension, "--listen", f"udp:127.0.0.1:{free_port()}", "--trap-sink",
                            "udp:no.such.host.invalid:1", says="no.such.host")

    def test_an_unreadable_configuration_is_one_line_and_a_status(self):
        self.assert_refuses("--library", self.extension, "--config", self.file("missing.conf"), says="missing.conf")
        self.assert_refuses("--library", self.extension, "--config", self.directory, says="directory")

    def test_an_extension_that_does_not_start_is_one_line_and_a_status(self):
        listen = ("--listen", f"udp:127.0.0.1:{free_port()}")
        self.assert_refuses("--library", self.extension, *listen, says="SnmpExtensionInit failed", FAKE_INIT="fail")
        self.assert_refuses("--library", self.extension, *listen, says="no region", FAKE_INIT="noregion")

    def test_one_region_served_twice_is_one_line_and_a_status(self):
        other = self.file("copy.so")
        with open(self.extension, "rb") as source, open(other, "wb") as target:
            target.write(source.read())
        self.assert_refuses("--library", self.extension, "--library", other, "--listen",
                            f"udp:127.0.0.1:{free_port()}", says="taken already")

    def test_too_few_descriptors_are_one_line_and_a_status(self):
        told = []
        for limit in range(5, 64):
            port = free_port()
            service = self.launch(["prlimit", f"--nofile={limit}:{limit}", self.program, "--library", self.extension,
                                   "--listen", f"udp:127.0.0.1:{port}"])
            listening = "listening on"
            self.assertTrue(holds_within(lambda: not service.is_running() or listening in service.errors()), limit)
            if listening in service.errors():
                # With none left at all, Net-SNMP can't look at the host's access files and lets nobody in.
                answers = self.answers(port, REGION + (1, 1, 0))
                status = service.stop()
                if answers:
                    self.assertEqual(0, status, limit)
                    self.assertNotEqual([], told)
                    return
            else:
                self.assertGreater(service.wait(), 0, limit)
                # A sanitizer that needs a descriptor itself may speak in the service's place.
                lines = [line for line in service.errors().splitlines() if line.startswith("kxra-snmpd: ")]
                self.assertLessEqual(len(lines), 1, service.errors())
                told += lines
        self.fail("it never started")

    def test_check_says_that_all_is_in_order(self):
        config = self.file("good.conf", "rwcommunity private 127.0.0.1\nsysLocation here\n")
        result = self.run_service("--check", "--library", self.extension, "--config", config)
        self.assertEqual((0, ""), (result.returncode, result.stderr))
        self.assertIn("in order", result.stdout)

    def test_check_finds_a_bad_line_of_the_configuration(self):
        config = self.file("bad.conf", "rwcommunity private 127.0.0.1\nnosuchtoken 1\n")
        result = self.run_service("--check", "--library", self.extension, "--config", config)
        self.assertNotEqual(0, result.returncode)
        self.assertIn("nosuchtoken", result.stderr)

    def test_check_finds_a_receiver_of_traps_that_is_no_address(self):
        result = self.run_service("--check", "--library", self.extension, "--trap-sink", "nonsense:1:2")
        self.assertEqual((1, ""), (result.returncode, result.stdout))
        self.assertIn("kxra-snmpd: send traps to nonsense:1:2: no such address\n", result.stderr)

    def test_term_and_int_end_in_order_with_status_0(self):
        for how in (signal.SIGTERM, signal.SIGINT):
            log = self.file(f"log{how}")
            service = self.start_service(FAKE_LOG=log)
            self.assertEqual(0, service.stop(how))
            self.assertTrue(self.supervisor.heard("STOPPING=1"))
            with open(log) as stream:
                self.assertEqual(["DllMain 1", "Init", "Close", "DllMain 0"], stream.read().split("\n")[:-1])

    def test_the_end_waits_no_longer_for_a_call_than_a_manager_does(self):
        service = self.start_service("--answer-within", "0.5", FAKE_SLOW_MS="60000")
        manager = self.manager()
        manager.send(0xA0, [REGION + (1, 5, 0)])
        self.assertEqual(5, manager.receive().status)
        self.assertEqual(0, service.stop())
        self.assertIn("ending while a call is inside", service.errors())

    def test_signs_of_life_go_to_the_supervisor(self):
        self.start_service(WATCHDOG_USEC="200000")
        self.assertTrue(holds_within(lambda: self.supervisor.heard("WATCHDOG=1")))

    def test_lines_for_the_journal_have_priorities(self):
        with open(self.file("journal"), "w+") as journal:
            status = os.fstat(journal.fileno())
            result = subprocess.run([self.program, "--nonsense"], stderr=journal, timeout=DEADLINE, check=False,
                                    env=dict(self.environment, JOURNAL_STREAM=f"{status.st_dev}:{status.st_ino}"))
            journal.seek(0)
            self.assertNotEqual(0, result.returncode)
            self.assertTrue(journal.read().startswith("<3>kxra-snmpd: "))

    def test_nothing_is_written_unasked(self):
        home = self.file("home")
        os.mkdir(home)
        service = self.start_service(HOME=home)
        self.assertEqual(0, service.stop())
        self.assertEqual([], os.listdir(home))
        self.assertFalse(os.path.exists(self.file("state")))
        self.assertFalse(os.path.exists(self.file("persistent")))


if __name__ == "__main__":
    unittest.main()
