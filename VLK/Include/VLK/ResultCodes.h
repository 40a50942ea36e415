#ifndef VLK_RESULT_CODES_H
#define VLK_RESULT_CODES_H

#include <cstdint>

namespace VLK {

/// Result codes (URET) of the foundation's functions.
inline constexpr unsigned int URET_Error = 0;       ///< an exception was swallowed; the thread's error log has it
inline constexpr unsigned int URET_OK = 1;          ///< success
inline constexpr unsigned int URET_WaitObject0 = 1; ///< + i: object i of a wait fired; 0 shares its number with success
inline constexpr unsigned int URET_WaitObject1 = 2;
inline constexpr unsigned int URET_WaitObject2 = 3;
inline constexpr unsigned int URET_WaitAbandoned = 0x41; ///< single wait: the mutex's owner ended; the caller owns it
inline constexpr unsigned int URET_Timeout = 130;        ///< the wait timed out, or the section is taken
inline constexpr unsigned int URET_WouldBlock = 131;     ///< nothing there at this moment
inline constexpr unsigned int URET_MoreData = 132;
inline constexpr unsigned int URET_Disconnect = 133;
inline constexpr unsigned int URET_Closed = 134;

/// Layout of an error code: bit 29 marks the scheme, bits 16 to 28 hold the module's id, bits 0 to 15 its number.
inline constexpr std::uint32_t ErrorSchemeBit = 0x20000000;

constexpr bool IsSchemeError(std::uint32_t code) noexcept
{
    return (code & ErrorSchemeBit) != 0;
}
/// The module id of an error code; a value outside the scheme is a module id by itself.
constexpr std::uint32_t ErrorModuleId(std::uint32_t code) noexcept
{
    return IsSchemeError(code) ? (code >> 16) & 0x1FFF : code;
}
constexpr std::uint32_t ErrorNumber(std::uint32_t code) noexcept
{
    return code & 0xFFFF;
}
constexpr std::uint32_t MakeErrorCode(std::uint32_t moduleId, std::uint32_t number) noexcept
{
    return ErrorSchemeBit | (moduleId & 0x1FFF) << 16 | (number & 0xFFFF);
}

/// The foundation's own error codes; their texts lie with the module's language table.
namespace Errors {
inline constexpr std::uint32_t General = 0x20010001;        ///< General error in RW-library
inline constexpr std::uint32_t StreamOutput = 0x20010002;   ///< Error during stream output
inline constexpr std::uint32_t LoadLibrary = 0x20010003;    ///< Can't load dynamic library
inline constexpr std::uint32_t LocateFunction = 0x20010004; ///< Can't locate function in dynamic library
inline constexpr std::uint32_t ReleaseLibrary = 0x20010005; ///< Can't release dynamic library
inline constexpr std::uint32_t LibraryAlreadyLoaded =
    0x20010006; ///< Attempt to load a new dynamic library over an already loaded library
inline constexpr std::uint32_t SecondTrace = 0x20010007;            ///< Attempt to start a second trace instance
inline constexpr std::uint32_t CallingPath = 0x20010008;            ///< Can't determine the programs calling path
inline constexpr std::uint32_t OpenLanguageFile = 0x20010009;       ///< Can't open the language file
inline constexpr std::uint32_t CorruptedLanguageFile = 0x2001000A;  ///< Language file is corrupted
inline constexpr std::uint32_t BadLanguageId = 0x2001000B;          ///< Bad language identifier
inline constexpr std::uint32_t IniIo = 0x2001000C;                  ///< Can't access INI-file due to an I/O-error
inline constexpr std::uint32_t IniNotFound = 0x2001000D;            ///< INI-File does not exist
inline constexpr std::uint32_t IniTimeout = 0x2001000E;             ///< Timeout during INI-file access
inline constexpr std::uint32_t OutOfMemory = 0x2001000F;            ///< Out of memory
inline constexpr std::uint32_t PreviousCall = 0x20010010;           ///< An error occurred in a previous function call
inline constexpr std::uint32_t IniKeyNotFound = 0x20010011;         ///< Could not find key in INI-file
inline constexpr std::uint32_t IniKeyIsList = 0x20010012;           ///< INI-key is a comma separated list
inline constexpr std::uint32_t BadCharacter = 0x20010013;           ///< Bad character (conversation string -> number)
inline constexpr std::uint32_t IndexOutOfBounds = 0x20010014;       ///< Index out of bounds
inline constexpr std::uint32_t IniNotOpenForWriting = 0x20010015;   ///< INI-file is not opened for writing
inline constexpr std::uint32_t SyncInit = 0x20010016;               ///< Can't initalize a synchronization object
inline constexpr std::uint32_t OperatingSystem = 0x20010017;        ///< General operating system error
inline constexpr std::uint32_t SyncNotInitialized = 0x20010018;     ///< Synchronization object not initialized
inline constexpr std::uint32_t SyncWait = 0x20010019;               ///< Error while wating on synchronization object
inline constexpr std::uint32_t SyncGeneral = 0x2001001A;            ///< General synchronization object error
inline constexpr std::uint32_t ResortMask = 0x2001001B;             ///< Bad format of resort mask
inline constexpr std::uint32_t ResolveHost = 0x2001001C;            ///< Can't resolve host address
inline constexpr std::uint32_t NoAddress = 0x2001001D;              ///< No address information available
inline constexpr std::uint32_t SocketNotConnected = 0x2001001E;     ///< Socket is not connected
inline constexpr std::uint32_t SocketFunction = 0x2001001F;         ///< Error in socket function
inline constexpr std::uint32_t SocketAlreadyConnected = 0x20010020; ///< Socket already connected
inline constexpr std::uint32_t SocketConnect = 0x20010021;          ///< Can't establish socket connection
inline constexpr std::uint32_t SocketTimeout = 0x20010022;          ///< Socket timeout
inline constexpr std::uint32_t SocketTimeoutValue = 0x20010023;     ///< Bad socket timeout value
inline constexpr std::uint32_t SocketClosedByPeer = 0x20010024;     ///< Socket connection closed by peer
inline constexpr std::uint32_t SocketNotListening = 0x20010025;     ///< Socket is not listening
inline constexpr std::uint32_t SocketBadCommand = 0x20010026;       ///< Socket protocol error - bad command
inline constexpr std::uint32_t SocketState = 0x20010027;            ///< Wrong socket state
inline constexpr std::uint32_t SocketOutOfSync = 0x20010028;        ///< Socket out of sync
inline constexpr std::uint32_t IntegerOutOfRange = 0x20010029;      ///< Integer out of range
inline constexpr std::uint32_t SocketInErrorState = 0x2001002A;     ///< Socket already in error state
inline constexpr std::uint32_t SocketAlreadyAttached = 0x2001002B;  ///< Socket already attached
inline constexpr std::uint32_t Protocol = 0x2001002C;               ///< Protocol error
inline constexpr std::uint32_t ConnectionRejected = 0x2001002D;     ///< Connection rejected
inline constexpr std::uint32_t ConnectionRefused = 0x2001002E;      ///< Connection refused
inline constexpr std::uint32_t DataMissing = 0x2001002F;            ///< Data missing
inline constexpr std::uint32_t ThreadLocalStorage = 0x20010030;     ///< Can't allocated thread local storage
inline constexpr std::uint32_t ThreadRunning = 0x20010031;          ///< Thread is still running
inline constexpr std::uint32_t ThreadStart = 0x20010032;            ///< Can't start thread
inline constexpr std::uint32_t NoThread = 0x20010033;               ///< No thread started
inline constexpr std::uint32_t ThreadStopped = 0x20010034;          ///< Thread already stopped
inline constexpr std::uint32_t ObjectInErrorState = 0x20010035;     ///< Object already in error state
inline constexpr std::uint32_t MaxCount = 0x20010036;               ///< Max count reached
inline constexpr std::uint32_t InvalidHandle = 0x20010037;          ///< Invalid handle
inline constexpr std::uint32_t SyncAlreadyInitialized = 0x20010038; ///< Synchronization object already initialized
inline constexpr std::uint32_t SyncCreate = 0x20010039;             ///< Can't create synchronization object
inline constexpr std::uint32_t ThreadInterrupt = 0x2001003A;        ///< Thread interrupt
inline constexpr std::uint32_t WaitInterrupt = 0x2001003B;          ///< Wait interrupt
inline constexpr std::uint32_t PoolAlreadyInitialized = 0x2001003C; ///< Pool already initialized
inline constexpr std::uint32_t PoolNotInitialized = 0x2001003D;     ///< Pool not initialized
inline constexpr std::uint32_t UnexpectedReturnCode = 0x2001003E;   ///< Unexpected return code
inline constexpr std::uint32_t NotSupported = 0x2001003F;           ///< Not supported
inline constexpr std::uint32_t SemaphoreCount = 0x20010040;         ///< Semaphore count of ouf range
inline constexpr std::uint32_t NoModuleInfo =
    0x20010041; ///< Can't resolve error message because there's no module information available
inline constexpr std::uint32_t DnsName = 0x20010042;              ///< Can't determine DNS name
inline constexpr std::uint32_t SslKeyAllocate = 0x20010043;       ///< Can't allocate SSL key
inline constexpr std::uint32_t RsaKeyAssign = 0x20010044;         ///< Can't assign RSA key
inline constexpr std::uint32_t RsaKeyGenerate = 0x20010045;       ///< Can't generate RSA key
inline constexpr std::uint32_t BioAllocate = 0x20010046;          ///< Can't allocate BIO
inline constexpr std::uint32_t SslKeyData = 0x20010047;           ///< Bad SSL key data
inline constexpr std::uint32_t SslKeyExport = 0x20010048;         ///< Can't export SSL key
inline constexpr std::uint32_t SslLibraryInit = 0x20010049;       ///< Can't initialize SSL library
inline constexpr std::uint32_t SslCaAllocate = 0x2001004A;        ///< Can't allocate SSL CA
inline constexpr std::uint32_t CertificateSign = 0x2001004B;      ///< Can't sign certificate
inline constexpr std::uint32_t IssuerName = 0x2001004C;           ///< Can't set issuer name
inline constexpr std::uint32_t CertificateExport = 0x2001004D;    ///< Can't export SSL certificate
inline constexpr std::uint32_t CertificateData = 0x2001004E;      ///< Bad SSL certification data
inline constexpr std::uint32_t CertificateInfo = 0x2001004F;      ///< Can't get certification info
inline constexpr std::uint32_t NoSessionContext = 0x20010050;     ///< No session context
inline constexpr std::uint32_t SslSessionAdd = 0x20010051;        ///< Can't add SSL session
inline constexpr std::uint32_t SessionContextCreate = 0x20010052; ///< Can't create session context
inline constexpr std::uint32_t CertificateSet = 0x20010053;       ///< Can't set certficate
inline constexpr std::uint32_t PrivateKeySet = 0x20010054;        ///< Can't set private key
inline constexpr std::uint32_t SocketNotSecure = 0x20010055;      ///< Socket is not secure
inline constexpr std::uint32_t ShutdownMode = 0x20010056;         ///< Bad shutdown moad
inline constexpr std::uint32_t SslAccept = 0x20010057;            ///< SSL can't accept
inline constexpr std::uint32_t SslConnect = 0x20010058;           ///< SSL can't connect
inline constexpr std::uint32_t SslRead = 0x20010059;              ///< SSL can't read
inline constexpr std::uint32_t SslShutdown = 0x2001005A;          ///< SSL can't shutdown
inline constexpr std::uint32_t SslWrite = 0x2001005B;             ///< SSL can't write
inline constexpr std::uint32_t SslGeneral = 0x2001005C;           ///< SSL error
inline constexpr std::uint32_t SocketAlreadySecure = 0x2001005D;  ///< Socket is already secure
inline constexpr std::uint32_t SslHandleAllocate = 0x2001005E;    ///< Can't allocate SSL handle
inline constexpr std::uint32_t SslSessionReuse = 0x2001005F;      ///< Can't reuse SSL session
inline constexpr std::uint32_t NotUtf8 = 0x20010060;              ///< String is not UTF8 encoded
inline constexpr std::uint32_t NullPointer = 0x20010061;          ///< Attempt to reference NULL pointer
inline constexpr std::uint32_t SystemTime = 0x20010062;           ///< System time function failed
} // namespace Errors

} // namespace VLK

#endif
