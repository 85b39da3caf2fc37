#pragma once

#include <QFont>
#include <QString>

class QPushButton;
class QWidget;

namespace halvex {

class LedDisplay;

// "Courier New", or the nearest fixed-pitch face: list entries and their
// headings are laid out in fixed-width columns.
QFont fixedPitchFont();

// An LED read-out of an angle in degrees, two decimals, six digit cells.
LedDisplay* angleLed(const QString& name, QWidget* parent);

// `page` in a frameless scroll area that scrolls only when it is given less
// room than the page needs.
QWidget* scrollingWhenSqueezed(QWidget* page);

// A control's name with its index, as the window names arrays of controls:
// "TourSel_3".
inline QString indexed(const char* name, int index) {
    return QString::fromLatin1(name) + QLatin1Char('_') + QString::number(index);
}

// How far a list's heading is indented: the list's frame and margin shift its
// text a little to the right.
inline constexpr int kHeadingIndent = 4;

// A push button with its control name, caption and (when not empty) tool tip.
QPushButton* namedButton(const QString& name, const QString& caption, const QString& tip,
                         QWidget* parent);

}  // namespace halvex
