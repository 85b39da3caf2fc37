#include "tests/support/scripted_unit.h"

namespace halvex::testing {

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
    for (std::size_t i = 0; i < size; ++i) {
        const Byte b = data[i];
        wire_.push_back(b);
        if (b == kStx) {
            current_.assign(1, b);
            inFrame_ = true;
            continue;
        }
        if (!inFrame_) {
            continue;
        }
        current_.push_back(b);
        if (b != kEtx) {
            continue;
        }
        inFrame_ = false;
        Frame frame;
        frame.wire = current_;
        frame.atMs = nowMs_;
        std::vector<Byte> fields;
        for (std::size_t k = 1; k + 1 < current_.size(); ++k) {
            if (current_[k] == kEsc && k + 2 < current_.size()) {
                fields.push_back(static_cast<Byte>(current_[++k] & 0x7F));
            } else {
                fields.push_back(current_[k]);
            }
        }
        if (fields.empty()) {
            continue;
        }
        frame.address = fields.front();
        frame.message.assign(fields.begin() + 1, fields.end());
        frames_.push_back(frame);
        if (script_) {
            if (auto reply = script_(frame)) {
                const auto out = replyWire(id_, *reply);
                output_.insert(output_.end(), out.begin(), out.end());
            }
        }
    }
}

std::vector<std::uint8_t> ScriptedUnit::takeOutput() {
    std::vector<std::uint8_t> out;
    out.swap(output_);
    return out;
}

}  // namespace halvex::testing
