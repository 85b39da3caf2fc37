#pragma once

#include <QImage>
#include <QObject>
#include <QString>
#include <array>
#include <functional>

namespace halvex {

class LiveVideo;
class Session;

// What each preset looks at: a small picture of the live video taken when
// the unit stored the preset where the platform pointed, kept per unit in
// the user's data folder (<app data>/thumbnails/<unit>/preset-<n>.png) for
// the lists, the tours and the range plot to show.
//
// A preset stored with no picture to take loses its old one, since that no
// longer shows it; so does a preset stored at typed angles, and clearing
// the unit's presets removes them all. The files are the user's to move
// about: one that is not a PNG, or is too large, reads as no picture.
class PresetThumbnails : public QObject {
    Q_OBJECT
  public:
    static constexpr int kWidth = 160;  // at most as high, for an upright picture
    // A file or picture larger than these is not read.
    static constexpr qint64 kMostFileBytes = 1024 * 1024;
    static constexpr int kMostSide = 1024;

    // `picture` gives what the video shows now (null when nothing plays);
    // `unit` names the unit the console talks to (unitFolderName()).
    PresetThumbnails(Session& session, std::function<QImage()> picture,
                     std::function<QString()> unit, QObject* parent = nullptr);

    // The unit's folder, as it is named now.
    QString folder() const;
    QString fileOf(int number) const;
    // The kept picture; null when there is none or it cannot be read.
    QImage thumbnail(int number) const;

    // Where the pictures come from from now on (a test's own frames).
    void setPictureSource(std::function<QImage()> picture) { picture_ = std::move(picture); }

    // Keeps what the video shows now as the preset's picture.
    void keep(int number);
    void forget(int number);
    void forgetAll();

  signals:
    void changed(int number);
    void allChanged();

  private:
    void watchReplies(Session& session);

    std::function<QImage()> picture_;
    std::function<QString()> unit_;
};

// A folder name for a unit: the line it is on (a device or a network
// address) with what a file name cannot hold made '_', then its address.
// "/dev/ttyUSB0", 1 -> "dev_ttyUSB0-unit1".
QString unitFolderName(const QString& line, int unitId);

// One output's pipeline as the picture to keep sees it.
struct OutputPicture {
    bool playing = false;
    QImage frame;
};
// The newest frame of the first output that plays: a stream that is lost
// still holds its last frame, which no longer shows where the platform is.
QImage pictureToKeep(const std::array<OutputPicture, 2>& outputs);
// The same for the console's live video.
QImage pictureToKeep(LiveVideo& video);

}  // namespace halvex
