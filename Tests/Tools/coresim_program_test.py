"""kxra-coresim as a person starts it: command line, commands, output, and the bytes on the wire."""
import os
import queue
import socket
import subprocess
import tempfile
import threading
import unittest

PROGRAM = os.environ["KXRA_CORESIM"]
SCENARIOS = os.environ["KXRA_SCENARIOS"]
DEADLINE = 20


def free_port():
    with socket.socket() as probe:
        probe.bind(("127.0.0.1", 0))
        return probe.getsockname()[1]


def run(*arguments):
    done = subprocess.run([PROGRAM, *arguments], stdin=subprocess.DEVNULL, capture_output=True, text=True, timeout=DEADLINE)
    return done.returncode, done.stdout, done.stderr


class Coresim:
    """The running program."""

    def __init__(self, *arguments):
        self.port = free_port()
        self.process = subprocess.Popen([PROGRAM, "--port", str(self.port), *arguments], stdin=subprocess.PIPE,
                                        stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True)
        self.lines = queue.Queue()
        threading.Thread(target=self._pump, daemon=True).start()

    def _pump(self):
        for line in self.process.stdout:
            self.lines.put(line.rstrip("\n"))

    def __enter__(self):
        return self

    def __exit__(self, *unused):
        if self.process.poll() is None:
            self.process.kill()
        self.process.wait()
        for stream in (self.process.stdin, self.process.stdout, self.process.stderr):
            stream.close()

    def say(self, command):
        self.process.stdin.write(command + "\n")
        self.process.stdin.flush()

    def expect(self, text):
        """The next line that holds the text."""
        while True:
            line = self.lines.get(timeout=DEADLINE)
            if text in line:
                return line

    def connect(self):
        deadline = DEADLINE
        while True:
            try:
                return socket.create_connection(("127.0.0.1", self.port), timeout=DEADLINE)
            except ConnectionRefusedError:
                deadline -= 0.05
                if deadline < 0 or self.process.poll() is not None:
                    raise
                threading.Event().wait(0.05)


def receive(connection, count):
    data = b""
    while len(data) < count:
        more = connection.recv(count - len(data))
        if not more:
            break
        data += more
    return data


HELLO = bytes.fromhex("0000010ba90100")
ACCEPTED = bytes.fromhex("a90100")


class Program(unittest.TestCase):
    def test_the_version_and_the_help_are_said_with_status_0(self):
        self.assertEqual((0, "kxra-coresim 7.10.2\n", ""), run("--version"))
        status, output, errors = run("--help")
        self.assertEqual((0, ""), (status, errors))
        for word in ("--port", "--scenario", "--controllers", "--drives", "--devices", "--quiet", "event ID [text]..."):
            self.assertIn(word, output)

    def test_mistakes_on_the_command_line_are_one_line_and_status_2(self):
        for arguments in (["--prot", "1"], ["--port", "0"], ["--port", "65536"], ["--port", "x"], ["--drives", "-1"],
                          ["--scenario", "a", "--drives", "1"], ["stray"], ["--scenario", ""],
                          ["--controllers", "100000", "--devices", "100000"]):
            with self.subTest(arguments=arguments):
                status, output, errors = run(*arguments)
                self.assertEqual((2, ""), (status, output))
                self.assertEqual(1, errors.count("\n"))
                self.assertTrue(errors.startswith("kxra-coresim: "))

    def test_a_scenario_that_cannot_be_read_is_named_with_line_and_reason(self):
        self.assertEqual((1, "", "kxra-coresim: /nowhere.xml: can't be opened\n"), run("--scenario", "/nowhere.xml"))
        with tempfile.NamedTemporaryFile("w", suffix=".xml") as file:
            file.write("<estate>\n  <controller Nr='x'/>\n</estate>\n")
            file.flush()
            self.assertEqual((1, "", f"kxra-coresim: {file.name}:2: <controller>: Nr: 'x' is no number\n"),
                             run("--scenario", file.name))

    def test_a_port_in_use_is_one_line_and_status_1(self):
        with socket.socket() as taken:
            taken.bind(("127.0.0.1", 0))
            taken.listen()
            status, output, errors = run("--port", str(taken.getsockname()[1]))
        self.assertEqual((1, ""), (status, output))
        self.assertIn("Address already in use", errors)
        self.assertEqual(1, errors.count("\n"))

    def test_the_shipped_scenarios_are_read(self):
        for name in sorted(os.listdir(SCENARIOS)):
            with self.subTest(scenario=name), Coresim("--scenario", os.path.join(SCENARIOS, name)) as core:
                core.expect("listening on 127.0.0.1:%d" % core.port)

    def test_quit_ends_with_status_0_and_quiet_prints_nothing(self):
        with Coresim("--quiet") as core:
            with core.connect() as agent:
                agent.sendall(HELLO)
                self.assertEqual(ACCEPTED, receive(agent, 3))
                core.say("quit")
                self.assertEqual(0, core.process.wait(DEADLINE))
            self.assertTrue(core.lines.empty())
            self.assertEqual("", core.process.stderr.read())

    def test_a_quit_right_at_the_start_ends_it_and_leaves_nothing_to_complain_of(self):
        for options in ([], ["--scenario", os.path.join(SCENARIOS, "timeline.xml")]):
            for attempt in range(20):
                with self.subTest(options=options, attempt=attempt):
                    port = free_port()
                    done = subprocess.run([PROGRAM, "--port", str(port), *options], input="quit\n", capture_output=True,
                                          text=True, timeout=DEADLINE)
                    self.assertEqual((0, f"listening on 127.0.0.1:{port}\n", ""),
                                     (done.returncode, done.stdout, done.stderr))

    def test_a_bad_command_is_said_on_standard_error_and_the_program_goes_on(self):
        with Coresim() as core:
            core.say("set status Overall many")
            core.say("event 5")
            core.expect("done: event 5")
            core.say("quit")
            core.process.wait(DEADLINE)
            self.assertEqual("kxra-coresim: Overall: 'many' is no number\n", core.process.stderr.read())


    def test_events_and_results_bear_their_names(self):
        shown = ["10022 (DISK_OFFLINE)", "5 (TEST_TRAP)", "77"]
        with Coresim() as core:
            for event in shown:
                core.say("event " + event.split()[0])
                self.assertEqual("event " + event + " waits for an agent", core.expect("waits"))
                self.assertEqual("done: event " + event, core.expect("done"))
            with core.connect() as agent:
                agent.sendall(HELLO)
                self.assertEqual(ACCEPTED + b"\x03", receive(agent, 4))
                agent.sendall(bytes.fromhex("8809c101"))
                self.assertEqual("agent 1 request 9: 3 event(s); result 0 (SUCCESS)", core.expect("request 9"))
                for event in shown:
                    self.assertEqual("agent 1 was sent event " + event, core.expect("was sent"))


class Wire(unittest.TestCase):
    def test_the_first_conversation_byte_for_byte(self):
        with Coresim("--controllers", "1", "--drives", "0", "--devices", "0") as core, core.connect() as agent:
            agent.sendall(HELLO)
            self.assertEqual(ACCEPTED, receive(agent, 3))
            self.assertEqual(b"\x03", receive(agent, 1))
            agent.sendall(b"\x04")
            self.assertEqual(bytes.fromhex("a101fe"), receive(agent, 3))
            agent.sendall(bytes.fromhex("8801c101"))
            self.assertEqual(bytes.fromhex("9000c1c2c2c2c202"), receive(agent, 8))
            agent.sendall(bytes.fromhex("8803c101"))
            self.assertEqual(bytes.fromhex("9000c1c102"), receive(agent, 5))
            core.expect("agent 1 request 1: overall status")
            core.say("event 1000 ab \"\" \"c d\"")
            self.assertEqual(b"\x03", receive(agent, 1))
            agent.sendall(b"\x04")
            self.assertEqual(bytes.fromhex("a10200"), receive(agent, 3))
            agent.sendall(bytes.fromhex("8809c101"))
            self.assertEqual(bytes.fromhex("9000c1c1b103e898026162069803632064060606" + "06" + "c002"),
                             receive(agent, 23))
            core.say("progress 0 1 45")
            core.expect("done: progress")
            agent.sendall(bytes.fromhex("880bc1c0c101"))
            self.assertEqual(bytes.fromhex("9000c1b02d02"), receive(agent, 6))
            agent.sendall(b"\x00")
            self.assertEqual(b"", receive(agent, 1))
            core.expect("agent 1 disconnected")

    def test_another_version_is_refused(self):
        with Coresim() as core, core.connect() as agent:
            agent.sendall(bytes.fromhex("0000010ca90100"))
            self.assertEqual(bytes.fromhex("aa010100"), receive(agent, 4))

    def test_garbage_ends_its_own_connection_alone(self):
        with Coresim() as core, core.connect() as good:
            good.sendall(HELLO)
            self.assertEqual(ACCEPTED, receive(good, 3))
            for garbage in ("ff" * 7, "0000010ba9010010", "0000010ba901008801ffffffffffffffff", "0000010ba9010088" + "99" * 40):
                with self.subTest(garbage=garbage), core.connect() as bad:
                    bad.sendall(bytes.fromhex(garbage))
                    bad.shutdown(socket.SHUT_WR)
                    while receive(bad, 1):
                        pass
            self.assertEqual(b"\x03", receive(good, 1))
            good.sendall(b"\x04")
            self.assertEqual(bytes.fromhex("a101fe"), receive(good, 3))

    def test_an_agent_that_breaks_the_protocol_loses_its_connection_at_once(self):
        reasons = {"c1": "Protocol error", "07": "Socket protocol error - bad command (VlkSocket, Cmd=x00000007, Line=1180)",
                   "8801c1c501": "Socket out of sync (TC_WaitAck expected, 192)"}
        with Coresim() as core:
            for number, (garbage, reason) in enumerate(reasons.items(), 1):
                with self.subTest(garbage=garbage), core.connect() as agent:
                    agent.sendall(HELLO)
                    self.assertEqual(ACCEPTED + b"\x03", receive(agent, 4))
                    agent.sendall(bytes.fromhex(garbage))
                    try:
                        self.assertEqual(b"", receive(agent, 1))
                    except ConnectionResetError:
                        pass  # the same to an agent: the connection has vanished
                    self.assertEqual(f"agent {number} gone: {reason}", core.expect("gone"))

    def test_drop_and_refuse(self):
        with Coresim() as core, core.connect() as agent:
            agent.sendall(HELLO)
            self.assertEqual(ACCEPTED + b"\x03", receive(agent, 4))
            core.say("refuse")
            core.say("drop")
            core.expect("dropped 1 connection(s)")
            try:
                self.assertEqual(b"", receive(agent, 1))
            except ConnectionResetError:
                pass  # the same to an agent: the connection has vanished
            with core.connect() as refused:
                refused.sendall(HELLO)
                self.assertEqual(bytes.fromhex("aa010100"), receive(refused, 4))
            core.say("refuse off")
            core.expect("accepted from now on")
            with core.connect() as again:
                again.sendall(HELLO)
                self.assertEqual(ACCEPTED, receive(again, 3))


if __name__ == "__main__":
    unittest.main(verbosity=2)
