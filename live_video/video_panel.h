#pragma once

#include <QWidget>
#include <array>

class QBoxLayout;
class QToolButton;

namespace halvex {

class VideoPane;

// The unit's two video outputs side by side, or one above the other where
// the panel is taller than wide. Each has a row of buttons: its output's
// toggle (a small screen shows one pane at a time), a snapshot and a
// recording; the Sources button opens the choice of what each shows.
class VideoPanel : public QWidget {
    Q_OBJECT
  public:
    static constexpr int kOutputs = 2;

    explicit VideoPanel(QWidget* parent = nullptr);

    VideoPane& pane(int output) { return *panes_.at(static_cast<std::size_t>(output)); }
    QToolButton& recordButton(int output) { return *record_.at(static_cast<std::size_t>(output)); }

  signals:
    void snapshotRequested(int output);
    void recordingToggled(int output, bool on);
    void sourcesRequested();

  protected:
    void resizeEvent(QResizeEvent* event) override;

  private:
    QWidget* buildOutput(int output);

    QBoxLayout* outputs_;
    std::array<VideoPane*, kOutputs> panes_{};
    std::array<QToolButton*, kOutputs> record_{};
};

}  // namespace halvex
