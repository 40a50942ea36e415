"""The systemd unit and the example configuration, as they were installed."""
import os
import re
import shutil
import sys
import unittest

from installation import PREFIX, ROOT, WORK, empty_directory, fails, read, run, write
from target import system

UNIT = PREFIX + "/lib/systemd/system/kxra-snmpd.service"


class UnitTest(unittest.TestCase):
    def unit_in_place(self):
        """The unit as it would read if the installation were the system's own."""
        place = os.path.join(empty_directory(os.path.join(WORK, "unit")), "kxra-snmpd.service")
        write(place, read(UNIT).replace("/usr/local", PREFIX))
        return place

    def rating(self, unit, threshold):
        return ["systemd-analyze", "security", "--offline=true", "--no-pager", f"--threshold={threshold}", unit]

    def test_the_sandbox_is_rated_at_most_one_and_a_half(self):
        said = run(*self.rating(self.unit_in_place(), 15))  # in tenths
        self.assertLessEqual(float(re.search(r"exposure level for kxra-snmpd.service: ([\d.]+)", said)[1]), 1.5)

    def test_a_unit_that_is_rated_worse_is_refused(self):
        unit = self.unit_in_place()
        write(unit, re.sub(r"(?m)^(Protect|Restrict|Private|SystemCall|User=).*\n", "", read(unit)))
        fails(*self.rating(unit, 15))

    def test_systemd_has_no_complaint_about_it(self):
        # The manual page isn't where man would look for it.
        self.assertEqual("", run("systemd-analyze", "verify", "--man=no", self.unit_in_place()))

    def test_it_runs_as_a_user_of_its_own_and_tells_when_it_is_ready(self):
        lines = read(UNIT).splitlines()
        for line in ("Type=notify", "User=kxra-snmpd", "NoNewPrivileges=yes", "CapabilityBoundingSet="):
            self.assertIn(line, lines)

    def test_its_user_comes_with_the_installation(self):
        root = empty_directory(os.path.join(WORK, "sysusers"))
        write(root + "/etc/passwd", "root:x:0:0:root:/root:/bin/sh\n")
        write(root + "/etc/group", "root:x:0:\n")
        run("systemd-sysusers", "--root=" + root, PREFIX + "/lib/sysusers.d/kxra-snmpd.conf")
        user = re.search(r"(?m)^kxra-snmpd:.*$", read(root + "/etc/passwd"))[0]
        self.assertTrue(user.endswith("/usr/sbin/nologin"), user)

    def test_the_program_is_content_with_the_example_configuration(self):
        work = empty_directory(os.path.join(WORK, "service"))
        shutil.copytree(ROOT + "/etc/kestrix", work + "/etc")
        said = run(PREFIX + "/sbin/kxra-snmpd", "--check", "--library", system.agent_file, "--listen", "udp:127.0.0.1:0",
                   "--config", work + "/etc/kxra-snmpd.conf", "--registry", work + "/etc/registry.reg",
                   "--system-directory", work + "/etc",
                   env={**os.environ, "STATE_DIRECTORY": work + "/state", "SNMPCONFPATH": work})
        self.assertNotRegex(said, "(?i)warning|error|unknown|line [0-9]")

    def test_what_the_example_environment_proposes_is_understood(self):
        text = read(ROOT + "/etc/kestrix/kxra-snmpd.env")
        proposals = re.findall(r"(?m)^#? *KXRA_SNMPD_OPTIONS=(.*)$", text)
        self.assertEqual(3, len(proposals))
        for options in proposals:
            run(PREFIX + "/sbin/kxra-snmpd", *options.split(), "--version")


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1] + ["-v"] + sys.argv[1:])
