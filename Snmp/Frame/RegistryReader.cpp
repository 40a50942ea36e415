#include "Snmp/Frame/RegistryReader.h"

using Platform::RegistryAccess;
using Platform::RegistryView;

bool CRegistryReader::Open(std::string const & path)
{
    return m_key.Open(path, RegistryView::Default, RegistryAccess::Read) == Platform::Success ||
           m_key.Open(path, RegistryView::View32, RegistryAccess::Read) == Platform::Success;
}

bool CRegistryReader::ReadText(std::string const & path, std::string const & name, std::string & out)
{
    if (!Open(path) || m_key.Query(name, m_value) != Platform::Success) return false;
    out = m_value.data.c_str();
    if (m_value.type == Platform::RegExpandString) out = Platform::ExpandEnvironment(out);
    return true;
}

bool CRegistryReader::ReadNumber(std::string const & path, std::string const & name, std::uint32_t & out)
{
    return Open(path) && Platform::ReadDword(m_key, name, out);
}
