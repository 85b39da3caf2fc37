#include <gtest/gtest.h>

#include <map>

#include <QPushButton>
#include <QRadioButton>
#include <QStatusBar>

#include "session/unit_status.h"
#include "tests/support/console_rig.h"
#include "tests/support/messages.h"
#include "tests/support/scripted_unit.h"
#include "views/pages/pan_tilt_page.h"
#include "views/widgets/led_display.h"
#include "views/widgets/pan_gauge.h"
#include "views/widgets/status_lamp.h"

using namespace halvex;
using namespace halvex::testing;

namespace {
// The console with its port open but no ticks running, so the only replies
// are the ones a test puts on the line.
struct ReportRig : ConsoleRig {
    ReportRig() {
        port->open(QStringLiteral("COM1"), 9600);
        window->SSTab1().setEnabled(true);
    }

    void arrive(const std::vector<Byte>& message) {
        port->injectIncoming(ScriptedUnit::replyWire(0, message));
    }
    // A report answering `code`: pan and tilt in hundredths, status bytes A,
    // B and C, the lenses at 10, 20, 30 and 40, then `tail`.
    void report(Byte code, std::int32_t pan, std::int32_t tilt, Byte a, Byte b, Byte c,
                std::vector<Byte> tail = {0, 0}) {
        namespace r = vocab::report;
        auto m = test::report(code, {{r::kPan, pan},
                                     {r::kTilt, tilt},
                                     {r::kStatusAByte, a},
                                     {r::kStatusB, b},
                                     {r::kStatusC, c}});
        for (std::size_t i = 0; i < 4; ++i) {
            vocab::put(m, r::kLens[i], static_cast<std::uint32_t>(10 * (i + 1)));
        }
        m.insert(m.end(), tail.begin(), tail.end());
        arrive(m);
    }

    double led(const char* name) { return find<LedDisplay>(QLatin1String(name))->value(); }
    QColor lamp(const char* name) { return find<StatusLamp>(QLatin1String(name))->color(); }
    QString text(const char* name) { return find<QLabel>(QLatin1String(name))->text(); }
    PanTiltPage& page() { return window->panTiltPage(); }
};

const QColor kRed(255, 0, 0), kYellow(255, 255, 0), kGreen(0, 255, 0), kGrey(224, 224, 224);
}  // namespace

TEST(PositionReport, ReportsFillTheirOwnDisplaysAndCameraBytesRideOnlyOnJogReplies) {
    ReportRig rig;
    rig.report(0x31, -100, 4550, 0, 0, 0x80);
    EXPECT_FLOAT_EQ(rig.led("PanPosLED"), -1.0);
    EXPECT_FLOAT_EQ(rig.led("TiltPosLED"), 45.5);
    EXPECT_EQ(rig.text("Label1_1"), QStringLiteral("Halvex"));
    // Each lens's position in its own display and read-out.
    const std::pair<const char*, const char*> lenses[] = {{"Z1LED", "Zoom1Label"},
                                                          {"F1LED", "Focus1Label"},
                                                          {"Z2LED", "Zoom2Label"},
                                                          {"F2LED", "Focus2Label"}};
    for (int i = 0; i < 4; ++i) {
        EXPECT_FLOAT_EQ(rig.led(lenses[i].first), 10 * (i + 1)) << lenses[i].first;
        EXPECT_EQ(rig.text(lenses[i].second), QString::number(10 * (i + 1)));
    }
    // Continuous pan: no pan soft limits to set.
    EXPECT_FALSE(rig.page().SetSLBut[0]->isEnabled());
    EXPECT_FALSE(rig.page().SetSLBut[1]->isEnabled());
    EXPECT_TRUE(rig.page().SetSLBut[2]->isEnabled());

    // Every move reply carries the target it heads for.
    for (const Byte code : {0x32, 0x34, 0x35, 0x36, 0x3A, 0x33}) {
        rig.report(code, 9000 + code, -1234, 0, 0, 0x20, {});
        EXPECT_FLOAT_EQ(rig.led("PDesLed"), (9000 + code) / 100.0f) << int{code};
    }
    EXPECT_FLOAT_EQ(rig.led("TDesLed"), -12.34f);
    EXPECT_FLOAT_EQ(rig.led("PanPosLED"), -1.0);  // untouched by a target report
    EXPECT_TRUE(rig.page().SetSLBut[0]->isEnabled());

    auto* rx1 = rig.find<QLabel>(QStringLiteral("RXLabel_0"));
    rig.find<QRadioButton>(QStringLiteral("HexOp1_1"))->setChecked(true);
    rig.report(0x31, 0, 0, 1, 0, 0, {2, 3, 'O', 'K', 0x90, 0x41, 0xFF});
    EXPECT_EQ(rx1->text(), QStringLiteral("OK"));
    EXPECT_EQ(rig.text("RXLabel_1"), QStringLiteral("9041FF"));
    EXPECT_EQ(rig.text("Label1_1"), QStringLiteral("Zelvar"));
    // A move reply carries no camera data: the text stays.
    rig.report(0x33, 0, 0, 2, 0, 0x20, {});
    EXPECT_EQ(rx1->text(), QStringLiteral("OK"));
    EXPECT_EQ(rig.text("Label1_1"), QStringLiteral("Unknown"));
    // The camera buffer holds 101 bytes; one more stops the decoder, not the
    // program.
    for (const int count : {101, 102}) {
        std::vector<Byte> many{static_cast<Byte>(count), 0};
        many.insert(many.end(), static_cast<std::size_t>(count), 'x');
        rig.window->statusBar()->clearMessage();
        rig.report(0x31, 0, 0, 0, 0, 0, many);
        EXPECT_EQ(rig.window->statusBar()->currentMessage().contains(
                      QStringLiteral("Subscript out of range")),
                  count > 101);
    }
    EXPECT_EQ(rx1->text(), QString(101, u'x'));
    rig.report(0x31, 500, 0, 0, 0, 0);
    EXPECT_FLOAT_EQ(rig.led("PanPosLED"), 5.0);
}

TEST(PositionReport, SoftLimitRepliesSetTheLimitsAndTheGaugeScale) {
    ReportRig rig;
    rig.arrive({0x81, 1, 0x18, 0xFC, 0xFF});  // pan minimum -1000
    rig.arrive({0x81, 0, 0x28, 0x23, 0x00});  // pan maximum 9000
    rig.arrive({0x81, 3, 0xD8, 0xDC, 0xFF});  // tilt minimum -9000
    rig.arrive({0x81, 4, 0x01, 0x00, 0x00});  // no such limit: nothing changes
    const UnitStatus& status = rig.window->status();
    EXPECT_EQ(std::vector<float>({status.PanMaxLimit, status.PanMinLimit, status.TiltMinLimit,
                                  status.TiltMaxLimit}),
              (std::vector<float>{90.0f, -10.0f, -90.0f, 0.0f}));
    EXPECT_EQ(rig.text("Label13_3"), QStringLiteral("-90.00"));

    auto* gauge = rig.find<PanGauge>(QStringLiteral("PanGauge"));
    EXPECT_DOUBLE_EQ(gauge->minimum(), -10.0);
    EXPECT_DOUBLE_EQ(gauge->maximum(), 90.0);
    rig.report(0x31, 17000, 0, 0, 0, 0);
    EXPECT_DOUBLE_EQ(gauge->needleValue(), 90.0);
}

TEST(PositionReport, EachStatusBitLightsItsOwnLampAndOnlyLimitsAndFaultsRaiseTheFault) {
    ReportRig rig;
    // Each lamp's colour with no bit set.
    std::map<QString, QColor> dark = {{"DesLed", QColor(128, 128, 0)},
                                      {"ExecLed", QColor(0, 128, 0)}};
    for (const char* lamp : {"CWLed", "CCWLed", "UpLed", "DownLed"}) {
        dark[lamp] = kGrey;
    }
    for (const char* lamp : {"PTOLed", "PDELed", "TTOLed", "TDELed", "SLOverLed"}) {
        dark[lamp] = QColor(128, 0, 0);
    }
    // Status byte (pan, tilt, motion), bit, the lamp it lights, its colour.
    struct Bit {
        int byte, bit;
        const char* lamp;
        QColor lit;
        bool fault;
    };
    const Bit bits[] = {{0, 5, "CWLed", kRed, true},      {0, 7, "CWLed", kYellow, true},
                        {2, 3, "CWLed", kGreen, false},   {0, 4, "CCWLed", kRed, true},
                        {0, 6, "CCWLed", kYellow, true},  {2, 2, "CCWLed", kGreen, false},
                        {1, 5, "UpLed", kRed, true},      {1, 7, "UpLed", kYellow, true},
                        {2, 1, "UpLed", kGreen, false},   {1, 4, "DownLed", kRed, true},
                        {1, 6, "DownLed", kYellow, true}, {2, 0, "DownLed", kGreen, false},
                        {0, 3, "PTOLed", kRed, true},     {0, 2, "PDELed", kRed, true},
                        {1, 3, "TTOLed", kRed, true},     {1, 2, "TDELed", kRed, true},
                        {2, 4, "SLOverLed", kRed, false}, {2, 5, "DesLed", kYellow, false},
                        {2, 6, "ExecLed", kGreen, false}};
    for (const Bit& b : bits) {
        Byte status[3] = {0, 0, 0};
        status[b.byte] = static_cast<Byte>(1 << b.bit);
        rig.report(0x31, 0, 0, status[0], status[1], status[2]);
        for (const auto& [lamp, off] : dark) {
            EXPECT_EQ(rig.lamp(qPrintable(lamp)), lamp == QLatin1String(b.lamp) ? b.lit : off)
                << qPrintable(lamp) << " with bit " << b.bit << " of byte " << b.byte;
        }
        EXPECT_EQ(rig.window->status().LimitFault, b.fault) << b.lamp;
    }
}
