#include "bench/soak/scripted_operator.h"

#include <QAbstractButton>
#include <QListWidget>
#include <QStringList>
#include <QTabWidget>

#include "window/vornixu.h"

namespace {
constexpr int kPanTiltPage = 0;
constexpr int kPresetsPage = 1;
constexpr int kToursPage = 3;

// The command code of a frame from its capture line ("02 01 33 ..."): the
// third field once the escapes are skipped.
int codeOf(const QString& capture) {
    const QStringList fields = capture.split(QLatin1Char(' '));
    int field = 0;
    for (int index = 0; index < fields.size(); ++index) {
        if (fields[index] == QLatin1String("1B")) {
            continue;
        }
        if (++field == 3) {
            return fields[index].toInt(nullptr, 16);
        }
    }
    return -1;
}
}  // namespace

ScriptedOperator::ScriptedOperator(halvex::VornixU& window, int everyMs, QObject* parent)
    : QObject(parent), window_(window) {
    timer_.setInterval(everyMs);
    connect(&timer_, &QTimer::timeout, this, &ScriptedOperator::act);
    connect(&window_.link(), &halvex::Link::frameSent, this, &ScriptedOperator::onFrameSent);
    connect(&window_.state(), &halvex::FormState::faultReported, this, &ScriptedOperator::onFault);
}

void ScriptedOperator::act() {
    giveUpOnOld();
    // An operator clicks only what is there to click.
    if (!window_.windowTitle().endsWith(QStringLiteral(" Online")) ||
        !window_.SSTab1().isEnabled()) {
        return;
    }
    std::uniform_int_distribution<int> pan(-9000, 9000);
    std::uniform_int_distribution<int> tilt(-3000, 3000);
    switch (next_++ % 3) {
        case 0:
            window_.findChild<QWidget*>(QStringLiteral("PanDesLED"))
                ->setProperty("value", pan(random_) / 100.0);
            window_.findChild<QWidget*>(QStringLiteral("TiltDesLED"))
                ->setProperty("value", tilt(random_) / 100.0);
            click(kPanTiltPage, "AbsoBut", 0x33);
            break;
        case 1: {
            auto* list = window_.findChild<QListWidget*>(QStringLiteral("PresetList"));
            window_.SSTab1().setCurrentIndex(kPresetsPage);
            if (list == nullptr || list->count() == 0) {
                return;
            }
            list->setCurrentRow(std::uniform_int_distribution<int>(0, 29)(random_) % list->count());
            window_.findChild<QWidget*>(QStringLiteral("PanPreLED"))
                ->setProperty("value", pan(random_) / 100.0);
            window_.findChild<QWidget*>(QStringLiteral("TiltPreLED"))
                ->setProperty("value", tilt(random_) / 100.0);
            click(kPresetsPage, "SavePreBut", 0x41);
            break;
        }
        default: {
            const int tour = std::uniform_int_distribution<int>(0, 2)(random_);
            click(kToursPage, qPrintable(QStringLiteral("TourSel_%1").arg(tour)), 0x56);
            break;
        }
    }
}

void ScriptedOperator::click(int page, const char* button, halvex::Byte code) {
    auto* control = window_.findChild<QAbstractButton*>(QString::fromLatin1(button));
    window_.SSTab1().setCurrentIndex(page);
    if (control == nullptr || !control->isEnabled() || !window_.SSTab1().isEnabled()) {
        return;
    }
    Expected expected{code, {}};
    expected.since.start();
    expected_.push_back(expected);
    ++clicks_;
    // The handler runs here and may wait for its tick inside; other clicks
    // and replies go on meanwhile, as they do for an operator.
    control->click();
    window_.SSTab1().setCurrentIndex(kPanTiltPage);
}

void ScriptedOperator::onFrameSent(const QString& capture) {
    const int code = codeOf(capture);
    for (auto it = expected_.begin(); it != expected_.end(); ++it) {
        if (it->code == code) {
            expected_.erase(it);
            ++sent_;
            return;
        }
    }
}

void ScriptedOperator::onFault(const QString& message) {
    // "Port closed: 2 command(s) not sent", "Command 33 not sent: ...".
    if (!message.contains(QStringLiteral("not sent")) || expected_.empty()) {
        return;
    }
    reported_ += static_cast<int>(expected_.size());
    expected_.clear();
}

void ScriptedOperator::giveUpOnOld() {
    while (!expected_.empty() && expected_.front().since.elapsed() > kGiveUpMs) {
        expected_.pop_front();
        ++lost_;
    }
}
