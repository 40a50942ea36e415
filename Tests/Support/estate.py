"""What a scenario of kxra-coresim must look like to a manager, worked out from the scenario and from the table of objects.
KXRA_SCENARIOS: the folder of the scenarios."""
import os
import xml.etree.ElementTree as ElementTree

from mib_objects import OBJECTS
from snmp_harness import REGION

SCENARIO = os.path.join(os.environ["KXRA_SCENARIOS"], "demo.xml")
INTEGER, OCTETS = 0x02, 0x04
STATUS_OVERALL = REGION + (1, 3, 4, 0)
PROGRESS = REGION + (1, 6, 2, 1, 9)

# What a column holds where a scenario says nothing.
DEFAULTS = {
    "kxrCtrl": {"BBUStatus": 1, "Status": 1, "Interface": 1, "BusLocationSegment": -1, "BusLocationBus": -1,
                "BusLocationDevice": -1, "BusLocationFunction": -1, "BusLocationSlot": -1, "BBUStatusEx": 2},
    "kxrLogicalDrive": {"RaidLevel": 1, "WriteMode": 1, "Status": 1, "ReadMode": 5, "CacheMode": 4, "DiskCacheMode": 5,
                        "InitStatus": 1, "StatusEx": 1},
    "kxrPhysicalDevice": {"Channel": -1, "Target": -1, "Type": 2, "ConfiguredDisk": 1, "ForeignConfig": 1, "Interface": 1,
                          "SmartStatus": 1, "Status": 1, "StatusEx": 1, "EnclosureNumber": -1, "Slot": -1, "PowerStatus": 1,
                          "MediaType": 1, "SSDPowerOnHours": -1, "SSDRatedWriteEndurance": -1,
                          "SSDRemainingReservedSpace": -1},
    "kxrLogicalDriveContents": {},
}


def scenario_rows():
    """For each table its rows: the index, and the fields that the scenario sets."""
    tables = {"kxrCtrl": [], "kxrLogicalDrive": [], "kxrPhysicalDevice": [], "kxrLogicalDriveContents": []}

    def add(table, keys, fields, index):
        fields = dict(keys, **fields)
        tables[table].append((tuple(int(fields[name]) for name in index), fields))

    for controller in ElementTree.parse(SCENARIO).getroot().findall("controller"):
        number = {"CtrlNr": controller.get("Nr")}
        add("kxrCtrl", {}, controller.attrib, ["Nr"])
        for device in controller.findall("device"):
            add("kxrPhysicalDevice", number, device.attrib, ["CtrlNr", "Channel", "Target", "LUN"])
        for drive in controller.findall("drive"):
            add("kxrLogicalDrive", number, drive.attrib, ["CtrlNr", "Nr"])
            for member in drive.findall("member"):
                add("kxrLogicalDriveContents", dict(number, LogicalDriveNr=drive.get("Nr")), member.attrib,
                    ["CtrlNr", "LogicalDriveNr", "Nr", "Idx"])
    return tables


def expected_estate():
    """Every object of the estate but the agent's own group and the progress: name, type and value, in order."""
    rows = scenario_rows()
    status = ElementTree.parse(SCENARIO).getroot().find("status").attrib
    scalars = {"kxrStatus" + field: int(value) for field, value in status.items()}
    scalars.update(kxrNumberRaidControllers=len(rows["kxrCtrl"]), kxrNumberPhysicalDevices=len(rows["kxrPhysicalDevice"]),
                   kxrNumberLogicalDrives=len(rows["kxrLogicalDrive"]))
    found = []
    for name, arc, is_integer in OBJECTS:
        oid = REGION + tuple(int(part) for part in arc.split("."))
        if name in scalars:
            found.append((oid + (0,), INTEGER, scalars[name]))
            continue
        table = max((prefix for prefix in rows if name.startswith(prefix)), key=len, default=None)
        if table is None or name == "kxrLogicalDriveProgress":
            continue
        field = name[len(table):]
        for index, fields in rows[table]:
            if is_integer:
                found.append((oid + index, INTEGER, int(fields.get(field, DEFAULTS[table].get(field, 0)))))
            else:
                found.append((oid + index, OCTETS, fields.get(field, "").encode()))
    return sorted(found)
