"""The system that the installation is for: how a module is built on it there, and how what is built is run and looked at.

KXRA_EMULATOR: what runs programs of Windows here; empty for an installation for this system. For Windows besides
KXRA_WINDOWS_PREFIX, the target's libraries, and KXRA_TEST_HOST, a host of extensions."""
import os
import re

import exports
from installation import CXX, EMULATOR, LIB, NM, OBJDUMP, PREFIX, SANITIZE, SOURCE, run


class ThisSystem:
    """What is built runs here."""

    compile_flags = f"-fsanitize={SANITIZE} -fno-omit-frame-pointer" if SANITIZE else ""
    options = ("-DCMAKE_PREFIX_PATH=" + PREFIX, "-DCMAKE_CXX_COMPILER=" + CXX)
    header_options = ()  # what others' headers need
    agent = "KXRA_MIB.so"
    agent_file = f"{PREFIX}/{LIB}/{agent}"

    def run(self, program, *files):
        return run(program, *files)

    def needs(self, program):
        """The libraries that it asks the loader for."""
        return re.findall(r"NEEDED.*\[(.*)\]", run("readelf", "-d", program))

    def exported_symbols(self):
        return exports.exported_symbols(NM, self.agent_file)

    def serve(self, extension):
        """Has a host of extensions load it and take its region."""
        run(PREFIX + "/sbin/kxra-snmpd", "--check", "--library", extension + ".so")


class Windows:
    """What is built runs under Wine. The package is named by its place: the search for packages leaves it to the target's
    libraries alone."""

    libraries = os.environ["KXRA_WINDOWS_PREFIX"]
    compile_flags = ""
    options = (f"-DCMAKE_TOOLCHAIN_FILE={SOURCE}/cmake/toolchains/mingw-w64.cmake", f"-DKXRA_DIR={PREFIX}/{LIB}/cmake/KXRA",
               "-DKXRA_WINDOWS_PREFIX=" + libraries)
    header_options = ("-isystem", libraries + "/include", "-DVLK_IMPORT")
    agent = "KXRA_MIB.dll"
    agent_file = f"{PREFIX}/bin/{agent}"

    @staticmethod
    def path(file):
        return "Z:" + file.replace("/", "\\")

    def run(self, program, *files, **options):
        return run(EMULATOR, program + ".exe", *map(self.path, files),
                   env={**os.environ, "WINEPATH": self.path(PREFIX + "/bin")}, **options)

    def needs(self, program):
        return re.findall(r"DLL Name: (\S+)", run(OBJDUMP, "-p", program + ".exe"))

    def exported_symbols(self):
        return exports.exported_by_dll(OBJDUMP, self.agent_file)

    def serve(self, extension):
        commands = [f"load {self.path(extension)}.dll", "init", "close", "unload"]
        said = self.run(os.environ["KXRA_TEST_HOST"].removesuffix(".exe"), input="\n".join(commands) + "\n").splitlines()
        answers = [line for line in said if line.startswith(("ok", "error"))]
        assert answers == ["ok", "ok 1 1.3.6.1.4.1.88417.98.1", "ok", "ok"], said


system = Windows() if EMULATOR else ThisSystem()
