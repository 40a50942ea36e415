#include <cstring>
#include <utility>

#include "Platform/SnmpUtil.h"
#include "Snmp/Host/Debug.h"
#include "Snmp/Mib/MibTreeLock.h"

// The evaluation of one variable binding against the tree.

namespace {

constexpr std::uint32_t kNoError = SNMP_ERRORSTATUS_NOERROR;

/// Whether a value may own memory.
bool OwnsMemory(std::uint8_t type) noexcept
{
    return type == ASN_OCTETSTRING || type == ASN_BITS || type == ASN_OBJECTIDENTIFIER || type == ASN_IPADDRESS ||
           type == ASN_OPAQUE;
}

/// Replaces an OID by a copy of the arcs. In the block that is there, if it has the size.
void ReplaceOid(AsnObjectIdentifier & oid, SOidView source) noexcept
{
    if (oid.idLength == source.length && oid.ids != nullptr) {
        std::memcpy(oid.ids, source.arcs, source.length * sizeof(std::uint32_t));
        return;
    }
    SnmpUtilOidFree(&oid);
    const AsnObjectIdentifier view = source.Oid();
    SnmpUtilOidCpy(&oid, &view);
}

/// Replaces the binding by OID and value of a constant, as freeing and copying would.
void Reply(RFC1157VarBind & binding, SMibCell const & constant) noexcept
{
    ReplaceOid(binding.name, constant.Key());
    if (OwnsMemory(binding.value.asnType)) SnmpUtilAsnAnyFree(&binding.value);
    if (OwnsMemory(constant.asnType)) {
        const AsnAny value = constant.Value();
        SnmpUtilAsnAnyCpy(&binding.value, &value);
    } else {
        binding.value = {};
        binding.value.asnType = constant.asnType;
        binding.value.asnValue.unsigned32 = constant.content;
    }
}

void Reply(RFC1157VarBind & binding, RFC1157VarBind const & source) noexcept
{
    SnmpUtilVarBindFree(&binding);
    SnmpUtilVarBindCpy(&binding, &source);
}

} // namespace

/// Under the lock. What the callback deletes stays until it is back.
std::uint32_t CMibTree::CallBack(MibCallback const & callback, MibEntry & entry, RFC1157VarBind & binding, MibMode mode)
{
    return MibCallback(callback).Call(m_access.agent(*this), &entry, &binding, mode);
}

int CMibTree::MibGetVarbind(RFC1157VarBind * binding, std::uint32_t requestType, std::uint32_t * status,
                            std::string * objectName)
{
    *status = SNMP_ERRORSTATUS_NOSUCHNAME;
    if (CDebug::Enabled()) {
        std::string oid;
        CDebug::Trace(4, "\nCSnmpMibTree (GET)  : Get varbind for OID=%s", OidToStr(oid, &binding->name));
    }
    int found = 0;
    {
        const CLock lock(m_treeLock);
        SMibCell const * cell = nullptr;
        if (requestType == SNMP_PDU_GET) {
            if (CDebug::Enabled()) CDebug::Trace(4, "\nCSnmpMibTree (GET)  :   request type=GET");
            cell = m_objects.Find(SOidView(binding->name));
        } else if (requestType == SNMP_PDU_GETNEXT) {
            if (CDebug::Enabled()) CDebug::Trace(4, "\nCSnmpMibTree (GET)  :   request type=GETNEXT");
            cell = m_objects.FindAbove(SOidView(binding->name));
        }
        // What lies under the empty OID came from a text that is none, and counts as no object.
        const bool isObject = cell != nullptr && cell->IsObject();
        if (cell != nullptr && (isObject ? cell->object->entry.varbind.name.idLength : cell->length) != 0) {
            found = 1;
            *status = kNoError;
            if (objectName != nullptr) objectName->assign(cell->Name());
            if (CDebug::Enabled()) {
                CDebug::Trace(4, "\nCSnmpMibTree (GET)  :   -> object found, name=\"%s\"",
                              std::string(cell->Name()).c_str());
            }
            if (isObject) {
                *status = EvaluateGet(cell->object->entry, *binding);
            } else {
                if (CDebug::Enabled())
                    CDebug::Trace(5, "\nCSnmpMibTree (GET)  : reply that object by caller's varbind");
                Reply(*binding, *cell);
            }
        }
    }
    if (CDebug::Enabled()) CDebug::Trace(4, "\nCSnmpMibTree (GET)  : item found=%d", found);
    return found;
}

/// Under the lock. The callbacks work on a copy, which then is the answer.
std::uint32_t CMibTree::EvaluateGet(MibEntry const & stored, RFC1157VarBind & binding)
{
    MibEntry local(stored);
    std::uint32_t status = kNoError;
    if (local.CheckGetFunc.IsSet()) {
        if (CDebug::Enabled())
            CDebug::Trace(4, "\nCSnmpMibTree (GET)  :   CheckGetFunc() callback found, execute it...");
        status = CallBack(local.CheckGetFunc, local, local.varbind, MibMode::CheckGet);
    }
    if (local.GetSetChecksetFuncEx.IsSet() && status == kNoError) {
        if (CDebug::Enabled())
            CDebug::Trace(4, "\nCSnmpMibTree (GET)  :   GetSetChecksetFuncEx() callback found, execute it...");
        status = CallBack(local.GetSetChecksetFuncEx, local, local.varbind, MibMode::Get);
    }
    if (local.GetFunc.IsSet() && status == kNoError) {
        if (CDebug::Enabled()) CDebug::Trace(4, "\nCSnmpMibTree (GET)  :   GetFunc() callback found, execute it...");
        status = CallBack(local.GetFunc, local, local.varbind, MibMode::Get);
    }
    if (CDebug::Enabled()) CDebug::Trace(5, "\nCSnmpMibTree (GET)  : reply that object by caller's varbind");
    Reply(binding, local.varbind);
    return status;
}

int CMibTree::MibCheckSetVarbind(RFC1157VarBind * binding, std::uint32_t * status, std::string * objectName)
{
    *status = SNMP_ERRORSTATUS_NOSUCHNAME;
    const CLock lock(m_treeLock);
    SMibCell * const cell = m_objects.Find(SOidView(binding->name));
    if (cell == nullptr) return 0;
    *status = kNoError;
    if (objectName != nullptr) objectName->assign(cell->Name());
    if (!cell->IsObject() || !cell->object->entry.IsReadWrite()) {
        *status = SNMP_ERRORSTATUS_READONLY;
        if (CDebug::Enabled()) CDebug::Trace(3, "\nCSnmpMibTree (CHSET): read-only object -> SET not possible");
        return 1;
    }
    *status = CheckSet(cell->object->entry, *binding);
    return 1;
}

std::uint32_t CMibTree::CheckSet(MibEntry & entry, RFC1157VarBind & binding)
{
    const CMibStore::CHold hold(m_objects);
    std::uint32_t status = kNoError;
    if (entry.GetSetFunc.IsSet()) {
        if (CDebug::Enabled()) CDebug::Trace(4, "\nCSnmpMibTree (CHSET):   GetSetFunc() callback found, execute it...");
        status = CallBack(entry.GetSetFunc, entry, binding, MibMode::CheckSet);
    } else if (m_globalCheckSetFunc.IsSet()) {
        if (CDebug::Enabled())
            CDebug::Trace(4, "\nCSnmpMibTree (CHSET):   Global CHECKSET callback found and no other callback "
                             "available, execute it...");
        status = CallBack(m_globalCheckSetFunc, entry, binding, MibMode::CheckSet);
    }
    if (entry.GetSetChecksetFuncEx.IsSet() && status == kNoError) {
        if (CDebug::Enabled())
            CDebug::Trace(4, "\nCSnmpMibTree (CHSET):   GetSetChecksetFuncEx() callback found, execute it...");
        status = CallBack(entry.GetSetChecksetFuncEx, entry, binding, MibMode::CheckSet);
    }
    return status;
}

int CMibTree::MibSetVarbind(RFC1157VarBind * binding, std::uint32_t * status)
{
    *status = SNMP_ERRORSTATUS_NOSUCHNAME;
    const CLock lock(m_treeLock);
    SMibCell * const cell = m_objects.Find(SOidView(binding->name));
    if (cell == nullptr) return 0;
    *status = kNoError;
    if (!cell->IsObject() || !cell->object->entry.IsReadWrite()) {
        *status = SNMP_ERRORSTATUS_READONLY;
        if (CDebug::Enabled()) CDebug::Trace(3, "\nCSnmpMibTree (SET)  : SNMP SET not enabled -> read-only object");
        return 1;
    }
    *status = CommitSet(cell->object->entry, *binding);
    return 1;
}

std::uint32_t CMibTree::CommitSet(MibEntry & entry, RFC1157VarBind & binding)
{
    const CMibStore::CHold hold(m_objects);
    std::uint32_t status = kNoError;
    if (entry.GetSetChecksetFuncEx.IsSet()) {
        if (CDebug::Enabled())
            CDebug::Trace(4, "\nCSnmpMibTree (SET)  :   GetSetChecksetFuncEx() callback found, execute it...");
        status = CallBack(entry.GetSetChecksetFuncEx, entry, binding, MibMode::Set);
    } else if (entry.SetFunc.IsSet()) {
        if (CDebug::Enabled()) CDebug::Trace(4, "\nCSnmpMibTree (SET)  :   SetFunc() callback found, execute it...");
        status = CallBack(entry.SetFunc, entry, binding, MibMode::Set);
    }
    if (status == kNoError && !entry.SetBinding(binding)) status = SNMP_ERRORSTATUS_GENERR;
    return status;
}
