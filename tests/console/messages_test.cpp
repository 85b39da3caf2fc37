#include <gtest/gtest.h>

#include <QAbstractButton>
#include <QMessageBox>
#include <QTemporaryDir>
#include <QTest>
#include <memory>
#include <optional>

#include "console/dialog_wait.h"
#include "console/messages.h"

using namespace halvex;

namespace {
QCoro::Task<> ask(const Messages& messages, std::optional<bool>& answer) {
    answer = co_await messages.confirm(QStringLiteral("Checklist"), QStringLiteral("Sure?"));
}

QCoro::Task<> pick(QWidget* window, QString suggested, std::optional<QString>& path) {
    path = co_await chooseFile(window, QStringLiteral("Save Unit Settings"), std::move(suggested),
                               QStringLiteral("Unit settings (*.txt)"), QFileDialog::AcceptSave);
}
}  // namespace

// The question returns at once with the box open over the window; the answer
// comes from the event loop once the box is closed, and a box that went with
// its window answers Cancel, also when it was answered just before.
TEST(Messages, ConfirmAnswersWhenTheBoxOverTheWindowIsClosed) {
    struct Case {
        QMessageBox::StandardButton clicked;
        bool windowGoes;
        bool answer;
    };
    for (const Case c :
         {Case{QMessageBox::Ok, false, true}, Case{QMessageBox::Cancel, false, false},
          Case{QMessageBox::NoButton, true, false}, Case{QMessageBox::Ok, true, false}}) {
        SCOPED_TRACE(c.clicked);
        auto window = std::make_unique<QWidget>();
        window->show();
        const Messages messages(window.get());
        std::optional<bool> answer;
        const QCoro::Task<> asking = ask(messages, answer);
        auto* box = window->findChild<QMessageBox*>();
        ASSERT_NE(box, nullptr);
        EXPECT_TRUE(box->isVisible());
        EXPECT_EQ(box->windowModality(), Qt::WindowModal);
        EXPECT_EQ(box->defaultButton(), box->button(QMessageBox::Cancel));
        if (c.clicked != QMessageBox::NoButton) {
            box->button(c.clicked)->click();
        }
        if (c.windowGoes) {
            window.reset();
        }
        EXPECT_FALSE(answer.has_value());
        ASSERT_TRUE(QTest::qWaitFor([&answer] { return answer.has_value(); }));
        EXPECT_EQ(*answer, c.answer);
        EXPECT_TRUE(window == nullptr || QTest::qWaitFor([&window] {
                        return window->findChild<QMessageBox*>() == nullptr;
                    }));
    }
}

// The file dialog offers the suggested name for saving; one that went with its
// window chooses nothing.
TEST(Messages, AFileIsChosenOverTheWindowAndNoneWhenTheWindowGoes) {
    const QTemporaryDir folder;
    const QString suggested = folder.filePath(QStringLiteral("unit-3.txt"));
    for (const bool windowGoes : {false, true}) {
        auto window = std::make_unique<QWidget>();
        window->show();
        std::optional<QString> path;
        const QCoro::Task<> picking = pick(window.get(), suggested, path);
        auto* dialog = window->findChild<QFileDialog*>();
        ASSERT_NE(dialog, nullptr);
        EXPECT_EQ(dialog->windowModality(), Qt::WindowModal);
        if (windowGoes) {
            window.reset();
        } else {
            static_cast<QDialog*>(dialog)->accept();  // as its Save button does
        }
        ASSERT_TRUE(QTest::qWaitFor([&path] { return path.has_value(); }));
        EXPECT_EQ(*path, windowGoes ? QString() : suggested);
    }
}
