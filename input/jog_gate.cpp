#include "input/jog_gate.h"

#include <QApplication>
#include <QWindow>

namespace halvex {

JogGate::JogGate(JogSources& sources, const JogState& jog, FormState& state, QWidget& window,
                 QObject* parent)
    : QObject(parent), sources_(sources), jog_(jog), state_(state), window_(&window) {
    // Each of these can end the operator's right to steer; each also runs
    // again on every controller read and every jog message.
    connect(&state_, &FormState::changed, this, &JogGate::check);
    connect(qApp, &QApplication::focusChanged, this, &JogGate::check);
    connect(qApp, &QGuiApplication::focusWindowChanged, this, &JogGate::check);
    connect(qApp, &QGuiApplication::applicationStateChanged, this, &JogGate::check);
}

bool JogGate::allowedNow() const {
    return window_ != nullptr && jog_.JogEnabled && state_.Online && window_->isActiveWindow() &&
           QApplication::activeModalWidget() == nullptr;
}

bool JogGate::check() {
    const bool allowed = allowedNow();
    if (open_ && !allowed) {
        sources_.stopAll();
    }
    open_ = allowed;
    return open_;
}

}  // namespace halvex
