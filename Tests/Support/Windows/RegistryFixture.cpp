#include "Support/RegistryFixture.h"

#include <stdexcept>
#include <string_view>

#include "Platform/Posix/RegistryStore.h"
#include "SystemHandle.h"

namespace {

constexpr char Place[] = "Software\\Kestrix tests\\"; ///< below HKEY_CURRENT_USER
constexpr std::string_view Hives[] = {"[HKEY_LOCAL_MACHINE\\", "[HKLM\\"};

void Check(LSTATUS status, char const * what)
{
    if (status != ERROR_SUCCESS) throw std::runtime_error(std::string(what) + ": " + std::to_string(status));
}

/// Nothing of it outlives the session, whatever becomes of the test.
CNativeKey MakeKey(HKEY parent, std::string const & path)
{
    HKEY key = nullptr;
    Check(::RegCreateKeyExA(parent, path.c_str(), 0, nullptr, REG_OPTION_VOLATILE, KEY_ALL_ACCESS, nullptr, &key,
                            nullptr),
          path.c_str());
    return CNativeKey(key);
}

/// The texts of the reader come without the NULs at their end.
std::string WithEnd(Platform::SRegistryValue const & value)
{
    switch (value.type) {
    case Platform::RegString:
    case Platform::RegExpandString:
        return value.data + '\0';
    case Platform::RegMultiString:
        return value.data + std::string(2, '\0');
    default:
        return value.data;
    }
}

void WriteValues(HKEY key, Platform::CRegistryNode const & node)
{
    for (std::size_t i = 0; node.ValueAt(i) != nullptr; ++i) {
        Platform::CRegistryNode::SValue const & value = *node.ValueAt(i);
        const std::string data = WithEnd(value.value);
        Check(::RegSetValueExA(key, value.name.c_str(), 0, value.value.type,
                               reinterpret_cast<BYTE const *>(data.data()), static_cast<DWORD>(data.size())),
              value.name.c_str());
    }
}

/// Makes the key of a line; others don't matter.
void WriteKeyOf(std::string_view line, HKEY machine, Platform::CRegistryNode const & root)
{
    for (std::string_view const hive : Hives) {
        if (!line.starts_with(hive)) continue;
        const std::string path(line.substr(hive.size(), line.rfind(']') - hive.size()));
        if (Platform::CRegistryNode const * const node = root.Find(path))
            WriteValues(MakeKey(machine, path).Get(), *node);
    }
}

void WriteLines(HKEY machine, std::string_view lines)
{
    Platform::CRegistryNode root;
    Platform::SRegistryFaults ignored;
    Platform::ParseRegistry("Windows Registry Editor Version 5.00\n" + std::string(lines), root, ignored);
    while (!lines.empty()) {
        const std::size_t end = std::min(lines.find('\n'), lines.size());
        WriteKeyOf(lines.substr(0, end), machine, root);
        lines.remove_prefix(std::min(end + 1, lines.size()));
    }
}

/// The computer's name stays what it is: the system itself looks it up here.
void WriteComputerName(HKEY machine, std::string const & name)
{
    const CNativeKey key = MakeKey(machine, "System\\CurrentControlSet\\Control\\ComputerName\\ActiveComputerName");
    Check(::RegSetValueExA(key.Get(), "ComputerName", 0, REG_SZ, reinterpret_cast<BYTE const *>(name.c_str()),
                           static_cast<DWORD>(name.size() + 1)),
          "ComputerName");
}

std::string ComputerName()
{
    char name[MAX_COMPUTERNAME_LENGTH + 1] = {};
    DWORD size = sizeof name;
    ::GetComputerNameA(name, &size);
    return name;
}

} // namespace

/// Each content is a key of its own, which takes the place of the one before; that one goes with the fixture, since
/// somebody may be reading it.
struct CRegistryFixture::SImpl {
    const std::string place = Place + std::to_string(::GetCurrentProcessId());
    const std::string computer = ComputerName();
    unsigned contents = 0;
    CNativeKey machine;
};

CRegistryFixture::CRegistryFixture() : m_impl(std::make_unique<SImpl>())
{
    Write("");
}

CRegistryFixture::~CRegistryFixture()
{
    ::RegOverridePredefKey(HKEY_LOCAL_MACHINE, nullptr);
    m_impl->machine.Reset();
    ::RegDeleteTreeA(HKEY_CURRENT_USER, m_impl->place.c_str());
}

void CRegistryFixture::Write(std::string const & lines)
{
    CNativeKey machine = MakeKey(HKEY_CURRENT_USER, m_impl->place + '\\' + std::to_string(++m_impl->contents));
    WriteComputerName(machine.Get(), m_impl->computer);
    WriteLines(machine.Get(), lines);
    Check(::RegOverridePredefKey(HKEY_LOCAL_MACHINE, machine.Get()), "HKEY_LOCAL_MACHINE");
    m_impl->machine = std::move(machine);
}
