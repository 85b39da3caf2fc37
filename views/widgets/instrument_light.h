#pragma once

#include <QColor>

namespace halvex {

// How the drawn instruments (LED read-outs, status lamps, the link lamp, the
// gauge and the jog boxes) are lit, for the whole program.
//
// By day they show their own colours. By night every colour is dimmed so that
// a dark-adapted eye is not dazzled, pale ones most, since white light
// dazzles most; the colours that carry a meaning (a lamp's red, yellow and
// green, the digits of the current, target and desired positions, the gauge's
// needle and bands) keep their hue, so that a lamp still says by night what it
// says by day, while the neutral markings (faces, scales, cross-hairs,
// outlines) turn dim red like the rest of the window.
enum class InstrumentLight { Day, Night };

InstrumentLight instrumentLight();
// Sets the light and repaints every widget.
void setInstrumentLight(InstrumentLight light);

// The jog boxes' marker, by day: where the stick or the lens stands.
inline const QColor kJogMarker(0xff, 0xb3, 0x47);

// A colour that carries a meaning, as the instruments show it now.
QColor signalColour(const QColor& day);
// A neutral marking, as the instruments show it now.
QColor markingColour(const QColor& day);

}  // namespace halvex
