#include "connection/position_report.h"

#include "console/handler_wiring.h"
#include "console/page.h"
#include "console/position_encoding.h"
#include "console/text_fields.h"
#include "protocol/protocol_table.h"
#include "protocol/range_fault.h"
#include "protocol/vocabulary.h"
#include "views/pages/pan_tilt_page.h"

namespace halvex {

namespace {
const QColor kRed(255, 0, 0);
const QColor kDarkRed(128, 0, 0);
const QColor kYellow(255, 255, 0);
const QColor kOlive(128, 128, 0);
const QColor kGreen(0, 255, 0);
const QColor kDarkGreen(0, 128, 0);
const QColor kLightGrey(224, 224, 224);

float hundredths(std::int32_t value) {
    return static_cast<float>(value) / 100.0f;
}
}  // namespace

PositionReport::PositionReport(ConsoleContext& context, PanTiltPage& page, JogState& jog,
                               CameraReplyView cameras, QTabWidget& tabs, QObject* parent)
    : QObject(parent), context_(context), page_(page), jog_(jog), cameras_(cameras), tabs_(tabs) {
    // The jog message's reply and every move's: the codes whose reply the
    // protocol table names a position report.
    for (Byte code : table::replyCodesNamed("position report")) {
        context_.receiver.registerDecoder(code, [this] { decodePositionReport(); });
    }
    context_.receiver.registerDecoder(vocab::SoftLimitReply::kCode, [this] { decodeSoftLimit(); });
    context_.receiver.addRefreshHook([this] { refreshStatusLamps(); });
}

void PositionReport::watchPageChanges() {
    onEvent(context_.state, &tabs_, &QTabWidget::currentChanged, this, "SSTab1_Click",
            [this](int shown) { SSTab1_Click(shown); });
}

void PositionReport::registerLateRefresh() {
    context_.receiver.addRefreshHook([this] { refreshControllerAndGauge(); });
}

void PositionReport::decodePositionReport() {
    using namespace vocab;
    const ByteTable& rx = context_.state.RxBuffer;
    UnitStatus& status = context_.status;
    const std::int32_t pan = getSigned(rx, report::kPan);
    const std::int32_t tilt = getSigned(rx, report::kTilt);
    // Status A whole, as the lamps read it, and its controller type apart.
    status.StatusBytes[0] = static_cast<Byte>(get(rx, report::kStatusAByte));
    status.StatusBytes[3] = static_cast<Byte>(get(rx, report::kControllerType));
    status.StatusBytes[1] = static_cast<Byte>(get(rx, report::kStatusB));
    status.StatusBytes[2] = static_cast<Byte>(get(rx, report::kStatusC));

    std::array<Byte, 4> lens{};
    for (std::size_t i = 0; i < lens.size(); ++i) {
        lens[i] = static_cast<Byte>(get(rx, report::kLens[i]));
    }
    page_.Zoom1Label->setText(QString::number(lens[0]));
    page_.Focus1Label->setText(QString::number(lens[1]));
    page_.Zoom2Label->setText(QString::number(lens[2]));
    page_.Focus2Label->setText(QString::number(lens[3]));

    if (rx[0] == JogMessage::kCode) {
        const int c1 = static_cast<int>(get(rx, report::kCamera1Count));
        const int c2 = static_cast<int>(get(rx, report::kCamera2Count));
        int index = report::kCameraData;
        showCameraBytes(index, c1, 0);
        showCameraBytes(index, c2, 1);
    }

    const Byte statusC = status.StatusBytes[2];
    status.PanContinuous = isSet(statusC, report::kContinuousPan);
    page_.SetSLBut[0]->setEnabled(!status.PanContinuous);
    page_.SetSLBut[1]->setEnabled(!status.PanContinuous);

    if (!isSet(statusC, report::kTarget)) {
        status.CurrentPan = hundredths(pan);
        status.CurrentTilt = hundredths(tilt);
        page_.PanPosLED->setValue(status.CurrentPan);
        page_.TiltPosLED->setValue(status.CurrentTilt);
        page_.Z1LED->setValue(lens[0]);
        page_.F1LED->setValue(lens[1]);
        page_.Z2LED->setValue(lens[2]);
        page_.F2LED->setValue(lens[3]);
        emit context_.events.currentPositionReported(status.CurrentPan, status.CurrentTilt);
    } else {
        status.TargetPan = hundredths(pan);
        status.TargetTilt = hundredths(tilt);
        page_.PDesLed->setValue(status.TargetPan);
        page_.TDesLed->setValue(status.TargetTilt);
        emit context_.events.targetPositionReported(status.TargetPan, status.TargetTilt);
    }

    if (status.SyncDesiredPending) {
        page_.PanDesLED->setValue(hundredths(pan));
        page_.TiltDesLED->setValue(hundredths(tilt));
        page_.PDesLed->setValue(hundredths(pan));
        page_.TDesLed->setValue(hundredths(tilt));
        status.SyncDesiredPending = false;
    }
}

void PositionReport::showCameraBytes(int& index, int count, int camera) {
    const auto c = static_cast<std::size_t>(camera);
    QLabel* label = cameras_.RXLabel[c];
    const bool hex = cameras_.HexOp1[c] != nullptr && cameras_.HexOp1[c]->isChecked();
    QString text;
    for (int i = 0; i < count; ++i) {
        if (i > kCameraBufferLast) {
            throw RangeFault(RangeFault::SubscriptOutOfRange, "camera byte count");
        }
        const Byte value = context_.state.RxBuffer[index++];
        text += hex ? QString::number(value, 16).toUpper() : QString(QChar(value));
        CamRxData[c][static_cast<std::size_t>(i)] = value;
    }
    if (label != nullptr) {
        label->setText(text);
    }
}

void PositionReport::decodeSoftLimit() {
    const ByteTable& rx = context_.state.RxBuffer;
    UnitStatus& status = context_.status;
    const float value = hundredths(getPosition(rx, vocab::soft_limit_reply::kPosition));
    const auto index = static_cast<int>(vocab::get(rx, vocab::soft_limit_reply::kLimit));
    switch (index) {
        case 0:
            status.PanMaxLimit = value;
            break;
        case 1:
            status.PanMinLimit = value;
            break;
        case 2:
            status.TiltMaxLimit = value;
            break;
        case 3:
            status.TiltMinLimit = value;
            break;
        default:
            break;
    }
    if (index <= 3) {
        page_.Label13[static_cast<std::size_t>(index)]->setText(
            formatAngle(static_cast<double>(value)));
    }
    rescaleGauge();
}

void PositionReport::rescaleGauge() {
    UnitStatus& status = context_.status;
    if (status.PanContinuous) {
        // A unit that turns for ever has no pan limits: take the gauge's own
        // ends, so the step buttons never stop it.
        status.PanMaxLimit = static_cast<float>(page_.Gauge->maximum());
        status.PanMinLimit = static_cast<float>(page_.Gauge->minimum());
        return;
    }
    if (status.PanMinLimit != status.PanMaxLimit) {
        page_.Gauge->setRange(status.PanMinLimit, status.PanMaxLimit);
    }
}

void PositionReport::refreshStatusLamps() {
    UnitStatus& status = context_.status;
    const Byte a = status.StatusBytes[0];
    const Byte b = status.StatusBytes[1];
    const Byte c = status.StatusBytes[2];
    status.LimitFault = false;

    auto travel = [&status](StatusLamp* lamp, bool hard, bool soft, bool moving) {
        if (hard) {
            lamp->setColor(kRed);
            status.LimitFault = true;
        } else if (soft) {
            lamp->setColor(kYellow);
            status.LimitFault = true;
        } else if (moving) {
            lamp->setColor(kGreen);
        } else {
            lamp->setColor(kLightGrey);
        }
    };
    using namespace vocab::report;
    using vocab::isSet;
    travel(page_.CWLed, isSet(a, kCwHardLimit), isSet(a, kCwSoftLimit), isSet(c, kMovingCw));
    travel(page_.CCWLed, isSet(a, kCcwHardLimit), isSet(a, kCcwSoftLimit), isSet(c, kMovingCcw));
    travel(page_.UpLed, isSet(b, kUpHardLimit), isSet(b, kUpSoftLimit), isSet(c, kMovingUp));
    travel(page_.DownLed, isSet(b, kDownHardLimit), isSet(b, kDownSoftLimit),
           isSet(c, kMovingDown));

    auto single = [&status](StatusLamp* lamp, bool lit, const QColor& on, const QColor& off,
                            bool isFault) {
        lamp->setColor(lit ? on : off);
        if (lit && isFault) {
            status.LimitFault = true;
        }
    };
    single(page_.PTOLed, isSet(a, kPanTimeout), kRed, kDarkRed, true);
    single(page_.PDELed, isSet(a, kPanDirectionFault), kRed, kDarkRed, true);
    single(page_.TTOLed, isSet(b, kTiltTimeout), kRed, kDarkRed, true);
    single(page_.TDELed, isSet(b, kTiltDirectionFault), kRed, kDarkRed, true);
    single(page_.DesLed, isSet(c, kTarget), kYellow, kOlive, false);
    single(page_.ExecLed, isSet(c, kTourExecuting), kGreen, kDarkGreen, false);
    single(page_.SLOverLed, isSet(c, kSoftLimitOverridden), kRed, kDarkRed, false);
}

void PositionReport::refreshControllerAndGauge() {
    switch (context_.status.UnitVariant()) {
        case 0:
            page_.ControllerLabel->setText(QStringLiteral("Halvex"));
            break;
        case 1:
            page_.ControllerLabel->setText(QStringLiteral("Zelvar"));
            break;
        default:
            page_.ControllerLabel->setText(QStringLiteral("Unknown"));
            break;
    }
    // The gauge draws the needle at the nearer end when the value is off its scale.
    page_.Gauge->setValue(context_.status.CurrentPan);
}

void PositionReport::SSTab1_Click(int shownPage) {
    jog_.stop();
    if (shownPage == pageIndex(Page::PanTilt)) {
        jog_.JogEnabled = true;
        jog_.JogPanOn = true;
        jog_.JogTiltOn = true;
        page_.Label3->setText(QStringLiteral("Jog Pan And Tilt"));
        return;
    }
    jog_.JogEnabled = false;
    if (shownPage == pageIndex(Page::Tours)) {
        emit context_.events.tourPresetChoicesRefillRequested();
    }
}

}  // namespace halvex
