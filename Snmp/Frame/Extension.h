#ifndef SNMP_FRAME_EXTENSION_H
#define SNMP_FRAME_EXTENSION_H

class CSnmpAgent;

/// What a concrete extension library supplies to the frame. Each is called at process attach, in this order,
/// on the thread that is inside DllMain.

/// A new agent, owned by the frame from then on, which deletes it through its virtual destructor at process
/// detach. Null when there is no memory for it; the library then loads and refuses everything. An exception
/// makes the attach fail.
CSnmpAgent * NewExtensionAgent();

/// Name of the value under which the shared registry root is looked up (CSnmpAgent::SetRegistryName). Null or
/// empty: none.
char const * ExtensionRegistryName();

/// Root of the first MIB region as dotted text. Null: the agent adds its regions in InitSupportedRegions.
char const * ExtensionRegion();

#endif
