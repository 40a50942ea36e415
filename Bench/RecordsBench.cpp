// Reading the table of physical devices off the stream, against protobuf's reading of the same fields.

#include <benchmark/benchmark.h>

#include <cstdlib>
#include <memory>
#include <string>

#include "Ratio.h"
#include "Records.pb.h"
#include "Snmp/Include/Structure.h"
#include "Tests/Support/MemorySocket.h"

namespace {

constexpr int kDevices = 10000;
constexpr double kTarget = 0.45;

SNMP::ORBA_PHYSICALDEVICEENTRY Device(int number)
{
    SNMP::ORBA_PHYSICALDEVICEENTRY device;
    device.CtrlNr = number / 256;
    device.Channel = 0;
    device.Target = number % 256;
    device.LUN = 0;
    device.ModelName = "HGST HUS726T4TALS204";
    device.VendorName = "HGST";
    device.FirmwareRevision = "CDB3";
    device.Capacity = 3726;
    device.MaxTransferRate = 1200;
    device.Type = 2;
    device.ConfiguredDisk = 2;
    device.ForeignConfig = 1;
    device.Interface = 5;
    device.Errors = 0;
    device.NrBadBlocks = number % 3;
    device.SmartStatus = 2;
    device.Status = 3;
    device.SerialNumber = "V6J8" + std::to_string(10000 + number);
    device.Idx = number;
    device.StatusEx = 4;
    device.CapacityMB = 3815447;
    device.EnclosureNumber = 1 + number / 24;
    device.Slot = number % 24;
    device.DisplayName = "HGST HUS726T4TALS204 (" + std::to_string(number % 24) + ")";
    device.PowerStatus = 2;
    device.MediaType = 1;
    device.SSDPowerOnHours = -1;
    device.SSDRatedWriteEndurance = -1;
    device.SSDRemainingReservedSpace = -1;
    device.SetSSDEstimatedLifetime("");
    device.SetSSDTotalDataWritten("");
    return device;
}

bench::PhysicalDevice Message(SNMP::ORBA_PHYSICALDEVICEENTRY const & device)
{
    bench::PhysicalDevice message;
    message.set_ctrl_nr(device.CtrlNr);
    message.set_channel(device.Channel);
    message.set_target(device.Target);
    message.set_lun(device.LUN);
    message.set_model_name(device.ModelName);
    message.set_vendor_name(device.VendorName);
    message.set_firmware_revision(device.FirmwareRevision);
    message.set_capacity(device.Capacity);
    message.set_max_transfer_rate(device.MaxTransferRate);
    message.set_type(device.Type);
    message.set_configured_disk(device.ConfiguredDisk);
    message.set_foreign_config(device.ForeignConfig);
    message.set_interface(device.Interface);
    message.set_errors(device.Errors);
    message.set_nr_bad_blocks(device.NrBadBlocks);
    message.set_smart_status(device.SmartStatus);
    message.set_status(device.Status);
    message.set_serial_number(device.SerialNumber);
    message.set_idx(device.Idx);
    message.set_status_ex(device.StatusEx);
    message.set_capacity_mb(device.CapacityMB);
    message.set_enclosure_number(device.EnclosureNumber);
    message.set_slot(device.Slot);
    message.set_display_name(device.DisplayName);
    message.set_power_status(device.PowerStatus);
    message.set_media_type(device.MediaType);
    message.set_ssd_power_on_hours(device.SSDPowerOnHours);
    message.set_ssd_rated_write_endurance(device.SSDRatedWriteEndurance);
    message.set_ssd_remaining_reserved_space(device.SSDRemainingReservedSpace);
    message.set_ssd_estimated_lifetime(device.GetSSDEstimatedLifetime());
    message.set_ssd_total_data_written(device.GetSSDTotalDataWritten());
    return message;
}

/// The same estate in both encodings, and a client whose peer delivers it again and again.
struct SEstate {
    std::string message;
    std::unique_ptr<CAnsweredClient> peer;

    SEstate()
    {
        SNMP::ORBA_PHYSICALDEVICETABLE table;
        bench::PhysicalDevices devices;
        for (int i = 0; i < kDevices; ++i) {
            table.push_back(Device(i));
            *devices.add_devices() = Message(table.back());
        }
        devices.SerializeToString(&message);
        std::string const frames = WrittenBy([&](VLK::Sockets::CVlkSocket & sock) { table.writeData(sock); });
        peer = std::make_unique<CAnsweredClient>(frames);
    }
};

void Check(bool good)
{
    if (good) return;
    std::fputs("the table didn't come through\n", stderr);
    std::abort();
}

/// Inside: the parse into a fresh message, and its end.
double ParseMessage(std::string const & bytes)
{
    return Bench::NanosecondsEach(kDevices, [&] {
        bench::PhysicalDevices devices;
        Check(devices.ParseFromString(bytes) && devices.devices_size() == kDevices);
        benchmark::DoNotOptimize(devices);
    });
}

/// Inside: ReadData into the table that the agent keeps, which drops what it held before. The stream delivers its
/// usual pieces of 1460 bytes, from memory.
double ReadTable(SEstate & estate, SNMP::ORBA_PHYSICALDEVICETABLE & table)
{
    estate.peer->Again();
    return Bench::NanosecondsEach(kDevices, [&] {
        table.ReadData(estate.peer->client);
        Check(table.size() == kDevices && table.back().Idx == kDevices - 1);
        benchmark::DoNotOptimize(table);
    });
}

/// The same into a table that is made for it and ends with it.
double ReadFreshTable(SEstate & estate)
{
    estate.peer->Again();
    return Bench::NanosecondsEach(kDevices, [&] {
        SNMP::ORBA_PHYSICALDEVICETABLE table;
        table.ReadData(estate.peer->client);
        Check(table.size() == kDevices && table.back().Idx == kDevices - 1);
        benchmark::DoNotOptimize(table);
    });
}

Bench::SPair IntoTheKeptTable()
{
    auto const estate = std::make_shared<SEstate>();
    auto const table = std::make_shared<SNMP::ORBA_PHYSICALDEVICETABLE>();
    return {[estate] { return ParseMessage(estate->message); }, [estate, table] { return ReadTable(*estate, *table); }};
}

Bench::SPair IntoAFreshTable()
{
    auto const estate = std::make_shared<SEstate>();
    return {[estate] { return ParseMessage(estate->message); }, [estate] { return ReadFreshTable(*estate); }};
}

} // namespace

int main(int argc, char ** argv)
{
    Bench::AddRatio("10000 devices, ReadData / protobuf", kTarget, IntoTheKeptTable);
    Bench::AddRatio("10000 devices, fresh table / protobuf", kTarget, IntoAFreshTable);
    return Bench::Main(argc, argv);
}
