#include "sim/camera.h"

#include <algorithm>

#include "protocol/vocabulary_camera.h"

namespace halvex::sim {

namespace {
constexpr std::int64_t kTimeoutStepMs = 8;

// VISCA's own framing: an address header and a terminator.
constexpr Byte kViscaSenderMask = 0xF0;
constexpr Byte kViscaController = 0x80;  // not the unit's protocol: VISCA
constexpr Byte kViscaTerminator = 0xFF;
bool looksLikeVisca(const std::vector<Byte>& data) {
    return !data.empty() && (data.front() & kViscaSenderMask) == kViscaController &&
           data.back() == kViscaTerminator;
}
}  // namespace

void CameraPort::send(const std::vector<Byte>& data, std::int64_t nowMs, Byte portSettings,
                      Byte timeoutSteps, LensReading lens) {
    // A line without a baud rate is switched off.
    if ((portSettings & vocab::maskOf(vocab::camera_lines::Camera1::kBaud)) == 0 || data.empty()) {
        return;
    }
    std::vector<CameraAnswer> answers;
    switch (kind_) {
        case CameraKind::Auto:
            answers = looksLikeVisca(data) ? answerVisca(data, lens) : answerEcho(data);
            break;
        case CameraKind::Visca:
            answers = answerVisca(data, lens);
            break;
        case CameraKind::Echo:
            answers = answerEcho(data);
            break;
        case CameraKind::None:
            break;
    }
    const std::int64_t quiet = std::clamp<int>(timeoutSteps, 1, 100) * kTimeoutStepMs;
    for (const CameraAnswer& answer : answers) {
        for (Byte value : answer.bytes) {
            if (pending_.size() >= kMaxPending) {
                return;
            }
            pending_.push_back({nowMs + answer.delayMs + quiet, value});
        }
    }
}

std::vector<Byte> CameraPort::takeReady(std::int64_t nowMs) {
    std::vector<Byte> ready;
    while (!pending_.empty() && ready.size() < kMaxPerReport && pending_.front().dueMs <= nowMs) {
        ready.push_back(pending_.front().value);
        pending_.pop_front();
    }
    return ready;
}

}  // namespace halvex::sim
