// halvex-sim's standard input under libFuzzer: whatever is typed or piped to
// a unit started with --control is cut into lines and read, and every
// command it yields is applied to a running unit.

#include <QCoreApplication>
#include <cstddef>
#include <cstdint>

#include "sim/line_control.h"
#include "sim/pty_unit.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static int argc = 1;
    static char name[] = "halvex-line-command-fuzzer";
    static char* argv[] = {name, nullptr};
    static QCoreApplication app(argc, argv);
    static halvex::sim::PtyUnit unit{halvex::sim::PtyUnitOptions{}};
    static const bool opened = unit.open();
    if (!opened) {
        return 0;
    }
    halvex::sim::LineCommandReader reader;
    for (const auto& command : reader.feed(reinterpret_cast<const char*>(data), size)) {
        if (const auto* line = std::get_if<halvex::sim::LineCommand>(&command)) {
            unit.apply(*line);
        }
    }
    unit.apply(halvex::sim::LineCommand{});  // clean again for the next input
    QCoreApplication::processEvents();
    return 0;
}
