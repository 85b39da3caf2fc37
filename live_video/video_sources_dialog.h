#pragma once

#include <QDialog>
#include <array>

#include "live_video/live_video_choice.h"

class QLabel;
class QLineEdit;

namespace halvex {

// Where each output's picture comes from and each camera's lens, typed in.
// Nothing is taken until every entry reads; then `chosen` carries them all.
// It is shown without waiting for it, so the console runs on meanwhile.
class VideoSourcesDialog : public QDialog {
    Q_OBJECT
  public:
    explicit VideoSourcesDialog(QWidget* parent = nullptr);

    void showChoice(const LiveVideoChoice& choice);
    // Reads the entries; the reason for the first that does not read.
    std::optional<LiveVideoChoice> typedChoice(QString* why) const;

  signals:
    void chosen(const halvex::LiveVideoChoice& choice);
    void calibrationRequested(int camera);

  private:
    void take();

    std::array<QLineEdit*, 2> sources_{};
    std::array<QLineEdit*, 2> lenses_{};
    QLabel* error_;
};

}  // namespace halvex
