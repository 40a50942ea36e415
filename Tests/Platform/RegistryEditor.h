#ifndef TESTS_PLATFORM_REGISTRY_EDITOR_H
#define TESTS_PLATFORM_REGISTRY_EDITOR_H

#include <memory>
#include <string>

/// Puts values into the registry of this host as an administrator does: on Windows with the system's registry editor,
/// on POSIX by the file, which the editor could read. In Posix/ and Windows/.
class CRegistryEditor {
public:
    CRegistryEditor();
    ~CRegistryEditor();
    CRegistryEditor(CRegistryEditor const &) = delete;
    CRegistryEditor & operator=(CRegistryEditor const &) = delete;

    /// Adds the keys and values of a registry file. lines: UTF-8, what follows its first line.
    void Import(std::string const & lines);
    /// A key that is this test's alone and goes with it, below HKEY_LOCAL_MACHINE.
    std::string const & Key() const { return m_key; }

private:
    struct SImpl;
    std::unique_ptr<SImpl> m_impl;
    std::string const m_key;
};

/// The bytes of a registry file with these lines, in the editor's own encoding.
std::string RegistryFileBytes(std::string const & lines);

#endif
