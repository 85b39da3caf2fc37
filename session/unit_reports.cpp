#include "session/unit_reports.h"

#include "protocol/protocol_table.h"
#include "protocol/range_fault.h"
#include "protocol/vocabulary.h"
#include "session/position_encoding.h"
#include "session/session.h"

namespace halvex {

namespace {
float hundredths(std::int32_t value) {
    return static_cast<float>(value) / 100.0f;
}
}  // namespace

UnitReports::UnitReports(Session& session, FormState& state, UnitStatus& status, Receiver& receiver)
    : session_(session), state_(state), status_(status) {
    // The jog message's reply and every move's: the codes whose reply the
    // protocol table names a position report.
    for (Byte code : table::replyCodesNamed("position report")) {
        receiver.registerDecoder(code, [this] { decodePositionReport(); });
    }
    receiver.registerDecoder(vocab::SoftLimitReply::kCode, [this] { decodeSoftLimit(); });
}

void UnitReports::decodePositionReport() {
    using namespace vocab;
    const ByteTable& rx = state_.RxBuffer;
    const std::int32_t pan = getSigned(rx, report::kPan);
    const std::int32_t tilt = getSigned(rx, report::kTilt);
    // Status A whole, as the lamps read it, and its controller type apart.
    status_.StatusBytes[0] = static_cast<Byte>(get(rx, report::kStatusAByte));
    status_.StatusBytes[3] = static_cast<Byte>(get(rx, report::kControllerType));
    status_.StatusBytes[1] = static_cast<Byte>(get(rx, report::kStatusB));
    status_.StatusBytes[2] = static_cast<Byte>(get(rx, report::kStatusC));

    LensPositions lens{};
    for (std::size_t i = 0; i < lens.size(); ++i) {
        lens[i] = static_cast<Byte>(get(rx, report::kLens[i]));
    }
    status_.Lens = lens;
    emit session_.lensReported(lens);

    if (rx[0] == JogMessage::kCode) {
        const int c1 = static_cast<int>(get(rx, report::kCamera1Count));
        const int c2 = static_cast<int>(get(rx, report::kCamera2Count));
        int index = report::kCameraData;
        takeCameraBytes(index, c1, 0);
        takeCameraBytes(index, c2, 1);
    }

    status_.PanContinuous = isSet(status_.StatusBytes[2], report::kContinuousPan);
    emit session_.continuousPanReported(status_.PanContinuous);

    if (!isSet(status_.StatusBytes[2], report::kTarget)) {
        status_.CurrentPan = hundredths(pan);
        status_.CurrentTilt = hundredths(tilt);
        emit session_.positionReported(status_.CurrentPan, status_.CurrentTilt);
    } else {
        status_.TargetPan = hundredths(pan);
        status_.TargetTilt = hundredths(tilt);
        emit session_.targetReported(status_.TargetPan, status_.TargetTilt);
    }

    if (status_.SyncDesiredPending) {
        status_.SyncDesiredPending = false;
        emit session_.desiredPositionSynced(hundredths(pan), hundredths(tilt));
    }
}

void UnitReports::takeCameraBytes(int& index, int count, int camera) {
    std::vector<Byte> bytes;
    for (int i = 0; i < count; ++i) {
        if (i > kCameraBufferLast) {
            throw RangeFault(RangeFault::SubscriptOutOfRange, "camera byte count");
        }
        bytes.push_back(state_.RxBuffer[index++]);
    }
    emit session_.cameraBytesReported(camera, bytes);
}

void UnitReports::decodeSoftLimit() {
    const ByteTable& rx = state_.RxBuffer;
    const float value = hundredths(getPosition(rx, vocab::soft_limit_reply::kPosition));
    const auto index = static_cast<int>(vocab::get(rx, vocab::soft_limit_reply::kLimit));
    switch (index) {
        case 0:
            status_.PanMaxLimit = value;
            break;
        case 1:
            status_.PanMinLimit = value;
            break;
        case 2:
            status_.TiltMaxLimit = value;
            break;
        case 3:
            status_.TiltMinLimit = value;
            break;
        default:
            break;
    }
    emit session_.softLimitReported(index, value);
}

}  // namespace halvex
