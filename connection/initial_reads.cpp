#include "connection/initial_reads.h"

namespace halvex {

const std::vector<const char*>& setupReads() {
    static const std::vector<const char*> reads = {
        "GetCenBut", "GetRateBut", "GetPStepBut", "GetTStepBut", "GetCMaxBut", "GetIMaxBut",
        "GetTOBut",  "GetRevBut",  "GetHeatBut",  "RevBut",      "GetEncBut",
    };
    return reads;
}

const std::vector<const char*>& cameraReads() {
    static const std::vector<const char*> reads = {"GetLensBut", "GetCamBut", "GetCamTOBut"};
    return reads;
}

void runInitialRead(ConsoleContext& context, const char* handler) {
    const auto found = context.readHandlers.find(handler);
    if (found == context.readHandlers.end() || !found->second) {
        context.state.reportFault(QStringLiteral("No reader for %1").arg(QLatin1String(handler)));
        return;
    }
    found->second();
}

}  // namespace halvex
