#include "RegionHandler.h"

#include "GetJob.h"
#include "Log.h"
#include "SetJob.h"

namespace Service {

namespace {

template <class TJob>
void Submit(SRegion & region, TJob job)
{
    job->Delegate();
    region.loop.Submit(region.extension, JobPtr(job.release()));
}

int Walk(SRegion & region, netsnmp_agent_request_info & info, netsnmp_request_info * requests)
{
    auto job = region.walks.Take();
    job->Begin(info, requests, region.root);
    Submit(region, std::move(job));
    return SNMP_ERR_NOERROR;
}

int RefuseUnsettable(netsnmp_request_info * requests)
{
    for (netsnmp_request_info * request = requests; request != nullptr; request = request->next)
        if (const int status = UnsettableStatus(*request); status != SNMP_ERR_NOERROR)
            netsnmp_request_set_error(request, status);
    return SNMP_ERR_NOERROR;
}

int Set(SRegion & region, netsnmp_agent_request_info & info, netsnmp_request_info * requests)
{
    auto job = std::make_unique<CSetJob>(info, requests);
    if (!job->IsComplete()) return SNMP_ERR_RESOURCEUNAVAILABLE;
    Submit(region, std::move(job));
    return SNMP_ERR_NOERROR;
}

int Handle(SRegion & region, netsnmp_agent_request_info & info, netsnmp_request_info * requests)
{
    switch (info.mode) {
    case MODE_GET:
        // Of a GETNEXT that includes its start Net-SNMP makes a GET first, but couldn't go on from there after
        // an answer that was held back. The walk looks at the start itself.
        if (info.asp->pdu->command == SNMP_MSG_GET) Submit(region, std::make_unique<CGetJob>(info, requests));
        break;
    case MODE_GETNEXT:
    case MODE_GETBULK:
        return Walk(region, info, requests);
    case MODE_SET_RESERVE1:
        return RefuseUnsettable(requests);
    case MODE_SET_ACTION:
        // The extension checks all bindings and sets them in one call. Here a failure still makes the whole
        // request fail; after the commit step nothing would be undone.
        return Set(region, info, requests);
    default:
        break;
    }
    return SNMP_ERR_NOERROR;
}

extern "C" int HandleRegion(netsnmp_mib_handler *, netsnmp_handler_registration * registration,
                            netsnmp_agent_request_info * info, netsnmp_request_info * requests) noexcept
try {
    return Handle(*static_cast<SRegion *>(registration->my_reg_void), *info, requests);
} catch (...) {
    CLog::Write(EPriority::Error, "no memory for a request");
    return SNMP_ERR_RESOURCEUNAVAILABLE;
}

std::string Text(CArcs const & arcs)
{
    std::string text;
    for (const Arc arc : arcs)
        text += (text.empty() ? "" : ".") + std::to_string(arc);
    return text;
}

} // namespace

bool RegisterRegion(SRegion & region, std::string & error)
{
    CArcs const & root = region.root;
    const std::vector<oid> wide(root.begin(), root.end());
    netsnmp_handler_registration * registration = netsnmp_create_handler_registration(
        "kxra-extension", HandleRegion, wide.data(), wide.size(), HANDLER_CAN_RWRITE | HANDLER_CAN_GETBULK);
    if (registration != nullptr) registration->my_reg_void = &region;
    if (registration != nullptr && netsnmp_register_handler(registration) == MIB_REGISTERED_OK) return true;
    error = "register region " + Text(root) + " of " + region.extension.File() + ": it is taken already";
    return false;
}

} // namespace Service
