"""kxra-nlstool as a person starts it, the shipped table, and the language file that the build makes of it."""
import os
import resource
import signal
import subprocess
import tempfile
import unittest

PROGRAM = os.environ["KXRA_NLSTOOL"]
BUILT = os.environ["KXRA_NLS_FILE"]
TABLE = os.environ["KXRA_NLS_TABLE"]
DEADLINE = 60


def run(*arguments, **options):
    options.setdefault("stdout", subprocess.PIPE)
    done = subprocess.run([PROGRAM, *arguments], stdin=subprocess.DEVNULL, stderr=subprocess.PIPE, encoding="utf-8",
                          timeout=DEADLINE, **options)
    return done.returncode, done.stdout, done.stderr


def texts(table):
    """The entries of a table, number to text."""
    return {line.split("\t")[0]: line.split("\t")[1] for line in table.splitlines() if line[:1].isdigit()}


class Case(unittest.TestCase):
    def setUp(self):
        self.directory = tempfile.TemporaryDirectory()
        self.addCleanup(self.directory.cleanup)

    def path(self, name):
        return os.path.join(self.directory.name, name)

    def put(self, name, text):
        with open(self.path(name), "w", encoding="utf-8", newline="") as file:
            file.write(text)
        return self.path(name)

    def get(self, name):
        with open(name, "rb") as file:
            return file.read()


class Program(Case):
    def test_the_version_and_the_help_are_said_with_status_0(self):
        status, out, err = run("--version")
        self.assertEqual((0, ""), (status, err))
        self.assertRegex(out, r"^kxra-nlstool \d+\.\d+\.\d+\n$")
        status, out, err = run("--help")
        self.assertEqual((0, ""), (status, err))
        for command in ("write", "check", "list", "template"):
            self.assertIn(f"\n  {command} ", out)
            self.assertEqual(0, run(command, "--help")[0])

    def test_mistakes_on_the_command_line_are_one_line_and_status_2(self):
        for arguments in ((), ("translate",), ("write", TABLE), ("write", "-o", self.path("x")), ("check",),
                          ("list", BUILT, BUILT), ("template", "--quick"), ("check", "list", BUILT)):
            status, out, err = run(*arguments)
            self.assertEqual((2, ""), (status, out), arguments)
            self.assertRegex(err, r"^kxra-nlstool: .*\n$")
        self.assertEqual([], os.listdir(self.directory.name))

    def test_a_bad_table_is_named_line_by_line_and_nothing_is_written(self):
        table = self.put("fr.tbl", "language\tfr\nname\tfran\xe7ais\n0\tErreur \u2013 x\n99\ty\n")
        status, out, err = run("write", "-o", self.path("x.nls"), table)
        self.assertEqual((1, ""), (status, out))
        lines = err.splitlines()
        self.assertEqual(f"kxra-nlstool: {table}:3: the character '\u2013' (U+2013) has no place in a language file, "
                         "whose last one is U+00FF", lines[0])
        self.assertEqual(f"kxra-nlstool: {table}:4: there is no text 99: they go from 0 to 98", lines[1])
        self.assertEqual(f"kxra-nlstool: {table}:4: text 1 is missing: Error during stream output", lines[2])
        self.assertEqual("kxra-nlstool: and 80 more", lines[-1])
        self.assertEqual(["fr.tbl"], os.listdir(self.directory.name))

    def test_a_bad_table_leaves_the_file_that_is_there(self):
        self.put("x.nls", "old")
        status, _, _ = run("write", "-o", self.path("x.nls"), TABLE, self.put("fr.tbl", "language\tfr\n"))
        self.assertEqual(1, status)
        self.assertEqual(b"old", self.get(self.path("x.nls")))

    def test_a_disk_that_takes_no_more_leaves_the_file_that_is_there_and_no_other(self):
        def limit():
            signal.signal(signal.SIGXFSZ, signal.SIG_IGN)
            resource.setrlimit(resource.RLIMIT_FSIZE, (1000, 1000))

        self.put("x.nls", "old")
        status, _, err = run("write", "-o", self.path("x.nls"), TABLE, preexec_fn=limit)
        self.assertEqual(1, status)
        self.assertRegex(err, r"^kxra-nlstool: write .*: File too large \(27\)\n$")
        self.assertEqual(["x.nls"], os.listdir(self.directory.name))
        self.assertEqual(b"old", self.get(self.path("x.nls")))

    def test_what_is_no_ordinary_file_is_not_replaced(self):
        self.assertEqual((1, "", "kxra-nlstool: write /dev/null: not an ordinary file\n"),
                         run("write", "-o", "/dev/null", TABLE))

    def test_an_output_that_takes_nothing_is_status_1(self):
        with open("/dev/full", "w", encoding="utf-8") as full:
            status, _, err = run("template", stdout=full)
        self.assertEqual((1, "kxra-nlstool: write to standard output: it doesn't take all\n"), (status, err))

    def test_a_template_becomes_a_language_file(self):
        status, template, err = run("template")
        self.assertEqual((0, ""), (status, err))
        self.assertEqual(99, len(texts(template)))
        table = self.put("fr.tbl", template.replace("language\ten\n", "language\tfr\n").replace(
            "\n14\tOut of memory\n", "\n14\tM\xe9moire \xe9puis\xe9e\n"))
        self.assertEqual((0, "", ""), run("write", "--output", self.path("x.nls"), table, TABLE))
        status, out, err = run("check", self.path("x.nls"), "--table", table, "--table", TABLE)
        self.assertEqual((0, f"{self.path('x.nls')}: good, 99 texts, languages: fr de\n", ""), (status, out, err))
        status, out, _ = run("list", self.path("x.nls"), "--language", "fr")
        self.assertEqual((0, "M\xe9moire \xe9puis\xe9e"), (status, texts(out)["14"]))

    def test_a_module_with_texts_of_its_own(self):
        defaults = self.put("en.tbl", "language\ten\n0\t%s: %d errors\n1\t%1 of %2\n")
        good = self.put("de.tbl", "language\tde\n0\t%s: %d Fehler\n1\tvon %2 %1\n")
        bad = self.put("bad.tbl", "language\tde\n0\t%d Fehler: %s\n1\tvon %2\n")
        self.assertEqual((0, "", ""), run("write", "--default", defaults, "-o", self.path("m.nls"), good))
        self.assertEqual(0, run("check", "--default", defaults, self.path("m.nls"), "--table", good)[0])
        self.assertEqual((1, "", f"kxra-nlstool: {self.path('m.nls')}: byte 4: the file has 2 texts for a language, the "
                                 "module has 99\n"), run("check", self.path("m.nls")))
        status, _, err = run("write", "--default", defaults, "-o", self.path("m.nls"), bad)
        self.assertEqual((1, f"kxra-nlstool: {bad}:2: the placeholders differ from the default text's: 'd s' instead of "
                             f"'s d'\nkxra-nlstool: {bad}:3: the placeholders differ from the default text's: '%2' "
                             "instead of '%1 %2'\n"), (status, err))

    def test_a_file_that_differs_from_its_table_is_told_text_by_text(self):
        table = self.put("de.tbl", self.get(TABLE).decode().replace("\tDeutsch\n", "\tGerman\n").replace(
            "\n46\tDaten fehlen\n", "\n46\tEs fehlen Daten\n"))
        self.assertEqual((1, "", f"kxra-nlstool: {BUILT}: byte 12: the name of de is 'Deutsch' instead of 'German', "
                                 f"{table}:3\nkxra-nlstool: {BUILT}: byte 12: text 46 of de is 'Daten fehlen' instead of "
                                 f"'Es fehlen Daten', {table}:3\n"), run("check", BUILT, "--table", table))
        other = self.put("fr.tbl", self.get(TABLE).decode().replace("language\tde", "language\tfr"))
        self.assertEqual((1, "", f"kxra-nlstool: {other}:3: fr is not in {BUILT}\n"), run("check", BUILT, "--table", other))

    def test_a_file_cut_anywhere_is_refused_by_check_and_list(self):
        whole = self.get(BUILT)
        for size in (0, 3, 11, 12, 59, 60, 61, len(whole) // 2, len(whole) - 1):
            with open(self.path("cut.nls"), "wb") as file:
                file.write(whole[:size])
            for command in ("check", "list"):
                status, out, err = run(command, self.path("cut.nls"))
                self.assertEqual((1, ""), (status, out))
                self.assertRegex(err, r"^kxra-nlstool: .*cut\.nls: byte \d+: ")

    def test_a_language_that_is_not_there_is_said(self):
        self.assertEqual((1, "", f"kxra-nlstool: {BUILT}: there is no language 'fr'\n"),
                         run("list", BUILT, "--language", "fr"))


class Shipped(Case):
    def test_the_built_file_has_the_name_that_is_looked_for_and_holds_the_shipped_table(self):
        self.assertEqual(".nls", os.path.basename(BUILT))
        self.assertEqual((0, f"{BUILT}: good, 99 texts, languages: de\n", ""), run("check", BUILT, "--table", TABLE))

    def test_the_head_byte_for_byte(self):
        blocks = "".join(text + "\0" for text in texts(self.get(TABLE).decode()).values()).encode()
        self.assertEqual(bytes.fromhex("25031961 00000063 00000001 00006465 0000003C") + len(blocks).to_bytes(4, "big") +
                         bytes.fromhex("00000001") + b"Deutsch".ljust(32, b"\0") + blocks, self.get(BUILT))

    def test_what_is_listed_makes_the_same_file(self):
        status, listed, err = run("list", BUILT)
        self.assertEqual((0, ""), (status, err))
        self.assertEqual(0, run("write", "-o", self.path("again"), self.put("de.tbl", listed))[0])
        self.assertEqual(self.get(BUILT), self.get(self.path("again")))

    def test_every_text_is_translated_and_stands_under_the_default_that_it_translates(self):
        table = self.get(TABLE).decode()
        english = texts(run("template")[1])
        german = texts(table)
        self.assertEqual(english.keys(), german.keys())
        for number, text in german.items():
            self.assertNotEqual(english[number], text)
            self.assertIn(f"\n# {english[number]}\n{number}\t{text}\n", table)


if __name__ == "__main__":
    unittest.main(verbosity=2)
