#pragma once

#include <QString>

namespace halvex {

// Where the device behind COMn comes from, strongest first.
enum class PortSource { Environment, Settings, Default };

struct PortMapping {
    QString device;
    PortSource source = PortSource::Default;
};

// The device behind COMn: $HALVEX_COM<n> when set, else the device chosen for
// it in the Port menu (kept in the user's settings), else /dev/ttyS<n-1>.
PortMapping comPortMapping(int portNumber);
QString comPortDevice(int portNumber);

// Keeps `device` as COMn's device across runs; an empty device forgets the
// choice, so COMn is /dev/ttyS<n-1> again.
void setComPortDevice(int portNumber, const QString& device);

}  // namespace halvex
