#include "Mib/EventsModule.h"

#include <algorithm>
#include <set>
#include <stdexcept>
#include <vector>

#include "Snmp/Include/Dictionaries.h"

namespace Mib {

namespace {

constexpr std::string_view kPrefix = "kxrEvent";

constexpr std::string_view kHead = R"(KESTRIX-RAID-EVENTS-MIB DEFINITIONS ::= BEGIN

--
-- The events of the Kestrix RAID core service, each as the notification that
-- the Kestrix RAID SNMP agent makes of it.
--
-- The events 1 to 5 are in KESTRIX-RAID-MIB, as is everything else of the
-- agent.
--

IMPORTS
    MODULE-IDENTITY, NOTIFICATION-TYPE
        FROM SNMPv2-SMI
    MODULE-COMPLIANCE, NOTIFICATION-GROUP
        FROM SNMPv2-CONF
    kestrixRaid, kxrNotifications, kxrTrapServerName, kxrTrapTime,
    kxrTrapParam1, kxrTrapParam2, kxrTrapParam3, kxrTrapParam4,
    kxrTrapParam5, kxrTrapParam6
        FROM KESTRIX-RAID-MIB;

kestrixRaidEvents MODULE-IDENTITY
    LAST-UPDATED "202611210000Z"
    ORGANIZATION "Norvane"
    CONTACT-INFO
            "Norvane, Kestrix RAID management
             E-mail: kestrix-raid@norvane.example"
    DESCRIPTION
            "The events of the Kestrix RAID core service as notifications.
             The name of a notification is that of its event in the core
             service, which its description tells, with kxrEvent before
             it."
    REVISION     "202611210000Z"
    DESCRIPTION
            "First edition."
    ::= { kestrixRaid 4 }

)";

constexpr std::string_view kConformance = R"(--
-- Conformance
--

kestrixRaidEventCompliances OBJECT IDENTIFIER ::= { kestrixRaidEvents 1 }
kestrixRaidEventGroups      OBJECT IDENTIFIER ::= { kestrixRaidEvents 2 }

kestrixRaidEventCompliance MODULE-COMPLIANCE
    STATUS      current
    DESCRIPTION
            "What every agent of this kind provides."
    MODULE
    MANDATORY-GROUPS { kestrixRaidEventGroup }
    ::= { kestrixRaidEventCompliances 1 }

kestrixRaidEventGroup NOTIFICATION-GROUP
    NOTIFICATIONS {
)";

constexpr std::string_view kEnd = R"( }
    STATUS      current
    DESCRIPTION
            "The events of the core service."
    ::= { kestrixRaidEventGroups 1 }

END
)";

struct SNotification {
    std::int32_t id;
    std::string_view event;
    std::string name;
};

char InCase(char c, bool capital)
{
    if (capital) return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

/// The words of an event's name, each with a capital.
std::vector<std::string> WordsOf(std::string_view eventName)
{
    std::vector<std::string> words(1);
    for (char const c : eventName) {
        if (c == '_')
            words.emplace_back();
        else
            words.back() += InCase(c, /*capital=*/words.back().empty());
    }
    return words;
}

bool IsDescriptor(std::string_view name)
{
    auto const isAllowed = [](char c) {
        return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9');
    };
    return name.size() > kPrefix.size() && name.size() <= kLongestDescriptor &&
           std::all_of(name.begin(), name.end(), isAllowed);
}

/// The descriptors must differ in more than capitals.
std::string Folded(std::string name)
{
    std::transform(name.begin(), name.end(), name.begin(), [](char c) { return InCase(c, /*capital=*/false); });
    return name;
}

std::vector<SNotification> Notifications()
{
    std::vector<SNotification> notifications;
    auto const & events = SNMP::Dictionaries::kEvents;
    for (std::size_t place = 0; place < events.RowCount(); ++place) {
        auto const [id, event] = events.Row(place);
        if (id > kLastOwnEvent) notifications.push_back({id, event, NotificationName(id, event)});
    }
    std::sort(notifications.begin(), notifications.end(),
              [](SNotification const & left, SNotification const & right) { return left.id < right.id; });
    return notifications;
}

void Check(std::vector<SNotification> const & notifications)
{
    std::set<std::string> names;
    for (std::int32_t id = 1; id <= kLastOwnEvent; ++id)
        names.insert(Folded(NotificationName(id, SNMP::Dictionaries::kEvents.NameOf(id))));
    for (SNotification const & notification : notifications) {
        std::string const what = "event " + std::to_string(notification.id) + ": " + notification.name;
        if (!IsDescriptor(notification.name)) throw std::runtime_error(what + " is no descriptor");
        if (!names.insert(Folded(notification.name)).second) throw std::runtime_error(what + " stands there before");
    }
}

std::string Definition(SNotification const & notification)
{
    std::string const number = std::to_string(notification.id);
    return notification.name +
           " NOTIFICATION-TYPE\n"
           "    OBJECTS     { kxrTrapServerName, kxrTrapTime,\n"
           "                  kxrTrapParam1, kxrTrapParam2, kxrTrapParam3,\n"
           "                  kxrTrapParam4, kxrTrapParam5, kxrTrapParam6 }\n"
           "    STATUS      current\n"
           "    DESCRIPTION\n"
           "            \"Event " +
           number + " of the core service,\n             " + std::string(notification.event) +
           ".\"\n    ::= { kxrNotifications " + number + " }\n\n";
}

} // namespace

std::string NotificationName(std::int32_t id, std::string_view eventName)
{
    std::vector<std::string> const words = WordsOf(eventName);
    std::string const number = std::to_string(id);
    std::string whole(kPrefix);
    std::string cut(kPrefix);
    for (std::string const & word : words) {
        whole += word;
        if (whole.size() + number.size() <= kLongestDescriptor) cut = whole;
    }
    return whole.size() <= kLongestDescriptor ? whole : cut + number;
}

std::string EventsModule()
{
    std::vector<SNotification> const notifications = Notifications();
    Check(notifications);
    std::string text(kHead);
    std::string group;
    for (SNotification const & notification : notifications) {
        text += Definition(notification);
        group += (group.empty() ? "        " : ",\n        ") + notification.name;
    }
    return text.append(kConformance).append(group).append(kEnd);
}

} // namespace Mib
