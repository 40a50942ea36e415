"""The installation that the tests of the package look at, and the commands they share."""
import os
import shutil
import subprocess

SOURCE = os.environ["KXRA_SOURCE"]
BUILD = os.environ["KXRA_BUILD"]
BUILD_TYPE = os.environ["KXRA_BUILD_TYPE"]
LIB = os.environ["KXRA_LIB"]
CMAKE = os.environ["KXRA_CMAKE"]
CXX = os.environ["KXRA_CXX"]
NM = os.environ["KXRA_NM"]
OBJDUMP = os.environ["KXRA_OBJDUMP"]
SANITIZE = os.environ["KXRA_SANITIZE"]
EMULATOR = os.environ["KXRA_EMULATOR"]  # what runs programs of Windows here; empty for a build for this system

WORK = os.path.join(BUILD, "package")
ROOT = os.path.join(WORK, "root")  # a system that the product is installed in
PREFIX = ROOT + "/usr/local"
HEADERS = PREFIX + "/include/kxra"


def run(*command, **options):
    """Runs a command; one that fails is told with all that it said."""
    done = subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, check=False, **options)
    if done.returncode != 0:
        raise AssertionError(f"{' '.join(command)}: status {done.returncode}\n{done.stdout}")
    return done.stdout


def fails(*command, **options):
    """Runs a command that has to fail; returns what it said."""
    done = subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, check=False, **options)
    assert done.returncode > 0, f"{' '.join(command)}: status {done.returncode}\n{done.stdout}"
    return done.stdout


def empty_directory(path):
    shutil.rmtree(path, ignore_errors=True)
    os.makedirs(path)
    return path


def install(root, prefix="/usr/local"):
    """Installs into the system below `root`."""
    return run(CMAKE, "--install", BUILD, "--prefix", prefix, env={**os.environ, "DESTDIR": root})


def tree(root):
    """All that lies below `root`: the files, and the directories with a slash at the end, as paths of the system."""
    found = set()
    for directory, folders, files in os.walk(root):
        place = directory[len(root):]
        found.update(f"{place}/{name}" for name in files)
        found.update(f"{place}/{name}/" for name in folders)
    return found


def write(path, text):
    os.makedirs(os.path.dirname(path), exist_ok=True)
    with open(path, "w", encoding="utf-8") as out:
        out.write(text)


def read(path):
    with open(path, encoding="utf-8") as lines:
        return lines.read()
