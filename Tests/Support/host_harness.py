"""kxra-test-host under test: a host for an extension library that does what the SNMP service does, one call at a time, told
over a pipe. What differs from one system to the other stands in a class for each, so that the cases don't know where they
run.

KXRA_TEST_HOST: the program. KXRA_EMULATOR: what runs programs of the other system here, if they are of one."""
import ntpath
import os
import queue
import shutil
import subprocess
import tempfile
import threading

from snmp_harness import DEADLINE, dotted, holds_within

GET, NEXT = "get", "next"
INTEGER, OCTETS, NULL, OID, ADDRESS, COUNTER, GAUGE, TICKS = 0x02, 0x04, 0x05, 0x06, 0x40, 0x41, 0x42, 0x43


def registry_text(key, **values):
    """A key below HKEY_LOCAL_MACHINE with its values, in the format of the registry editor."""
    lines = [f"[HKEY_LOCAL_MACHINE\\{key}]"]
    for name, value in values.items():
        if isinstance(value, int):
            lines.append(f'"{name}"=dword:{value:08x}')
        elif isinstance(value, OtherText):
            lines.append(f'"{name}"=hex({value.kind}):' + ",".join(f"{byte:02x}" for byte in value.octets))
        else:
            escaped = value.replace("\\", "\\\\")
            lines.append(f'"{name}"="{escaped}"')
    return "\n".join(lines) + "\n\n"


def registry_file(text):
    """As the registry editor writes it: it takes the octets of texts in other files for another character set."""
    return ("\uFEFFWindows Registry Editor Version 5.00\n\n" + text).replace("\n", "\r\n").encode("utf-16-le")


class OtherText:
    """A text of another kind than the plain one: 2 expandable, 7 a list of texts, here of one."""

    def __init__(self, kind, text):
        self.kind = kind
        self.octets = (text + ("\0\0" if kind == 7 else "\0")).encode("utf-16-le")


class PosixSystem:
    """The library and its host are programs of this system."""

    # For each version that the system can be set to, what the constructor traces about the firewall: there is none.
    firewall_lines = {None: []}

    def start(self):
        self.directory = tempfile.mkdtemp(prefix="kxra-")
        self.system_directory = os.path.join(self.directory, "system")
        self.units = os.path.join(self.directory, "units")
        self.registry = os.path.join(self.directory, "registry.reg")
        os.mkdir(self.system_directory)
        os.mkdir(self.units)

    def end(self):
        shutil.rmtree(self.directory)

    def command(self, program):
        return [program]

    def environment(self):
        return {"KXRA_REGISTRY": self.registry, "KXRA_SYSTEM_DIRECTORY": self.system_directory,
                "SYSTEMD_UNIT_PATH": self.units}

    def path(self, file):
        """The file's name for the programs under test."""
        return file

    def join(self, *parts):
        return "/".join(parts)

    def write_registry(self, text):
        """The content of the registry, as far as the product reads it."""
        with open(self.registry, "wb") as stream:
            stream.write(registry_file(text))

    def set_version(self, version):
        """Sets the version that the system tells programs that start from now on."""

    def install_service(self, name):
        """Makes a service known; what takes it away again."""
        unit = os.path.join(self.units, name.replace(" ", "\\x20") + ".service")
        with open(unit, "w") as stream:
            stream.write("[Service]\nExecStart=/bin/true\n")
        return lambda: os.remove(unit)


class WineSystem:
    """They are programs of Windows under Wine, in a prefix that begins and ends with the run."""

    KEYS = "SOFTWARE\\Norvane", "SOFTWARE\\Debug"
    # Wine refuses the service restriction; a host that has one adds two rules instead.
    REFUSED = ["CKestrixRAIDAgent(): Manage Windows Service Hardening",
               "ManageWSH: get_ServiceRestriction failed: 0x80004001"]
    firewall_lines = {"win7": [], "win8": REFUSED, "win10": REFUSED}

    def __init__(self, emulator):
        self.emulator = emulator

    def start(self):
        self.prefix = tempfile.mkdtemp(prefix="kxra-wine-")
        self.run("wineboot", "--init", seconds=300)
        self.wineserver("-w")  # what sets the prefix up goes on behind the call, and takes services away again
        self.system_directory = os.path.join(self.prefix, "drive_c/windows")

    def end(self):
        self.wineserver("-k")
        self.wineserver("-w")
        shutil.rmtree(self.prefix, ignore_errors=True)

    def command(self, program):
        return [self.emulator, program]

    def environment(self):
        return {"WINEPREFIX": self.prefix}

    def path(self, file):
        return "Z:" + file.replace("/", "\\")

    def join(self, *parts):
        return ntpath.join(*parts)

    def write_registry(self, text):
        keys = "".join(f"[-HKEY_LOCAL_MACHINE\\{key}]\n\n" for key in self.KEYS)
        with tempfile.NamedTemporaryFile(suffix=".reg", dir=self.prefix) as stream:
            stream.write(registry_file(keys + text))
            stream.flush()
            self.run("regedit", "/S", self.path(stream.name))

    def set_version(self, version):
        self.run("winecfg", "-v", version)

    def install_service(self, name):
        self.run("sc", "create", name, "binPath=", "C:\\windows\\system32\\no.exe")
        return lambda: self.run("sc", "delete", name)

    def wineserver(self, option):
        """Ends what runs in this prefix (-k), or waits for its end (-w). Other prefixes have servers of their own."""
        subprocess.run(["wineserver", option], env=dict(os.environ, **self.environment()), check=False, timeout=120)

    def run(self, *arguments, seconds=120):
        subprocess.run([self.emulator, *arguments], env=dict(os.environ, **self.environment()), stdin=subprocess.DEVNULL,
                       stdout=subprocess.DEVNULL, timeout=seconds, check=True)


def tested_system():
    emulator = os.environ.get("KXRA_EMULATOR")
    return WineSystem(emulator) if emulator else PosixSystem()


class Refusal(Exception):
    """The host could not do what it was told."""


class Answer:
    """The bindings as (name, type, value), and the words behind "ok"."""

    def __init__(self, bindings, words):
        self.bindings, self.words = bindings, words
        self.numbers = [int(word) for word in words if word.lstrip("-").isdecimal()]

    @property
    def result(self):
        return self.numbers[0]

    @property
    def status(self):
        return self.numbers[1]

    @property
    def index(self):
        return self.numbers[2]

    @property
    def names(self):
        return [name for name, _, _ in self.bindings]

    @property
    def values(self):
        return [value for _, _, value in self.bindings]


class Trap:
    def __init__(self, answer):
        self.bindings = answer.bindings
        self.enterprise = parse_oid(answer.words[1])
        self.generic, self.specific, self.time = (int(word) for word in answer.words[2:5])


def parse_oid(word):
    return () if word == "-" else tuple(int(arc) for arc in word.split("."))


def parse_value(kind, word):
    if kind in (INTEGER, COUNTER, GAUGE, TICKS):
        return int(word)
    if kind == NULL:
        return None
    if kind == OID:
        return parse_oid(word)
    return b"" if word == "-" else bytes.fromhex(word)


class Host:
    """The running host."""

    def __init__(self, system, environment):
        self.errors = tempfile.TemporaryFile()
        self.process = subprocess.Popen(system.command(os.environ["KXRA_TEST_HOST"]), stdin=subprocess.PIPE,
                                        stdout=subprocess.PIPE, stderr=self.errors, text=True, bufsize=1,
                                        env=dict(environment, **system.environment()))
        self.system = system
        self.remarks = []  # what the library itself wrote to standard output
        self.lines = queue.Queue()
        self.pump = threading.Thread(target=self._pump)
        self.pump.start()

    def _pump(self):
        for line in self.process.stdout:
            self.lines.put(line.rstrip("\n"))
        self.lines.put(None)

    def end(self):
        """Ends its input, which makes it unload and end; its exit status."""
        self.process.stdin.close()
        try:
            return self.process.wait(DEADLINE)
        finally:
            if self.process.poll() is None:
                self.process.kill()
                self.process.wait()
            self.pump.join()
            self.process.stdout.close()
            self.errors.close()

    def said(self):
        self.errors.seek(0)
        return self.errors.read().decode(errors="replace")

    def ask(self, *words, seconds=DEADLINE):
        self.process.stdin.write(" ".join(str(word) for word in words) + "\n")
        self.process.stdin.flush()
        bindings = []
        while True:
            line = self.lines.get(timeout=seconds)
            if line is None:
                raise AssertionError(f"the host ended in '{words[0]}': {self.said()}")
            kind, *rest = line.split(" ")
            if kind == "error":
                raise Refusal(" ".join(rest))
            if kind == "ok":
                return Answer(bindings, rest)
            if kind != "binding":
                self.remarks.append(line)
                continue
            name, tag, value = rest
            bindings.append((parse_oid(name), int(tag, 16), parse_value(int(tag, 16), value)))

    def load(self, library):
        self.ask("load", self.system.path(library))

    def init(self, uptime=0):
        return self.ask("init", uptime)

    def more(self):
        return self.ask("more")

    def get(self, *names):
        return self.ask(GET, *map(dotted, names))

    def get_next(self, *names):
        return self.ask(NEXT, *map(dotted, names))

    def set_integers(self, *pairs):
        return self.ask("set", *(f"{dotted(name)} {INTEGER:x} {value}" for name, value in pairs))

    def walk(self, root):
        """All bindings under the root."""
        found, at = [], root
        while True:
            answer = self.get_next(at)
            if answer.status or answer.names[0][:len(root)] != root:
                return found
            found += answer.bindings
            at = answer.names[0]

    def waits_for_traps(self, ms):
        return self.ask("wait", ms, seconds=DEADLINE + ms / 1000).result == 1

    def trap(self):
        """The next trap, or None."""
        answer = self.ask("trap")
        return Trap(answer) if answer.result else None

    def traps(self, count, seconds=DEADLINE):
        """Takes traps as the SNMP service does, all there are after each signal, until they are so many."""
        taken = []

        def enough():
            if len(taken) < count and self.waits_for_traps(100):
                taken.extend(iter(self.trap, None))
            return len(taken) >= count

        holds_within(enough, seconds)
        return taken

    def is_loaded(self, library):
        return self.ask("loaded", os.path.basename(library)).result == 1

    def handles(self):
        return self.ask("handles").result
