#include "recorder/line_recorder.h"

#include <QDateTime>
#include <QFile>
#include <QFileDialog>
#include <QFileInfo>
#include <QWidget>

#include "console/dialog_wait.h"
#include "console/handler_wiring.h"
#include "console/messages.h"
#include "protocol/line_recording.h"
#include "recorder/line_log_window.h"
#include "recorder/line_tap.h"
#include "session/session.h"

namespace halvex {

namespace {
const QString kRecordingFilter = QStringLiteral("Recordings (*.pcapng);;All files (*)");

QString fileName(const QString& path) {
    return QFileInfo(path).fileName();
}

QString timesText(const LatencyMeter& meter, std::int64_t nowUs, bool withClicks) {
    QString text;
    if (withClicks) {
        text = QStringLiteral("Click to wire %1   ").arg(figuresText(meter.clickToWire(nowUs)));
    }
    return text + QStringLiteral("Frame to reply %1").arg(figuresText(meter.frameToReply(nowUs)));
}
}  // namespace

QString figuresText(const LatencyMeter::Figures& figures) {
    if (figures.count == 0) {
        return QStringLiteral("none yet");
    }
    // Tenths where they tell something.
    const auto ms = [](double value) {
        return QString::number(value, 'f', value < 10.0 ? 1 : 0) + QStringLiteral(" ms");
    };
    return QStringLiteral("p50 %1, p99 %2 (%3)")
        .arg(ms(figures.p50Ms), ms(figures.p99Ms))
        .arg(figures.count);
}

LineRecorder::LineRecorder(Session& session, const Messages& messages, QWidget* window,
                           std::function<QString()> lineName)
    : QObject(window),
      state_(session.state()),
      messages_(messages),
      mainWindow_(window),
      lineName_(std::move(lineName)),
      tap_(new LineTap(session, this)) {
    connect(tap_, &LineTap::recorded, this, &LineRecorder::take);
    Link& link = session.link();
    connect(&link, &Link::frameQueued, this,
            [this](const FrameTicket& frame) { latency_.noteQueued(frame.get()); });
    connect(&link, &Link::frameWritten, this, [this](const FrameTicket& frame) {
        latency_.noteWritten(frame.get(), LineTap::nowUs());
    });
    latency_.watchInput();
}

LineRecorder::~LineRecorder() {
    // The window shows the model, which goes with this object.
    delete window_;
}

void LineRecorder::take(const recording::LineRecord& record) {
    if (file_.isOpen() && !file_.write(record)) {
        // Told once the event at hand (a frame being read, perhaps) is over,
        // never inside it.
        const QString path = file_.path();
        QMetaObject::invokeMethod(
            this,
            [this, path] {
                if (window_) {
                    window_->showRecording(false);
                }
                messages_.exclamation(
                    QStringLiteral("Record"),
                    QStringLiteral("Recording to %1 stopped: the file could not be written.")
                        .arg(path));
            },
            Qt::QueuedConnection);
    }
    latency_.note(record);
    model_.append(record);
}

LineLogWindow& LineRecorder::window() {
    if (!window_) {
        window_ = new LineLogWindow(model_, LineLogWindow::Source::Live, mainWindow_);
        window_->setStatusSource([this] { return statusText(); });
        window_->showRecording(recording());
        onEvent(state_, window_.data(), &LineLogWindow::recordClicked, this, "RecordBut_Click",
                [this] { return RecordBut_Click(); });
        onEvent(state_, window_.data(), &LineLogWindow::openClicked, this, "OpenBut_Click",
                [this] { return OpenBut_Click(); });
    }
    return *window_;
}

void LineRecorder::showLog() {
    LineLogWindow& log = window();
    log.show();
    log.raise();
    log.activateWindow();
}

QString LineRecorder::startRecording(const QString& path) {
    const QString error = file_.open(path, lineName_ ? lineName_() : QStringLiteral("line"));
    if (window_) {
        window_->showRecording(recording());
        window_->refreshStatus();
    }
    return error;
}

void LineRecorder::stopRecording() {
    file_.close();
    if (window_) {
        window_->showRecording(false);
        window_->refreshStatus();
    }
}

QString LineRecorder::statusText() const {
    const QString recordingText = file_.isOpen() ? QStringLiteral("Recording to %1 (%2 records)")
                                                       .arg(fileName(file_.path()))
                                                       .arg(file_.records())
                                                 : QStringLiteral("Not recording");
    return recordingText + QStringLiteral("   |   ") + timesText(latency_, LineTap::nowUs(), true);
}

QCoro::Task<QString> LineRecorder::choosePath(bool forSaving) const {
    if (chooser_) {
        return chooser_(forSaving);
    }
    QWidget* parent = window_ ? static_cast<QWidget*>(window_) : mainWindow_;
    if (forSaving) {
        const QString suggested =
            QStringLiteral("halvex-%1.pcapng")
                .arg(QDateTime::currentDateTime().toString(QStringLiteral("yyyyMMdd-hhmmss")));
        return chooseFile(parent, QStringLiteral("Record The Line"), suggested, kRecordingFilter,
                          QFileDialog::AcceptSave);
    }
    return chooseFile(parent, QStringLiteral("Open Recording"), QString(), kRecordingFilter,
                      QFileDialog::AcceptOpen);
}

// No file is chosen also when the dialog went with the window: then nothing
// here may be touched.
QCoro::Task<> LineRecorder::RecordBut_Click() {
    if (recording()) {
        stopRecording();
        co_return;
    }
    const QString path = co_await choosePath(true);
    if (path.isEmpty()) {
        co_return;
    }
    const QString error = startRecording(path);
    if (!error.isEmpty()) {
        messages_.exclamation(QStringLiteral("Record"), error + QLatin1Char('.'));
    }
}

QCoro::Task<> LineRecorder::OpenBut_Click() {
    const QString path = co_await choosePath(false);
    if (!path.isEmpty()) {
        openRecording(path);
    }
}

LineLogWindow* LineRecorder::openRecording(const QString& path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        messages_.exclamation(QStringLiteral("Open Recording"),
                              QStringLiteral("Cannot read %1: %2.").arg(path, file.errorString()));
        return nullptr;
    }
    // Mapped, not copied: a long recording is read straight from the file.
    const qint64 size = file.size();
    QByteArray copy;
    const uchar* data = size > 0 ? file.map(0, size) : nullptr;
    if (data == nullptr) {
        copy = file.readAll();
        data = reinterpret_cast<const uchar*>(copy.constData());
    }
    recording::RecordingReader reader(data,
                                      static_cast<std::size_t>(copy.isNull() ? size : copy.size()));
    auto* model = new LineLogModel();
    LatencyMeter meter;
    std::int64_t lastUs{};  // the last record's, read once there is one
    std::size_t records = 0;
    while (auto record = reader.next()) {
        lastUs = record->timeUs;
        meter.note(*record);
        model->append(std::move(*record));
        ++records;
    }
    if (records == 0) {
        delete model;
        const QString why = reader.error().empty() ? QStringLiteral("it holds no frames")
                                                   : QString::fromStdString(reader.error());
        messages_.exclamation(QStringLiteral("Open Recording"),
                              QStringLiteral("%1 cannot be shown: %2.").arg(path, why));
        return nullptr;
    }
    model->flush();

    auto* view = new LineLogWindow(*model, LineLogWindow::Source::File, mainWindow_);
    model->setParent(view);
    view->setAttribute(Qt::WA_DeleteOnClose);
    view->setWindowTitle(QStringLiteral("Line Log - %1").arg(fileName(path)));
    QString status = QStringLiteral("%1: %2 records").arg(fileName(path)).arg(records);
    if (!reader.error().empty()) {
        status +=
            QStringLiteral(" (reading stopped: %1)").arg(QString::fromStdString(reader.error()));
    }
    status += QStringLiteral("   |   ") + timesText(meter, lastUs, false);
    view->setStatusSource([status] { return status; });
    onEvent(state_, view, &LineLogWindow::openClicked, this, "OpenBut_Click",
            [this] { return OpenBut_Click(); });
    view->show();
    return view;
}

}  // namespace halvex
