#pragma once

// The PTZ coordinate spaces the ONVIF server offers, and how each maps onto
// the unit: the generic spaces spread -1..1 over the soft limits (pan and
// tilt) and 0..1 over a lens's travel (zoom); the degree spaces are the
// unit's own angles. No Qt.

#include <optional>
#include <string_view>

#include "protocol/frame.h"
#include "session/jog_sources.h"

namespace halvex::onvif {

namespace space {
inline constexpr auto kPanTiltPosition =
    "http://www.onvif.org/ver10/tptz/PanTiltSpaces/PositionGenericSpace";
inline constexpr auto kPanTiltTranslation =
    "http://www.onvif.org/ver10/tptz/PanTiltSpaces/TranslationGenericSpace";
inline constexpr auto kPanTiltVelocity =
    "http://www.onvif.org/ver10/tptz/PanTiltSpaces/VelocityGenericSpace";
inline constexpr auto kPanTiltSpeed =
    "http://www.onvif.org/ver10/tptz/PanTiltSpaces/GenericSpeedSpace";
inline constexpr auto kZoomPosition =
    "http://www.onvif.org/ver10/tptz/ZoomSpaces/PositionGenericSpace";
inline constexpr auto kZoomTranslation =
    "http://www.onvif.org/ver10/tptz/ZoomSpaces/TranslationGenericSpace";
inline constexpr auto kZoomVelocity =
    "http://www.onvif.org/ver10/tptz/ZoomSpaces/VelocityGenericSpace";
inline constexpr auto kZoomSpeed =
    "http://www.onvif.org/ver10/tptz/ZoomSpaces/ZoomGenericSpeedSpace";
// The unit's angles: pan and tilt in degrees as the console shows them,
// x pan, y tilt, within the soft limits.
inline constexpr auto kPanTiltDegrees = "urn:halvex:ptz:PanTiltSpaces:PositionSpaceDegrees";
// A move by so many degrees, x pan, y tilt.
inline constexpr auto kPanTiltDegreesTranslation =
    "urn:halvex:ptz:PanTiltSpaces:TranslationSpaceDegrees";
}  // namespace space

// The travel the generic spaces cover, in degrees.
struct PanTiltRange {
    double panMin = 0.0;
    double panMax = 0.0;
    double tiltMin = 0.0;
    double tiltMax = 0.0;

    // Pan and tilt ranges that are not empty.
    bool usable() const { return panMin < panMax && tiltMin < tiltMax; }
};

// The soft limits, or a whole turn of pan for a unit that pans for ever.
PanTiltRange rangeFromLimits(float panMin, float panMax, float tiltMin, float tiltMax,
                             bool panContinuous);

// Generic -1..1 to degrees and back (clamped to -1..1).
double genericToAngle(double x, double min, double max);
double angleToGeneric(double angle, double min, double max);
// A generic translation (2 is the whole range) in degrees.
double genericToDelta(double x, double min, double max);

// Whether a generic value lies in -1..1 (or 0..1 for a zoom position),
// allowing for a client's rounding.
bool inGenericRange(double x, double low = -1.0, double high = 1.0);

// A generic velocity -1..1 as a jog axis: speed 0..255, true for right/up.
AxisDemand velocityToAxis(double v);
// A generic zoom velocity -1..1 as a lens jog byte (positive zooms in).
Byte zoomVelocityToLensByte(double v);
// Zoom 0..1 and the lens byte 0..255.
int zoomToLensPosition(double zoom);
double lensPositionToZoom(Byte position);

// An xs:duration as ONVIF's timeouts use it ("PT5S", "PT0.5S", "PT1M30S",
// "P0DT0H0M10S"), in milliseconds; nothing for text that is not one, or
// one that is negative or longer than a day.
std::optional<int> durationMs(std::string_view text);

}  // namespace halvex::onvif
