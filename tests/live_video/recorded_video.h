#pragma once

#include <QSize>
#include <QString>
#include <QtGlobal>

namespace halvex::testing {

// What a Matroska file holds, as a small playback pipeline reads it.
struct RecordedVideo {
    QString encoding;                 // the caps name of the video track: "video/x-h264", ...
    bool startsWithKeyframe = false;  // a player can show the first frame
    QSize decodedSize;
    // As the file's header says: the muxer writes it when the stream ends,
    // so a file cut off before its end has none.
    qint64 durationMs = -1;
};

RecordedVideo readRecording(const QString& path);

}  // namespace halvex::testing
