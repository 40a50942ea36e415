"""What the end-to-end tests of kxra-snmpd share: the service, a master, managers and receivers of traps, each on ports and
in directories of its own. Python's standard library only. Paths of what is tested come from the environment:
KXRA_SNMPD, KXRA_EXTENSION."""

import contextlib
import os
import shutil
import signal
import socket
import subprocess
import tempfile
import threading
import time
import unittest

DEADLINE = 20.0  # seconds in which something that must happen happens
SYS_DESCR = (1, 3, 6, 1, 2, 1, 1, 1, 0)
SYS_UP_TIME = (1, 3, 6, 1, 2, 1, 1, 3, 0)
SNMP_TRAP_OID = (1, 3, 6, 1, 6, 3, 1, 1, 4, 1, 0)
SNMP_TRAP_ENTERPRISE = (1, 3, 6, 1, 6, 3, 1, 1, 4, 3, 0)
REGION = (1, 3, 6, 1, 4, 1, 88417, 2, 49)

GET, GETNEXT, RESPONSE, SET, GETBULK, TRAP2 = 0xA0, 0xA1, 0xA2, 0xA3, 0xA5, 0xA7
NO_SUCH_OBJECT, NO_SUCH_INSTANCE, END_OF_MIB_VIEW = 0x80, 0x81, 0x82


def holds_within(condition, seconds=DEADLINE):
    """Looks at the condition until it holds or the time is over; whether it held."""
    end = time.monotonic() + seconds
    while not condition():
        if time.monotonic() >= end:
            return bool(condition())
        time.sleep(0.005)
    return True


def free_port(kind=socket.SOCK_DGRAM):
    with socket.socket(socket.AF_INET, kind) as probe:
        probe.bind(("127.0.0.1", 0))
        return probe.getsockname()[1]


def dotted(name):
    return ".".join(str(arc) for arc in name)


# BER, as much as a manager needs.

def _length(size):
    if size < 128:
        return bytes([size])
    octets = size.to_bytes((size.bit_length() + 7) // 8, "big")
    return bytes([0x80 | len(octets)]) + octets


def tlv(tag, content):
    return bytes([tag]) + _length(len(content)) + content


def encode_integer(value, tag=0x02):
    return tlv(tag, value.to_bytes(value.bit_length() // 8 + 1, "big", signed=True))


def encode_oid(name):
    content = bytearray()
    for arc in (name[0] * 40 + name[1],) + tuple(name[2:]):
        groups = [arc & 0x7F]
        while arc > 0x7F:
            arc >>= 7
            groups.append(0x80 | (arc & 0x7F))
        content.extend(reversed(groups))
    return tlv(0x06, bytes(content))


NULL = tlv(0x05, b"")


def encode_request(kind, request_id, community, bindings, second=0, third=0, version=1):
    """bindings: names, or pairs of a name and an encoded value."""
    pairs = [(b, NULL) if isinstance(b[0], int) else b for b in bindings]
    content = b"".join(tlv(0x30, encode_oid(name) + value) for name, value in pairs)
    pdu = encode_integer(request_id) + encode_integer(second) + encode_integer(third) + tlv(0x30, content)
    return tlv(0x30, encode_integer(version) + tlv(0x04, community.encode()) + tlv(kind, pdu))


def _take(data, at):
    tag, size, at = data[at], data[at + 1], at + 2
    if size & 0x80:
        count = size & 0x7F
        size = int.from_bytes(data[at:at + count], "big")
        at += count
    return tag, data[at:at + size], at + size


def _items(data):
    at = 0
    while at < len(data):
        tag, content, at = _take(data, at)
        yield tag, content


def decode_oid(content):
    arcs, arc = [], 0
    for octet in content:
        arc = arc << 7 | (octet & 0x7F)
        if not octet & 0x80:
            arcs.append(arc)
            arc = 0
    head = min(arcs[0] // 40, 2) if arcs else 0
    return (head, arcs[0] - 40 * head) + tuple(arcs[1:]) if arcs else ()


def decode_value(tag, content):
    if tag in (0x02, 0x41, 0x42, 0x43, 0x46):
        return int.from_bytes(content, "big", signed=tag == 0x02)
    return decode_oid(content) if tag == 0x06 else content


class Message:
    """A decoded v1 or v2c message: kind, request_id, status, index, bindings of (name, tag, value)."""

    def __init__(self, data):
        (_, version), (_, community), (self.kind, pdu) = _items(_take(data, 0)[1])
        self.version, self.community = int.from_bytes(version, "big"), community.decode()
        self.bindings = []
        parts = list(_items(pdu))
        if self.kind == 0xA4:  # a v1 trap
            self.enterprise = decode_oid(parts[0][1])
            self.generic, self.specific, self.ticks = (int.from_bytes(p[1], "big") for p in parts[2:5])
        else:
            self.request_id, self.status, self.index = (int.from_bytes(p[1], "big", signed=True) for p in parts[:3])
        for _, binding in _items(parts[-1][1]):
            (_, name), (tag, value) = _items(binding)
            self.bindings.append((decode_oid(name), tag, decode_value(tag, value)))

    @property
    def values(self):
        return [value for _, _, value in self.bindings]

    @property
    def names(self):
        return [name for name, _, _ in self.bindings]

    @property
    def tags(self):
        return [tag for _, tag, _ in self.bindings]


def receive_room(sock):
    """Room for thousands of datagrams that the owner is late to take, or as many as the system allows."""
    so_rcvbufforce = 33  # socket(7); for those who may pass over the system's limit
    try:
        sock.setsockopt(socket.SOL_SOCKET, so_rcvbufforce, 16 << 20)
    except PermissionError:
        sock.setsockopt(socket.SOL_SOCKET, socket.SO_RCVBUF, 16 << 20)


class Manager:
    """A manager of its own, quick enough for many requests. No retries."""

    def __init__(self, port, community="public", version=1, timeout=DEADLINE):
        self.socket = socket.socket(socket.AF_INET, socket.SOCK_DGRAM)
        self.socket.connect(("127.0.0.1", port))
        self.socket.settimeout(timeout)
        self.community, self.version, self.next_id = community, version, 1

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.socket.close()

    def send(self, kind, bindings, second=0, third=0):
        self.next_id += 1
        self.socket.send(encode_request(kind, self.next_id, self.community, bindings, second, third, self.version))
        return self.next_id

    def receive(self):
        return Message(self.socket.recv(65536))

    def ask(self, kind, *bindings, second=0, third=0):
        wanted = self.send(kind, bindings, second, third)
        while True:
            message = self.receive()
            if message.request_id == wanted:
                return message

    def get(self, *names):
        return self.ask(GET, *names)

    def get_next(self, *names):
        return self.ask(GETNEXT, *names)

    def get_bulk(self, non_repeaters, repetitions, *names):
        return self.ask(GETBULK, *names, second=non_repeaters, third=repetitions)

    def set(self, *pairs):
        return self.ask(SET, *pairs)

    def set_integer(self, name, value):
        return self.set((name, encode_integer(value)))

    def walk(self, root, repetitions=0):
        """All bindings under the root, by GETNEXT or by GETBULK."""
        found, at = [], root
        while True:
            answer = self.get_bulk(0, repetitions, at) if repetitions else self.get_next(at)
            for name, tag, value in answer.bindings:
                if name[:len(root)] != root or tag == END_OF_MIB_VIEW:
                    return found
                found.append((name, tag, value))
                at = name
            if answer.status or not answer.bindings:
                return found


class TrapReceiver:
    """Takes notifications as fast as they come."""

    def __init__(self):
        self.socket = socket.socket(socket.AF_INET, socket.SOCK_DGRAM)
        receive_room(self.socket)
        self.socket.bind(("127.0.0.1", 0))
        self.socket.settimeout(0.1)
        self.port = self.socket.getsockname()[1]
        self.address = f"udp:127.0.0.1:{self.port}"
        self.messages = []
        self.ending = False
        self.thread = threading.Thread(target=self._run)

    def __enter__(self):
        self.thread.start()
        return self

    def __exit__(self, *_):
        self.ending = True
        self.thread.join()
        self.socket.close()

    def _run(self):
        while not self.ending:
            with contextlib.suppress(TimeoutError):
                self.messages.append(Message(self.socket.recv(65536)))

    def numbers(self):
        """The running numbers of the fake extension's traps, in the order of arrival."""
        number = REGION + (1, 1, 0)
        return [value for message in list(self.messages) for name, _, value in message.bindings if name == number]


class Process:
    """A program under test, ended at the latest with the test."""

    def __init__(self, command, environment, directory, **options):
        self.error_file = tempfile.TemporaryFile(dir=directory)
        self.process = subprocess.Popen(command, env=environment, stdin=subprocess.DEVNULL,
                                        stdout=options.pop("stdout", subprocess.DEVNULL),
                                        stderr=options.pop("stderr", self.error_file), **options)

    @property
    def pid(self):
        return self.process.pid

    def errors(self):
        # Read without moving the file's position, which is where the program goes on writing.
        number = self.error_file.fileno()
        return os.pread(number, os.fstat(number).st_size, 0).decode(errors="replace")

    def is_running(self):
        return self.process.poll() is None

    def wait(self, seconds=DEADLINE):
        return self.process.wait(seconds)

    def stop(self, how=signal.SIGTERM, seconds=DEADLINE):
        if self.is_running():
            self.process.send_signal(how)
        try:
            return self.process.wait(seconds)
        except subprocess.TimeoutExpired:
            self.process.kill()
            self.process.wait()
            raise

    def end(self):
        if self.is_running():
            self.process.kill()
            self.process.wait()
        self.error_file.close()

    def resident_kib(self):
        with open(f"/proc/{self.pid}/status") as status:
            return next(int(line.split()[1]) for line in status if line.startswith("VmRSS"))

    def switches(self):
        """How often its threads have gone to sleep so far, which is how often they were woken."""
        total = 0
        for task in os.listdir(f"/proc/{self.pid}/task"):
            with open(f"/proc/{self.pid}/task/{task}/status") as status:
                total += next(int(line.split()[1]) for line in status if line.startswith("voluntary_ctxt"))
        return total


class Supervisor:
    """The receiving end of the notifications for a supervisor."""

    def __init__(self, directory):
        self.path = os.path.join(directory, "notify")
        self.socket = socket.socket(socket.AF_UNIX, socket.SOCK_DGRAM)
        self.socket.bind(self.path)
        self.socket.settimeout(0.02)
        self.states = []

    def heard(self, state):
        with contextlib.suppress(TimeoutError):
            while True:
                self.states.extend(self.socket.recv(4096).decode().split("\n"))
        return state in self.states

    def close(self):
        self.socket.close()


class SnmpTest(unittest.TestCase):
    """A test with a directory of its own, whose programs end with it."""

    def setUp(self):
        self.directory = tempfile.mkdtemp(prefix="kxra-")
        self.addCleanup(shutil.rmtree, self.directory, True)
        self.environment = {key: value for key, value in os.environ.items()
                            if not key.startswith(("SNMP", "FAKE_", "KXRA_")) and key not in ("NOTIFY_SOCKET", "JOURNAL_STREAM")}
        self.environment.update(MIBS="", SNMPCONFPATH=self.directory, SNMP_PERSISTENT_DIR=self.file("persistent"),
                                KXRA_STATE_DIRECTORY=self.file("state"), KXRA_REGISTRY=self.file("none.reg"),
                                KXRA_SYSTEM_DIRECTORY=self.directory)

    def file(self, name, text=None):
        path = os.path.join(self.directory, name)
        if text is not None:
            with open(path, "w") as stream:
                stream.write(text)
        return path

    @property
    def program(self):
        return os.environ["KXRA_SNMPD"]

    @property
    def extension(self):
        return os.environ["KXRA_EXTENSION"]

    def launch(self, command, **options):
        environment = dict(self.environment, **options.pop("environment", {}))
        process = Process(command, environment, self.directory, **options)
        self.addCleanup(process.end)
        return process

    def run_service(self, *arguments, **settings):
        """Runs the service to its end; its result."""
        return subprocess.run([self.program, *arguments], env=dict(self.environment, **settings), text=True,
                              capture_output=True, timeout=DEADLINE, check=False)

    def start_service(self, *arguments, listen=True, library=None, **settings):
        """Starts the service and waits until it says that it is ready."""
        command = [self.program, "--library", library or self.extension, *arguments]
        if listen:
            self.port = free_port()
            command += ["--listen", f"udp:127.0.0.1:{self.port}"]
        directory = tempfile.mkdtemp(dir=self.directory)
        self.supervisor = Supervisor(directory)
        self.addCleanup(self.supervisor.close)
        service = self.launch(command, environment=dict(settings, NOTIFY_SOCKET=self.supervisor.path))
        ready = holds_within(lambda: self.supervisor.heard("READY=1") or not service.is_running())
        self.assertTrue(ready and service.is_running(), service.errors())
        self.addCleanup(self.end_service, service)
        return service

    def end_service(self, service):
        """Ends it in order unless an extension keeps it; whatever watched it has nothing to say."""
        if service.is_running():
            with contextlib.suppress(subprocess.TimeoutExpired):
                service.stop(seconds=8)
        self.assertNotIn("Sanitizer", service.errors())

    def manager(self, port=None, **options):
        manager = Manager(port or self.port, **options)
        self.addCleanup(manager.socket.close)
        return manager

    def receiver(self):
        receiver = TrapReceiver()
        receiver.__enter__()
        self.addCleanup(receiver.__exit__)
        return receiver

    def tool(self, name, *arguments, check=True):
        """One of Net-SNMP's programs; its standard output."""
        result = subprocess.run([name, *arguments], env=self.environment, text=True, capture_output=True,
                                timeout=DEADLINE, check=False)
        if check:
            self.assertEqual(0, result.returncode, result.stderr)
        return result.stdout + ("" if check else result.stderr)

    def start_master(self, port=None, socket_port=None, sinks=(), wait=True):
        """Starts a master agent with AgentX over TCP."""
        self.master_port = port or free_port()
        self.agentx = f"tcp:127.0.0.1:{socket_port or free_port(socket.SOCK_STREAM)}"
        lines = ["rocommunity public 127.0.0.0/8", "rwcommunity private 127.0.0.0/8", "master agentx",
                 f"agentXSocket {self.agentx}"] + [f"trap2sink {sink} public" for sink in sinks]
        config = self.file("snmpd.conf", "\n".join(lines) + "\n")
        master = self.launch(["snmpd", "-f", "-Lo", "-C", "-c", config, "-I", "-smux",
                              f"udp:127.0.0.1:{self.master_port}"])
        if wait:
            self.assertTrue(holds_within(lambda: self.answers(self.master_port, SYS_DESCR) or not master.is_running()))
            self.assertTrue(master.is_running(), master.errors())
        return master

    def answers(self, port, name, seconds=0.5):
        """Whether the object has a value now."""
        with Manager(port, timeout=seconds) as manager:
            try:
                return manager.get(name).tags[0] < 0x80
            except (TimeoutError, ConnectionRefusedError):
                return False
