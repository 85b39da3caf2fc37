#include "positioning/jog.h"

#include <QSignalBlocker>
#include <cmath>

#include "console/handler_wiring.h"
#include "views/pages/pan_tilt_page.h"

namespace halvex {

namespace {
constexpr int kCentre = 255;
constexpr int kSpan = 512;

// Distance from the centre as a speed byte. Coordinates past 510 would give
// more than 255; the byte stops there.
Byte speedFrom(int distance) {
    return static_cast<Byte>(std::min(distance, 255));
}

int roundHalfEven(double value) {
    return static_cast<int>(std::nearbyint(value));
}
}  // namespace

int buttonValue(Qt::MouseButtons buttons) {
    int value = 0;
    if (buttons & Qt::LeftButton) {
        value |= JogControl::Left;
    }
    if (buttons & Qt::RightButton) {
        value |= JogControl::Right;
    }
    if (buttons & Qt::MiddleButton) {
        value |= JogControl::Middle;
    }
    return value;
}

JogControl::JogControl(ConsoleContext& context, JogState& jog, JogSources& sources,
                       PanTiltPage& page, QObject* parent)
    : QObject(parent), context_(context), jog_(jog), sources_(sources), page_(page) {
    // The session builds the jog message; the page draws what goes out.
    Session& session = context_.session;
    session.setBeforeJogMessage([this] { showJogVector(); });
    connect(&session, &Session::jogModifiersChanged, this, &JogControl::showModifiers);
    showModifiers(session.softLimitOverride(), session.panLowSpeed(), session.tiltLowSpeed());
    connect(page_.PanSloCheck, &QCheckBox::toggled, this,
            [&session](bool on) { session.setLowSpeed(on, session.tiltLowSpeed()); });
    connect(page_.TiltSloCheck, &QCheckBox::toggled, this,
            [&session](bool on) { session.setLowSpeed(session.panLowSpeed(), on); });

    FormState& state = context_.state;
    onEvent(state, page_.Jog, &JogBox::mousePressed, this, "JogBox_MouseDown",
            [this](Qt::MouseButton button, Qt::MouseButtons, double x, double y) {
                JogBox_MouseDown(buttonValue(button), x, y);
            });
    onEvent(state, page_.Jog, &JogBox::mouseMoved, this, "JogBox_MouseMove",
            [this](Qt::MouseButton, Qt::MouseButtons buttons, double x, double y) {
                JogBox_MouseMove(buttonValue(buttons), x, y);
            });
    onEvent(state, page_.Jog, &JogBox::mouseReleased, this, "JogBox_MouseUp",
            [this] { JogBox_MouseUp(); });
    onEvent(state, page_.Command2, &QPushButton::clicked, this, "Command2_Click",
            [this] { Command2_Click(); });
}

void JogControl::showModifiers(bool softLimitOverride, bool panLowSpeed, bool tiltLowSpeed) {
    page_.Command2->setChecked(softLimitOverride);
    const QSignalBlocker panQuiet(page_.PanSloCheck);
    const QSignalBlocker tiltQuiet(page_.TiltSloCheck);
    page_.PanSloCheck->setChecked(panLowSpeed);
    page_.TiltSloCheck->setChecked(tiltLowSpeed);
}

void JogControl::JogBox_MouseDown(int button, double x, double y) {
    if (!jog_.JogEnabled) {
        sources_.release(JogSource::Box);
        return;
    }
    if (button == Right) {
        // Pan And Tilt -> Pan Only -> Tilt Only -> Pan And Tilt.
        if (!jog_.JogPanOn) {
            jog_.JogPanOn = true;
            jog_.JogTiltOn = true;
            page_.Label3->setText(QStringLiteral("Jog Pan And Tilt"));
        } else if (jog_.JogTiltOn) {
            jog_.JogTiltOn = false;
            page_.Label3->setText(QStringLiteral("Jog Pan Only"));
        } else {
            jog_.JogPanOn = false;
            jog_.JogTiltOn = true;
            page_.Label3->setText(QStringLiteral("Jog Tilt Only"));
        }
        return;
    }
    applyJogRule(button, x, y);
}

void JogControl::JogBox_MouseMove(int buttons, double x, double y) {
    if (!jog_.JogEnabled) {
        sources_.release(JogSource::Box);
        return;
    }
    applyJogRule(buttons, x, y);
}

void JogControl::JogBox_MouseUp() {
    sources_.release(JogSource::Box);
}

void JogControl::showJogVector() {
    const auto signedSpeed = [](Byte speed, bool positive) {
        return (positive ? 1.0 : -1.0) * speed / 255.0;
    };
    page_.Jog->setJogVector(QPointF(signedSpeed(jog_.PanJogSpeed, jog_.PanJogDirection),
                                    signedSpeed(jog_.TiltJogSpeed, jog_.TiltJogDirection)));
}

void JogControl::applyJogRule(int button, double x, double y) {
    const bool inside = button == Left && std::isfinite(x) && std::isfinite(y) &&
                        std::floor(x) >= 0 && std::floor(x) <= kSpan && std::floor(y) >= 0 &&
                        std::floor(y) <= kSpan;
    if (!inside) {
        page_.Jog->unsetCursor();
        sources_.release(JogSource::Box);
        return;
    }
    page_.Jog->setCursor(Qt::CrossCursor);
    const int px = roundHalfEven(x);
    const int py = roundHalfEven(y);

    // An axis on the centre line keeps its direction; an axis the mode turns
    // off still takes the direction the pointer shows, at speed 0.
    JogDemand demand;
    if (px < kCentre) {
        demand.pan = {speedFrom(kCentre - px), false};
    } else if (px > kCentre) {
        demand.pan = {speedFrom(px - kCentre), true};
    }
    if (py < kCentre) {
        demand.tilt = {speedFrom(kCentre - py), true};
    } else if (py > kCentre) {
        demand.tilt = {speedFrom(py - kCentre), false};
    }
    if (!jog_.JogPanOn) {
        demand.pan.speed = 0;
    }
    if (!jog_.JogTiltOn) {
        demand.tilt.speed = 0;
    }
    sources_.apply(JogSource::Box, demand);
}

void JogControl::Command2_Click() {
    // The button shows the session's answer (showModifiers).
    Session& session = context_.session;
    session.setSoftLimitOverride(!session.softLimitOverride());
}

}  // namespace halvex
