#include "tests/support/recording_peer.h"

namespace halvex::testing {

void RecordingPeer::receiveFromConsole(const std::uint8_t* data, std::size_t size) {
    for (std::size_t i = 0; i < size; ++i) {
        const Byte b = data[i];
        if (b == kStx) {
            current_.clear();
            inFrame_ = true;
        } else if (inFrame_ && b == kEtx) {
            inFrame_ = false;
            std::vector<Byte> fields;
            for (std::size_t k = 0; k < current_.size(); ++k) {
                if (current_[k] == kEsc && k + 1 < current_.size()) {
                    fields.push_back(static_cast<Byte>(current_[++k] & 0x7F));
                } else {
                    fields.push_back(current_[k]);
                }
            }
            if (fields.size() >= 3) {
                Frame frame;
                frame.address = fields.front();
                frame.lrc = fields.back();
                frame.message.assign(fields.begin() + 1, fields.end() - 1);
                frames_.push_back(frame);
            }
        } else if (inFrame_) {
            current_.push_back(b);
        }
    }
    if (connected_) {
        unit_.receiveFromConsole(data, size);
    }
}

std::vector<std::uint8_t> RecordingPeer::takeOutput() {
    auto out = unit_.takeOutput();
    if (!connected_) {
        out.clear();
    }
    return out;
}

std::vector<std::vector<Byte>> RecordingPeer::messages(bool withJogs) const {
    std::vector<std::vector<Byte>> out;
    for (const Frame& frame : frames_) {
        if (withJogs || frame.message.empty() || frame.message.front() != 0x31) {
            out.push_back(frame.message);
        }
    }
    return out;
}

}  // namespace halvex::testing
