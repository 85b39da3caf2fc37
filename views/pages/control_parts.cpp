#include "views/pages/control_parts.h"

#include <QGridLayout>

namespace halvex {

QCheckBox* namedCheck(const QString& name, const QString& caption, QWidget* parent,
                      const QString& tip) {
    auto* box = new QCheckBox(caption, parent);
    box->setObjectName(name);
    if (!tip.isEmpty()) {
        box->setToolTip(tip);
    }
    return box;
}

QRadioButton* namedOption(const QString& name, const QString& caption, QWidget* parent,
                          const QString& tip) {
    auto* option = new QRadioButton(caption, parent);
    option->setObjectName(name);
    if (!tip.isEmpty()) {
        option->setToolTip(tip);
    }
    return option;
}

QScrollBar* namedScroll(const QString& name, int minimum, int maximum, int start, QWidget* parent) {
    auto* scroll = new QScrollBar(Qt::Horizontal, parent);
    scroll->setObjectName(name);
    scroll->setRange(minimum, maximum);
    scroll->setPageStep(10);
    scroll->setSingleStep(1);
    scroll->setValue(start);
    scroll->setMinimumWidth(140);
    return scroll;
}

QLabel* readoutOf(QScrollBar* scroll, const QString& name, QWidget* parent) {
    auto* label = new QLabel(QString::number(scroll->value()), parent);
    label->setObjectName(name);
    label->setFrameShape(QFrame::StyledPanel);
    label->setMinimumWidth(52);
    label->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    QObject::connect(scroll, &QScrollBar::valueChanged, label,
                     [label](int value) { label->setText(QString::number(value)); });
    // A bar that reports its value only when released still shows it moving.
    QObject::connect(scroll, &QScrollBar::sliderMoved, label,
                     [label](int value) { label->setText(QString::number(value)); });
    return label;
}

ScrollRow addScrollRow(QGridLayout* grid, int row, int column, const QString& caption,
                       const QString& scrollName, const QString& readoutName, int minimum,
                       int maximum, int start, QWidget* parent) {
    ScrollRow made;
    made.scroll = namedScroll(scrollName, minimum, maximum, start, parent);
    made.readout = readoutOf(made.scroll, readoutName, parent);
    if (!caption.isEmpty()) {
        grid->addWidget(new QLabel(caption, parent), row, column);
    }
    grid->addWidget(made.scroll, row, column + 1);
    grid->addWidget(made.readout, row, column + 2);
    return made;
}

}  // namespace halvex
