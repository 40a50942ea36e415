#include "Snmp/Mib/MibNames.h"

SMibName const * CMibNames::Acquire(std::string_view text)
{
    if (text.empty()) return nullptr;
    auto found = m_names.find(text);
    if (found == m_names.end()) found = m_names.insert(SMibName{std::string(text)}).first;
    ++found->uses;
    return &*found;
}

void CMibNames::Release(SMibName const * name) noexcept
{
    if (name == nullptr || --name->uses != 0) return;
    m_names.erase(m_names.find(std::string_view(name->text)));
}
