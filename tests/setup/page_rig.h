#pragma once

// The whole console against the in-process virtual unit, with what the page
// tests share: operate controls by name as the operator does, see what went
// down the line, and feed replies the unit would not send by itself.

#include <QAbstractButton>
#include <QComboBox>
#include <QLineEdit>
#include <QPushButton>
#include <QScrollBar>
#include <QStatusBar>
#include <functional>
#include <vector>

#include "tests/support/console_rig.h"
#include "tests/support/online_suite.h"
#include "tests/support/scripted_unit.h"
#include "views/widgets/spin_button.h"

namespace halvex::testing {

using Bytes = std::vector<Byte>;

// Operates the window's controls by name as the operator does.
struct Controls {
    VornixU* console = nullptr;

    template <typename T = QWidget>
    T* at(const QString& name) {
        T* widget = console->findChild<T*>(name);
        EXPECT_NE(widget, nullptr) << name.toStdString();
        return widget;
    }
    // Clicks reach only what is shown.
    void showPage(int index) {
        console->SSTab1().setEnabled(true);
        console->SSTab1().setCurrentIndex(index);
    }
    void press(const QString& name) {
        QWidget* widget = at(name);
        if (widget == nullptr || !widget->isEnabled()) {
            ADD_FAILURE() << "no enabled control " << name.toStdString();
            return;
        }
        // Check boxes and option buttons on their indicator, wherever the
        // layout has stretched them to.
        const bool box = qobject_cast<QAbstractButton*>(widget) != nullptr &&
                         qobject_cast<QPushButton*>(widget) == nullptr;
        QTest::mouseClick(widget, Qt::LeftButton, {},
                          box ? QPoint(7, widget->height() / 2) : widget->rect().center());
        settle();
    }
    void scroll(const QString& name, int value) { at<QScrollBar>(name)->setValue(value); }
    int value(const QString& name) { return at<QScrollBar>(name)->value(); }
    bool checked(const QString& name) { return at<QAbstractButton>(name)->isChecked(); }
    QString text(const QString& name) { return at(name)->property("text").toString(); }
    void setText(const QString& box, const QString& text) { at<QLineEdit>(box)->setText(text); }
    // Picks an item of a list as the operator does.
    void pick(const QString& list, const QString& item) {
        auto* combo = at<QComboBox>(list);
        const int index = combo->findText(item);
        ASSERT_GE(index, 0) << item.toStdString();
        combo->setCurrentIndex(index);
        emit combo->activated(index);
    }

    // Operator steps split by spaces: "Name=7" moves a scroll bar, "Name+"
    // and "Name-" step a spin button, "Name" clicks a control.
    void act(const QString& steps) {
        for (const QString& step : steps.split(' ', Qt::SkipEmptyParts)) {
            const qsizetype equals = step.indexOf('=');
            if (equals > 0) {
                scroll(step.left(equals), step.mid(equals + 1).toInt());
            } else if (step.endsWith('+')) {
                emit at<SpinButton>(step.chopped(1))->SpinUp();
            } else if (step.endsWith('-')) {
                emit at<SpinButton>(step.chopped(1))->SpinDown();
            } else {
                press(step);
            }
        }
    }
    // Checks controls against "Name=7" (a scroll bar's value), "Name:7" (a
    // caption), "Name" (checked) and "!Name" (not checked), split by spaces.
    void expect(const QString& states) {
        for (const QString& state : states.split(' ', Qt::SkipEmptyParts)) {
            const QStringList nameValue = state.split('=');
            const QStringList nameText = state.split(':');
            if (nameValue.size() == 2) {
                EXPECT_EQ(value(nameValue[0]), nameValue[1].toInt()) << nameValue[0].toStdString();
            } else if (nameText.size() == 2) {
                EXPECT_EQ(text(nameText[0]), nameText[1]) << nameText[0].toStdString();
            } else {
                EXPECT_EQ(checked(QString(state).remove('!')), !state.startsWith('!'))
                    << state.toStdString();
            }
        }
    }
};

class PagesRig : public ConsoleRig, public Controls {
  public:
    explicit PagesRig(const sim::UnitOptions& options = {}) : ConsoleRig(options) {
        console = window.get();
    }

    // The frames (jog messages left out) that `act` sends; waits for the
    // reply to the last of them, so that it has filled its controls.
    std::vector<Bytes> sentBy(const std::function<void()>& act) {
        FormState& state = window->state();
        line.clear();
        state.LastResponseCode = 0;
        act();
        settle();
        const std::vector<Bytes> sent = line.messages(false);
        if (!sent.empty()) {
            waitFor([&] { return state.LastResponseCode == sent.back().front(); }, 3000);
        }
        return sent;
    }
    std::vector<Bytes> sentBy(const char* steps) {
        return sentBy([&] { act(QString::fromUtf8(steps)); });
    }

    // Runs the rows in order; each must send exactly its frame (none when
    // empty). A frame sent by a reply filling its controls would show up in
    // the next row or in the quiet time after the last.
    struct Row {
        const char* steps;
        Bytes expected;
    };
    void runRows(const std::vector<Row>& rows) {
        for (const Row& row : rows) {
            SCOPED_TRACE(row.steps);
            const std::vector<Bytes> sent = sentBy(row.steps);
            EXPECT_EQ(sent, row.expected.empty() ? std::vector<Bytes>{}
                                                 : std::vector<Bytes>{row.expected});
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
