#include "views/pages/setup_page.h"

#include <QGridLayout>
#include <QHBoxLayout>
#include <QVBoxLayout>

#include "views/pages/control_parts.h"
#include "views/pages/page_parts.h"

namespace halvex {

namespace {
QPushButton* button(const char* name, const char* caption, QWidget* parent, const char* tip = "") {
    return namedButton(QString::fromLatin1(name), QString::fromLatin1(caption),
                       QString::fromLatin1(tip), parent);
}

// A pan and a tilt scroll bar on one row, each with its read-out.
struct AxisPair {
    ScrollRow pan;
    ScrollRow tilt;
};
AxisPair addAxisPair(QGridLayout* grid, int row, const char* caption, const char* pan,
                     const char* panReadout, const char* tilt, const char* tiltReadout, int minimum,
                     int maximum, int start, QWidget* parent) {
    AxisPair pair;
    pair.pan = addScrollRow(grid, row, 0, QString::fromLatin1(caption), QString::fromLatin1(pan),
                            QString::fromLatin1(panReadout), minimum, maximum, start, parent);
    pair.tilt = addScrollRow(grid, row, 2, QString(), QString::fromLatin1(tilt),
                             QString::fromLatin1(tiltReadout), minimum, maximum, start, parent);
    return pair;
}

void addAxisHeads(QGridLayout* grid, QWidget* parent) {
    grid->addWidget(new QLabel(QStringLiteral("Pan"), parent), 0, 1, Qt::AlignHCenter);
    grid->addWidget(new QLabel(QStringLiteral("Tilt"), parent), 0, 3, Qt::AlignHCenter);
}
}  // namespace

SetupPage::SetupPage(QWidget* parent) : QWidget(parent) {
    setObjectName(QStringLiteral("SetupPage"));
    // Two columns that do not share rows, so that neither is made as tall
    // as the other's boxes side by side: the page fits a 1024 x 700 window.
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(12, 12, 12, 12);
    layout->setSpacing(12);
    auto* axes = new QVBoxLayout;
    axes->addWidget(buildRates());
    axes->addWidget(buildLimits());
    axes->addStretch(1);
    auto* unit = new QVBoxLayout;
    unit->addWidget(buildIdentity());
    unit->addWidget(buildHousekeeping());
    unit->addStretch(1);
    layout->addLayout(axes, 3);
    layout->addLayout(unit, 2);
}

QGroupBox* SetupPage::buildRates() {
    auto* box = new QGroupBox(QStringLiteral("Speeds And Ramps"), this);
    auto* grid = new QGridLayout(box);
    addAxisHeads(grid, box);
    AxisPair safe = addAxisPair(grid, 1, "Safe Speed", "PSafeScroll", "Label28", "TSafeScroll",
                                "Label29", 1, 127, 1, box);
    AxisPair ramp = addAxisPair(grid, 2, "Ramp", "PRampScroll", "Label27", "TRampScroll", "Label21",
                                1, 255, 1, box);
    AxisPair decel = addAxisPair(grid, 3, "Deceleration", "PDecelScroll", "Label35", "TDecelScroll",
                                 "Label36", 1, 63, 1, box);
    AxisPair top = addAxisPair(grid, 5, "Top Speed", "PTopScroll", "Label30", "TTopScroll",
                               "Label31", 1, 255, 1, box);
    AxisPair jogTop = addAxisPair(grid, 7, "Jog Top Speed", "PITopScroll", "Label32", "TITopScroll",
                                  "Label33", 1, 255, 1, box);
    PSafeScroll = safe.pan.scroll, Label28 = safe.pan.readout;
    TSafeScroll = safe.tilt.scroll, Label29 = safe.tilt.readout;
    PRampScroll = ramp.pan.scroll, Label27 = ramp.pan.readout;
    TRampScroll = ramp.tilt.scroll, Label21 = ramp.tilt.readout;
    PDecelScroll = decel.pan.scroll, Label35 = decel.pan.readout;
    TDecelScroll = decel.tilt.scroll, Label36 = decel.tilt.readout;
    PTopScroll = top.pan.scroll, Label30 = top.pan.readout;
    TTopScroll = top.tilt.scroll, Label31 = top.tilt.readout;
    PITopScroll = jogTop.pan.scroll, Label32 = jogTop.pan.readout;
    TITopScroll = jogTop.tilt.scroll, Label33 = jogTop.tilt.readout;

    GetRateBut = button("GetRateBut", "Get Speed/Ramp", box);
    SetRateBut = button("SetRateBut", "Set Speed/Ramp", box);
    grid->addWidget(GetRateBut, 4, 1);
    grid->addWidget(SetRateBut, 4, 3);
    GetCMaxBut = button("GetCMaxBut", "Get Top Speed", box);
    SetCMaxBut = button("SetCMaxBut", "Set Top Speed", box);
    grid->addWidget(GetCMaxBut, 6, 1);
    grid->addWidget(SetCMaxBut, 6, 3);
    GetIMaxBut = button("GetIMaxBut", "Get Jog Top Speed", box);
    SetIMaxBut = button("SetIMaxBut", "Set Jog Top Speed", box);
    grid->addWidget(GetIMaxBut, 8, 1);
    grid->addWidget(SetIMaxBut, 8, 3);
    return box;
}

QGroupBox* SetupPage::buildLimits() {
    auto* box = new QGroupBox(QStringLiteral("Minimum And Maximum"), this);
    auto* grid = new QGridLayout(box);
    addAxisHeads(grid, box);
    AxisPair minimum = addAxisPair(grid, 1, "Minimum", "PMinScroll", "Label7", "TMinScroll",
                                   "Label1_17", 15, 29999, 15, box);
    AxisPair maximum = addAxisPair(grid, 2, "Maximum", "PMaxScroll", "Label1_20", "TMaxScroll",
                                   "Label1_21", 16, 30000, 10000, box);
    PMinScroll = minimum.pan.scroll, Label7 = minimum.pan.readout;
    TMinScroll = minimum.tilt.scroll, Label1_17 = minimum.tilt.readout;
    PMaxScroll = maximum.pan.scroll, Label1_20 = maximum.pan.readout;
    TMaxScroll = maximum.tilt.scroll, Label1_21 = maximum.tilt.readout;

    GetPStepBut = button("GetPStepBut", "Get Pan Min/Max", box);
    SetPStepBut = button("SetPStepBut", "Set Pan Min/Max", box);
    GetTStepBut = button("GetTStepBut", "Get Tilt Min/Max", box);
    SetTStepBut = button("SetTStepBut", "Set Tilt Min/Max", box);
    grid->addWidget(GetPStepBut, 3, 1);
    grid->addWidget(GetTStepBut, 3, 3);
    grid->addWidget(SetPStepBut, 4, 1);
    grid->addWidget(SetTStepBut, 4, 3);

    grid->addWidget(new QLabel(QStringLiteral("Short forms"), box), 5, 0);
    SetMaxPairBut = button("SetMaxPairBut", "Set Max Pair", box,
                           "Sends Both Maxima As One Byte Each (Values Up To 255)");
    SetMinPairBut = button("SetMinPairBut", "Set Min Pair", box,
                           "Sends Both Minima As One Byte Each (Values Up To 255)");
    SetTiltBut = button("SetTiltBut", "Set Tilt Speed/Ramp/Min/Max", box,
                        "Sends The Tilt Safe Speed, Ramp, Minimum And Maximum In One Command");
    grid->addWidget(SetMaxPairBut, 5, 1);
    grid->addWidget(SetMinPairBut, 5, 3);
    grid->addWidget(SetTiltBut, 6, 1, 1, 3);
    grid->setRowStretch(7, 1);
    return box;
}

QGroupBox* SetupPage::buildIdentity() {
    auto* box = new QGroupBox(QStringLiteral("Unit ID"), this);
    auto* grid = new QGridLayout(box);
    const ScrollRow current =
        addScrollRow(grid, 0, 0, QStringLiteral("Talk To ID"), QStringLiteral("CurrIDScroll"),
                     QStringLiteral("CurrIDLabel"), 0, 99, 0, box);
    const ScrollRow next =
        addScrollRow(grid, 1, 0, QStringLiteral("New ID"), QStringLiteral("IDScroll"),
                     QStringLiteral("IDLabel"), 0, 99, 1, box);
    CurrIDScroll = current.scroll, CurrIDLabel = current.readout;
    IDScroll = next.scroll, IDLabel = next.readout;
    SetIDBut = button("SetIDBut", "Addressed Set ID", box,
                      "Sets a New Unit ID Transmitting The Current ID (Network Safe)");
    BSetIDBut = button("BSetIDBut", "Broadcast Set ID", box,
                       "Sets a New Unit ID Transmitting the 0 Broadcast ID (Not Network Safe)");
    GetIDBut = button("GetIDBut", "Broadcast Get ID", box, "Gets the Current Unit ID");
    grid->addWidget(SetIDBut, 2, 0, 1, 3);
    grid->addWidget(BSetIDBut, 3, 0, 1, 3);
    grid->addWidget(GetIDBut, 4, 0, 1, 3);
    grid->setRowStretch(5, 1);
    return box;
}

QGroupBox* SetupPage::buildHousekeeping() {
    auto* box = new QGroupBox(QStringLiteral("Comm Timeout, Heater, Firmware"), this);
    auto* layout = new QVBoxLayout(box);
    auto* timeout = new QGridLayout;
    const ScrollRow seconds =
        addScrollRow(timeout, 0, 0, QStringLiteral("Seconds"), QStringLiteral("TOScroll"),
                     QStringLiteral("TOLabel"), 0, 120, 1, box);
    TOScroll = seconds.scroll, TOLabel = seconds.readout;
    SetTOBut = button("SetTOBut", "Set Comm Timeout", box,
                      "Set Communication Timeout in Seconds (0 = Disabled)");
    GetTOBut = button("GetTOBut", "Get Comm Timeout", box,
                      "Get Communication Timeout in Seconds (0 = Disabled)");
    timeout->addWidget(SetTOBut, 1, 0, 1, 2);
    timeout->addWidget(GetTOBut, 1, 2);
    layout->addLayout(timeout);

    const char* const captions[4] = {"Disabled", "Share Power", "Full Power", ""};
    const char* const tips[4] = {
        "Disables the Internal Heater",
        "Heater Will Activate As Required But Will Shut Off When Motors Run To Share Power",
        "Allows The Heater To Operate With Full Power As Required", ""};
    auto* heater = new QGroupBox(QStringLiteral("Heater"), box);
    auto* heaterLayout = new QVBoxLayout(heater);
    for (int i = 0; i < 4; ++i) {
        HeatOp[i] =
            namedOption(QStringLiteral("HeatOp_%1").arg(i), QString::fromLatin1(captions[i]),
                        heater, QString::fromLatin1(tips[i]));
        heaterLayout->addWidget(HeatOp[i]);
    }
    // Only there so that a reported mode 3 selects none of the others.
    HeatOp[3]->setVisible(false);
    GetHeatBut = button("GetHeatBut", "Get Heater Mode", heater, "Gets Pan & Tilt Heater Mode");
    heaterLayout->addWidget(GetHeatBut);
    layout->addWidget(heater);

    RevBut = button("RevBut", "Get Firmware Rev", box, "Returns the RTC Time and Date");
    RevLabel = new QLabel(box);
    RevLabel->setObjectName(QStringLiteral("RevLabel"));
    RevLabel->setFrameShape(QFrame::StyledPanel);
    layout->addWidget(RevBut);
    layout->addWidget(RevLabel);
    return box;
}

}  // namespace halvex
