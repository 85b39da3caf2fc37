#pragma once

#include <QCoro/QCoroTask>
#include <QObject>
#include <QPointer>
#include <QString>
#include <functional>

#include "recorder/latency_meter.h"
#include "recorder/line_log_model.h"
#include "recorder/recording_file.h"

class QWidget;

namespace halvex {

class FormState;
class Messages;
class Session;
class LineTap;
class LineLogWindow;

// The line recorder: taps the console's line, keeps its records for the
// Line Log, writes them to a recording while one is open, and measures the
// line's times. Owns the live Line Log window (made when first shown) and
// opens recordings in windows of their own, with or without a unit.
class LineRecorder : public QObject {
    Q_OBJECT
  public:
    // `lineName` names the line in a recording ("COM1 (/dev/ttyUSB0)").
    LineRecorder(Session& session, const Messages& messages, QWidget* window,
                 std::function<QString()> lineName);
    ~LineRecorder() override;

    LineLogModel& model() { return model_; }
    LatencyMeter& latency() { return latency_; }
    // The live window, made on first use.
    LineLogWindow& window();
    void showLog();

    // Starts writing the line to `path`; an error sentence when it cannot.
    QString startRecording(const QString& path);
    void stopRecording();
    bool recording() const { return file_.isOpen(); }
    QString recordingPath() const { return file_.path(); }

    // Opens a recording in a Line Log window of its own. Returns the window,
    // or nullptr after telling the operator why the file could not be read.
    LineLogWindow* openRecording(const QString& path);

    // Asks the operator for a file: to record to when `forSaving`, else to
    // open; empty for none. A file dialog unless replaced (tests answer it
    // themselves).
    using PathChooser = std::function<QCoro::Task<QString>(bool forSaving)>;
    void setPathChooser(PathChooser chooser) { chooser_ = std::move(chooser); }

    // The status line's part about recording and the line's times.
    QString statusText() const;

  private:
    void take(const recording::LineRecord& record);
    QCoro::Task<> RecordBut_Click();
    QCoro::Task<> OpenBut_Click();
    QCoro::Task<QString> choosePath(bool forSaving) const;

    FormState& state_;
    const Messages& messages_;
    QWidget* mainWindow_;
    std::function<QString()> lineName_;
    LineTap* tap_;
    LineLogModel model_;
    LatencyMeter latency_;
    RecordingFile file_;
    QPointer<LineLogWindow> window_;
    PathChooser chooser_;
};

// "p50 41 ms, p99 97 ms (12)"; "none yet" with no samples.
QString figuresText(const LatencyMeter::Figures& figures);

}  // namespace halvex
