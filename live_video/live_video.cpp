#include "live_video/live_video.h"

#include <QDateTime>
#include <QDir>
#include <QEvent>
#include <QToolButton>

#include "live_video/video_aim.h"
#include "live_video/video_pane.h"
#include "live_video/video_panel.h"

namespace halvex {

LiveVideo::LiveVideo(Session& session, VideoPanel& panel, std::function<void(const QString&)> tell,
                     QObject* parent)
    : QObject(parent), session_(session), panel_(panel), tell_(std::move(tell)) {
    for (int output = 0; output < kOutputs; ++output) {
        wire(output);
    }
    connect(&panel, &VideoPanel::snapshotRequested, this, &LiveVideo::saveSnapshot);
    connect(&panel, &VideoPanel::recordingToggled, this, &LiveVideo::setRecording);
    panel.installEventFilter(this);
    outOfSight_.setSingleShot(true);
    outOfSight_.setInterval(kOutOfSightMs);
    connect(&outOfSight_, &QTimer::timeout, this, [this] {
        for (int output = 0; output < kOutputs; ++output) {
            play(output);
        }
    });
}

LiveVideo::~LiveVideo() {
    panel_.removeEventFilter(this);
}

void LiveVideo::wire(int output) {
    auto* pipeline = new VideoPipeline(this);
    pipelines_.at(static_cast<std::size_t>(output)) = pipeline;
    VideoPane& pane = panel_.pane(output);
    aims_.at(static_cast<std::size_t>(output)) = new VideoAim(
        session_, pane, output,
        [this](int camera) { return choice_.lenses.at(static_cast<std::size_t>(camera)); }, tell_,
        this);
    connect(pipeline, &VideoPipeline::frameArrived, &pane, &VideoPane::setFrame);
    connect(pipeline, &VideoPipeline::stateChanged, &pane,
            [&pane](VideoPipeline::State state, const QString& message) {
                // A picture that is no longer coming is not shown as if it were.
                if (state != VideoPipeline::State::Playing) {
                    pane.clearFrame();
                }
                pane.setMessage(message);
            });
    connect(pipeline, &VideoPipeline::eventOccurred, this, [this, output](const QString& text) {
        emit eventOccurred(QStringLiteral("%1: %2").arg(outputName(output), text));
    });
}

QString LiveVideo::outputName(int output) const {
    return QStringLiteral("Output %1").arg(output + 1);
}

void LiveVideo::setChoice(const LiveVideoChoice& choice) {
    choice_ = choice;
    for (int output = 0; output < kOutputs; ++output) {
        play(output);
    }
}

bool LiveVideo::wanted(int output) const {
    return panel_.isVisible() || outOfSight_.isActive() ||
           pipelines_.at(static_cast<std::size_t>(output))->recording();
}

void LiveVideo::play(int output) {
    VideoPipeline& pipeline = *pipelines_.at(static_cast<std::size_t>(output));
    const QString& text = choice_.sources.at(static_cast<std::size_t>(output));
    QString why;
    const auto source = parseVideoSource(text, &why);
    if (!source) {
        pipeline.stop();
        panel_.pane(output).clearFrame();
        panel_.pane(output).setMessage(why);
        return;
    }
    if (!wanted(output) || source->kind == VideoSource::Kind::None) {
        pipeline.stop();
        panel_.pane(output).setMessage(source->kind == VideoSource::Kind::None
                                           ? QStringLiteral("no source: choose one with Sources...")
                                           : QString());
        return;
    }
    if (pipeline.state() != VideoPipeline::State::Off && pipeline.source() == *source) {
        return;
    }
    pipeline.play(*source);
}

bool LiveVideo::eventFilter(QObject* watched, QEvent* event) {
    if (watched == &panel_) {
        switch (event->type()) {
            case QEvent::Show:
                outOfSight_.stop();
                for (int output = 0; output < kOutputs; ++output) {
                    play(output);
                }
                break;
            case QEvent::Hide:
                outOfSight_.start();
                break;
            default:
                break;
        }
    }
    return QObject::eventFilter(watched, event);
}

QString LiveVideo::newFile(int output, QStandardPaths::StandardLocation where,
                           const char* extension) const {
    const QString folder = saveFolder_.isEmpty()
                               ? QStandardPaths::writableLocation(where) + QStringLiteral("/Halvex")
                               : saveFolder_;
    QDir().mkpath(folder);
    const QString stem =
        QStringLiteral("%1/output%2-%3")
            .arg(folder)
            .arg(output + 1)
            .arg(QDateTime::currentDateTime().toString(QStringLiteral("yyyyMMdd-HHmmss")));
    QString path = stem + QLatin1Char('.') + QLatin1String(extension);
    for (int n = 2; QFileInfo::exists(path); ++n) {
        path = QStringLiteral("%1-%2.%3").arg(stem).arg(n).arg(QLatin1String(extension));
    }
    return path;
}

QString LiveVideo::saveSnapshot(int output) {
    // Only a picture the pane shows: a lost stream's last one is not.
    const VideoPipeline& pipeline = *pipelines_.at(static_cast<std::size_t>(output));
    const QImage frame = pipeline.lastFrame();
    if (pipeline.state() != VideoPipeline::State::Playing) {
        tell_(QStringLiteral("%1: no picture to save").arg(outputName(output)));
        return {};
    }
    const QString path = newFile(output, QStandardPaths::PicturesLocation, "png");
    if (!frame.save(path, "PNG")) {
        tell_(QStringLiteral("%1: the snapshot could not be saved to %2")
                  .arg(outputName(output), path));
        return {};
    }
    tell_(QStringLiteral("%1: snapshot saved to %2").arg(outputName(output), path));
    emit eventOccurred(QStringLiteral("%1: snapshot saved to %2").arg(outputName(output), path));
    return path;
}

void LiveVideo::setRecording(int output, bool on) {
    VideoPipeline& pipeline = *pipelines_.at(static_cast<std::size_t>(output));
    QToolButton& button = panel_.recordButton(output);
    if (!on) {
        pipeline.stopRecording();
        play(output);
    } else if (pipeline.state() != VideoPipeline::State::Playing) {
        tell_(QStringLiteral("%1: nothing to record").arg(outputName(output)));
    } else {
        const QString path = newFile(output, QStandardPaths::MoviesLocation, "mkv");
        if (pipeline.startRecording(path)) {
            tell_(QStringLiteral("%1: recording to %2").arg(outputName(output), path));
        }
    }
    // The button shows what is so, whatever was asked.
    const QSignalBlocker quiet(&button);
    button.setChecked(pipeline.recording());
}

}  // namespace halvex
