#ifndef TESTS_SUPPORT_REGISTRY_FIXTURE_H
#define TESTS_SUPPORT_REGISTRY_FIXTURE_H

#include <memory>
#include <string>

/// A registry of the test's own in the place of HKEY_LOCAL_MACHINE, for this process with all libraries that it loads.
/// Empty at first; the former one is back at the end. One at a time, by one thread; others may read meanwhile.
class CRegistryFixture {
public:
    CRegistryFixture();
    ~CRegistryFixture();
    CRegistryFixture(CRegistryFixture const &) = delete;
    CRegistryFixture & operator=(CRegistryFixture const &) = delete;

    /// Replaces everything in one step. lines: what follows the first line of a file of the registry editor. Lines that
    /// can't be read are passed over.
    void Write(std::string const & lines);

    /// A text as it stands in such a line, with its quotes.
    static std::string Quoted(std::string const & text);
    /// The same for a text whose environment variables are to be expanded: the hex(2) form. text: ASCII.
    static std::string Expandable(std::string const & text);

private:
    struct SImpl;
    std::unique_ptr<SImpl> m_impl;
};

#endif
