#include "connection/position_report.h"

#include "console/handler_wiring.h"
#include "console/page.h"
#include "protocol/vocabulary.h"
#include "session/position_encoding.h"
#include "session/text_fields.h"
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
}  // namespace

PositionReport::PositionReport(ConsoleContext& context, PanTiltPage& page, JogState& jog,
                               CameraReplyView cameras, QTabWidget& tabs, QObject* parent)
    : QObject(parent), context_(context), page_(page), jog_(jog), cameras_(cameras), tabs_(tabs) {
    Session& session = context_.session;
    connect(&session, &Session::lensReported, this, &PositionReport::showLensPositions);
    connect(&session, &Session::cameraBytesReported, this, &PositionReport::showCameraBytes);
    connect(&session, &Session::continuousPanReported, this, [this](bool continuous) {
        page_.SetSLBut[0]->setEnabled(!continuous);
        page_.SetSLBut[1]->setEnabled(!continuous);
    });
    connect(&session, &Session::positionReported, this, &PositionReport::showPosition);
    connect(&session, &Session::targetReported, this, [this](float pan, float tilt) {
        page_.PDesLed->setValue(pan);
        page_.TDesLed->setValue(tilt);
        emit context_.events.targetPositionReported(pan, tilt);
    });
    connect(&session, &Session::desiredPositionSynced, this, [this](float pan, float tilt) {
        page_.PanDesLED->setValue(pan);
        page_.TiltDesLED->setValue(tilt);
        page_.PDesLed->setValue(pan);
        page_.TDesLed->setValue(tilt);
    });
    connect(&session, &Session::softLimitReported, this, &PositionReport::showSoftLimit);
    context_.receiver.addRefreshHook([this] { refreshStatusLamps(); });
}

void PositionReport::watchPageChanges() {
    onEvent(context_.state, &tabs_, &QTabWidget::currentChanged, this, "SSTab1_Click",
            [this](int shown) { SSTab1_Click(shown); });
}

void PositionReport::registerLateRefresh() {
    context_.receiver.addRefreshHook([this] { refreshControllerAndGauge(); });
}

void PositionReport::showLensPositions(const LensPositions& lens) {
    page_.Zoom1Label->setText(QString::number(lens[0]));
    page_.Focus1Label->setText(QString::number(lens[1]));
    page_.Zoom2Label->setText(QString::number(lens[2]));
    page_.Focus2Label->setText(QString::number(lens[3]));
}

void PositionReport::showPosition(float pan, float tilt) {
    const LensPositions& lens = context_.status.Lens;
    page_.PanPosLED->setValue(pan);
    page_.TiltPosLED->setValue(tilt);
    page_.Z1LED->setValue(lens[0]);
    page_.F1LED->setValue(lens[1]);
    page_.Z2LED->setValue(lens[2]);
    page_.F2LED->setValue(lens[3]);
    emit context_.events.currentPositionReported(pan, tilt);
}

void PositionReport::showCameraBytes(int camera, const std::vector<Byte>& bytes) {
    const auto c = static_cast<std::size_t>(camera);
    QLabel* label = cameras_.RXLabel[c];
    const bool hex = cameras_.HexOp1[c] != nullptr && cameras_.HexOp1[c]->isChecked();
    QString text;
    for (const Byte value : bytes) {
        text += hex ? QString::number(value, 16).toUpper() : QString(QChar(value));
    }
    if (label != nullptr) {
        label->setText(text);
    }
}

void PositionReport::showSoftLimit(int index, float value) {
    if (index >= 0 && index <= 3) {
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
