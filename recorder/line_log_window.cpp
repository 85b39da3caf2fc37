#include "recorder/line_log_window.h"

#include <QAction>
#include <QApplication>
#include <QClipboard>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QItemSelectionModel>
#include <QScrollBar>
#include <QSplitter>
#include <QVBoxLayout>
#include <algorithm>

#include "protocol/protocol_table.h"

namespace halvex {

namespace {
constexpr int kStatusRefreshMs = 1000;
constexpr int kTextFilterDelayMs = 250;

QPushButton* button(const QString& caption, const char* name, QWidget* parent,
                    bool checkable = false) {
    auto* made = new QPushButton(caption, parent);
    made->setObjectName(QString::fromLatin1(name));
    made->setCheckable(checkable);
    made->setAutoDefault(false);
    return made;
}
}  // namespace

LineLogWindow::LineLogWindow(LineLogModel& model, Source source, QWidget* parent)
    : QWidget(parent, Qt::Window), model_(model), source_(source) {
    setObjectName(source == Source::Live ? QStringLiteral("LineLog")
                                         : QStringLiteral("LineLogFile"));
    setWindowTitle(QStringLiteral("Line Log"));

    table_ = new QTableView(this);
    table_->setObjectName(QStringLiteral("LineTable"));
    table_->setModel(&model_);
    table_->setSelectionBehavior(QAbstractItemView::SelectRows);
    table_->setSelectionMode(QAbstractItemView::ExtendedSelection);
    table_->setWordWrap(false);
    table_->setShowGrid(false);
    table_->verticalHeader()->hide();
    // Rows of one height: the view never measures a row's contents.
    const int rowHeight = fontMetrics().height() + 4;
    table_->verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    table_->verticalHeader()->setDefaultSectionSize(rowHeight);
    QHeaderView* columns = table_->horizontalHeader();
    columns->setSectionResizeMode(QHeaderView::Interactive);
    columns->setStretchLastSection(true);
    const int em = fontMetrics().horizontalAdvance(QLatin1Char('M'));
    const int widths[LineLogModel::ColumnCount] = {9 * em,  4 * em,  3 * em, 3 * em,
                                                   11 * em, 30 * em, 5 * em, 10 * em};
    for (int column = 0; column < LineLogModel::ColumnCount; ++column) {
        columns->resizeSection(column, widths[column]);
    }

    detail_ = new QPlainTextEdit(this);
    detail_->setObjectName(QStringLiteral("LineDetail"));
    detail_->setReadOnly(true);
    detail_->setPlaceholderText(QStringLiteral("Select a row to see its frame field by field."));

    auto* split = new QSplitter(Qt::Vertical, this);
    split->addWidget(table_);
    split->addWidget(detail_);
    split->setStretchFactor(0, 4);
    split->setStretchFactor(1, 1);

    status_ = new QLabel(this);
    status_->setObjectName(QStringLiteral("LineStatus"));
    status_->setTextInteractionFlags(Qt::TextSelectableByMouse);

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(buildFilters());
    layout->addWidget(split, 1);
    layout->addWidget(status_);

    auto* copy = new QAction(QStringLiteral("Copy"), table_);
    copy->setShortcut(QKeySequence::Copy);
    copy->setShortcutContext(Qt::WidgetShortcut);
    table_->addAction(copy);
    connect(copy, &QAction::triggered, this, &LineLogWindow::copySelection);

    connect(&model_, &LineLogModel::rowsShown, this, &LineLogWindow::followTail);
    connect(table_->selectionModel(), &QItemSelectionModel::currentRowChanged, this,
            &LineLogWindow::showDetail);
    // The operator scrolling away from the end stops following; back at the
    // end, following starts again.
    connect(table_->verticalScrollBar(), &QAbstractSlider::actionTriggered, this, [this] {
        const QScrollBar* bar = table_->verticalScrollBar();
        if (!scrollingToTail_) {
            follow_->setChecked(bar->sliderPosition() >= bar->maximum());
        }
    });

    statusTimer_.setInterval(kStatusRefreshMs);
    connect(&statusTimer_, &QTimer::timeout, this, &LineLogWindow::refreshStatus);
    textDelay_.setSingleShot(true);
    textDelay_.setInterval(kTextFilterDelayMs);
    connect(&textDelay_, &QTimer::timeout, this, &LineLogWindow::applyFilter);
    resize(118 * em, 48 * rowHeight);
}

QWidget* LineLogWindow::buildFilters() {
    auto* bar = new QWidget(this);
    auto* row = new QHBoxLayout(bar);
    row->setContentsMargins(0, 0, 0, 0);

    direction_ = new QComboBox(bar);
    direction_->setObjectName(QStringLiteral("DirectionFilter"));
    direction_->addItem(QStringLiteral("Both directions"));
    direction_->addItem(QStringLiteral("To unit"));
    direction_->addItem(QStringLiteral("From unit"));
    direction_->addItem(QStringLiteral("Link events"));
    code_ = new QComboBox(bar);
    code_->setObjectName(QStringLiteral("CodeFilter"));
    code_->addItem(QStringLiteral("All codes"));
    for (Byte code : table::knownCodes()) {
        code_->addItem(QStringLiteral("%1  %2")
                           .arg(code, 2, 16, QLatin1Char('0'))
                           .toUpper()
                           .arg(QString::fromStdString(table::codeCaption(code))),
                       code);
    }
    code_->setMaxVisibleItems(20);
    text_ = new QLineEdit(bar);
    text_->setObjectName(QStringLiteral("TextFilter"));
    text_->setPlaceholderText(QStringLiteral("Filter text: a name, a field, bytes"));
    text_->setClearButtonEnabled(true);

    pause_ = button(QStringLiteral("Pause"), "PauseBut", bar, true);
    pause_->setToolTip(QStringLiteral("Hold the view; frames go on being kept and recorded"));
    follow_ = button(QStringLiteral("Follow"), "FollowBut", bar, true);
    follow_->setChecked(true);
    follow_->setToolTip(QStringLiteral("Keep the newest frame in view"));
    auto* copy = button(QStringLiteral("Copy"), "CopyBut", bar);
    copy->setToolTip(QStringLiteral("Copy the selected rows"));
    auto* clear = button(QStringLiteral("Clear"), "ClearBut", bar);
    auto* open = button(QStringLiteral("Open..."), "OpenBut", bar);
    open->setToolTip(QStringLiteral("Open a recording"));

    row->addWidget(direction_);
    row->addWidget(code_);
    row->addWidget(text_, 1);
    row->addWidget(pause_);
    row->addWidget(follow_);
    row->addWidget(copy);
    row->addWidget(clear);
    if (source_ == Source::Live) {
        record_ = button(QStringLiteral("Record..."), "RecordBut", bar);
        record_->setToolTip(QStringLiteral("Record the line to a pcapng file for Wireshark"));
        row->addWidget(record_);
        connect(record_, &QPushButton::clicked, this, &LineLogWindow::recordClicked);
    } else {
        pause_->hide();
        clear->hide();
    }
    row->addWidget(open);

    connect(direction_, &QComboBox::currentIndexChanged, this, &LineLogWindow::applyFilter);
    connect(code_, &QComboBox::currentIndexChanged, this, &LineLogWindow::applyFilter);
    connect(text_, &QLineEdit::textChanged, this, [this] { textDelay_.start(); });
    connect(text_, &QLineEdit::returnPressed, this, &LineLogWindow::applyFilter);
    connect(pause_, &QPushButton::toggled, this, [this](bool paused) {
        model_.setPaused(paused);
        refreshStatus();
    });
    connect(follow_, &QPushButton::toggled, this, [this](bool on) {
        if (on) {
            followTail();
        }
    });
    connect(copy, &QPushButton::clicked, this, &LineLogWindow::copySelection);
    connect(clear, &QPushButton::clicked, this, [this] {
        model_.clear();
        detail_->clear();
        refreshStatus();
    });
    connect(open, &QPushButton::clicked, this, &LineLogWindow::openClicked);
    return bar;
}

void LineLogWindow::applyFilter() {
    textDelay_.stop();
    LineFilter filter;
    filter.direction = static_cast<LineFilter::Direction>(direction_->currentIndex());
    if (code_->currentIndex() > 0) {
        filter.code = static_cast<Byte>(code_->currentData().toInt());
    }
    filter.text = text_->text().trimmed();
    if (filter == model_.filter()) {
        return;
    }
    model_.setFilter(filter);
    detail_->clear();
    followTail();
    refreshStatus();
}

void LineLogWindow::followTail() {
    if (!follow_->isChecked()) {
        return;
    }
    scrollingToTail_ = true;
    table_->scrollToBottom();
    scrollingToTail_ = false;
}

QString LineLogWindow::selectedText() const {
    QModelIndexList rows = table_->selectionModel()->selectedRows();
    std::sort(rows.begin(), rows.end(),
              [](const QModelIndex& a, const QModelIndex& b) { return a.row() < b.row(); });
    QStringList lines;
    for (const QModelIndex& row : rows) {
        lines << model_.rowText(row.row());
    }
    return lines.join(QLatin1Char('\n'));
}

void LineLogWindow::copySelection() {
    const QString text = selectedText();
    if (!text.isEmpty()) {
        QApplication::clipboard()->setText(text + QLatin1Char('\n'));
    }
}

void LineLogWindow::showDetail() {
    const QModelIndex current = table_->currentIndex();
    detail_->setPlainText(current.isValid() ? model_.detailText(current.row()) : QString());
}

void LineLogWindow::showRecording(bool recording) {
    if (record_ != nullptr) {
        record_->setText(recording ? QStringLiteral("Stop Recording")
                                   : QStringLiteral("Record..."));
    }
}

void LineLogWindow::refreshStatus() {
    QString text = QStringLiteral("%1 shown of %2 kept").arg(model_.rowCount()).arg(model_.kept());
    if (model_.paused()) {
        text += QStringLiteral(", paused: %1 waiting").arg(model_.waiting());
    }
    if (statusSource_) {
        const QString more = statusSource_();
        if (!more.isEmpty()) {
            text += QStringLiteral("   |   ") + more;
        }
    }
    status_->setText(text);
}

void LineLogWindow::showEvent(QShowEvent* event) {
    QWidget::showEvent(event);
    model_.flush();
    followTail();
    refreshStatus();
    statusTimer_.start();
}

void LineLogWindow::hideEvent(QHideEvent* event) {
    statusTimer_.stop();
    QWidget::hideEvent(event);
}

}  // namespace halvex
