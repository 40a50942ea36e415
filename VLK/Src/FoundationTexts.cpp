#include <cstddef>

#include "SystemModules.h"
#include "VLK/Language.h"
#include "VLK/ModuleInfo.h"

/// The foundation's own texts and modules. They lie in one file because their order counts: the language file must be
/// there before the module that uses it, and new modules go to the head of the list.
namespace VLK {

using Language_Support::CLanguageSupport;

namespace {

constexpr char const * Texts[] = {
    "General error in RW-library",
    "Error during stream output",
    "Can't load dynamic library",
    "Can't locate function in dynamic library",
    "Can't release dynamic library",
    "Attempt to load a new dynamic library over an already loaded library",
    "Attempt to start a second trace instance",
    "Can't determine the programs calling path",
    "Can't open the language file",
    "Language file is corrupted",
    "Bad language identifier",
    "Can't access INI-file due to an I/O-error",
    "INI-File does not exist",
    "Timeout during INI-file access",
    "Out of memory",
    "An error occurred in a previous function call",
    "Could not find key in INI-file",
    "INI-key is a comma separated list",
    "Bad character (conversation string -> number)",
    "Index out of bounds",
    "INI-file is not opened for writing",
    "Can't initalize a synchronization object",
    "General operating system error",
    "Synchronization object not initialized",
    "Error while wating on synchronization object",
    "General synchronization object error",
    "Bad format of resort mask",
    "Can't resolve host address",
    "No address information available",
    "Socket is not connected",
    "Error in socket function",
    "Socket already connected",
    "Can't establish socket connection",
    "Socket timeout",
    "Bad socket timeout value",
    "Socket connection closed by peer",
    "Socket is not listening",
    "Socket protocol error - bad command",
    "Wrong socket state",
    "Socket out of sync",
    "Integer out of range",
    "Socket already in error state",
    "Socket already attached",
    "Protocol error",
    "Connection rejected",
    "Connection refused",
    "Data missing",
    "Can't allocated thread local storage",
    "Thread is still running",
    "Can't start thread",
    "No thread started",
    "Thread already stopped",
    "Object already in error state",
    "Max count reached",
    "Invalid handle",
    "Synchronization object already initialized",
    "Can't create synchronization object",
    "Thread interrupt",
    "Wait interrupt",
    "Pool already initialized",
    "Pool not initialized",
    "Unexpected return code",
    "Not supported",
    "Semaphore count of ouf range",
    "Can't resolve error message because there's no module information available",
    "Can't determine DNS name",
    "Can't allocate SSL key",
    "Can't assign RSA key",
    "Can't generate RSA key",
    "Can't allocate BIO",
    "Bad SSL key data",
    "Can't export SSL key",
    "Can't initialize SSL library",
    "Can't allocate SSL CA",
    "Can't sign certificate",
    "Can't set issuer name",
    "Can't export SSL certificate",
    "Bad SSL certification data",
    "Can't get certification info",
    "No session context",
    "Can't add SSL session",
    "Can't create session context",
    "Can't set certficate",
    "Can't set private key",
    "Socket is not secure",
    "Bad shutdown moad",
    "SSL can't accept",
    "SSL can't connect",
    "SSL can't read",
    "SSL can't shutdown",
    "SSL can't write",
    "SSL error",
    "Socket is already secure",
    "Can't allocate SSL handle",
    "Can't reuse SSL session",
    "String is not UTF8 encoded",
    "Attempt to reference NULL pointer",
    "System time function failed",
    "No information available for this error!",
};
constexpr std::size_t TextCount = sizeof Texts / sizeof *Texts;
constexpr std::size_t ErrorCount = TextCount - 1;
static_assert(ErrorCount == 98, "one text for each error code, and one for all others");

/// The error codes are numbered from 1, in the order of their texts; the last row is the end mark.
struct SErrorTable {
    constexpr SErrorTable() noexcept : rows{}
    {
        for (std::size_t i = 0; i != ErrorCount; ++i)
            rows[i] = {0x20010001 + i, i};
    }
    Misc::ERROR_MSG_LIST rows[ErrorCount + 1];
};
constexpr SErrorTable Errors;

CLanguageSupport::CLngFile g_LanguageFile(".nls", CLanguageSupport::Default_Language_ID, "utf-8",
                                          CLanguageSupport::EncodingUtf8, Texts, TextCount);

} // namespace

Misc::CModuleInfo Misc::VLK_MODULE_INFO_VlkLib(1, "orVLK", "P:7.10.2 F:7.10.2", &g_LanguageFile, Errors.rows);

namespace {

Internals::Windows::CModuleInfo_Win g_OsModule;
Internals::CCRtlModuleInfo g_CrtModule;

} // namespace
} // namespace VLK
