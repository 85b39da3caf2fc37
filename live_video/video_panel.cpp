#include "live_video/video_panel.h"

#include <QBoxLayout>
#include <QResizeEvent>
#include <QToolButton>

#include "live_video/video_pane.h"

namespace halvex {

namespace {
QToolButton* toolButton(const QString& caption, const QString& name, const QString& tip,
                        QWidget* parent) {
    auto* button = new QToolButton(parent);
    button->setText(caption);
    button->setObjectName(name);
    button->setToolTip(tip);
    button->setToolButtonStyle(Qt::ToolButtonTextOnly);
    // The keyboard jog keeps the keys wherever the pointer was clicked.
    button->setFocusPolicy(Qt::NoFocus);
    return button;
}

QString indexed(const char* name, int index) {
    return QStringLiteral("%1_%2").arg(QLatin1String(name)).arg(index);
}
}  // namespace

VideoPanel::VideoPanel(QWidget* parent) : QWidget(parent) {
    setObjectName(QStringLiteral("VideoPanel"));
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    outputs_ = new QBoxLayout(QBoxLayout::LeftToRight);
    for (int output = 0; output < kOutputs; ++output) {
        outputs_->addWidget(buildOutput(output), 1);
    }
    layout->addLayout(outputs_, 1);
    auto* sources = toolButton(QStringLiteral("Sources..."), QStringLiteral("VideoSourcesBut"),
                               QStringLiteral("Choose what each output shows and set up the "
                                              "lenses' fields of view"),
                               this);
    connect(sources, &QToolButton::clicked, this, &VideoPanel::sourcesRequested);
    layout->addWidget(sources, 0, Qt::AlignRight);
}

QWidget* VideoPanel::buildOutput(int output) {
    auto* box = new QWidget(this);
    auto* column = new QVBoxLayout(box);
    column->setContentsMargins(0, 0, 0, 0);
    auto* buttons = new QHBoxLayout;
    const QString caption = QStringLiteral("Output %1").arg(output + 1);
    auto* toggle = toolButton(caption, indexed("VideoToggle", output),
                              QStringLiteral("Show or hide this output's picture"), box);
    toggle->setCheckable(true);
    toggle->setChecked(true);
    auto* snapshot = toolButton(QStringLiteral("Snapshot"), indexed("VideoSnapshot", output),
                                QStringLiteral("Save the picture as it is now"), box);
    auto* record = toolButton(QStringLiteral("Record"), indexed("VideoRecord", output),
                              QStringLiteral("Save the stream as it arrives"), box);
    record->setCheckable(true);
    buttons->addWidget(toggle);
    buttons->addStretch(1);
    buttons->addWidget(snapshot);
    buttons->addWidget(record);
    column->addLayout(buttons);

    auto* pane = new VideoPane(caption, box);
    pane->setObjectName(indexed("VideoPane", output));
    column->addWidget(pane, 1);
    panes_.at(static_cast<std::size_t>(output)) = pane;
    record_.at(static_cast<std::size_t>(output)) = record;

    connect(toggle, &QToolButton::toggled, pane, &QWidget::setVisible);
    connect(snapshot, &QToolButton::clicked, this,
            [this, output] { emit snapshotRequested(output); });
    connect(record, &QToolButton::toggled, this,
            [this, output](bool on) { emit recordingToggled(output, on); });
    return box;
}

void VideoPanel::resizeEvent(QResizeEvent* event) {
    // Whichever way round shows the two 16:9 pictures larger: side by side
    // each is at most half the width wide, stacked at most half the height
    // high, and the two are as large as each other where the panel itself
    // is 16:9.
    const QSize size = event->size();
    outputs_->setDirection(size.width() * 9 >= size.height() * 16 ? QBoxLayout::LeftToRight
                                                                  : QBoxLayout::TopToBottom);
    QWidget::resizeEvent(event);
}

}  // namespace halvex
