#include "Tools/Report.h"

#include <iostream>

namespace Coresim {

void CReport::Say(std::string const & line)
{
    if (m_quiet) return;
    const std::lock_guard lock(m_lock);
    std::cout << line << std::endl; // flushed, as whoever watches it reads it through a pipe
}

void CReport::Complain(std::string const & line)
{
    const std::lock_guard lock(m_lock);
    std::cerr << "kxra-coresim: " << line << std::endl;
}

} // namespace Coresim
