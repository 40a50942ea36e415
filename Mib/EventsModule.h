#ifndef MIB_EVENTS_MODULE_H
#define MIB_EVENTS_MODULE_H

#include <cstdint>
#include <string>
#include <string_view>

/// The SMI module KESTRIX-RAID-EVENTS-MIB, written from the dictionary of events: a notification for every event
/// identifier, with the eight variables of every trap.
///
/// The notifications of the identifiers 1 to 5, which the agent makes itself, stand in KESTRIX-RAID-MIB. This module
/// imports from it and begins behind them, so that both load together and no name or OID is defined twice.
namespace Mib {

/// The last identifier whose notification KESTRIX-RAID-MIB holds.
inline constexpr std::int32_t kLastOwnEvent = 5;
/// Longest descriptor that SMIv2 allows.
inline constexpr std::size_t kLongestDescriptor = 64;

/// Descriptor of an event's notification: "kxrEvent" and the words of the event's name with a capital each, so
/// DISK_OFFLINE is kxrEventDiskOffline. Where that is longer than a descriptor may be, it keeps as many words as go in
/// front of the event's identifier: kxrEventMicrosemiSurfaceScanCompletedWithoutErrorAfter12086.
std::string NotificationName(std::int32_t id, std::string_view eventName);

/// The text of the module. Raises std::runtime_error if two events would have the same descriptor, or one would have
/// none that is valid.
std::string EventsModule();

} // namespace Mib

#endif
