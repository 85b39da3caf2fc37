// View > Input Settings against the whole console and a virtual controller.

#include <QAction>
#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QLabel>
#include <QPushButton>
#include <QSpinBox>

#include "input/input_settings_dialog.h"
#include "tests/input/input_rig.h"
#include "tests/support/kept_picture.h"

namespace halvex::testing {
namespace {

class InputSettingsTest : public InputTest {
  protected:
    InputSettingsDialog* open() {
        rig().find<QAction>(QStringLiteral("MenuInputSettings"))->trigger();
        InputSettingsDialog* dialog = nullptr;
        EXPECT_TRUE(ConsoleRig::waitFor([&] {
            dialog = rig().window->findChild<InputSettingsDialog*>(QStringLiteral("InputSettings"));
            return dialog != nullptr && dialog->isVisible();
        }));
        return dialog;
    }
};

TEST_F(InputSettingsTest, ShowsTheDeviceItsMappingAndALivePreviewAsLastLookedAt) {
    VirtualDevice pad(true);
    ASSERT_TRUE(rig().usesDevice());
    InputSettingsDialog* dialog = open();
    ASSERT_NE(dialog, nullptr);
    // The device list, the device in use and the standard mapping it shows
    // (left stick pan and tilt, tilt inverted, B stops) are in its picture.
    // A stick pushed shows in the preview.
    pad.axis(SDL_CONTROLLER_AXIS_LEFTX, 20000);
    auto* preview = rig().find<QLabel>(QStringLiteral("AxisPreview_0"));
    EXPECT_TRUE(ConsoleRig::waitFor([&] { return preview->text() == QStringLiteral("29 %"); }));
    if (QWidget* focus = QApplication::focusWidget()) {
        focus->clearFocus();
    }
    expectLooksAsKept(*dialog, {HALVEX_KEPT_PICTURES, HALVEX_SEEN_PICTURES},
                      QStringLiteral("input-settings"));
    dialog->reject();
}

TEST_F(InputSettingsTest, OkPutsTheMappingToWorkAndKeepsItForTheDevice) {
    auto pad = std::make_unique<VirtualDevice>(true);
    ASSERT_TRUE(rig().usesDevice());
    InputSettingsDialog* dialog = open();
    ASSERT_NE(dialog, nullptr);
    rig().find<QCheckBox>(QStringLiteral("InvertCheck_0"))->setChecked(true);
    auto* preset3 = rig().find<QComboBox>(QStringLiteral("ButtonCombo_10"));
    preset3->setCurrentIndex(preset3->findData(int{SDL_CONTROLLER_BUTTON_A}));
    rig().find<QSpinBox>(QStringLiteral("KeySpeedSpin"))->setValue(50);
    rig().find<QSpinBox>(QStringLiteral("KeySlowSpin"))->setValue(1);  // the unit's slowest
    rig()
        .find<QDialogButtonBox>(QStringLiteral("InputButtons"))
        ->button(QDialogButtonBox::Ok)
        ->click();
    EXPECT_TRUE(ConsoleRig::waitFor([&] { return QApplication::activeModalWidget() == nullptr; }));
    rig().window->activateWindow();
    EXPECT_TRUE(QTest::qWaitForWindowActive(window()));
    pad->axis(SDL_CONTROLLER_AXIS_LEFTX, 32767);
    EXPECT_EQ(rig().nextMotion(), (std::array<int, 3>{255, 0, 0x00}));  // right is now CCW
    pad->axis(SDL_CONTROLLER_AXIS_LEFTX, 0);
    pad->button(SDL_CONTROLLER_BUTTON_A, true);
    EXPECT_TRUE(rig().sends({0x32, 3}));
    press(Qt::Key_Right);
    EXPECT_EQ(rig().nextMotion()[0], 50);
    release(Qt::Key_Right);
    press(Qt::Key_Right, Qt::ControlModifier);
    EXPECT_EQ(rig().nextMotion()[0], 1);

    // The same model plugged in again keeps its mapping.
    pad.reset();
    pad = std::make_unique<VirtualDevice>(true);
    ASSERT_TRUE(rig().usesDevice());
    pad->axis(SDL_CONTROLLER_AXIS_LEFTX, 32767);
    EXPECT_EQ(rig().nextMotion()[2] & 0x80, 0);
}

}  // namespace
}  // namespace halvex::testing
