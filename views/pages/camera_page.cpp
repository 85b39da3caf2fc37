#include "views/pages/camera_page.h"

#include <QButtonGroup>
#include <QFontDatabase>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QVBoxLayout>

namespace halvex {

CameraPage::CameraPage(QWidget* parent) : QWidget(parent) {
    setObjectName(QStringLiteral("CameraPage"));
    auto* layout = new QVBoxLayout(this);
    for (int c = 0; c < 2; ++c) {
        const auto i = static_cast<std::size_t>(c);
        auto* group = new QGroupBox(QStringLiteral("Camera %1 Replies").arg(c + 1), this);
        auto* box = new QVBoxLayout(group);
        RXLabel[i] = new QLabel(group);
        RXLabel[i]->setObjectName(QStringLiteral("RXLabel_%1").arg(c));
        RXLabel[i]->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
        RXLabel[i]->setTextInteractionFlags(Qt::TextSelectableByMouse);
        RXLabel[i]->setMinimumHeight(28);
        RXLabel[i]->setFrameShape(QFrame::StyledPanel);
        TextOp1[i] = new QRadioButton(QStringLiteral("Text"), group);
        TextOp1[i]->setObjectName(QStringLiteral("TextOp1_%1").arg(c));
        HexOp1[i] = new QRadioButton(QStringLiteral("Hex"), group);
        HexOp1[i]->setObjectName(QStringLiteral("HexOp1_%1").arg(c));
        TextOp1[i]->setChecked(true);
        auto* choices = new QButtonGroup(group);
        choices->addButton(TextOp1[i]);
        choices->addButton(HexOp1[i]);
        auto* options = new QHBoxLayout;
        options->addWidget(TextOp1[i]);
        options->addWidget(HexOp1[i]);
        options->addStretch();
        box->addWidget(RXLabel[i]);
        box->addLayout(options);
        layout->addWidget(group);
    }
    layout->addStretch();
}

}  // namespace halvex
