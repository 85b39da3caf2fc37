// libFuzzer target for a controller's mapping as the user's settings file
// holds it: any bytes as that file, read back as a mapping, then every mapped
// axis pushed to its ends and to values taken from the same bytes. A crash,
// a sanitizer report, or a stick position that gives no number (NaN, or past
// full travel) is a finding.

#include <QSettings>
#include <QTemporaryFile>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

#include "input/controller_mapping.h"
#include "input/mapping_settings.h"

using namespace halvex;

namespace {
void check(bool good, const char* what) {
    if (!good) {
        std::fprintf(stderr, "input mapping fuzzer: %s\n", what);
        std::abort();
    }
}
}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    QTemporaryFile file;
    if (!file.open()) {
        return 0;
    }
    file.write(reinterpret_cast<const char*>(data), static_cast<qint64>(size));
    file.close();
    QSettings settings(file.fileName(), QSettings::IniFormat);
    const auto mapping = loadMapping(settings, QStringLiteral("fuzz"));
    if (!mapping) {
        return 0;
    }
    for (const AxisBinding& axis : mapping->axes) {
        check(axis.axis >= 0 && axis.axis <= 255, "an axis index out of range");
        check(axis.target >= JogAxis::Pan && axis.target <= JogAxis::Focus2, "no such target");
        for (int raw : {-32768, -1, 0, 1, 32767}) {
            const double shaped = shapedAxis(raw, axis.response);
            check(std::isfinite(shaped) && std::abs(shaped) <= 1.0, "a stick past full travel");
        }
    }
    for (const ButtonBinding& button : mapping->buttons) {
        check(button.preset >= 0 && button.preset <= 9, "a preset button past preset 9");
    }
    std::size_t next = 0;
    const JogDemand demand = demandFrom(*mapping, [&](int) {
        const int high = size > 0 ? data[next++ % size] : 0;
        const int low = size > 0 ? data[next++ % size] : 0;
        return static_cast<int>(static_cast<std::int16_t>(high << 8 | low));
    });
    check(!demand.pan.speed || demand.pan.direction.has_value(), "a pan speed with no way");
    check(!demand.tilt.speed || demand.tilt.direction.has_value(), "a tilt speed with no way");
    return 0;
}
