#include "camera/camera_lines.h"

#include "console/handler_wiring.h"
#include "protocol/senders.h"
#include "views/pages/camera_page.h"

namespace halvex {

namespace {
const char* const kBaudTexts[8] = {"Dis", "9.6", "14.4", "19.2", "28.8", "38.4", "57.6", "115.2"};
const char* const kFormatTexts[8] = {"8/N/1", "7/N/1", "7/E/1", "7/O/1",
                                     "8/N/2", "7/N/2", "7/E/2", "7/O/2"};
constexpr int kLevelBit = 5;
constexpr int kTwoStopBits = 6;
constexpr Byte kReadRequest = 0x80;
constexpr Byte kMaxTimeout = 100;
// The spin shows 9 ms a step and a reply 8 ms a step; both as the unit's
// documentation gives them.
constexpr int kSpinMsPerStep = 9;
constexpr int kReplyMsPerStep = 8;

QString levelText(Byte comm) {
    return BitIsSet(comm, kLevelBit) ? QStringLiteral("422") : QStringLiteral("232");
}
}  // namespace

QString CameraLines::baudText(int index) {
    return QString::fromLatin1(kBaudTexts[index & 7]);
}

QString CameraLines::formatText(int index) {
    return QString::fromLatin1(kFormatTexts[index & 7]);
}

CameraLines::CameraLines(ConsoleContext& context, CameraPage& page, QObject* parent)
    : QObject(parent), context_(context), page_(page) {
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

void CameraLines::registerDecoders() {
    context_.receiver.registerDecoder(kSerialSettings, [this] { decodeSerialSettings(); });
    context_.receiver.registerDecoder(kTimeouts, [this] { decodeTimeouts(); });
}

void CameraLines::BaudLabel_Click(int camera) {
    const auto c = static_cast<std::size_t>(camera);
    CamBaudIndex[c] = CamBaudIndex[c] == 7 ? 0 : CamBaudIndex[c] + 1;
    page_.BaudLabel[c]->setText(baudText(CamBaudIndex[c]));
    CamComm_[c] = static_cast<Byte>((CamComm_[c] & 248) + CamBaudIndex[c]);
}

void CameraLines::FormLabel_Click(int camera) {
    const auto c = static_cast<std::size_t>(camera);
    CamFormatIndex[c] = CamFormatIndex[c] == 7 ? 0 : CamFormatIndex[c] + 1;
    page_.FormLabel[c]->setText(formatText(CamFormatIndex[c]));
    Byte comm = CamComm_[c];
    const int dataAndParity = CamFormatIndex[c] & 3;
    comm = (dataAndParity & 1) != 0 ? SetBit(comm, 3) : ClearBit(comm, 3);
    comm = (dataAndParity & 2) != 0 ? SetBit(comm, 4) : ClearBit(comm, 4);
    comm = CamFormatIndex[c] >= 4 ? SetBit(comm, kTwoStopBits) : ClearBit(comm, kTwoStopBits);
    CamComm_[c] = comm;
}

void CameraLines::LevelLabel_Click(int camera) {
    const auto c = static_cast<std::size_t>(camera);
    CamComm_[c] = BitIsSet(CamComm_[c], kLevelBit) ? ClearBit(CamComm_[c], kLevelBit)
                                                   : SetBit(CamComm_[c], kLevelBit);
    page_.LevelLabel[c]->setText(levelText(CamComm_[c]));
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
    sendMessage(context_.state, context_.link, {kSerialSettings, CamComm_[0], CamComm_[1]});
}

void CameraLines::GetCamBut_Click() {
    sendMessage(context_.state, context_.link, {kSerialSettings, kReadRequest, 0});
}

void CameraLines::SetCamTOBut_Click() {
    sendMessage(context_.state, context_.link, {kTimeouts, CamTimeout_[0], CamTimeout_[1]});
}

void CameraLines::GetCamTOBut_Click() {
    sendMessage(context_.state, context_.link, {kTimeouts, kReadRequest, 0});
}

void CameraLines::decodeSerialSettings() {
    const ByteTable& rx = context_.state.RxBuffer;
    for (int camera = 0; camera < 2; ++camera) {
        const auto c = static_cast<std::size_t>(camera);
        const Byte comm = rx[1 + camera];
        CamComm_[c] = comm;
        // The next click on a label steps on from what the unit holds.
        CamBaudIndex[c] = comm & 7;
        CamFormatIndex[c] = ((comm & 24) >> 3) + (BitIsSet(comm, kTwoStopBits) ? 4 : 0);
        page_.BaudLabel[c]->setText(baudText(CamBaudIndex[c]));
        page_.LevelLabel[c]->setText(levelText(comm));
        page_.FormLabel[c]->setText(formatText(CamFormatIndex[c]));
    }
}

void CameraLines::decodeTimeouts() {
    const ByteTable& rx = context_.state.RxBuffer;
    for (int camera = 0; camera < 2; ++camera) {
        const auto c = static_cast<std::size_t>(camera);
        const Byte value = rx[1 + camera];
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
