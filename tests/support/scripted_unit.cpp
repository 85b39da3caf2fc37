#include "tests/support/scripted_unit.h"

namespace halvex::testing {

ScriptedUnit::ScriptedUnit(Byte id)
    : id_(id), assembler_([this](const sim::ConsoleFrame& frame) { answer(frame); }) {}

void ScriptedUnit::answerEverything(std::vector<Byte> payload) {
    script_ = [payload](const Frame& frame) -> std::optional<std::vector<Byte>> {
        std::vector<Byte> reply{frame.message.empty() ? Byte{0} : frame.message.front()};
        reply.insert(reply.end(), payload.begin(), payload.end());
        return reply;
    };
}

void ScriptedUnit::clear() {
    frames_.clear();
    wire_.clear();
}

std::vector<Byte> ScriptedUnit::replyWire(Byte id, const std::vector<Byte>& message) {
    return encodeFrame(kAck, id, message, id);
}

void ScriptedUnit::receiveFromConsole(const std::uint8_t* data, std::size_t size) {
    wire_.insert(wire_.end(), data, data + size);
    assembler_.feed(data, size);
}

void ScriptedUnit::answer(const sim::ConsoleFrame& received) {
    Frame frame;
    frame.address = received.address;
    frame.message = received.message;
    frame.wire = received.wire;
    frame.atMs = nowMs_;
    frames_.push_back(frame);
    if (script_ && !frame.message.empty()) {
        if (auto reply = script_(frame)) {
            const auto out = replyWire(id_, *reply);
            output_.insert(output_.end(), out.begin(), out.end());
        }
    }
}

std::vector<std::uint8_t> ScriptedUnit::takeOutput() {
    std::vector<std::uint8_t> out;
    out.swap(output_);
    return out;
}

}  // namespace halvex::testing
