#include "connection/initial_reads.h"

#include "protocol/senders.h"

namespace halvex {

const std::vector<InitialRead>& setupReads() {
    static const std::vector<InitialRead> reads = {
        {"GetCenBut", {0x90}},
        {"GetRateBut", {0x92, 0x80, 0, 0, 0, 0, 0, 0, 0}},
        {"GetPStepBut", {0xA1, 0x80, 0, 0, 0, 0}},
        {"GetTStepBut", {0xA2, 0x80, 0, 0, 0, 0}},
        {"GetCMaxBut", {0x9C, 0x80, 0, 0}},
        {"GetIMaxBut", {0x9C, 0xC0, 0, 0}},
        {"GetTOBut", {0x96, 0x80}},
        {"GetRevBut", {0x95, 0x80}},
        {"GetHeatBut", {0x97, 0x80}},
        {"RevBut", {0x9A}},
        {"GetEncBut", {0xA5, 0x80, 0, 0, 0, 0}},
    };
    return reads;
}

const std::vector<InitialRead>& cameraReads() {
    // The lens request carries the console's own lens values; they are all
    // zero until the unit has told us otherwise.
    static const std::vector<InitialRead> reads = {
        {"GetLensBut", {0x61, 0x80, 0, 0, 0, 0, 0}},
        {"GetCamBut", {0x60, 0x80, 0}},
        {"GetCamTOBut", {0x65, 0x80, 0}},
    };
    return reads;
}

void runInitialRead(ConsoleContext& context, const InitialRead& read) {
    const auto handler = context.readHandlers.find(read.handler);
    if (handler != context.readHandlers.end() && handler->second) {
        handler->second();
        return;
    }
    sendMessage(context.state, context.link, read.request);
}

}  // namespace halvex
