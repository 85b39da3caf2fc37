#pragma once

// The whole console against the virtual unit with the port open and the jog
// message ticking, but without the connection sequence: each test starts in
// a fraction of a second, from empty lists. The pages are driven by name.

#include <QAbstractButton>
#include <QListWidget>

#include "tests/support/console_rig.h"
#include "tests/support/finish.h"
#include "tests/support/messages.h"
#include "tests/support/scripted_unit.h"
#include "views/widgets/led_display.h"

namespace halvex::testing {

using Message_ = std::vector<Byte>;
using Messages_ = std::vector<Message_>;

inline Message_ presetRead(int preset) {
    return test::message<vocab::PresetRequest>({{vocab::preset_request::kPreset, preset}});
}

// The 32 requests of a preset reload, after `reads`.
inline Messages_ presetReads(Messages_ reads = {}) {
    for (int n = 0; n < 32; ++n) {
        reads.push_back(presetRead(n));
    }
    return reads;
}

// The request for soft limit `limit`'s position.
inline Message_ softLimitRead(int limit) {
    return test::withBits(test::message<vocab::SoftLimit>({{vocab::soft_limit::kLimit, limit}}),
                          {vocab::kReadRequest<vocab::SoftLimit>});
}

struct PagesRig : ConsoleRig {
    PagesRig() {
        QObject::connect(&window->state(), &FormState::faultReported,
                         [this](const QString& fault) { faults << fault; });
        port->open(QStringLiteral("COM1"), 9600);
        window->link().Timer2().start();
        window->SSTab1().setEnabled(true);
    }
    // A test's frame watcher may refer to its locals, gone by now.
    ~PagesRig() { line.onFrame = nullptr; }
    // Requests since the last line.clear(), jog messages left out.
    Messages_ sent() const { return line.messages(false); }
    // A reply as if the unit had sent it; what it starts has finished when
    // this returns.
    void inject(const Message_& message) {
        port->injectIncoming(ScriptedUnit::replyWire(0, message));
        // A reply that reloads a tour does so on the next turn of the loop.
        QCoreApplication::sendPostedEvents();
        settle();
    }
    // Lets the line run until `count` more frames have gone out.
    void ticks(int count) {
        const std::size_t start = line.frames().size();
        waitFor([&] { return line.frames().size() >= start + static_cast<std::size_t>(count); });
    }
    LedDisplay* led(const char* name) { return find<LedDisplay>(QLatin1String(name)); }
    // The caption of a label or button.
    QString text(const char* name) {
        return find<QWidget>(QLatin1String(name))->property("text").toString();
    }
    bool enabled(const char* name) { return find<QWidget>(QLatin1String(name))->isEnabled(); }
    QListWidget* list(const char* name) { return find<QListWidget>(QLatin1String(name)); }
    QStringList lines(const char* name) {
        QStringList texts;
        for (int i = 0; i < list(name)->count(); ++i) {
            texts << list(name)->item(i)->text();
        }
        return texts;
    }
    // Clicks a row, and clicks it again when `twice`.
    void selectRow(const char* name, int row, bool twice = false) {
        QListWidget* widget = list(name);
        ASSERT_LT(row, widget->count()) << name;
        const QPoint at = widget->visualItemRect(widget->item(row)).center();
        QTest::mouseClick(widget->viewport(), Qt::LeftButton, {}, at);
        if (twice) {
            QTest::mouseDClick(widget->viewport(), Qt::LeftButton, {}, at);
        }
        settle();
    }
    // Without the mouse: a radio button's middle may lie beyond its text.
    // Returns once what the click started has finished.
    void click(const char* name) {
        find<QAbstractButton>(QLatin1String(name))->click();
        settle();
    }

    QStringList faults;
};

}  // namespace halvex::testing

// Readable QString values in test failure messages.
inline void PrintTo(const QString& text, std::ostream* os) {
    *os << '"' << text.toStdString() << '"';
}
