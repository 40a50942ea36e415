"""Building on the installation, and on nothing else."""
import concurrent.futures
import os
import sys
import unittest

from installation import CMAKE, CXX, HEADERS, LIB, PREFIX, SOURCE, WORK, empty_directory, run, tree, write
from target import system

HERE = os.path.dirname(os.path.abspath(__file__))


def build(source, directory, *options, target="all"):
    """Configures a project on the installation and builds a target of it."""
    run(CMAKE, "-S", source, "-B", empty_directory(directory), "-G", "Ninja", *system.options,
        *([f"-DCMAKE_CXX_FLAGS={system.compile_flags}"] if system.compile_flags else []), *options)
    run(CMAKE, "--build", directory, "--target", target)


class ConsumerTest(unittest.TestCase):
    """A module of somebody else's that uses every family of the foundation, and an extension on the agent frame."""

    def use(self, foundation):
        """Builds and runs it; the libraries that it asks for."""
        directory = os.path.join(WORK, "consumer_" + foundation.split("::")[1])
        build(os.path.join(SOURCE, "Tests/Consumer"), directory, "-DCONSUMER_FOUNDATION=" + foundation,
              target="kxra_consumer")
        data = empty_directory(os.path.join(directory, "data"))
        program = os.path.join(directory, "kxra_consumer")
        self.assertIn("all families used", system.run(program, data))
        return system.needs(program)

    def test_the_foundation_can_be_linked_in(self):
        self.assertNotIn(system.agent, self.use("KXRA::VLK"))

    def test_the_foundation_can_be_shared_with_the_agent(self):
        self.assertIn(system.agent, self.use("KXRA::Foundation"))

    def test_an_extension_of_ones_own_is_loaded_by_a_host(self):
        directory = os.path.join(WORK, "consumer_extension")
        build(os.path.join(SOURCE, "Tests/Consumer"), directory, target="SensorExtension")
        system.serve(directory + "/SensorExtension")


class PackageTest(unittest.TestCase):
    def test_versions_and_components_are_told_apart(self):
        build(os.path.join(HERE, "Choices"), os.path.join(WORK, "choices"))

    def test_pkg_config_tells_what_a_program_on_the_foundation_needs(self):
        work = empty_directory(os.path.join(WORK, "pkgconfig"))
        write(work + "/program.cpp", """
            #include <VLK/Threads.h>
            #include <VLK/Xml.h>
            int main()
            {
                VLK::XML::xml_document document;
                return document.append_child("x") && VLK::Threading::CCurrentThread().GetThreadID() != 0 ? 0 : 1;
            }""")
        options = run("pkg-config", "--cflags", "--libs", "kxra",
                      env={**os.environ, "PKG_CONFIG_PATH": f"{PREFIX}/{LIB}/pkgconfig"}).split()
        run(CXX, "-std=c++20", *system.compile_flags.split(), work + "/program.cpp", *options, "-o", work + "/program")
        run(work + "/program")


class HeaderTest(unittest.TestCase):
    def test_every_header_can_be_included_by_itself_without_a_warning(self):
        headers = [path for path in tree(HEADERS) if path.endswith(".h")]

        def include(header):
            run(CXX, "-std=c++20", "-fsyntax-only", "-Wall", "-Wextra", "-Wpedantic", "-Wconversion", "-Wshadow",
                "-Werror", "-I" + HEADERS, *system.header_options, "-x", "c++", "-", input=f'#include "{header[1:]}"\n')

        with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
            for _ in pool.map(include, headers):
                pass
        self.assertGreater(len(headers), 80)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1] + ["-v"] + sys.argv[1:])
