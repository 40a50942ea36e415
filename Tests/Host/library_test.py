"""The library as the SNMP service has it: loaded, started, asked, drained of its traps, closed and unloaded, with a real
core service behind it. The cases are the same on every system; Tests/Support/host_harness.py knows the differences.

KXRA_TEST_HOST, KXRA_EMULATOR: see there. KXRA_EXTENSION: the library; KXRA_FAST_AGENT: the same with shorter intervals.
KXRA_CORESIM: the core service, a program of this system."""
import os
import signal
import socket
import unittest

from core_harness import CoreUser
from estate import PROGRESS, SCENARIO, STATUS_OVERALL, expected_estate, scenario_rows
from host_harness import GET, INTEGER, NEXT, NULL, OCTETS, Host, OtherText, Refusal, registry_text, tested_system
from snmp_harness import REGION, SnmpTest, free_port, holds_within

PRODUCT, FAST = os.environ["KXRA_EXTENSION"], os.environ["KXRA_FAST_AGENT"]
PRODUCT_KEY = "SOFTWARE\\Norvane\\Kestrix RAID"
TRACE_KEY = "SOFTWARE\\Debug\\KXRA_MIB"
ENTERPRISE = REGION + (2,)
BEHIND_REGION = REGION[:-1] + (REGION[-1] + 1,)
OWN_GROUP = REGION + (1, 1)
NO_SUCH_NAME, READ_ONLY = 2, 4

system = tested_system()


def setUpModule():
    system.start()
    unittest.addModuleCleanup(system.end)


class LibraryTest(CoreUser, SnmpTest):
    """A host, and the product's configuration with the port of a core service."""

    def setUp(self):
        super().setUp()
        os.makedirs(self.file("product/bin"))
        self.configure(free_port(socket.SOCK_STREAM))  # where nobody listens, until a test says otherwise
        self.host = None

    def start_host(self):
        self.host = Host(system, self.environment)
        self.addCleanup(self.end_host)
        return self.host

    def end_host(self):
        if self.host is not None:
            host, self.host = self.host, None
            self.assertEqual(0, host.end(), "the host's end")

    def configure(self, port, further=""):
        self.file("product/bin/orDPatch.ini", f"[orDPatch]\r\nPort = {port}\r\n")
        system.write_registry(registry_text(PRODUCT_KEY, Path=system.path(self.file("product"))) + further)

    def trace_to(self, name, level):
        """What makes the library write its trace to the file."""
        return registry_text(TRACE_KEY, FileDebugLevel=level, TraceFile=system.path(self.file(name)))

    def trace(self, name):
        """The lines of a trace file, without the empty ones."""
        with open(self.file(name), "rb") as stream:
            octets = stream.read()
        text = octets[2:].decode("utf-16-le") if octets[:2] == b"\xFF\xFE" else octets.decode("latin-1")
        return [line for line in text.replace("\r", "").split("\n") if line]

    def connect(self, library=PRODUCT, *arguments):
        """Everything up to the trap of the connection, which is taken; the host."""
        self.core = self.start_core(*(arguments or ("--scenario", SCENARIO)))
        self.configure(self.core.port)
        host = self.host or self.start_host()
        self.start_library(host, library)
        return host

    def start_library(self, host, library):
        host.load(library)
        self.assertEqual(1, host.init().result)
        self.assertEqual([2], [trap.specific for trap in host.traps(1)])

    def stop_library(self, host):
        host.ask("close")
        host.ask("unload")

    def wait_for_estate(self, host):
        last = REGION + (1, 6, 3, 1, 8)
        self.assertTrue(holds_within(lambda: host.get_next(last).names[0][:len(last)] == last), "no estate arrives")

    def until_connected(self, host):
        """Takes traps up to that of a connection: those ahead of it, and itself."""
        told = []
        while True:
            traps = host.traps(1)
            self.assertTrue(traps, "no connection is told")
            told += traps
            if told[-1].specific == 2:
                return told[:-1], told[-1]

    def drop_until_it_is_told(self, host):
        """Lets the connection vanish until the agent tells the loss, which it doesn't in the middle of a request: the
        trap of the loss, and that of the connection behind it."""
        for _ in range(20):
            self.tell(self.core, "drop")
            told, again = self.until_connected(host)
            if told:
                loss, = told
                return loss, again
            self.assertEqual(1, host.get(PROGRESS + (0, 0)).result)  # answered when the requests of the start are over
        self.fail("no loss is told")


class LifeTest(LibraryTest):
    def test_loading_alone_answers_no_request_and_starts_nothing(self):
        host = self.start_host()
        host.load(PRODUCT)
        self.assertTrue(host.is_loaded(PRODUCT))
        self.assertEqual(["", "## SNMP DLL [KXRA_MIB] loaded"], host.remarks)
        answer = host.get(STATUS_OVERALL)
        self.assertEqual((1, NO_SUCH_NAME, 1), (answer.result, answer.status, answer.index))
        self.assertIsNone(host.trap())
        host.ask("unload")
        self.assertFalse(host.is_loaded(PRODUCT))

    def test_the_start_hands_out_the_one_region_and_an_event(self):
        host = self.start_host()
        host.load(PRODUCT)
        answer = host.init()
        self.assertEqual(["1", ".".join(map(str, REGION))], answer.words)
        for _ in range(2):
            self.assertEqual(["0", "-"], host.more().words, "there is no further region")
        self.assertFalse(host.waits_for_traps(0))

    def test_without_a_core_service_the_agent_shows_its_own_group_alone(self):
        host = self.start_host()
        host.load(PRODUCT)
        host.init()
        self.assertTrue(holds_within(lambda: host.get_next(REGION).status == 0))
        own = host.walk(REGION)
        self.assertEqual([OWN_GROUP + (i, 0) for i in range(1, 5)], [name for name, _, _ in own])
        self.assertEqual([b"Kestrix RAID SNMP agent", b"Norvane", b"7.10.2"], [value for _, _, value in own[:3]])
        self.assertRegex(own[3][2].decode(), r"^Build: [A-Z][a-z]{2} [ \d]\d \d{4}, \d\d:\d\d:\d\d$")

    def test_after_the_close_requests_are_refused_and_the_trap_of_the_end_waits(self):
        host = self.connect()
        self.wait_for_estate(host)
        host.ask("close")
        answer = host.get(STATUS_OVERALL)
        self.assertEqual((1, NO_SUCH_NAME, 1), (answer.result, answer.status, answer.index))
        self.assertTrue(host.waits_for_traps(0))
        self.assertEqual(3, host.trap().specific)
        self.assertIsNone(host.trap())
        host.ask("close")
        self.assertFalse(host.waits_for_traps(0), "the second close does nothing")

    def test_unloaded_without_a_close_it_ends_its_threads_in_time_or_kills_them(self):
        host = self.connect(FAST)
        # Where a thread needs the system's leave to end, which the unloading keeps, the library waits its 30 s in vain.
        host.ask("unload", seconds=60)
        self.assertFalse(host.is_loaded(FAST))

    def test_a_host_that_ends_with_the_library_loaded_ends_in_order(self):
        host = self.connect(FAST)
        self.assertTrue(host.is_loaded(FAST))
        self.end_host()

    def test_it_is_loaded_used_and_unloaded_again_and_again_without_a_handle_that_stays_as_wine_cannot_show(self):
        host = self.connect(FAST)
        handles = []
        for _ in range(4):
            self.wait_for_estate(host)
            self.stop_library(host)
            self.assertFalse(host.is_loaded(FAST))
            handles.append(host.handles())
            self.start_library(host, FAST)
        if not any(handles):
            print("the handles were not compared: Wine counts none")
        self.assertEqual(handles[1], handles[-1], handles)

    def test_a_library_that_is_none_is_refused_with_a_reason(self):
        host = self.start_host()
        for name, text in (("missing", None), ("text", "no library")):
            with self.subTest(name), self.assertRaises(Refusal) as refusal:
                host.load(self.file(name, text))
            self.assertTrue(str(refusal.exception))


class EstateTest(LibraryTest):
    def setUp(self):
        super().setUp()
        self.wait_for_estate(self.connect())

    def test_a_walk_shows_every_object_of_the_estate_with_its_value(self):
        found = [(name, kind, value) for name, kind, value in self.host.walk(REGION)
                 if name[:len(OWN_GROUP)] != OWN_GROUP and name[:len(PROGRESS)] != PROGRESS]
        self.assertEqual(expected_estate(), found)

    def test_the_progress_of_each_drive_is_asked_for_at_every_read(self):
        drives = [index for index, _ in scenario_rows()["kxrLogicalDrive"] if index != (0, 1)]  # that one counts by itself
        for value in (7, 42, 99):
            self.tell(self.core, *(f"progress {controller} {drive} {value}" for controller, drive in drives))
            names = [PROGRESS + index for index in drives]
            self.assertTrue(holds_within(lambda: self.host.get(*names).values == [value] * len(drives)))
        self.assertEqual([(0, 0), (0, 1), (1, 0)], [name[len(PROGRESS):] for name, _, _ in self.host.walk(PROGRESS)])

    def test_a_change_in_the_estate_is_shown(self):
        self.tell(self.core, "set device:0.0.3.0 Status 5", "set status Overall 4", "set controller:1 ModelName Other")
        names = REGION + (1, 5, 2, 1, 15, 0, 0, 3, 0), STATUS_OVERALL, REGION + (1, 4, 2, 1, 2, 1)
        self.assertTrue(holds_within(lambda: self.host.get(*names).values == [5, 4, b"Other"]))

    def test_requests_have_their_statuses(self):
        model, drives, unknown = REGION + (1, 4, 2, 1, 2, 0), REGION + (1, 3, 1, 0), REGION + (1, 3, 9, 0)
        table, last = REGION + (1, 4, 2, 1, 2), expected_estate()[-1][0]
        first, second = OWN_GROUP + (1, 0), OWN_GROUP + (2, 0)
        values = {name: (name, kind, value) for name, kind, value in expected_estate()}
        untouched = lambda name: (name, NULL, None)
        cases = [
            # request, result, status, index, bindings or None
            ("one object", GET, [drives], 1, 0, 0, [values[drives]]),
            ("several objects, one twice", GET, [model, drives, model], 1, 0, 0, [values[model], values[drives], values[model]]),
            ("nothing at all", GET, [], 1, 0, 0, []),
            ("an unknown name", GET, [unknown], 1, NO_SUCH_NAME, 1, None),
            ("an unknown name behind a known one", GET, [drives, unknown], 1, NO_SUCH_NAME, 2, None),
            ("an unknown name ahead of a known one", GET, [unknown, drives], 1, NO_SUCH_NAME, 1,
             [untouched(unknown), untouched(drives)]),
            ("a column without its row", GET, [table], 1, NO_SUCH_NAME, 1, None),
            ("a row that is not there", GET, [table + (9,)], 1, NO_SUCH_NAME, 1, None),
            ("the root", GET, [REGION], 1, NO_SUCH_NAME, 1, None),
            ("a variable of traps", GET, [REGION + (2, 1, 1, 0)], 1, NO_SUCH_NAME, 1, None),
            ("behind a column", NEXT, [table], 1, 0, 0, [values[model]]),
            ("behind several", NEXT, [table, REGION + (1, 3)], 1, 0, 0, [values[model], values[drives]]),
            ("behind an unknown name", NEXT, [REGION + (1, 2)], 1, 0, 0, [values[drives]]),
            ("behind nothing at all", NEXT, [], 1, 0, 0, []),
        ]
        for what, kind, names, result, status, index, bindings in cases:
            with self.subTest(f"{kind} of {what}"):
                answer = self.host.ask(kind, *(".".join(map(str, name)) for name in names))
                self.assertEqual((result, status, index), (answer.result, answer.status, answer.index))
                if bindings is not None:
                    self.assertEqual(bindings, answer.bindings)
        names = [
            ("ahead of the region", (1, 3), first),
            ("the root", REGION, first),
            ("its own first object", first, second),
            ("the last object", last, BEHIND_REGION),
            ("a variable of traps", REGION + (2, 1, 1, 0), BEHIND_REGION),
            ("the end of the region", BEHIND_REGION, BEHIND_REGION),
            ("another maker's object", (1, 3, 6, 1, 4, 1, 99999, 1), (1, 3, 6, 1, 4, 1, 99999, 1)),
        ]
        for what, asked, found in names:
            with self.subTest(f"next behind {what}"):
                answer = self.host.get_next(asked)
                self.assertEqual((1, 0, 0, [found]), (answer.result, answer.status, answer.index, answer.names))

    def test_nothing_can_be_written(self):
        model, unknown = REGION + (1, 4, 2, 1, 2, 0), REGION + (1, 3, 9, 0)
        progress = PROGRESS + (0, 0)
        number = lambda name: f"{'.'.join(map(str, name))} {INTEGER:x} 7"
        text = lambda name: f"{'.'.join(map(str, name))} {OCTETS:x} 6162"
        cases = [
            ("a number", [number(STATUS_OVERALL)], 1, READ_ONLY),
            ("a text", [text(model)], 1, READ_ONLY),
            ("a value of another type", [number(model)], 1, READ_ONLY),
            ("the progress", [number(progress)], 1, READ_ONLY),
            ("several objects", [number(STATUS_OVERALL), text(model)], 1, READ_ONLY),
            ("an unknown name", [number(unknown)], 0, NO_SUCH_NAME),
            ("an unknown name behind a known one", [number(STATUS_OVERALL), number(unknown)], 1, READ_ONLY),
            ("nothing at all", [], 0, 0),
        ]
        before = self.host.get(STATUS_OVERALL, model).values
        for what, words, result, status in cases:
            with self.subTest(what):
                answer = self.host.ask("set", *words)
                self.assertEqual((result, status, 0), (answer.result, answer.status, answer.index))
        self.assertEqual(before, self.host.get(STATUS_OVERALL, model).values)


class TrapTest(LibraryTest):
    def check(self, trap, specific, server, *texts):
        self.assertEqual((ENTERPRISE, 6, specific), (trap.enterprise, trap.generic, trap.specific))
        self.assertEqual([ENTERPRISE + (1, i, 0) for i in range(1, 9)], [name for name, _, _ in trap.bindings])
        self.assertEqual([OCTETS, INTEGER] + [OCTETS] * 6, [kind for _, kind, _ in trap.bindings])
        values = [value for _, _, value in trap.bindings]
        if server is None:
            self.assertTrue(values[0], "this host's name")
        else:
            self.assertEqual(server, values[0])
        self.assertEqual(list(texts) + [b""] * (6 - len(texts)), values[2:])

    def test_the_connection_is_told_with_this_hosts_name(self):
        self.core = self.start_core("--controllers", "0")
        self.configure(self.core.port)
        host = self.start_host()
        host.load(PRODUCT)
        host.init()
        trap, = host.traps(1)
        self.check(trap, 2, None)
        self.assertIsNone(host.trap())

    def test_an_event_is_a_trap_with_its_texts(self):
        host = self.connect()
        self.tell(self.core, 'event 10022 "Kestrix 9560-8i (0)" "" c d e f atlas', "event 5 hello", "event 4711")
        first, second, third = host.traps(3)
        self.check(first, 10022, b"atlas", b"Kestrix 9560-8i (0)", b"", b"c", b"d", b"e", b"f")
        self.check(second, 5, None, b"hello")
        self.check(third, 4711, None)

    def test_a_loss_and_the_connection_behind_it_are_told_with_this_hosts_name(self):
        host = self.connect(FAST)
        self.wait_for_estate(host)
        loss, again = self.drop_until_it_is_told(host)
        self.assertIn(loss.specific, (3, 4))
        self.check(loss, loss.specific, None)
        self.check(again, 2, None)

    def test_the_end_is_told_with_this_hosts_name(self):
        host = self.connect(FAST)
        host.ask("close")
        trap, = host.traps(1)
        self.check(trap, 3, None)

    def test_many_events_at_once_are_as_many_traps_in_order_for_few_signals(self):
        host = self.connect()
        numbers = list(range(100000, 100500))
        self.tell(self.core, *(f"event {number}" for number in numbers))
        self.assertEqual(numbers, [trap.specific for trap in host.traps(len(numbers))])
        self.assertIsNone(host.trap())

    def test_a_trap_bears_the_time_since_the_reference_in_hundredths_of_a_second(self):
        host = self.connect(FAST)
        self.tell(self.core, "event 5")
        now = host.traps(1)[0].time
        for _ in range(2):
            self.tell(self.core, "event 5")
            later = host.traps(1)[0].time
            self.assertLess((later - now) % 2**32, 6000)
        self.stop_library(host)
        host.load(FAST)
        host.init(now)
        self.assertLess(host.traps(1)[0].time, 6000, "less than a minute since the first of them")


class LossTest(LibraryTest):
    """The core service goes and comes back."""

    def setUp(self):
        super().setUp()
        self.wait_for_estate(self.connect(FAST))

    def test_the_old_values_stay_and_the_agent_comes_back(self):
        port = self.core.port
        self.core.send_signal(signal.SIGKILL)
        self.core.wait()
        self.assertEqual([2], self.host.get(STATUS_OVERALL).values)
        self.core = self.start_core("--controllers", "1", port=port)
        told, _ = self.until_connected(self.host)
        self.assertIn([trap.specific for trap in told], ([], [3], [4]))
        self.assertTrue(holds_within(lambda: len(self.host.walk(REGION + (1, 4, 2, 1, 1))) == 1))

    def test_a_dropped_connection_is_told_and_opened_again(self):
        loss, _ = self.drop_until_it_is_told(self.host)
        self.assertIn(loss.specific, (3, 4))
        self.assertEqual([2], self.host.get(STATUS_OVERALL).values)

    def test_a_refusing_service_is_asked_again_until_it_accepts(self):
        self.tell(self.core, "refuse on", "drop")
        for _ in range(3):
            self.await_line(self.core, "is refused")
        self.tell(self.core, "refuse off")
        told, _ = self.until_connected(self.host)
        self.assertIn([trap.specific for trap in told], ([], [3], [4]))


class ConfigurationTest(LibraryTest):
    """What the library reads when it is loaded. One process loads it again and again."""

    def test_the_port_comes_from_the_file_in_the_directory_that_the_registry_names(self):
        self.environment["KXRA_TEST_FOLDER"] = system.path(self.directory)
        host = self.start_host()
        folder = system.path(self.file("product"))
        for what, path in (("a text", folder), ("an expandable text", OtherText(2, system.join("%KXRA_TEST_FOLDER%", "product"))),
                           ("a list of texts", OtherText(7, folder))):
            with self.subTest(what):
                core = self.start_core("--controllers", "0")
                self.configure(core.port)
                system.write_registry(registry_text(PRODUCT_KEY, Path=path))
                self.start_library(host, FAST)
                self.stop_library(host)

    def port_in_trace(self, host, name, keys, ini=None):
        if ini is not None:
            self.file("product/bin/orDPatch.ini", ini)
        system.write_registry(keys + self.trace_to(name, 2))
        host.load(FAST)
        host.ask("unload")
        line, = [line for line in self.trace(name) if "m_PortNumber" in line]
        return line

    def test_without_a_port_that_can_be_read_it_is_3173(self):
        host = self.start_host()
        product = registry_text(PRODUCT_KEY, Path=system.path(self.file("product")))
        cases = [
            ("no-key", "", "[orDPatch]\r\nPort=5\r\n"),
            ("no-value", registry_text(PRODUCT_KEY, Other="x"), None),
            ("wrong-type", registry_text(PRODUCT_KEY, Path=1), None),
            ("empty-path", registry_text(PRODUCT_KEY, Path=""), None),
            ("no-section", product, "[other]\r\nPort=5\r\n"),
            ("no-number", product, "[orDPatch]\r\nPort=none\r\n"),
        ]
        for name, keys, ini in cases:
            with self.subTest(name):
                line = self.port_in_trace(host, name, keys, ini)
                self.assertEqual("CKestrixRAIDAgent(): m_ASRunning = 600, m_ASIniting = 900, m_PortNumber = 3173", line)
        self.assertIn("m_PortNumber = 5", self.port_in_trace(host, "number", product, "[orDPatch]\r\nPort=5\r\n"))

    def test_the_trace_goes_to_the_file_of_the_registry_at_its_level(self):
        host = self.start_host()
        self.configure(free_port(socket.SOCK_STREAM), self.trace_to("trace", 2))
        host.load(FAST)
        host.init()
        self.stop_library(host)
        lines = self.trace("trace")
        self.assertTrue(any(line.startswith("----- Application [KXRA_MIB] started at ") for line in lines), lines)
        self.assertIn("CKestrixRAIDAgent(): c'tor...", lines)
        self.assertIn("Terminating Kestrix RAID Agent...", lines)
        self.assertFalse(any("DllMain" in line for line in lines), "that is of a deeper level")
        self.assertTrue(lines[-1].startswith("----- Application [KXRA_MIB] closed at "), lines[-1])

    def test_the_german_lines_of_the_trace_have_the_systems_letters(self):
        self.core = self.start_core("--controllers", "0")
        self.configure(self.core.port, self.trace_to("trace", 2))
        host = self.start_host()
        self.start_library(host, FAST)
        # Where the letter has two bytes, a unit without meaning stands behind the line.
        traced = lambda: [line.rstrip("\0") for line in self.trace("trace")]
        self.assertTrue(holds_within(lambda: "Prüfe Event-Flag." in traced()), traced())

    def test_the_firewall_is_spoken_to_from_version_6_2_on_where_there_is_one_and_its_refusal_traced(self):
        for version, expected in system.firewall_lines.items():
            with self.subTest(version):
                system.set_version(version)
                self.configure(free_port(socket.SOCK_STREAM), self.trace_to("trace-" + str(version), 2))
                host = self.start_host()
                host.load(FAST)
                host.ask("unload")
                self.end_host()
                lines = [line for line in self.trace("trace-" + str(version)) if "Hardening" in line or "ManageWSH" in line]
                self.assertEqual(expected, lines)

    def test_without_a_level_there_is_no_trace(self):
        host = self.start_host()
        self.configure(free_port(socket.SOCK_STREAM), self.trace_to("trace", 0))
        host.load(FAST)
        host.ask("unload")
        self.assertFalse(os.path.exists(self.file("trace")))

    def test_with_the_management_services_traps_wait_for_the_end_of_the_delay(self):
        vendor = os.path.join(system.system_directory, "ksVendor.ini")
        with open(vendor, "w") as stream:
            stream.write("[Vendor]\r\nServiceName=Kestrix Test Services\r\n")
        self.addCleanup(os.remove, vendor)
        self.addCleanup(system.install_service("Kestrix Test Services"))
        core = self.start_core("--controllers", "0")
        self.configure(core.port, self.trace_to("trace", 2))
        host = self.start_host()
        self.start_library(host, FAST)
        lines = self.trace("trace")
        self.assertIn("CKestrixRAIDAgent(): Norvane Kestrix Services are installed", lines)
        self.assertLess(lines.index("Start QueueTrap."), lines.index("Start SendTrap."))


if __name__ == "__main__":
    unittest.main(verbosity=2)
