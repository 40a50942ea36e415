#include "MibFixture.h"

TArcs ArcsOf(AsnObjectIdentifier const & oid)
{
    std::uint32_t const * const ids = oid.ids;
    return TArcs(ids, ids + oid.idLength);
}

std::string TextOf(AsnObjectIdentifier const & oid)
{
    std::string text;
    return OidToStr(text, &oid);
}

std::string ValueText(RFC1157VarBind const & binding)
{
    std::string text;
    return VarBindValueToText(text, &binding.value);
}

std::string Octets(AsnAny const & value)
{
    std::uint8_t const * const bytes = value.asnValue.string.stream;
    return std::string(bytes, bytes + value.asnValue.string.length);
}

SReply Ask(CMibTree & tree, std::string const & oid, std::uint32_t requestType)
{
    CVarBind binding;
    FillBinding(binding, oid);
    SReply reply;
    reply.found = tree.MibGetVarbind(binding.Get(), requestType, &reply.status, &reply.name);
    reply.oid = TextOf(binding->name);
    reply.value = ValueText(*binding.Get());
    return reply;
}

std::vector<std::string> Walk(CMibTree & tree)
{
    std::vector<std::string> oids;
    CVarBind binding;
    std::uint32_t status = 0;
    while (tree.MibGetVarbind(binding.Get(), SNMP_PDU_GETNEXT, &status, nullptr) != 0) {
        oids.push_back(TextOf(binding->name));
    }
    return oids;
}

void FillBinding(CVarBind & binding, std::string const & oid, std::uint32_t number, std::uint32_t type)
{
    StrToOid(oid.c_str(), &binding->name);
    if (type != ASN_NULL) SetVarBindNumber(binding.Get(), number, type);
}

SReply CheckSet(CMibTree & tree, std::string const & oid, std::uint32_t number)
{
    CVarBind binding;
    FillBinding(binding, oid, number, ASN_INTEGER);
    SReply reply;
    reply.found = tree.MibCheckSetVarbind(binding.Get(), &reply.status, &reply.name);
    reply.oid = TextOf(binding->name);
    reply.value = ValueText(*binding.Get());
    return reply;
}

SReply Commit(CMibTree & tree, std::string const & oid, std::uint32_t number)
{
    CVarBind binding;
    FillBinding(binding, oid, number, ASN_INTEGER);
    SReply reply;
    reply.found = tree.MibSetVarbind(binding.Get(), &reply.status);
    reply.oid = TextOf(binding->name);
    reply.value = ValueText(*binding.Get());
    return reply;
}

CRecordedTrace::CRecordedTrace()
{
    Fake::ClearTrace();
    Fake::EnableTrace(true);
}

CRecordedTrace::~CRecordedTrace()
{
    Fake::EnableTrace(false);
    Fake::ClearTrace();
}

std::vector<std::string> CRecordedTrace::Lines(unsigned highestLevel) const
{
    std::vector<std::string> lines;
    for (Fake::STraceLine const & line : Fake::TraceLines()) {
        if (line.level <= highestLevel) lines.push_back(std::to_string(line.level) + "|" + line.text);
    }
    return lines;
}
