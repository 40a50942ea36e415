"""A simulated core service for a test. KXRA_CORESIM: the program."""
import os
import queue
import socket
import subprocess
import threading

from snmp_harness import DEADLINE, free_port


class CoreUser:
    """For a test with an `environment` for its programs: core services that end with the test."""

    def start_core(self, *arguments, port=None):
        port = port or free_port(socket.SOCK_STREAM)
        process = subprocess.Popen([os.environ["KXRA_CORESIM"], "--port", str(port), *arguments], stdin=subprocess.PIPE,
                                   stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, env=self.environment)
        process.port, process.lines = port, queue.Queue()
        pump = threading.Thread(target=lambda: [process.lines.put(line) for line in process.stdout])
        pump.start()

        def end():
            if process.poll() is None:
                process.kill()
            process.wait()
            pump.join()
            process.stdin.close()
            process.stdout.close()

        process.end = end
        self.addCleanup(end)
        self.assertIn("listening", process.lines.get(timeout=DEADLINE))
        return process

    def tell(self, core, *lines):
        core.stdin.write("".join(line + "\n" for line in lines))
        core.stdin.flush()

    def await_line(self, core, text):
        """Takes what the core service says up to a line that holds the text."""
        while text not in core.lines.get(timeout=DEADLINE):
            pass
