#pragma once

// The whole console online against the in-process virtual unit, with the
// helpers the setting pages' tests share: press a control as an operator
// would, see what went down the line, and feed replies the unit would not
// send by itself.

#include <QAbstractButton>
#include <QPushButton>
#include <QScrollBar>
#include <QStatusBar>
#include <functional>
#include <string>
#include <vector>

#include "tests/support/console_rig.h"
#include "tests/support/online_suite.h"
#include "tests/support/scripted_unit.h"

namespace halvex::testing {

using Bytes = std::vector<Byte>;

// One operator action and the one frame it must send (none when empty).
struct CommandRow {
    const char* what;
    std::function<void()> act;
    Bytes expected;
};

class PagesRig : public ConsoleRig {
  public:
    using ConsoleRig::ConsoleRig;

    void press(const char* name) {
        auto* button = find<QAbstractButton>(QString::fromLatin1(name));
        if (button == nullptr || !button->isEnabled()) {
            ADD_FAILURE() << "no enabled control " << name;
            return;
        }
        // Check boxes and option buttons on their indicator, wherever the
        // layout has stretched them to.
        const bool pushButton = qobject_cast<QPushButton*>(button) != nullptr;
        const QPoint at = pushButton ? button->rect().center() : QPoint(7, button->height() / 2);
        QTest::mouseClick(button, Qt::LeftButton, {}, at);
    }
    void scroll(const char* name, int value) {
        find<QScrollBar>(QString::fromLatin1(name))->setValue(value);
    }
    bool checked(const char* name) {
        return find<QAbstractButton>(QString::fromLatin1(name))->isChecked();
    }
    QString text(const char* name) {
        return find<QWidget>(QString::fromLatin1(name))->property("text").toString();
    }
    int value(const char* name) { return find<QScrollBar>(QString::fromLatin1(name))->value(); }

    // The frames (jog messages left out) that `act` sends; waits for the
    // reply to the last of them, so that it has filled its controls.
    std::vector<Bytes> sentBy(const std::function<void()>& act) {
        FormState& state = window->state();
        line.clear();
        state.LastResponseCode = 0;
        act();
        const std::vector<Bytes> sent = line.messages(false);
        if (!sent.empty()) {
            const Byte code = sent.back().front();
            waitFor([&] { return state.LastResponseCode == code; }, 3000);
        }
        return sent;
    }

    // Runs the rows in order; each must send exactly its frame. A frame that
    // a reply's filling of controls sent would show up in the next row.
    void runRows(const std::vector<CommandRow>& rows) {
        for (const CommandRow& row : rows) {
            SCOPED_TRACE(row.what);
            const std::vector<Bytes> sent = sentBy(row.act);
            if (row.expected.empty()) {
                EXPECT_TRUE(sent.empty());
            } else {
                EXPECT_EQ(sent, std::vector<Bytes>{row.expected});
            }
        }
        line.clear();
        QTest::qWait(250);
        EXPECT_TRUE(line.messages(false).empty()) << "a reply's controls sent a frame";
    }

    // A reply as if the unit had sent it, decoded before this returns.
    void inject(const Bytes& message) {
        FormState& state = window->state();
        state.LastResponseCode = 0;
        port->injectIncoming(ScriptedUnit::replyWire(state.UnitId, message));
        waitFor([&] { return state.LastResponseCode == message.front(); }, 2000);
    }

    QString statusMessage() { return window->statusBar()->currentMessage(); }
    void clearStatus() { window->statusBar()->clearMessage(); }
};

}  // namespace halvex::testing
