"""The names that the shared library shows."""
import os
import re
import sys
import tempfile
import unittest

import abi
import exports
from installation import CXX, HEADERS, NM, SOURCE, fails, run, tree
from target import system

LIBRARY = system.agent_file
HERE = os.path.dirname(os.path.abspath(__file__))
LIST = os.path.join(HERE, "exported.txt")
DUMP = os.path.join(HERE, "KXRA_MIB.abi.xz")


class ExportTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.entries = exports.read_list(LIST)
        cls.symbols = system.exported_symbols()

    def test_what_is_exported_stands_in_the_list(self):
        strange = [symbol for symbol in self.symbols if symbol not in exports.HOST_FUNCTIONS and
                   exports.entry_of(exports.qualified_name(symbol), self.entries) is None]
        self.assertEqual([], strange)

    def test_what_stands_in_the_list_is_exported(self):
        self.assertLessEqual(exports.HOST_FUNCTIONS, set(self.symbols))
        present = {exports.entry_of(exports.qualified_name(symbol), self.entries) for symbol in self.symbols}
        self.assertEqual([], sorted(self.entries - present))

    def test_names_are_read_out_of_all_kinds_of_symbols(self):
        for symbol, name in (("VLK::Strings::ToUTF8(std::string const&, std::string&)", "VLK::Strings::ToUTF8"),
                             ("void VLK::S::C::Print<unsigned long long>(unsigned long long)", "VLK::S::C::Print"),
                             ("VLK::S::C& VLK::S::C::Insert<int>(int)", "VLK::S::C::Insert"),
                             ("VLK::S::C::operator<<(void const*)", "VLK::S::C::operator"),
                             ("VLK::S::T<VLK::I::B>::operator VLK::S::H() const", "VLK::S::T::operator"),
                             ("typeinfo name for VLK::S::T<VLK::I::B>", "VLK::S::T"),
                             ("non-virtual thunk to VLK::S::C::~C()", "VLK::S::C::~C"),
                             ("VLK::I::C::Name[abi:cxx11]() const", "VLK::I::C::Name"),
                             ("VLK::S::_TNL", "VLK::S::_TNL")):
            self.assertEqual(name, exports.qualified_name(symbol), symbol)


class HeaderNeedsTest(unittest.TestCase):
    """What the code that stands in the headers calls must be there for a module that has the shared library alone."""

    def undefined(self, source, *options):
        with tempfile.TemporaryDirectory() as work:
            compiled = os.path.join(work, "source.o")
            run(CXX, "-std=c++20", "-I" + HEADERS, *system.header_options, *options, "-c", "-x", "c++", "-", "-o", compiled,
                input=source)
            names = re.findall(r"\bU (?:__imp_)?(\S+)", run(NM, "-u", compiled))
        return set(exports.demangled(names))

    def includes(self):
        return "".join(f'#include "{path[1:]}"\n' for path in sorted(tree(HEADERS)) if path.startswith("/VLK/") and
                       path.endswith(".h"))

    def test_every_function_in_a_header_finds_what_it_calls(self):
        needed = {name for name in self.undefined(self.includes(), "-fkeep-inline-functions")
                  if re.match(r"(?:[\w ]+ )?VLK::", name)}
        self.assertGreater(len(needed), 50)
        self.assertEqual([], sorted(needed - set(system.exported_symbols())))

    def test_no_object_needs_the_platform_layer_to_come_and_go(self):
        classes = [name for kind, name in sorted(exports.read_list(LIST)) if kind == "class" and
                   "::T" not in name and "::Internals::" not in name]
        uses = "".join(f"template void Use<::{name}>(void *);\n" for name in classes)
        source = self.includes() + """
            #include <new>
            #include <type_traits>
            template <class T> void Use(void * place)
            {
                if constexpr (std::is_default_constructible_v<T>) new (place) T;
                if constexpr (std::is_copy_constructible_v<T>) new (place) T(*static_cast<T const *>(place));
                if constexpr (std::is_destructible_v<T>) static_cast<T *>(place)->~T();
            }
            """ + uses
        self.assertGreater(len(classes), 30)
        self.assertEqual([], sorted(name for name in self.undefined(source) if name.startswith("Platform::")))


class AbiTest(unittest.TestCase):
    """The interface against that of the last release, and that the comparison is worth something."""

    @classmethod
    def setUpClass(cls):
        cls.old = abi.read(DUMP)
        cls.new = abi.describe(LIBRARY, os.path.join(SOURCE, "VLK/Include"))

    def without(self, text, replacement):
        """What is told when this build lacked something that the last release had."""
        self.assertRegex(self.new, text)
        return abi.differences(self.new, re.sub(text, replacement, self.new))

    def test_what_was_built_on_the_last_release_goes_on_working(self):
        self.assertEqual("", abi.differences(self.old, self.new), "Docs/development.md says what to do")

    def test_what_comes_in_addition_is_no_difference(self):
        fewer = re.sub(r"(?m)^.*_ZN3VLK7Sockets7CSocket4WaitEj.*\n", "", self.new, count=1)
        self.assertNotEqual(fewer, self.new)
        self.assertEqual("", abi.differences(fewer, self.new))

    def test_a_function_that_has_gone_is_told(self):
        self.assertIn("not there any more: _ZN3VLK7Sockets7CSocket4WaitEj\n",
                      self.without("_ZN3VLK7Sockets7CSocket4WaitEj", "_ZN3VLK7Sockets7CSocket4HaltEj"))

    def test_a_function_that_shared_its_code_with_another_is_missed_too(self):
        self.assertIn("not there any more: _ZN3VLK7Sockets7CSocket5AbortEv\n",
                      self.without("_ZN3VLK7Sockets7CSocket5AbortEv", "_ZN3VLK7Sockets7CSocket4StopEv"))

    def test_a_member_that_has_moved_is_told(self):
        said = self.without(r"layout-offset-in-bits='448'(?=>\s*<var-decl name='m_uTimeout')",
                            "layout-offset-in-bits='416'")
        self.assertIn("m_uTimeout' offset changed from 448 to 416", said)

    def test_an_object_that_has_grown_is_told(self):
        said = self.without(r"(class-decl name='CEvent' size-in-bits=)'128'", r"\1'192'")
        self.assertIn("type size changed from 128 to 192", said)

    def test_the_program_tells_by_its_status(self):
        command = [sys.executable, os.path.join(HERE, "abi.py"), "check", LIBRARY, DUMP,
                   os.path.join(SOURCE, "VLK/Include")]
        with tempfile.TemporaryDirectory() as work:
            dump = os.path.join(work, "dump.abi.xz")
            with abi.lzma.open(dump, "wt", encoding="utf-8") as out:
                out.write(self.old.replace("_ZN3VLK7Sockets7CSocket4WaitEj", "_ZN3VLK7Sockets7CSocket4HaltEj"))
            run(*command)
            self.assertIn("_ZN3VLK7Sockets7CSocket4HaltEj", fails(*command[:-2], dump, command[-1]))


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1] + ["-v"] + sys.argv[1:])
