#ifndef SNMP_FRAME_REGISTRY_READER_H
#define SNMP_FRAME_REGISTRY_READER_H

#include <cstdint>
#include <string>

#include "Platform/Registry.h"

/// Reads single values of the machine's registry. A key that can't be opened in the default view is looked for
/// in the 32-bit view, so that agents of both word sizes reach the same values. One thread.
class CRegistryReader {
public:
    /// The value's text up to its first zero byte; an expandable text has its environment variables replaced.
    /// Returns whether it was read; `out` keeps its value otherwise.
    bool ReadText(std::string const & path, std::string const & name, std::string & out);
    /// A number of 4 bytes. Returns whether it was read; `out` keeps its value otherwise.
    bool ReadNumber(std::string const & path, std::string const & name, std::uint32_t & out);

private:
    bool Open(std::string const & path);

    Platform::CRegistryKey m_key;
    Platform::SRegistryValue m_value;
};

#endif
