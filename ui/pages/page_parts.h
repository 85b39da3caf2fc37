#pragma once

#include <QFont>
#include <QString>

class QWidget;

namespace halvex {

class LedDisplay;

// "Courier New", or the nearest fixed-pitch face: list entries and their
// headings are laid out in fixed-width columns.
QFont fixedPitchFont();

// An LED read-out of an angle in degrees, two decimals, six digit cells.
LedDisplay* angleLed(const QString& name, QWidget* parent);

}  // namespace halvex
