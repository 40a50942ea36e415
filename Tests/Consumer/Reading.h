#ifndef CONSUMER_READING_H
#define CONSUMER_READING_H

#include <string>

namespace VLK::Sockets {
class CVlkSocket;
}

/// A record of this module's own: what a sensor has measured.
struct SReading {
    std::string sensor;
    int milliKelvin = 0;
    unsigned long long serial = 0;

    /// A failure changes nothing.
    void ReadData(VLK::Sockets::CVlkSocket & stream);
    void writeData(VLK::Sockets::CVlkSocket & stream) const;
    bool operator==(SReading const &) const = default;
};

#endif
