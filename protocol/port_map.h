#pragma once

#include <QString>

namespace halvex {

// The device behind COMn: $HALVEX_COM<n> when set, else /dev/ttyS<n-1>.
QString comPortDevice(int portNumber);

}  // namespace halvex
