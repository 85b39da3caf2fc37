#pragma once

#include <QComboBox>
#include <QLabel>

#include "tests/support/console_rig.h"
#include "window/camera_features.h"

namespace halvex::testing {

// The console with its control lists and help files in the build's data
// folder (the tests do not live beside the program).
struct CameraRig : ConsoleRig {
    CameraRig() {
        features()->setDataFolder(QStringLiteral(HALVEX_DATA_OUT));
        showPage(4);
    }

    // Clicks reach only what is shown: the Camera page is 4, Tours 3.
    void showPage(int index) {
        window->SSTab1().setEnabled(true);
        window->SSTab1().setCurrentIndex(index);
    }

    CameraFeatures* features() { return window->findChild<CameraFeatures*>(); }

    template <typename T = QWidget>
    T* at(const QString& name) {
        T* widget = find<T>(name);
        EXPECT_NE(widget, nullptr) << name.toStdString();
        return widget;
    }
    QString text(const QString& label) { return at<QLabel>(label)->text(); }

    // Picks an item of a camera's list as the operator does.
    void pick(int camera, const QString& item) {
        auto* combo = at<QComboBox>(QStringLiteral("CamTypeCombo_%1").arg(camera));
        const int index = combo->findText(item);
        ASSERT_GE(index, 0) << item.toStdString();
        combo->setCurrentIndex(index);
        emit combo->activated(index);
    }

    // Every message of this code that went down the line.
    std::vector<std::vector<Byte>> sent(Byte code) const {
        std::vector<std::vector<Byte>> found;
        for (const auto& message : line.messages(false)) {
            if (!message.empty() && message.front() == code) {
                found.push_back(message);
            }
        }
        return found;
    }
    // The first message of this code after the line was cleared, or nothing
    // within the time (three ticks are plenty for a frame that is coming).
    std::vector<Byte> nextSent(Byte code, int timeoutMs = 2000) {
        waitFor([&] { return !sent(code).empty(); }, timeoutMs);
        const auto found = sent(code);
        return found.empty() ? std::vector<Byte>{} : found.front();
    }
};

}  // namespace halvex::testing
