#include "sim/frame_assembler.h"

namespace halvex::sim {

void FrameAssembler::feed(const Byte* data, std::size_t size) {
    for (std::size_t i = 0; i < size; ++i) {
        feedByte(data[i]);
    }
}

void FrameAssembler::feedByte(Byte value) {
    // A raw STX always starts a new frame: stuffing keeps it out of every
    // field, so one inside a frame means the earlier frame was cut short.
    if (value == kStx) {
        reset();
        inFrame_ = true;
        wire_.push_back(value);
        return;
    }
    if (!inFrame_) {
        return;
    }
    wire_.push_back(value);
    if (value == kEtx) {
        finishFrame();
        return;
    }
    if (escaped_) {
        // Undoes the frame codec's stuffing (appendStuffed), which travels
        // the byte after ESC with its top bit set.
        escaped_ = false;
        fields_.push_back(unstuffed(value));
    } else if (value == kEsc) {
        escaped_ = true;
    } else {
        fields_.push_back(value);
    }
    if (fields_.size() > kMaxFieldBytes) {
        reset();
    }
}

void FrameAssembler::finishFrame() {
    // Address, code and LRC are the least a frame can carry.
    if (fields_.size() >= 3) {
        ConsoleFrame frame;
        frame.address = fields_.front();
        frame.message.assign(fields_.begin() + 1, fields_.end() - 1);
        Byte lrc = frame.address;
        for (std::size_t i = 1; i < fields_.size(); ++i) {
            lrc ^= fields_[i];
        }
        frame.lrcGood = lrc == 0;
        frame.wire = wire_;
        reset();
        sink_(frame);
        return;
    }
    reset();
}

void FrameAssembler::reset() {
    inFrame_ = false;
    escaped_ = false;
    fields_.clear();
    wire_.clear();
}

}  // namespace halvex::sim
