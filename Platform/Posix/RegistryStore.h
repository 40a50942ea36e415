#ifndef PLATFORM_POSIX_REGISTRY_STORE_H
#define PLATFORM_POSIX_REGISTRY_STORE_H

#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "Platform/Registry.h"

namespace Platform {

/// A text with its letters made equal in case: ASCII and the Latin-1 letters of UTF-8. Everything else as it is.
std::string FoldCase(std::string_view text);

/// One key with its values in the order of their first naming. Not synchronised.
class CRegistryNode {
public:
    struct SValue {
        std::string name;
        SRegistryValue value;
    };

    /// The key at the path below this one, parts separated by backslashes; null when there is none.
    CRegistryNode const * Find(std::string_view path) const;
    /// The same, made with all keys on the way when it is missing.
    CRegistryNode & Make(std::string_view path);
    /// Removes the key at the path with all below it; no matter when there is none.
    void Remove(std::string_view path);

    /// A value of that name is replaced at its place.
    void SetValue(std::string name, SRegistryValue value);
    void RemoveValue(std::string_view name);
    SRegistryValue const * FindValue(std::string_view name) const;
    /// Null behind the last.
    SValue const * ValueAt(std::size_t index) const;
    /// Closes the gaps that removed values left; to be called once all values are set.
    void Compact();

private:
    std::map<std::string, std::unique_ptr<CRegistryNode>> m_children; ///< by folded name
    std::map<std::string, std::size_t> m_places;                      ///< folded name to index of m_values
    std::vector<std::unique_ptr<SValue>> m_values;                    ///< null where a value was removed
};

/// A line that can't be read.
struct SRegistryFault {
    std::size_t line; ///< from 1
    std::string reason;
};

/// The lines of one file that can't be read. Only the first ones are kept: a file that is none at all has millions.
struct SRegistryFaults {
    static constexpr std::size_t MaxKept = 100;
    std::vector<SRegistryFault> kept; ///< in the order of their lines
    std::size_t count = 0;            ///< of all

    void Add(std::size_t line, std::string_view reason)
    {
        if (count++ < MaxKept) kept.push_back({line, std::string(reason)});
    }
};

/// Reads the bytes of a registry file into `root`. What is faulty is passed over. Any bytes are safe.
void ParseRegistry(std::string const & bytes, CRegistryNode & root, SRegistryFaults & faults);

} // namespace Platform

#endif
