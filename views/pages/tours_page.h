#pragma once

#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QRadioButton>
#include <QScrollBar>
#include <QWidget>
#include <array>

namespace halvex {

// The "Tours" page: the tour selectors, the selected tour's steps, the
// presets to add, the edit mode, camera and dwell of a new step, and the
// execute, clear and count buttons.
class ToursPage : public QWidget {
    Q_OBJECT
  public:
    static constexpr int kTours = 3;
    // Longest dwell a step can hold, in seconds (seven bits).
    static constexpr int kMaxDwell = 127;

    explicit ToursPage(QWidget* parent = nullptr);

    std::array<QRadioButton*, kTours> TourSel{};
    QListWidget* ScriptList = nullptr;
    QListWidget* ScriptPreList = nullptr;
    QScrollBar* WaitScroll = nullptr;
    QLabel* WaitLabel = nullptr;
    // Append, Insert, Replace.
    std::array<QRadioButton*, 3> Option1{};
    // Default camera, camera 2, camera 3.
    std::array<QRadioButton*, 3> CamSel{};
    QPushButton* ExecScriptBut = nullptr;
    QPushButton* ClearScriptBut = nullptr;
    QPushButton* Command3 = nullptr;
    QLabel* Label23 = nullptr;
    QPushButton* TourHelpBut = nullptr;

  private:
    QWidget* buildTourBox();
    QWidget* buildChoiceBox();
};

}  // namespace halvex
