#pragma once

#include <QObject>
#include <QPalette>
#include <array>

class QAction;
class QMenu;

namespace halvex {

// The colours of the whole program: the desktop's own, a dark palette, and a
// night palette of dim red on black for eyes adapted to the dark (a vehicle
// or a control room at night). The drawn instruments follow the choice (see
// InstrumentLight): by night they dim and their markings turn red, while
// their signal colours keep their hue.
enum class Palette { Desktop, Dark, Night };

QPalette darkPalette();
QPalette nightPalette();
// Sets the application's palette and the instruments' light.
void applyPalette(Palette palette);

// View > Palette: one checked entry per palette. The choice is kept for the
// user and applied again when the next window builds its menu.
class PaletteChoice : public QObject {
    Q_OBJECT
  public:
    PaletteChoice(QMenu& viewMenu, QObject* parent);

    Palette current() const { return current_; }
    void choose(Palette palette);

  private:
    Palette current_ = Palette::Desktop;
    std::array<QAction*, 3> entries_{};
};

}  // namespace halvex
