#include "Snmp/Mib/MibNames.h"

#include <algorithm>

SMibName const * CMibNames::Acquire(std::string_view text)
{
    if (text.empty()) return nullptr;
    SMibName const *& recent = Recent(text.data());
    if (recent == nullptr || recent->text != text) {
        auto found = m_names.find(text);
        if (found == m_names.end()) found = m_names.insert(SMibName{std::string(text)}).first;
        recent = &*found;
    }
    ++recent->uses;
    return recent;
}

void CMibNames::Release(SMibName const * name) noexcept
{
    if (name == nullptr || --name->uses != 0) return;
    std::replace(m_recent.begin(), m_recent.end(), name, static_cast<SMibName const *>(nullptr));
    m_names.erase(m_names.find(std::string_view(name->text)));
}
