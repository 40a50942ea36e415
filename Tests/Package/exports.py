"""The names that a library exports, and the list of those that it shall."""
import re
import subprocess

HOST_FUNCTIONS = {"DllMain", "SnmpExtensionClose", "SnmpExtensionInit", "SnmpExtensionInitEx", "SnmpExtensionQuery",
                  "SnmpExtensionTrap"}
OF_A_CLASS = re.compile(r"^(?:vtable for|VTT for|typeinfo for|typeinfo name for|guard variable for|"
                        r"(?:non-virtual|virtual) thunk to|construction vtable for) ")


def exported_symbols(nm, library):
    """The demangled names in the dynamic symbol table."""
    lines = subprocess.run([nm, "-D", "-C", "--defined-only", library], check=True, capture_output=True,
                           text=True).stdout.splitlines()
    return [line.split(" ", 2)[2] for line in lines]


def headers_of_dll(objdump, library):
    """What the file says of itself, its tables of imports and exports among it."""
    return subprocess.run([objdump, "-p", library], check=True, capture_output=True, text=True).stdout


def exported_by_dll(objdump, library):
    """The demangled names of the export table."""
    table = headers_of_dll(objdump, library).split("[Ordinal/Name Pointer] Table", 1)
    if len(table) == 1:
        return []
    names = re.findall(r"^\t\[ *\d+\]\s+(?:\+base\[ *\d+\]\s+[0-9a-f]+\s+)?(\S+)$", table[1], re.MULTILINE)
    return demangled(names)


def demangled(names):
    return subprocess.run(["c++filt"], input="\n".join(names), check=True, capture_output=True,
                          text=True).stdout.splitlines()


def _without_brackets(text):
    """Without template arguments: what stands between < and >, but for the operators that are made of these."""
    text = re.sub(r"operator(?:<=>|<<=?|>>=?|<=?|>=?|->\*?)", "operator", text)
    while True:
        shorter = re.sub(r"<[^<>]*>", "", text)
        if shorter == text:
            return text
        text = shorter


def qualified_name(symbol):
    """`void N::C::f<int>(int) const` becomes N::C::f; what stands for a class itself becomes N::C."""
    symbol = OF_A_CLASS.sub("", symbol.replace("[abi:cxx11]", ""))
    symbol = _without_brackets(symbol).replace("(anonymous namespace)", "_")
    name = symbol.split("(", 1)[0]
    if "::operator" in name:
        name = name[:name.index("::operator")] + "::operator"
    return name.split(" ")[-1]


def read_list(path):
    """{(kind, name)} of a list: lines of a kind and a name; "#" begins a comment."""
    entries = set()
    with open(path, encoding="utf-8") as lines:
        for line in lines:
            words = line.split("#")[0].split()
            if words:
                kind, name = words
                assert kind in ("class", "function", "object"), line
                entries.add((kind, name))
    return entries


def entry_of(name, entries):
    """The entry that a name belongs to; None: it isn't in the list."""
    for kind in ("function", "object"):
        if (kind, name) in entries:
            return (kind, name)
    scope = name
    while scope:
        if ("class", scope) in entries:
            return ("class", scope)
        scope = scope.rpartition("::")[0]
    return None
