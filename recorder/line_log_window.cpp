#include "recorder/line_log_window.h"

#include <QAbstractItemView>
#include <QAction>
#include <QApplication>
#include <QClipboard>
#include <QFontDatabase>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QItemSelectionModel>
#include <QScrollBar>
#include <QSplitter>
#include <QVBoxLayout>
#include <algorithm>

#include "protocol/protocol_table.h"
#include "recorder/line_row_painter.h"

namespace halvex {

namespace {
constexpr int kStatusRefreshMs = 1000;
constexpr int kTextFilterDelayMs = 250;

QPushButton* button(const QString& caption, const char* name, QWidget* parent,
                    bool checkable = false) {
    auto* made = new QPushButton(caption, parent);
    made->setObjectName(QString::fromLatin1(name));
    made->setCheckable(checkable);
    return made;
}

// The widest name the protocol table gives a frame.
int widestFrameName(const QFontMetrics& metrics) {
    int widest = 0;
    for (const table::Message& message : table::messages()) {
        for (const table::Layout& layout : message.layouts) {
            widest =
                std::max(widest, metrics.horizontalAdvance(QString::fromStdString(layout.name)));
        }
    }
    return widest;
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
    table_->setItemDelegate(new LineRowPainter(model_, table_));
    table_->setSelectionBehavior(QAbstractItemView::SelectRows);
    table_->setSelectionMode(QAbstractItemView::ExtendedSelection);
    table_->setShowGrid(false);
    table_->verticalHeader()->hide();
    // Rows of one height: the view never measures a row's contents.
    const int rowHeight = fontMetrics().height() + 4;
    table_->verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    table_->verticalHeader()->setDefaultSectionSize(rowHeight);
    sizeColumns();

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
    // end, following starts again. Only the operator's scrolls are actions:
    // the view's own scroll to the end sets the value without one.
    connect(table_->verticalScrollBar(), &QAbstractSlider::actionTriggered, this, [this] {
        const QScrollBar* bar = table_->verticalScrollBar();
        follow_->setChecked(bar->sliderPosition() >= bar->maximum());
    });

    statusTimer_.setInterval(kStatusRefreshMs);
    connect(&statusTimer_, &QTimer::timeout, this, &LineLogWindow::refreshStatus);
    textDelay_.setSingleShot(true);
    textDelay_.setInterval(kTextFilterDelayMs);
    connect(&textDelay_, &QTimer::timeout, this, &LineLogWindow::applyFilter);
    resize(1180, 48 * rowHeight);
}

// Each column as wide as what it shows, every frame's name whole; the fields
// take what is left, the bytes as many as a short frame has (the tool tip and
// the detail show all), and an event's text what the name column has.
void LineLogWindow::sizeColumns() {
    QHeaderView* columns = table_->horizontalHeader();
    const QFontMetrics text = table_->fontMetrics();
    const QFontMetrics fixed(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    const QFontMetrics header = columns->fontMetrics();
    const int padding = 2 * text.horizontalAdvance(QLatin1Char('M'));
    const auto fit = [&](int column, int content) {
        const QString caption =
            model_.headerData(column, Qt::Horizontal, Qt::DisplayRole).toString();
        columns->resizeSection(column,
                               std::max(content, header.horizontalAdvance(caption)) + padding);
    };
    fit(LineLogModel::Time, fixed.horizontalAdvance(QStringLiteral("00:00:00.000")));
    fit(LineLogModel::Direction, text.horizontalAdvance(QStringLiteral("\u2190 unit")));
    fit(LineLogModel::Address, text.horizontalAdvance(QStringLiteral("255")));
    fit(LineLogModel::Code, text.horizontalAdvance(QStringLiteral("FF")));
    fit(LineLogModel::Name, widestFrameName(text));
    fit(LineLogModel::Check, text.horizontalAdvance(QStringLiteral("LRC wrong")));
    fit(LineLogModel::Bytes, fixed.horizontalAdvance(QString(32, QLatin1Char('0'))));
    columns->setSectionResizeMode(QHeaderView::Interactive);
    columns->setSectionResizeMode(LineLogModel::Fields, QHeaderView::Stretch);
    columns->setStretchLastSection(false);
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
    // Narrow on the bar, whole names in the list.
    code_->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    code_->setMinimumContentsLength(18);
    code_->view()->setMinimumWidth(code_->view()->sizeHintForColumn(0) + 32);
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
    table_->scrollToBottom();
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
