#pragma once

class QObject;

namespace halvex {

// Lets screen readers and other assistive technology read the custom
// widgets as they read standard ones: each tells its name (its accessible
// name, else its tool tip, else its object name) and its value: an LED
// display its number, the gauge its pan angle and scale, a lamp whether it
// is lit and in what colour, the jog box the speeds being sent, the range
// plot where the platform points, where it goes and the nearest preset. Installed
// once, before the first window is shown.
void installWidgetAccessibility();

// Tells assistive technology that a widget's value changed.
void announceValueChange(QObject* widget);

}  // namespace halvex
