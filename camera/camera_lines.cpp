#include "camera/camera_lines.h"

#include "console/handler_wiring.h"
#include "protocol/senders.h"
#include "protocol/vocabulary.h"
#include "views/pages/camera_page.h"

namespace halvex {

namespace {
const char* const kBaudTexts[8] = {"Dis", "9.6", "14.4", "19.2", "28.8", "38.4", "57.6", "115.2"};
const char* const kFormatTexts[8] = {"8/N/1", "7/N/1", "7/E/1", "7/O/1",
                                     "8/N/2", "7/N/2", "7/E/2", "7/O/2"};
namespace lines = vocab::camera_lines;
namespace timeouts = vocab::camera_timeouts;
constexpr Byte kMaxTimeout = 100;
// The format label's eight choices: the data and parity pair, then the same
// with two stop bits.
constexpr int kFormatsPerStopBits = 4;
// The spin shows 9 ms a step and a reply 8 ms a step; both as the unit's
// documentation gives them.
constexpr int kSpinMsPerStep = 9;
constexpr int kReplyMsPerStep = 8;

// One camera's line in the message: its byte and the fields in it.
struct LineFields {
    vocab::Field<vocab::CameraLines> byte, baud, format, level, stopBits;
};

template <class Line>
constexpr LineFields lineFields(vocab::Field<vocab::CameraLines> byte) {
    return {byte, Line::kBaud, Line::kFormat, Line::kLevel, Line::kStopBits};
}

const std::array<LineFields, 2> kLines = {lineFields<lines::Camera1>(lines::kCamera1Byte),
                                          lineFields<lines::Camera2>(lines::kCamera2Byte)};
const std::array<vocab::Field<vocab::CameraTimeouts>, 2> kTimeouts = {timeouts::kCamera1,
                                                                      timeouts::kCamera2};

QString levelText(const std::vector<Byte>& lines, const LineFields& line) {
    return vocab::get(lines, line.level) != 0 ? QStringLiteral("422") : QStringLiteral("232");
}
}  // namespace

QString CameraLines::baudText(int index) {
    return QString::fromLatin1(kBaudTexts[index & 7]);
}

QString CameraLines::formatText(int index) {
    return QString::fromLatin1(kFormatTexts[index & 7]);
}

CameraLines::CameraLines(ConsoleContext& context, CameraPage& page, QObject* parent)
    : QObject(parent), context_(context), page_(page), lines_(vocab::blank<vocab::CameraLines>()) {
    FormState& state = context_.state;
    for (int camera = 0; camera < 2; ++camera) {
        const auto c = static_cast<std::size_t>(camera);
        onEvent(state, page_.BaudLabel[c], &ClickLabel::clicked, this, "BaudLabel_Click",
                [this, camera] { BaudLabel_Click(camera); });
        onEvent(state, page_.FormLabel[c], &ClickLabel::clicked, this, "FormLabel_Click",
                [this, camera] { FormLabel_Click(camera); });
        onEvent(state, page_.LevelLabel[c], &ClickLabel::clicked, this, "LevelLabel_Click",
                [this, camera] { LevelLabel_Click(camera); });
        onEvent(state, page_.CamTOSpin[c], &SpinButton::SpinUp, this, "CamTOSpin_SpinUp",
                [this, camera] { CamTOSpin_SpinUp(camera); });
        onEvent(state, page_.CamTOSpin[c], &SpinButton::SpinDown, this, "CamTOSpin_SpinDown",
                [this, camera] { CamTOSpin_SpinDown(camera); });
    }
    onEvent(state, page_.SetCamBut, &QPushButton::clicked, this, "SetCamBut_Click",
            [this] { SetCamBut_Click(); });
    onEvent(state, page_.GetCamBut, &QPushButton::clicked, this, "GetCamBut_Click",
            [this] { GetCamBut_Click(); });
    onEvent(state, page_.SetCamTOBut, &QPushButton::clicked, this, "SetCamTOBut_Click",
            [this] { SetCamTOBut_Click(); });
    onEvent(state, page_.GetCamTOBut, &QPushButton::clicked, this, "GetCamTOBut_Click",
            [this] { GetCamTOBut_Click(); });
}

Byte CameraLines::CamComm(int camera) const {
    return static_cast<Byte>(vocab::get(lines_, kLines[static_cast<std::size_t>(camera)].byte));
}

void CameraLines::registerDecoders() {
    context_.receiver.registerDecoder(vocab::CameraLines::kCode,
                                      [this] { decodeSerialSettings(); });
    context_.receiver.registerDecoder(vocab::CameraTimeouts::kCode, [this] { decodeTimeouts(); });
}

void CameraLines::BaudLabel_Click(int camera) {
    const auto c = static_cast<std::size_t>(camera);
    CamBaudIndex[c] = CamBaudIndex[c] == 7 ? 0 : CamBaudIndex[c] + 1;
    page_.BaudLabel[c]->setText(baudText(CamBaudIndex[c]));
    vocab::put(lines_, kLines[c].baud, static_cast<std::uint32_t>(CamBaudIndex[c]));
}

void CameraLines::FormLabel_Click(int camera) {
    const auto c = static_cast<std::size_t>(camera);
    CamFormatIndex[c] = CamFormatIndex[c] == 7 ? 0 : CamFormatIndex[c] + 1;
    page_.FormLabel[c]->setText(formatText(CamFormatIndex[c]));
    vocab::put(lines_, kLines[c].format,
               static_cast<std::uint32_t>(CamFormatIndex[c] % kFormatsPerStopBits));
    vocab::put(lines_, kLines[c].stopBits, CamFormatIndex[c] >= kFormatsPerStopBits ? 1 : 0);
}

void CameraLines::LevelLabel_Click(int camera) {
    const auto c = static_cast<std::size_t>(camera);
    vocab::put(lines_, kLines[c].level, vocab::get(lines_, kLines[c].level) != 0 ? 0 : 1);
    page_.LevelLabel[c]->setText(levelText(lines_, kLines[c]));
}

void CameraLines::CamTOSpin_SpinUp(int camera) {
    const auto c = static_cast<std::size_t>(camera);
    if (CamTimeout_[c] != kMaxTimeout) {
        ++CamTimeout_[c];
    }
    showTimeout(camera, CamTimeout_[c] * kSpinMsPerStep);
}

void CameraLines::CamTOSpin_SpinDown(int camera) {
    const auto c = static_cast<std::size_t>(camera);
    if (CamTimeout_[c] != 1) {
        --CamTimeout_[c];
    }
    showTimeout(camera, CamTimeout_[c] * kSpinMsPerStep);
}

void CameraLines::showTimeout(int camera, int milliseconds) {
    page_.CamTOLabel[static_cast<std::size_t>(camera)]->setText(QString::number(milliseconds) +
                                                                QStringLiteral("ms"));
}

void CameraLines::SetCamBut_Click() {
    sendMessage(context_.state, context_.link, lines_);
}

void CameraLines::GetCamBut_Click() {
    sendMessage(context_.state, context_.link, vocab::readRequest<vocab::CameraLines>());
}

void CameraLines::SetCamTOBut_Click() {
    std::vector<Byte> message = vocab::blank<vocab::CameraTimeouts>();
    for (std::size_t c = 0; c < 2; ++c) {
        vocab::put(message, kTimeouts[c], CamTimeout_[c]);
    }
    sendMessage(context_.state, context_.link, message);
}

void CameraLines::GetCamTOBut_Click() {
    sendMessage(context_.state, context_.link, vocab::readRequest<vocab::CameraTimeouts>());
}

void CameraLines::decodeSerialSettings() {
    const ByteTable& rx = context_.state.RxBuffer;
    for (std::size_t c = 0; c < 2; ++c) {
        const LineFields& line = kLines[c];
        vocab::put(lines_, line.byte, vocab::get(rx, line.byte));
        // The next click on a label steps on from what the unit holds.
        CamBaudIndex[c] = static_cast<int>(vocab::get(lines_, line.baud));
        CamFormatIndex[c] = static_cast<int>(vocab::get(lines_, line.format)) +
                            (vocab::get(lines_, line.stopBits) != 0 ? kFormatsPerStopBits : 0);
        page_.BaudLabel[c]->setText(baudText(CamBaudIndex[c]));
        page_.LevelLabel[c]->setText(levelText(lines_, line));
        page_.FormLabel[c]->setText(formatText(CamFormatIndex[c]));
    }
}

void CameraLines::decodeTimeouts() {
    const ByteTable& rx = context_.state.RxBuffer;
    for (int camera = 0; camera < 2; ++camera) {
        const auto c = static_cast<std::size_t>(camera);
        const auto value = static_cast<Byte>(vocab::get(rx, kTimeouts[c]));
        if (value == 0 || value > kMaxTimeout) {
            CamTimeout_[c] = 1;
            page_.CamTOLabel[c]->setText(QStringLiteral("*U*"));
        } else {
            CamTimeout_[c] = value;
            showTimeout(camera, value * kReplyMsPerStep);
        }
    }
}

}  // namespace halvex
