"""Building on the installation, and on nothing else."""
import concurrent.futures
import os
import sys
import unittest

from installation import CMAKE, CXX, HEADERS, LIB, PREFIX, SANITIZE, SOURCE, WORK, empty_directory, run, tree, write

HERE = os.path.dirname(os.path.abspath(__file__))


def flags():
    return f"-fsanitize={SANITIZE} -fno-omit-frame-pointer" if SANITIZE else ""


def build(source, directory, *options, target="all"):
    """Configures a project on the installation and builds a target of it."""
    run(CMAKE, "-S", source, "-B", empty_directory(directory), "-G", "Ninja", "-DCMAKE_PREFIX_PATH=" + PREFIX,
        "-DCMAKE_CXX_COMPILER=" + CXX, "-DCMAKE_CXX_FLAGS=" + flags(), *options)
    run(CMAKE, "--build", directory, "--target", target)


class ConsumerTest(unittest.TestCase):
    """A module of somebody else's that uses every family of the foundation, and an extension on the agent frame."""

    def use(self, foundation):
        directory = os.path.join(WORK, "consumer_" + foundation.split("::")[1])
        build(os.path.join(SOURCE, "Tests/Consumer"), directory, "-DCONSUMER_FOUNDATION=" + foundation,
              target="kxra_consumer")
        data = empty_directory(os.path.join(directory, "data"))
        self.assertIn("all families used", run(os.path.join(directory, "kxra_consumer"), data))
        return directory

    def test_the_foundation_can_be_linked_in(self):
        directory = self.use("KXRA::VLK")
        self.assertNotIn("KXRA_MIB", run("readelf", "-d", os.path.join(directory, "kxra_consumer")))

    def test_an_extension_of_ones_own_is_loaded_by_the_service(self):
        directory = os.path.join(WORK, "consumer_extension")
        build(os.path.join(SOURCE, "Tests/Consumer"), directory, target="SensorExtension")
        run(PREFIX + "/sbin/kxra-snmpd", "--check", "--library", directory + "/SensorExtension.so")

    def test_the_foundation_can_be_shared_with_the_agent(self):
        directory = self.use("KXRA::Foundation")
        self.assertIn("[KXRA_MIB.so]", run("readelf", "-d", os.path.join(directory, "kxra_consumer")))


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
        run(CXX, "-std=c++20", *flags().split(), work + "/program.cpp", *options, "-o", work + "/program")
        run(work + "/program")


class HeaderTest(unittest.TestCase):
    def test_every_header_can_be_included_by_itself_without_a_warning(self):
        headers = [path for path in tree(HEADERS) if path.endswith(".h")]

        def include(header):
            run(CXX, "-std=c++20", "-fsyntax-only", "-Wall", "-Wextra", "-Wpedantic", "-Wconversion", "-Wshadow",
                "-Werror", "-I" + HEADERS, "-x", "c++", "-", input=f'#include "{header[1:]}"\n')

        with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
            for _ in pool.map(include, headers):
                pass
        self.assertGreater(len(headers), 80)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1] + ["-v"] + sys.argv[1:])
