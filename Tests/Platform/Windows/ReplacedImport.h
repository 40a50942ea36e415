#ifndef TESTS_PLATFORM_WINDOWS_REPLACED_IMPORT_H
#define TESTS_PLATFORM_WINDOWS_REPLACED_IMPORT_H

#include <gtest/gtest.h>

#include <cstring>

#include "Platform/Native/SockAddr.h" // the system's interface without its second names for ours

/// A function of the system in whose place this program, but no library, calls one of the test for a scope: so the test
/// decides what the system says, and acts at moments that nobody else could meet.
template <class TFunction>
class TReplacedImport {
public:
    TReplacedImport(char const * name, TFunction * replacement) : m_slot(Slot(name))
    {
        EXPECT_NE(nullptr, m_slot) << "the program doesn't call " << name;
        if (m_slot == nullptr) return;
        m_system = *m_slot;
        Put(replacement);
    }
    ~TReplacedImport()
    {
        if (m_slot != nullptr) Put(m_system);
    }
    TReplacedImport(TReplacedImport const &) = delete;
    TReplacedImport & operator=(TReplacedImport const &) = delete;

    /// The function of the system.
    TFunction * System() const { return m_system; }

private:
    /// Where the program keeps the function's address; null when it calls none of that name.
    static TFunction ** Slot(char const * name)
    {
        auto * const program = reinterpret_cast<char *>(::GetModuleHandleA(nullptr));
        auto const & start = *reinterpret_cast<IMAGE_DOS_HEADER const *>(program);
        auto const & headers = *reinterpret_cast<IMAGE_NT_HEADERS const *>(program + start.e_lfanew);
        auto const & imports = headers.OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT];
        auto const * library = reinterpret_cast<IMAGE_IMPORT_DESCRIPTOR const *>(program + imports.VirtualAddress);
        for (; library->Name != 0; ++library) {
            auto const * entry = reinterpret_cast<IMAGE_THUNK_DATA const *>(program + library->OriginalFirstThunk);
            auto * slot = reinterpret_cast<IMAGE_THUNK_DATA *>(program + library->FirstThunk);
            for (; entry->u1.AddressOfData != 0; ++entry, ++slot)
                if (!IMAGE_SNAP_BY_ORDINAL(entry->u1.Ordinal) &&
                    std::strcmp(NameAt(program + entry->u1.AddressOfData), name) == 0)
                    return reinterpret_cast<TFunction **>(&slot->u1.Function);
        }
        return nullptr;
    }
    static char const * NameAt(char const * entry)
    {
        return reinterpret_cast<IMAGE_IMPORT_BY_NAME const *>(entry)->Name;
    }
    void Put(TFunction * function)
    {
        DWORD former = 0;
        ASSERT_NE(FALSE, ::VirtualProtect(m_slot, sizeof *m_slot, PAGE_READWRITE, &former));
        *m_slot = function;
        ASSERT_NE(FALSE, ::VirtualProtect(m_slot, sizeof *m_slot, former, &former));
    }

    TFunction ** const m_slot;
    TFunction * m_system = nullptr;
};

#endif
