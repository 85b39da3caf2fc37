#include "views/pages/factory_page.h"

#include <QEvent>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QResizeEvent>
#include <QVBoxLayout>

#include "views/pages/control_parts.h"
#include "views/pages/page_parts.h"

namespace halvex {

namespace {
QPushButton* button(const char* name, const char* caption, QWidget* parent, const char* tip = "") {
    return namedButton(QString::fromLatin1(name), QString::fromLatin1(caption),
                       QString::fromLatin1(tip), parent);
}

// Keeps the covered controls out of reach of the keyboard as well while the
// password frame lies over them, and gives them back when it goes.
class CoverWatch : public QObject {
  public:
    CoverWatch(QWidget* cover, QWidget* covered) : QObject(cover), covered_(covered) {
        cover->installEventFilter(this);
    }
    bool eventFilter(QObject*, QEvent* event) override {
        if (event->type() == QEvent::HideToParent) {
            covered_->setEnabled(true);
        } else if (event->type() == QEvent::ShowToParent) {
            covered_->setEnabled(false);
        }
        return false;
    }

  private:
    QWidget* covered_;
};
}  // namespace

FactoryPage::FactoryPage(QWidget* parent) : QWidget(parent) {
    setObjectName(QStringLiteral("FactoryPage"));
    FactoryControls = new QWidget(this);
    FactoryControls->setObjectName(QStringLiteral("FactoryControls"));
    auto* outer = new QVBoxLayout(this);
    outer->setContentsMargins(0, 0, 0, 0);
    outer->addWidget(FactoryControls);

    auto* layout = new QHBoxLayout(FactoryControls);
    layout->setContentsMargins(12, 12, 12, 12);
    layout->setSpacing(12);
    layout->addWidget(buildDirections(FactoryControls), 1, Qt::AlignTop);
    layout->addWidget(buildEncoders(FactoryControls), 1, Qt::AlignTop);
    buildPassFrame();
}

QGroupBox* FactoryPage::buildDirections(QWidget* parent) {
    auto* box = new QGroupBox(QStringLiteral("Normal/Reverse"), parent);
    auto* column = new QVBoxLayout(box);
    const char* const captions[4] = {"Pan Mtr Reverse", "Tilt Mtr Reverse", "Pan Res Invert",
                                     "Tilt Res Invert"};
    const char* const tips[4] = {"Reverses Pan Motor Direction", "Reverses Tilt Motor Direction",
                                 "Inverts Pan Resolver Direction",
                                 "Inverts Tilt Resolver Direction"};
    for (int i = 0; i < 4; ++i) {
        RevCheck[i] =
            namedCheck(QStringLiteral("RevCheck_%1").arg(i), QString::fromLatin1(captions[i]), box,
                       QString::fromLatin1(tips[i]));
        column->addWidget(RevCheck[i]);
    }
    ConCheck = namedCheck(QStringLiteral("ConCheck"), QStringLiteral("Con Rotation"), box);
    InvCheck = namedCheck(QStringLiteral("InvCheck"), QStringLiteral("Invert Mount"), box);
    column->addWidget(ConCheck);
    column->addWidget(InvCheck);
    GetRevBut = button("GetRevBut", "Get Normal/Reverse", box,
                       "Gets Pan & Tilt Motor/Resolver Normal/Reverse Settings");
    SetRevBut = button("SetRevBut", "Set Normal/Reverse", box,
                       "Sets Pan & Tilt Motor/Resolver Normal/Reverse Settings-Not Stored");
    column->addWidget(GetRevBut);
    column->addWidget(SetRevBut);
    return box;
}

QGroupBox* FactoryPage::buildEncoders(QWidget* parent) {
    auto* box = new QGroupBox(QStringLiteral("Encoders"), parent);
    auto* grid = new QGridLayout(box);
    const ScrollRow pan =
        addScrollRow(grid, 0, 0, QStringLiteral("Pan"), QStringLiteral("PEncScroll"),
                     QStringLiteral("Label34"), 0, 10000, 15, box);
    const ScrollRow tilt =
        addScrollRow(grid, 1, 0, QStringLiteral("Tilt"), QStringLiteral("TEncScroll"),
                     QStringLiteral("Label37"), 0, 10000, 15, box);
    PEncScroll = pan.scroll, Label34 = pan.readout;
    TEncScroll = tilt.scroll, Label37 = tilt.readout;
    GetEncBut = button("GetEncBut", "Get Encoders", box);
    SetEncBut = button("SetEncBut", "Set Encoders", box);
    grid->addWidget(GetEncBut, 2, 0, 1, 2);
    grid->addWidget(SetEncBut, 2, 2);
    InitEncBut = button("InitEncBut", "Initial Encoder Align", box,
                        "Factory Encoder Alignment, Be Sure Pan is Centered");
    EncHomeBut = button("EncHomeBut", "Homing Cycle", box,
                        "Realigns Pan to the Index Point, Improves Accuracy");
    grid->addWidget(InitEncBut, 3, 0, 1, 3);
    grid->addWidget(EncHomeBut, 4, 0, 1, 3);
    return box;
}

void FactoryPage::buildPassFrame() {
    // Lies over the whole page, outside the layout, opaque.
    PassFrame = new QGroupBox(QStringLiteral("Enter Password"), this);
    PassFrame->setObjectName(QStringLiteral("PassFrame"));
    PassFrame->setAutoFillBackground(true);
    auto* grid = new QGridLayout(PassFrame);
    PassText = new QLineEdit(PassFrame);
    PassText->setObjectName(QStringLiteral("PassText"));
    PassText->setEchoMode(QLineEdit::Password);
    PassText->setMaximumWidth(160);
    PassEntBut = button("PassEntBut", "Enter", PassFrame);
    grid->setRowStretch(0, 1);
    grid->addWidget(PassText, 1, 1);
    grid->addWidget(PassEntBut, 1, 2);
    grid->setRowStretch(2, 1);
    grid->setColumnStretch(0, 1);
    grid->setColumnStretch(3, 1);
    FactoryControls->setEnabled(false);
    new CoverWatch(PassFrame, FactoryControls);
    PassFrame->raise();
}

void FactoryPage::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    PassFrame->setGeometry(rect());
}

}  // namespace halvex
