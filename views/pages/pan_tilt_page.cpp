#include "views/pages/pan_tilt_page.h"
#include "views/pages/page_parts.h"

#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>

#include "views/pages/angle_step_row.h"

namespace halvex {

namespace {
template <typename Widget>
Widget* named(Widget* widget, const QString& name) {
    widget->setObjectName(name);
    return widget;
}

LedDisplay* led(QWidget* parent, const QString& name, int decimals, int cells) {
    auto* display = named(new LedDisplay(parent), name);
    display->setDecimals(decimals);
    display->setFieldWidth(cells);
    return display;
}

QPushButton* button(QWidget* parent, const QString& name, const QString& caption,
                    const QString& tip = QString()) {
    return namedButton(name, caption, tip, parent);
}

StatusLamp* lamp(QWidget* parent, const QString& name) {
    auto* l = named(new StatusLamp(parent), name);
    l->setFixedSize(18, 18);
    return l;
}

// A lamp with its caption to the right.
QWidget* captioned(QWidget* parent, StatusLamp* lamp, const QString& caption) {
    auto* box = new QWidget(parent);
    auto* row = new QHBoxLayout(box);
    row->setContentsMargins(0, 0, 0, 0);
    row->addWidget(lamp);
    row->addWidget(new QLabel(caption, box));
    row->addStretch();
    return box;
}

}  // namespace

PanTiltPage::PanTiltPage(QWidget* parent) : QWidget(parent) {
    setObjectName(QStringLiteral("PanTiltPage"));
    // Three columns that fit a 1024 x 700 window: where the platform is and
    // what it reports; the jog box and the gauge with the movement log under
    // them; the moves and the soft limits. More room goes to the jog box,
    // the gauge and the log.
    auto* columns = new QHBoxLayout(this);
    columns->setContentsMargins(6, 6, 6, 6);

    auto* left = new QVBoxLayout;
    left->addWidget(buildPositionGroup());
    left->addWidget(buildStatusGroup());
    left->addWidget(buildZoomFocusGroup());
    left->addStretch();
    columns->addLayout(left);

    auto* middle = new QVBoxLayout;
    middle->addWidget(buildJogGroup(), 1);
    MovementMonitorSlot = new QVBoxLayout;
    middle->addLayout(MovementMonitorSlot);
    columns->addLayout(middle, 1);

    auto* right = new QVBoxLayout;
    right->addWidget(buildMoveGroup());
    right->addWidget(buildLimitGroup());
    right->addStretch();
    columns->addLayout(right);

    // Columns for the live video and the range plot, shown where the screen
    // has room.
    VideoSlot = panelSlot(QStringLiteral("Video"), QStringLiteral("VideoSlot"));
    columns->addWidget(VideoSlot, 2);
    RangePlotSlot = panelSlot(QStringLiteral("Range"), QStringLiteral("RangePlotSlot"));
    columns->addWidget(RangePlotSlot, 1);
    nameForAssistiveTechnology();
}

QGroupBox* PanTiltPage::panelSlot(const QString& caption, const QString& name) {
    auto* slot = new QGroupBox(caption, this);
    slot->setObjectName(name);
    slot->setLayout(new QVBoxLayout);
    // It never holds the window wider: narrowed, the panel leaves the page.
    slot->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    slot->hide();
    return slot;
}

QWidget* PanTiltPage::buildPositionGroup() {
    auto* group = new QGroupBox(QStringLiteral("Position"), this);
    auto* grid = new QGridLayout(group);
    Label2[0] = named(new QLabel(QStringLiteral("Pan"), group), QStringLiteral("Label2_0"));
    Label2[1] = named(new QLabel(QStringLiteral("Tilt"), group), QStringLiteral("Label2_1"));
    for (QLabel* caption : Label2) {
        caption->setAlignment(Qt::AlignCenter);
        QFont font = caption->font();
        font.setBold(true);
        caption->setFont(font);
    }
    PanPosLED = angleLed(QStringLiteral("PanPosLED"), group);
    TiltPosLED = angleLed(QStringLiteral("TiltPosLED"), group);
    PDesLed = angleLed(QStringLiteral("PDesLed"), group);
    TDesLed = angleLed(QStringLiteral("TDesLed"), group);
    PDesLed->setDigitColor(QColor(255, 200, 60));
    TDesLed->setDigitColor(QColor(255, 200, 60));
    grid->addWidget(Label2[0], 0, 1);
    grid->addWidget(Label2[1], 0, 2);
    grid->addWidget(new QLabel(QStringLiteral("Current"), group), 1, 0);
    grid->addWidget(PanPosLED, 1, 1);
    grid->addWidget(TiltPosLED, 1, 2);
    grid->addWidget(new QLabel(QStringLiteral("Target"), group), 2, 0);
    grid->addWidget(PDesLed, 2, 1);
    grid->addWidget(TDesLed, 2, 2);

    auto* lenses = new QGridLayout;
    Z1LED = led(group, QStringLiteral("Z1LED"), 0, 3);
    F1LED = led(group, QStringLiteral("F1LED"), 0, 3);
    Z2LED = led(group, QStringLiteral("Z2LED"), 0, 3);
    F2LED = led(group, QStringLiteral("F2LED"), 0, 3);
    Zoom1Label = named(new QLabel(QStringLiteral("0"), group), QStringLiteral("Zoom1Label"));
    Focus1Label = named(new QLabel(QStringLiteral("0"), group), QStringLiteral("Focus1Label"));
    Zoom2Label = named(new QLabel(QStringLiteral("0"), group), QStringLiteral("Zoom2Label"));
    Focus2Label = named(new QLabel(QStringLiteral("0"), group), QStringLiteral("Focus2Label"));
    SecondLensCaption =
        named(new QLabel(QStringLiteral("Lens 2"), group), QStringLiteral("Label1_3"));
    lenses->addWidget(new QLabel(QStringLiteral("Zoom"), group), 0, 1);
    lenses->addWidget(new QLabel(QStringLiteral("Focus"), group), 0, 3);
    lenses->addWidget(new QLabel(QStringLiteral("Lens 1"), group), 1, 0);
    lenses->addWidget(Z1LED, 1, 1);
    lenses->addWidget(Zoom1Label, 1, 2);
    lenses->addWidget(F1LED, 1, 3);
    lenses->addWidget(Focus1Label, 1, 4);
    lenses->addWidget(SecondLensCaption, 2, 0);
    lenses->addWidget(Z2LED, 2, 1);
    lenses->addWidget(Zoom2Label, 2, 2);
    lenses->addWidget(F2LED, 2, 3);
    lenses->addWidget(Focus2Label, 2, 4);
    grid->addLayout(lenses, 3, 0, 1, 3);

    auto* controller = new QHBoxLayout;
    controller->addWidget(new QLabel(QStringLiteral("Controller"), group));
    ControllerLabel =
        named(new QLabel(QStringLiteral("Unknown"), group), QStringLiteral("Label1_1"));
    controller->addWidget(ControllerLabel);
    controller->addStretch();
    grid->addLayout(controller, 4, 0, 1, 3);
    return group;
}

void PanTiltPage::nameForAssistiveTechnology() {
    // The read-outs and lamps say what they show, as the captions beside
    // them do for the eye.
    const std::pair<QWidget*, const char*> names[] = {
        {PanPosLED, "Current pan"},
        {TiltPosLED, "Current tilt"},
        {PDesLed, "Target pan"},
        {TDesLed, "Target tilt"},
        {Z1LED, "Zoom 1"},
        {F1LED, "Focus 1"},
        {Z2LED, "Zoom 2"},
        {F2LED, "Focus 2"},
        {CWLed, "CW travel"},
        {CCWLed, "CCW travel"},
        {UpLed, "Up travel"},
        {DownLed, "Down travel"},
        {PTOLed, "Pan timeout"},
        {TTOLed, "Tilt timeout"},
        {PDELed, "Pan direction fault"},
        {TDELed, "Tilt direction fault"},
        {DesLed, "Destination"},
        {ExecLed, "Executing"},
        {SLOverLed, "SL Override"},
        {Jog, "Jog"},
        {Gauge, "Pan gauge"},
        {PanDesLED, "Desired pan"},
        {TiltDesLED, "Desired tilt"},
    };
    for (const auto& [widget, name] : names) {
        widget->setAccessibleName(QString::fromLatin1(name));
    }
}

QWidget* PanTiltPage::buildStatusGroup() {
    // The travel lamps in the first column, the faults of each axis under
    // their heading beside them, the legend of the travel lamps' colours below.
    auto* group = new QGroupBox(QStringLiteral("Status"), this);
    auto* grid = new QGridLayout(group);
    grid->setVerticalSpacing(4);
    CWLed = lamp(group, QStringLiteral("CWLed"));
    CCWLed = lamp(group, QStringLiteral("CCWLed"));
    UpLed = lamp(group, QStringLiteral("UpLed"));
    DownLed = lamp(group, QStringLiteral("DownLed"));
    grid->addWidget(captioned(group, CWLed, QStringLiteral("CW")), 1, 0);
    grid->addWidget(captioned(group, CCWLed, QStringLiteral("CCW")), 2, 0);
    grid->addWidget(captioned(group, UpLed, QStringLiteral("Up")), 3, 0);
    grid->addWidget(captioned(group, DownLed, QStringLiteral("Down")), 4, 0);

    PTOLed = lamp(group, QStringLiteral("PTOLed"));
    PDELed = lamp(group, QStringLiteral("PDELed"));
    TTOLed = lamp(group, QStringLiteral("TTOLed"));
    TDELed = lamp(group, QStringLiteral("TDELed"));
    grid->addWidget(new QLabel(QStringLiteral("Pan"), group), 0, 1);
    grid->addWidget(new QLabel(QStringLiteral("Tilt"), group), 0, 2);
    grid->addWidget(captioned(group, PTOLed, QStringLiteral("Timeout")), 1, 1);
    grid->addWidget(captioned(group, TTOLed, QStringLiteral("Timeout")), 1, 2);
    grid->addWidget(captioned(group, PDELed, QStringLiteral("Dir Fault")), 2, 1);
    grid->addWidget(captioned(group, TDELed, QStringLiteral("Dir Fault")), 2, 2);

    DesLed = lamp(group, QStringLiteral("DesLed"));
    ExecLed = lamp(group, QStringLiteral("ExecLed"));
    SLOverLed = lamp(group, QStringLiteral("SLOverLed"));
    grid->addWidget(captioned(group, DesLed, QStringLiteral("Destination")), 3, 1);
    grid->addWidget(captioned(group, ExecLed, QStringLiteral("Executing")), 3, 2);
    grid->addWidget(captioned(group, SLOverLed, QStringLiteral("SL Override")), 4, 1);

    // The legend of the four travel lamps.
    const std::pair<QColor, const char*> legend[] = {{QColor(255, 0, 0), "Hard Limit"},
                                                     {QColor(255, 255, 0), "Soft Limit"},
                                                     {QColor(0, 255, 0), "Moving"}};
    int column = 0;
    for (const auto& [colour, caption] : legend) {
        auto* sample = new StatusLamp(group);
        sample->setFixedSize(12, 12);
        sample->setColor(colour);
        sample->setAccessibleName(QStringLiteral("Legend: %1").arg(QLatin1String(caption)));
        grid->addWidget(captioned(group, sample, QLatin1String(caption)), 5, column++);
    }
    return group;
}

QWidget* PanTiltPage::buildJogGroup() {
    auto* group = new QGroupBox(QStringLiteral("Jog"), this);
    auto* layout = new QVBoxLayout(group);
    Label3 = named(new QLabel(QStringLiteral("Jog Disabled"), group), QStringLiteral("Label3"));
    Label3->setAlignment(Qt::AlignCenter);
    Jog = named(new JogBox(group), QStringLiteral("JogBox"));
    Jog->setMinimumSize(200, 200);
    Jog->setToolTip(QStringLiteral("Hold the left button to jog; right click changes the mode"));
    // The pan gauge beside the jog box: where the platform points, next to
    // where it is being pushed.
    Gauge = named(new PanGauge(group), QStringLiteral("PanGauge"));
    Gauge->setRange(-180.0, 180.0);
    Gauge->setMinimumSize(152, 152);
    PanSloCheck = named(new QCheckBox(QStringLiteral("Pan Low Speed Jog"), group),
                        QStringLiteral("PanSloCheck"));
    TiltSloCheck = named(new QCheckBox(QStringLiteral("Tilt Low Speed Jog"), group),
                         QStringLiteral("TiltSloCheck"));
    layout->addWidget(Label3);
    auto* dials = new QHBoxLayout;
    dials->addWidget(Jog, 3);
    dials->addWidget(Gauge, 2, Qt::AlignTop);
    layout->addLayout(dials, 1);
    auto* checks = new QHBoxLayout;
    checks->addWidget(PanSloCheck);
    checks->addWidget(TiltSloCheck);
    layout->addLayout(checks);
    return group;
}

QWidget* PanTiltPage::buildMoveGroup() {
    auto* group = new QGroupBox(QStringLiteral("Moves"), this);
    auto* layout = new QVBoxLayout(group);

    auto* desired = new QGridLayout;
    PanDesLED = angleLed(QStringLiteral("PanDesLED"), group);
    TiltDesLED = angleLed(QStringLiteral("TiltDesLED"), group);
    PanDesLED->setDigitColor(QColor(90, 200, 255));
    TiltDesLED->setDigitColor(QColor(90, 200, 255));
    ClrLEDBut[0] = button(group, QStringLiteral("ClrLEDBut_0"), QStringLiteral("CL"));
    ClrLEDBut[1] = button(group, QStringLiteral("ClrLEDBut_1"), QStringLiteral("CL"));
    for (QPushButton* clear : ClrLEDBut) {
        clear->setFixedWidth(36);
    }
    desired->addWidget(new QLabel(QStringLiteral("Desired Pan"), group), 0, 0);
    desired->addWidget(PanDesLED, 0, 1);
    desired->addWidget(ClrLEDBut[0], 0, 2);
    const AngleStepRow panSteps = makeAngleStepRow(QStringLiteral("PanDesBut"), group);
    PanDesBut = panSteps.buttons;
    desired->addWidget(panSteps.row, 1, 0, 1, 2, Qt::AlignRight);
    desired->addWidget(new QLabel(QStringLiteral("Desired Tilt"), group), 2, 0);
    desired->addWidget(TiltDesLED, 2, 1);
    desired->addWidget(ClrLEDBut[1], 2, 2);
    const AngleStepRow tiltSteps = makeAngleStepRow(QStringLiteral("TiltDesBut"), group);
    TiltDesBut = tiltSteps.buttons;
    desired->addWidget(tiltSteps.row, 3, 0, 1, 2, Qt::AlignRight);
    layout->addLayout(desired);

    HoldPanCheck = named(new QCheckBox(QStringLiteral("Hold Curr Pan"), group),
                         QStringLiteral("HoldPanCheck"));
    HoldPanCheck->setToolTip(
        QStringLiteral("Check to Hold the Current Pan Position for an Absolute Move To"));
    HoldTiltCheck = named(new QCheckBox(QStringLiteral("Hold Curr Tilt"), group),
                          QStringLiteral("HoldTiltCheck"));
    HoldTiltCheck->setToolTip(
        QStringLiteral("Check to Hold the Current Tilt Position for an Absolute Move To"));
    auto* holds = new QHBoxLayout;
    holds->addWidget(HoldPanCheck);
    holds->addWidget(HoldTiltCheck);
    layout->addLayout(holds);

    AbsoBut = button(group, QStringLiteral("AbsoBut"), QStringLiteral("Move To Absolute Coord"),
                     QStringLiteral("Move Platform To The Coordinates Entered"));
    DeltaBut = button(group, QStringLiteral("DeltaBut"), QStringLiteral("Move To Delta Coord"),
                      QStringLiteral("Move Platform To The Current Position + The Entered Values"));
    HomeBut = button(group, QStringLiteral("HomeBut"), QStringLiteral("Move To Home (Preset 31)"),
                     QStringLiteral("Move Platform To Home Position (Preset 31)"));
    CenterBut =
        button(group, QStringLiteral("CenterBut"), QStringLiteral("Move To Physical Center"),
               QStringLiteral("Move Platform To The Front And Level (Centered) Position"));
    layout->addWidget(AbsoBut);
    layout->addWidget(DeltaBut);
    layout->addWidget(HomeBut);
    layout->addWidget(CenterBut);

    return group;
}

QWidget* PanTiltPage::buildZoomFocusGroup() {
    // Under the lens read-outs: the zoom and focus the P/T/Z/F move adds to
    // the desired pan and tilt.
    auto* group = new QGroupBox(QStringLiteral("Zoom/Focus Move"), this);
    ZFGroup = group;
    auto* zf = new QGridLayout(group);
    zf->setVerticalSpacing(2);
    const char* const names[] = {"Zoom 1", "Focus 1", "Zoom 2", "Focus 2"};
    for (int i = 0; i < 4; ++i) {
        auto* scroll =
            named(new QScrollBar(Qt::Horizontal, group), QStringLiteral("ZFScroll_%1").arg(i));
        scroll->setRange(0, 255);
        scroll->setMinimumWidth(120);
        auto* value =
            named(new QLabel(QStringLiteral("0"), group), QStringLiteral("ZFLabel_%1").arg(i));
        value->setMinimumWidth(value->fontMetrics().horizontalAdvance(QStringLiteral("0000")));
        ZFScroll[static_cast<std::size_t>(i)] = scroll;
        ZFLabel[static_cast<std::size_t>(i)] = value;
        zf->addWidget(new QLabel(QLatin1String(names[i]), group), i, 0);
        zf->addWidget(scroll, i, 1);
        zf->addWidget(value, i, 2);
    }
    AbsoZFBut =
        button(group, QStringLiteral("AbsoZFBut"), QStringLiteral("Move To Absolute P/T/Z/F"),
               QStringLiteral("Move Platform To The Coordinates Entered"));
    zf->addWidget(AbsoZFBut, 4, 0, 1, 3);
    return group;
}

QWidget* PanTiltPage::buildLimitGroup() {
    auto* group = new QGroupBox(QStringLiteral("Soft Limits"), this);
    auto* grid = new QGridLayout(group);
    const char* const captions[] = {"Set CW Soft Limit", "Set CCW Soft Limit", "Set Up Soft Limit",
                                    "Set Down Soft Limit"};
    const char* const tips[] = {"Jog To Desired CW Soft Limit Location And Press To Set",
                                "Jog To Desired CCW Soft Limit Location And Press To Set",
                                "Jog To Desired Up Soft Limit Location And Press To Set",
                                "Jog To Desired Down Soft Limit Location And Press To Set"};
    for (int i = 0; i < 4; ++i) {
        auto* set = button(group, QStringLiteral("SetSLBut_%1").arg(i), QLatin1String(captions[i]),
                           QLatin1String(tips[i]));
        auto* value =
            named(new QLabel(QStringLiteral("0.00"), group), QStringLiteral("Label13_%1").arg(i));
        value->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
        value->setMinimumWidth(60);
        SetSLBut[static_cast<std::size_t>(i)] = set;
        Label13[static_cast<std::size_t>(i)] = value;
        grid->addWidget(set, i, 0);
        grid->addWidget(value, i, 1);
    }
    Command2 = button(group, QStringLiteral("Command2"), QStringLiteral("SL Override"),
                      QStringLiteral("Override Soft Limit Stops-Usually Used From Jog To Establish "
                                     "New Soft Limits"));
    Command2->setCheckable(true);
    grid->addWidget(Command2, 4, 0, 1, 2);
    return group;
}

}  // namespace halvex
