#include "camera/camera_lines.h"

#include <iterator>

#include "console/handler_wiring.h"
#include "views/pages/camera_page.h"

namespace halvex {

namespace {
const char* const kBaudTexts[] = {"Dis", "9.6", "14.4", "19.2", "28.8", "38.4", "57.6", "115.2"};
const char* const kFormatTexts[] = {"8/N/1", "7/N/1", "7/E/1", "7/O/1",
                                    "8/N/2", "7/N/2", "7/E/2", "7/O/2"};
static_assert(std::size(kBaudTexts) == std::size(kFormatTexts), "one click steps both lists");
constexpr int kLastChoice = static_cast<int>(std::size(kBaudTexts)) - 1;
// The format label's eight choices: the data and parity pair, then the same
// with two stop bits.
constexpr int kFormatsPerStopBits = 4;
// The spin shows 9 ms a step and a reply 8 ms a step; both as the unit's
// documentation gives them.
constexpr int kSpinMsPerStep = 9;
constexpr int kReplyMsPerStep = 8;

int formatChoice(const CameraLine& line) {
    return line.format + (line.twoStopBits ? kFormatsPerStopBits : 0);
}

int nextChoice(int choice) {
    return choice == kLastChoice ? 0 : choice + 1;
}
}  // namespace

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
            [this] { return SetCamBut_Click(); });
    onEvent(state, page_.GetCamBut, &QPushButton::clicked, this, "GetCamBut_Click",
            [this] { return GetCamBut_Click(); });
    onEvent(state, page_.SetCamTOBut, &QPushButton::clicked, this, "SetCamTOBut_Click",
            [this] { return SetCamTOBut_Click(); });
    onEvent(state, page_.GetCamTOBut, &QPushButton::clicked, this, "GetCamTOBut_Click",
            [this] { return GetCamTOBut_Click(); });
    connect(&context_.session, &Session::cameraLinesReported, this, &CameraLines::showLines);
    connect(&context_.session, &Session::cameraTimeoutsReported, this, &CameraLines::showTimeouts);
}

void CameraLines::BaudLabel_Click(int camera) {
    CameraLine& line = lines_[static_cast<std::size_t>(camera)];
    line.baud = nextChoice(line.baud);
    showLine(camera);
}

void CameraLines::FormLabel_Click(int camera) {
    CameraLine& line = lines_[static_cast<std::size_t>(camera)];
    const int choice = nextChoice(formatChoice(line));
    line.format = choice % kFormatsPerStopBits;
    line.twoStopBits = choice >= kFormatsPerStopBits;
    showLine(camera);
}

void CameraLines::LevelLabel_Click(int camera) {
    CameraLine& line = lines_[static_cast<std::size_t>(camera)];
    line.rs422 = !line.rs422;
    showLine(camera);
}

void CameraLines::showLine(int camera) {
    const auto c = static_cast<std::size_t>(camera);
    const CameraLine& line = lines_[c];
    page_.BaudLabel[c]->setText(QString::fromLatin1(kBaudTexts[line.baud & kLastChoice]));
    page_.FormLabel[c]->setText(
        QString::fromLatin1(kFormatTexts[formatChoice(line) & kLastChoice]));
    page_.LevelLabel[c]->setText(line.rs422 ? QStringLiteral("422") : QStringLiteral("232"));
}

void CameraLines::showLines(const CameraLinePair& lines) {
    // The next click on a label steps on from what the unit holds.
    lines_ = lines;
    for (int camera = 0; camera < 2; ++camera) {
        showLine(camera);
    }
}

void CameraLines::CamTOSpin_SpinUp(int camera) {
    int& steps = timeoutSteps_[static_cast<std::size_t>(camera)];
    if (steps != kMostCameraTimeoutSteps) {
        ++steps;
    }
    showTimeout(camera, steps * kSpinMsPerStep);
}

void CameraLines::CamTOSpin_SpinDown(int camera) {
    int& steps = timeoutSteps_[static_cast<std::size_t>(camera)];
    if (steps != 1) {
        --steps;
    }
    showTimeout(camera, steps * kSpinMsPerStep);
}

void CameraLines::showTimeout(int camera, int milliseconds) {
    page_.CamTOLabel[static_cast<std::size_t>(camera)]->setText(QString::number(milliseconds) +
                                                                QStringLiteral("ms"));
}

void CameraLines::showTimeouts(const CameraTimeouts& steps) {
    for (int camera = 0; camera < 2; ++camera) {
        const auto c = static_cast<std::size_t>(camera);
        const int value = steps[c];
        if (value < 1 || value > kMostCameraTimeoutSteps) {
            timeoutSteps_[c] = 1;
            page_.CamTOLabel[c]->setText(QStringLiteral("*U*"));
        } else {
            timeoutSteps_[c] = value;
            showTimeout(camera, value * kReplyMsPerStep);
        }
    }
}

QCoro::Task<> CameraLines::SetCamBut_Click() {
    const Outcome outcome = co_await context_.session.setCameraLines(lines_, Requester::Operator);
    outcome.raiseRangeFault();
}

QCoro::Task<> CameraLines::GetCamBut_Click() {
    co_await context_.session.readCameraLines(Requester::Operator);
}

QCoro::Task<> CameraLines::SetCamTOBut_Click() {
    const Outcome outcome =
        co_await context_.session.setCameraTimeouts(timeoutSteps_, Requester::Operator);
    outcome.raiseRangeFault();
}

QCoro::Task<> CameraLines::GetCamTOBut_Click() {
    co_await context_.session.readCameraTimeouts(Requester::Operator);
}

}  // namespace halvex
