#ifndef TESTS_SUPPORT_HOST_FIXTURE_H
#define TESTS_SUPPORT_HOST_FIXTURE_H

#include <filesystem>
#include <memory>
#include <string>

/// What the product finds on its host besides the registry: the files of the system's directory and the services. No
/// service and no file of the product is there at first, and what is put there goes with the fixture. One at a time:
/// where the real directory and the real services have to serve, other programs of the tests wait.
class CHostFixture {
public:
    CHostFixture();
    ~CHostFixture();
    CHostFixture(CHostFixture const &) = delete;
    CHostFixture & operator=(CHostFixture const &) = delete;

    std::filesystem::path SystemFile(std::string const & name) const;
    void WriteSystemFile(std::string const & name, std::string const & text);
    /// A directory in the place of a file.
    void MakeSystemFolder(std::string const & name);
    /// A service that doesn't run. configurationBytes: what its configuration takes at least.
    void InstallService(std::string const & name, std::size_t configurationBytes = 0);

private:
    struct SImpl;
    std::unique_ptr<SImpl> m_impl;
};

#endif
