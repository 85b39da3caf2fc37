#pragma once

#include <QCheckBox>
#include <QLabel>
#include <QRadioButton>
#include <QScrollBar>
#include <QString>

class QGridLayout;

namespace halvex {

// Small builders for the setting pages: every control gets its name.
QCheckBox* namedCheck(const QString& name, const QString& caption, QWidget* parent,
                      const QString& tip = {});
QRadioButton* namedOption(const QString& name, const QString& caption, QWidget* parent,
                          const QString& tip = {});

// A horizontal scroll bar over minimum..maximum that starts at `start` and
// moves by 10 on a large step.
QScrollBar* namedScroll(const QString& name, int minimum, int maximum, int start, QWidget* parent);

// A read-out caption that shows a scroll bar's value in decimal and follows
// it as it moves (display only: nothing is sent).
QLabel* readoutOf(QScrollBar* scroll, const QString& name, QWidget* parent);

// A scroll bar with its read-out on one grid row, after a caption.
struct ScrollRow {
    QScrollBar* scroll = nullptr;
    QLabel* readout = nullptr;
};
ScrollRow addScrollRow(QGridLayout* grid, int row, int column, const QString& caption,
                       const QString& scrollName, const QString& readoutName, int minimum,
                       int maximum, int start, QWidget* parent);

}  // namespace halvex
