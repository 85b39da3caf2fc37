#pragma once

#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTableView>
#include <QTimer>
#include <QWidget>
#include <functional>

#include "recorder/line_log_model.h"

namespace halvex {

// The Line Log window: the frames of the line in a table, with filters,
// pause, follow, copy, the selected frame in full below, and a status line.
// Live (the console's line, with recording) or showing a recording file.
class LineLogWindow : public QWidget {
    Q_OBJECT
  public:
    enum class Source { Live, File };

    LineLogWindow(LineLogModel& model, Source source, QWidget* parent = nullptr);

    // The status line's second part ("Recording to ...; Click to wire ...").
    void setStatusSource(std::function<QString()> source) { statusSource_ = std::move(source); }
    void refreshStatus();
    // The record button's look while recording (live only).
    void showRecording(bool recording);

    LineLogModel& model() { return model_; }
    QTableView& table() { return *table_; }

    // The selected rows, one a line, columns tab-separated.
    QString selectedText() const;

  signals:
    void recordClicked();
    void openClicked();

  protected:
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;

  private:
    QWidget* buildFilters();
    void sizeColumns();
    void applyFilter();
    void copySelection();
    void showDetail();
    void followTail();

    LineLogModel& model_;
    Source source_;
    QComboBox* direction_ = nullptr;
    QComboBox* code_ = nullptr;
    QLineEdit* text_ = nullptr;
    QPushButton* pause_ = nullptr;
    QPushButton* follow_ = nullptr;
    QPushButton* record_ = nullptr;
    QTableView* table_ = nullptr;
    QPlainTextEdit* detail_ = nullptr;
    QLabel* status_ = nullptr;
    QTimer statusTimer_;
    QTimer textDelay_;
    std::function<QString()> statusSource_;
};

}  // namespace halvex
