#pragma once

#include <QImage>
#include <QObject>
#include <QPointer>
#include <QString>
#include <array>

#include "session/preset_table.h"

namespace halvex {

class PresetThumbnails;
class PresetsPage;
class RangePlot;
class Session;
class ToursPage;

// Shows the presets' pictures where the presets are shown: as the icons of
// the Presets page's entries and of the Tours page's steps, and under the
// range plot's tool tips. Follows the pictures as they are kept and
// removed, and the unit the console names: another line or address has
// pictures of its own.
class ThumbnailFeed : public QObject {
    Q_OBJECT
  public:
    ThumbnailFeed(Session& session, PresetThumbnails& thumbnails, PresetsPage& presets,
                  ToursPage& tours, RangePlot& plot, QObject* parent = nullptr);

    // Reads the pictures again when the unit is named differently now.
    void followUnit();
    // Reads every picture again.
    void showAll();

  private:
    void show(int number);
    void showStep(int index);
    void showSteps();

    Session& session_;
    PresetThumbnails& thumbnails_;
    QPointer<PresetsPage> presets_;
    QPointer<ToursPage> tours_;
    QPointer<RangePlot> plot_;
    // The pictures shown, read once per change rather than for each step.
    std::array<QImage, kPresetTableSize> shown_;
    QString shownFolder_;
};

}  // namespace halvex
