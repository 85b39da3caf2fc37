#include "live_video/video_sources_dialog.h"

#include <QDialogButtonBox>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

#include "live_video/video_source.h"

namespace halvex {

namespace {
QString indexed(const char* name, std::size_t index) {
    return QStringLiteral("%1_%2").arg(QLatin1String(name)).arg(index);
}
}  // namespace

VideoSourcesDialog::VideoSourcesDialog(QWidget* parent) : QDialog(parent) {
    setObjectName(QStringLiteral("VideoSourcesDialog"));
    setWindowTitle(QStringLiteral("Video Sources"));
    auto* layout = new QVBoxLayout(this);
    auto* form = new QFormLayout;
    for (std::size_t i = 0; i < sources_.size(); ++i) {
        sources_[i] = new QLineEdit(this);
        sources_[i]->setObjectName(indexed("VideoSource", i));
        sources_[i]->setPlaceholderText(QStringLiteral("none"));
        sources_[i]->setToolTip(QStringLiteral(
            "A capture device (/dev/video0), a network stream (rtsp://, rtp://, udp://, "
            "srt://, http:// MJPEG) or none"));
        form->addRow(QStringLiteral("Output %1:").arg(i + 1), sources_[i]);
    }
    for (std::size_t i = 0; i < lenses_.size(); ++i) {
        lenses_[i] = new QLineEdit(this);
        lenses_[i]->setObjectName(indexed("FieldOfView", i));
        lenses_[i]->setToolTip(
            QStringLiteral("Zoom positions and the horizontal field of view there, in degrees: "
                           "\"0:60;128:13;255:3\", from the lens's data sheet or a calibration"));
        auto* calibrate = new QPushButton(QStringLiteral("Calibrate..."), this);
        calibrate->setObjectName(indexed("CalibrateBut", i));
        connect(calibrate, &QPushButton::clicked, this,
                [this, i] { emit calibrationRequested(static_cast<int>(i)); });
        auto* row = new QHBoxLayout;
        row->addWidget(lenses_[i], 1);
        row->addWidget(calibrate);
        form->addRow(QStringLiteral("Camera %1 field of view:").arg(i + 1), row);
    }
    layout->addLayout(form);
    error_ = new QLabel(this);
    error_->setObjectName(QStringLiteral("VideoSourcesError"));
    error_->setWordWrap(true);
    layout->addWidget(error_);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    connect(buttons, &QDialogButtonBox::accepted, this, &VideoSourcesDialog::take);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    layout->addWidget(buttons);
}

void VideoSourcesDialog::showChoice(const LiveVideoChoice& choice) {
    for (std::size_t i = 0; i < sources_.size(); ++i) {
        sources_[i]->setText(choice.sources[i]);
        lenses_[i]->setText(choice.lenses[i].text());
    }
    error_->clear();
}

std::optional<LiveVideoChoice> VideoSourcesDialog::typedChoice(QString* why) const {
    LiveVideoChoice choice;
    for (std::size_t i = 0; i < sources_.size(); ++i) {
        QString reason;
        const QString text = sources_[i]->text().trimmed();
        if (!parseVideoSource(text, &reason)) {
            *why = QStringLiteral("Output %1: %2").arg(i + 1).arg(reason);
            return std::nullopt;
        }
        choice.sources[i] = text;
        const auto lens = FieldOfView::fromText(lenses_[i]->text(), &reason);
        if (!lens) {
            *why = QStringLiteral("Camera %1: %2").arg(i + 1).arg(reason);
            return std::nullopt;
        }
        choice.lenses[i] = *lens;
    }
    return choice;
}

void VideoSourcesDialog::take() {
    QString why;
    const auto choice = typedChoice(&why);
    if (!choice) {
        error_->setText(why);
        return;
    }
    error_->clear();
    emit chosen(*choice);
    accept();
}

}  // namespace halvex
