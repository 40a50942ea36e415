#include "Module.h"

#include "Reading.h"

#include <VLK/StreamSocket.h>

void SReading::ReadData(VLK::Sockets::CVlkSocket & stream)
{
    SReading read;
    stream >> read.sensor >> read.milliKelvin >> read.serial;
    if (!stream.HasFailed()) *this = read;
}

void SReading::writeData(VLK::Sockets::CVlkSocket & stream) const
{
    stream << sensor << milliKelvin << serial;
}
