#pragma once

#include <QString>
#include <optional>

#include "live_video/video_source.h"

namespace halvex {

// How a stream of one kind is received: a fixed GStreamer description with
// the source element named "src", and the property of that element that
// takes the address. The operator's text only ever goes into that property,
// never into the description.
//
// Every description ends the same way: "parse" (a parsebin) finds the
// encoded video; the pipeline links it to "split", a tee, so that a
// recording can take the stream as it arrives; the other side decodes
// (decodebin takes a hardware decoder by rank when the machine has one)
// into BGRx for "sink", an appsink that keeps only the newest frame.
struct StreamDescription {
    const char* launch;
    const char* addressProperty;
};

// Nullopt for Kind::None.
std::optional<StreamDescription> streamDescription(VideoSource::Kind kind);

// What goes into the source's address property: the address itself, but
// for rtp:// the udp:// that the UDP source takes.
QString sourceProperty(const VideoSource& source);

// The parser that puts an encoded stream of the given caps name into the
// form Matroska takes: "" when none is needed, nullopt when Matroska cannot
// hold it.
std::optional<const char*> recordingParser(const QString& capsName);

}  // namespace halvex
