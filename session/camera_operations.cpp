// The session's camera operations: a string passed through to a camera, and
// the cameras' lines and answer time-outs.
#include "protocol/senders.h"
#include "protocol/vocabulary.h"
#include "session/session.h"

namespace halvex {

namespace {
namespace lines = vocab::camera_lines;
namespace timeouts = vocab::camera_timeouts;

// The fields of one camera's line byte.
struct LineFields {
    vocab::Field<vocab::CameraLines> byte, baud, format, level, stopBits, spare;
};

template <class Line>
constexpr LineFields lineFields(vocab::Field<vocab::CameraLines> byte) {
    return {byte, Line::kBaud, Line::kFormat, Line::kLevel, Line::kStopBits, Line::kSpare};
}

const std::array kLineFields = {lineFields<lines::Camera1>(lines::kCamera1Byte),
                                lineFields<lines::Camera2>(lines::kCamera2Byte)};
const std::array kTimeoutFields = {timeouts::kCamera1, timeouts::kCamera2};
constexpr int kBaudSteps = 8;
constexpr int kFormats = 4;

// One camera's line into its byte; a choice the byte has no room for is a
// range fault.
void putLine(std::vector<Byte>& message, const LineFields& fields, const CameraLine& line) {
    if (line.baud < 0 || line.baud >= kBaudSteps || line.format < 0 || line.format >= kFormats) {
        throw RangeFault(RangeFault::Overflow, "camera line");
    }
    vocab::put(message, fields.spare, line.spare ? 1 : 0);
    vocab::put(message, fields.baud, static_cast<std::uint32_t>(line.baud));
    vocab::put(message, fields.format, static_cast<std::uint32_t>(line.format));
    vocab::put(message, fields.level, line.rs422 ? 1 : 0);
    vocab::put(message, fields.stopBits, line.twoStopBits ? 1 : 0);
}
}  // namespace

void Session::watchCameraReports() {
    receiver_.registerDecoder(vocab::CameraLines::kCode, [this] {
        const ByteTable& rx = state_.RxBuffer;
        for (std::size_t c = 0; c < kLineFields.size(); ++c) {
            const LineFields& fields = kLineFields[c];
            CameraLine& line = status_.CameraLineSettings[c];
            line.baud = static_cast<int>(vocab::get(rx, fields.baud));
            line.format = static_cast<int>(vocab::get(rx, fields.format));
            line.rs422 = vocab::get(rx, fields.level) != 0;
            line.twoStopBits = vocab::get(rx, fields.stopBits) != 0;
            line.spare = vocab::get(rx, fields.spare) != 0;
        }
        emit cameraLinesReported(status_.CameraLineSettings);
    });
    receiver_.registerDecoder(vocab::CameraTimeouts::kCode, [this] {
        for (std::size_t c = 0; c < kTimeoutFields.size(); ++c) {
            status_.CameraAnswerTimeouts[c] =
                static_cast<int>(vocab::get(state_.RxBuffer, kTimeoutFields[c]));
        }
        emit cameraTimeoutsReported(status_.CameraAnswerTimeouts);
    });
}

QCoro::Task<Outcome> Session::sendToCamera(int camera, std::vector<Byte> data,
                                           Requester requester) {
    return exchange(requester, [camera, data = std::move(data)] {
        namespace m = vocab::camera_transmit;
        if ((camera != 0 && camera != 1) || data.size() > static_cast<std::size_t>(m::kMostData)) {
            throw RangeFault(RangeFault::Overflow, "camera string");
        }
        std::vector<Byte> message(static_cast<std::size_t>(m::kData), 0);
        vocab::begin<vocab::CameraTransmit>(message);
        vocab::put(message, m::kCount, static_cast<std::uint32_t>(data.size()));
        vocab::put(message, m::kCamera, static_cast<std::uint32_t>(camera));
        message.insert(message.end(), data.begin(), data.end());
        return message;
    });
}

QCoro::Task<Outcome> Session::setCameraLines(CameraLinePair settings, Requester requester) {
    return exchange(requester, [settings] {
        std::vector<Byte> message = vocab::blank<vocab::CameraLines>();
        for (std::size_t c = 0; c < settings.size(); ++c) {
            putLine(message, kLineFields[c], settings[c]);
        }
        return message;
    });
}

QCoro::Task<Outcome> Session::readCameraLines(Requester requester) {
    return exchange(requester, [] { return vocab::readRequest<vocab::CameraLines>(); });
}

QCoro::Task<Outcome> Session::setCameraTimeouts(CameraTimeouts steps, Requester requester) {
    return exchange(requester, [steps] {
        std::vector<Byte> message = vocab::blank<vocab::CameraTimeouts>();
        for (std::size_t c = 0; c < steps.size(); ++c) {
            if (steps[c] < 1 || steps[c] > kMostCameraTimeoutSteps) {
                throw RangeFault(RangeFault::Overflow, "camera time-out");
            }
            vocab::put(message, kTimeoutFields[c], static_cast<std::uint32_t>(steps[c]));
        }
        return message;
    });
}

QCoro::Task<Outcome> Session::readCameraTimeouts(Requester requester) {
    return exchange(requester, [] { return vocab::readRequest<vocab::CameraTimeouts>(); });
}

}  // namespace halvex
