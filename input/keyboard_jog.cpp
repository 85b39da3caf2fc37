#include "input/keyboard_jog.h"

#include <QAbstractSpinBox>
#include <QApplication>
#include <QComboBox>
#include <QKeyEvent>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QTextEdit>
#include <algorithm>

#include "input/jog_gate.h"

namespace halvex {

namespace {
bool isJogKey(int key) {
    switch (key) {
        case Qt::Key_Left:
        case Qt::Key_Right:
        case Qt::Key_Up:
        case Qt::Key_Down:
        case Qt::Key_PageUp:
        case Qt::Key_PageDown:
            return true;
        default:
            return false;
    }
}

// A widget where the keys mean text, or a list's choice, rather than a jog.
bool takesTyping(const QWidget* widget) {
    if (widget == nullptr) {
        return false;
    }
    if (qobject_cast<const QLineEdit*>(widget) != nullptr ||
        qobject_cast<const QAbstractSpinBox*>(widget) != nullptr ||
        qobject_cast<const QTextEdit*>(widget) != nullptr ||
        qobject_cast<const QPlainTextEdit*>(widget) != nullptr) {
        return true;
    }
    const auto* combo = qobject_cast<const QComboBox*>(widget);
    return combo != nullptr && combo->isEditable();
}
}  // namespace

KeyboardJog::KeyboardJog(JogSources& sources, JogGate& gate, QWidget& window, QObject* parent)
    : QObject(parent), sources_(sources), gate_(gate), window_(&window) {
    qApp->installEventFilter(this);
    // Keys held through a stop must be pressed again: they are forgotten (a
    // held key's repeats do not count as presses), and a fresh press steers.
    connect(&sources_, &JogSources::stopped, this, [this] {
        held_.clear();
        sources_.release(JogSource::Keyboard);
    });
}

void KeyboardJog::setSpeeds(const Speeds& speeds) {
    speeds_.normal = std::clamp(speeds.normal, 1, Speeds::kFastestJog);
    speeds_.fast = std::clamp(speeds.fast, 1, Speeds::kFastestJog);
    speeds_.slow = std::clamp(speeds.slow, 1, Speeds::kFastestJog);
    speeds_.zoom = std::clamp(speeds.zoom, 1, Speeds::kFastestZoom);
}

QStringList KeyboardJog::keyList() {
    return {QStringLiteral("Arrow keys: pan and tilt while held"),
            QStringLiteral("Shift with an arrow: faster; Ctrl with an arrow: slower"),
            QStringLiteral("Page Up / Page Down: zoom camera 1 in / out"),
            QStringLiteral("Home: Move To Home"), QStringLiteral("Esc: Stop")};
}

bool KeyboardJog::forOurWindow(QObject* watched) const {
    auto* widget = qobject_cast<QWidget*>(watched);
    return widget != nullptr && window_ != nullptr && widget->window() == window_;
}

bool KeyboardJog::eventFilter(QObject* watched, QEvent* event) {
    const QEvent::Type type = event->type();
    if (type != QEvent::KeyPress && type != QEvent::KeyRelease) {
        return false;
    }
    if (!forOurWindow(watched)) {
        return false;
    }
    auto* key = static_cast<QKeyEvent*>(event);
    return handleKey(key, type == QEvent::KeyPress);
}

bool KeyboardJog::handleKey(QKeyEvent* key, bool pressed) {
    const int code = key->key();
    const bool modifier = code == Qt::Key_Shift || code == Qt::Key_Control;
    if (!pressed) {
        // A release always counts, so that no key stays held in our books.
        if (key->isAutoRepeat()) {
            return isJogKey(code);
        }
        if (held_.remove(code) || modifier) {
            applyHeld(key->modifiers());
            return isJogKey(code);
        }
        return false;
    }
    if (!gate_.check() || takesTyping(QApplication::focusWidget())) {
        return false;
    }
    if (isJogKey(code)) {
        if (!key->isAutoRepeat()) {
            held_.insert(code);
            applyHeld(key->modifiers());
        }
        return true;
    }
    if (modifier) {
        applyHeld(key->modifiers());
        return false;
    }
    if (key->isAutoRepeat()) {
        return false;
    }
    if (code == Qt::Key_Home) {
        emit actionTriggered(ButtonAction::MoveHome, 0);
        return true;
    }
    if (code == Qt::Key_Escape) {
        emit actionTriggered(ButtonAction::Stop, 0);
        return true;
    }
    return false;
}

void KeyboardJog::applyHeld(Qt::KeyboardModifiers modifiers) {
    if (held_.isEmpty()) {
        sources_.release(JogSource::Keyboard);
        return;
    }
    int speed = speeds_.normal;
    if (modifiers & Qt::ShiftModifier) {
        speed = speeds_.fast;
    } else if (modifiers & Qt::ControlModifier) {
        speed = speeds_.slow;
    }
    const auto byte = static_cast<Byte>(std::clamp(speed, 0, 255));
    // Both keys of an axis held cancel out, as a stick cannot point both ways.
    const auto axis = [byte, this](int positive, int negative) -> AxisDemand {
        const bool plus = held_.contains(positive);
        const bool minus = held_.contains(negative);
        if (plus == minus) {
            return {};
        }
        return {byte, plus};
    };
    JogDemand demand;
    demand.pan = axis(Qt::Key_Right, Qt::Key_Left);
    demand.tilt = axis(Qt::Key_Up, Qt::Key_Down);
    const bool zoomIn = held_.contains(Qt::Key_PageUp);
    const bool zoomOut = held_.contains(Qt::Key_PageDown);
    if (zoomIn != zoomOut) {
        demand.lens[0] = lensJogByte(zoomIn ? speeds_.zoom : -speeds_.zoom);
    }
    sources_.apply(JogSource::Keyboard, demand);
}

}  // namespace halvex
