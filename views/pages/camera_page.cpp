#include "views/pages/camera_page.h"

#include <QButtonGroup>
#include <QFontDatabase>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QVBoxLayout>

#include "views/pages/page_parts.h"

namespace halvex {

namespace {

// Captions of Lens1Check(1..6): the lens configuration bit of the same number.
const char* const kLensBitCaptions[CameraPage::kLensBits] = {"Focus Inv", "Focus Rev", "Focus En",
                                                             "Zoom Inv",  "Zoom Rev",  "Zoom En"};

QLabel* valueLabel(const QString& name, QWidget* parent) {
    auto* label = new QLabel(QStringLiteral("0"), parent);
    label->setObjectName(name);
    label->setFrameShape(QFrame::StyledPanel);
    label->setAlignment(Qt::AlignCenter);
    label->setMinimumWidth(52);
    return label;
}

SpinButton* spin(const QString& name, QWidget* parent) {
    auto* button = new SpinButton(parent);
    button->setObjectName(name);
    button->setFixedSize(18, 26);
    return button;
}

ClickLabel* stepLabel(const QString& name, const QString& tip, QWidget* parent) {
    auto* label = new ClickLabel(QStringLiteral("0"), parent);
    label->setObjectName(name);
    label->setToolTip(tip);
    label->setMinimumWidth(52);
    return label;
}

}  // namespace

CameraPage::CameraPage(QWidget* parent) : QWidget(parent) {
    setObjectName(QStringLiteral("CameraPage"));
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(12, 12, 12, 12);
    layout->setSpacing(12);

    auto* cameras = new QVBoxLayout;
    cameras->addWidget(buildCameraBox(0));
    cameras->addWidget(buildCameraBox(1));
    // Under the cameras, where the column has room to spare.
    SerHelpBut = namedButton(QStringLiteral("SerHelpBut"), QStringLiteral("Help"),
                             QStringLiteral("Camera Control And Configuration Help"), this);
    cameras->addWidget(SerHelpBut, 0, Qt::AlignRight);
    cameras->addStretch();
    layout->addLayout(cameras, 3);

    auto* settings = new QVBoxLayout;
    settings->addWidget(buildLinesBox());
    auto* lenses = new QHBoxLayout;
    lenses->addWidget(buildLensBox(), 1);
    lenses->addWidget(buildJogBox());
    settings->addLayout(lenses);
    settings->addStretch();
    layout->addLayout(settings, 2);
}

QWidget* CameraPage::buildCameraBox(int camera) {
    const auto c = static_cast<std::size_t>(camera);
    const QString number = QString::number(camera + 1);
    auto* box = new QGroupBox(QStringLiteral("Camera ") + number, this);
    auto* grid = new QGridLayout(box);

    CamTypeBut[c] =
        namedButton(indexed("CamTypeBut", camera), QStringLiteral("Set Cam %1 CCL").arg(number),
                    QStringLiteral("Load A Camera Control List File"), box);
    CamTypeCombo[c] = new QComboBox(box);
    CamTypeCombo[c]->setObjectName(indexed("CamTypeCombo", camera));
    CamTypeCombo[c]->setToolTip(
        QStringLiteral("Select A Camera Control List File Or A Camera Command"));
    CamTypeCombo[c]->setEnabled(false);
    CamTypeCombo[c]->setMinimumContentsLength(24);
    CamTypeCombo[c]->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    Label26[c] = new QLabel(box);
    Label26[c]->setObjectName(indexed("Label26", camera));
    Label26[c]->setWordWrap(true);
    Label26[c]->setMinimumHeight(32);
    grid->addWidget(CamTypeBut[c], 0, 0);
    grid->addWidget(CamTypeCombo[c], 0, 1, 1, 3);
    grid->addWidget(Label26[c], 1, 0, 1, 4);

    TXBox[c] = new DoubleClickLineEdit(QStringLiteral("Outgoing"), box);
    TXBox[c]->setObjectName(indexed("TXBox", camera));
    TXBox[c]->setToolTip(QStringLiteral("Enter TX Data Here, Double-click to Clear"));
    TXBox[c]->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    // Longer than any command, so a long paste is refused whole rather than cut.
    TXBox[c]->setMaxLength(1 << 20);
    SendBut[c] = namedButton(indexed("SendBut", camera), QStringLiteral("TX ") + number,
                             QStringLiteral("Parse And Send The TX String"), box);
    grid->addWidget(TXBox[c], 2, 0, 1, 3);
    grid->addWidget(SendBut[c], 2, 3);

    FormatFrame1[c] = new QGroupBox(box);
    FormatFrame1[c]->setObjectName(indexed("FormatFrame1", camera));
    FormatFrame1[c]->setFlat(true);
    AscOp1[c] = new QRadioButton(QStringLiteral("ASCII"), FormatFrame1[c]);
    AscOp1[c]->setObjectName(indexed("AscOp1", camera));
    AscOp1[c]->setToolTip(
        QStringLiteral("Data In The TX Box Will Be Parsed and Sent As ASCII (Text) Data"));
    HexOp1[c] = new QRadioButton(QStringLiteral("Hex"), FormatFrame1[c]);
    HexOp1[c]->setObjectName(indexed("HexOp1", camera));
    HexOp1[c]->setToolTip(QStringLiteral(
        "Data In The TX Box Will Be Parsed and Sent As Two Character Per Byte Hex Data"));
    AscOp1[c]->setChecked(true);
    auto* choices = new QButtonGroup(FormatFrame1[c]);
    choices->addButton(AscOp1[c]);
    choices->addButton(HexOp1[c]);
    auto* options = new QHBoxLayout(FormatFrame1[c]);
    options->setContentsMargins(0, 0, 0, 0);
    options->addWidget(AscOp1[c]);
    options->addWidget(HexOp1[c]);
    CRCheck[c] = new QCheckBox(QStringLiteral("CR"), box);
    CRCheck[c]->setObjectName(indexed("CRCheck", camera));
    CRCheck[c]->setToolTip(
        QStringLiteral("Append A Carriage Return To A Transmitted ASCII Command"));
    grid->addWidget(FormatFrame1[c], 3, 0, 1, 2);
    grid->addWidget(CRCheck[c], 3, 2);

    grid->addWidget(new QLabel(QStringLiteral("Camera %1 replies:").arg(number), box), 4, 0, 1, 4);
    RXLabel[c] = new QLabel(box);
    RXLabel[c]->setObjectName(indexed("RXLabel", camera));
    RXLabel[c]->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    RXLabel[c]->setTextInteractionFlags(Qt::TextSelectableByMouse);
    RXLabel[c]->setWordWrap(true);
    RXLabel[c]->setMinimumHeight(28);
    RXLabel[c]->setFrameShape(QFrame::StyledPanel);
    grid->addWidget(RXLabel[c], 5, 0, 1, 4);
    grid->setColumnStretch(1, 1);
    return box;
}

QWidget* CameraPage::buildLinesBox() {
    auto* box = new QGroupBox(QStringLiteral("Camera Lines"), this);
    auto* grid = new QGridLayout(box);
    int column = 1;
    for (const char* heading : {"Baud (k)", "Format", "Level", "Time-Out"}) {
        // The time-out heading spans its spin button and its read-out.
        grid->addWidget(new QLabel(QString::fromLatin1(heading), box), 0, column, 1,
                        column == 4 ? 2 : 1);
        ++column;
    }
    for (int camera = 0; camera < 2; ++camera) {
        const auto c = static_cast<std::size_t>(camera);
        const QString number = QString::number(camera + 1);
        const int row = camera + 1;
        grid->addWidget(new QLabel(QStringLiteral("Cam ") + number, box), row, 0);
        BaudLabel[c] = stepLabel(
            QStringLiteral("BaudLabel") + number,
            QStringLiteral("Click to Change Cam %1 Baud Rate Then Press Set Button").arg(number),
            box);
        FormLabel[c] = stepLabel(
            QStringLiteral("FormLabel") + number,
            QStringLiteral("Click to Change Cam %1 Baud Rate Then Press Set Button").arg(number),
            box);
        LevelLabel[c] = stepLabel(
            QStringLiteral("LevelLabel") + number,
            QStringLiteral("Click to Change Cam %1 Level Then Press Set Button").arg(number), box);
        CamTOSpin[c] = spin(indexed("CamTOSpin", camera), box);
        CamTOLabel[c] = valueLabel(indexed("CamTOLabel", camera), box);
        grid->addWidget(BaudLabel[c], row, 1);
        grid->addWidget(FormLabel[c], row, 2);
        grid->addWidget(LevelLabel[c], row, 3);
        grid->addWidget(CamTOSpin[c], row, 4);
        grid->addWidget(CamTOLabel[c], row, 5);
    }
    const QString serialTip = QStringLiteral("Get Camera Serial Comm Settings");
    const QString timeoutTip =
        QStringLiteral("Get Camera Timeout in mS for Assumed Completed Camera Response");
    SetCamBut = namedButton(QStringLiteral("SetCamBut"), QStringLiteral("Set Baud/Format/Level"),
                            serialTip, box);
    GetCamBut = namedButton(QStringLiteral("GetCamBut"), QStringLiteral("Get Baud/Format/Level"),
                            serialTip, box);
    SetCamTOBut =
        namedButton(QStringLiteral("SetCamTOBut"), QStringLiteral("Set Cam TO"), timeoutTip, box);
    GetCamTOBut =
        namedButton(QStringLiteral("GetCamTOBut"), QStringLiteral("Get Cam TO"), timeoutTip, box);
    grid->addWidget(SetCamBut, 3, 0, 1, 2);
    grid->addWidget(GetCamBut, 3, 2, 1, 2);
    grid->addWidget(SetCamTOBut, 3, 4, 1, 2);
    grid->addWidget(GetCamTOBut, 4, 4, 1, 2);
    Label9 =
        new QLabel(QStringLiteral("RS-422 Camera Interface Not Functional With RS-232 Host"), box);
    Label9->setObjectName(QStringLiteral("Label9"));
    Label9->setWordWrap(true);
    grid->addWidget(Label9, 4, 0, 1, 4);
    return box;
}

QWidget* CameraPage::buildLensBox() {
    auto* box = new QGroupBox(QStringLiteral("Lens Configuration"), this);
    auto* grid = new QGridLayout(box);
    for (int camera = 0; camera < 2; ++camera) {
        const auto c = static_cast<std::size_t>(camera);
        const QString number = QString::number(camera + 1);
        const int column = camera * 3;
        grid->addWidget(new QLabel(QStringLiteral("Cam ") + number, box), 0, column, 1, 3);
        const QString name = QStringLiteral("Lens%1Check").arg(number);
        const QString tip = camera == 0
                                ? QStringLiteral("Click To Set Or Clear Then Press Set")
                                : QStringLiteral("Click To Set Or Clear For Cam 2 Then Press Set");
        for (int bit = 1; bit <= kLensBits; ++bit) {
            auto* check = new QCheckBox(QString::fromLatin1(kLensBitCaptions[bit - 1]), box);
            check->setObjectName(name + QLatin1Char('_') + QString::number(bit));
            check->setToolTip(tip);
            // Zoom first, as on the boxes beside them: bit 6 at the top.
            grid->addWidget(check, 1 + kLensBits - bit, column, 1, 3);
            LensCheck[c][static_cast<std::size_t>(bit - 1)] = check;
        }
        ZoomMinSpin[c] = spin(indexed("ZoomMinSpin", camera), box);
        ZoomMinLabel[c] = valueLabel(indexed("ZoomMinLabel", camera), box);
        FocusMinSpin[c] = spin(indexed("FocusMinSpin", camera), box);
        FocusMinLabel[c] = valueLabel(indexed("FocusMinLabel", camera), box);
        const int row = 2 + kLensBits;
        grid->addWidget(new QLabel(QStringLiteral("Zoom Min"), box), row, column);
        grid->addWidget(ZoomMinSpin[c], row, column + 1);
        grid->addWidget(ZoomMinLabel[c], row, column + 2);
        grid->addWidget(new QLabel(QStringLiteral("Focus Min"), box), row + 1, column);
        grid->addWidget(FocusMinSpin[c], row + 1, column + 1);
        grid->addWidget(FocusMinLabel[c], row + 1, column + 2);
    }
    SetLensBut = namedButton(QStringLiteral("SetLensBut"), QStringLiteral("Set Lens Config"),
                             QStringLiteral("Set The CUrrent Lens Configuration"), box);
    GetLensBut = namedButton(QStringLiteral("GetLensBut"), QStringLiteral("Get Lens Config"),
                             QStringLiteral("Get The CUrrent Lens Configuration"), box);
    grid->addWidget(SetLensBut, 4 + kLensBits, 0, 1, 3);
    grid->addWidget(GetLensBut, 4 + kLensBits, 3, 1, 3);
    return box;
}

QWidget* CameraPage::buildJogBox() {
    auto* box = new QGroupBox(QStringLiteral("Lens Jog"), this);
    auto* grid = new QGridLayout(box);
    const char* const names[4] = {"ZoomBox1", "FocusBox1", "ZoomBox2", "FocusBox2"};
    const char* const captions[4] = {"Z1", "F1", "Z2", "F2"};
    const char* const spoken[4] = {"Zoom 1", "Focus 1", "Zoom 2", "Focus 2"};
    for (int i = 0; i < 4; ++i) {
        auto* jog = new LensJogBox(box);
        jog->setObjectName(QString::fromLatin1(names[i]));
        jog->setAccessibleName(QString::fromLatin1(spoken[i]));
        jog->setFixedSize(39, 120);
        jog->setToolTip(
            QStringLiteral("Hold The Left Button Above The Line To Drive Up, Below To "
                           "Drive Down"));
        auto* caption = new QLabel(QString::fromLatin1(captions[i]), box);
        caption->setAlignment(Qt::AlignCenter);
        grid->addWidget(caption, 0, i);
        grid->addWidget(jog, 1, i);
        LensBox[static_cast<std::size_t>(i)] = jog;
    }
    grid->setRowStretch(2, 1);
    return box;
}

}  // namespace halvex
