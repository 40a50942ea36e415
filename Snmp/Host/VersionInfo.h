#ifndef SNMP_HOST_VERSION_INFO_H
#define SNMP_HOST_VERSION_INFO_H

#include <cstdint>
#include <string>

#include "Platform/Module.h"

/// The version block of a file. Empty until a Load got one. One thread at a time. Nothing is thrown.
class CFileVersionInfo {
public:
    /// Reads the version block of a file and replaces the one held. A null or empty path, a file without a block
    /// and a lack of memory leave the object as it was.
    void Load(char const * path) noexcept;
    /// Bytes of a file's version block, 0 if there is none.
    static std::uint32_t GetSize(char const * path) noexcept;
    /// The fixed numbers of the block held; false, and `out` unchanged, where there are none.
    bool GetFixed(Platform::SFixedVersion & out) const noexcept;
    /// Path of the file whose block is held.
    std::string const & Path() const noexcept { return m_path; }

protected:
    std::string m_block; ///< empty: no version data

private:
    std::string m_path;
};

/// The texts of the version block.
class CVersionResource : public CFileVersionInfo {
public:
    /// A text of the block in the language `langId`, or in the first one it has when langId is 0; the code page is
    /// the block's own. Characters that can't be shown become '?'. Non-zero on success, else `out` keeps its value.
    int GetString(std::string & out, char const * key, std::uint16_t langId, std::uint16_t codePage) const noexcept;
    /// The halves of the product version's high word; 0 without data.
    unsigned GetProductMajor() const noexcept;
    unsigned GetProductMinor() const noexcept;

private:
    bool ContainsLangId(std::uint16_t & langId, std::uint16_t & codePage) const noexcept;
};

#endif
