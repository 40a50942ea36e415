// The lines that the records write to the foundation's trace, and the module that they write them for.

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "Snmp/Include/Module.h"
#include "Snmp/Include/Structure.h"
#include "Tests/Support/KeptTrace.h"
#include "Tests/Support/MemorySocket.h"

using namespace SNMP;

namespace {

class RecordTraceTest : public testing::Test {
protected:
    RecordTraceTest()
    {
        g_lines.clear();
        g_moduleInfo.SetTrcPoints(0x00000001);
    }
    ~RecordTraceTest() override { g_moduleInfo.SetTrcPoints(0); }

    static SLine Line(std::string const & record, std::string const & operation, std::string const & text)
    {
        return {1, 268, "SNMP::" + record + "::" + operation, text};
    }
    /// Writing and reading back a record traces these two pairs, with nothing between.
    template <class TRecord>
    static void ExpectLines(std::string const & record, std::string const & label, std::string const & writeEndLabel)
    {
        TRecord value;
        std::string const bytes = WrittenBy([&](VLK::Sockets::CVlkSocket & sock) { value.writeData(sock); });
        CAnsweredClient peer(bytes);
        value.ReadData(peer.client);
        EXPECT_EQ((std::vector<SLine>{Line(record, "writeData", label + ":writeData begin"),
                                      Line(record, "writeData", writeEndLabel + ":writeData end"),
                                      Line(record, "ReadData", label + ":ReadData begin"),
                                      Line(record, "ReadData", label + ":ReadData end")}),
                  g_lines);
        g_lines.clear();
    }
};

TEST_F(RecordTraceTest, EachRecordTracesTheBeginAndTheEndOfItsOperations)
{
    ExpectLines<ORBA_STATUS>("ORBA_STATUS", "OrbaStatus", "OrbaStatus");
    ExpectLines<ORBA_AGENTINFO>("ORBA_AGENTINFO", "AgentInfo", "AgentInfo");
    ExpectLines<ORBA_CONTROLLERINFO>("ORBA_CONTROLLERINFO", "ControllerInfo", "ControllerInfo");
    ExpectLines<ORBA_ADAPTERENTRY>("ORBA_ADAPTERENTRY", "AdapterEntry", "AdapterEntry");
    ExpectLines<ORBA_ADAPTERTABLE>("ORBA_ADAPTERTABLE", "AdapterTable", "AdapterTable");
    ExpectLines<ORBA_LOGICALDRIVEINFO>("ORBA_LOGICALDRIVEINFO", "LogicalDriveInfo", "LogicalDriveInfo");
    ExpectLines<ORBA_LOGICALDRIVEENTRY>("ORBA_LOGICALDRIVEENTRY", "LogicalDriveEntry", "LogicalDriveEntry");
    ExpectLines<ORBA_LOGICALDRIVETABLE>("ORBA_LOGICALDRIVETABLE", "LogicalDriveTable", "LogicalDriveTable");
    ExpectLines<ORBA_LOGICALDRIVECONTENTSENTRY>("ORBA_LOGICALDRIVECONTENTSENTRY", "LogicalDriveContentsEntry",
                                                "LogicalDriveContentsEntry");
    ExpectLines<ORBA_LOGICALDRIVECONTENTSTABLE>("ORBA_LOGICALDRIVECONTENTSTABLE", "LogicalDriveContentsTable",
                                                "LogicalDriveContentsTable");
    ExpectLines<ORBA_PHYSICALDEVICEINFO>("ORBA_PHYSICALDEVICEINFO", "PhysicalDeviceInfo", "PhysicalDeviceInfo");
    ExpectLines<ORBA_PHYSICALDEVICETABLE>("ORBA_PHYSICALDEVICETABLE", "PhysicalDeviceTable", "PhysicalDeviceTable");
    ExpectLines<ORBA_EVENTINFO>("ORBA_EVENTINFO", "ORBA_EVENTINFO", "ORBA_EVENTINFO");
}

TEST_F(RecordTraceTest, TheEndOfAPhysicalDevicesWriteHasALeadingAAsSettled)
{
    ExpectLines<ORBA_PHYSICALDEVICEENTRY>("ORBA_PHYSICALDEVICEENTRY", "PhysicalDeviceEntry", "APhysicalDeviceEntry");
}

TEST_F(RecordTraceTest, ATableBracketsEachEntryWithTheEntrysOwnLines)
{
    ORBA_LOGICALDRIVECONTENTSTABLE table;
    CAnsweredClient peer(Wire::Int(1) + std::string(8, '\xC1'));
    table.ReadData(peer.client);
    EXPECT_EQ((std::vector<SLine>{
                  Line("ORBA_LOGICALDRIVECONTENTSTABLE", "ReadData", "LogicalDriveContentsTable:ReadData begin"),
                  Line("ORBA_LOGICALDRIVECONTENTSENTRY", "ReadData", "LogicalDriveContentsEntry:ReadData begin"),
                  Line("ORBA_LOGICALDRIVECONTENTSENTRY", "ReadData", "LogicalDriveContentsEntry:ReadData end"),
                  Line("ORBA_LOGICALDRIVECONTENTSTABLE", "ReadData", "LogicalDriveContentsTable:ReadData end")}),
              g_lines);
}

TEST_F(RecordTraceTest, AnOperationThatRaisesLeavesWithoutTheSecondLine)
{
    CAnsweredClient peer("");
    ORBA_STATUS status;
    EXPECT_THROW(status.ReadData(peer.client), unsigned int);
    EXPECT_EQ(std::vector<SLine>{Line("ORBA_STATUS", "ReadData", "OrbaStatus:ReadData begin")}, g_lines);
}

TEST_F(RecordTraceTest, WithoutTheFirstBitOfTheModulesMaskNothingIsTraced)
{
    g_moduleInfo.SetTrcPoints(0xFFFFFFFE);
    CAnsweredClient peer(std::string(4, '\xC1'));
    ORBA_STATUS status;
    status.ReadData(peer.client);
    EXPECT_TRUE(g_lines.empty());
}

TEST(ModuleTest, TheAgentIsRegisteredWithTheFoundationAsModule268)
{
    VLK::Threading::CSyncGuard guard;
    VLK::Misc::CModuleInfo::Lock(guard);
    VLK::Misc::CModuleInfo * const module = VLK::Functions::GetModuleInfo(268);
    ASSERT_EQ(&g_moduleInfo, module);
    EXPECT_STREQ("KXRA-MIB", module->GetModuleName());
    EXPECT_STREQ("P:7.10.2 F:7.10.2", module->GetVersionInfo());
    EXPECT_EQ(0u, module->GetTrcPoints());
}

} // namespace
