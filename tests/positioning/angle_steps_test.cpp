#include <gtest/gtest.h>

#include <QTest>
#include <QToolButton>

#include "positioning/angle_steps.h"
#include "protocol/form_state.h"
#include "views/widgets/led_display.h"
#include "views/widgets/spin_button.h"

using namespace halvex;

namespace {
struct StepRig {
    FormState state;
    QWidget page;
    LedDisplay* led = new LedDisplay(&page);
    AngleStepRow row = makeAngleStepRow(QStringLiteral("PanDesBut"), &page);
    bool continuous = false;
    float lower = -10.0f;
    float upper = 10.0f;

    StepRig() {
        connectAngleSteps(
            state, row.buttons, led,
            [this]() -> std::optional<float> {
                return continuous ? std::nullopt : std::optional<float>(lower);
            },
            [this]() -> std::optional<float> {
                return continuous ? std::nullopt : std::optional<float>(upper);
            });
    }
    void click(int index, const char* arrow) {
        auto* spin = page.findChild<SpinButton*>(QStringLiteral("PanDesBut_%1").arg(index));
        ASSERT_NE(spin, nullptr);
        QTest::mouseClick(spin->findChild<QToolButton*>(QString::fromLatin1(arrow)),
                          Qt::LeftButton);
    }
};
}  // namespace

TEST(AngleSteps, EachIndexStepsByItsPowerOfTen) {
    StepRig rig;
    rig.lower = -1000.0f;
    rig.upper = 1000.0f;
    const float expected[] = {0.01f, 0.1f, 1.0f, 10.0f, 100.0f};
    for (int k = 0; k < kAngleStepButtons; ++k) {
        rig.led->setValue(0.0);
        rig.click(k, "up");
        EXPECT_FLOAT_EQ(rig.led->value(), expected[k]) << "up " << k;
        rig.click(k, "down");
        rig.click(k, "down");
        EXPECT_FLOAT_EQ(rig.led->value(), -expected[k]) << "down " << k;
    }
}

TEST(AngleSteps, StopsAtTheBoundOnItsOwnSideOnly) {
    StepRig rig;
    rig.led->setValue(9.5);
    rig.click(2, "up");
    EXPECT_FLOAT_EQ(rig.led->value(), 10.0f);
    rig.led->setValue(-9.95);
    rig.click(1, "down");
    EXPECT_FLOAT_EQ(rig.led->value(), -10.0f);
    // A value already past the upper bound stays there on a down click.
    rig.led->setValue(50.0);
    rig.click(0, "down");
    EXPECT_FLOAT_EQ(rig.led->value(), 49.99f);
    // And one past the lower bound is not pulled up by an up click.
    rig.led->setValue(-50.0);
    rig.click(2, "up");
    EXPECT_FLOAT_EQ(rig.led->value(), -49.0f);
}

TEST(AngleSteps, NoBoundWhileThePanIsContinuous) {
    StepRig rig;
    rig.continuous = true;
    rig.led->setValue(-9.0);
    rig.click(4, "down");
    EXPECT_FLOAT_EQ(rig.led->value(), -109.0f);
    rig.click(4, "up");
    rig.click(4, "up");
    rig.click(4, "up");
    EXPECT_FLOAT_EQ(rig.led->value(), 191.0f);
}

TEST(AngleSteps, FixedBoundsOfTheCorrectionLeds) {
    EXPECT_FLOAT_EQ(stepAngleUp(89.5f, 2, fixedBound(90.0f)()), 90.0f);
    EXPECT_FLOAT_EQ(stepAngleDown(-179.0f, 3, fixedBound(-180.0f)()), -180.0f);
}
