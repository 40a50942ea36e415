#ifndef SNMP_MIB_MIB_NAMES_H
#define SNMP_MIB_MIB_NAMES_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_set>

/// A name that many entries share.
struct SMibName {
    std::string text;
    mutable std::uint32_t uses = 0;
};

/// Object names, each kept once: all cells of a column have the same. One thread at a time.
class CMibNames {
public:
    CMibNames() = default;
    CMibNames(CMibNames const &) = delete;
    CMibNames & operator=(CMibNames const &) = delete;

    /// The name with one use more. Null for an empty one. Raises std::bad_alloc.
    SMibName const * Acquire(std::string_view text);
    /// Takes one use; the name goes with its last. Null does nothing.
    void Release(SMibName const * name) noexcept;

private:
    struct SHash {
        using is_transparent = void;
        std::size_t operator()(std::string_view text) const noexcept { return std::hash<std::string_view>()(text); }
        std::size_t operator()(SMibName const & name) const noexcept { return (*this)(std::string_view(name.text)); }
    };
    struct SEqual {
        using is_transparent = void;
        bool operator()(SMibName const & left, SMibName const & right) const noexcept
        {
            return left.text == right.text;
        }
        bool operator()(SMibName const & left, std::string_view right) const noexcept { return left.text == right; }
        bool operator()(std::string_view left, SMibName const & right) const noexcept { return left == right.text; }
    };

    /// Where a name that lies at this address was found last. Callers come with the same few literals again and
    /// again; what they point to is compared all the same.
    SMibName const *& Recent(char const * address) noexcept
    {
        return m_recent[reinterpret_cast<std::uintptr_t>(address) / 8 % m_recent.size()];
    }

    std::unordered_set<SMibName, SHash, SEqual> m_names; // its elements stay where they are
    std::array<SMibName const *, 64> m_recent{};
};

#endif
