#pragma once

#include "views/widgets/pointer_pad.h"

namespace halvex {

// A vertical jog bar for one lens motor (zoom or focus). It reports the
// mouse in a 39 by 120 unit box, (0, 0) at the top left corner and y
// growing downwards, the scale of the small picture boxes the lens jog
// arithmetic was written for; the rest position is the middle line at
// y = 60, the top end drives one way and the bottom end the other. While a
// button is held it fills the bar from the middle to the pointer. Turning
// positions into jog speeds is left to whoever listens to the signals.
class LensJogBox : public PointerPad {
    Q_OBJECT

  public:
    static constexpr double kUnitWidth = 39.0;
    static constexpr double kUnitHeight = 120.0;
    static constexpr double kUnitCentreY = 60.0;

    explicit LensJogBox(QWidget* parent = nullptr);

    QSize sizeHint() const override { return {39, 120}; }
    QSize minimumSizeHint() const override { return {20, 60}; }

  protected:
    void paintEvent(QPaintEvent* event) override;
    // Hidden with a button down (the page changed), the box never sees the
    // release; report one, so a lens does not keep running unseen.
    void hideEvent(QHideEvent* event) override;
};

}  // namespace halvex
