/// TestExtension: a small extension library for tests that need a real one.
///
/// Two regions, A = 1.3.6.1.4.1.88417.99.1 and B = 1.3.6.1.4.1.88417.99.2. All scalars end in .0.
///
/// | OID      | Name             | Type             | Access | Value                                                 |
/// |----------|------------------|------------------|--------|-------------------------------------------------------|
/// | A.1.1.0  | testName         | OctetString      | ro     | "test extension"                                      |
/// | A.1.2.0  | testNumber       | Integer          | ro     | -42                                                   |
/// | A.1.3.0  | testCounter32    | Counter32        | ro     | 4000000000                                            |
/// | A.1.4.0  | testGauge        | Gauge32          | ro     | 4294967295                                            |
/// | A.1.5.0  | testTicks        | Timeticks        | ro     | 123456                                                |
/// | A.1.6.0  | testAddress      | IpAddress        | ro     | 192.0.2.17                                            |
/// | A.1.7.0  | testObjectId     | ObjectIdentifier | ro     | B                                                     |
/// | A.1.8.0  | testCounter64    | Counter64        | ro     | 18446744073709551557                                  |
/// | A.1.9.0  | testEmpty        | OctetString      | ro     | no bytes                                              |
/// | A.1.10.0 | testBinary       | OctetString      | ro     | 00 01 80 FF                                           |
/// | A.1.11.0 | testOpaque       | Opaque           | ro     | 9F 78 04 42 F6 00 00 (the float 123.0)                |
/// | A.1.12.0 | testNull         | Null             | ro     | none: the object has no value                         |
/// | A.1.13.0 | testUInteger32   | UInteger32       | ro     | 3000000000                                            |
/// | A.2.1.0  | testGetCount     | Counter32        | ro     | how often it was read, this time included             |
/// | A.2.2.0  | testWritable     | Integer          | rw     | 7 at first; SET takes Integers from 0 to 1000, else   |
/// |          |                  |                  |        | wrongType (7) or wrongValue (10). All four plain      |
/// |          |                  |                  |        | callbacks                                             |
/// | A.2.3.0  | testStored       | OctetString      | rw     | "stored" at first; no callbacks, takes any value      |
/// | A.2.4.0  | testExtended     | Integer          | rw     | 9 at first; as testWritable, by the extended callback |
/// | A.2.5.0  | testFailing      | Integer          | ro     | 5, or the error status that testFailStatus says       |
/// | A.2.6.0  | testFailStatus   | Integer          | rw     | 0 at first                                            |
/// | A.2.7.0  | testCommitStatus | Integer          | rw     | 0; SET n: the check passes, the commit fails with n   |
/// | A.2.8.0  | testCheckStatus  | Integer          | rw     | 0; SET n: the check fails with n                      |
/// | A.2.9.0  | testThrowing     | Integer          | ro     | none: its callback throws, so genErr (5)              |
/// | A.3.1.0  | testSlow         | Integer          | ro     | calls so far; answers after TEST_EXTENSION_SLOW_MS    |
/// |          |                  |                  |        | milliseconds or when the agent is closed              |
/// | A.4.1.0  | testSendTraps    | Integer          | rw     | 0; SET n sends n traps at once, n from 0 to 100000    |
/// | A.4.2.0  | testTrapsSent    | Counter32        | ro     | traps sent so far                                     |
/// | A.5.1.1.N| testRowIndex     | Integer          | ro     | N, from 1 to TEST_EXTENSION_ROWS                      |
/// | A.5.1.2.N| testRowName      | OctetString      | ro     | "row N"                                               |
/// | A.5.1.3.N| testRowValue     | Counter32        | ro     | 10 * N                                                |
/// | B.1.1.0  | secondName       | OctetString      | ro     | "second region"                                       |
/// | B.1.2.0  | secondNumber     | Integer          | ro     | 2                                                     |
///
/// Trap i of a SET (from 1; it goes on counting with the next SET): enterprise A.4, specific trap i, bindings
/// A.4.3.0 = Integer i and A.4.4.0 = OctetString "trap i".
///
/// Environment, read when the agent is made: TEST_EXTENSION_SLOW_MS (default 200), TEST_EXTENSION_ROWS (default
/// 10), TEST_EXTENSION_INIT_MS (default 0: milliseconds for which InitializeMib refuses requests),
/// TEST_EXTENSION_NO_REGION (1: no region, so SnmpExtensionInit fails).

#include <array>
#include <cstdint>
#include <cstdlib>
#include <new>
#include <stdexcept>
#include <string>

#include "Platform/SnmpUtil.h"
#include "Snmp/Frame/Extension.h"
#include "Snmp/Frame/SnmpAgent.h"

namespace {

#define REGION_A "1.3.6.1.4.1.88417.99.1"
#define REGION_B "1.3.6.1.4.1.88417.99.2"

constexpr std::uint32_t kReadOnly = static_cast<std::uint32_t>(MibAccess::ReadOnly);
constexpr std::uint32_t kReadWrite = static_cast<std::uint32_t>(MibAccess::ReadWrite);
constexpr std::int32_t kMaxTraps = 100000;

std::uint32_t EnvironmentNumber(char const * name, std::uint32_t otherwise)
{
    char const * const text = std::getenv(name);
    return text != nullptr ? static_cast<std::uint32_t>(std::strtoul(text, nullptr, 10)) : otherwise;
}

class CTestAgent final : public CSnmpAgent {
public:
    CTestAgent()
    {
        Platform::WaitHandle closing = nullptr;
        if (Platform::NewEvent(closing, /*initialState=*/false, /*manualReset=*/true) == Platform::Success)
            m_closing.Reset(closing);
    }

    std::int32_t InitSupportedRegions() override
    {
        if (EnvironmentNumber("TEST_EXTENSION_NO_REGION", 0) != 0) return 0;
        AddMibRegion(REGION_A, "first");
        AddMibRegion(REGION_B, "second");
        return 1;
    }

    void InitializeMib() override
    {
        Platform::ResetEvent(m_closing.Get());
        Platform::WaitForOne(m_shutdownEvent.Get(), m_initMs, /*wakeable=*/false);
        InsertConstants();
        InsertVariables();
        InsertTable();
        MibInsertConstOid(REGION_B ".1.1.0", "secondName", "second region", ASN_OCTETSTRING, kReadOnly);
        MibInsertConstOid(REGION_B ".1.2.0", "secondNumber", 2, ASN_INTEGER, kReadOnly);
    }

    void CloseMib() override { Platform::SetEvent(m_closing.Get()); }

    // Callbacks. They run under the request lock, so the plain members below need no other.

    std::uint32_t GetCount(RFC1157VarBind * binding, std::uint8_t)
    {
        SetVarBindNumber(binding, ++m_getCount, ASN_COUNTER32);
        return SNMP_ERRORSTATUS_NOERROR;
    }

    std::uint32_t CheckGetWritable(RFC1157VarBind *, std::uint8_t) { return SNMP_ERRORSTATUS_NOERROR; }
    std::uint32_t GetWritable(RFC1157VarBind * binding, std::uint8_t) { return GiveNumber(binding, m_writable); }
    std::uint32_t CheckWritable(RFC1157VarBind * binding, std::uint8_t) { return CheckRange(binding); }
    std::uint32_t SetWritable(RFC1157VarBind * binding, std::uint8_t)
    {
        m_writable = binding->value.asnValue.number;
        return SNMP_ERRORSTATUS_NOERROR;
    }

    std::uint32_t Extended(MibEntry * entry, RFC1157VarBind * binding, std::uint8_t mode)
    {
        std::int32_t & number = *static_cast<std::int32_t *>(entry->context);
        switch (static_cast<MibMode>(mode)) {
        case MibMode::Get:
            return GiveNumber(binding, number);
        case MibMode::CheckSet:
            return CheckRange(binding);
        case MibMode::Set:
            number = binding->value.asnValue.number;
            return SNMP_ERRORSTATUS_NOERROR;
        default:
            return SNMP_ERRORSTATUS_GENERR;
        }
    }

    std::uint32_t GetFailing(RFC1157VarBind * binding, std::uint8_t)
    {
        GiveNumber(binding, 5);
        return static_cast<std::uint32_t>(m_failStatus);
    }
    std::uint32_t GetFailStatus(RFC1157VarBind * binding, std::uint8_t) { return GiveNumber(binding, m_failStatus); }
    std::uint32_t SetFailStatus(RFC1157VarBind * binding, std::uint8_t)
    {
        m_failStatus = binding->value.asnValue.number;
        return SNMP_ERRORSTATUS_NOERROR;
    }

    std::uint32_t GetZero(RFC1157VarBind * binding, std::uint8_t) { return GiveNumber(binding, 0); }
    std::uint32_t FailByValue(RFC1157VarBind * binding, std::uint8_t)
    {
        return static_cast<std::uint32_t>(binding->value.asnValue.number);
    }

    std::uint32_t GetThrowing(RFC1157VarBind *, std::uint8_t) { throw std::runtime_error("no value"); }

    std::uint32_t GetSlow(RFC1157VarBind * binding, std::uint8_t)
    {
        Platform::WaitForOne(m_closing.Get(), m_slowMs, /*wakeable=*/false);
        return GiveNumber(binding, ++m_slowCalls);
    }

    std::uint32_t GetTrapsSent(RFC1157VarBind * binding, std::uint8_t)
    {
        SetVarBindNumber(binding, m_trapsSent, ASN_COUNTER32);
        return SNMP_ERRORSTATUS_NOERROR;
    }
    std::uint32_t CheckSendTraps(RFC1157VarBind * binding, std::uint8_t)
    {
        if (binding->value.asnType != ASN_INTEGER) return SNMP_ERRORSTATUS_WRONGTYPE;
        const std::int32_t count = binding->value.asnValue.number;
        return count < 0 || count > kMaxTraps ? SNMP_ERRORSTATUS_WRONGVALUE : SNMP_ERRORSTATUS_NOERROR;
    }
    std::uint32_t SendTraps(RFC1157VarBind * binding, std::uint8_t)
    {
        for (std::int32_t left = binding->value.asnValue.number; left > 0; --left)
            SendTrap(++m_trapsSent);
        return SNMP_ERRORSTATUS_NOERROR;
    }

private:
    static std::uint32_t GiveNumber(RFC1157VarBind * binding, std::int32_t number)
    {
        SetVarBindNumber(binding, static_cast<std::uint32_t>(number), ASN_INTEGER);
        return SNMP_ERRORSTATUS_NOERROR;
    }

    static std::uint32_t CheckRange(RFC1157VarBind const * binding)
    {
        if (binding->value.asnType != ASN_INTEGER) return SNMP_ERRORSTATUS_WRONGTYPE;
        const std::int32_t number = binding->value.asnValue.number;
        return number < 0 || number > 1000 ? SNMP_ERRORSTATUS_WRONGVALUE : SNMP_ERRORSTATUS_NOERROR;
    }

    void InsertConstants()
    {
        static constexpr std::uint8_t kBinary[] = {0x00, 0x01, 0x80, 0xFF};
        static constexpr std::uint8_t kOpaqueFloat[] = {0x9F, 0x78, 0x04, 0x42, 0xF6, 0x00, 0x00};
        MibInsertConstOid(REGION_A ".1.1.0", "testName", "test extension", ASN_OCTETSTRING, kReadOnly);
        MibInsertConstOid(REGION_A ".1.2.0", "testNumber", static_cast<std::uint32_t>(-42), ASN_INTEGER, kReadOnly);
        MibInsertConstOid(REGION_A ".1.3.0", "testCounter32", 4000000000u, ASN_COUNTER32, kReadOnly);
        MibInsertConstOid(REGION_A ".1.4.0", "testGauge", 4294967295u, ASN_GAUGE32, kReadOnly);
        MibInsertConstOid(REGION_A ".1.5.0", "testTicks", 123456, ASN_TIMETICKS, kReadOnly);
        MibInsertConstOid(REGION_A ".1.6.0", "testAddress", "192.0.2.17", ASN_IPADDRESS, kReadOnly);
        MibInsertConstOid(REGION_A ".1.7.0", "testObjectId", REGION_B, ASN_OBJECTIDENTIFIER, kReadOnly);
        InsertCounter64(REGION_A ".1.8.0", "testCounter64", 18446744073709551557u);
        MibInsertConstOid(REGION_A ".1.9.0", "testEmpty", "", ASN_OCTETSTRING, kReadOnly);
        MibInsertConstTableOid(REGION_A ".1.10.0", "testBinary", kBinary, sizeof kBinary, ASN_OCTETSTRING);
        MibInsertConstTableOid(REGION_A ".1.11.0", "testOpaque", kOpaqueFloat, sizeof kOpaqueFloat, ASN_OPAQUE);
        MibInsertConstOid(REGION_A ".1.12.0", "testNull", std::uint32_t{0}, ASN_NULL, kReadOnly);
        MibInsertConstOid(REGION_A ".1.13.0", "testUInteger32", 3000000000u, ASN_UINTEGER32, kReadOnly);
    }

    void InsertCounter64(char const * oid, char const * name, std::uint64_t value)
    {
        CVarBind object;
        StrToOid(oid, &object->name);
        object->value.asnType = ASN_COUNTER64;
        object->value.asnValue.counter64.quadPart = value;
        MibInsertEntry(object.Get(), name, kReadOnly, {}, {}, {}, {}, nullptr);
    }

    void InsertVariables()
    {
        using Self = CTestAgent;
        MibInsertVarOid(REGION_A ".2.1.0", "testGetCount", ASN_COUNTER32, Callback<&Self::GetCount>(), {}, {}, {},
                        kReadOnly, nullptr);
        MibInsertVarOid(REGION_A ".2.2.0", "testWritable", ASN_INTEGER, Callback<&Self::GetWritable>(),
                        Callback<&Self::SetWritable>(), Callback<&Self::CheckWritable>(),
                        Callback<&Self::CheckGetWritable>(), kReadWrite, nullptr);
        MibInsertConstOid(REGION_A ".2.3.0", "testStored", "stored", ASN_OCTETSTRING, kReadWrite);
        COid extended(REGION_A ".2.4.0");
        MibInsertEntryEx(extended.Get(), "testExtended", Callback<&Self::Extended>(), ASN_INTEGER, &m_extended,
                         kReadWrite);
        MibInsertVarOid(REGION_A ".2.5.0", "testFailing", ASN_INTEGER, Callback<&Self::GetFailing>(), {}, {}, {},
                        kReadOnly, nullptr);
        MibInsertVarOid(REGION_A ".2.6.0", "testFailStatus", ASN_INTEGER, Callback<&Self::GetFailStatus>(),
                        Callback<&Self::SetFailStatus>(), {}, {}, kReadWrite, nullptr);
        MibInsertVarOid(REGION_A ".2.7.0", "testCommitStatus", ASN_INTEGER, Callback<&Self::GetZero>(),
                        Callback<&Self::FailByValue>(), {}, {}, kReadWrite, nullptr);
        MibInsertVarOid(REGION_A ".2.8.0", "testCheckStatus", ASN_INTEGER, Callback<&Self::GetZero>(), {},
                        Callback<&Self::FailByValue>(), {}, kReadWrite, nullptr);
        MibInsertVarOid(REGION_A ".2.9.0", "testThrowing", ASN_INTEGER, Callback<&Self::GetThrowing>(), {}, {}, {},
                        kReadOnly, nullptr);
        MibInsertVarOid(REGION_A ".3.1.0", "testSlow", ASN_INTEGER, Callback<&Self::GetSlow>(), {}, {}, {}, kReadOnly,
                        nullptr);
        MibInsertVarOid(REGION_A ".4.1.0", "testSendTraps", ASN_INTEGER, Callback<&Self::GetZero>(),
                        Callback<&Self::SendTraps>(), Callback<&Self::CheckSendTraps>(), {}, kReadWrite, nullptr);
        MibInsertVarOid(REGION_A ".4.2.0", "testTrapsSent", ASN_COUNTER32, Callback<&Self::GetTrapsSent>(), {}, {}, {},
                        kReadOnly, nullptr);
    }

    void InsertTable()
    {
        for (std::uint32_t row = 1; row <= m_rows; ++row) {
            MibInsertConstTableOid(REGION_A ".5.1.1.0", "testRowIndex", row, ASN_INTEGER, row);
            MibInsertConstTableOid(REGION_A ".5.1.2.0", "testRowName", ("row " + std::to_string(row)).c_str(),
                                   ASN_OCTETSTRING, row);
            MibInsertConstTableOid(REGION_A ".5.1.3.0", "testRowValue", 10 * row, ASN_COUNTER32, row);
        }
    }

    void SendTrap(std::uint32_t number)
    {
        CVarBind numberBinding;
        StrToOid(REGION_A ".4.3.0", &numberBinding->name);
        SetVarBindNumber(numberBinding.Get(), number, ASN_INTEGER);
        CVarBind textBinding;
        StrToOid(REGION_A ".4.4.0", &textBinding->name);
        SetVarBindFromText(textBinding.Get(), ("trap " + std::to_string(number)).c_str(), ASN_OCTETSTRING);
        std::array<RFC1157VarBind, 2> bindings{*numberBinding.Get(), *textBinding.Get()};
        const RFC1157VarBindList list{bindings.data(), static_cast<std::uint32_t>(bindings.size())};
        CreateTrap(REGION_A ".4", number, &list);
    }

    const std::uint32_t m_slowMs = EnvironmentNumber("TEST_EXTENSION_SLOW_MS", 200);
    const std::uint32_t m_rows = EnvironmentNumber("TEST_EXTENSION_ROWS", 10);
    const std::uint32_t m_initMs = EnvironmentNumber("TEST_EXTENSION_INIT_MS", 0);
    Platform::CWaitableHandle m_closing; ///< manual reset; ends the wait of testSlow
    std::uint32_t m_getCount = 0;
    std::int32_t m_writable = 7;
    std::int32_t m_extended = 9;
    std::int32_t m_failStatus = 0;
    std::int32_t m_slowCalls = 0;
    std::uint32_t m_trapsSent = 0;
};

} // namespace

CSnmpAgent * NewExtensionAgent()
{
    return new (std::nothrow) CTestAgent;
}

char const * ExtensionRegistryName()
{
    return "Test Extension";
}

char const * ExtensionRegion()
{
    return nullptr;
}
