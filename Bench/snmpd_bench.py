#!/usr/bin/env python3
"""End-to-end benchmark of kxra-snmpd against a Net-SNMP agent that serves the same table with its own table_tdata helper:
1,000 rows by 31 columns, walked by GETNEXT and by GETBULK of 50, stand-alone and as AgentX subagents, manager and agents on
one processor. A figure counts as a ratio to the baseline of the same run; rounds alternate, and the median counts.

    snmpd_bench.py [--bin DIR] [--extension FILE] [--rounds N] [--seconds S] [--processor N]

Ends with status 1 when a ratio misses its target."""

import argparse
import contextlib
import os
import socket
import statistics
import subprocess
import sys
import tempfile
import time

TABLE = "1.3.6.1.4.1.88417.2.49.2"
ROWS, COLUMNS, REPETITIONS = 1000, 31, 50
TARGETS = {("stand-alone", 0): 1.0, ("stand-alone", REPETITIONS): 3.0, ("subagent", 0): 1.0, ("subagent", REPETITIONS): 1.0}


def free_port(kind):
    with socket.socket(socket.AF_INET, kind) as probe:
        probe.bind(("127.0.0.1", 0))
        return probe.getsockname()[1]


class Bench:
    def __init__(self, options, directory, programs):
        self.options, self.directory, self.programs = options, directory, programs
        self.environment = dict(os.environ, FAKE_ROWS=str(ROWS), FAKE_COLUMNS=str(COLUMNS), MIBS="", SNMPCONFPATH=directory,
                                SNMP_PERSISTENT_DIR=os.path.join(directory, "persistent"))
        self.environment.pop("NOTIFY_SOCKET", None)

    def pinned(self, *command):
        return ["taskset", "-c", str(self.options.processor), *command]

    def program(self, name):
        return os.path.join(self.options.bin, name)

    def start(self, *command):
        process = subprocess.Popen(self.pinned(*command), env=self.environment, stdin=subprocess.DEVNULL,
                                   stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        self.programs.callback(self.end, process)

    @staticmethod
    def end(process):
        process.terminate()
        process.wait()

    def walk(self, address, repetitions, seconds):
        """Variables a second, and how many one walk has."""
        result = subprocess.run(self.pinned(self.program("walk_client"), address, "public", TABLE, str(repetitions),
                                            str(seconds)), env=self.environment, text=True, capture_output=True, check=False)
        return tuple(float(word) for word in result.stdout.split()) if result.returncode == 0 else (0.0, 0.0)

    def wait_for(self, address):
        end = time.monotonic() + 60
        while self.walk(address, REPETITIONS, 0)[1] != ROWS * COLUMNS:
            if time.monotonic() > end:
                sys.exit(f"snmpd_bench: no table at {address}")
            time.sleep(0.1)

    def start_pair(self, mode):
        """The baseline's and the service's address."""
        udp = [f"udp:127.0.0.1:{free_port(socket.SOCK_DGRAM)}" for _ in range(2)]
        service = (self.program("kxra-snmpd"), "--library", self.options.extension)
        if mode == "stand-alone":
            self.start(self.program("table_agent"), udp[0], "public")
            self.start(*service, "--listen", udp[1])
            return udp
        agentx = [self.start_master(address) for address in udp]
        self.start(self.program("table_agent"), "--agentx", agentx[0])
        self.start(*service, "--agentx", agentx[1])
        return udp

    def start_master(self, address):
        agentx = f"unix:{os.path.join(self.directory, address.rpartition(':')[2])}"
        config = os.path.join(self.directory, "snmpd.conf")
        with open(config, "w") as stream:
            stream.write("rocommunity public 127.0.0.0/8\nmaster agentx\n")
        self.start("snmpd", "-f", "-Le", "-C", "-c", config, "-I", "-smux", "-x", agentx, address)
        end = time.monotonic() + 30
        while not os.path.exists(agentx[5:]) and time.monotonic() < end:
            time.sleep(0.05)
        return agentx

    def measure(self, mode):
        addresses = self.start_pair(mode)
        for address in addresses:
            self.wait_for(address)
        missed = False
        for repetitions in (0, REPETITIONS):
            rounds = [[self.walk(address, repetitions, self.options.seconds)[0] for address in addresses]
                      for _ in range(self.options.rounds)]
            baseline, ours = (statistics.median(values) for values in zip(*rounds))
            ratio = statistics.median(values[1] / values[0] for values in rounds)
            target = TARGETS[mode, repetitions]
            missed |= ratio < target
            how = f"GETBULK of {repetitions}" if repetitions else "GETNEXT"
            print(f"{mode:12} {how:14} baseline {baseline:9.0f}/s  kxra-snmpd {ours:9.0f}/s  ratio {ratio:5.2f}  "
                  f"target {target:.1f}  {'ok' if ratio >= target else 'MISSED'}", flush=True)
        return missed


def main():
    here = os.path.dirname(os.path.abspath(__file__))
    default = os.path.join(here, "..", "build", "release")
    parser = argparse.ArgumentParser(description=__doc__.split("\n", maxsplit=1)[0])
    parser.add_argument("--bin", default=os.path.join(default, "bin"))
    parser.add_argument("--extension", default=os.path.join(default, "lib", "kxra_fake_extension.so"))
    parser.add_argument("--rounds", type=int, default=5)
    parser.add_argument("--seconds", type=float, default=2)
    parser.add_argument("--processor", type=int, default=max(os.sched_getaffinity(0)))
    options = parser.parse_args()
    missed = False
    for mode in ("stand-alone", "subagent"):
        with tempfile.TemporaryDirectory(prefix="kxra-bench-") as directory, contextlib.ExitStack() as programs:
            missed |= Bench(options, directory, programs).measure(mode)
    return 1 if missed else 0


if __name__ == "__main__":
    sys.exit(main())
