#!/usr/bin/env python3
"""The binary interface of the foundation that KXRA_MIB exports, against that of the last release.

usage: abi.py check LIBRARY DUMP HEADERS    status 0: what was built on the last release goes on working
       abi.py dump LIBRARY DUMP HEADERS     makes LIBRARY the last release

What has come in addition is no difference. HEADERS is the folder of the public headers: types from elsewhere belong to
others.
"""
import lzma
import re
import subprocess
import sys
import tempfile


SYMBOL = re.compile(r"<elf-symbol name='([^']*)'")


def describe(library, headers):
    """The interface of a library as libabigail tells it, without what depends on the place of the build."""
    return subprocess.run(["abidw", "--no-corpus-path", "--no-comp-dir-path", "--no-show-locs", "--drop-undefined-syms",
                           "--drop-private-types", "--headers-dir", headers, library],
                          check=True, capture_output=True, text=True).stdout


def differences(old, new):
    """What of an interface another one hasn't any more, in words; empty: nothing."""
    # abidiff takes a symbol that had the same code as another one for present as long as that one is.
    missing = sorted(set(SYMBOL.findall(old)) - set(SYMBOL.findall(new)))
    said = "".join(f"not there any more: {symbol}\n" for symbol in missing)
    with tempfile.TemporaryDirectory() as work:
        for name, text in (("old", old), ("new", new)):
            with open(f"{work}/{name}.abi", "w", encoding="utf-8") as out:
                out.write(text)
        done = subprocess.run(["abidiff", "--no-added-syms", "--no-show-locs", f"{work}/old.abi", f"{work}/new.abi"],
                              stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, check=False)
    return said if done.returncode == 0 else said + done.stdout


def read(dump):
    with lzma.open(dump, "rt", encoding="utf-8") as text:
        return text.read()


def main(arguments):
    if len(arguments) != 4 or arguments[0] not in ("check", "dump"):
        sys.stderr.write(__doc__)
        return 2
    action, library, dump, headers = arguments
    if action == "dump":
        text = describe(library, headers)
        with lzma.open(dump, "wt", encoding="utf-8", preset=9 | lzma.PRESET_EXTREME) as out:
            out.write(text)
        return 0
    said = differences(read(dump), describe(library, headers))
    if said:
        print(said + "The interface isn't that of the last release any more; Docs/development.md says what then.")
    return 1 if said else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
