#pragma once

#include <QString>
#include <optional>

namespace halvex {

// Where a video pane's picture comes from, as the operator chose it.
struct VideoSource {
    enum class Kind { None, Device, Rtsp, Rtp, Udp, Srt, Http };
    Kind kind = Kind::None;
    QString address;  // as given: "/dev/video0", "rtsp://host:8554/out1", ...
    bool operator==(const VideoSource&) const = default;
};

// What an operator types or the settings hold: "" or "none"; "/dev/videoN" or
// "v4l2:///dev/videoN"; rtsp:// (and rtsps://), rtp://HOST:PORT, udp://HOST:PORT,
// srt://HOST:PORT[?...], http(s):// (an MJPEG stream). Anything else: nullopt
// and a short reason for the operator in *why ("not a video source: ...").
// rtp:// carries H.264 (payload type 96); udp:// and srt:// carry an MPEG
// transport stream.
std::optional<VideoSource> parseVideoSource(const QString& text, QString* why = nullptr);

// Back to what parseVideoSource takes.
QString sourceText(const VideoSource& source);

}  // namespace halvex
